// Scene files of the formats that Assimp reads (FBX, Collada, 3DS, ASE, glTF, BVH, ...).
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "host/assimp/imported_scene.h"

struct aiScene;
namespace Assimp {
class Importer;
}

namespace maxhost::import {

// Reads the file at `path` in a process of its own; throws ImportError.
ImportedScene ImportWithAssimp(const std::string& path, const ImportChoices& choices = {});

// Whether Assimp has a reader for the file's extension. It finds some formats by their content
// alone, so an import may succeed where this says no.
bool AssimpKnows(const std::string& path);

// ---------------------------------------------------------------- the steps, for tests

// Reads the file as ImportWithAssimp() does, with triangles where it has polygons. The scene is the
// importer's. Throws ImportError, and what Assimp throws.
const aiScene& LoadScene(Assimp::Importer& importer, const std::string& path);

// `scene` is as Assimp's importers leave it, triangulated where that was possible; what is wrong
// in it is left out with a warning. `path` is the file that it was read from. Throws ImportError
// for a scene beyond the limits of ours.
ImportedScene ConvertScene(const aiScene& scene, const std::string& path,
                           const ImportChoices& choices = {});

// ImportWithAssimp() in this process, unprotected from what Assimp does on broken files.
ImportedScene ReadHere(const std::string& path, const ImportChoices& choices = {});

}  // namespace maxhost::import
