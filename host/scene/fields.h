// The fields of every structure of scene.h: by these lists a scene is read and written as a scene
// description, handed to another process, checked, scaled and compared. A structure's list names
// its members in their order, each with the name that it has in the description; a list that
// misses a member does not compile.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "host/scene/scene.h"

namespace maxhost::scene {

// How a field stands in the description.
enum class Presence {
    optional,  // left out where it holds its default
    required,
    written,  // may be left out by others, but is always written
    absent,   // objects of this class do not have it
};

// The meaning of a field's value where its type does not say it; of a list: that of each element.
enum class Meaning {
    plain,
    word,            // an id or a mask, which people know in hexadecimal
    length,          // scaled with the scene; in a controller, where it is a position's
    node,            // a position in Scene::nodes
    nodeOrNone,      // the same or kNone
    material,        // a position in Scene::materials
    materialOrNone,  // the same or kNone
    name,            // what wires call the controller; empty: none
    controllerName,  // the name of a controller or a transform; empty: none
    floatName,       // the name of a float controller; empty: none
    jointLimits,     // as many numbers count as the joint has degrees of freedom
    pointerOrNull,   // a list's empty slots are null
    valueOrNull,     // null is none, an absent field the default
    kind,            // the class itself
    inlined,         // its fields stand in the description among the structure's own
    position,        // a transform's controller in this role ...
    rotation,
    scale,
    ofRole,  // ... and what such a controller has as its value
};

template <class T, class M, Meaning kMeaningOf>
struct Field {
    static constexpr Meaning kMeaning = kMeaningOf;
    static constexpr std::size_t kMembers = 1;

    std::string_view name;
    M T::*member;
    Presence presence;
    Presence (*ofClass)(const T&) = nullptr;  // in place of `presence`, where the class decides

    constexpr M& Of(T& object) const { return object.*member; }
    constexpr const M& Of(const T& object) const { return object.*member; }
    constexpr Presence In(const T& object) const { return ofClass ? ofClass(object) : presence; }
};

template <Meaning kMeaning = Meaning::plain, class T, class M>
constexpr Field<T, M, kMeaning> Optional(std::string_view name, M T::*member) {
    return {name, member, Presence::optional};
}
template <Meaning kMeaning = Meaning::plain, class T, class M>
constexpr Field<T, M, kMeaning> Required(std::string_view name, M T::*member) {
    return {name, member, Presence::required};
}
template <Meaning kMeaning = Meaning::plain, class T, class M>
constexpr Field<T, M, kMeaning> Written(std::string_view name, M T::*member) {
    return {name, member, Presence::written};
}
template <Meaning kMeaning = Meaning::plain, class T, class M>
constexpr Field<T, M, kMeaning> ByClass(std::string_view name, M T::*member,
                                        std::type_identity_t<Presence(const T&)>* ofClass) {
    return {name, member, Presence::optional, ofClass};
}

// An axis of three, which the description names x, y and z.
template <std::size_t kAxis>
struct AxisField {
    static constexpr Meaning kMeaning = Meaning::plain;
    static constexpr std::size_t kMembers = kAxis == 0 ? 1 : 0;

    std::string_view name;

