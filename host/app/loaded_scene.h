// The scene of a run: loaded from its file, changed as the command line asks, saved.
#pragma once

#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "host/app/options.h"
#include "host/assimp/imported_scene.h"
#include "host/scene/losses.h"
#include "host/scene/scene.h"
#include "host/sdk/host.h"

namespace maxhost::app {

struct Animation {
    std::string name;
    double seconds = 0;
};

struct Warning {
    scene::LossCode code{};
    std::string text;  // one line, without the file's name
};

// The unit of length of a model's file.
struct SceneUnit {
    double metres = 0;                  // 0: nothing says it
    std::string source;                 // what says it: "as the file says"
    std::optional<double> convertedTo;  // the scene's unit where --unit changed it, in metres
};

struct LoadedScene {
    scene::Scene scene;
    std::vector<Warning> warnings;                  // what the importer changed or left out
    std::vector<scene::Loss> losses;                // the same, case by case
    std::vector<Animation> animations;              // that the file offers to choose from
    std::size_t coloredMeshes = 0;                  // whose vertex colours the importer left out
    std::vector<import::EmbeddedTexture> textures;  // that stand in the file; maps name them
    std::vector<import::TextureFile> textureFiles;  // that maps of a model name; not `textures`
    // Of a model: which axis is up, what says so, and whether it was turned.
    std::string upAxis;
    std::optional<SceneUnit> unit;  // of a model
    // The files that were read or looked for, there or not; absolute. None of standard input.
    std::vector<std::string> files;
};

// "-" stands for standard input and output.
bool IsStandardStream(const std::string& path);

// The file's name for messages: "standard input" for "-".
std::string SceneName(const std::string& path);

// Whether the file is a scene description: its name ends in .maxscene.json, or it is JSON whose
// beginning speaks of a "maxscene". False for a file that cannot be opened.
bool IsSceneDescription(const std::string& path);

// How the names of files end that can be loaded.
std::vector<std::string> SceneEndings();

// What loading a model takes from the command line; a scene description says all that itself.
struct LoadChoices {
    std::optional<std::string> animation;
    std::optional<int> frameRate;
    bool allowEmpty = false;  // a model without any node
    std::optional<int> up;    // the axis that is up in a model that does not say it: 0 x, 1 y, 2 z
    bool convertsUnit = false;          // ApplyChoices() is to convert lengths to another unit
    std::optional<std::size_t> clip{};  // by its position, in the place of `animation`
};

// Standard input is a scene description. `progress` is shown the reading. Throws
// Failure(kExitRefused) that names the file, with what is wrong with it. An animation that is not
// there is not refused here; the first is loaded.
LoadedScene LoadScene(const std::string& path, const LoadChoices& choices = {},
                      ProgressObserver* progress = nullptr);

// Applies --unit, --scale, --frame-rate, --start, --end and --select, and checks that there is what
// --animation names, which loading has chosen, and a selection where --selected asks for it. Throws
// Failure(kExitRefused) for a node or an animation that is not there, for --unit where nothing says
// the file's, for an empty selection that nothing allows, and for a range that ends before it
// starts.
void ApplyChoices(const Options& options, LoadedScene& loaded);

// Writes the scene as a scene description. A file of that name is replaced as a whole, or, when
// writing fails, left as it is; then throws Failure(kExitRefused).
void SaveScene(const scene::Scene& scene, const std::string& path);
// The same to standard output, which `out` is.
void SaveScene(const scene::Scene& scene, std::ostream& out);

}  // namespace maxhost::app
