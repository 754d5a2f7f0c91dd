// The textures that stand inside a model file, and the names of the files that they become.
#pragma once

#include <assimp/scene.h>

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/assimp/imported_scene.h"
#include "host/assimp/text.h"
#include "host/assimp/tree/tree.h"

namespace maxhost::import {

// Whether texels of that many columns and rows can become a PNG file.
bool FitsPng(unsigned width, unsigned height);

// Names them all. A texture that has a picture's file name of its own (wood.png) keeps it, without
// directories; others are named after the model at `path` and their own name, robot-Wood.png, or
// their number, robot-texture-1.png, with the suffix that their bytes call for. A name that a
// texture of other content, a texture beside the model or the model itself has already, in large or
// small letters, gets a number: wood-2.png. No name leads out of a directory or is one that Windows
// keeps for itself.
class EmbeddedTextures {
  public:
    EmbeddedTextures(const aiScene& scene, SourceFormat format, const std::string& path);

    // The one that a material refers to ("*3", or its file's name); null where it stands elsewhere.
    const aiTexture* Find(const aiString& reference) const;

    // Its file's name; null where it cannot be taken out.
    const std::string* NameOf(const aiTexture& texture) const;

    // Each file once.
    std::vector<EmbeddedTexture> Take() { return std::move(files_); }

  private:
    void FindBeside(const aiScene& scene, std::set<std::string>& taken) const;
    void MakeFiles(const aiScene& scene, const std::string& path);

    std::map<std::string, const aiTexture*> references_;  // what materials may refer to them by
    std::map<const aiTexture*, std::string> names_;
    std::vector<EmbeddedTexture> files_;
};

}  // namespace maxhost::import
