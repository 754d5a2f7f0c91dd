// Objects and modifiers, field by field, for reading and for writing alike. Private to the
// scene description's reader and writer.
#pragma once

#include "host/scene/error.h"
#include "host/scene_file/scene_codec.h"

namespace maxhost::import {

// ---------------------------------------------------------------- objects

template <>
struct Codec<scene::Face> : Inline {
    static void Read(JsonValue value, scene::Face& result) {
        if (value.Kind() != JsonKind::list || value.Size() < 3 || value.Size() > 5) {
            value.Refuse("a list of 3 vertices, a smoothing mask and a material id");
        }
        JsonValue::Iterator part = value.begin();
        for (std::uint32_t& vertex : result.v) {
            Codec<std::uint32_t>::Read(*part, vertex);
            ++part;
        }
        ReadIfGiven<Word>(part, value.end(), result.smoothing);
        ReadIfGiven<Codec<std::uint16_t>>(part, value.end(), result.material);
    }
    static void Write(JsonOut& out, const scene::Face& value) {
        out.BeginList();
        for (const std::uint32_t vertex : value.v) {
            out.Part();
            out.Whole(vertex);
        }
        if (value.smoothing != 0 || value.material != 0) {
            out.Part();
            out.Whole(value.smoothing);
        }
        if (value.material != 0) {
            out.Part();
            out.Whole(value.material);
        }
        out.EndList();
    }

