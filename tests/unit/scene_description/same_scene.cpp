#include "tests/unit/scene_description/same_scene.h"

#include <bit>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <type_traits>
#include <variant>

using namespace maxhost::scene;

namespace {

using Path = std::string;

template <class T>
Path Compare(const T& a, const T& b);

// Field by field: the first field that differs names the path.
class FieldsOf {
  public:
    template <class T>
    FieldsOf& Field(const char* name, const T& a, const T& b) {
        if (path_.empty()) {
            const Path path = Compare(a, b);
            path_ = path.empty() ? "" : "." + std::string(name) + (path == "." ? "" : path);
        }
        return *this;
    }
    operator Path() const { return path_; }

  private:
    Path path_;
};

// One macro so that no field is compared with another one by a slip.
#define FIELD(name) Field(#name, a.name, b.name)

Path Differ(const Time& a, const Time& b) {
    return FieldsOf().FIELD(frameRate).FIELD(ticksPerFrame).FIELD(start).FIELD(end);
}
template <class K>
Path DifferKey(const K& a, const K& b) {
    return FieldsOf()
        .FIELD(time)
        .FIELD(value)
        .FIELD(inType)
        .FIELD(outType)
        .FIELD(inTangent)
        .FIELD(outTangent)
        .FIELD(inLength)
        .FIELD(outLength);
}
Path Differ(const Key& a, const Key& b) {
    return DifferKey(a, b);
}
Path Differ(const Key3& a, const Key3& b) {
    return DifferKey(a, b);
}
Path Differ(const BezierFloat& a, const BezierFloat& b) {
    return FieldsOf().FIELD(keys).FIELD(value);
}
Path Differ(const FloatListItem& a, const FloatListItem& b) {
    return FieldsOf().FIELD(weight).FIELD(controller);
}
Path Differ(const FloatList& a, const FloatList& b) {
    return FieldsOf().FIELD(items);
}
Path Differ(const Wire& a, const Wire& b) {
    return FieldsOf().FIELD(parent).FIELD(subnum).FIELD(coController).FIELD(expression);
}
Path Differ(const WireFloat& a, const WireFloat& b) {
    return FieldsOf().FIELD(master).FIELD(slave).FIELD(twoWay).FIELD(wires).FIELD(value);
}
Path Differ(const OtherFloat& a, const OtherFloat& b) {
    return FieldsOf().FIELD(value);
}
Path Differ(const FloatController& a, const FloatController& b) {
    return FieldsOf().FIELD(id).FIELD(classId).FIELD(kind);
}
Path Differ(const JointParams& a, const JointParams& b) {
    return FieldsOf().FIELD(flags).FIELD(dofs).FIELD(min).FIELD(max).FIELD(isDefault);
}
Path Differ(const ThreeAxes& a, const ThreeAxes& b) {
    return FieldsOf().FIELD(axes);
}
Path Differ(const BezierScale& a, const BezierScale& b) {
    return FieldsOf().FIELD(keys).FIELD(value);
}
Path Differ(const OtherThree& a, const OtherThree& b) {
    return FieldsOf().FIELD(value);
}
Path Differ(const ThreeAxisController& a, const ThreeAxisController& b) {
    return FieldsOf().FIELD(id).FIELD(classId).FIELD(jointParams).FIELD(kind);
}
Path Differ(const PrsTransform& a, const PrsTransform& b) {
    return FieldsOf().FIELD(position).FIELD(rotation).FIELD(scale);
}
Path Differ(const MatrixTransform& a, const MatrixTransform& b) {
    return FieldsOf().FIELD(matrix);
}
Path Differ(const MatrixSample& a, const MatrixSample& b) {
    return FieldsOf().FIELD(time).FIELD(matrix);
}
Path Differ(const SampledTransform& a, const SampledTransform& b) {
    return FieldsOf().FIELD(samples);
}
Path Differ(const FootprintTransform& a, const FootprintTransform& b) {
    return FieldsOf().FIELD(matrix);
}
Path Differ(const IkChainTransform& a, const IkChainTransform& b) {
    return FieldsOf().FIELD(startJoint).FIELD(endJoint).FIELD(matrix);
}
Path Differ(const Transform& a, const Transform& b) {
    return FieldsOf().FIELD(id).FIELD(classId).FIELD(kind);
}
Path Differ(const Face& a, const Face& b) {
    return FieldsOf().FIELD(v).FIELD(smoothing).FIELD(material);
}
Path Differ(const MapChannel& a, const MapChannel& b) {
    return FieldsOf().FIELD(vertices).FIELD(faces);
}
Path Differ(const Mesh& a, const Mesh& b) {
    return FieldsOf().FIELD(vertices).FIELD(faces).FIELD(channels).FIELD(normals);
}
Path Differ(const Object& a, const Object& b) {
    return FieldsOf().FIELD(superClassId).FIELD(classId).FIELD(parameter0).FIELD(mesh);
}
Path Differ(const SkinWeight& a, const SkinWeight& b) {
    return FieldsOf().FIELD(slot).FIELD(weight);
}
Path Differ(const Skin& a, const Skin& b) {
    return FieldsOf().FIELD(bones).FIELD(weights).FIELD(context);
}
Path Differ(const PhysiqueRigid& a, const PhysiqueRigid& b) {
    return FieldsOf().FIELD(node);
}
Path Differ(const PhysiqueBlended& a, const PhysiqueBlended& b) {
    return FieldsOf().FIELD(nodes);
}
Path Differ(const std::pair<int, float>& a, const std::pair<int, float>& b) {
    return FieldsOf().FIELD(first).FIELD(second);
}
Path Differ(const Physique& a, const Physique& b) {
    return FieldsOf().FIELD(vertices);
}
Path Differ(const MorphChannel& a, const MorphChannel& b) {
    return FieldsOf().FIELD(name).FIELD(points);
}
Path Differ(const Morpher& a, const Morpher& b) {
    return FieldsOf().FIELD(channels);
}
Path Differ(const OtherModifier& a, const OtherModifier& b) {
    return FieldsOf().FIELD(classId);
}
Path Differ(const Modifier& a, const Modifier& b) {
    return FieldsOf().FIELD(enabled).FIELD(kind);
}
Path Differ(const BitmapMap& a, const BitmapMap& b) {
    return FieldsOf()
        .FIELD(file)
        .FIELD(uOffset)
        .FIELD(vOffset)
        .FIELD(uTiling)
        .FIELD(vTiling)
        .FIELD(angle)
        .FIELD(coordinates);
}
Path Differ(const OtherMap& a, const OtherMap& b) {
    return FieldsOf().FIELD(classId);
}
Path Differ(const Map& a, const Map& b) {
    return FieldsOf().FIELD(kind).FIELD(subMaps);
}
Path Differ(const MapSlot& a, const MapSlot& b) {
    return FieldsOf().FIELD(slot).FIELD(enabled).FIELD(amount).FIELD(map);
}
Path Differ(const Material& a, const Material& b) {
    return FieldsOf()
        .FIELD(kind)
        .FIELD(classId)
        .FIELD(name)
        .FIELD(ambient)
        .FIELD(diffuse)
        .FIELD(specular)
        .FIELD(selfIllumination)
        .FIELD(shininess)
        .FIELD(shininessStrength)
        .FIELD(transparency)
        .FIELD(twoSided)
        .FIELD(wire)
        .FIELD(transparencyType)
        .FIELD(maps)
        .FIELD(subMaterials);
}
Path Differ(const Node& a, const Node& b) {
    return FieldsOf()
        .FIELD(name)
        .FIELD(parent)
        .FIELD(hidden)
        .FIELD(selected)
        .FIELD(renderable)
        .FIELD(wireColor)
        .FIELD(userProperties)
        .FIELD(material)
        .FIELD(transform)
        .FIELD(objectOffset)
        .FIELD(object)
        .FIELD(modifiers)
        .FIELD(referenceModifiers);
}
Path Differ(const Scene& a, const Scene& b) {
    return FieldsOf().FIELD(time).FIELD(materials).FIELD(nodes).FIELD(selection);
}
Path Differ(std::monostate, std::monostate) {
    return "";
}

#undef FIELD

template <class T>
Path DifferLeaf(const T& a, const T& b) {
    if constexpr (std::is_same_v<T, float>) {
        return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b) ? "" : ".";
    } else {
        return a == b ? "" : ".";
    }
}

