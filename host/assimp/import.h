// Scene files of the formats that Assimp reads (FBX, Collada, 3DS, ASE, glTF, BVH, ...).
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "host/assimp/imported_scene.h"
#include "host/assimp/process/reader_process.h"

struct aiScene;
namespace Assimp {
class Importer;
}  // namespace Assimp

namespace maxhost::import {

// Reads the file at `path` in a process of its own; throws ImportError. `report` is told of its
// progress, each time a greater percentage. Not on Windows, where ReadModelInProcess() of
// host/app/model_reader.h does so.
ImportedScene ImportWithAssimp(
    const std::string& path, const ImportChoices& choices = {},
    const ReportPercent& report = [](int) {});

// The part of an import that takes place in the reader's process, which ends behind it: puts what
// DecodeScene() reads. Throws ImportError.
void ReadAndPut(const std::string& path, const ImportChoices& choices, const ReportPercent& report,
                const PutResult& put);

// Whether Assimp has a reader for the file's extension. It finds some formats by their content
// alone, so an import may succeed where this says no.
bool AssimpKnows(const std::string& path);

// The extensions for which it has one, as in ".fbx".
std::vector<std::string> AssimpExtensions();

// ---------------------------------------------------------------- the steps, for tests

// Reads the file as ImportWithAssimp() does, with triangles where it has polygons. The scene is the
// importer's. `report` is told how much of an import is done so far, 0 to 1, while the importer
// lives. Throws ImportError, and what Assimp throws.
const aiScene& LoadScene(
    Assimp::Importer& importer, const std::string& path,
    const std::function<void(double share)>& report = [](double) {});

// `scene` is as Assimp's importers leave it, triangulated where that was possible; what is wrong
// in it is left out with a warning. `path` is the file that it was read from. Throws ImportError
// for a scene beyond the limits of ours. `report` is told how much is done, 0 to 1.
ImportedScene ConvertScene(
    const aiScene& scene, const std::string& path, const ImportChoices& choices = {},
    const std::function<void(double share)>& report = [](double) {});

}  // namespace maxhost::import
