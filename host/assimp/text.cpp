#include "host/assimp/text.h"

#include <assimp/scene.h>
#include <utf8.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string_view>
#include <vector>

#include "host/cut_text.h"

namespace maxhost::import {
namespace {

template <typename Number>
std::string ExactText(Number number) {
    std::array<char, 64> buffer;
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return std::string(buffer.data(), result.ptr);
}

void ReplaceAll(std::string& text, std::string_view from, std::string_view to) {
    std::string result;
    std::size_t start = 0;
    for (std::size_t at; (at = text.find(from, start)) != std::string::npos;) {
        result.append(text, start, at - start).append(to);
        start = at + from.size();
    }
    text = result.append(text, start);
}

// Entries of FBX's own node template and camera settings, and those that importers add. A name that
// ends in X, Y or Z stands here without that letter.
constexpr std::string_view kNotUserProperties[] = {
    "AspectH",
    "AspectW",
    "AxisLen",
    "BackgroundMode",
    "Collada_id",
    "Collada_sid",
    "DefaultAttributeIndex",
    "ForegroundTransparent",
    "Freeze",
    "GeometricRotation",
    "GeometricScaling",
    "GeometricTranslation",
    "InheritType",
    "IsNull",
    "LODBox",
    "Lcl Rotation",
    "Lcl Scaling",
    "Lcl Translation",
    "LookAtProperty",
    "MaxDampRange",
    "MaxDampStrength",
    "MaxHandle",
    "MinDampRange",
    "MinDampStrength",
    "NegativePercentShapeSupport",
    "PostRotation",
    "PreRotation",
    "PreferedAngle",
    "QuaternionInterpolate",
    "ResolutionMode",
    "RotationActive",
    "RotationMax",
    "RotationMin",
    "RotationOffset",
    "RotationOrder",
    "RotationPivot",
    "RotationSpaceForLimitOnly",
    "RotationStiffness",
    "ScalingActive",
    "ScalingMax",
    "ScalingMin",
    "ScalingOffset",
    "ScalingPivot",
    "Show",
    "TranslationActive",
    "TranslationMax",
    "TranslationMin",
    "UDP3DSMAX",
    "UpVectorProperty",
    "UserProperties",
    "ViewFrustum",
    "Visibility",
    "Visibility Inheritance",
    "currentUVSet",
};

bool IsUserProperty(std::string_view key) {
    const auto isListed = [](std::string_view name) {
        return std::find(std::begin(kNotUserProperties), std::end(kNotUserProperties), name) !=
               std::end(kNotUserProperties);
    };
    if (isListed(key)) {
        return false;
    }
    const bool hasAxis = !key.empty() && key.back() >= 'X' && key.back() <= 'Z';
    return !hasAxis || !isListed(key.substr(0, key.size() - 1));
}

std::string OnOneLine(std::string text) {
    std::replace_if(
        text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
    return text;
}

std::string VectorText(const aiVector3D& v) {
    std::string text;
    for (const float component : {v.x, v.y, v.z}) {
        text.append(text.empty() ? "[" : ",").append(ExactText(component));
    }
    return text.append("]");
}

// The value on one line; false where the entry holds none that a line can say.
bool ValueText(const aiMetadataEntry& entry, std::string& text, bool* recoded) {
    if (!entry.mData) {
        return false;
    }
    switch (entry.mType) {
        case AI_BOOL:
            text = *static_cast<const bool*>(entry.mData) ? "true" : "false";
            return true;
        case AI_INT32:
            text = ExactText(*static_cast<const std::int32_t*>(entry.mData));
            return true;
        case AI_UINT64:
            text = ExactText(*static_cast<const std::uint64_t*>(entry.mData));
            return true;
        case AI_FLOAT:
            text = ExactText(*static_cast<const float*>(entry.mData));
            return true;
        case AI_DOUBLE:
            text = ExactText(*static_cast<const double*>(entry.mData));
            return true;
        case AI_AISTRING:
            text = OnOneLine(TextOf(*static_cast<const aiString*>(entry.mData), recoded));
            return true;
        case AI_AIVECTOR3D:
            text = VectorText(*static_cast<const aiVector3D*>(entry.mData));
            return true;
        default:
            return false;
    }
}

// 3ds Max writes its buffer to FBX with the line ends spelled out.
std::string MaxUserPropertyText(const aiMetadata& metadata, bool* recoded) {
    aiString stored;
    if (!metadata.Get("UDP3DSMAX", stored)) {
        return {};
    }
    std::string text = TextOf(stored, recoded);
    ReplaceAll(text, "&cr;", "\r");
    ReplaceAll(text, "&lf;", "\n");
    ReplaceAll(text, "&quot;", "\"");
    if (!text.empty() && text.back() != '\n') {
        text += "\r\n";
    }
    return text;
}

struct Level {
    const aiMetadata* metadata;
    unsigned next;
    std::string prefix;
};

// Nesting costs the whole path again in every line, so it ends somewhere.
constexpr std::size_t kMaxNesting = 16;

}  // namespace

std::string ToUtf8(std::string_view text, bool* recoded) {
    if (utf8::is_valid(text.begin(), text.end())) {
        return std::string(text);
    }
    if (recoded) {
        *recoded = true;
    }
    std::string result;
    for (const char c : text) {
        utf8::append(static_cast<unsigned char>(c), std::back_inserter(result));
    }
    return result;
}

std::string TextOf(const aiString& text, bool* recoded) {
    const std::size_t length = std::min<std::size_t>(text.length, MAXLEN - 1);
    const std::string_view whole(text.data, length);
    const std::string_view raw = whole.substr(0, whole.find('\0'));
    return ToUtf8(raw, recoded);
}

std::string NumberText(double number, int digits) {
    std::array<char, 64> buffer;
    std::snprintf(buffer.data(), buffer.size(), "%.*g", digits, number);
    return buffer.data();
}

std::string Quoted(const std::string& text) {
    constexpr char kDigits[] = "0123456789abcdef";
    constexpr std::size_t kLongest = 80;
    const std::string_view shown = CutUtf8(text, kLongest);
    std::string quoted = "'";
    for (const char c : shown) {
        const unsigned char byte = static_cast<unsigned char>(c);
        if (byte < 0x20 || byte == 0x7f) {
            quoted += std::string("\\x") + kDigits[byte >> 4] + kDigits[byte & 15];
        } else {
            quoted += c;
        }
    }
    return quoted + (shown.size() < text.size() ? "...'" : "'");
}

std::string UserPropertiesOf(const aiMetadata& metadata, bool* recoded) {
    std::string buffer = MaxUserPropertyText(metadata, recoded);
    std::vector<Level> levels{{&metadata, 0, ""}};
    while (!levels.empty()) {
        Level& level = levels.back();
        const unsigned i = level.next++;
        if (i >= level.metadata->mNumProperties) {
            levels.pop_back();
            continue;
        }
        bool isKeyRecoded = false;
        const std::string key = OnOneLine(TextOf(level.metadata->mKeys[i], &isKeyRecoded));
        const aiMetadataEntry& entry = level.metadata->mValues[i];
        std::string value;
        if (levels.size() == 1 && !IsUserProperty(key)) {
            continue;
        }
        if (isKeyRecoded && recoded) {
            *recoded = true;
        }
        if (entry.mType == AI_AIMETADATA && entry.mData && levels.size() < kMaxNesting) {
            levels.push_back(
                {static_cast<const aiMetadata*>(entry.mData), 0, level.prefix + key + "."});
        } else if (ValueText(entry, value, recoded)) {
            buffer += level.prefix + key + " = " + value + "\r\n";
        }
    }
    return buffer;
}

}  // namespace maxhost::import
