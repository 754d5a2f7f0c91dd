#include "host/assimp/tree/tree.h"

#include <assimp/commonMetaData.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <set>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>

#include "host/assimp/tree/gltf.h"

namespace maxhost::import {
namespace {

std::string_view NameOf(const aiNode& node) {
    return node.mName.C_Str();
}

// ---------------------------------------------------------------- FBX pivots

constexpr std::string_view kPivotMarker = "_$AssimpFbx$_";
constexpr std::string_view kGeometric = "Geometric";
constexpr std::string_view kInverse = "Inverse";

// Assimp's FBX importer splits a node with pivots into several, one a step:
// "Box_$AssimpFbx$_RotationPivot". The name of the step; empty for any other node.
std::string_view PivotStep(const aiNode& node) {
    const std::string_view name = NameOf(node);
    const std::size_t marker = name.rfind(kPivotMarker);
    return marker == std::string_view::npos ? std::string_view()
                                            : name.substr(marker + kPivotMarker.size());
}

// The geometric steps stand above the node that they belong to, their inverses below it.
enum class Fold { none, intoNode, intoMeshes, drop };

Fold FoldOf(const aiNode& node) {
    const std::string_view step = PivotStep(node);
    if (step.empty() || node.mNumMeshes > 0) {
        return Fold::none;
    }
    const bool isGeometric = step.starts_with(kGeometric);
    if (isGeometric && step.ends_with(kInverse)) {
        return Fold::drop;
    }
    // Any other step leads to exactly one node; anything else is a node that only bears such a
    // name.
    return node.mNumChildren != 1 ? Fold::none : isGeometric ? Fold::intoMeshes : Fold::intoNode;
}

// ---------------------------------------------------------------- wrapper roots

// Names that something in the file goes by: bones, cameras, lights and animated nodes.
std::set<std::string_view> NamesInUse(const aiScene& scene) {
    std::set<std::string_view> names;
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        for (unsigned k = 0; k < scene.mMeshes[i]->mNumBones; ++k) {
            names.insert(scene.mMeshes[i]->mBones[k]->mName.C_Str());
        }
    }
    for (unsigned i = 0; i < scene.mNumCameras; ++i) {
        names.insert(scene.mCameras[i]->mName.C_Str());
    }
    for (unsigned i = 0; i < scene.mNumLights; ++i) {
        names.insert(scene.mLights[i]->mName.C_Str());
    }
    for (unsigned i = 0; i < scene.mNumAnimations; ++i) {
        for (unsigned k = 0; k < scene.mAnimations[i]->mNumChannels; ++k) {
            names.insert(scene.mAnimations[i]->mChannels[k]->mNodeName.C_Str());
        }
    }
    return names;
}

// Assimp makes a root called ROOT for a glTF scene that has not exactly one root node.
bool IsGltfWrapper(const aiNode& root, const std::optional<GltfSceneFacts>& facts) {
    return NameOf(root) == "ROOT" && root.mNumChildren != 1 && root.mTransformation.IsIdentity() &&
           !(facts && facts->roots == 1);
}

bool IsWrapper(const aiScene& scene, SourceFormat format, const std::string& path,
               const std::optional<GltfSceneFacts>& facts) {
    const aiNode& root = *scene.mRootNode;
    if (root.mNumMeshes > 0) {
        return false;
    }
    if (format == SourceFormat::fbx || format == SourceFormat::collada) {
        return true;  // the importer's RootNode; the visual scene
    }
    const bool isNobodys = !NamesInUse(scene).contains(NameOf(root)) &&
                           (!root.mMetaData || root.mMetaData->mNumProperties == 0);
    if (!isNobodys || format == SourceFormat::bvh) {
        return false;
    }
    return format == SourceFormat::gltf ? IsGltfWrapper(root, facts)
                                        : IsImportersName(NameOf(root), path);
}

// ---------------------------------------------------------------- axes

// The turn and the scale whose product `m` is, where it is one.
struct ScaledTurn {
    AxisTurn turn;
    double scale = 1;
};

std::optional<ScaledTurn> AsScaledTurn(const Matrix4& m) {
    ScaledTurn result;
    std::array<bool, 3> used{};
    for (int row = 0; row < 3; ++row) {
        int column = scene::kNone;
        for (int i = 0; i < 3; ++i) {
            if (m[row][i] != 0) {
                if (column != scene::kNone || used[i]) {
                    return std::nullopt;
                }
                column = i;
            }
        }
        if (column == scene::kNone || m[row][3] != 0) {
            return std::nullopt;
        }
        used[column] = true;
        const double value = m[row][column];
        result.scale = row == 0 ? std::abs(value) : result.scale;
        if (!std::isfinite(value) || std::abs(value) != result.scale) {
            return std::nullopt;
        }
        result.turn.from[row] = column;
        result.turn.sign[row] = value < 0 ? -1 : 1;
    }
    const bool isRotation = m.Determinant() > 0;
    return isRotation ? std::optional(result) : std::nullopt;
}

Matrix4 Scaling(double factor) {
    Matrix4 m;
    m.a1 = m.b2 = m.c3 = factor;
    return m;
}

std::optional<int> Setting(const aiMetadata* settings, const char* key) {
    std::int32_t value = 0;
    return settings && settings->Get(key, value) ? std::optional<int>(value) : std::nullopt;
}

int Sign(const aiMetadata* settings, const char* key) {
    return Setting(settings, key).value_or(1) < 0 ? -1 : 1;
}

// In metres; the file counts in centimetres.
double FbxUnit(const aiMetadata* settings) {
    double factor = 0;
    float single = 0;
    if (settings && !settings->Get("UnitScaleFactor", factor) &&
        settings->Get("UnitScaleFactor", single)) {
        factor = single;
    }
    return std::isfinite(factor) && factor > 0 ? factor / 100 : 0;
}

// ---------------------------------------------------------------- the walk

struct Visit {
    const aiNode* node;
    int parent;
    Matrix4 above;                        // what folded nodes left for this one
    std::vector<SourceNode::Link> links;  // these nodes
    std::optional<Matrix4> geometric;
    std::size_t notFinite;
};

// The children of nodes. Assimp's reader of MDL lists all bones below one node, each of which names
// another of them, earlier in the list, as its parent.
class Children {
  public:
    explicit Children(const aiNode& root) {
        std::vector<const aiNode*> waiting{&root};
        while (!waiting.empty()) {
            const aiNode& node = *waiting.back();
            waiting.pop_back();
            std::unordered_set<const aiNode*> earlier;
            for (unsigned i = 0; i < node.mNumChildren; ++i) {
                if (const aiNode* const child = node.mChildren[i]) {
                    const bool isSiblings = earlier.contains(child->mParent);
                    of_[isSiblings ? child->mParent : &node].push_back(child);
                    earlier.insert(child);
                    waiting.push_back(child);
                }
            }
        }
    }

