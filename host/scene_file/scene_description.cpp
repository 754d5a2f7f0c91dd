#include "host/scene_file/scene_description.h"

#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <new>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "host/scene/check.h"
#include "host/scene/difference.h"
#include "host/scene/fields.h"
#include "host/scene_file/codec.h"

namespace maxhost::scene_file {

using scene::ForEachField;
using scene::Presence;
using scene::Structure;

// ---------------------------------------------------------------- layout

// Whether a structure begins a line where it is a field.
template <class T>
constexpr bool kIsBlockOf = std::is_same_v<T, scene::Transform> || std::is_same_v<T, scene::Object>;

template <>
constexpr bool kHasOwnLine<scene::Key> = true;
template <>
constexpr bool kHasOwnLine<scene::Key3> = true;
template <>
constexpr bool kHasOwnLine<scene::FloatListItem> = true;
template <>
constexpr bool kHasOwnLine<scene::Wire> = true;
template <>
constexpr bool kHasOwnLine<scene::MatrixSample> = true;
template <>
constexpr bool kHasOwnLine<scene::MapChannel> = true;
template <>
constexpr bool kHasOwnLine<scene::MorphChannel> = true;
template <>
constexpr bool kHasOwnLine<scene::Modifier> = true;
template <>
constexpr bool kHasOwnLine<scene::MapSlot> = true;
template <>
constexpr bool kHasOwnLine<std::shared_ptr<const scene::Material>> = true;
template <>
constexpr bool kHasOwnLine<scene::SubMaterial> = true;
template <>
constexpr bool kHasOwnLine<scene::Node> = true;

// ---------------------------------------------------------------- what stands before the fields

template <std::size_t kSize>
using Names = std::array<std::string_view, kSize>;

// The names of a structure's classes; an empty one cannot be written there.
template <class T, Meaning kRole = Meaning::plain>
constexpr Names<0> kClasses{};
template <>
constexpr Names<4> kClasses<scene::FloatController> = {"bezierFloat", "floatList", "wire", "other"};
template <>
constexpr Names<3> kClasses<scene::ThreeAxisController, Meaning::position> = {"positionXYZ", "",
                                                                              "other"};
template <>
constexpr Names<3> kClasses<scene::ThreeAxisController, Meaning::rotation> = {"eulerXYZ", "",
                                                                              "other"};
template <>
constexpr Names<3> kClasses<scene::ThreeAxisController, Meaning::scale> = {"scaleXYZ",
                                                                           "bezierScale", "other"};
template <>
constexpr Names<5> kClasses<scene::Transform> = {"", "", "", "footprint", "ikChain"};
template <>
constexpr Names<2> kClasses<scene::Object> = {"mesh", "object"};
template <>
constexpr Names<4> kClasses<scene::Modifier> = {"skin", "physique", "morpher", "other"};
template <>
constexpr Names<2> kClasses<scene::Map> = {"bitmap", "other"};
template <>
constexpr Names<3> kClasses<scene::Material> = {"standard", "multi", "other"};

template <class T>
std::size_t ClassOf(const T& object) {
    return object.kind.index();
}
inline std::size_t ClassOf(const scene::Object& object) {
    return object.mesh ? 0 : 1;
}
inline std::size_t ClassOf(const scene::Material& material) {
    return static_cast<std::size_t>(material.kind);
}

template <class... Kinds, std::size_t... kIndices>
void SetKind(std::variant<Kinds...>& kind, std::size_t index, std::index_sequence<kIndices...>) {
    ((index == kIndices ? static_cast<void>(kind.template emplace<kIndices>()) : void()), ...);
}

template <class T>
void SetClass(T& object, std::size_t index) {
    SetKind(object.kind, index,
            std::make_index_sequence<std::variant_size_v<decltype(object.kind)>>());
}
inline void SetClass(scene::Object& object, std::size_t index) {
    object.mesh = index == 0 ? std::make_shared<scene::Mesh>() : nullptr;
}
inline void SetClass(scene::Material& material, std::size_t index) {
    material.kind = static_cast<scene::MaterialKind>(index);
}

// Two forms have a class; the field that only one form has tells the others apart.
inline void ReadForm(JsonObject& source, scene::Transform& transform) {
    if (source.Has("class")) {
        SetClass(transform, source.Class(kClasses<scene::Transform>));
    } else if (source.Has("samples")) {
        transform.kind = scene::SampledTransform();
    } else if (source.Has("matrix")) {
        transform.kind = scene::MatrixTransform();
    } else {
        for (const std::string_view nullField : {"class", "samples", "matrix"}) {
            source.Find(nullField);
        }
    }
}

// The version of the form, which has one so far.
constexpr std::string_view kVersionField = "maxscene";
constexpr int kVersion = 1;

inline void ReadVersion(JsonObject& source) {
    const auto expected = [] { return std::to_string(kVersion); };
    const std::optional<JsonValue> found = source.Require(kVersionField, expected);
    if (found && (found->Kind() != JsonKind::integer || found->Integer() != kVersion)) {
        found->Refuse(expected());
    }
}

template <Meaning kRole, class T>
void ReadHead(JsonObject& source, T& object) {
    if constexpr (std::is_same_v<T, scene::Scene>) {
        ReadVersion(source);
    } else if constexpr (std::is_same_v<T, scene::Transform>) {
        ReadForm(source, object);
    } else if constexpr (!kClasses<T, kRole>.empty()) {
        SetClass(object, source.Class(kClasses<T, kRole>));
    }
}

template <Meaning kRole, class T>
void WriteHead(JsonOut& out, const T& object) {
    if constexpr (std::is_same_v<T, scene::Scene>) {
        out.Name(kVersionField);
        out.Whole(kVersion);
    } else if constexpr (!kClasses<T, kRole>.empty()) {
        const std::string_view name = kClasses<T, kRole>[ClassOf(object)];
        if (!name.empty()) {
            out.Name("class");
            out.Text(name);
        }
    }
}

// ---------------------------------------------------------------- defaults

inline std::vector<int> SelectedNodes(const std::vector<scene::Node>& nodes) {
    std::vector<int> selected;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        if (nodes[i].selected) {
            selected.push_back(static_cast<int>(i));
        }
    }
    return selected;
}