    constexpr auto& Of(ThreeAxes& object) const { return object.axes[kAxis]; }
    constexpr const auto& Of(const ThreeAxes& object) const { return object.axes[kAxis]; }
    constexpr Presence In(const ThreeAxes&) const { return Presence::optional; }
};

// A structure's list; empty for every other type.
template <class T>
inline constexpr std::tuple<> kFields{};

template <class T>
concept Structure = !std::is_same_v<decltype(kFields<T>), const std::tuple<>>;

// The name of a structure in messages.
template <class T>
inline constexpr std::string_view kNameOf = "an object";

// Whether a structure stands in the description as a list of its values.
template <class T>
inline constexpr bool kIsRow = false;

// ---------------------------------------------------------------- time, controllers

template <>
inline constexpr auto kFields<Time> = std::tuple{
    Written("frameRate", &Time::frameRate),
    Written("ticksPerFrame", &Time::ticksPerFrame),
    Written("start", &Time::start),
    Written("end", &Time::end),
};

template <class K>
inline constexpr auto kKeyFields = std::tuple{
    Required("time", &K::time),
    Required<Meaning::length>("value", &K::value),
    Optional("inType", &K::inType),
    Optional("outType", &K::outType),
    Optional<Meaning::length>("inTangent", &K::inTangent),
    Optional<Meaning::length>("outTangent", &K::outTangent),
    Optional("inLength", &K::inLength),
    Optional("outLength", &K::outLength),
};

template <>
inline constexpr auto kFields<Key> = kKeyFields<Key>;
template <>
inline constexpr std::string_view kNameOf<Key> = "a key";

template <>
inline constexpr auto kFields<Key3> = kKeyFields<Key3>;
template <>
inline constexpr std::string_view kNameOf<Key3> = "a key";

template <>
inline constexpr auto kFields<BezierFloat> = std::tuple{
    Optional("keys", &BezierFloat::keys),
    Optional<Meaning::length>("value", &BezierFloat::value),
};

template <>
inline constexpr auto kFields<FloatListItem> = std::tuple{
    Optional("weight", &FloatListItem::weight),
    Required("controller", &FloatListItem::controller),
};
template <>
inline constexpr std::string_view kNameOf<FloatListItem> = "an item with a controller";

template <>
inline constexpr auto kFields<FloatList> = std::tuple{Optional("items", &FloatList::items)};

template <>
inline constexpr auto kFields<Wire> = std::tuple{
    Optional<Meaning::controllerName>("parent", &Wire::parent),
    Optional("subnum", &Wire::subnum),
    Optional<Meaning::floatName>("coController", &Wire::coController),
    Optional("expression", &Wire::expression),
};
template <>
inline constexpr std::string_view kNameOf<Wire> = "a wire";

template <>
inline constexpr auto kFields<WireFloat> = std::tuple{
    Optional("master", &WireFloat::master),
    Optional("slave", &WireFloat::slave),
    Optional("twoWay", &WireFloat::twoWay),
    Optional("wires", &WireFloat::wires),
    Optional<Meaning::length>("value", &WireFloat::value),
};

template <>
inline constexpr auto kFields<OtherFloat> =
    std::tuple{Optional<Meaning::length>("value", &OtherFloat::value)};

// A class that is not one of the known ones has no class id of its own to fall back on.
template <class Other, class T>
constexpr Presence RequiredOf(const T& object) {
    return std::holds_alternative<Other>(object.kind) ? Presence::required : Presence::optional;
}

template <>
inline constexpr auto kFields<FloatController> = std::tuple{
    Optional<Meaning::name>("id", &FloatController::id),
    ByClass("classId", &FloatController::classId, RequiredOf<OtherFloat>),
    Optional<Meaning::inlined>("kind", &FloatController::kind),
};
template <>
inline constexpr std::string_view kNameOf<FloatController> = "a float controller";

template <>
inline constexpr auto kFields<JointParams> = std::tuple{
    Required<Meaning::word>("flags", &JointParams::flags),
    Optional("dofs", &JointParams::dofs),
    Optional<Meaning::jointLimits>("min", &JointParams::min),
    Optional<Meaning::jointLimits>("max", &JointParams::max),
    Optional("default", &JointParams::isDefault),
};
template <>
inline constexpr std::string_view kNameOf<JointParams> = "joint parameters";

template <>
inline constexpr auto kFields<ThreeAxes> = std::tuple{
    AxisField<0>{"x"},
    AxisField<1>{"y"},
    AxisField<2>{"z"},
};

template <>
inline constexpr auto kFields<BezierScale> = std::tuple{
    Optional("keys", &BezierScale::keys),
    Optional("value", &BezierScale::value),
};

template <>
inline constexpr auto kFields<OtherThree> =
    std::tuple{Required<Meaning::ofRole>("value", &OtherThree::value)};

template <>
inline constexpr auto kFields<ThreeAxisController> = std::tuple{
    Optional<Meaning::name>("id", &ThreeAxisController::id),
    ByClass("classId", &ThreeAxisController::classId, RequiredOf<OtherThree>),
    Optional("jointParams", &ThreeAxisController::jointParams),
    Optional<Meaning::inlined>("kind", &ThreeAxisController::kind),
};

// ---------------------------------------------------------------- transforms

template <>
inline constexpr auto kFields<PrsTransform> = std::tuple{
    Optional<Meaning::position>("position", &PrsTransform::position),
    Optional<Meaning::rotation>("rotation", &PrsTransform::rotation),
    Optional<Meaning::scale>("scale", &PrsTransform::scale),
};

// The field makes the form, so it is written even where it holds the identity.
template <>
inline constexpr auto kFields<MatrixTransform> =
    std::tuple{Required("matrix", &MatrixTransform::matrix)};

template <>
inline constexpr auto kFields<MatrixSample> = std::tuple{
    Required("time", &MatrixSample::time),
    Required("matrix", &MatrixSample::matrix),
};
template <>
inline constexpr std::string_view kNameOf<MatrixSample> = "a sample";

template <>
inline constexpr auto kFields<SampledTransform> =
    std::tuple{Required("samples", &SampledTransform::samples)};

template <>
inline constexpr auto kFields<FootprintTransform> =
    std::tuple{Optional("matrix", &FootprintTransform::matrix)};

template <>
inline constexpr auto kFields<IkChainTransform> = std::tuple{
    Optional<Meaning::nodeOrNone>("startJoint", &IkChainTransform::startJoint),
    Optional<Meaning::nodeOrNone>("endJoint", &IkChainTransform::endJoint),
    Optional("matrix", &IkChainTransform::matrix),
};

template <>
inline constexpr auto kFields<Transform> = std::tuple{
    Optional<Meaning::name>("id", &Transform::id),
    Optional("classId", &Transform::classId),
    Optional<Meaning::inlined>("kind", &Transform::kind),
};
template <>
inline constexpr std::string_view kNameOf<Transform> = "a transform";

// ---------------------------------------------------------------- objects

template <>
inline constexpr auto kFields<Face> = std::tuple{
    Required("v", &Face::v),
    Optional<Meaning::word>("smoothing", &Face::smoothing),
    Optional("material", &Face::material),
};
template <>
inline constexpr bool kIsRow<Face> = true;

template <>
inline constexpr auto kFields<MapChannel> = std::tuple{
    Optional("vertices", &MapChannel::vertices),
    Optional("faces", &MapChannel::faces),
};
template <>
inline constexpr std::string_view kNameOf<MapChannel> = "a map channel";

template <>
inline constexpr auto kFields<Mesh> = std::tuple{
    Optional<Meaning::length>("vertices", &Mesh::vertices),
    Optional("faces", &Mesh::faces),
    Optional("channels", &Mesh::channels),
    Optional("normals", &Mesh::normals),
};

inline Presence RequiredWithoutMesh(const Object& object) {
    return object.mesh ? Presence::optional : Presence::required;
}

template <>
inline constexpr auto kFields<Object> = std::tuple{
    ByClass<Meaning::word>("superClassId", &Object::superClassId, RequiredWithoutMesh),
    ByClass("classId", &Object::classId, RequiredWithoutMesh),
    Optional("parameter0", &Object::parameter0),
    Optional<Meaning::inlined>("mesh", &Object::mesh),
};

// ---------------------------------------------------------------- modifiers

template <>
inline constexpr auto kFields<SkinWeight> = std::tuple{
    Required("slot", &SkinWeight::slot),
    Required("weight", &SkinWeight::weight),
};
template <>
inline constexpr std::string_view kNameOf<SkinWeight> = "a list of a slot and a weight";
template <>
inline constexpr bool kIsRow<SkinWeight> = true;

template <>
inline constexpr auto kFields<Skin> = std::tuple{
    Optional<Meaning::node>("bones", &Skin::bones),
    Optional("weights", &Skin::weights),
    Optional("context", &Skin::context),
};

template <>
inline constexpr auto kFields<NodeWeight> = std::tuple{
    Required<Meaning::node>("node", &NodeWeight::node),
    Required("weight", &NodeWeight::weight),
};
template <>
inline constexpr std::string_view kNameOf<NodeWeight> = "a list of a node and a weight";
template <>
inline constexpr bool kIsRow<NodeWeight> = true;

template <>
inline constexpr auto kFields<PhysiqueRigid> =
    std::tuple{Required<Meaning::node>("rigid", &PhysiqueRigid::node)};

template <>
inline constexpr auto kFields<PhysiqueBlended> =
    std::tuple{Required("blended", &PhysiqueBlended::nodes)};

template <>
inline constexpr auto kFields<Physique> = std::tuple{Optional("vertices", &Physique::vertices)};

template <>
inline constexpr auto kFields<MorphChannel> = std::tuple{
    Optional("name", &MorphChannel::name),
    Optional<Meaning::length>("points", &MorphChannel::points),
};
template <>
inline constexpr std::string_view kNameOf<MorphChannel> = "a morph channel";

template <>
inline constexpr auto kFields<Morpher> = std::tuple{Optional("channels", &Morpher::channels)};

template <>
inline constexpr auto kFields<OtherModifier> =
    std::tuple{Required("classId", &OtherModifier::classId)};

template <>
inline constexpr auto kFields<Modifier> = std::tuple{
    Optional("enabled", &Modifier::enabled),
    Optional<Meaning::inlined>("kind", &Modifier::kind),
};
template <>
inline constexpr std::string_view kNameOf<Modifier> = "a modifier";

// ---------------------------------------------------------------- materials

template <>
inline constexpr auto kFields<BitmapMap> = std::tuple{
    Optional("file", &BitmapMap::file),
    Optional("uOffset", &BitmapMap::uOffset),
    Optional("vOffset", &BitmapMap::vOffset),
    Optional("uTiling", &BitmapMap::uTiling),
    Optional("vTiling", &BitmapMap::vTiling),
    Optional("angle", &BitmapMap::angle),
    Optional("coordinates", &BitmapMap::coordinates),
};

template <>
inline constexpr auto kFields<OtherMap> = std::tuple{Required("classId", &OtherMap::classId)};

template <>
inline constexpr auto kFields<Map> = std::tuple{
    Optional<Meaning::inlined>("kind", &Map::kind),
    Optional<Meaning::pointerOrNull>("subMaps", &Map::subMaps),
};
template <>
inline constexpr std::string_view kNameOf<Map> = "a map";

template <>
inline constexpr auto kFields<MapSlot> = std::tuple{
    Written("slot", &MapSlot::slot),
    Optional("enabled", &MapSlot::enabled),
    Optional("amount", &MapSlot::amount),
    Required("map", &MapSlot::map),
};
template <>
inline constexpr std::string_view kNameOf<MapSlot> = "a slot with a map";

constexpr Presence OfOther(const Material& material) {
    return material.kind == MaterialKind::other ? Presence::required : Presence::absent;
}
constexpr Presence NotOfMulti(const Material& material) {
    return material.kind == MaterialKind::multi ? Presence::absent : Presence::optional;
}
constexpr Presence OfStandard(const Material& material) {
    return material.kind == MaterialKind::standard ? Presence::optional : Presence::absent;
}

template <>
inline constexpr auto kFields<Material> = std::tuple{
    Required<Meaning::kind>("class", &Material::kind),
    ByClass("classId", &Material::classId, OfOther),
    Optional("name", &Material::name),
    ByClass("ambient", &Material::ambient, NotOfMulti),
    ByClass("diffuse", &Material::diffuse, NotOfMulti),
    ByClass("specular", &Material::specular, NotOfMulti),
    ByClass("selfIllumination", &Material::selfIllumination, NotOfMulti),
    ByClass("shininess", &Material::shininess, NotOfMulti),
    ByClass("shininessStrength", &Material::shininessStrength, NotOfMulti),
    ByClass("transparency", &Material::transparency, NotOfMulti),
    ByClass("twoSided", &Material::twoSided, OfStandard),
    ByClass("wire", &Material::wire, OfStandard),
    ByClass("transparencyType", &Material::transparencyType, OfStandard),
    ByClass("maps", &Material::maps, NotOfMulti),
    Optional<Meaning::material>("subMaterials", &Material::subMaterials),
};
template <>
inline constexpr std::string_view kNameOf<Material> = "a material";

// ---------------------------------------------------------------- the scene

template <>
inline constexpr auto kFields<Node> = std::tuple{
    Required("name", &Node::name),
    Optional<Meaning::nodeOrNone>("parent", &Node::parent),
    Optional("hidden", &Node::hidden),
    Optional("selected", &Node::selected),
    Optional("renderable", &Node::renderable),
    Optional("wireColor", &Node::wireColor),
    Optional("userProperties", &Node::userProperties),
    Optional<Meaning::materialOrNone>("material", &Node::material),
    Optional<Meaning::valueOrNull>("transform", &Node::transform),
    Optional("objectOffset", &Node::objectOffset),
    Optional("object", &Node::object),
    Optional("modifiers", &Node::modifiers),
    Optional("referenceModifiers", &Node::referenceModifiers),
};
template <>
inline constexpr std::string_view kNameOf<Node> = "a node";

template <>
inline constexpr auto kFields<Scene> = std::tuple{
    Optional("time", &Scene::time),
    Optional("materials", &Scene::materials),
    Optional("nodes", &Scene::nodes),
    Optional<Meaning::node>("selection", &Scene::selection),
};
template <>
inline constexpr std::string_view kNameOf<Scene> = "a scene description";

// ---------------------------------------------------------------- going through the lists

// Takes the place of any member.
struct AnyMember {
    template <class T>
    operator T() const;
};

template <class T, std::size_t... kIndices>
constexpr bool HasRoomFor(std::index_sequence<kIndices...>) {
    return requires {
        T{(static_cast<void>(kIndices), AnyMember())...};
    };
}

template <class T, class... Fields>
constexpr bool NamesEveryMember(const std::tuple<Fields...>&) {
    constexpr std::size_t kCount = (Fields::kMembers + ...);
    return HasRoomFor<T>(std::make_index_sequence<kCount>()) &&
           !HasRoomFor<T>(std::make_index_sequence<kCount + 1>());
}

// Calls visit(field) for each field of T.
template <class T, class Visit>
constexpr void ForEachField(const Visit& visit) {
    static_assert(NamesEveryMember<T>(kFields<T>), "the list of fields misses a member");
    std::apply([&visit](const auto&... field) { (visit(field), ...); }, kFields<T>);
}

}  // namespace maxhost::scene
