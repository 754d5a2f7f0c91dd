#include "tests/unit/host/assimp/shown_scene.h"

#include <max.h>
#include <mesh.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <utility>
#include <variant>

#include "host/assimp/mesh/pose.h"
#include "host/assimp/mesh/skin.h"
#include "host/assimp/motion/clips.h"
#include "host/assimp/tree/roles.h"
#include "host/sdk/host.h"
#include "tests/unit/host/assimp/source_scene.h"

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
    return worst * 180 / std::numbers::pi;
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

const maxhost::scene::PrsTransform& PrsOf(const maxhost::scene::Node& node) {
    return std::get<maxhost::scene::PrsTransform>(node.transform.value().kind);
}

const AxisKeys& KeysOf(const maxhost::scene::ThreeAxisController& controller, int axis) {
    const auto& three = std::get<maxhost::scene::ThreeAxes>(controller.kind);
    return std::get<maxhost::scene::BezierFloat>(
               three.axes.at(static_cast<std::size_t>(axis)).value().kind)
        .keys;
}

maxhost::scene::Vec3 ToVec3(const Point3& p) {
    return {p.x, p.y, p.z};
}

Point3 ToPoint(const maxhost::scene::Vec3& v) {
    return Point3(v[0], v[1], v[2]);
}

void Fill(Mesh& mesh, const maxhost::scene::Mesh& description) {
    mesh.setNumVerts(static_cast<int>(description.vertices.size()));
    for (std::size_t i = 0; i < description.vertices.size(); ++i) {
        mesh.verts[i] = ToPoint(description.vertices[i]);
    }
    mesh.setNumFaces(static_cast<int>(description.faces.size()));
    for (std::size_t i = 0; i < description.faces.size(); ++i) {
        const maxhost::scene::Face& face = description.faces[i];
        mesh.faces[i].setVerts(static_cast<int>(face.v[0]), static_cast<int>(face.v[1]),
                               static_cast<int>(face.v[2]));
        mesh.faces[i].setSmGroup(face.smoothing);
        mesh.faces[i].setMatID(face.material);
    }
    mesh.checkNormals(FALSE);
    for (const auto& [vertex, normal] : description.normals) {
        RVertex& rendered = mesh.getRVert(static_cast<int>(vertex));
        rendered.rFlags |= SPECIFIED_NORMAL;
        rendered.rn.setNormal(ToPoint(normal));
    }
    mesh.buildNormals();
}

maxhost::scene::Vec3 NormalAt(Mesh& mesh, int face, DWORD vertex) {
    RVertex& rendered = mesh.getRVert(static_cast<int>(vertex));
    const DWORD groups = mesh.faces[face].getSmGroup();
    const DWORD count = rendered.rFlags & NORCT_MASK;
    if ((rendered.rFlags & SPECIFIED_NORMAL) || (count == 1 && groups != 0)) {
        return ToVec3(rendered.rn.getNormal());
    }
    for (DWORD i = 0; count > 1 && i < count; ++i) {
        if (rendered.ern[i].getSmGroup() & groups) {
            return ToVec3(rendered.ern[i].getNormal());
        }
    }
    return ToVec3(mesh.getFaceNormal(face));
}

}  // namespace

std::vector<std::string> NamesOf(const maxhost::scene::Scene& scene) {
    std::vector<std::string> names;
    for (const maxhost::scene::Node& node : scene.nodes) {
        names.push_back(node.name);
    }
    return names;
}

const maxhost::scene::Mesh& MeshOf(const maxhost::scene::Node& node) {
    return *node.object.value().mesh;
}

maxhost::scene::Matrix MatrixOf(const maxhost::scene::Node& node) {
    const maxhost::scene::Transform& transform = node.transform.value();
    if (const auto* constant = std::get_if<maxhost::scene::MatrixTransform>(&transform.kind)) {
        return constant->matrix;
    }
    return MatrixAt(node, 0);
}

maxhost::scene::Matrix MatrixAt(const maxhost::scene::Node& node, int tick) {
    maxhost::scene::Scene alone;
    alone.nodes.emplace_back();
    alone.nodes[0].name = "alone";
    alone.nodes[0].transform = node.transform;
    maxhost::Host::Instance().OpenScene(std::move(alone));
    const Matrix3 local = maxhost::Host::Instance().Nodes()[0]->GetNodeTM(tick);
    maxhost::Host::Instance().CloseScene();
    maxhost::scene::Matrix rows;
    for (int i = 0; i < 4; ++i) {
        const Point3 row = local.GetRow(i);
        rows[static_cast<std::size_t>(i)] = {row.x, row.y, row.z};
    }
    return rows;
}

// ---------------------------------------------------------------- keys

const AxisKeys& PositionKeysOf(const maxhost::scene::Node& node, int axis) {
    return KeysOf(PrsOf(node).position.value(), axis);
}

const AxisKeys& RotationKeysOf(const maxhost::scene::Node& node, int axis) {
    return KeysOf(PrsOf(node).rotation.value(), axis);
}

const maxhost::scene::BezierScale& ScaleOf(const maxhost::scene::Node& node) {
    return std::get<maxhost::scene::BezierScale>(PrsOf(node).scale.value().kind);
}

std::vector<int> TimesOf(const AxisKeys& keys) {
    std::vector<int> times;
    for (const maxhost::scene::Key& key : keys) {
        times.push_back(key.time);
    }
    return times;
}

std::vector<float> ValuesOf(const AxisKeys& keys) {
    std::vector<float> values;
    for (const maxhost::scene::Key& key : keys) {
        values.push_back(key.value);
    }
    return values;
}

std::vector<double> DegreesOf(const AxisKeys& keys) {
    std::vector<double> degrees;
    for (const maxhost::scene::Key& key : keys) {
        degrees.push_back(std::round(key.value * 180 / std::numbers::pi * 1000) / 1000 + 0.0);
    }
    return degrees;
}

bool IsConstant(const maxhost::scene::Node& node) {
    return std::holds_alternative<maxhost::scene::MatrixTransform>(node.transform.value().kind);
}

// ---------------------------------------------------------------- normals

std::vector<CornerNormals> ShownNormals(const maxhost::scene::Mesh& description) {
    Mesh mesh;
    Fill(mesh, description);
    std::vector<CornerNormals> normals(description.faces.size());
    for (std::size_t i = 0; i < normals.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            normals[i][k] = NormalAt(mesh, static_cast<int>(i), description.faces[i].v[k]);
        }
    }
    return normals;
}

// ---------------------------------------------------------------- poses

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