    void Push(std::vector<Visit>& stack, const aiNode& node, Visit model) const {
        const auto found = of_.find(&node);
        if (found != of_.end()) {
            for (auto child = found->second.rbegin(); child != found->second.rend(); ++child) {
                model.node = *child;
                stack.push_back(model);
            }
        }
    }

  private:
    std::unordered_map<const aiNode*, std::vector<const aiNode*>> of_;
};

// Visits a node of the stack: either folds it into those below or appends it to `nodes`.
void Step(std::vector<Visit>& stack, std::vector<SourceNode>& nodes, const Children& children,
          bool foldPivots) {
    Visit visit = std::move(stack.back());
    stack.pop_back();
    const aiNode& node = *visit.node;
    const Fold fold = foldPivots ? FoldOf(node) : Fold::none;
    const Matrix4 local = FiniteMatrix(node.mTransformation, visit.notFinite);
    if (fold == Fold::intoMeshes) {
        visit.geometric = visit.geometric.value_or(Matrix4()) * local;
    } else if (fold != Fold::drop) {
        visit.above = visit.above * local;
        visit.links.push_back({&node, local});
    }
    if (fold == Fold::none) {
        nodes.push_back({&node, visit.parent, visit.above, std::move(visit.links), visit.geometric,
                         visit.notFinite});
        visit = {nullptr, static_cast<int>(nodes.size()) - 1, Matrix4(), {}, std::nullopt, 0};
    }
    children.Push(stack, node, std::move(visit));
}

// ASE's root holds one unnamed node more, which holds the file's.
const aiNode& InnermostWrapper(const aiNode& root, SourceFormat format) {
    const bool hasSecond = format == SourceFormat::ase && root.mNumChildren == 1 &&
                           root.mChildren[0] && NameOf(*root.mChildren[0]).empty() &&
                           root.mChildren[0]->mNumMeshes == 0 &&
                           root.mChildren[0]->mTransformation.IsIdentity();
    return hasSecond ? *root.mChildren[0] : root;
}

}  // namespace

