// Builds expected KTA bytes in tests, independently of the exporter's records.
#pragma once

#include <array>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>

namespace support {

class Bytes {
  public:
    Bytes& U8(std::uint8_t value) {
        text_.push_back(static_cast<char>(value));
        return *this;
    }
    Bytes& U16(std::uint16_t value) {
        return U8(static_cast<std::uint8_t>(value)).U8(static_cast<std::uint8_t>(value >> 8));
    }
    Bytes& U32(std::uint32_t value) {
        for (int shift = 0; shift < 32; shift += 8) {
            U8(static_cast<std::uint8_t>(value >> shift));
        }
        return *this;
    }
    Bytes& F32(std::initializer_list<float> values) { return Floats(values); }
    Bytes& F32(const std::array<float, 3>& values) { return Floats(values); }
    // A NUL-terminated name in a field of `size` bytes, zero behind it.
    Bytes& Name(const std::string& name, std::size_t size = 260) {
        text_ += name;
        text_.append(size - name.size(), '\0');
        return *this;
    }
    Bytes& Text(const std::string& text) {
        text_ += text;
        return *this;
    }
    const std::string& Str() const { return text_; }

  private:
    Bytes& Floats(const auto& values) {
        for (const float value : values) {
            std::uint32_t bits;
            std::memcpy(&bits, &value, sizeof(bits));
            U32(bits);
        }
        return *this;
    }

    std::string text_;
};

// The seven bytes at the beginning of a file.
inline std::string FileHeader(bool actor) {
    return Bytes().Text("KTA ").U8(1).U8(1).U8(actor ? 1 : 0).Str();
}

// What a material chunk says; unless told otherwise, the values of a new standard material.
struct MaterialFields {
    std::string name;
    std::array<float, 3> ambient{0.588f, 0.588f, 0.588f};
    std::array<float, 3> diffuse{0.588f, 0.588f, 0.588f};
    std::array<float, 3> specular{0.9f, 0.9f, 0.9f};
    std::array<float, 3> selfIllumination{};
    float shininess = 0.1f;
    float shininessStrength = 0;
    float opacity = 1;
    float indexOfRefraction = 1.5f;
    bool twoSided = false;
    bool wire = false;
    char transparencyType = 'F';
};

inline std::string MaterialChunk(const MaterialFields& fields) {
    return Bytes()
        .U32(6)
        .U32(108)
        .U32(2)
        .Name(fields.name, 40)
        .F32(fields.ambient)
        .F32(fields.diffuse)
        .F32(fields.specular)
        .F32(fields.selfIllumination)
        .F32({fields.shininess, fields.shininessStrength, fields.opacity, fields.indexOfRefraction})
        .U8(fields.twoSided)
        .U8(fields.wire)
        .Text({fields.transparencyType, '\0'})
        .Str();
}

// The first material of every actor file.
inline std::string ExtraMaterial() {
    return MaterialChunk({.name = "Extra material",
                          .ambient = {0, 0, 0},
                          .diffuse = {0.75f, 0.75f, 0.75f},
                          .specular = {1, 1, 1},
                          .shininess = 0});
}

// What every actor file begins with.
inline std::string ActorBeginning() {
    return FileHeader(true) + ExtraMaterial();
}

// The material that stands in for the n-th node without one, counted from 1.
inline std::string WireColorMaterial(int n, const std::array<int, 3>& rgb = {128, 128, 128}) {
    MaterialFields fields;
    fields.name = "Wire Color " + std::to_string(n);
    for (std::size_t i = 0; i < 3; ++i) {
        fields.diffuse[i] = static_cast<float>(rgb[i]) / 255.0f;
    }
    return MaterialChunk(fields);
}

// What a layer chunk says.
struct LayerFields {
    std::string texture;
    std::uint8_t type = 1;
    std::uint16_t material = 1;
    float amount = 1;
    std::array<float, 2> offset{0, 0};
    std::array<float, 2> tiling{1, 1};
    float angle = 0;
};

inline std::string LayerChunk(const LayerFields& fields) {
    return Bytes()
        .U32(7)
        .U32(288)
        .U32(3)
        .Name(fields.texture)
        .U8(fields.type)
        .U8(0)
        .U16(fields.material)
        .F32({fields.amount, fields.offset[0], fields.offset[1], fields.tiling[0], fields.tiling[1],
              fields.angle})
        .Str();
}

// Where the materials and layers of an actor file end and its nodes begin.
inline std::size_t EndOfMaterials(const std::string& actor) {
    std::size_t offset = FileHeader(true).size();
    for (;;) {
        const std::string chunk = actor.substr(offset, 12);
        if (chunk == Bytes().U32(6).U32(108).U32(2).Str()) {
            offset += 12 + 108;
        } else if (chunk == Bytes().U32(7).U32(288).U32(3).Str()) {
            offset += 12 + 288;
        } else {
            return offset;
        }
    }
}

}  // namespace support