  private:
    template <class C, class T>
    static void ReadIfGiven(JsonValue::Iterator& part, const JsonValue::Iterator& end, T& result) {
        if (part != end) {
            if ((*part).Kind() != JsonKind::null) {
                C::Read(*part, result);
            }
            ++part;
        }
    }
};

template <>
constexpr std::string_view kNameOf<scene::MapChannel> = "a map channel";

template <class Io, Is<scene::MapChannel> C>
void Describe(Io& io, C& channel) {
    io.List("vertices", channel.vertices);
    io.List("faces", channel.faces);
}

// An object whose field names are numbers.
template <class Number, class T>
struct Codec<std::map<Number, T>> : Block {
    static std::string What() { return "an object with numbers as names"; }
    static void Read(JsonValue value, std::map<Number, T>& result) {
        if (value.Kind() != JsonKind::object) {
            value.Refuse(What());
        }
        for (JsonValue::Iterator i = value.begin(); i != value.end(); ++i) {
            const std::string_view name = (*i).Text();
            ++i;
            const std::optional<std::uint32_t> number = ReadPositionName(name);
            if (!number || !std::in_range<Number>(*number)) {
                throw SceneError((*i).Pointer(), "the name " + Shown(name), "a number as name");
            }
            if ((*i).Kind() != JsonKind::null) {
                Codec<T>::Read(*i, result[static_cast<Number>(*number)]);
            }
        }
    }
    static void Write(JsonOut& out, const std::map<Number, T>& value) {
        out.BeginObject();
        for (const auto& [number, element] : value) {
            if (kHasOwnLine<T>) {
                out.StartLine();
            }
            out.Name(std::to_string(number));
            Codec<T>::Write(out, element);
        }
        out.EndObject();
    }
};

template <>
constexpr bool kHasOwnLine<scene::MapChannel> = true;

template <class Io, Is<scene::Mesh> M>
void Describe(Io& io, M& mesh) {
    io.List("vertices", mesh.vertices);
    io.List("faces", mesh.faces);
    io.List("channels", mesh.channels);
    io.List("normals", mesh.normals);
}

template <>
constexpr std::string_view kNameOf<scene::Object> = "an object";
template <>
constexpr bool kIsBlockOf<scene::Object> = true;

template <class Io, Is<scene::Object> O>
void Describe(Io& io, O& object) {
    enum Kind : std::size_t { kMesh, kOther };
    std::size_t kind = object.mesh ? kMesh : kOther;
    io.Class(kind, {"mesh", "object"});
    if (kind == kMesh) {
        io.Optional("superClassId", object.superClassId, Word());
        io.Optional("classId", object.classId);
    } else {
        io.Required("superClassId", object.superClassId, Word());
        io.Required("classId", object.classId);
    }
    io.Optional("parameter0", object.parameter0);
    if constexpr (Io::kReads) {
        if (kind == kMesh) {
            const auto mesh = std::make_shared<scene::Mesh>();
            Describe(io, *mesh);
            object.mesh = mesh;
        }
    } else if (kind == kMesh) {
        Describe(io, *object.mesh);
    }
}

// ---------------------------------------------------------------- modifiers

template <>
struct Codec<scene::SkinWeight> : Inline {
    static void Read(JsonValue value, scene::SkinWeight& result) {
        ReadPair<Codec<int>>(value, result.slot, result.weight, "a list of a slot and a weight");
    }
    static void Write(JsonOut& out, const scene::SkinWeight& value) {
        WritePair<Codec<int>>(out, value.slot, value.weight);
    }
};

template <class Io, Is<scene::Skin> S>
void Describe(Io& io, S& skin) {
    io.List("bones", skin.bones, ListOf<int, Position>());
    io.List("weights", skin.weights);
    io.Field("context", skin.context, true);
}

template <>
struct Codec<scene::NodeWeight> : Inline {
    static void Read(JsonValue value, scene::NodeWeight& result) {
        ReadPair<Position>(value, result.node, result.weight, "a list of a node and a weight");
    }
    static void Write(JsonOut& out, const scene::NodeWeight& value) {
        WritePair<Position>(out, value.node, value.weight);
    }
};

using PhysiqueVertex = decltype(scene::Physique::vertices)::value_type;

template <>
struct Codec<PhysiqueVertex> : Inline {
    static void Read(JsonValue value, PhysiqueVertex& result) {
        if (value.Kind() == JsonKind::null) {
            return;
        }
        constexpr std::string_view kExpected = "an object with \"rigid\" or \"blended\", or null";
        Fields fields(value, kExpected);
        if (fields.Has("rigid") == fields.Has("blended")) {
            value.Refuse(kExpected);
        }
        const std::optional<JsonValue> rigid = fields.Find("rigid");
        const std::optional<JsonValue> blended = fields.Find("blended");
        if (rigid) {
            Position::Read(*rigid, result.emplace<scene::PhysiqueRigid>().node);
        } else {
            using Nodes = decltype(scene::PhysiqueBlended::nodes);
            Codec<Nodes>::Read(*blended, result.emplace<scene::PhysiqueBlended>().nodes);
        }
        fields.Close();
    }
    static void Write(JsonOut& out, const PhysiqueVertex& value) {
        if (std::holds_alternative<std::monostate>(value)) {
            out.Null();
            return;
        }
        out.BeginObject();
        if (const auto* rigid = std::get_if<scene::PhysiqueRigid>(&value)) {
            out.Name("rigid");
            Position::Write(out, rigid->node);
        } else {
            const auto& nodes = std::get<scene::PhysiqueBlended>(value).nodes;
            out.Name("blended");
            Codec<std::remove_cvref_t<decltype(nodes)>>::Write(out, nodes);
        }
        out.EndObject();
    }
};

template <class Io, Is<scene::Physique> P>
void Describe(Io& io, P& physique) {
    io.List("vertices", physique.vertices);
}

template <>
constexpr std::string_view kNameOf<scene::MorphChannel> = "a morph channel";
template <>
constexpr bool kHasOwnLine<scene::MorphChannel> = true;

template <class Io, Is<scene::MorphChannel> C>
void Describe(Io& io, C& channel) {
    io.Field("name", channel.name, std::string());
    io.List("points", channel.points);
}

template <class Io, Is<scene::Morpher> M>
void Describe(Io& io, M& morpher) {
    io.List("channels", morpher.channels);
}

template <class Io, Is<scene::OtherModifier> O>
void Describe(Io& io, O& modifier) {
    io.Required("classId", modifier.classId);
}

template <>
constexpr std::string_view kNameOf<scene::Modifier> = "a modifier";
template <>
constexpr bool kHasOwnLine<scene::Modifier> = true;

template <class Io, Is<scene::Modifier> M>
void Describe(Io& io, M& modifier) {
    DescribeClass(io, modifier.kind, {"skin", "physique", "morpher", "other"});
    io.Field("enabled", modifier.enabled, true);
    std::visit([&io](auto& kind) { Describe(io, kind); }, modifier.kind);
}

}  // namespace maxhost::import
