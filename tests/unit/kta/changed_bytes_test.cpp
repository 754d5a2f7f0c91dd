// One changed byte of a small file: where it breaks a rule of docs/kta-check.md, the check tells
// something.
//
// What breaks a rule is worked out here from the layouts of the records, field by field, without
// the reader: every byte of the files is in a field, with a rule or without one.
#include "kta/check.h"

#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <cstring>
#include <functional>
#include <optional>
#include <set>

#include "kta/check/good_export.h"
#include "tests/support/sweep.h"

namespace {

using kta::FileBytes;

struct Field {
    std::size_t offset;
    std::size_t size;
    // Whether the field's bytes break a rule, in the file as it otherwise is; null: none can.
    std::function<bool(const std::uint8_t* bytes)> breaks;
};

template <typename Value>
Value At(const std::uint8_t* bytes) {
    Value value;
    std::memcpy(&value, bytes, sizeof(value));
    return value;
}

// Goes through a file, field by field.
class Layout {
  public:
    explicit Layout(FileBytes& bytes) : bytes_(bytes) {}

    const std::vector<Field>& Fields() const { return fields_; }
    std::size_t End() const { return at_; }

    // What stands in the file as it is.
    template <typename Value>
    Value Here(std::size_t ahead = 0) const {
        return ::At<Value>(bytes_.data() + at_ + ahead);
    }

    void Free(std::size_t size) { Add(size, nullptr); }
    // Any other value is wrong.
    void Fixed(std::size_t size) {
        const FileBytes old(bytes_.begin() + static_cast<std::ptrdiff_t>(at_),
                            bytes_.begin() + static_cast<std::ptrdiff_t>(at_ + size));
        Add(size, [old](const std::uint8_t* bytes) {
            return std::memcmp(bytes, old.data(), old.size()) != 0;
        });
    }
    template <typename Value>
    void Where(std::function<bool(Value)> breaks) {
        Add(sizeof(Value),
            [breaks](const std::uint8_t* bytes) { return breaks(::At<Value>(bytes)); });
    }
    template <typename Value>
    void Among(std::set<Value> values) {
        Where<Value>([values](Value value) { return !values.contains(value); });
    }
    void Flag() { Among<std::uint8_t>({0, 1}); }
    void Reals(std::size_t count) {
        for (std::size_t i = 0; i < count; ++i) {
            Where<float>([](float value) { return !std::isfinite(value); });
        }
    }
    // Zero, of either sign, or another number.
    void Always(float number, std::size_t count = 1) {
        for (std::size_t i = 0; i < count; ++i) {
            Where<float>([number](float value) { return !(value == number); });
        }
    }
    void Quaternion() {
        Where<std::array<float, 4>>([](const std::array<float, 4>& q) {
            const double length = std::hypot(std::hypot(double{q[0]}, double{q[1]}),
                                             std::hypot(double{q[2]}, double{q[3]}));
            return !(std::abs(length - 1) <= 0.01);
        });
    }
    // A text whose NUL is the only one in its field, so that without it the text has no end. Others
    // rely on a text that is `isReferred`; an empty one in its place may or may not be allowed.
    enum class Empty { allowed, wrong };
    void Text(std::size_t size, bool isReferred, Empty empty = Empty::allowed) {
        const std::string old(reinterpret_cast<const char*>(bytes_.data() + at_));
        std::fill(bytes_.begin() + static_cast<std::ptrdiff_t>(at_ + old.size() + 1),
                  bytes_.begin() + static_cast<std::ptrdiff_t>(at_ + size), 'x');
        Add(size, [=](const std::uint8_t* bytes) {
            const auto* const end = static_cast<const std::uint8_t*>(std::memchr(bytes, 0, size));
            const std::string text(bytes, end != nullptr ? end : bytes);
            return end == nullptr || (text.empty() ? empty == Empty::wrong && !old.empty()
                                                   : isReferred && text != old);
        });
    }

  private:
    void Add(std::size_t size, std::function<bool(const std::uint8_t*)> breaks) {
        fields_.push_back({at_, size, std::move(breaks)});
        at_ += size;
    }

