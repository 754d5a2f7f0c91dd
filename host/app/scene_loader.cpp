#include "host/app/scene_loader.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <new>
#include <string_view>

#include "host/app/exit_status.h"
#include "host/app/places.h"
#include "host/scene_file/scene_description.h"
#include "kta/text.h"
#ifndef _WIN32
#include "host/assimp/import.h"
#include "host/scene/check.h"
#endif

namespace maxhost::app {
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

LoadedScene LoadDescription(const std::string& path) {
    std::ifstream file(fs::path(path), std::ios::binary);
    LoadedScene loaded;
    loaded.scene = import::ReadSceneDescription(file);
    return loaded;
}

#ifdef _WIN32
LoadedScene LoadModel(const std::string&, const LoadChoices&) {
    throw std::runtime_error(
        "not a scene description, and model files are not read on Windows, expected a scene "
        "description (hdo-export --save-scene writes one elsewhere)");
}
#else
LoadedScene LoadModel(const std::string& path, const LoadChoices& choices) {
    import::ImportedScene imported =
        import::ImportWithAssimp(path, {choices.animation, choices.frameRate});
    LoadedScene loaded;
    loaded.scene = std::move(imported.scene);
    scene::Check(loaded.scene);
    loaded.warnings = std::move(imported.warnings);
    for (const import::AnimationClip& clip : imported.animations) {
        loaded.animations.push_back({clip.name, clip.seconds});
    }
    loaded.coloredMeshes = imported.coloredMeshes;
    return loaded;
}
#endif

}  // namespace

bool IsSceneDescription(const std::string& path) {
    if (IsNamedAsDescription(path)) {
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

LoadedScene LoadScene(const std::string& path, const LoadChoices& choices) {
    CheckReadable(path);
    try {
        return IsSceneDescription(path) ? LoadDescription(path) : LoadModel(path, choices);
    } catch (const std::bad_alloc&) {
        throw Failure(kExitRefused, path, "needs more memory than there is");
    } catch (const std::exception& error) {
        throw Failure(kExitRefused, path, error.what());
    }
}

}  // namespace maxhost::app