bool IsImportersName(std::string_view name, const std::string& path) {
    constexpr std::string_view kKnown[] = {"3MF", "WORLD", "ACWorld_0"};
    return name.empty() || (name.front() == '<' && name.back() == '>') || name.front() == '$' ||
           name == path || name == std::filesystem::path(path).filename().string() ||
           std::find(std::begin(kKnown), std::end(kKnown), name) != std::end(kKnown);
}

SourceFormat FormatOf(const aiScene& scene) {
    static constexpr std::pair<std::string_view, SourceFormat> kFormats[] = {
        {"Autodesk FBX Importer", SourceFormat::fbx},
        {"Collada Importer", SourceFormat::collada},
        {"glTF Importer", SourceFormat::gltf},
        {"glTF2 Importer", SourceFormat::gltf},
        {"ASE Importer", SourceFormat::ase},
        {"Discreet 3DS Importer", SourceFormat::threeDs},
        {"BVH Importer (MoCap)", SourceFormat::bvh},
        {"Open Game Engine Exchange", SourceFormat::openGex},
    };
    aiString importer;
    if (scene.mMetaData && scene.mMetaData->Get(AI_METADATA_SOURCE_FORMAT, importer)) {
        for (const auto& [name, format] : kFormats) {
            if (name == importer.C_Str()) {
                return format;
            }
        }
    }
    return SourceFormat::other;
}

namespace {

struct SignedAxis {
    int axis = 0;  // 0 x, 1 y, 2 z
    int sign = 1;
};

SignedAxis RightOf(int up) {
    return {up == 0 ? 1 : 0, 1};
}

// From axes of which these point up and, seen by the viewer, to the right.
AxisTurn TurnOf(SignedAxis up, SignedAxis right) {
    // The third axis points away from the viewer: up x right.
    const int away = 3 - up.axis - right.axis;
    const int cyclic = (up.axis + 1) % 3 == right.axis ? 1 : -1;
    return {{right.axis, away, up.axis}, {right.sign, cyclic * up.sign * right.sign, up.sign}};
}

bool IsAxis(std::optional<int> number) {
    return number && *number >= 0 && *number <= 2;
}

bool IsTurned(const AxisTurn& turn) {
    return turn.from != AxisTurn().from || turn.sign != AxisTurn().sign;
}

// The turn of a root that its reader made by the sine and cosine of a right angle, in f32.
std::optional<AxisTurn> NearTurn(const aiMatrix4x4& root) {
    constexpr double kRounding = 1e-6;
    std::size_t notFinite = 0;
    Matrix4 rounded = FiniteMatrix(root, notFinite);
    const double length = LengthOf(Column(rounded, 0));
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column) {
            double& value = rounded[row][column];
            const double whole = std::round(value / length);
            value = std::abs(value / length - whole) < kRounding ? whole : value / length;
        }
    }
    const auto turn = AsScaledTurn(rounded);
    return turn && IsTurned(turn->turn) ? std::optional(turn->turn) : std::nullopt;
}

