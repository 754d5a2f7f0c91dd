#include "tests/corpus/gltf_file.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "tests/corpus/file_bytes.h"

namespace corpus {
namespace {

using nlohmann::json;

// ---------------------------------------------------------------- data

class GltfReader {
  public:
    explicit GltfReader(const std::string& path) {
        Bytes bytes(path);
        ExpectEqual("the magic number", bytes.Take<std::uint32_t>(), 0x46546C67u);
        ExpectEqual("the version", bytes.Take<std::uint32_t>(), 2u);
        bytes.Skip(4);
        const std::string text = TakeChunk(bytes, 0x4E4F534A);
        root_ = json::parse(text);
        buffer_ = bytes.AtEnd() ? "" : TakeChunk(bytes, 0x004E4942);
    }

    json List(const char* name) const { return root_.value(name, json::array()); }

    // The elements of an accessor, each a list of its components.
    std::vector<std::vector<double>> Elements(std::size_t number) const {
        const json& accessor = root_.at("accessors").at(number);
        const json& view = root_.at("bufferViews").at(accessor.at("bufferView").get<std::size_t>());
        const std::string type = accessor.at("type");
        const std::size_t components = type == "SCALAR" ? 1 : type == "MAT4" ? 16 : type[3] - '0';
        const int kind = accessor.at("componentType");
        std::size_t at = view.value("byteOffset", 0u) + accessor.value("byteOffset", 0u);
        std::vector<std::vector<double>> elements(accessor.at("count").get<std::size_t>());
        for (std::vector<double>& element : elements) {
            for (std::size_t i = 0; i < components; ++i) {
                element.push_back(Component(kind, at));
            }
        }
        return elements;
    }

    std::vector<Vector> Vectors(const json& number) const {
        std::vector<Vector> vectors;
        for (const std::vector<double>& v : Elements(number.get<std::size_t>())) {
            vectors.emplace_back(v.at(0), v.at(1), v.at(2));
        }
        return vectors;
    }

  private:
    static std::string TakeChunk(Bytes& bytes, std::uint32_t kind) {
        const auto size = bytes.Take<std::uint32_t>();
        ExpectEqual("the chunk's kind", bytes.Take<std::uint32_t>(), kind);
        std::string text(size, '\0');
        for (char& c : text) {
            c = bytes.Take<char>();
        }
        return text;
    }

    template <typename T>
    double Take(std::size_t& at) const {
        T value;
        std::memcpy(&value, buffer_.substr(at, sizeof value).data(), sizeof value);
        at += sizeof value;
        return static_cast<double>(value);
    }

    double Component(int kind, std::size_t& at) const {
        switch (kind) {
            case 5121:
                return Take<std::uint8_t>(at);
            case 5123:
                return Take<std::uint16_t>(at);
            case 5125:
                return Take<std::uint32_t>(at);
            case 5126:
                return Take<float>(at);
            default:
                Differ("component type " + std::to_string(kind));
        }
    }