// Lists, arrays: the first element that differs.
template <class List>
Path DifferList(const List& a, const List& b) {
    if (a.size() != b.size()) {
        return ".size";
    }
    for (std::size_t i = 0; i < a.size(); ++i) {
        const Path path = Compare(a[i], b[i]);
        if (!path.empty()) {
            return "[" + std::to_string(i) + "]" + (path == "." ? "" : path);
        }
    }
    return "";
}

template <class Number, class T>
Path DifferMap(const std::map<Number, T>& a, const std::map<Number, T>& b) {
    if (a.size() != b.size()) {
        return ".size";
    }
    for (const auto& [number, element] : a) {
        const auto found = b.find(number);
        if (found == b.end() || !Compare(element, found->second).empty()) {
            return "[" + std::to_string(number) + "]";
        }
    }
    return "";
}

template <class... Kinds>
Path DifferKind(const std::variant<Kinds...>& a, const std::variant<Kinds...>& b) {
    if (a.index() != b.index()) {
        return ".index";
    }
    return std::visit(
        [&b](const auto& kind) {
            return Compare(kind, std::get<std::remove_cvref_t<decltype(kind)>>(b));
        },
        a);
}

template <class T>
Path Compare(const T& a, const T& b) {
    if constexpr (std::is_arithmetic_v<T> || std::is_enum_v<T> || std::is_same_v<T, std::string>) {
        return DifferLeaf(a, b);
    } else if constexpr (requires { a.valueless_by_exception(); }) {
        return DifferKind(a, b);
    } else if constexpr (requires { typename T::mapped_type; }) {
        return DifferMap(a, b);
    } else if constexpr (requires { a.size(); }) {
        return DifferList(a, b);
    } else if constexpr (requires { *a; }) {
        if (!a || !b) {
            return !a == !b ? "" : ".presence";
        }
        return Compare(*a, *b);
    } else {
        return Differ(a, b);
    }
}

}  // namespace

std::string Difference(const Scene& a, const Scene& b) {
    return Differ(a, b);
}
