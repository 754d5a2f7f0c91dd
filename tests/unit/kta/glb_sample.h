// GLB files that tests make of sample files, taken apart.
#pragma once

#include <cstring>
#include <nlohmann/json.hpp>

#include "kta/glb.h"
#include "tests/unit/kta/sample.h"

namespace sample {

using nlohmann::json;

// ---------------------------------------------------------------- documents

// What was encoded of an actor and a motion, taken apart.
struct TakenGlb {
    std::vector<std::uint8_t> bytes;
    json root;
    std::string buffer;
    std::vector<std::string> warnings;

    std::uint32_t U32At(std::size_t offset) const {
        std::uint32_t value = 0;
        std::memcpy(&value, bytes.data() + offset, sizeof value);
        return value;
    }

    template <typename Component = float>
    std::vector<Component> Values(const json& accessorNumber) const {
        const json& accessor = root["accessors"].at(accessorNumber.get<std::size_t>());
        const json& view = root["bufferViews"].at(accessor["bufferView"].get<std::size_t>());
        std::vector<Component> values(view["byteLength"].get<std::size_t>() / sizeof(Component));
        std::memcpy(values.data(), buffer.data() + view["byteOffset"].get<std::size_t>(),
                    values.size() * sizeof(Component));
        return values;
    }

    const json& Node(const std::string& name) const {
        for (const json& node : root["nodes"]) {
            if (node["name"] == name) {
                return node;
            }
        }
        throw std::runtime_error("no node " + name);
    }
    const json& Primitive(std::size_t mesh = 0, std::size_t primitive = 0) const {
        return root["meshes"].at(mesh)["primitives"].at(primitive);
    }
    std::vector<float> Attribute(const std::string& name) const {
        return Values(Primitive()["attributes"].at(name));
    }
    // Of the animation's channel for that node and path.
    const json& Sampler(const std::string& node, const std::string& path) const {
        const json& animation = root["animations"].at(0);
        for (const json& channel : animation["channels"]) {
            const json& target = channel["target"];
            if (root["nodes"].at(target["node"].get<std::size_t>())["name"] == node &&
                target["path"] == path) {
                return animation["samplers"].at(channel["sampler"].get<std::size_t>());
            }
        }
        throw std::runtime_error("no channel " + path + " of " + node);
    }
};

inline TakenGlb GlbOf(const std::string& actor, const std::string& motion = "",
                      const kta::GlbOptions& options = {}) {
    const kta::Reading actorReading = ReadExact(actor);
    const kta::Reading motionReading = ReadExact(motion.empty() ? kMotion : motion);
    TakenGlb glb;
    glb.bytes = kta::EncodeGlb(actorReading.file.value(), &motionReading.file.value(), options,
                               glb.warnings);
    const std::size_t jsonSize = glb.U32At(12);
    const std::string text(glb.bytes.begin(), glb.bytes.end());
    glb.root = json::parse(text.substr(20, jsonSize));
    if (20 + jsonSize < text.size()) {
        glb.buffer = text.substr(28 + jsonSize);
    }
    return glb;
}

inline std::vector<float> Floats(const json& values) {
    return values.get<std::vector<float>>();
}

inline void ExpectFloats(const std::vector<float>& found, const std::vector<float>& expected) {
    ASSERT_EQ(found.size(), expected.size());
    for (std::size_t i = 0; i < found.size(); ++i) {
        EXPECT_NEAR(found[i], expected[i], 1e-5) << "value " << i;
    }
}

// ---------------------------------------------------------------- actors

inline MeshFields FacingTriangleOf(std::uint32_t node, std::uint32_t material = 0) {
    MeshFields mesh;
    mesh.node = node;
    mesh.originalVertexCount = 3;
    mesh.subMeshes = {
        {material,
         {{0, {1, 2, 3}, {0, 0, 1}}, {1, {2, 2, 3}, {0, 0, 1}}, {2, {1, 4, 3}, {0, 0, 1}}},
         {{0, 1, 2}}}};
    return mesh;
}

inline std::string ActorOf(const std::vector<NodeFields>& nodes, const std::string& more = "") {
    std::string file = kActor + ExtraMaterial();
    for (const NodeFields& node : nodes) {
        file += NodeChunk(node);
    }
    return file + more;
}

inline std::string TriangleActor() {
    return ActorOf({RootAt("Box", {})}, MeshChunk(FacingTriangleOf(0)));
}

}  // namespace sample
