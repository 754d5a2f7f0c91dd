#include "host/scene/scale.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <ranges>
#include <string>
#include <tuple>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <variant>

#include "host/scene/check.h"
#include "host/scene/fields.h"

namespace maxhost::scene {
namespace {

// Goes through a scene by its lists of fields and multiplies what they call lengths, and the
// translations of matrices. Where the rest of the structure decides on what is a length, there is
// an overload of Scale().
class Scaler {
  public:
    explicit Scaler(float factor) : factor_(factor) {}

    template <Structure T>
    void Scale(T& object) {
        ForEachField<T>([&](const auto& field) {
            ScaleValue<std::remove_cvref_t<decltype(field)>::kMeaning>(field.Of(object));
        });
    }

  private:
    template <Meaning kMeaning, class T>
    void ScaleValue(T& value) {
        if constexpr (std::is_same_v<T, float>) {
            if constexpr (kMeaning == Meaning::length || kMeaning == Meaning::ofRole) {
                value *= factor_;
            }
        } else if constexpr (std::is_same_v<T, Matrix>) {
            ScaleValue<Meaning::length>(value[3]);
        } else if constexpr (Structure<T>) {
            Scale(value);
        } else if constexpr (requires { value.valueless_by_exception(); }) {
            std::visit([&](auto& kind) { ScaleValue<kMeaning>(kind); }, value);
        } else if constexpr (requires { value.use_count(); }) {
            ScaleShared(value);
        } else if constexpr (requires { value.has_value(); }) {
            if (value) {
                ScaleValue<kMeaning>(*value);
            }
        } else if constexpr (requires { typename T::mapped_type; }) {
            for (auto& [number, element] : value) {
                ScaleValue<kMeaning>(element);
            }
        } else if constexpr (std::ranges::range<T> && !std::is_same_v<T, std::string>) {
            for (auto& element : value) {
                ScaleValue<kMeaning>(element);
            }
        }
    }

    // Only a position's controllers hold lengths.
    void Scale(PrsTransform& transform) {
        if (transform.position) {
            ScaleValue<Meaning::plain>(transform.position->kind);
            ScaleJoint(transform.position->jointParams);
        }
        if (transform.rotation) {
            ScaleJoint(transform.rotation->jointParams);
        }
        if (transform.scale) {
            ScaleJoint(transform.scale->jointParams);
        }
    }

    // Joint parameters say by their own flags whether they limit a position or a rotation.
    void ScaleJoint(std::optional<JointParams>& joint) {
        constexpr std::uint32_t kKind = 0xc0000000;
        constexpr std::uint32_t kSliding = 0x80000000;
        if (joint && (joint->flags & kKind) == kSliding) {
            ScaleValue<Meaning::length>(joint->min);
            ScaleValue<Meaning::length>(joint->max);
        }
    }

    void Scale(Object& object) {
        constexpr std::uint32_t kGeometry = 0x10;
        constexpr std::uint32_t kShape = 0x40;
        constexpr std::uint32_t kHelper = 0x50;
        const std::uint32_t superClass = object.superClassId.value_or(kGeometry);
        const bool hasSize =
            superClass == kGeometry || superClass == kShape || superClass == kHelper;
        if (hasSize) {
            ScaleValue<Meaning::length>(object.parameter0);
        }
        ScaleShared(object.mesh);
    }

    // An object that several pointers share is copied and scaled once, when it is first met.
    template <class T>
    void ScaleShared(std::shared_ptr<const T>& shared) {
        if (!shared) {
            return;
        }
        auto& copies = std::get<Copies<T>>(copies_);
        const auto found = copies.find(shared);
        if (found != copies.end()) {
            shared = found->second;
            return;
        }
        const auto scaled = std::make_shared<T>(*shared);
        Scale(*scaled);
        copies.emplace(std::exchange(shared, scaled), scaled);
    }

    // The keys keep the originals alive, so that no address comes twice.
    template <class T>
    using Copies = std::unordered_map<std::shared_ptr<const T>, std::shared_ptr<const T>>;

    float factor_;
    std::tuple<Copies<Mesh>, Copies<FloatController>> copies_;
};

}  // namespace

void ScaleLengths(Scene& scene, float factor) {
    Scaler scaler(factor);
    for (Node& node : scene.nodes) {
        scaler.Scale(node);
    }
    Check(scene);
}

}  // namespace maxhost::scene