    FileBytes& bytes_;
    std::vector<Field> fields_;
    std::size_t at_ = 0;
};

constexpr std::size_t kName = 260;
constexpr std::size_t kNodesBeforeWeights = 3;

// ---------------------------------------------------------------- the actor file's chunks

void LayOutMaterial(Layout& layout, bool isFirst) {
    layout.Text(40, isFirst, isFirst ? Layout::Empty::wrong : Layout::Empty::allowed);
    layout.Reals(12 + 4);
    layout.Flag();
    layout.Flag();
    layout.Among<char>({'S', 'A', 'F', 'U'});
    layout.Free(1);
}

// A file name, which has no directories.
void LayOutLayer(Layout& layout) {
    layout.Where<std::array<char, kName>>([](const std::array<char, kName>& field) {
        const auto end = std::find(field.begin(), field.end(), '\0');
        return end == field.end() || end == field.begin() ||
               std::any_of(field.begin(), end, [](char c) { return c == '/' || c == '\\'; });
    });
    layout.Where<std::uint8_t>([](std::uint8_t type) { return type > 11; });
    layout.Free(1);
    layout.Fixed(2);  // the material before it
    layout.Reals(6);
}

void LayOutNode(Layout& layout, bool isReferred, bool hasHelperSize) {
    layout.Text(kName, isReferred, Layout::Empty::wrong);
    layout.Text(kName, true);  // the parent's, if there is one
    layout.Reals(3);
    layout.Quaternion();
    layout.Where<std::array<float, 3>>([](const std::array<float, 3>& scale) {
        const bool isNegative = scale[0] < 0;
        return std::any_of(scale.begin(), scale.end(), [&](float part) {
            return !std::isfinite(part) || (part != 0 && (part < 0) != isNegative);
        });
    });
    for (int row = 0; row < 4; ++row) {
        layout.Reals(3);
        layout.Always(0);
    }
    if (hasHelperSize) {
        layout.Among<std::uint8_t>({0});  // no bone as well
        layout.Among<std::uint8_t>({1});  // or the size is too much
    } else {
        layout.Flag();
        layout.Flag();
    }
    layout.Free(2);
    if (hasHelperSize) {
        layout.Reals(1);
    } else {
        layout.Always(0);
    }
}

void LayOutSubMesh(Layout& layout, const std::set<std::int32_t>& shared) {
    layout.Fixed(2);  // the material's number: none has another one, or the other sub-mesh has it
    layout.Free(2);
    const auto indices = layout.Here<std::uint32_t>();
    const auto vertices = layout.Here<std::uint32_t>(4);
    layout.Fixed(8);
    for (std::uint32_t i = 0; i < vertices; ++i) {
        const auto original = layout.Here<std::int32_t>();
        // Another one is out of order, not there, or stands elsewhere.
        layout.Fixed(4);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            const auto old = layout.Here<float>();
            const bool isShared = shared.contains(original);
            layout.Where<float>([=](float value) {
                return !std::isfinite(value) || (isShared && std::abs(value - old) > 0.01f);
            });
        }
        layout.Where<std::array<float, 3>>([](const std::array<float, 3>& n) {
            const double length = std::hypot(double{n[0]}, double{n[1]}, double{n[2]});
            return !(std::abs(length - 1) <= 0.01);
        });
        layout.Reals(2);
    }
    for (std::uint32_t i = 0; i < indices / 3; ++i) {
        layout.Where<std::array<std::uint32_t, 3>>(
            [vertices](const std::array<std::uint32_t, 3>& face) {
                return std::set<std::uint32_t>(face.begin(), face.end()).size() < 3 ||
                       *std::max_element(face.begin(), face.end()) >= vertices;
            });
    }
}

void LayOutMesh(Layout& layout, bool isSkinned) {
    layout.Fixed(4);  // its node, with which it stands
    if (isSkinned) {
        layout.Fixed(4);  // skin and morph have as many original vertices
    } else {
        layout.Where<std::int32_t>([](std::int32_t count) { return count < 4; });
    }
    layout.Fixed(16);
    layout.Flag();
    layout.Free(3);
    // Of the four original vertices both sub-meshes have two.
    LayOutSubMesh(layout, {1, 2});
    LayOutSubMesh(layout, {1, 2});
}

void LayOutLimits(Layout& layout) {
    layout.Fixed(4);
    layout.Reals(6);
    for (int i = 0; i < 3; ++i) {
        layout.Where<float>([](float least) { return !std::isfinite(least) || least > 1; });
    }
    for (int i = 0; i < 3; ++i) {
        layout.Where<float>([](float most) { return !std::isfinite(most) || most < -1; });
    }
    layout.Always(1, 6);
    for (int i = 0; i < 6; ++i) {
        layout.Flag();
    }
    layout.Fixed(6);
}

void LayOutWeights(Layout& layout, std::size_t vertices) {
    layout.Fixed(4);
    for (std::size_t vertex = 0; vertex < vertices; ++vertex) {
        const auto count = layout.Here<std::uint8_t>();
        layout.Fixed(1);
        for (std::size_t i = 0; i < count; ++i) {
            layout.Where<std::int16_t>([](std::int16_t bone) {
                return bone < 0 || bone >= static_cast<int>(kNodesBeforeWeights);
            });
            layout.Free(2);
            const auto old = layout.Here<float>();
            // They sum to 1, and the check takes a hundredth more or less.
            layout.Where<float>([old](float weight) { return !(std::abs(weight - old) <= 0.02f); });
        }
    }
}