// What says which axis is up, and the turn from the file's axes but for its root's.
void SetAxes(const aiScene& scene, SourceFormat format, std::optional<int> up, SourceTree& tree) {
    const std::optional<AxisTurn> rootTurn =
        scene.mRootNode ? NearTurn(scene.mRootNode->mTransformation) : std::nullopt;
    const bool isFbx = format == SourceFormat::fbx;
    tree.turn = isFbx ? FbxTurn(scene.mMetaData) : kYUpToZUp;
    tree.fileTurn = rootTurn ? tree.turn.After(*rootTurn) : tree.turn;
    if (format == SourceFormat::gltf) {
        tree.upSource = UpSource::format;
    } else if (format == SourceFormat::collada ||
               (isFbx && IsAxis(Setting(scene.mMetaData, "UpAxis")))) {
        tree.upSource = UpSource::file;
    } else if (rootTurn) {
        tree.upSource = UpSource::reader;
    } else if (IsAxis(up)) {
        tree.upSource = UpSource::choice;
        tree.turn = tree.fileTurn = TurnOf({*up, 1}, RightOf(*up));
    }
}

}  // namespace

std::string UpAxisOf(const AxisTurn& turn) {
    return (turn.sign[2] < 0 ? "-" : "") + std::string(1, "xyz"[turn.from[2]]);
}

AxisTurn FbxTurn(const aiMetadata* settings) {
    const SignedAxis up = {Setting(settings, "UpAxis").value_or(1), Sign(settings, "UpAxisSign")};
    if (!IsAxis(up.axis)) {
        return kYUpToZUp;
    }
    const SignedAxis right = {Setting(settings, "CoordAxis").value_or(0),
                              Sign(settings, "CoordAxisSign")};
    const bool isSense = IsAxis(right.axis) && right.axis != up.axis;
    return TurnOf(up, isSense ? right : RightOf(up.axis));
}

SourceTree FlattenTree(const aiScene& scene, const std::string& path, std::optional<int> up) {
    const SourceFormat format = FormatOf(scene);
    SourceTree tree;
    SetAxes(scene, format, up, tree);
    tree.unit = format == SourceFormat::fbx ? FbxUnit(scene.mMetaData) : 0;
    if (!scene.mRootNode) {
        return tree;
    }
    const auto facts = format == SourceFormat::gltf ? ReadGltfSceneFacts(path) : std::nullopt;
    tree.nodesOutside = facts ? facts->nodesOutside : 0;
    const Children children(*scene.mRootNode);
    std::vector<Visit> stack;
    if (IsWrapper(scene, format, path, facts)) {
        std::size_t notFinite = 0;
        Matrix4 above = FiniteMatrix(scene.mRootNode->mTransformation, notFinite);
        if (const auto scaledTurn = AsScaledTurn(above)) {
            tree.turn = tree.turn.After(scaledTurn->turn);
            if (format == SourceFormat::collada) {
                tree.unit = scaledTurn->scale;
            }
            above = Scaling(format == SourceFormat::collada ? 1 : scaledTurn->scale);
        }
        children.Push(stack, InnermostWrapper(*scene.mRootNode, format),
                      {nullptr, scene::kNone, above, {{nullptr, above}}, std::nullopt, notFinite});
    } else {
        stack.push_back({scene.mRootNode, scene::kNone, Matrix4(), {}, std::nullopt, 0});
    }
    while (!stack.empty()) {
        Step(stack, tree.nodes, children, format == SourceFormat::fbx);
    }
    return tree;
}

}  // namespace maxhost::import
