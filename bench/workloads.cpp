#include "bench/workloads.h"

#include <cmath>
#include <stdexcept>

namespace bench {
namespace {

namespace scene = maxhost::scene;

constexpr int kTicksPerFrame = 160;

scene::Node NodeBelow(int parent, int number) {
    scene::Node node;
    node.name = "node" + std::to_string(number);
    node.parent = parent;
    node.transform->kind = scene::MatrixTransform{
        {scene::Vec3{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, static_cast<float>(number % 10), 0}}};
    return node;
}

scene::FloatController Curve(int keys, float amount) {
    scene::BezierFloat curve;
    for (int i = 0; i < keys; ++i) {
        scene::Key& key = curve.keys.emplace_back();
        key.time = i * kTicksPerFrame;
        key.value = amount * std::sin(0.1f * static_cast<float>(i));
        key.inTangent = key.outTangent = 0.001f;
    }
    return {"", {}, std::move(curve)};
}

scene::ThreeAxisController Curves(int keys, float amount) {
    scene::ThreeAxisController controller;
    controller.kind =
        scene::ThreeAxes{{Curve(keys, amount), Curve(keys, 2 * amount), Curve(keys, 3 * amount)}};
    return controller;
}

scene::Mesh Grid(int cells) {
    scene::Mesh mesh;
    const auto points = static_cast<std::uint32_t>(cells + 1);
    for (std::uint32_t i = 0; i < points * points; ++i) {
        const auto x = static_cast<float>(i % points), y = static_cast<float>(i / points);
        mesh.vertices.push_back({x, y, std::sin(0.05f * x) + std::sin(0.05f * y)});
        mesh.channels[1].vertices.push_back({x, y});
        mesh.channels[2].vertices.push_back({static_cast<float>(i % 2), y});
    }
    for (std::uint32_t row = 0; row + 1 < points; ++row) {
        for (std::uint32_t a = row * points; a + 1 < (row + 1) * points; ++a) {
            mesh.faces.push_back({{a, a + 1, a + points}, 1, 0});
            mesh.faces.push_back({{a + 1, a + points + 1, a + points}, 1, 0});
        }
    }
    for (const scene::Face& face : mesh.faces) {
        mesh.channels[1].faces.push_back(face.v);
        mesh.channels[2].faces.push_back(face.v);
    }
    return mesh;
}

void GiveMesh(scene::Node& node, scene::Mesh mesh) {
    node.object.emplace().mesh = std::make_shared<const scene::Mesh>(std::move(mesh));
}

}  // namespace

scene::Scene WideTree(int nodes) {
    scene::Scene scene;
    for (int i = 0; i < nodes; ++i) {
        scene.nodes.push_back(NodeBelow(scene::kNone, i));
    }
    return scene;
}

scene::Scene DeepTree(int nodes) {
    scene::Scene scene;
    for (int i = 0; i < nodes; ++i) {
        scene.nodes.push_back(NodeBelow(i - 1, i));
    }
    return scene;
}

scene::Scene ManyMaterials(int materials) {
    scene::Scene scene;
    for (int i = 0; i < materials; ++i) {
        scene::Material material;
        material.name = "material" + std::to_string(i);
        scene.materials.push_back(std::make_shared<const scene::Material>(material));
        scene.nodes.push_back(NodeBelow(scene::kNone, i));
        scene.nodes.back().material = i;
        GiveMesh(scene.nodes.back(), Grid(1));
    }
    return scene;
}

scene::Scene GridMesh(int triangles) {
    scene::Scene scene;
    scene.nodes.push_back(NodeBelow(scene::kNone, 0));
    GiveMesh(scene.nodes.back(), Grid(static_cast<int>(std::lround(std::sqrt(triangles / 2.0)))));
    return scene;
}

scene::Scene MovingRig(int bones, int frames) {
    scene::Scene scene;
    scene.time = {30, kTicksPerFrame, 0, (frames - 1) * kTicksPerFrame};
    for (int i = 0; i < bones; ++i) {
        scene.nodes.push_back(NodeBelow(i == 0 ? scene::kNone : i / 2, i));
        scene.nodes.back().transform->kind =
            scene::PrsTransform{Curves(frames, 10), Curves(frames, 0.5f), {}};
    }
    return scene;
}

scene::Scene SkinnedMesh(int vertices) {
    constexpr int kBones = 64, kInfluences = 8;
    scene::Scene scene = MovingRig(kBones, 1);
    scene.nodes.push_back(NodeBelow(scene::kNone, kBones));
    GiveMesh(scene.nodes.back(), Grid(1));
    auto& skin = scene.nodes.back().modifiers.emplace_back().kind.emplace<scene::Skin>();
    for (int i = 0; i < kBones; ++i) {
        skin.bones.push_back(i);
    }
    skin.weights.resize(static_cast<std::size_t>(vertices));
    int next = 0;
    for (auto& weights : skin.weights) {
        for (int i = 0; i < kInfluences; ++i) {
            weights.push_back({(next + i * 7) % kBones, 1.0f / kInfluences});
        }
        ++next;
    }
    return scene;
}

scene::Scene MorphTargets(int channels, int points) {
    scene::Scene scene;
    scene.nodes.push_back(NodeBelow(scene::kNone, 0));
    GiveMesh(scene.nodes.back(), Grid(1));
    auto& morpher = scene.nodes.back().modifiers.emplace_back().kind.emplace<scene::Morpher>();
    for (int i = 0; i < channels; ++i) {
        scene::MorphChannel& channel = morpher.channels.emplace_back();
        channel.name = "channel" + std::to_string(i);
        for (int k = 0; k < points; ++k) {
            channel.points.push_back({static_cast<float>(k % 1000) * 0.1f, static_cast<float>(i),
                                      std::sin(0.01f * static_cast<float>(k))});
        }
    }
    return scene;
}

const std::vector<Workload>& Workloads() {
    static const std::vector<Workload> workloads = {
        {"wide", "nodes", WideTree, false, 2500},
        {"deep", "nodes", DeepTree, false, 2500},
        {"materials", "materials", ManyMaterials, false, 1000},
        {"triangles", "triangles", GridMesh, false, 100000},
        {"samples", "node samples", [](int n) { return MovingRig(60, n / 60); }, true, 15000},
        {"keys", "keys", [](int n) { return MovingRig(100, n / 600); }, false, 120000},
        {"influences", "influences", [](int n) { return SkinnedMesh(n / 8); }, false, 200000},
        {"morph points", "points", [](int n) { return MorphTargets(10, n / 10); }, false, 200000},
    };
    return workloads;
}

const Workload& WorkloadNamed(const std::string& name) {
    for (const Workload& workload : Workloads()) {
        if (workload.name == name) {
            return workload;
        }
    }
    throw std::invalid_argument("there is no workload \"" + name + "\"");
}

}  // namespace bench
