// An Assimp scene as a scene of 3ds Max.
#pragma once

#include <assimp/scene.h>

#include <string>

#include <assimp/Importer.hpp>

#include "host/assimp/assimp_import.h"

namespace maxhost::import {

// What an import begins with: the file as Assimp reads it for us, with triangles where it has
// polygons. The scene is the importer's. Throws ImportError, and what Assimp throws.
const aiScene& LoadScene(Assimp::Importer& importer, const std::string& path);

// `scene` is as Assimp's importers leave it, triangulated where that was possible; what is wrong
// in it is left out with a warning. `path` is the file that it was read from. Throws ImportError
// for a scene beyond the limits of ours.
ImportedScene ConvertScene(const aiScene& scene, const std::string& path,
                           const ImportChoices& choices = {});

// ImportWithAssimp() in this process, unprotected from what Assimp does on broken files: for the
// process that ImportWithAssimp() makes, and for tests.
ImportedScene ReadHere(const std::string& path, const ImportChoices& choices = {});

}  // namespace maxhost::import
