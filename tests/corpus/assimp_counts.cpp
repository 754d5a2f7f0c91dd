// What Assimp makes of GLB files: for each a line of JSON with the numbers of what is in it.
// Several roots stand below one more node, the importer's own. Exit status: 0, or 1 and the reason
// for a file that does not load, which ends the run.
#include <iostream>
#include <set>

#include <assimp/scene.h>

#include <assimp/Importer.hpp>
#include <nlohmann/json.hpp>

namespace {

std::size_t NodesBelow(const aiNode& node) {
    std::size_t nodes = 0;
    for (unsigned i = 0; i < node.mNumChildren; ++i) {
        nodes += 1 + NodesBelow(*node.mChildren[i]);
    }
    return nodes;
}

// Nodes with meshes: the primitives of a mesh are meshes of its node.
std::size_t MeshesBelow(const aiNode& node) {
    std::size_t meshes = node.mNumMeshes > 0 ? 1 : 0;
    for (unsigned i = 0; i < node.mNumChildren; ++i) {
        meshes += MeshesBelow(*node.mChildren[i]);
    }
    return meshes;
}

nlohmann::ordered_json CountsOf(const aiScene& scene) {
    std::size_t vertices = 0, triangles = 0, targets = 0, moving = 0;
    std::set<std::string> joints;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        const aiMesh& mesh = *scene.mMeshes[i];
        vertices += mesh.mNumVertices;
        triangles += mesh.mNumFaces;
        targets += mesh.mNumAnimMeshes;
        for (unsigned k = 0; k < mesh.mNumBones; ++k) {
            joints.insert(mesh.mBones[k]->mName.C_Str());
        }
    }
    for (unsigned i = 0; i < scene.mNumAnimations; ++i) {
        moving += scene.mAnimations[i]->mNumChannels;
    }
    return {{"nodes", NodesBelow(*scene.mRootNode) + 1},
            {"meshes", MeshesBelow(*scene.mRootNode)},
            {"primitives", scene.mNumMeshes},
            {"vertices", vertices},
            {"triangles", triangles},
            {"targets", targets},
            {"joints", joints.size()},
            {"animations", scene.mNumAnimations},
            {"moving", moving}};
}

}  // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        Assimp::Importer importer;
        const aiScene* const scene = importer.ReadFile(argv[i], 0);
        if (scene == nullptr) {
            std::cout << argv[i] << ": " << importer.GetErrorString() << '\n';
            return 1;
        }
        std::cout << CountsOf(*scene) << '\n';
    }
    return 0;
}
