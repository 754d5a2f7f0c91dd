#include "host/assimp/process/scene_blob.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

#include "host/scene/fields.h"

namespace maxhost::scene {

template <>
inline constexpr auto kFields<Loss> = std::tuple{
    Required("code", &Loss::code),       Required("text", &Loss::text),
    Required("subject", &Loss::subject), Required("node", &Loss::node),
    Required("count", &Loss::count),
};

template <>
inline constexpr auto kFields<import::AnimationClip> = std::tuple{
    Required("name", &import::AnimationClip::name),
    Required("seconds", &import::AnimationClip::seconds),
    Required("channels", &import::AnimationClip::channels),
};

template <>
inline constexpr auto kFields<import::EmbeddedTexture> = std::tuple{
    Required("name", &import::EmbeddedTexture::name),
    Required("bytes", &import::EmbeddedTexture::bytes),
};

template <>
inline constexpr auto kFields<import::TextureFile> = std::tuple{
    Required("name", &import::TextureFile::name),
    Required("file", &import::TextureFile::file),
};

template <>
inline constexpr auto kFields<import::ImportedScene> = std::tuple{
    Required("scene", &import::ImportedScene::scene),
    Required("warnings", &import::ImportedScene::warnings),
    Required("codes", &import::ImportedScene::codes),
    Required("losses", &import::ImportedScene::losses),
    Required("animations", &import::ImportedScene::animations),
    Required("coloredMeshes", &import::ImportedScene::coloredMeshes),
    Required("textures", &import::ImportedScene::textures),
    Required("textureFiles", &import::ImportedScene::textureFiles),
    Required("upAxis", &import::ImportedScene::upAxis),
    Required("unit", &import::ImportedScene::unit),
    Required("unitSource", &import::ImportedScene::unitSource),
    Required("files", &import::ImportedScene::files),
};

}  // namespace maxhost::scene

namespace maxhost::import {
namespace {

// Whether a type's bytes are all that there is to it.
template <typename T>
constexpr bool kIsPlain = std::is_trivially_copyable_v<T> && !std::is_pointer_v<T>;

template <typename T>
constexpr bool kIsOptional = false;
template <typename T>
constexpr bool kIsOptional<std::optional<T>> = true;

// The bytes that a value of the type takes at least, by which a list's length is bounded before
// there is room made for it.
template <typename T>
constexpr std::size_t LeastSize() {
    if constexpr (kIsPlain<T>) {
        return sizeof(T);
    } else if constexpr (scene::Structure<T>) {
        return std::apply(
            [](const auto&... field) {
                return (LeastSize<std::remove_cvref_t<decltype(field.Of(std::declval<T&>()))>>() +
                        ...);
            },
            scene::kFields<T>);
    } else {
        // Of a list its length, of a variant its kind, of an object its number.
        return kIsOptional<T> ? sizeof(bool) : sizeof(std::size_t);
    }
}

// Small things are gathered; what is as large goes by itself, both ways.
constexpr std::size_t kGathered = std::size_t{1} << 16;

class Encoder {
  public:
    explicit Encoder(PutResult put) : put_(std::move(put)) { bytes_.reserve(kGathered); }

    template <typename T>
    void Put(const T& value);

    void Flush() {
        put_(bytes_);
        bytes_.clear();
    }

  private:
    void Put(const std::string& text) { PutList(text.data(), text.size(), text.size()); }

