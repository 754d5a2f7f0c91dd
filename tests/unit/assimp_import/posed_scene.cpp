#include "tests/unit/assimp_import/posed_scene.h"

#include <max.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/assimp/mesh/pose.h"
#include "host/assimp/mesh/skin.h"
#include "host/assimp/motion/clips.h"
#include "host/assimp/tree/roles.h"
#include "host/sdk/host.h"
#include "tests/unit/assimp_import/source_motion.h"

using maxhost::import::AxisTurn;
using maxhost::import::ImportWarnings;
using maxhost::import::Matrix4;
using maxhost::import::SourceFormat;
using maxhost::import::SourceNode;
using maxhost::import::SourceTree;

namespace {

using Vector3 = aiVector3t<double>;

// Of the nodes before the turn.
std::vector<Matrix4> WorldsAt(const SourceTree& tree, const SourceMotion& motion, double time) {
    std::vector<Matrix4> worlds;
    for (const SourceNode& node : tree.nodes) {
        Matrix4 world = node.parent < 0 ? Matrix4() : worlds[static_cast<std::size_t>(node.parent)];
        for (const SourceNode::Link& link : node.links) {
            world = world * (link.node ? motion.LocalAt(*link.node, time) : link.matrix);
        }
        worlds.push_back(world);
    }
    return worlds;
}

// The greatest angle between like axes, in degrees. Axes without length count as right.
double DegreesBetween(const Matrix4& m, const Matrix3& rows) {
    double worst = 0;
    for (int i = 0; i < 3; ++i) {
        const Vector3 a(m[0][i], m[1][i], m[2][i]);
        const Point3 row = rows.GetRow(i);
        const Vector3 b(row.x, row.y, row.z);
        if (a.Length() > 0 && b.Length() > 0) {
            worst = std::max(worst, std::atan2((a ^ b).Length(), a * b));
        }
    }
    return worst * 180 / 3.14159265358979323846;
}

double DiagonalOf(const maxhost::scene::Scene& scene, const std::vector<INode*>& nodes) {
    Vector3 least(std::numeric_limits<double>::infinity());
    Vector3 most = least * -1.0;
    const auto add = [&](const Point3& p) {
        least = {std::min<double>(least.x, p.x), std::min<double>(least.y, p.y),
                 std::min<double>(least.z, p.z)};
        most = {std::max<double>(most.x, p.x), std::max<double>(most.y, p.y),
                std::max<double>(most.z, p.z)};
    };
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        const Matrix3 world = nodes[i]->GetNodeTM(0);
        add(world.GetTrans());
        const auto& object = scene.nodes[i].object;
        if (object && object->mesh) {
            for (const auto& v : object->mesh->vertices) {
                add(world * Point3(v[0], v[1], v[2]));
            }
        }
    }
    const double diagonal = (most - least).Length();
    return diagonal > 0 ? diagonal : 1;
}

}  // namespace

void PoseError::Add(const PoseError& other) {
    if (other.degrees > degrees) {
        degrees = other.degrees;
        where = other.where;
    }
    distance = std::max(distance, other.distance);
}

PoseError WorstPose(const aiScene& source, const std::string& path, std::size_t clip,
                    const maxhost::import::ImportedScene& imported) {
    ImportWarnings ignored;
    const SourceFormat format = maxhost::import::FormatOf(source);
    const SourceTree tree = maxhost::import::FlattenTree(source, path);
    const maxhost::import::StartPose pose(tree, format, maxhost::import::LocalsAtStart(tree, {}),
                                          nullptr);
    const maxhost::import::BoneNodes bones(source, tree, pose, ignored);
    const auto roles = maxhost::import::FindRoles(source, tree, format, bones.AreBones(), ignored);
    const aiAnimation& animation = *source.mAnimations[clip];
    const SourceMotion motion(source, clip);
    const maxhost::scene::Time& time = imported.scene.time;
    const double keysPerTick =
        maxhost::import::KeysPerSecond(animation, format) / (time.frameRate * time.ticksPerFrame);
    maxhost::Host::Instance().OpenScene(imported.scene);
    const std::vector<INode*> nodes = maxhost::Host::Instance().Nodes();
    PoseError worst;
    worst.diagonal = DiagonalOf(imported.scene, nodes);
    const int frames = time.end / time.ticksPerFrame + 1;
    for (int frame = 0; frame <= frames; ++frame) {
        for (const int half : {0, time.ticksPerFrame / 2}) {
            const int tick = frame * time.ticksPerFrame + half;
            const auto worlds = WorldsAt(tree, motion, tick * keysPerTick);
            for (std::size_t i = 0; i < nodes.size(); ++i) {
                const Matrix4 expected =
                    tree.turn.Conjugate(worlds[i]) * ViewFrame(tree.nodes[i],
                                                               ShownBeside(tree.nodes[i], roles[i]),
                                                               tree.turn, format, ignored);
                const Matrix3 shown = nodes[i]->GetNodeTM(tick);
                const Point3 p = shown.GetTrans();
                const Vector3 off(expected.a4 - p.x, expected.b4 - p.y, expected.c4 - p.z);
                worst.Add({DegreesBetween(expected, shown), off.Length() / worst.diagonal,
                           imported.scene.nodes[i].name + " at " + std::to_string(tick), 0});
            }
        }
    }
    maxhost::Host::Instance().CloseScene();
    return worst;
}
