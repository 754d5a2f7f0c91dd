#include "host/assimp/process/scene_blob.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace maxhost::import {
namespace {

// Types whose bytes are all that there is to them.
template <typename T>
constexpr bool kIsPlain = std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>;

class Encoder {
  public:
    template <typename... Values>
    void operator()(const Values&... values) {
        (Put(values), ...);
    }
    std::string Take() { return std::move(bytes_); }

  private:
    template <typename T>
    void Put(const T& value);

    void Put(const std::string& text) { PutBytes(text.data(), text.size(), text.size()); }

    template <typename T>
    void Put(const std::vector<T>& list) {
        if constexpr (kIsPlain<T>) {
            PutBytes(list.data(), list.size(), list.size() * sizeof(T));
        } else {
            Put(list.size());
            for (const T& item : list) {
                Put(item);
            }
        }
    }

    template <typename K, typename V>
    void Put(const std::map<K, V>& map) {
        Put(map.size());
        for (const auto& [key, value] : map) {
            Put(key);
            Put(value);
        }
    }

    template <typename T>
    void Put(const std::optional<T>& value) {
        Put(value.has_value());
        if (value) {
            Put(*value);
        }
    }

    template <typename... Kinds>
    void Put(const std::variant<Kinds...>& value) {
        Put(value.index());
        std::visit([this](const auto& kind) { Put(kind); }, value);
    }

    // The number of the object, counted from 1 in order of appearance; the object itself when it
    // appears first.
    template <typename T>
    void Put(const std::shared_ptr<const T>& object) {
        if (!object) {
            Put(std::size_t{0});
            return;
        }
        const auto [found, isNew] = numbers_.try_emplace(object.get(), numbers_.size() + 1);
        Put(found->second);
        if (isNew) {
            Put(*object);
        }
    }

    void PutBytes(const void* data, std::size_t count, std::size_t size) {
        bytes_.append(reinterpret_cast<const char*>(&count), sizeof count);
        bytes_.append(static_cast<const char*>(data), size);
    }

    std::string bytes_;
    std::map<const void*, std::size_t> numbers_;
};

class Decoder {
  public:
    explicit Decoder(std::string_view bytes) : bytes_(bytes) {}

    template <typename... Values>
    void operator()(Values&... values) {
        (Get(values), ...);
    }

  private:
    template <typename T>
    void Get(T& value);

    void Get(std::string& text) { text.resize(Size(1)), GetBytes(text.data(), text.size()); }

    template <typename T>
    void Get(std::vector<T>& list) {
        if constexpr (kIsPlain<T>) {
            list.resize(Size(sizeof(T)));
            GetBytes(list.data(), list.size() * sizeof(T));
        } else {
            list.resize(Size(1));
            for (T& item : list) {
                Get(item);
            }
        }
    }

    template <typename K, typename V>
    void Get(std::map<K, V>& map) {
        for (std::size_t left = Size(1); left > 0; --left) {
            K key;
            Get(key);
            Get(map[key]);
        }
    }

    template <typename T>
    void Get(std::optional<T>& value) {
        bool hasValue = false;
        Get(hasValue);
        if (hasValue) {
            Get(value.emplace());
        } else {
            value.reset();
        }
    }

    template <typename... Kinds>
    void Get(std::variant<Kinds...>& value) {
        std::size_t index = 0;
        Get(index);
        GetKind<0>(value, index);
    }

    template <std::size_t i, typename... Kinds>
    void GetKind(std::variant<Kinds...>& value, std::size_t index) {
        if constexpr (i < sizeof...(Kinds)) {
            if (index == i) {
                Get(value.template emplace<i>());
            } else {
                GetKind<i + 1>(value, index);
            }
        }
    }

    template <typename T>
    void Get(std::shared_ptr<const T>& object) {
        std::size_t number = 0;
        Get(number);
        if (number == 0) {
            return;
        }
        const auto found = objects_.find(number);
        if (found != objects_.end()) {
            object = std::static_pointer_cast<const T>(found->second);
            return;
        }
        const auto made = std::make_shared<T>();
        objects_[number] = made;
        Get(*made);
        object = made;
    }

    // A count of things that take at least `size` bytes each.
    std::size_t Size(std::size_t size) {
        std::size_t count = 0;
        GetBytes(&count, sizeof count);
        if (count > bytes_.size() / size) {
            Fail();
        }
        return count;
    }

