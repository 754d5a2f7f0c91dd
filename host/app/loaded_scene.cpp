#include "host/app/loaded_scene.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>
#include <string_view>
#include <unordered_map>

#include "host/app/exit_status.h"
#include "host/app/places.h"
#include "host/assimp/import.h"
#include "host/scene/check.h"
#include "host/scene/error.h"
#include "host/scene/scale.h"
#include "host/scene_file/scene_description.h"
#include "kta/text.h"
#include "kta/whole_file.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>

#include "host/app/model_reader.h"
#endif

namespace maxhost::app {

// ---------------------------------------------------------------- loading

namespace {

namespace fs = std::filesystem;

constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

std::string Beginning(const std::string& path) {
    constexpr std::streamsize kSize = 4096;
    std::string text(kSize, '\0');
    std::ifstream file(fs::path(path), std::ios::binary);
    file.read(text.data(), kSize);
    text.resize(static_cast<std::size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    return text;
}

void CheckReadable(const std::string& path) {
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (status.type() == fs::file_type::not_found) {
        throw Failure(kExitRefused, path, "does not exist, expected a scene file");
    }
    if (fs::is_directory(status)) {
        throw Failure(kExitRefused, path, "is a directory, expected a scene file");
    }
    // Opening a FIFO would wait for a writer, and a device may never end.
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw Failure(kExitRefused, path, "is not a regular file, expected a scene file");
    }
    if (!std::ifstream(fs::path(path), std::ios::binary)) {
        throw Failure(kExitRefused, path, "cannot be opened for reading");
    }
}

// Bytes pass as they are.
void MakeBinary([[maybe_unused]] std::FILE* stream) {
#ifdef _WIN32
    _setmode(_fileno(stream), _O_BINARY);
#endif
}

// The bar of the reading, while it goes on.
class Reading {
  public:
    Reading(const std::string& path, ProgressObserver* progress) : progress_(progress) {
        if (progress_ != nullptr) {
            progress_->OnStart("Reading " + fs::path(SceneName(path)).filename().string());
        }
    }
    ~Reading() {
        if (progress_ != nullptr) {
            progress_->OnEnd();
        }
    }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

    void Show(int percent) {
        if (progress_ != nullptr) {
            progress_->OnUpdate(percent);
        }
    }

