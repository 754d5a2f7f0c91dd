#include "kta/fields.h"

#include <cmath>

namespace kta {
namespace {

constexpr std::int32_t kMostMapChannels = 98;

// ---------------------------------------------------------------- rows of the tables

template <typename Element>
constexpr FieldType TypeOf() {
    if constexpr (std::is_same_v<Element, char>) {
        return FieldType::character;
    } else if constexpr (std::is_same_v<Element, Plinth::UInt8>) {
        return FieldType::u8;
    } else if constexpr (std::is_same_v<Element, Plinth::UInt16>) {
        return FieldType::u16;
    } else if constexpr (std::is_same_v<Element, Plinth::Int16>) {
        return FieldType::i16;
    } else if constexpr (std::is_same_v<Element, Plinth::Int32>) {
        return FieldType::i32;
    } else if constexpr (std::is_same_v<Element, Plinth::UInt32>) {
        return FieldType::u32;
    } else {
        static_assert(std::is_same_v<Element, Plinth::Float32>);
        return FieldType::f32;
    }
}

template <typename Member>
constexpr Field Row(const char* name, std::size_t offset, const char* label) {
    using Element = std::remove_all_extents_t<Member>;
    if (std::is_same_v<Element, char> && std::is_array_v<Member>) {
        return {name, label, FieldType::text, offset, sizeof(Member), 1, 0};
    }
    constexpr std::size_t kColumns = std::rank_v<Member> == 2 ? std::extent_v<Member, 1> : 0;
    return {name,    label,           TypeOf<Element>(),
            offset,  sizeof(Element), sizeof(Member) / sizeof(Element),
            kColumns};
}

constexpr Field Ruled(Field field, FieldRule rule, std::int32_t least, std::int32_t most) {
    field.rule = rule;
    field.least = least;
    field.most = most;
    return field;
}

constexpr Field Flag(const Field& field) {
    return Ruled(field, FieldRule::flag, 0, 1);
}

constexpr Field Always(const Field& field, std::int32_t value) {
    return Ruled(field, FieldRule::constant, value, value);
}

constexpr Field Between(const Field& field, std::int32_t least, std::int32_t most) {
    return Ruled(field, FieldRule::range, least, most);
}

constexpr Field AtLeast(const Field& field, std::int32_t least) {
    return Ruled(field, FieldRule::atLeast, least, 0);
}

constexpr Field OneOf(Field field, const char* letters) {
    field.rule = FieldRule::letters;
    field.letters = letters;
    return field;
}

constexpr Field Also(Field field, void (*check)(Cursor&, std::uint64_t, const void*)) {
    field.also = check;
    return field;
}

// ---------------------------------------------------------------- rules of single fields

void CheckIndexCount(Cursor& cursor, std::uint64_t offset, const void* record) {
    const std::int32_t count = static_cast<const KTAMesh*>(record)->indexCount;
    if (count % 3 != 0) {
        cursor.Stop(offset + offsetof(KTAMesh, indexCount),
                    Found(IssueCode::meshIndexCount, "index count", count, "a multiple of 3"));
    }
}

void CheckMapChannelCount(Cursor& cursor, std::uint64_t offset, const void* record) {
    const std::int32_t count = static_cast<const KTAMesh*>(record)->mapChannelCount;
    if (count > kMostMapChannels) {
        cursor.Stop(offset + offsetof(KTAMesh, mapChannelCount),
                    Found(IssueCode::valueRange, "map channel count", count,
                          "at most " + std::to_string(kMostMapChannels)));
    }
}

void CheckMinimum(Cursor& cursor, std::uint64_t offset, const void* record) {
    const auto& points = *static_cast<const KTAMorphPoints*>(record);
    if (points.minimum > points.maximum) {
        cursor.Report(offset + offsetof(KTAMorphPoints, minimum),
                      {IssueCode::morphRange, "minimum", Digits(points.minimum),
                       "at most " + Digits(points.maximum) + ", the maximum"});
    }
}

}  // namespace

// ---------------------------------------------------------------- tables

#define ROW(member, label) Row<decltype(Record::member)>(#member, offsetof(Record, member), label)

template <>
std::span<const Field> FieldsOf<KTANode>() {
    using Record = KTANode;
    static constexpr Field kFields[] = {ROW(nodeName, "node name"),
                                        ROW(parentName, "parent name"),
                                        ROW(translation, "translation"),
                                        ROW(rotation, "rotation"),
                                        ROW(scale, "scale"),
                                        ROW(inverseWorldMatrix, "inverse world matrix"),
                                        Flag(ROW(isBone, "bone flag")),
                                        Flag(ROW(hasHelperSize, "helper-size flag")),
                                        ROW(helperSize, "helper size")};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAMotionPart>() {
    using Record = KTAMotionPart;
    static constexpr Field kFields[] = {ROW(nodeName, "node name"), ROW(translation, "translation"),
                                        ROW(rotation, "rotation"), ROW(scale, "scale")};
    return kFields;
}

// The track letters depend on the chunk's version, so the track's reader checks them.
template <>
std::span<const Field> FieldsOf<KTAKeyTrack>() {
    using Record = KTAKeyTrack;
    static constexpr Field kFields[] = {AtLeast(ROW(keyCount, "key count"), 1),
                                        OneOf(ROW(interpolation, "interpolation letter"), "L"),
                                        ROW(trackLetter, "track letter")};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAVectorSample>() {
    using Record = KTAVectorSample;
    static constexpr Field kFields[] = {ROW(time, "key time"), ROW(values, "key value")};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTARotationSample>() {
    using Record = KTARotationSample;
    static constexpr Field kFields[] = {ROW(time, "key time"), ROW(values, "key value")};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAKeyHead>() {
    using Record = KTAKeyHead;
    static constexpr Field kFields[] = {ROW(time, "key time"), ROW(values, "key value"),
                                        ROW(axisMask, "axis mask")};
    return kFields;
}

// A mesh of less than a triangle is never written.
template <>
std::span<const Field> FieldsOf<KTAMesh>() {
    using Record = KTAMesh;
    static constexpr Field kFields[] = {
        AtLeast(ROW(nodeNumber, "node number"), -1),
        AtLeast(ROW(originalVertexCount, "original vertex count"), 1),
        AtLeast(ROW(vertexCount, "vertex count"), 3),
        Also(AtLeast(ROW(indexCount, "index count"), 3), CheckIndexCount),
        AtLeast(ROW(subMeshCount, "sub-mesh count"), 1),
        Also(AtLeast(ROW(mapChannelCount, "map channel count"), 0), CheckMapChannelCount),
        Flag(ROW(isCollision, "collision flag"))};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAVertex>() {
    using Record = KTAVertex;
    static constexpr Field kFields[] = {ROW(originalVertex, "original vertex"),
                                        ROW(position, "position"), ROW(normal, "normal")};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAWeights>() {
    using Record = KTAWeights;
    static constexpr Field kFields[] = {AtLeast(ROW(nodeNumber, "node number"), -1)};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAMaterial>() {
    using Record = KTAMaterial;
    static constexpr Field kFields[] = {ROW(materialName, "material name"),
                                        ROW(ambient, "ambient colour"),
                                        ROW(diffuse, "diffuse colour"),
                                        ROW(specular, "specular colour"),
                                        ROW(selfIllumination, "self-illumination colour"),
                                        ROW(shininess, "shininess"),
                                        ROW(shininessStrength, "shininess strength"),
                                        ROW(opacity, "opacity"),
                                        ROW(indexOfRefraction, "index of refraction"),
                                        Flag(ROW(twoSided, "two-sided flag")),
                                        Flag(ROW(wire, "wire flag")),
                                        OneOf(ROW(transparencyType, "transparency type"), "SAFU")};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAMaterialLayer>() {
    using Record = KTAMaterialLayer;
    static constexpr Field kFields[] = {
        ROW(textureFileName, "texture file name"),
        Between(ROW(layerType, "layer type"), kLayerAmbient, kLayerFilterColor),
        ROW(parentMaterial, "parent material"),
        ROW(amount, "amount"),
        ROW(uOffset, "U offset"),
        ROW(vOffset, "V offset"),
        ROW(uTiling, "U tiling"),
        ROW(vTiling, "V tiling"),
        ROW(rotationAngle, "rotation angle")};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAJointLimits>() {
    using Record = KTAJointLimits;
    static constexpr Field kFields[] = {
        AtLeast(ROW(nodeNumber, "node number"), -1), ROW(positionMinimum, "position minimum"),
        ROW(positionMaximum, "position maximum"),    ROW(rotationMinimum, "rotation minimum"),
        ROW(rotationMaximum, "rotation maximum"),    Always(ROW(at52, "number at 52"), 1),
        Flag(ROW(positionLimited, "position flag")), Flag(ROW(rotationLimited, "rotation flag")),
        Always(ROW(at82, "byte at 82"), 0),          Always(ROW(at84, "number at 84"), 0)};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAMorphChannel>() {
    using Record = KTAMorphChannel;
    static constexpr Field kFields[] = {
        ROW(channelName, "channel name"),       Always(ROW(at260, "number at 260"), 0),
        Always(ROW(at264, "number at 264"), 1), Always(ROW(at268, "number at 268"), 0),
        Always(ROW(at272, "byte at 272"), 0),   Always(ROW(at276, "number at 276"), 1),
        Always(ROW(at280, "number at 280"), 0), Always(ROW(at284, "number at 284"), 0),
        Always(ROW(at288, "number at 288"), 0)};
    return kFields;
}

// A channel without points is never written.
template <>
std::span<const Field> FieldsOf<KTAMorphPoints>() {
    using Record = KTAMorphPoints;
    static constexpr Field kFields[] = {
        ROW(nodeName, "node name"), AtLeast(ROW(pointCount, "point count"), 1),
        ROW(minimum, "minimum"), Also(ROW(maximum, "maximum"), CheckMinimum),
        Always(ROW(at564, "byte at 564"), 0)};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAMorphPoint>() {
    using Record = KTAMorphPoint;
    static constexpr Field kFields[] = {ROW(packed, "packed coordinate")};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAWire>() {
    using Record = KTAWire;
    static constexpr Field kFields[] = {ROW(firstNodeName, "first node name"),
                                        ROW(secondNodeName, "second node name"),
                                        ROW(firstExpression, "first expression"),
                                        ROW(secondExpression, "second expression"),
                                        ROW(secondVariable, "second variable"),
                                        ROW(firstVariable, "first variable"),
                                        Between(ROW(firstPart, "first part"), 0, 2),
                                        Between(ROW(secondPart, "second part"), 0, 2),
                                        Between(ROW(firstComponent, "first component"), 0, 2),
                                        Between(ROW(secondComponent, "second component"), 0, 2),
                                        ROW(firstWeight, "first weight"),
                                        ROW(secondWeight, "second weight"),
                                        ROW(firstListWeight, "first list weight"),
                                        ROW(secondListWeight, "second list weight"),
                                        Between(ROW(linkKind, "link kind"), 1, 2)};
    return kFields;
}

template <>
std::span<const Field> FieldsOf<KTAIKChain>() {
    using Record = KTAIKChain;
    static constexpr Field kFields[] = {
        ROW(nodeName, "node name"),       ROW(startJoint, "start joint"),
        ROW(endJoint, "end joint"),       Flag(ROW(at780, "flag at 780")),
        ROW(solverNode, "solver's node"), ROW(at1044, "number at 1044"),
        ROW(at1048, "byte at 1048"),      ROW(at1052, "number at 1052")};
    return kFields;
}

#undef ROW

// ---------------------------------------------------------------- values and checks

namespace {

template <typename Value>
Value ValueAt(const Field& field, const void* record, std::size_t element) {
    Value value;
    std::memcpy(&value, static_cast<const char*>(record) + field.offset + element * field.size,
                sizeof(value));
    return value;
}

void CheckByType(Cursor& cursor, const Field& field, std::uint64_t offset, const void* record,
                 std::size_t element) {
    if (field.type == FieldType::text && TextAt(field, record).size() == field.size) {
        cursor.Report(offset, {IssueCode::textUnterminated, field.label, std::to_string(field.size),
                               "a NUL in them"});
    } else if (field.type == FieldType::f32) {
        const float value = RealAt(field, record, element);
        if (!std::isfinite(value)) {
            cursor.Report(offset, FoundNotFinite(field.label, {&value, 1}));
        }
    }
}

void CheckConstant(Cursor& cursor, const Field& field, std::uint64_t offset, const void* record,
                   std::size_t element) {
    const bool real = field.type == FieldType::f32;
    const bool right = real ? RealAt(field, record, element) == static_cast<float>(field.least)
                            : IntegerAt(field, record, element) == field.least;
    if (!right) {
        cursor.Report(offset, {IssueCode::constantValue, field.label,
                               real ? Digits(RealAt(field, record, element))
                                    : std::to_string(IntegerAt(field, record, element)),
                               std::to_string(field.least)});
    }
}

void CheckRange(Cursor& cursor, const Field& field, std::uint64_t offset, std::int64_t value) {
    if (value < field.least || value > field.most) {
        const char* const joint = field.most == field.least + 1 ? " or " : " to ";
        const bool flag = field.rule == FieldRule::flag;
        cursor.Report(offset,
                      Found(flag ? IssueCode::flagValue : IssueCode::valueRange, field.label, value,
                            std::to_string(field.least) + joint + std::to_string(field.most)));
    }
}

void CheckElement(Cursor& cursor, const Field& field, std::uint64_t offset, const void* record,
                  std::size_t element) {
    switch (field.rule) {
        case FieldRule::none:
            CheckByType(cursor, field, offset, record, element);
            break;
        case FieldRule::constant:
            CheckConstant(cursor, field, offset, record, element);
            break;
        case FieldRule::flag:
        case FieldRule::range:
            CheckRange(cursor, field, offset, IntegerAt(field, record, element));
            break;
        case FieldRule::atLeast:
            if (IntegerAt(field, record, element) < field.least) {
                cursor.Stop(offset, Found(IssueCode::valueRange, field.label,
                                          IntegerAt(field, record, element),
                                          std::to_string(field.least) + " or more"));
            }
            break;
        case FieldRule::letters: {
            const auto letter = static_cast<char>(IntegerAt(field, record, element));
            if (std::string_view(field.letters).find(letter) == std::string_view::npos) {
                cursor.Report(offset, FoundLetter(field.label, letter, field.letters));
            }
            break;
        }
    }
}

}  // namespace

std::int64_t IntegerAt(const Field& field, const void* record, std::size_t element) {
    switch (field.type) {
        case FieldType::u16:
            return ValueAt<std::uint16_t>(field, record, element);
        case FieldType::i16:
            return ValueAt<std::int16_t>(field, record, element);
        case FieldType::i32:
            return ValueAt<std::int32_t>(field, record, element);
        case FieldType::u32:
            return ValueAt<std::uint32_t>(field, record, element);
        default:
            return ValueAt<std::uint8_t>(field, record, element);
    }
}

float RealAt(const Field& field, const void* record, std::size_t element) {
    return ValueAt<float>(field, record, element);
}

std::string_view TextAt(const Field& field, const void* record) {
    const std::string_view whole(static_cast<const char*>(record) + field.offset, field.size);
    return whole.substr(0, whole.find('\0'));
}

void CheckFields(Cursor& cursor, std::span<const Field> fields, std::uint64_t offset,
                 const void* record) {
    for (const Field& field : fields) {
        for (std::size_t i = 0; i < field.count; ++i) {
            CheckElement(cursor, field, offset + field.offset + i * field.size, record, i);
        }
        if (field.also != nullptr) {
            field.also(cursor, offset, record);
        }
    }
}

// ---------------------------------------------------------------- records of chunks

namespace {

template <typename Record>
RecordView ViewOf(const Record& record, std::uint64_t offset) {
    return {FieldsOf<Record>(), &record, offset};
}

template <typename Body>
std::vector<RecordView> WholeBody(const Chunk& chunk, std::uint64_t body) {
    return {ViewOf(*chunk.As<Body>(), body)};
}

}  // namespace

std::vector<RecordView> RecordsOf(const Chunk& chunk) {
    const std::uint64_t body = chunk.offset + sizeof(KTAChunkHeader);
    switch (chunk.type->id) {
        case kChunkNode:
            return WholeBody<KTANode>(chunk, body);
        case kChunkMotionPart:
            return WholeBody<KTAMotionPart>(chunk, body);
        case kChunkKeyTrack:
            return {ViewOf(chunk.As<KeyTrack>()->head, body)};
        case kChunkMesh:
            return {ViewOf(chunk.As<Mesh>()->head, body)};
        case kChunkWeights:
            return {ViewOf(chunk.As<Weights>()->head, body)};
        case kChunkMaterial:
            return WholeBody<KTAMaterial>(chunk, body);
        case kChunkMaterialLayer:
            return WholeBody<KTAMaterialLayer>(chunk, body);
        case kChunkJointLimits:
            return WholeBody<KTAJointLimits>(chunk, body);
        case kChunkMorph:
            return {ViewOf(chunk.As<Morph>()->channel, body),
                    ViewOf(chunk.As<Morph>()->head, body + sizeof(KTAMorphChannel))};
        case kChunkWire:
            return WholeBody<KTAWire>(chunk, body);
        case kChunkIKChain:
            return WholeBody<KTAIKChain>(chunk, body);
    }
    return {};
}

const char* LayerTypeName(int type) {
    constexpr const char* kNames[] = {"ambient",
                                      "diffuse",
                                      "specular",
                                      "bump",
                                      "reflection",
                                      "refraction",
                                      "opacity",
                                      "self-illumination",
                                      "environment",
                                      "shininess",
                                      "shininess strength",
                                      "filter colour"};
    return type >= 0 && type < static_cast<int>(std::size(kNames)) ? kNames[type] : nullptr;
}

}  // namespace kta