// Called before the field is read: gives it the default that other fields decide, or one for files
// alone.
template <class T>
void SetDefault(JsonObject&, std::string_view, T&) {
}

inline void SetDefault(JsonObject&, std::string_view field, scene::Scene& scene) {
    if (field == "selection") {
        scene.selection = SelectedNodes(scene.nodes);
    }
}

inline void SetDefault(JsonObject&, std::string_view field, scene::MapSlot& slot) {
    constexpr int kDiffuse = 1;
    if (field == "slot") {
        slot.slot = kDiffuse;
    }
}

inline void SetDefault(JsonObject& source, std::string_view field, scene::Time& time) {
    constexpr int kTicksPerSecond = 4800;
    constexpr int kFrames = 100;
    if (field == "ticksPerFrame") {
        time.ticksPerFrame = kTicksPerSecond / std::max(1, time.frameRate);
        if (time.ticksPerFrame == 0 && !source.Has(field)) {
            source.RefuseMissing(field,
                                 "a whole number of at least 1, as 4800 / frameRate is less");
        }
    } else if (field == "end" && !source.Has(field)) {
        const std::int64_t end = std::int64_t{kFrames} * time.ticksPerFrame;
        if (end > std::numeric_limits<int>::max()) {
            source.RefuseMissing(field, "a time, as 100 frames are more ticks than fit");
        }
        time.end = static_cast<int>(end);
    }
}

// Whether the writer leaves the field out. Bits count, so that -0 is not taken for 0.
template <class F, class T>
bool HoldsDefault(const F& field, const T& object) {
    const auto& value = field.Of(object);
    if constexpr (std::is_same_v<T, scene::Scene> && F::kMeaning == Meaning::node) {
        return value == SelectedNodes(object.nodes);
    } else if constexpr (requires { value.has_value(); } && F::kMeaning != Meaning::valueOrNull) {
        return !value;
    } else if constexpr (requires { value.get_allocator(); }) {
        return value.empty();
    } else {
        static const T kStandard;
        return scene::Difference(value, field.Of(kStandard)).empty();
    }
}

