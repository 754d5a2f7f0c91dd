// Float and three-axis controllers, field by field, for reading and for writing alike. Private to
// the scene description's reader and writer.
#pragma once

#include <algorithm>
#include <cmath>

#include "host/scene_file/scene_codec.h"

namespace maxhost::import {

constexpr std::array<std::string_view, 7> kTangentNames = {"smooth", "linear", "step", "fast",
                                                           "slow",   "custom", "flat"};

template <>
struct Codec<scene::Tangent> : Inline {
    static std::string What() { return ListNames({kTangentNames.begin(), kTangentNames.end()}); }
    static void Read(JsonValue value, scene::Tangent& result) {
        const auto name = value.Kind() == JsonKind::text
                              ? std::find(kTangentNames.begin(), kTangentNames.end(), value.Text())
                              : kTangentNames.end();
        if (name == kTangentNames.end()) {
            value.Refuse(What());
        }
        result = static_cast<scene::Tangent>(name - kTangentNames.begin());
    }
    static void Write(JsonOut& out, scene::Tangent value) {
        out.Text(kTangentNames[static_cast<std::size_t>(value)]);
    }
};

template <>
constexpr std::string_view kNameOf<scene::Key> = "a key";
template <>
constexpr std::string_view kNameOf<scene::Key3> = "a key";
template <>
constexpr bool kHasOwnLine<scene::Key> = true;
template <>
constexpr bool kHasOwnLine<scene::Key3> = true;

template <class Io, class K>
requires Is<K, scene::Key> || Is<K, scene::Key3>
void Describe(Io& io, K& key) {
    const std::remove_const_t<K> standard;
    io.Required("time", key.time);
    io.Required("value", key.value);
    io.Field("inType", key.inType, standard.inType);
    io.Field("outType", key.outType, standard.outType);
    io.Field("inTangent", key.inTangent, standard.inTangent);
    io.Field("outTangent", key.outTangent, standard.outTangent);
    io.Field("inLength", key.inLength, standard.inLength);
    io.Field("outLength", key.outLength, standard.outLength);
}

template <class Io, Is<scene::BezierFloat> B>
void Describe(Io& io, B& bezier) {
    io.List("keys", bezier.keys);
    io.Field("value", bezier.value, 0.0f);
}

template <>
constexpr std::string_view kNameOf<scene::FloatListItem> = "an item with a controller";
template <>
constexpr bool kHasOwnLine<scene::FloatListItem> = true;

template <class Io, Is<scene::FloatListItem> I>
void Describe(Io& io, I& item) {
    io.Field("weight", item.weight, 1.0f);
    io.Required("controller", item.controller);
}

template <class Io, Is<scene::FloatList> L>
void Describe(Io& io, L& list) {
    io.List("items", list.items);
}

template <>
constexpr std::string_view kNameOf<scene::Wire> = "a wire";
template <>
constexpr bool kHasOwnLine<scene::Wire> = true;

template <class Io, Is<scene::Wire> W>
void Describe(Io& io, W& wire) {
    const std::string none;
    io.Field("parent", wire.parent, none, Id());
    io.Field("subnum", wire.subnum, 0);
    io.Field("coController", wire.coController, none, Id());
    io.Field("expression", wire.expression, none);
}

template <class Io, Is<scene::WireFloat> W>
void Describe(Io& io, W& wire) {
    const scene::WireFloat standard;
    io.Field("master", wire.master, standard.master);
    io.Field("slave", wire.slave, standard.slave);
    io.Field("twoWay", wire.twoWay, standard.twoWay);
    io.List("wires", wire.wires);
    io.Field("value", wire.value, standard.value);
}

template <class Io, Is<scene::OtherFloat> O>
void Describe(Io& io, O& other) {
    io.Field("value", other.value, 0.0f);
}

// A class that is not one of the known ones has no class id of its own to fall back on.
template <class Io, class Id_, class ClassIds>
void DescribeIdentity(Io& io, Id_& id, ClassIds& classId, bool isRequired) {
    io.Field("id", id, std::string(), Id());
    if (isRequired) {
        io.Required("classId", classId);
    } else {
        io.Optional("classId", classId);
    }
}

template <class Io, Is<scene::FloatController> F>
void Describe(Io& io, F& controller) {
    DescribeClass(io, controller.kind, {"bezierFloat", "floatList", "wire", "other"});
    DescribeIdentity(io, controller.id, controller.classId,
                     std::holds_alternative<scene::OtherFloat>(controller.kind));
    std::visit([&io](auto& kind) { Describe(io, kind); }, controller.kind);
}

// A constant: a Bezier float controller without keys and without a name.
inline const float* BareValue(const scene::FloatController& controller) {
    const auto* bezier = std::get_if<scene::BezierFloat>(&controller.kind);
    const bool isBare =
        bezier && bezier->keys.empty() && controller.id.empty() && !controller.classId;
    return isBare ? &bezier->value : nullptr;
}

template <>
struct Codec<scene::FloatController> : Inline {
    static std::string What() { return "a float controller or a number"; }
    static void Read(JsonValue value, scene::FloatController& result) {
        if (value.Kind() == JsonKind::integer || value.Kind() == JsonKind::real) {
            result.kind = scene::BezierFloat{{}, ReadReal(value)};
            return;
        }
        Fields fields(value, What());
        FieldReader io(fields);
        Describe(io, result);
        fields.Close();
    }
    static void Write(JsonOut& out, const scene::FloatController& value) {
        if (const float* constant = BareValue(value)) {
            out.Real(*constant);
            return;
        }
        out.BeginObject();
        FieldWriter io(out);
        Describe(io, value);
        out.EndObject();
    }
};

template <>
constexpr std::string_view kNameOf<scene::JointParams> = "joint parameters";

// As many of `limits` as the joint has degrees of freedom.
template <class Io, class Limits>
void DescribeLimits(Io& io, std::string_view name, Limits& limits, std::size_t count) {
    if constexpr (Io::kReads) {
        const std::optional<JsonValue> found = io.Source().Find(name);
        if (!found || count == 0 || count > limits.size()) {
            return;
        }
        ExpectList(*found, count, "a list of " + std::to_string(count) + " numbers");
        std::size_t i = 0;
        for (const JsonValue limit : *found) {
            Codec<float>::Read(limit, limits[i++]);
        }
    } else if (!IsSame(limits, Limits{})) {
        io.Target().Name(name);
        Row<float, 6>::WriteFrom(io.Target(), limits.data(), count);
    }
}

template <class Io, Is<scene::JointParams> J>
void Describe(Io& io, J& joint) {
    io.Required("flags", joint.flags, Word());
    io.Field("dofs", joint.dofs, scene::JointParams().dofs);
    DescribeLimits(io, "min", joint.min, static_cast<std::size_t>(joint.dofs));
    DescribeLimits(io, "max", joint.max, static_cast<std::size_t>(joint.dofs));
    io.Field("default", joint.isDefault, false);
}

// The controller's place decides on the names of its class and on what its value is.
enum class AxisRole { position, rotation, scale };

template <class Io, Is<scene::ThreeAxes> A>
void Describe(Io& io, A& controller, AxisRole) {
    io.Optional("x", controller.axes[0]);
    io.Optional("y", controller.axes[1]);
    io.Optional("z", controller.axes[2]);
}

template <class Io, Is<scene::BezierScale> B>
void Describe(Io& io, B& controller, AxisRole) {
    io.List("keys", controller.keys);
    io.Field("value", controller.value, scene::BezierScale().value);
}

struct ThreeNumbers : Row<float, 3> {
    static void Read(JsonValue value, std::array<float, 4>& result) {
        ReadTo(value, result.data());
    }
    static void Write(JsonOut& out, const std::array<float, 4>& value) {
        WriteFrom(out, value.data());
    }
};

// A quaternion of unit length stays as it is to the bit, so that what was saved is what is read.
// A zero quaternion stays too; the scene's check refuses it.
struct QuaternionValue : Row<float, 4> {
    static void Read(JsonValue value, std::array<float, 4>& result) {
        ReadTo(value, result.data());
        double square = 0;
        for (const float part : result) {
            square += static_cast<double>(part) * part;
        }
        const double length = std::sqrt(square);
        if (length == 0 || std::abs(length - 1) <= 1e-6) {
            return;
        }
        for (float& part : result) {
            part = static_cast<float>(part / length);
        }
    }
    static void Write(JsonOut& out, const std::array<float, 4>& value) {
        WriteFrom(out, value.data());
    }
};

template <class Io, Is<scene::OtherThree> O>
void Describe(Io& io, O& controller, AxisRole role) {
    if (role == AxisRole::rotation) {
        io.Required("value", controller.value, QuaternionValue());
    } else {
        io.Required("value", controller.value, ThreeNumbers());
    }
}

template <class Io, Is<scene::ThreeAxisController> C>
void Describe(Io& io, C& controller, AxisRole role) {
    switch (role) {
        case AxisRole::position:
            DescribeClass(io, controller.kind, {"positionXYZ", "", "other"});
            break;
        case AxisRole::rotation:
            DescribeClass(io, controller.kind, {"eulerXYZ", "", "other"});
            break;
        case AxisRole::scale:
            DescribeClass(io, controller.kind, {"scaleXYZ", "bezierScale", "other"});
            break;
    }
    DescribeIdentity(io, controller.id, controller.classId,
                     std::holds_alternative<scene::OtherThree>(controller.kind));
    io.Optional("jointParams", controller.jointParams);
    std::visit([&io, role](auto& kind) { Describe(io, kind, role); }, controller.kind);
}

// Three constants: without names, joint parameters and keys.
inline std::optional<scene::Vec3> BareValue(const scene::ThreeAxisController& controller) {
    const auto* three = std::get_if<scene::ThreeAxes>(&controller.kind);
    if (!three || !controller.id.empty() || controller.classId || controller.jointParams) {
        return std::nullopt;
    }
    scene::Vec3 values;
    for (std::size_t i = 0; i < 3; ++i) {
        const std::optional<scene::FloatController>& axis = three->axes[i];
        const float* value = axis ? BareValue(*axis) : nullptr;
        if (!value) {
            return std::nullopt;
        }
        values[i] = *value;
    }
    return values;
}

struct ThreeAxisCodec : Block {
    AxisRole role;

    static std::string What() { return "a controller or a list of 3 numbers"; }
    void Read(JsonValue value, scene::ThreeAxisController& result) const {
        if (value.Kind() == JsonKind::list) {
            scene::Vec3 values;
            Codec<scene::Vec3>::Read(value, values);
            auto& three = result.kind.emplace<scene::ThreeAxes>();
            for (std::size_t i = 0; i < 3; ++i) {
                three.axes[i].emplace().kind = scene::BezierFloat{{}, values[i]};
            }
            return;
        }
        Fields fields(value, What());
        FieldReader io(fields);
        Describe(io, result, role);
        fields.Close();
    }
    void Write(JsonOut& out, const scene::ThreeAxisController& value) const {
        if (const std::optional<scene::Vec3> constants = BareValue(value)) {
            Codec<scene::Vec3>::Write(out, *constants);
            return;
        }
        out.BeginObject();
        FieldWriter io(out);
        Describe(io, value, role);
        out.EndObject();
    }
};

}  // namespace maxhost::import