    void GetBytes(void* data, std::size_t size) {
        if (size > bytes_.size()) {
            Fail();
        }
        if (size > 0) {
            std::memcpy(data, bytes_.data(), size);
            bytes_.remove_prefix(size);
        }
    }

    [[noreturn]] static void Fail() { throw ImportError("the scene came through cut off"); }

    std::string_view bytes_;
    std::map<std::size_t, std::shared_ptr<const void>> objects_;
};

// The fields of each type that is not plain, for both directions. The bindings must name all the
// fields of a type, so that a new one cannot be forgotten here.
using BoneWeight = std::pair<int, float>;

#define HDO_FIELDS(Type, ...)                                 \
    template <typename Archive, typename Value>               \
    requires std::is_same_v<std::remove_const_t<Value>, Type> \
    void VisitFields(Archive& archive, Value& value) {        \
        auto& [__VA_ARGS__] = value;                          \
        archive(__VA_ARGS__);                                 \
    }
HDO_FIELDS(ImportedScene, a, b, c, d)
HDO_FIELDS(AnimationClip, a, b, c)
HDO_FIELDS(scene::Scene, a, b, c, d)
HDO_FIELDS(scene::Node, a, b, c, d, e, f, g, h, i, j, k, l, m)
HDO_FIELDS(scene::Object, a, b, c, d)
HDO_FIELDS(scene::Mesh, a, b, c, d)
HDO_FIELDS(scene::MapChannel, a, b)
HDO_FIELDS(scene::Transform, a, b, c)
HDO_FIELDS(scene::PrsTransform, a, b, c)
HDO_FIELDS(scene::SampledTransform, a)
HDO_FIELDS(scene::ThreeAxisController, a, b, c, d)
HDO_FIELDS(scene::ThreeAxes, a)
HDO_FIELDS(scene::BezierScale, a, b)
HDO_FIELDS(scene::FloatController, a, b, c)
HDO_FIELDS(scene::BezierFloat, a, b)
HDO_FIELDS(scene::FloatList, a)
HDO_FIELDS(scene::FloatListItem, a, b)
HDO_FIELDS(scene::WireFloat, a, b, c, d, e)
HDO_FIELDS(scene::Wire, a, b, c, d)
HDO_FIELDS(scene::Modifier, a, b)
HDO_FIELDS(scene::Skin, a, b, c)
HDO_FIELDS(scene::Physique, a)
HDO_FIELDS(scene::PhysiqueBlended, a)
HDO_FIELDS(BoneWeight, a, b)
HDO_FIELDS(scene::Morpher, a)
HDO_FIELDS(scene::MorphChannel, a, b)
HDO_FIELDS(scene::Material, a, b, c, d, e, f, g, h, i, j, k, l, m, n, o)
HDO_FIELDS(scene::MapSlot, a, b, c, d)
HDO_FIELDS(scene::Map, a, b)
HDO_FIELDS(scene::BitmapMap, a, b, c, d, e, f, g)
#undef HDO_FIELDS

template <typename Archive, typename T, std::size_t count>
void VisitFields(Archive& archive, std::array<T, count>& items) {
    for (T& item : items) {
        archive(item);
    }
}

template <typename Archive, typename T, std::size_t count>
void VisitFields(Archive& archive, const std::array<T, count>& items) {
    for (const T& item : items) {
        archive(item);
    }
}

template <typename T>
void Encoder::Put(const T& value) {
    if constexpr (kIsPlain<T>) {
        bytes_.append(reinterpret_cast<const char*>(&value), sizeof value);
    } else {
        VisitFields(*this, value);
    }
}

template <typename T>
void Decoder::Get(T& value) {
    if constexpr (kIsPlain<T>) {
        GetBytes(&value, sizeof value);
    } else {
        VisitFields(*this, value);
    }
}

}  // namespace

std::string EncodeScene(const ImportedScene& scene) {
    Encoder encoder;
    encoder(scene);
    return encoder.Take();
}

ImportedScene DecodeScene(std::string_view bytes) {
    ImportedScene scene;
    Decoder decoder(bytes);
    decoder(scene);
    return scene;
}

}  // namespace maxhost::import