// ---------------------------------------------------------------- fields

template <Meaning kRole = Meaning::plain, class T>
void ReadFields(JsonObject& source, T& object);
template <Meaning kRole = Meaning::plain, class T>
void WriteFields(JsonOut& out, const T& object);

template <class T>
struct HeldBy {
    using Type = T;
};
template <class T>
struct HeldBy<std::optional<T>> {
    using Type = T;
};

template <class T>
T& Filled(T& value) {
    return value;
}
template <class T>
T& Filled(std::optional<T>& value) {
    return value.emplace();
}

template <class T>
const T& Content(const T& value) {
    return value;
}
template <class T>
const T& Content(const std::optional<T>& value) {
    return *value;
}

// The codec of a field of a structure that stands in the role.
template <class F, class T, Meaning kRole>
using CodecOf = Codec<
    typename HeldBy<std::remove_cvref_t<decltype(std::declval<F>().Of(std::declval<T&>()))>>::Type,
    F::kMeaning == Meaning::ofRole ? kRole : F::kMeaning>;

template <Meaning kRole, class... Kinds>
void ReadInlined(JsonObject& source, std::variant<Kinds...>& kind) {
    std::visit([&source](auto& own) { ReadFields<kRole>(source, own); }, kind);
}
template <Meaning kRole>
void ReadInlined(JsonObject& source, std::shared_ptr<const scene::Mesh>& mesh) {
    if (mesh) {
        const auto made = std::make_shared<scene::Mesh>();
        ReadFields<kRole>(source, *made);
        mesh = made;
    }
}

template <Meaning kRole, class... Kinds>
void WriteInlined(JsonOut& out, const std::variant<Kinds...>& kind) {
    std::visit([&out](const auto& own) { WriteFields<kRole>(out, own); }, kind);
}
template <Meaning kRole>
void WriteInlined(JsonOut& out, const std::shared_ptr<const scene::Mesh>& mesh) {
    if (mesh) {
        WriteFields<kRole>(out, *mesh);
    }
}

using Limits = std::array<float, 6>;

inline void ReadLimits(JsonObject& source, std::string_view name, Limits& limits, int dofs) {
    const std::optional<JsonValue> found = source.Find(name);
    const auto count = static_cast<std::size_t>(dofs);
    if (!found || count == 0 || count > limits.size()) {
        return;  // the check refuses such a number
    }
    if (!IsListOf(*found, count)) {
        found->Refuse("a list of " + std::to_string(count) + " numbers");
    }
    std::size_t i = 0;
    for (const JsonValue limit : *found) {
        Codec<float>::Read(limit, limits[i++]);
    }
}

// Null is none, and an absent field leaves the default.
template <class T>
void ReadOrNull(JsonObject& source, std::string_view name, std::optional<T>& value) {
    const std::optional<JsonValue> found = source.FindOrNull(name);
    if (found && found->Kind() == JsonKind::null) {
        value.reset();
    } else if (found) {
        Codec<T>::Read(*found, value.emplace());
    }
}

template <Meaning kRole, class F, class T>
void ReadField(JsonObject& source, const F& field, T& object) {
    auto& value = field.Of(object);
    if constexpr (F::kMeaning == Meaning::inlined) {
        ReadInlined<kRole>(source, value);
    } else if constexpr (F::kMeaning == Meaning::jointLimits) {
        ReadLimits(source, field.name, value, object.dofs);
    } else if constexpr (F::kMeaning == Meaning::valueOrNull) {
        ReadOrNull(source, field.name, value);
    } else if constexpr (F::kMeaning != Meaning::kind) {
        using C = CodecOf<F, T, kRole>;
        const Presence presence = field.In(object);
        if (presence == Presence::absent) {
            return;
        }
        const std::optional<JsonValue> found = presence == Presence::required
                                                   ? source.Require(field.name, &C::What)
                                                   : source.Find(field.name);
        if (found) {
            C::Read(*found, Filled(value));
        }
    }
}

