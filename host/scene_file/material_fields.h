// Materials and maps, field by field, for reading and for writing alike. Private to the
// scene description's reader and writer.
#pragma once

#include "host/scene_file/scene_codec.h"

namespace maxhost::import {

template <class Io, Is<scene::BitmapMap> B>
void Describe(Io& io, B& map) {
    const scene::BitmapMap standard;
    io.Field("file", map.file, standard.file);
    io.Field("uOffset", map.uOffset, standard.uOffset);
    io.Field("vOffset", map.vOffset, standard.vOffset);
    io.Field("uTiling", map.uTiling, standard.uTiling);
    io.Field("vTiling", map.vTiling, standard.vTiling);
    io.Field("angle", map.angle, standard.angle);
    io.Field("coordinates", map.coordinates, standard.coordinates);
}

template <class Io, Is<scene::OtherMap> O>
void Describe(Io& io, O& map) {
    io.Required("classId", map.classId);
}

template <>
constexpr std::string_view kNameOf<scene::Map> = "a map";

template <class Io, Is<scene::Map> M>
void Describe(Io& io, M& map) {
    using SubMap = std::shared_ptr<const scene::Map>;
    DescribeClass(io, map.kind, {"bitmap", "other"});
    std::visit([&io](auto& kind) { Describe(io, kind); }, map.kind);
    io.List("subMaps", map.subMaps, ListOf<SubMap, NullOr<scene::Map>>());
}

template <>
constexpr std::string_view kNameOf<scene::MapSlot> = "a slot with a map";
template <>
constexpr bool kHasOwnLine<scene::MapSlot> = true;

// The slot is written always: a slot of 1 that nobody sees would puzzle people.
template <class Io, Is<scene::MapSlot> S>
void Describe(Io& io, S& slot) {
    constexpr int kDiffuse = 1;
    if constexpr (Io::kReads) {
        slot.slot = kDiffuse;
        io.Field("slot", slot.slot, kDiffuse);
    } else {
        io.Required("slot", slot.slot);
    }
    io.Field("enabled", slot.enabled, true);
    io.Field("amount", slot.amount, 1.0f);
    io.Required("map", slot.map);
}

template <>
struct Codec<scene::SubMaterial> : Inline {
    static void Read(JsonValue value, scene::SubMaterial& result) {
        using Own = std::shared_ptr<const scene::Material>;
        switch (value.Kind()) {
            case JsonKind::null:
                break;
            case JsonKind::object:
                Codec<Own>::Read(value, result.emplace<Own>());
                break;
            case JsonKind::integer:
                Position::Read(value, result.emplace<int>());
                break;
            default:
                value.Refuse("a material, a position in the scene's materials or null");
        }
    }
    static void Write(JsonOut& out, const scene::SubMaterial& value) {
        if (const auto* own = std::get_if<std::shared_ptr<const scene::Material>>(&value)) {
            Codec<scene::Material>::Write(out, **own);
        } else if (const int* position = std::get_if<int>(&value)) {
            out.Whole(*position);
        } else {
            out.Null();
        }
    }
};

template <class Io, Is<scene::Material> M>
void DescribeLooks(Io& io, M& material) {
    const scene::Material standard;
    io.Field("ambient", material.ambient, standard.ambient);
    io.Field("diffuse", material.diffuse, standard.diffuse);
    io.Field("specular", material.specular, standard.specular);
    io.Field("selfIllumination", material.selfIllumination, standard.selfIllumination);
    io.Field("shininess", material.shininess, standard.shininess);
    io.Field("shininessStrength", material.shininessStrength, standard.shininessStrength);
    io.Field("transparency", material.transparency, standard.transparency);
    if (material.kind == scene::MaterialKind::standard) {
        io.Field("twoSided", material.twoSided, standard.twoSided);
        io.Field("wire", material.wire, standard.wire);
        io.Field("transparencyType", material.transparencyType, standard.transparencyType);
    }
    io.List("maps", material.maps);
}

template <>
constexpr std::string_view kNameOf<scene::Material> = "a material";
template <>
constexpr bool kHasOwnLine<std::shared_ptr<const scene::Material>> = true;
template <>
constexpr bool kHasOwnLine<scene::SubMaterial> = true;

template <class Io, Is<scene::Material> M>
void Describe(Io& io, M& material) {
    auto kind = static_cast<std::size_t>(material.kind);
    io.Class(kind, {"standard", "multi", "other"});
    if constexpr (Io::kReads) {
        material.kind = static_cast<scene::MaterialKind>(kind);
    }
    if (material.kind == scene::MaterialKind::other) {
        io.Required("classId", material.classId);
    }
    io.Field("name", material.name, std::string());
    if (material.kind != scene::MaterialKind::multi) {
        DescribeLooks(io, material);
    }
    io.List("subMaterials", material.subMaterials);
}

}  // namespace maxhost::import
