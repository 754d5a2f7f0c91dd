// The fields of chunks as JSON values, named as docs/kta-format.md has them.
#pragma once

#include <array>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "kta/reader.h"

namespace kta {

using Json = nlohmann::basic_json<nlohmann::ordered_map, std::vector, std::string, bool,
                                  std::int64_t, std::uint64_t, float>;

struct Field {
    const char* name;
    std::uint64_t offset;  // from the start of the file
    Json value;
};

// Those of a chunk's body in file order. The lists that go on behind them are left out: a mesh's
// sub-meshes, and what kta/items.h visits.
std::vector<Field> Fields(const Chunk& chunk);

// Numbers that are not finite are the texts "nan", "inf" and "-inf".
Json Value(float value);
Json Value(bool value);
Json Value(std::uint8_t value);
Json Value(std::uint32_t value);
// As UTF-8.
Json Value(std::string_view text);

template <typename Element, std::size_t kCount>
Json Value(const std::array<Element, kCount>& values) {
    Json list = Json::array();
    for (const Element& value : values) {
        list.push_back(Value(value));
    }
    return list;
}

// The pairs of one of the sub-mesh's vertices.
Json TextureCoordinatesOf(const Mesh& mesh, const SubMesh& subMesh, const Vertex& vertex);

}  // namespace kta