template <Meaning kRole, class T>
void ReadFields(JsonObject& source, T& object) {
    ReadHead<kRole>(source, object);
    ForEachField<T>([&](const auto& field) {
        SetDefault(source, field.name, object);
        ReadField<kRole>(source, field, object);
    });
}

template <Meaning kRole, class F, class T>
void WriteValue(JsonOut& out, const F& field, const T& object) {
    const auto& value = field.Of(object);
    if constexpr (F::kMeaning == Meaning::jointLimits) {
        out.Name(field.name);
        Row<float, 6>::WriteFrom(out, value.data(), static_cast<std::size_t>(object.dofs));
    } else {
        using C = CodecOf<F, T, kRole>;
        if (C::kIsBlock) {
            out.StartLine();
        }
        out.Name(field.name);
        C::Write(out, Content(value));
    }
}

template <Meaning kRole, class F, class T>
void WriteField(JsonOut& out, const F& field, const T& object) {
    const auto& value = field.Of(object);
    if constexpr (F::kMeaning == Meaning::inlined) {
        WriteInlined<kRole>(out, value);
    } else if constexpr (F::kMeaning != Meaning::kind) {
        const Presence presence = field.In(object);
        if (presence == Presence::absent ||
            (presence == Presence::optional && HoldsDefault(field, object))) {
            return;
        }
        if constexpr (F::kMeaning == Meaning::valueOrNull) {
            if (!value) {
                out.Name(field.name);
                out.Null();
                return;
            }
        }
        WriteValue<kRole>(out, field, object);
    }
}

template <Meaning kRole, class T>
void WriteFields(JsonOut& out, const T& object) {
    WriteHead<kRole>(out, object);
    ForEachField<T>([&](const auto& field) { WriteField<kRole>(out, field, object); });
}

// ---------------------------------------------------------------- structures

template <Meaning kRole, class T>
void ReadObject(JsonValue value, T& result, std::string_view expected) {
    JsonObject source(value, expected);
    ReadFields<kRole>(source, result);
    source.Close();
}

template <Meaning kRole, class T>
void WriteObject(JsonOut& out, const T& value) {
    out.BeginObject();
    WriteFields<kRole>(out, value);
    out.EndObject();
}

// Only a three-axis controller, which has a codec of its own, has a role.
template <Structure T, Meaning kMeaning>
struct Codec<T, kMeaning> {
    static constexpr bool kIsBlock = kIsBlockOf<T>;
    static std::string What() { return std::string(scene::kNameOf<T>); }
    static void Read(JsonValue value, T& result) {
        ReadObject<Meaning::plain>(value, result, scene::kNameOf<T>);
    }
    static void Write(JsonOut& out, const T& value) { WriteObject<Meaning::plain>(out, value); }
};

template <Structure T, Meaning kMeaning>
requires scene::kIsRow<T>
struct Codec<T, kMeaning> : Inline {
    static void Read(JsonValue value, T& result) {
        constexpr auto kSize = std::tuple_size_v<std::remove_const_t<decltype(scene::kFields<T>)>>;
        if (!IsListOf(value, kSize)) {
            value.Refuse(scene::kNameOf<T>);
        }
        JsonValue::Iterator part = value.begin();
        ForEachField<T>([&](const auto& field) {
            using F = std::remove_cvref_t<decltype(field)>;
            CodecOf<F, T, Meaning::plain>::Read(*part, field.Of(result));
            ++part;
        });
    }
    static void Write(JsonOut& out, const T& value) {
        out.BeginList();
        ForEachField<T>([&](const auto& field) {
            using F = std::remove_cvref_t<decltype(field)>;
            out.Part();
            CodecOf<F, T, Meaning::plain>::Write(out, field.Of(value));
        });
        out.EndList();
    }
};

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
        ReadIfGiven<Meaning::word>(part, value.end(), result.smoothing);
        ReadIfGiven<Meaning::plain>(part, value.end(), result.material);
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
    template <Meaning kMeaning, class T>
    static void ReadIfGiven(JsonValue::Iterator& part, const JsonValue::Iterator& end, T& result) {
        if (part != end) {
            if ((*part).Kind() != JsonKind::null) {
                Codec<T, kMeaning>::Read(*part, result);
            }
            ++part;
        }
    }
};