    json root_;
    std::string buffer_;
};

// ---------------------------------------------------------------- objects

Vector VectorOf(const json& values) {
    return {values.at(0), values.at(1), values.at(2)};
}

std::vector<GltfNode> NodesOf(const GltfReader& reader) {
    std::vector<GltfNode> nodes;
    const json list = reader.List("nodes");
    for (const json& object : list) {
        GltfNode& node = nodes.emplace_back();
        node.name = object.value("name", "");
        for (const auto& [key, field] :
             {std::pair("mesh", &node.mesh), std::pair("skin", &node.skin)}) {
            if (object.contains(key)) {
                *field = object.at(key).get<std::size_t>();
            }
        }
        if (object.contains("matrix")) {
            Differ("node \"" + node.name + "\" has a matrix");
        }
        if (object.contains("translation")) {
            node.translation = VectorOf(object["translation"]);
        }
        if (object.contains("rotation")) {
            const json& q = object["rotation"];
            node.rotation = Rotation(q[3], q[0], q[1], q[2]);
        }
        if (object.contains("scale")) {
            node.scale = VectorOf(object["scale"]);
        }
    }
    for (std::size_t i = 0; i < list.size(); ++i) {
        for (const json& child : list[i].value("children", json::array())) {
            nodes.at(child.get<std::size_t>()).parent = i;
        }
    }
    return nodes;
}

GltfPrimitive PrimitiveOf(const GltfReader& reader, const json& object) {
    const json& attributes = object.at("attributes");
    GltfPrimitive primitive;
    primitive.positions = reader.Vectors(attributes.at("POSITION"));
    primitive.normals = reader.Vectors(attributes.at("NORMAL"));
    const auto indices = reader.Elements(object.at("indices").get<std::size_t>());
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        primitive.triangles.push_back({static_cast<std::uint32_t>(indices[i][0]),
                                       static_cast<std::uint32_t>(indices[i + 1][0]),
                                       static_cast<std::uint32_t>(indices[i + 2][0])});
    }
    primitive.influences.resize(primitive.positions.size());
    for (int set = 0; attributes.contains("JOINTS_" + std::to_string(set)); ++set) {
        const auto joints =
            reader.Elements(attributes["JOINTS_" + std::to_string(set)].get<std::size_t>());
        const auto weights =
            reader.Elements(attributes.at("WEIGHTS_" + std::to_string(set)).get<std::size_t>());
        for (std::size_t v = 0; v < joints.size(); ++v) {
            for (std::size_t i = 0; i < 4; ++i) {
                primitive.influences[v].emplace_back(joints[v][i], weights[v][i]);
            }
        }
    }
    for (const json& target : object.value("targets", json::array())) {
        primitive.targets.push_back(reader.Vectors(target.at("POSITION")));
    }
    return primitive;
}

GltfSkin SkinOf(const GltfReader& reader, const json& object) {
    GltfSkin skin;
    skin.joints = object.at("joints").get<std::vector<std::size_t>>();
    for (const auto& m : reader.Elements(object.at("inverseBindMatrices").get<std::size_t>())) {
        Matrix matrix;
        for (unsigned i = 0; i < 16; ++i) {
            matrix[i % 4][i / 4] = m[i];
        }
        skin.inverseBindMatrices.push_back(matrix);
    }
    return skin;
}

GltfChannel ChannelOf(const GltfReader& reader, const json& animation, const json& object) {
    const json& sampler = animation.at("samplers").at(object.at("sampler").get<std::size_t>());
    GltfChannel channel;
    channel.node = object.at("target").at("node");
    channel.path = object.at("target").at("path");
    channel.interpolation = sampler.value("interpolation", "LINEAR");
    for (const auto& time : reader.Elements(sampler.at("input").get<std::size_t>())) {
        channel.times.push_back(time[0]);
    }
    for (const auto& value : reader.Elements(sampler.at("output").get<std::size_t>())) {
        std::array<double, 4>& stored = channel.values.emplace_back();
        std::copy(value.begin(), value.end(), stored.begin());
    }
    return channel;
}

// ---------------------------------------------------------------- evaluation

using Value = std::array<double, 4>;

Value Weighted(const Value& a, double ofA, const Value& b, double ofB) {
    Value sum{};
    for (std::size_t i = 0; i < 4; ++i) {
        sum[i] = a[i] * ofA + b[i] * ofB;
    }
    return sum;
}

// glTF 2.0, appendix C: spherical linear interpolation.
Value Slerp(const Value& a, const Value& b, double share) {
    double dot = 0;
    for (std::size_t i = 0; i < 4; ++i) {
        dot += a[i] * b[i];
    }
    const double angle = std::acos(std::min(1.0, std::abs(dot)));
    const double side = dot < 0 ? -1 : 1;
    if (angle < 1e-7) {
        return Weighted(a, 1 - share, b, side * share);
    }
    return Weighted(a, std::sin(angle * (1 - share)) / std::sin(angle), b,
                    side * std::sin(angle * share) / std::sin(angle));
}

}  // namespace