void LayOutMorph(Layout& layout) {
    layout.Text(kName, false);
    layout.Always(0);
    layout.Always(1);
    layout.Fixed(5);
    layout.Free(3);
    layout.Fixed(12);
    layout.Always(0);
    layout.Text(kName, true, Layout::Empty::wrong);
    const auto points = layout.Here<std::uint32_t>();
    layout.Fixed(4);
    layout.Where<float>([](float least) { return !std::isfinite(least) || least > 100; });
    layout.Where<float>([](float most) { return !std::isfinite(most) || most < 0; });
    layout.Fixed(1);
    layout.Free(3);
    layout.Free(6 * points);
    layout.Fixed(3 * points);
    layout.Fixed(4 * points);
}

void LayOutWire(Layout& layout) {
    layout.Text(kName, true, Layout::Empty::wrong);
    layout.Text(kName, true, Layout::Empty::wrong);
    layout.Text(kName, false);
    layout.Text(kName, false);
    layout.Text(20, true, Layout::Empty::wrong);  // X_Position, as part and component say
    layout.Text(20, true);
    layout.Among<std::int32_t>({0, 1, 2});
    layout.Fixed(4);
    layout.Among<std::int32_t>({0, 1, 2});
    layout.Fixed(4);
    layout.Reals(4);
    layout.Among<std::uint8_t>({1, 2});
    layout.Free(3);
}

void LayOutChain(Layout& layout) {
    layout.Text(kName, true, Layout::Empty::wrong);
    layout.Text(kName, true, Layout::Empty::wrong);
    layout.Text(kName, true, Layout::Empty::wrong);
    layout.Flag();
    layout.Text(kName, false);
    layout.Free(3);
    layout.Reals(1);
    layout.Free(1 + 3);
    layout.Reals(3);
}

// ---------------------------------------------------------------- the motion file's chunks

void LayOutPart(Layout& layout) {
    layout.Text(kName, true, Layout::Empty::wrong);
    // Where and how the node stands at rest; a quaternion and its negative are one turn.
    for (int i = 0; i < 3; ++i) {
        const auto old = layout.Here<float>();
        layout.Where<float>([old](float value) { return !(std::abs(value - old) <= 0.05f); });
    }
    const auto rest = layout.Here<std::array<float, 4>>();
    layout.Where<std::array<float, 4>>([rest](const std::array<float, 4>& q) {
        const auto apart = [&](float sign) {
            float most = 0;
            for (std::size_t i = 0; i < 4; ++i) {
                const float part = std::abs(sign * q[i] - rest[i]);
                most = part <= most ? most : part;
            }
            return most;
        };
        return !(std::min(apart(1), apart(-1)) <= 0.05f);
    });
    layout.Reals(3);
}

void LayOutTrackHead(Layout& layout, bool mayBePosition) {
    layout.Fixed(4 + 1);
    const auto letter = layout.Here<char>();
    layout.Among<char>(mayBePosition ? std::set{letter, 'P'} : std::set{letter});
    layout.Free(2);
}

void LayOutSampledTrack(Layout& layout) {
    const auto keys = layout.Here<std::uint32_t>();
    const bool isRotation = layout.Here<char>(5) == 'R';
    LayOutTrackHead(layout, false);
    for (std::uint32_t i = 0; i < keys; ++i) {
        layout.Always(layout.Here<float>());  // as in the other tracks
        isRotation ? layout.Quaternion() : layout.Reals(3);
    }
}

// Two keys: the first of all axes, with linear tangents; the second, but for scales, of X alone.
void LayOutKeyframedTrack(Layout& layout, bool mayBePosition) {
    const bool isScale = layout.Here<char>(5) == 'S';
    LayOutTrackHead(layout, mayBePosition);
    layout.Where<float>([](float time) { return !std::isfinite(time) || time >= 1; });
    layout.Reals(3);
    layout.Fixed(2);
    layout.Free(2);
    for (int i = 0; i < 6; ++i) {
        layout.Among<std::uint8_t>({1, 3, 4, 5});
    }
    layout.Where<float>([](float time) { return !std::isfinite(time) || time <= 0; });
    layout.Reals(1);
    if (isScale) {
        layout.Reals(2);
        layout.Fixed(2);
    } else {
        layout.Always(0, 2);
        layout.Where<std::uint16_t>([](std::uint16_t mask) { return mask % 2 == 0 || mask > 7; });
    }
    layout.Free(2);
    for (int i = 0; i < 6; ++i) {
        if (isScale || i % 3 == 0) {
            layout.Among<std::uint8_t>({1, 3, 4, 5});
        } else {
            layout.Fixed(1);
        }
    }
    for (int i = 0; i < 2; ++i) {
        // No handle has no length, and none is of three times the distance to the next key.
        layout.Where<float>([](float length) { return !(length > 0 && length < 3); });
        layout.Reals(1);
    }
}