  private:
    ProgressObserver* progress_;  // null: nobody looks
};

LoadedScene LoadDescription(const std::string& path, Reading& reading) {
    const auto report = [&reading](double share) { reading.Show(static_cast<int>(100 * share)); };
    LoadedScene loaded;
    if (IsStandardStream(path)) {
        MakeBinary(stdin);
        loaded.scene = scene_file::ReadSceneDescription(std::cin, report);
        return loaded;
    }
    std::ifstream file(fs::path(path), std::ios::binary);
    loaded.scene = scene_file::ReadSceneDescription(file, report);
    loaded.files.push_back(Absolute(path).string());
    return loaded;
}

#ifndef HDO_READS_MODELS
LoadedScene LoadModel(const std::string&, const LoadChoices&, Reading&) {
    throw std::runtime_error(
        "not a scene description, and model files are not read on Windows, expected a scene "
        "description (hdo-export --save-scene writes one elsewhere)");
}
#else
bool HasFaces(const scene::Scene& scene) {
    return std::ranges::any_of(scene.nodes, [](const scene::Node& node) {
        return node.object && node.object->mesh && !node.object->mesh->faces.empty();
    });
}

// Whether the file itself says that more was to come: a PLY or OFF file by the faces that its
// beginning counts, an SMD file by the word that ends its last section. Their readers take what
// there is.
bool PromisesFaces(const std::string& path) {
    const std::string text = Beginning(path);
    if (kta::EndsWithIgnoringCase(path, ".ply")) {
        const std::size_t faces = text.find("element face ");
        return faces != std::string::npos && std::atol(text.c_str() + faces + 13) > 0;
    }
    if (kta::EndsWithIgnoringCase(path, ".off")) {
        const std::size_t counts = text.find_first_of("0123456789");
        long vertices = 0, faces = 0;
        return counts != std::string::npos &&
               std::sscanf(text.c_str() + counts, "%ld %ld", &vertices, &faces) == 2 && faces > 0;
    }
    if (kta::EndsWithIgnoringCase(path, ".smd")) {
        std::ifstream file(fs::path(path), std::ios::binary);
        std::string word, last;
        while (file >> word) {
            last = std::move(word);
        }
        return last != "end";
    }
    return false;
}

LoadedScene LoadModel(const std::string& path, const LoadChoices& choices, Reading& reading) {
    const auto report = [&reading](int percent) { reading.Show(percent); };
#ifdef _WIN32
    const auto read = ReadModelInProcess;
#else
    const auto read = import::ImportWithAssimp;
#endif
    import::ImportedScene imported =
        read(path,
             {choices.animation, choices.frameRate, choices.up, choices.convertsUnit, choices.clip},
             report);
    LoadedScene loaded;
    loaded.scene = std::move(imported.scene);
    if (loaded.scene.nodes.empty() && !choices.allowEmpty) {
        throw std::runtime_error(
            "no node in it, expected a model with at least one (--allow-empty lets it pass)");
    }
    if (!HasFaces(loaded.scene) && !choices.allowEmpty && PromisesFaces(path)) {
        throw std::runtime_error(
            "cut off, no face in it, expected those that it announces (--allow-empty lets it "
            "pass)");
    }
    scene::Check(loaded.scene);
    for (std::size_t i = 0; i < imported.warnings.size(); ++i) {
        loaded.warnings.push_back({imported.codes.at(i), std::move(imported.warnings[i])});
    }
    loaded.losses = std::move(imported.losses);
    for (const import::AnimationClip& clip : imported.animations) {
        loaded.animations.push_back({clip.name, clip.seconds});
    }
    loaded.coloredMeshes = imported.coloredMeshes;
    loaded.textures = std::move(imported.textures);
    loaded.textureFiles = std::move(imported.textureFiles);
    loaded.unit = SceneUnit{imported.unit, std::move(imported.unitSource), std::nullopt};
    loaded.upAxis = std::move(imported.upAxis);
    loaded.files = std::move(imported.files);
    return loaded;
}
#endif

}  // namespace

std::vector<std::string> SceneEndings() {
#ifdef HDO_READS_MODELS
    std::vector<std::string> endings = import::AssimpExtensions();
#else
    std::vector<std::string> endings;
#endif
    endings.insert(endings.begin(), ".maxscene.json");
    return endings;
}

bool IsStandardStream(const std::string& path) {
    return path == "-";
}

std::string SceneName(const std::string& path) {
    return IsStandardStream(path) ? "standard input" : path;
}

bool IsSceneDescription(const std::string& path) {
    if (IsStandardStream(path) || IsNamedAsDescription(path)) {
        return true;
    }
    // A glTF file may carry anything in its extras.
    if (kta::EndsWithIgnoringCase(path, ".gltf")) {
        return false;
    }
    const std::string beginning = Beginning(path);
    const std::size_t text = beginning.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0;
    const std::size_t first = beginning.find_first_not_of(" \t\r\n", text);
    return first != std::string::npos && beginning[first] == '{' &&
           beginning.find("\"maxscene\"") != std::string::npos;
}

LoadedScene LoadScene(const std::string& path, const LoadChoices& choices,
                      ProgressObserver* progress) {
    if (!IsStandardStream(path)) {
        CheckReadable(path);
    }
    try {
        Reading reading(path, progress);
        if (!IsSceneDescription(path)) {
            return LoadModel(path, choices, reading);
        }
        LoadedScene loaded = LoadDescription(path, reading);
        if (choices.up) {
            loaded.warnings.push_back({scene::LossCode::upAxisKnown,
                                       "--up has no effect: z is up in scene descriptions"});
        }
        return loaded;
    } catch (const std::bad_alloc&) {
        throw Failure(kExitRefused, SceneName(path), "needs more memory than there is");
    } catch (const std::exception& error) {
        throw Failure(kExitRefused, SceneName(path), error.what());
    }
}

// ---------------------------------------------------------------- changes

namespace {

constexpr int kTicksPerSecond = 4800;

// As in: 0 "walk", 1 "run".
std::string NumberedNames(const std::vector<Animation>& animations) {
    constexpr std::size_t kMost = 20;
    std::string text;
    for (std::size_t i = 0; i < std::min(animations.size(), kMost); ++i) {
        text += (i > 0 ? ", " : "") + std::to_string(i) + " \"" + kta::Escaped(animations[i].name) +
                "\"";
    }
    return animations.size() > kMost ? text + ", ... (--list shows all)" : text;
}

void CheckAnimation(const std::string& wanted, const std::vector<Animation>& animations) {
    std::vector<std::string> names;
    for (const Animation& animation : animations) {
        names.push_back(animation.name);
    }
    if (import::FindAnimation(wanted, names)) {
        return;
    }
    throw Failure(
        kExitRefused, "--animation",
        "\"" + kta::Escaped(wanted) +
            (names.empty()
                 ? "\", expected none, the scene has no animations to choose from"
                 : "\", expected a name or number of the scene's " +
                       kta::Counted(names.size(), "animation") + ": " + NumberedNames(animations)));
}

void Scale(const char* option, double factor, scene::Scene& scene) {
    try {
        scene::ScaleLengths(scene, static_cast<float>(factor));
    } catch (const scene::SceneError& error) {
        throw Failure(kExitRefused, option, std::string("in the scaled scene, ") + error.what());
    }
}

void ConvertUnit(double unit, const std::string& scene, LoadedScene& loaded) {
    if (!loaded.unit || loaded.unit->metres == 0) {
        throw Failure(kExitRefused, "--unit",
                      scene + " does not say its unit, expected --scale in its place");
    }
    if (const double factor = loaded.unit->metres / unit; factor != 1) {
        Scale("--unit", factor, loaded.scene);
    }
    loaded.unit->convertedTo = unit;
}

int TicksOf(const Moment& moment, const scene::Time& time, const char* option) {
    const double frame = time.ticksPerFrame;
    const double unit = moment.unit == Moment::Unit::frames    ? frame
                        : moment.unit == Moment::Unit::seconds ? frame * time.frameRate
                                                               : 1;
    const double ticks = std::round(moment.count * unit);
    if (ticks < INT_MIN || ticks > INT_MAX) {
        throw Failure(kExitRefused, option, "beyond what 32 bits hold of ticks");
    }
    return static_cast<int>(ticks);
}

void ApplyTime(const Options& options, scene::Time& time) {
    if (options.frameRate) {
        time.frameRate = *options.frameRate;
        time.ticksPerFrame = std::max(1, kTicksPerSecond / *options.frameRate);
    }
    time.start = options.start ? TicksOf(*options.start, time, "--start") : time.start;
    time.end = options.end ? TicksOf(*options.end, time, "--end") : time.end;
    if ((options.start || options.end) && time.start > time.end) {
        throw Failure(kExitRefused, options.start ? "--start" : "--end",
                      "the range would be " + std::to_string(time.start) + " to " +
                          std::to_string(time.end) +
                          ", expected one that does not end before it "
                          "starts");
    }
}

void Select(const std::vector<std::string>& names, scene::Scene& scene) {
    std::unordered_map<std::string, std::vector<int>> nodesByName;
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
        nodesByName[scene.nodes[i].name].push_back(static_cast<int>(i));
        scene.nodes[i].selected = false;
    }
    scene.selection.clear();
    for (const std::string& name : names) {
        const auto found = nodesByName.find(name);
        if (found == nodesByName.end()) {
            throw Failure(kExitRefused, "--select",
                          "\"" + name + "\", expected a node's name (--list shows them)");
        }
        for (const int index : found->second) {
            scene::Node& node = scene.nodes[static_cast<std::size_t>(index)];
            if (!node.selected) {
                node.selected = true;
                scene.selection.push_back(index);
            }
        }
    }
}

}  // namespace

