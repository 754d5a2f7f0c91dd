// The nodes of an Assimp scene that become nodes of ours: in depth-first child order, without the
// nodes that a format or its importer made, and with the turn that brings z up. A node that names
// as its parent another child of the node that holds both, one before it, is that one's child.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "host/assimp/maths.h"
#include "host/scene/scene.h"

namespace maxhost::import {

// Whether importers give such a name to roots of their own, or it stands for the whole file in its
// format. Some importers name the root after the file, whose path is `path`.
bool IsImportersName(std::string_view name, const std::string& path);

// The formats that need a treatment of their own.
enum class SourceFormat { fbx, collada, gltf, ase, threeDs, bvh, openGex, other };

SourceFormat FormatOf(const aiScene& scene);

// The turn from an FBX file's axes (its global settings, which may be absent or senseless) to
// z up. FBX is y up by default; the handedness is never changed.
AxisTurn FbxTurn(const aiMetadata* settings);

// What says which axis of a file is up.
enum class UpSource {
    file,
    format,      // it is the same in all files
    reader,      // Assimp's, which has turned its root for it
    choice,      // nothing but --up
    assumption,  // nothing; taken as y
};

// "z", "-x": the axis that the turn brings up.
std::string UpAxisOf(const AxisTurn& turn);

struct SourceNode {
    // A node of Assimp's with its matrix, of which each animation may have another; null: of none.
    struct Link {
        const aiNode* node = nullptr;
        Matrix4 matrix;
    };

    const aiNode* node = nullptr;
    int parent = scene::kNone;         // position in the list
    Matrix4 local;                     // relative to the parent, before the turn
    std::vector<Link> links;           // whose product `local` is, outermost first; last: `node`
    std::optional<Matrix4> geometric;  // from the meshes' space to the node's; not inherited
    std::size_t notFinite = 0;         // numbers of these matrices that were taken as 0
};

struct SourceTree {
    AxisTurn turn;  // holds for every node and every mesh
    UpSource upSource = UpSource::assumption;
    AxisTurn fileTurn;  // from the file's own axes; `turn` with the part that a root's matrix has
    // The size in metres that the file states for its unit of length, which is left alone; 0 where
    // it states none.
    double unit = 0;
    std::size_t nodesOutside = 0;  // of a glTF file: nodes that are not in the scene that it shows
    std::vector<SourceNode> nodes;
};

// `path` is the file's, as it was given to Assimp, which does not tell all of a glTF file. `up` is
// the axis that is up (0 x, 1 y, 2 z) where nothing else says it.
SourceTree FlattenTree(const aiScene& scene, const std::string& path,
                       std::optional<int> up = std::nullopt);

}  // namespace maxhost::import
