// Materials of the scene.
#pragma once

#include <imtl.h>

#include <memory>
#include <vector>

#include "host/scene/scene.h"

namespace maxhost {

// The scene's materials, and those that stand inside of them.
class MaterialLibrary {
  public:
    explicit MaterialLibrary(const std::vector<std::shared_ptr<const scene::Material>>& materials);
    ~MaterialLibrary();

    // By position in the scene's list; null for scene::kNone.
    Mtl* Get(int position) const;

    class Entry;  // holds one material

  private:
    Entry* Add(const scene::Material& description);
    void FillSubMaterials(Entry& entry, const scene::Material& description);
    Mtl* Resolve(const scene::SubMaterial& subMaterial);

    std::vector<std::unique_ptr<Entry>> entries_;  // first those of the scene's list
};

}  // namespace maxhost