Value GltfChannel::At(double seconds) const {
    const bool isCubic = interpolation == "CUBICSPLINE";
    const auto value = [&](std::size_t key) { return values.at(isCubic ? 3 * key + 1 : key); };
    const auto after = std::upper_bound(times.begin(), times.end(), seconds);
    if (after == times.begin() || after == times.end()) {
        return value(after == times.begin() ? 0 : times.size() - 1);
    }
    const auto next = static_cast<std::size_t>(after - times.begin());
    const double span = times[next] - times[next - 1];
    const double t = (seconds - times[next - 1]) / span;
    if (interpolation == "STEP") {
        return value(next - 1);
    }
    if (!isCubic) {
        return path == "rotation" ? Slerp(value(next - 1), value(next), t)
                                  : Weighted(value(next - 1), 1 - t, value(next), t);
    }
    const double t2 = t * t, t3 = t2 * t;
    return Weighted(
        Weighted(value(next - 1), 2 * t3 - 3 * t2 + 1, values.at(3 * next - 1),
                 span * (t3 - 2 * t2 + t)),
        1, Weighted(value(next), -2 * t3 + 3 * t2, values.at(3 * next), span * (t3 - t2)), 1);
}

std::vector<Matrix> Gltf::Worlds(double seconds) const {
    std::vector<GltfNode> posed = nodes;
    for (const GltfChannel& channel : channels) {
        const Value v = channel.At(seconds);
        GltfNode& node = posed.at(channel.node);
        if (channel.path == "rotation") {
            node.rotation = Rotation(v[3], v[0], v[1], v[2]);
        } else {
            (channel.path == "scale" ? node.scale : node.translation) = Vector(v[0], v[1], v[2]);
        }
    }
    std::vector<std::optional<Matrix>> worlds(posed.size());
    std::vector<Matrix> all;
    for (std::size_t i = 0; i < posed.size(); ++i) {
        std::vector<std::size_t> path;
        for (std::optional<std::size_t> at = i; at && !worlds[*at]; at = posed[*at].parent) {
            path.push_back(*at);
        }
        for (; !path.empty(); path.pop_back()) {
            GltfNode& node = posed[path.back()];
            const Matrix local = Compose(node.translation, node.rotation.Normalize(), node.scale);
            worlds[path.back()] = node.parent ? *worlds[*node.parent] * local : local;
        }
        all.push_back(*worlds[i]);
    }
    return all;
}

Vector Gltf::Shown(const GltfNode& node, const GltfPrimitive& primitive, std::size_t vertex,
                   const std::vector<Matrix>& worlds) const {
    const Vector& position = primitive.positions[vertex];
    if (!node.skin) {
        return worlds[static_cast<std::size_t>(&node - nodes.data())] * position;
    }
    const GltfSkin& skin = skins.at(*node.skin);
    Vector sum;
    for (const auto& [joint, weight] : primitive.influences[vertex]) {
        sum += worlds.at(skin.joints.at(joint)) * (skin.inverseBindMatrices[joint] * position) *
               weight;
    }
    return sum;
}

Gltf ReadGltf(const std::string& path) {
    const GltfReader reader(path);
    Gltf gltf;
    gltf.nodes = NodesOf(reader);
    for (const json& mesh : reader.List("meshes")) {
        gltf.meshes.emplace_back();
        for (const json& primitive : mesh.at("primitives")) {
            gltf.meshes.back().push_back(PrimitiveOf(reader, primitive));
        }
    }
    for (const json& skin : reader.List("skins")) {
        gltf.skins.push_back(SkinOf(reader, skin));
    }
    for (const json& animation : reader.List("animations")) {
        for (const json& channel : animation.at("channels")) {
            gltf.channels.push_back(ChannelOf(reader, animation, channel));
        }
    }
    return gltf;
}

}  // namespace corpus
