// How far what an export's files say is from the scene: where vertices and morph targets stand,
// their normals and texture coordinates, how nodes are posed over time, and where skins take their
// vertices.
//
// The files are evaluated by the toolkit, the scene by the SDK work-alike and from its plain data;
// neither uses the exporter's code. Takes time in proportion to vertices and weights (times at most
// kMostSkinTimes), and nodes (times at most kMostPoseTimes).
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/app/scene_match.h"
#include "kta/reader.h"

namespace maxhost::app {

constexpr std::size_t kMostPoseTimes = 100;
constexpr std::size_t kMostSkinTimes = 9;

// The worst of its kind, and where it was found.
struct WorstCase {
    double value = 0;         // a distance in the scene's units, degrees, or of texture coordinates
    int node = scene::kNone;  // kNone: everything is equal
    int vertex = -1;          // of the scene's mesh
    int bone = scene::kNone;  // that has most of the vertex
    std::string channel{};    // of morph targets
    double frame = 0;         // tick 0 is frame 0

    // Whether it is worse than what was found before, and is taken; not a number is worse than all.
    bool IsWorse(double found) const { return !(found <= value); }
};

struct Deviation {
    // The diagonal of the box around all exported nodes and meshes as the scene has them at tick 0;
    // of a single node, of the box around where it stands at the times compared. At least a
    // thousandth of the box's distance from the origin, as rounding there is no deviation.
    double size = 0;
    std::size_t vertices = 0, poses = 0, times = 0, skinnedVertices = 0, morphPoints = 0;
    std::size_t normals = 0, coordinatePairs = 0;  // of corners of triangles
    WorstCase vertex, pose, angle, skin, morph, normal, coordinates;
    // Nodes with what the files' translation, rotation and scale cannot say, at some of the times;
    // their poses do not count. In the scene's order.
    std::vector<int> sheared;
    // Nodes that move in the scene, by more than the tolerance of kMoving, and have no tracks.
    std::vector<int> still;
    // Channels whose points cannot be told, by their nodes.
    struct Channel {
        int node = scene::kNone;
        std::string name;
    };
    std::vector<Channel> flattened;

    // In percent of the size. 0 where there is no size.
    double Percent(const WorstCase& worst) const {
        return size > 0 ? worst.value / size * 100 : worst.value > 0 ? 100 : 0;
    }
    // Of all distances and turned nodes, percents and degrees alike.
    double Worst() const;
};

// Of two files without faults, which `tree` is made of. `match` is between them and `scene`, which
// is open in the host.
Deviation FindDeviation(const scene::Scene& scene, const SceneWorlds& worlds,
                        const SceneMatch& match, const kta::NodeTree& tree, const kta::File& actor,
                        const kta::File& motion);

}  // namespace maxhost::app
