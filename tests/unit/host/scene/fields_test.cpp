// The lists of the scene's fields, and the comparison by them.
#include "host/scene/fields.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <ranges>
#include <set>
#include <string>
#include <typeindex>
#include <utility>
#include <variant>

#include "host/scene/difference.h"
#include "tests/support/every_field.h"

using namespace maxhost::scene;

namespace {

// Notes which fields there are of a type and the types it is made of, and which of them hold
// something else than their default.
class FieldsInUse {
  public:
    using Name = std::pair<std::type_index, std::string>;

    template <class T>
    void AddType() {
        if constexpr (Structure<T>) {
            if (types_.insert(typeid(T)).second) {
                ForEachField<T>([this](const auto& field) {
                    unused_.emplace(typeid(T), field.name);
                    AddType<std::remove_cvref_t<decltype(field.Of(std::declval<T&>()))>>();
                });
            }
        } else if constexpr (requires { typename T::mapped_type; }) {
            AddType<typename T::mapped_type>();
        } else if constexpr (requires { typename T::value_type; }) {
            AddType<typename T::value_type>();
        } else if constexpr (requires { typename T::element_type; }) {
            AddType<std::remove_const_t<typename T::element_type>>();
        } else if constexpr (requires { std::variant_size<T>::value; }) {
            AddKinds(static_cast<T*>(nullptr));
        }
    }

    template <class T>
    void Use(const T& value) {
        if constexpr (Structure<T>) {
            ForEachField<T>([&](const auto& field) {
                const T standard;
                if (!Difference(field.Of(value), field.Of(standard)).empty()) {
                    unused_.erase({typeid(T), std::string(field.name)});
                }
                Use(field.Of(value));
            });
        } else if constexpr (requires { value.valueless_by_exception(); }) {
            std::visit([this](const auto& kind) { this->Use(kind); }, value);
        } else if constexpr (requires { typename T::mapped_type; }) {
            for (const auto& [number, element] : value) {
                Use(element);
            }
        } else if constexpr (requires { *value; }) {
            if (value) {
                Use(*value);
            }
        } else if constexpr (std::ranges::range<T>) {
            for (const auto& element : value) {
                Use(element);
            }
        }
    }

    // The fields that held their default wherever they were used.
    std::string Unused() const {
        std::string names;
        for (const auto& [type, name] : unused_) {
            names += std::string(type.name()) + "." + name + " ";
        }
        return names;
    }

  private:
    template <class... Kinds>
    void AddKinds(std::variant<Kinds...>*) {
        (AddType<Kinds>(), ...);
    }

    std::set<std::type_index> types_;
    std::set<Name> unused_;
};

// The tests of reading, writing, copying, checking and scaling rest on this scene.
TEST(Fields, TheSceneOfEveryFieldUsesEveryField) {
    FieldsInUse fields;
    fields.AddType<Scene>();
    EXPECT_NE(fields.Unused(), "");
    fields.Use(EveryFieldScene());
    EXPECT_EQ(fields.Unused(), "");
}

struct Two {
    bool first = false;
    bool second = false;
};

TEST(Fields, AListThatMissesAMemberIsNotTaken) {
    constexpr std::tuple one{Optional("first", &Two::first)};
    constexpr std::tuple two{Optional("first", &Two::first), Optional("second", &Two::second)};
    EXPECT_FALSE(NamesEveryMember<Two>(one));
    EXPECT_TRUE(NamesEveryMember<Two>(two));
}

TEST(Difference, SeesOneBitAnywhere) {
    Scene scene = EveryFieldScene();
    scene.nodes[4].objectOffset[2][1] = -0.0f;
    EXPECT_EQ(Difference(scene, EveryFieldScene()), ".nodes[4].objectOffset[2][1]");
    scene = EveryFieldScene();
    auto material = std::make_shared<Material>(*scene.materials[0]);
    material->maps[0].enabled = true;
    scene.materials[0] = material;
    EXPECT_EQ(Difference(scene, EveryFieldScene()), ".materials[0].maps[0].enabled");
    scene = EveryFieldScene();
    std::get<Skin>(scene.nodes[0].modifiers[0].kind).weights[1].pop_back();
    EXPECT_EQ(Difference(scene, EveryFieldScene()), ".nodes[0].modifiers[0].kind.weights[1].size");
}

}  // namespace
