#include "host/assimp/tree/roles.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

#include "host/assimp/text.h"

namespace maxhost::import {
namespace {

class RoleFinder {
  public:
    RoleFinder(const SourceTree& tree, ImportWarnings& warnings)
        : warnings_(warnings), roles_(tree.nodes.size()) {
        for (std::size_t i = 0; i < tree.nodes.size(); ++i) {
            byName_[tree.nodes[i].node->mName.C_Str()].push_back(i);
        }
    }

    std::vector<Role> Find(const aiScene& scene, SourceFormat format,
                           const std::vector<bool>& isBone) {
        for (std::size_t i = 0; i < roles_.size(); ++i) {
            roles_[i].isBone = isBone[i] || format == SourceFormat::bvh;
        }
        for (unsigned i = 0; i < scene.mNumCameras; ++i) {
            Place(scene.mCameras[i], &Role::camera, "camera");
        }
        for (unsigned i = 0; i < scene.mNumLights; ++i) {
            Place(scene.mLights[i], &Role::light, "light");
        }
        return std::move(roles_);
    }

  private:
    // Ties the item to the first node of its name that has none of its kind yet; like-named cameras
    // stand at like-named nodes.
    template <typename Item>
    void Place(const Item* item, const Item* Role::*place, const std::string& what) {
        const auto found = byName_.find(item->mName.C_Str());
        if (found != byName_.end()) {
            for (const std::size_t i : found->second) {
                if (!(roles_[i].*place)) {
                    roles_[i].*place = item;
                    return;
                }
            }
        }
        warnings_.Add(LossCode::objectWithoutNode, what + " " + Quoted(TextOf(item->mName)));
    }

    ImportWarnings& warnings_;
    std::vector<Role> roles_;
    std::unordered_map<std::string_view, std::vector<std::size_t>> byName_;
};

// ---------------------------------------------------------------- directions

bool IsFinite(const Vector& v) {
    return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

// Of unit length; zero for what has no direction.
Vector Direction(const aiVector3D& v) {
    const Vector exact(v.x, v.y, v.z);
    const double length = exact.Length();
    return IsFinite(exact) && length > 0 ? exact / length : Vector();
}

// The part of `up` that is at right angles to `look`, of unit length; where there is next to none,
// that of y or, along y, of z.
Vector UpAcross(const Vector& up, const Vector& look) {
    constexpr double kNone = 1e-6;
    const auto across = [&look](const Vector& v) { return v - look * (v * look); };
    Vector result = across(up);
    if (result.Length() < kNone) {
        result = across(std::abs(look.y) < 0.9 ? Vector(0, 1, 0) : Vector(0, 0, 1));
    }
    return result / result.Length();
}

// The matrix of an object at `position` that looks along `look`: it takes -z to it and y upwards.
Matrix4 LookingAlong(const Vector& look, const Vector& up, const Vector& position) {
    const Vector y = UpAcross(up, look);
    const Vector x = look ^ y;
    return {x.x, y.x, -look.x, position.x, x.y, y.y, -look.y, position.y,
            x.z, y.z, -look.z, position.z, 0,   0,   0,       1};
}

struct View {
    bool isAimed = true;
    Vector look, up, position;  // in the node; look and up of unit length, or zero where not said
};

View ViewOf(const Role& shown) {
    View view;
    const auto set = [&view](const aiVector3D& look, const aiVector3D& up,
                             const aiVector3D& position) {
        view.look = Direction(look);
        view.up = Direction(up);
        view.position = Vector(position.x, position.y, position.z);
    };
    if (shown.camera) {
        set(shown.camera->mLookAt, shown.camera->mUp, shown.camera->mPosition);
    } else {
        set(shown.light->mDirection, shown.light->mUp, shown.light->mPosition);
        view.isAimed = shown.light->mType == aiLightSource_SPOT ||
                       shown.light->mType == aiLightSource_DIRECTIONAL;
    }
    return view;
}

// Whether the camera holds the values that Assimp's cameras have before a reader sets them.
bool IsUnset(const aiCamera& camera) {
    return camera.mLookAt == aiVector3D(0, 0, 1) && camera.mUp == aiVector3D(0, 1, 0);
}

// Whether the position is the node's own once more, which these readers give with the node placed.
bool IsPlacedByNode(const SourceNode& node, SourceFormat format) {
    const bool isAtOrigin = node.local.a4 == 0 && node.local.b4 == 0 && node.local.c4 == 0;
    return format == SourceFormat::gltf || (format == SourceFormat::threeDs && !isAtOrigin);
}

}  // namespace

std::vector<Role> FindRoles(const aiScene& scene, const SourceTree& tree, SourceFormat format,
                            const std::vector<bool>& isBone, ImportWarnings& warnings) {
    return RoleFinder(tree, warnings).Find(scene, format, isBone);
}

Role ShownBeside(const SourceNode& node, const Role& role) {
    Role shown;
    if (!role.isBone && node.node->mNumMeshes == 0) {
        shown.camera = role.camera;
        shown.light = role.camera ? nullptr : role.light;
    }
    return shown;
}

Matrix4 ViewFrame(const SourceNode& node, const Role& shown, const AxisTurn& turn,
                  SourceFormat format, ImportWarnings& warnings) {
    if (!shown.camera && !shown.light) {
        return {};
    }
    View view = ViewOf(shown);
    if (IsPlacedByNode(node, format) || !IsFinite(view.position)) {
        view.position = {};
    }
    if (shown.camera && IsUnset(*shown.camera)) {
        if (format == SourceFormat::threeDs) {
            warnings.AddOf(LossCode::cameraDirection, "camera",
                           Quoted(TextOf(shown.camera->mName)));
            view.isAimed = false;
        } else if (format == SourceFormat::ase || format == SourceFormat::openGex) {
            view.look = {};  // these formats' cameras look along -z, which their readers leave out
        }
    }
    if (!view.isAimed) {
        Matrix4 moved;
        return turn.Conjugate(Matrix4::Translation(view.position, moved));
    }
    const bool hasLook = view.look != Vector();
    return turn.Turn(LookingAlong(hasLook ? view.look : Vector(0, 0, -1), view.up, view.position));
}

}  // namespace maxhost::import