// ---------------------------------------------------------------- whole files

void LayOutChunk(Layout& layout, std::size_t number) {
    const auto id = layout.Here<std::uint32_t>();
    const auto version = layout.Here<std::uint32_t>(8);
    layout.Fixed(12);
    switch (id) {
        case kChunkMaterial:
            return LayOutMaterial(layout, number == kta::kExtraMaterial);
        case kChunkMaterialLayer:
            return LayOutLayer(layout);
        case kChunkNode:
            return LayOutNode(layout, number != kta::kDummy && number != kta::kBox,
                              number == kta::kDummy);
        case kChunkMesh:
            return LayOutMesh(layout, number == kta::kFigureMesh);
        case kChunkJointLimits:
            return LayOutLimits(layout);
        case kChunkWeights:
            return LayOutWeights(layout, kta::GoodWeights().size());
        case kChunkMorph:
            return LayOutMorph(layout);
        case kChunkIKChain:
            return LayOutChain(layout);
        case kChunkWire:
            return LayOutWire(layout);
        case kChunkMotionPart:
            return LayOutPart(layout);
        default:
            return version == kKeyTrackSampled ? LayOutSampledTrack(layout)
                                               : LayOutKeyframedTrack(layout, number == kta::kTipR);
    }
}

std::vector<Field> FieldsOf(FileBytes& bytes, std::size_t chunks) {
    Layout layout(bytes);
    layout.Fixed(7);
    for (std::size_t i = 0; i < chunks; ++i) {
        LayOutChunk(layout, i);
    }
    EXPECT_EQ(layout.End(), bytes.size()) << "every byte is in a field";
    return layout.Fields();
}

// All with HDO_THOROUGH, else those that are most likely to be taken for right, or break a number.
std::vector<std::uint8_t> OtherValues(std::uint8_t old) {
    std::set<int> values;
    if (support::SweepStride(2) == 1) {
        for (int value = 0; value < 256; ++value) {
            values.insert(value);
        }
    } else {
        values = {old ^ 0x01, old ^ 0x80, 0x00, 0x7f, 0xff};
    }
    values.erase(old);
    return {values.begin(), values.end()};
}

// How many changes that break a rule were tried.
std::size_t ChangeEachByte(FileBytes& bytes, std::size_t chunks,
                           const std::function<std::size_t()>& issues) {
    const std::vector<Field> fields = FieldsOf(bytes, chunks);
    EXPECT_EQ(issues(), 0u) << "nothing is wrong with the file as it is";
    std::size_t broken = 0;
    for (const Field& field : fields) {
        for (std::size_t i = 0; field.breaks && i < field.size; ++i) {
            std::uint8_t& byte = bytes[field.offset + i];
            const std::uint8_t old = byte;
            for (const std::uint8_t value : OtherValues(old)) {
                byte = value;
                if (field.breaks(bytes.data() + field.offset)) {
                    ++broken;
                    EXPECT_GT(issues(), 0u)
                        << "offset " << field.offset + i << ", byte " << i << " of a field of "
                        << field.size << ": " << int{old} << " became " << int{value};
                }
            }
            byte = old;
        }
    }
    return broken;
}

const kta::CheckOptions kWithNotes{.notes = true};

TEST(ChangedBytes, OfAnActorFileThatBreakARuleAreTold) {
    const kta::DraftExport drafts = kta::GoodExport();
    FileBytes bytes = drafts.actor.Bytes();
    const std::size_t broken = ChangeEachByte(bytes, drafts.actor.chunks.size(), [&] {
        return kta::Check(kta::Read(bytes), nullptr, kWithNotes).size();
    });
    EXPECT_GT(broken, 2000u);
}

TEST(ChangedBytes, OfMotionFilesThatBreakARuleAreTold) {
    const kta::DraftExport drafts = kta::GoodExport();
    const kta::Reading actor = kta::Read(drafts.actor.Bytes());
    for (const kta::DraftFile* const motion : {&drafts.sampled, &drafts.keyframed}) {
        FileBytes bytes = motion->Bytes();
        const std::size_t broken = ChangeEachByte(bytes, motion->chunks.size(), [&] {
            const kta::Reading changed = kta::Read(bytes);
            return kta::Check(actor, &changed, kWithNotes).size();
        });
        EXPECT_GT(broken, 300u);
    }
}

}  // namespace
