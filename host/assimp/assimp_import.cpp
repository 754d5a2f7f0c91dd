#include "host/assimp/assimp_import.h"

#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <cerrno>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <limits>
#include <system_error>

#include "host/assimp/process/reader_process.h"
#include "host/assimp/process/scene_blob.h"
#include "host/assimp/scene.h"

namespace maxhost::import {
namespace {

// ---------------------------------------------------------------- messages

// One line of printable ASCII out of what Assimp says.
std::string ErrorLine(const std::string& text) {
    constexpr std::size_t kLongest = 300;
    std::string line;
    for (const char c : text) {
        const bool isBlank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (isBlank && !line.empty() && line.back() != ' ') {
            line += ' ';
        } else if (!isBlank) {
            line += c > ' ' && c < 0x7f ? c : '?';
        }
    }
    line.resize(std::min(line.size(), kLongest));
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

[[noreturn]] void Refuse(const std::string& assimpsWords) {
    if (assimpsWords.find("No suitable reader found") != std::string::npos) {
        throw ImportError("not a scene file of a known format");
    }
    if (assimpsWords.find("std::bad_alloc") != std::string::npos) {
        throw ImportError("cannot be read: not enough memory");
    }
    const std::string reason = ErrorLine(assimpsWords);
    throw ImportError("cannot be read: " + (reason.empty() ? "no reason is given" : reason));
}

std::uint64_t SizeOf(const std::filesystem::path& file) {
    std::error_code error;
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    return error ? 0 : size;
}

void CheckFile(const std::string& path) {
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (error || !std::filesystem::exists(status)) {
        throw ImportError(error ? error.message() : "no such file");
    }
    if (!std::filesystem::is_regular_file(status)) {
        throw ImportError(std::filesystem::is_directory(status) ? "a directory, not a scene file"
                                                                : "not a regular file");
    }
    errno = 0;
    if (!std::ifstream(path, std::ios::binary)) {
        throw ImportError(std::generic_category().message(errno ? errno : EIO));
    }
    if (SizeOf(path) == 0) {
        throw ImportError("an empty file, expected a scene");
    }
}

// Of the file and of the buffers that may stand beside it.
std::uint64_t InputSize(const std::string& path) {
    std::uint64_t size = SizeOf(path);
    std::error_code error;
    if (std::filesystem::path(path).extension() == ".gltf") {
        const auto folder = std::filesystem::absolute(path, error).parent_path();
        for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
            size += entry.path().extension() == ".bin" ? SizeOf(entry.path()) : 0;
        }
    }
    return size;
}

// ---------------------------------------------------------------- triangles

bool IsPolygon(const aiFace& face) {
    return face.mNumIndices > 3 && face.mIndices;
}

// Makes a mesh safe to triangulate: a polygon with a vertex number out of range becomes a triangle
// with one, which the conversion leaves out and counts, and the mesh says whether it has polygons.
void PrepareToTriangulate(aiMesh& mesh) {
    bool hasPolygons = false;
    const unsigned vertices = mesh.mVertices ? mesh.mNumVertices : 0;
    for (unsigned i = 0; mesh.mFaces && i < mesh.mNumFaces; ++i) {
        aiFace& face = mesh.mFaces[i];
        if (!IsPolygon(face)) {
            continue;
        }
        if (*std::max_element(face.mIndices, face.mIndices + face.mNumIndices) < vertices) {
            hasPolygons = true;
        } else {
            face.mNumIndices = 3;
            face.mIndices[0] = std::numeric_limits<unsigned>::max();
        }
    }
    const unsigned others = mesh.mPrimitiveTypes & ~static_cast<unsigned>(aiPrimitiveType_POLYGON);
    mesh.mPrimitiveTypes = hasPolygons ? others | aiPrimitiveType_POLYGON
                           : others    ? others
                                       : static_cast<unsigned>(aiPrimitiveType_TRIANGLE);
}

// ---------------------------------------------------------------- the import

void Configure(Assimp::Importer& importer) {
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
    // The tree is folded after the import: folded by the importer, a pivot's offset would move the
    // node's children too.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, true);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
}

}  // namespace

const aiScene& LoadScene(Assimp::Importer& importer, const std::string& path) {
    Configure(importer);
    if (!importer.ReadFile(path, 0)) {
        Refuse(importer.GetErrorString());
    }
    // The importer owns the scene and made it writable; it only hands it out as const.
    aiScene& scene = const_cast<aiScene&>(*importer.GetScene());
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        PrepareToTriangulate(*scene.mMeshes[i]);
    }
    if (!importer.ApplyPostProcessing(aiProcess_Triangulate)) {
        Refuse(importer.GetErrorString());
    }
    return scene;
}

ImportedScene ReadHere(const std::string& path, const ImportChoices& choices) {
    Assimp::Importer importer;
    try {
        return ConvertScene(LoadScene(importer, path), path, choices);
    } catch (const ImportError&) {
        throw;
    } catch (const std::exception& failure) {
        Refuse(failure.what());
    }
}

ImportedScene ImportWithAssimp(const std::string& path, const ImportChoices& choices) {
    CheckFile(path);
    return DecodeScene(RunInReaderProcess([&] { return EncodeScene(ReadHere(path, choices)); },
                                          LimitsFor(InputSize(path))));
}

bool AssimpKnows(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return !extension.empty() && Assimp::Importer().IsExtensionSupported(extension);
}

}  // namespace maxhost::import