// ---------------------------------------------------------------- controllers

// A constant: a Bezier float controller without keys and without a name.
inline const float* BareValue(const scene::FloatController& controller) {
    const auto* bezier = std::get_if<scene::BezierFloat>(&controller.kind);
    const bool isBare =
        bezier && bezier->keys.empty() && controller.id.empty() && !controller.classId;
    return isBare ? &bezier->value : nullptr;
}

template <>
struct Codec<scene::FloatController> : Inline {
    static constexpr std::string_view kExpected = "a float controller or a number";
    static std::string What() { return std::string(kExpected); }
    static void Read(JsonValue value, scene::FloatController& result) {
        if (value.Kind() == JsonKind::integer || value.Kind() == JsonKind::real) {
            result.kind = scene::BezierFloat{{}, ReadReal(value)};
        } else {
            ReadObject<Meaning::plain>(value, result, kExpected);
        }
    }
    static void Write(JsonOut& out, const scene::FloatController& value) {
        if (const float* constant = BareValue(value)) {
            out.Real(*constant);
        } else {
            WriteObject<Meaning::plain>(out, value);
        }
    }
};

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

// The meaning is the controller's role.
template <Meaning kRole>
struct Codec<scene::ThreeAxisController, kRole> : Block {
    static constexpr std::string_view kExpected = "a controller or a list of 3 numbers";
    static std::string What() { return std::string(kExpected); }
    static void Read(JsonValue value, scene::ThreeAxisController& result) {
        if (value.Kind() != JsonKind::list) {
            ReadObject<kRole>(value, result, kExpected);
            return;
        }
        scene::Vec3 values;
        Codec<scene::Vec3>::Read(value, values);
        auto& three = result.kind.emplace<scene::ThreeAxes>();
        for (std::size_t i = 0; i < 3; ++i) {
            three.axes[i].emplace().kind = scene::BezierFloat{{}, values[i]};
        }
    }
    static void Write(JsonOut& out, const scene::ThreeAxisController& value) {
        if (const std::optional<scene::Vec3> constants = BareValue(value)) {
            Codec<scene::Vec3>::Write(out, *constants);
        } else {
            WriteObject<kRole>(out, value);
        }
    }
};

// The value of a position or a scale is three numbers.
template <>
struct Codec<std::array<float, 4>, Meaning::position> : Row<float, 3> {};
template <>
struct Codec<std::array<float, 4>, Meaning::scale> : Row<float, 3> {};

// That of a rotation is a quaternion. One of unit length stays as it is to the bit, so that what
// was saved is what is read. A zero quaternion stays too; the scene's check refuses it.
template <>
struct Codec<std::array<float, 4>, Meaning::rotation> : Row<float, 4> {
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
};

// ---------------------------------------------------------------- one of several things

using PhysiqueVertex = decltype(scene::Physique::vertices)::value_type;

template <Meaning kMeaning>
struct Codec<PhysiqueVertex, kMeaning> : Inline {
    static void Read(JsonValue value, PhysiqueVertex& result) {
        if (value.Kind() == JsonKind::null) {
            return;
        }
        constexpr std::string_view kExpected = "an object with \"rigid\" or \"blended\", or null";
        JsonObject source(value, kExpected);
        if (source.Has("rigid") == source.Has("blended")) {
            value.Refuse(kExpected);
        }
        const std::optional<JsonValue> rigid = source.Find("rigid");
        const std::optional<JsonValue> blended = source.Find("blended");
        if (rigid) {
            Node::Read(*rigid, result.emplace<scene::PhysiqueRigid>().node);
        } else {
            Nodes::Read(*blended, result.emplace<scene::PhysiqueBlended>().nodes);
        }
        source.Close();
    }
    static void Write(JsonOut& out, const PhysiqueVertex& value) {
        if (std::holds_alternative<std::monostate>(value)) {
            out.Null();
            return;
        }
        out.BeginObject();
        if (const auto* rigid = std::get_if<scene::PhysiqueRigid>(&value)) {
            out.Name("rigid");
            Node::Write(out, rigid->node);
        } else {
            out.Name("blended");
            Nodes::Write(out, std::get<scene::PhysiqueBlended>(value).nodes);
        }
        out.EndObject();
    }