void ApplyChoices(const Options& options, LoadedScene& loaded) {
    if (options.clip && *options.clip >= loaded.animations.size()) {
        throw Failure(
            kExitRefused, SceneName(options.scene),
            "has changed meanwhile: its animation " + std::to_string(*options.clip) + " is gone");
    }
    if (options.animation) {
        CheckAnimation(*options.animation, loaded.animations);
    }
    if (options.unit) {
        ConvertUnit(*options.unit, SceneName(options.scene), loaded);
    }
    if (options.scale != 1) {
        Scale("--scale", options.scale, loaded.scene);
    }
    ApplyTime(options, loaded.scene.time);
    if (!options.select.empty()) {
        Select(options.select, loaded.scene);
    }
    if (options.selectedOnly && loaded.scene.selection.empty() && !options.allowEmpty) {
        throw Failure(kExitRefused, "--selected",
                      "nothing is selected in " + SceneName(options.scene) +
                          ", expected a selection (--allow-empty lets it pass)");
    }
}

// ---------------------------------------------------------------- saving

namespace {

template <class Write>
void SaveTo(const std::string& place, Write write) {
    const auto refuse = [&](const std::string& reason) {
        throw Failure(kExitRefused, place, "the scene cannot be saved: " + reason);
    };
    try {
        write();
    } catch (const scene::SceneError& error) {
        refuse(error.what());
    } catch (const std::system_error& error) {
        refuse(error.code().message());
    }
}

}  // namespace

void SaveScene(const scene::Scene& scene, const std::string& path) {
    SaveTo(path, [&] {
        kta::ReplaceWholeFile(
            path, [&](std::ostream& out) { scene_file::WriteSceneDescription(scene, out); });
    });
}

void SaveScene(const scene::Scene& scene, std::ostream& out) {
    MakeBinary(stdout);
    SaveTo("standard output", [&] { scene_file::WriteSceneDescription(scene, out); });
}

}  // namespace maxhost::app
