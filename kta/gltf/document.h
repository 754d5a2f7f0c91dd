// A glTF 2.0 document in the making (Khronos Group, "glTF 2.0", 2021): its objects as JSON and its
// one buffer. For the sources of kta/glb.h.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <span>
#include <string>
#include <vector>

#include "kta/vector.h"

namespace kta::gltf {

// Members keep the order in which they were added; reals are written in the digits that read back
// to the same f32.
using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

// As a document holds it: rounded once, and finite. What is no number becomes 0.
float Stored(double value);

// What an accessor is for, which decides what its bytes are told to be.
enum class Usage { data, vertices, indices };

// In glTF's axes, right-handed, y up: the scene's x, z and -y.
Json JsonOf(const Vector3& v);
Json JsonOf(const Quaternion& q);
// The file's axes are x, z, y of the scene, so the third is turned over, and rotations go with it.
inline Vector3 Exchanged(const Vector3& v) {
    return {v[0], v[1], -v[2]};
}
inline Quaternion Exchanged(const Quaternion& q) {
    return {-q[0], -q[1], q[2], q[3]};
}
// Column by column.
std::array<float, 16> Exchanged(const Affine& a);

class Document {
  public:
    // Appends to one of the document's lists ("nodes"); returns its number there.
    std::size_t Add(const char* list, Json object);
    Json& At(const char* list, std::size_t number) { return lists_.at(list).at(number); }
    std::size_t Count(const char* list) const;
    // Names an extension as used.
    void Use(const char* extension);

    // An accessor of elements of the form ("VEC3"), which lie one behind the other. `withBounds`
    // adds the least and greatest of each component. Throws std::length_error where the file would
    // take more than the 4 GiB that it can count.
    template <typename Component>
    std::size_t AddAccessor(std::span<const Component> values, const char* form, Usage usage,
                            bool withBounds = false);
    // Of an image file's bytes.
    std::size_t AddBufferView(std::span<const std::uint8_t> bytes);

    // Puts the whole file in its binary form, piece by piece; the document is used up by it. `head`
    // are the members that stand before the lists. Throws std::length_error before it puts anything
    // where the file would take more than 4 GiB.
    void Encode(Json head, const std::function<void(std::span<const std::uint8_t>)>& put);

  private:
    std::size_t AddView(const void* bytes, std::size_t size, Usage usage);

    std::map<std::string, Json> lists_;
    std::map<std::string, bool> extensions_;
    std::vector<std::vector<std::uint8_t>> buffer_;  // each view's bytes, whose end is aligned
    std::size_t bufferSize_ = 0;
};

}  // namespace kta::gltf
