#include "host/app/scene_saver.h"

#include <filesystem>
#include <fstream>

#include "host/app/exit_status.h"
#include "host/app/private_directory.h"
#include "host/scene_file/scene_description.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void Refuse(const std::string& path, const std::string& reason) {
    throw Failure(kExitRefused, path, "the scene cannot be saved: " + reason);
}

fs::path Target(const std::string& path) {
    const fs::path target = BehindLinks(path);
    std::error_code error;
    const fs::file_status status = fs::status(target, error);
    if (fs::exists(status) && !fs::is_regular_file(status)) {
        throw Failure(kExitRefused, path, "is not a regular file, expected a file to write to");
    }
    return target;
}

void Write(const scene::Scene& scene, const fs::path& file, const std::string& path) {
    std::ofstream out(file, std::ios::binary);
    try {
        import::WriteSceneDescription(scene, out);
    } catch (const import::SceneError& error) {
        Refuse(path, error.what());
    }
    out.close();
    if (!out) {
        Refuse(path, "writing failed");
    }
}

}  // namespace

void SaveScene(const scene::Scene& scene, const std::string& path) {
    const fs::path target = Target(path);
    try {
        const PrivateDirectory room(target.has_parent_path() ? target.parent_path() : ".");
        const fs::path made = room.Path() / "scene";
        Write(scene, made, path);
        fs::rename(made, target);
    } catch (const fs::filesystem_error& error) {
        Refuse(path, "no file can be made there (" + error.code().message() + ")");
    }
}

}  // namespace maxhost::app
