// A 3ds Max scene as plain data: the scene description file holds it field by field, importers and
// tests fill it in, and Host::OpenScene() makes SDK objects of it. Every field stands a second time
// in the lists of fields.h, by which a scene is read, written, checked, scaled and compared.
//
// Conventions (all of them the scene description's): times are ticks; angles are radians; matrices
// are four rows of three for row vectors, the fourth row is the translation; quaternions are
// x, y, z, w by the right-hand rule, of unit length. Nodes, materials and bones are named by their
// position in the vector that holds them; kNone stands for "none".
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace maxhost::scene {

constexpr int kNone = -1;

using ClassId = std::array<std::uint32_t, 2>;
using Vec2 = std::array<float, 2>;
using Vec3 = std::array<float, 3>;
using Matrix = std::array<Vec3, 4>;

constexpr Matrix kIdentity = {Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}, Vec3{0, 0, 0}};

struct Time {
    int frameRate = 30;
    int ticksPerFrame = 160;
    int start = 0;
    int end = 16000;
};

// ---------------------------------------------------------------- controllers

// The numbers are the SDK's tangent types.
enum class Tangent { smooth = 0, linear = 1, step = 2, fast = 3, slow = 4, custom = 5, flat = 6 };

constexpr float kDefaultHandle = 0.333333f;

// Tangents are in value per tick; the in-tangent points back in time, as the SDK stores it.
struct Key {
    int time = 0;
    float value = 0;
    Tangent inType = Tangent::smooth;
    Tangent outType = Tangent::smooth;
    float inTangent = 0;
    float outTangent = 0;
    float inLength = kDefaultHandle;
    float outLength = kDefaultHandle;
};

struct Key3 {
    int time = 0;
    Vec3 value{};
    Tangent inType = Tangent::smooth;
    Tangent outType = Tangent::smooth;
    Vec3 inTangent{};
    Vec3 outTangent{};
    Vec3 inLength{kDefaultHandle, kDefaultHandle, kDefaultHandle};
    Vec3 outLength{kDefaultHandle, kDefaultHandle, kDefaultHandle};
};

struct FloatController;

struct BezierFloat {
    std::vector<Key> keys;  // times strictly ascending
    float value = 0;        // where there are no keys
};

struct FloatListItem {
    float weight = 1;
    std::shared_ptr<const FloatController> controller;  // never null in a checked scene
};

struct FloatList {
    std::vector<FloatListItem> items;
};

// Controllers are named by their `id`; empty: none.
struct Wire {
    std::string parent;
    int subnum = 0;
    std::string coController;
    std::string expression;
};

struct WireFloat {
    bool master = false;
    bool slave = true;
    bool twoWay = false;
    std::vector<Wire> wires;
    float value = 0;
};

struct OtherFloat {
    float value = 0;
};

struct FloatController {
    std::string id;                  // empty: none
    std::optional<ClassId> classId;  // required for OtherFloat; replaces the class's own elsewhere
    std::variant<BezierFloat, FloatList, WireFloat, OtherFloat> kind;
};

struct JointParams {
    std::uint32_t flags = 0;
    int dofs = 3;  // 1 to 6; as many of min and max count
    std::array<float, 6> min{};
    std::array<float, 6> max{};
    bool isDefault = false;
};

// positionXYZ, eulerXYZ or scaleXYZ, by the place where it stands.
struct ThreeAxes {
    std::array<std::optional<FloatController>, 3> axes;  // absent: no sub-controller
};

struct BezierScale {
    std::vector<Key3> keys;
    Vec3 value{1, 1, 1};
};

struct OtherThree {
    std::array<float, 4> value{};  // position and scale use three; rotation is a quaternion
};

struct ThreeAxisController {
    std::string id;
    std::optional<ClassId> classId;  // required for OtherThree
    std::optional<JointParams> jointParams;
    std::variant<ThreeAxes, BezierScale, OtherThree> kind;
};

struct PrsTransform {
    std::optional<ThreeAxisController> position, rotation, scale;
};

struct MatrixTransform {
    Matrix matrix = kIdentity;
};

struct MatrixSample {
    int time = 0;
    Matrix matrix = kIdentity;
};

struct SampledTransform {
    std::vector<MatrixSample> samples;  // at least one, times strictly ascending
};

struct FootprintTransform {
    Matrix matrix = kIdentity;
};

struct IkChainTransform {
    int startJoint = kNone;
    int endJoint = kNone;
    Matrix matrix = kIdentity;
};

struct Transform {
    std::string id;
    std::optional<ClassId> classId;
    std::variant<PrsTransform, MatrixTransform, SampledTransform, FootprintTransform,
                 IkChainTransform>
        kind;
};