  private:
    using Node = Codec<int, Meaning::node>;
    using Nodes = Codec<std::vector<scene::NodeWeight>>;
};

template <Meaning kMeaning>
struct Codec<scene::SubMaterial, kMeaning> : Inline {
    using Own = std::shared_ptr<const scene::Material>;

    static void Read(JsonValue value, scene::SubMaterial& result) {
        switch (value.Kind()) {
            case JsonKind::null:
                break;
            case JsonKind::object:
                Codec<Own>::Read(value, result.emplace<Own>());
                break;
            case JsonKind::integer:
                Codec<int, kMeaning>::Read(value, result.emplace<int>());
                break;
            default:
                value.Refuse("a material, a position in the scene's materials or null");
        }
    }
    static void Write(JsonOut& out, const scene::SubMaterial& value) {
        if (const Own* own = std::get_if<Own>(&value)) {
            Codec<Own>::Write(out, *own);
        } else if (const int* position = std::get_if<int>(&value)) {
            out.Whole(*position);
        } else {
            out.Null();
        }
    }
};

// ---------------------------------------------------------------- the whole

namespace {

const char kTooLarge[] = "it does not fit into memory";

// Where the parts of the work end.
constexpr double kParsed = 0.75;
constexpr double kTaken = 0.95;

ReportShare ParserReport(const ReportShare& report) {
    return [&report](double share) { report(kParsed * share); };
}

scene::Scene SceneOf(const JsonTree& tree, const ReportShare& report) {
    scene::Scene scene;
    Codec<scene::Scene>::Read(tree.Root(), scene);
    report(kTaken);
    scene::Check(scene);
    report(1);
    return scene;
}

// How much the stream still holds; 0 where it does not say, or says more than is to be believed.
std::size_t SizeAhead(std::istream& in) {
    constexpr std::streamoff kMost = 1 << 30;
    const std::istream::pos_type here = in.tellg();
    in.seekg(0, std::ios::end);
    const std::streamoff size = in ? in.tellg() - here : 0;
    in.clear();
    in.seekg(here);
    in.clear();
    return size > 0 && size <= kMost ? static_cast<std::size_t>(size) : 0;
}

std::string WholeText(std::istream& in) {
    std::string text;
    text.reserve(in ? SizeAhead(in) : 0);
    char block[64 * 1024];
    while (in.read(block, sizeof block) || in.gcount() > 0) {
        text.append(block, static_cast<std::size_t>(in.gcount()));
    }
    if (in.bad()) {
        throw scene::SceneError("it cannot be read");
    }
    return text;
}

}  // namespace

scene::Scene ReadSceneDescriptionFromText(std::string_view text, const ReportShare& report) try {
    const JsonTree tree(text, ParserReport(report));
    return SceneOf(tree, report);
} catch (const std::bad_alloc&) {
    throw scene::SceneError(kTooLarge);
}

scene::Scene ReadSceneDescription(std::istream& in, const ReportShare& report) try {
    std::optional<JsonTree> tree;
    tree.emplace(WholeText(in), ParserReport(report));  // the text is gone when the tree is there
    return SceneOf(*tree, report);
} catch (const std::bad_alloc&) {
    throw scene::SceneError(kTooLarge);
}

void WriteSceneDescription(const scene::Scene& scene, std::ostream& out) {
    scene::Check(scene);
    JsonOut json(out);
    Codec<scene::Scene>::Write(json, scene);
    json.Finish();
}

}  // namespace maxhost::scene_file
