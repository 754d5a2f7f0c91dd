// What the parts of the scene's check share, and the parts themselves. Private to the check.
#pragma once

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "host/scene/check.h"
#include "host/scene/error.h"
#include "host/scene/scene.h"
#include "host/scene/utf8.h"

namespace maxhost::scene {

// One step of a JSON pointer: a field or a position in a list.
struct Step {
    std::string_view name;
    std::size_t index = 0;
    Step(const char* field) : name(field) {}
    Step(std::string_view field) : name(field) {}
    template <std::integral T>
    Step(T position) : index(static_cast<std::size_t>(position)) {}
};
using Steps = std::initializer_list<Step>;

// Where the check stands; steps are written out only when there is a fault.
class Place {
  public:
    // Goes down for as long as it lives.
    class Down {
      public:
        Down(Place& place, Steps steps) : place_(place), depth_(place.steps_.size()) {
            place_.steps_.insert(place_.steps_.end(), steps);
        }
        ~Down() { place_.steps_.erase(place_.steps_.begin() + depth_, place_.steps_.end()); }
        Down(const Down&) = delete;
        Down& operator=(const Down&) = delete;

      private:
        Place& place_;
        std::ptrdiff_t depth_;
    };

    std::string Pointer(Steps further = {}) const {
        std::string pointer;
        const auto append = [&pointer](const Step& step) {
            step.name.data() ? import::AppendStep(pointer, step.name)
                             : import::AppendStep(pointer, step.index);
        };
        std::for_each(steps_.begin(), steps_.end(), append);
        std::for_each(further.begin(), further.end(), append);
        return pointer;
    }

    [[noreturn]] void Refuse(Steps further, std::string_view found,
                             std::string_view expected) const {
        throw import::SceneError(Pointer(further), found, expected);
    }

    void Finite(Steps further, float number) const {
        if (!std::isfinite(number)) {
            Refuse(further, import::Shown(number), "a finite number");
        }
    }

    template <std::size_t kSize>
    void Finite(std::string_view field, const std::array<float, kSize>& numbers) const {
        for (std::size_t i = 0; i < kSize; ++i) {
            Finite({field, i}, numbers[i]);
        }
    }

    void Finite(std::string_view field, const Matrix& matrix) const {
        for (std::size_t i = 0; i < 12; ++i) {
            Finite({field, i / 3, i % 3}, matrix[i / 3][i % 3]);
        }
    }

    template <std::size_t kSize>
    void Finite(std::string_view field, const std::vector<std::array<float, kSize>>& points) const {
        for (std::size_t i = 0; i < points.size(); ++i) {
            for (std::size_t k = 0; k < kSize; ++k) {
                Finite({field, i, k}, points[i][k]);
            }
        }
    }

    void Text(std::string_view field, const std::string& text) const {
        if (text.find('\0') != std::string::npos) {
            Refuse({field}, "text with a NUL character", "text without");
        }
        if (!import::IsUtf8(text)) {
            Refuse({field}, "text that is not UTF-8", "UTF-8");
        }
    }

    // `list` says what the position is one in, as in "nodes".
    void Position(Steps further, std::int64_t position, std::size_t size,
                  std::string_view list) const {
        if (position < 0 || static_cast<std::uint64_t>(position) >= size) {
            Refuse(further, std::to_string(position),
                   "a position in " + std::string(list) + ", of which there are " +
                       std::to_string(size));
        }
    }

    void Least(Steps further, int number, int least) const {
        if (number < least) {
            Refuse(further, std::to_string(number),
                   "a whole number of at least " + std::to_string(least));
        }
    }

    void Level(int level, std::string_view thing) const {
        if (level > kMostLevels) {
            Refuse({}, std::string(thing) + " at level " + std::to_string(level),
                   "at most " + std::to_string(kMostLevels) + " levels");
        }
    }

    // Times of keys or samples.
    template <class Timed>
    void Ascending(std::string_view field, const std::vector<Timed>& list) const {
        for (std::size_t i = 1; i < list.size(); ++i) {
            if (list[i].time <= list[i - 1].time) {
                Refuse({field, i, "time"}, std::to_string(list[i].time),
                       "a time after " + std::to_string(list[i - 1].time));
            }
        }
    }

  private:
    std::vector<Step> steps_;
};

// Transforms and what they are made of. Wires may name controllers that come later, so they are
// looked up at the end.
class ControllerCheck {
  public:
    explicit ControllerCheck(Place& place) : place_(place) {}

    // `place` stands at the transform.
    void Check(const Transform& transform, std::size_t nodes);
    void CheckReferences() const;

  private:
    void CheckName(const std::string& id, bool isFloat);
    void CheckThree(std::string_view field, const std::optional<ThreeAxisController>& controller,
                    bool isRotation);
    void CheckJoint(const JointParams& joint);
    void CheckFloat(const FloatController& controller, int level);
    void CheckKind(const BezierFloat& bezier, int level);
    void CheckKind(const FloatList& list, int level);
    void CheckKind(const WireFloat& wire, int level);
    void CheckKind(const OtherFloat& other, int level);
    void CheckReference(std::string_view field, const std::string& id, bool isFloat);

    struct Reference {
        std::string pointer;
        std::string_view id;
        bool isFloat;
    };

    Place& place_;
    std::unordered_map<std::string_view, bool> isFloat_;  // by id
    std::vector<Reference> references_;
};

// Objects and modifiers; a mesh that several nodes share is gone through once.
class ObjectCheck {
  public:
    explicit ObjectCheck(Place& place) : place_(place) {}

    // `place` stands at the object, or at the modifier.
    void Check(const Object& object);
    void Check(const Modifier& modifier, std::size_t nodes) const;

  private:
    void CheckMesh(const Mesh& mesh) const;
    void CheckChannel(const MapChannel& channel, std::size_t faces) const;

    Place& place_;
    std::unordered_set<const Mesh*> seen_;
};

// The scene's materials, with their sub-materials and maps. `place` stands at the scene.
void CheckMaterials(const Scene& scene, Place& place);

}  // namespace maxhost::scene