// ---------------------------------------------------------------- objects

struct Face {
    std::array<std::uint32_t, 3> v{};
    std::uint32_t smoothing = 0;
    std::uint16_t material = 0;
};

struct MapChannel {
    std::vector<Vec2> vertices;
    std::vector<std::array<std::uint32_t, 3>>
        faces;  // as many as the mesh has; none without vertices
};

struct Mesh {
    std::vector<Vec3> vertices;
    std::vector<Face> faces;
    std::map<int, MapChannel> channels;     // 1 to 99
    std::map<std::uint32_t, Vec3> normals;  // specified normals by vertex
};

struct Object {
    std::optional<std::uint32_t> superClassId;  // required without mesh; with one it replaces 0x10
    std::optional<ClassId> classId;             // required without mesh; replaces [9, 0] with one
    std::optional<float> parameter0;            // absent: no parameter block
    std::shared_ptr<const Mesh> mesh;           // null: an object that does not convert to a mesh
};

// ---------------------------------------------------------------- modifiers

struct SkinWeight {
    int slot = 0;  // a position in `bones`; a negative one is kept as it stands
    float weight = 0;
};

struct Skin {
    std::vector<int> bones;  // nodes
    std::vector<std::vector<SkinWeight>> weights;
    bool context = true;
};

struct PhysiqueRigid {
    int node = kNone;
};

struct NodeWeight {
    int node = kNone;
    float weight = 0;
};

struct PhysiqueBlended {
    std::vector<NodeWeight> nodes;
};

struct Physique {
    std::vector<std::variant<std::monostate, PhysiqueRigid, PhysiqueBlended>> vertices;
};

struct MorphChannel {
    std::string name;
    std::vector<Vec3> points;
};

struct Morpher {
    std::vector<MorphChannel> channels;
};

struct OtherModifier {
    ClassId classId{};
};

struct Modifier {
    bool enabled = true;
    std::variant<Skin, Physique, Morpher, OtherModifier> kind;
};

// ---------------------------------------------------------------- materials

struct Map;

struct BitmapMap {
    std::string file;
    float uOffset = 0;
    float vOffset = 0;
    float uTiling = 1;
    float vTiling = 1;
    float angle = 0;
    bool coordinates = true;
};

struct OtherMap {
    ClassId classId{};
};

struct Map {
    std::variant<BitmapMap, OtherMap> kind;
    std::vector<std::shared_ptr<const Map>> subMaps;  // null: an empty slot
};

struct MapSlot {
    int slot = 0;
    bool enabled = true;
    float amount = 1;
    std::shared_ptr<const Map> map;
};

struct Material;

// Nothing, a material of its own, or one of the scene's materials by position.
using SubMaterial = std::variant<std::monostate, std::shared_ptr<const Material>, int>;

enum class MaterialKind { standard, multi, other };

struct Material {
    MaterialKind kind = MaterialKind::standard;
    ClassId classId{};  // of `other` alone
    std::string name;
    Vec3 ambient{0.588f, 0.588f, 0.588f};
    Vec3 diffuse{0.588f, 0.588f, 0.588f};
    Vec3 specular{0.9f, 0.9f, 0.9f};
    Vec3 selfIllumination{};
    float shininess = 0.1f;
    float shininessStrength = 0;
    float transparency = 0;
    bool twoSided = false;
    bool wire = false;
    int transparencyType = 2;
    std::vector<MapSlot> maps;  // a slot at most once
    std::vector<SubMaterial> subMaterials;
};

// ---------------------------------------------------------------- the scene

struct Node {
    std::string name;
    int parent = kNone;  // none: child of the scene root
    bool hidden = false;
    bool selected = false;  // the file's default for Scene::selection; see there
    bool renderable = true;
    std::array<std::uint8_t, 3> wireColor{128, 128, 128};
    std::string userProperties;
    int material = kNone;
    std::optional<Transform> transform = Transform{};  // absent: no transform controller
    Matrix objectOffset = kIdentity;
    std::optional<Object> object;              // absent: a dummy helper without parameter block
    std::vector<Modifier> modifiers;           // top first, one derived object
    std::vector<Modifier> referenceModifiers;  // top first, a second derived object above the first
};

struct Scene {
    Time time;
    std::vector<std::shared_ptr<const Material>> materials;  // never null
    std::vector<Node> nodes;     // children of one parent stand in child order
    std::vector<int> selection;  // what is selected, in selection order, whatever the nodes say
};

}  // namespace maxhost::scene