    template <typename T>
    void Put(const std::vector<T>& list) {
        if constexpr (kIsPlain<T>) {
            PutList(list.data(), list.size(), list.size() * sizeof(T));
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
        std::visit([this](const auto& kind) { this->Put(kind); }, value);
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

    void PutList(const void* data, std::size_t count, std::size_t size) {
        PutPlain(count);
        PutAll({static_cast<const char*>(data), size});
    }

    template <typename T>
    void PutPlain(const T& value) {
        PutAll({reinterpret_cast<const char*>(&value), sizeof value});
    }

    void PutAll(std::string_view bytes) {
        if (bytes_.size() + bytes.size() > kGathered) {
            Flush();
        }
        if (bytes.size() >= kGathered) {
            put_(bytes);
        } else {
            bytes_.append(bytes);
        }
    }

    const PutResult put_;
    std::string bytes_;
    std::map<const void*, std::size_t> numbers_;
};

class Decoder {
  public:
    // The bytes begin with their number.
    Decoder(const GetResult& get, std::uint64_t most) : get_(get), room_(kGathered) {
        std::size_t size = 0;
        left_ = sizeof size;
        Fill(&size, sizeof size);
        if (size > most) {
            throw ImportError("the scene came through damaged: it announces " +
                              std::to_string(size) + " bytes, expected at most " +
                              std::to_string(most));
        }
        left_ = size;
    }

    template <typename T>
    void Get(T& value);

  private:
    void Get(std::string& text) { text.resize(Size(1)), Fill(text.data(), text.size()); }

    template <typename T>
    void Get(std::vector<T>& list) {
        if constexpr (kIsPlain<T>) {
            list.resize(Size(sizeof(T)));
            Fill(list.data(), list.size() * sizeof(T));
        } else {
            list.resize(Size(LeastSize<T>()));
            for (T& item : list) {
                Get(item);
            }
        }
    }

    template <typename K, typename V>
    void Get(std::map<K, V>& map) {
        for (std::size_t left = Size(LeastSize<K>() + LeastSize<V>()); left > 0; --left) {
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
        } else {
            Fail();
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
        Fill(&count, sizeof count);
        if (count > left_ / size) {
            Fail();
        }
        return count;
    }

    void Fill(void* data, std::size_t size) {
        if (size > left_) {
            Fail();
        }
        left_ -= size;
        std::span<char> rest(static_cast<char*>(data), size);
        while (!rest.empty()) {
            if (bytes_.empty() && rest.size() >= kGathered) {
                rest = rest.subspan(Next(rest));
                continue;
            }
            if (bytes_.empty()) {
                bytes_ = {room_.data(), Next(room_)};
            }
            const std::size_t count = bytes_.copy(rest.data(), rest.size());
            bytes_.remove_prefix(count);
            rest = rest.subspan(count);
        }
    }

    std::size_t Next(std::span<char> room) const {
        const std::size_t count = get_(room);
        if (count == 0) {
            Fail();
        }
        return count;
    }

    [[noreturn]] static void Fail() { throw ImportError("the scene came through cut off"); }

    const GetResult& get_;
    std::size_t left_ = 0;
    std::vector<char> room_;
    std::string_view bytes_;  // that stand in it
    std::map<std::size_t, std::shared_ptr<const void>> objects_;
};

template <typename T>
void Encoder::Put(const T& value) {
    if constexpr (kIsPlain<T>) {
        PutPlain(value);
    } else {
        scene::ForEachField<T>([&](const auto& field) { Put(field.Of(value)); });
    }
}

template <typename T>
void Decoder::Get(T& value) {
    if constexpr (kIsPlain<T>) {
        Fill(&value, sizeof value);
    } else {
        scene::ForEachField<T>([&](const auto& field) { Get(field.Of(value)); });
    }
}

}  // namespace

// The number of bytes comes first, so that a reader knows what there can be.
void EncodeScene(const ImportedScene& scene, const PutResult& put) {
    std::size_t size = 0;
    Encoder measure([&size](std::string_view bytes) { size += bytes.size(); });
    measure.Put(scene);
    measure.Flush();
    put({reinterpret_cast<const char*>(&size), sizeof size});
    Encoder encoder(put);
    encoder.Put(scene);
    encoder.Flush();
}

std::string EncodeScene(const ImportedScene& scene) {
    std::string all;
    EncodeScene(scene, [&all](std::string_view bytes) { all.append(bytes); });
    return all;
}

ImportedScene DecodeScene(const GetResult& get, std::uint64_t most) {
    const auto lackMemory = [] { throw ImportError(std::string(kNoMemory) + " for its scene"); };
    ImportedScene scene;
    try {
        Decoder(get, most).Get(scene);
    } catch (const std::bad_alloc&) {
        lackMemory();
    } catch (const std::length_error&) {
        lackMemory();
    }
    return scene;
}

ImportedScene DecodeScene(std::string_view bytes) {
    return DecodeScene([&bytes](std::span<char> room) {
        const std::size_t count = bytes.copy(room.data(), room.size());
        bytes.remove_prefix(count);
        return count;
    });
}

}  // namespace maxhost::import
