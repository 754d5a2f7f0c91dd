// The scene, its nodes and their transforms, field by field, for reading and for writing alike.
// Private to the scene description's reader and writer.
#pragma once

#include <algorithm>

#include "host/scene_file/controller_fields.h"
#include "host/scene_file/material_fields.h"
#include "host/scene_file/object_fields.h"
#include "host/scene_file/scene_codec.h"

namespace maxhost::import {

// ---------------------------------------------------------------- transforms

template <class Io, Is<scene::PrsTransform> P>
void Describe(Io& io, P& transform) {
    io.Optional("position", transform.position, ThreeAxisCodec{{}, AxisRole::position});
    io.Optional("rotation", transform.rotation, ThreeAxisCodec{{}, AxisRole::rotation});
    io.Optional("scale", transform.scale, ThreeAxisCodec{{}, AxisRole::scale});
}

// The field makes the form, so it is written even where it holds the identity.
template <class Io, Is<scene::MatrixTransform> M>
void Describe(Io& io, M& transform) {
    io.Required("matrix", transform.matrix);
}

template <>
constexpr std::string_view kNameOf<scene::MatrixSample> = "a sample";
template <>
constexpr bool kHasOwnLine<scene::MatrixSample> = true;

template <class Io, Is<scene::MatrixSample> S>
void Describe(Io& io, S& sample) {
    io.Required("time", sample.time);
    io.Required("matrix", sample.matrix);
}

template <class Io, Is<scene::SampledTransform> S>
void Describe(Io& io, S& transform) {
    io.Required("samples", transform.samples);
}

template <class Io, Is<scene::FootprintTransform> F>
void Describe(Io& io, F& transform) {
    io.Field("matrix", transform.matrix, scene::kIdentity);
}

template <class Io, Is<scene::IkChainTransform> I>
void Describe(Io& io, I& transform) {
    io.Field("startJoint", transform.startJoint, scene::kNone, Position());
    io.Field("endJoint", transform.endJoint, scene::kNone, Position());
    io.Field("matrix", transform.matrix, scene::kIdentity);
}

template <>
constexpr std::string_view kNameOf<scene::Transform> = "a transform";
template <>
constexpr bool kIsBlockOf<scene::Transform> = true;

// Two forms have a class; the field that only one form has tells the others apart.
template <class Io, Is<scene::Transform> T>
void DescribeForm(Io& io, T& transform) {
    const std::initializer_list<std::string_view> classes = {"", "", "", "footprint", "ikChain"};
    if constexpr (Io::kReads) {
        if (io.Source().Has("class")) {
            DescribeClass(io, transform.kind, classes);
        } else if (io.Source().Has("samples")) {
            transform.kind = scene::SampledTransform();
        } else if (io.Source().Has("matrix")) {
            transform.kind = scene::MatrixTransform();
        } else {
            for (const std::string_view nullField : {"class", "samples", "matrix"}) {
                io.Source().Find(nullField);
            }
        }
    } else if (!classes.begin()[transform.kind.index()].empty()) {
        DescribeClass(io, transform.kind, classes);
    }
}

template <class Io, Is<scene::Transform> T>
void Describe(Io& io, T& transform) {
    DescribeForm(io, transform);
    DescribeIdentity(io, transform.id, transform.classId, false);
    std::visit([&io](auto& kind) { Describe(io, kind); }, transform.kind);
}

// ---------------------------------------------------------------- the scene

template <>
constexpr std::string_view kNameOf<scene::Node> = "a node";
template <>
constexpr bool kHasOwnLine<scene::Node> = true;

// The version of the form, which has one so far.
struct FormVersion : Inline {
    static std::string What() { return "1"; }
    static void Read(JsonValue value, int& result) {
        if (value.Kind() != JsonKind::integer || value.Integer() != 1) {
            value.Refuse(What());
        }
        result = 1;
    }
    static void Write(JsonOut& out, int value) { out.Whole(value); }
};

// Absent is a transform of its own; null is none.
template <class Io, Is<scene::Node> N>
void DescribeTransform(Io& io, N& node) {
    constexpr std::string_view kField = "transform";
    if constexpr (Io::kReads) {
        const std::optional<JsonValue> found = io.Source().FindOrNull(kField);
        if (found && found->Kind() == JsonKind::null) {
            node.transform.reset();
        } else if (found) {
            Codec<scene::Transform>::Read(*found, node.transform.emplace());
        }
    } else if (!node.transform) {
        io.Target().Name(kField);
        io.Target().Null();
    } else {
        const auto* three = std::get_if<scene::PrsTransform>(&node.transform->kind);
        const bool isEmpty = three && !three->position && !three->rotation && !three->scale;
        const bool isDefault = isEmpty && node.transform->id.empty() && !node.transform->classId;
        if (!isDefault) {
            io.Required(kField, *node.transform);
        }
    }
}

template <class Io, Is<scene::Node> N>
void Describe(Io& io, N& node) {
    const scene::Node standard;
    io.Required("name", node.name);
    io.Field("parent", node.parent, standard.parent, Position());
    io.Field("hidden", node.hidden, standard.hidden);
    io.Field("selected", node.selected, standard.selected);
    io.Field("renderable", node.renderable, standard.renderable);
    io.Field("wireColor", node.wireColor, standard.wireColor);
    io.Field("userProperties", node.userProperties, standard.userProperties);
    io.Field("material", node.material, standard.material, Position());
    DescribeTransform(io, node);
    io.Field("objectOffset", node.objectOffset, standard.objectOffset);
    io.Optional("object", node.object);
    io.List("modifiers", node.modifiers);
    io.List("referenceModifiers", node.referenceModifiers);
}

// What one field makes the default of the next, the writer spells out.
template <class Io, Is<scene::Time> T>
void Describe(Io& io, T& time) {
    if constexpr (Io::kReads) {
        constexpr int kTicksPerSecond = 4800;
        constexpr int kFrames = 100;
        io.Field("frameRate", time.frameRate, 0);
        time.ticksPerFrame = kTicksPerSecond / std::max(1, time.frameRate);
        io.Field("ticksPerFrame", time.ticksPerFrame, 0);
        if (time.ticksPerFrame == 0 && !io.Source().Has("ticksPerFrame")) {
            io.Source().RefuseMissing("ticksPerFrame",
                                      "a whole number of at least 1, as 4800 / frameRate is less");
        }
        io.Field("start", time.start, 0);
        const std::optional<JsonValue> end = io.Source().Find("end");
        if (end) {
            Codec<int>::Read(*end, time.end);
        } else if (time.ticksPerFrame <= std::numeric_limits<int>::max() / kFrames) {
            time.end = kFrames * time.ticksPerFrame;
        } else {
            io.Source().RefuseMissing("end", "a time, as 100 frames are more ticks than fit");
        }
    } else {
        io.Required("frameRate", time.frameRate);
        io.Required("ticksPerFrame", time.ticksPerFrame);
        io.Required("start", time.start);
        io.Required("end", time.end);
    }
}

inline std::vector<int> SelectedNodes(const std::vector<scene::Node>& nodes) {
    std::vector<int> selected;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i].selected) {
            selected.push_back(static_cast<int>(i));
        }
    }
    return selected;
}

template <>
constexpr std::string_view kNameOf<scene::Scene> = "a scene description";

template <class Io, Is<scene::Scene> S>
void Describe(Io& io, S& scene) {
    int version = 1;
    io.Required("maxscene", version, FormVersion());
    io.Field("time", scene.time, scene::Time());
    io.List("materials", scene.materials);
    io.List("nodes", scene.nodes);
    if constexpr (Io::kReads) {
        scene.selection = SelectedNodes(scene.nodes);
    }
    io.Field("selection", scene.selection, SelectedNodes(scene.nodes), ListOf<int, Position>());
}

}  // namespace maxhost::import
