// What is different in two key tracks.
#include "kta/diff/bodies.h"

namespace kta {
namespace {

float TimeOf(const KTAVectorSample& key) {
    return key.time;
}
float TimeOf(const KTARotationSample& key) {
    return key.time;
}
float TimeOf(const KeyframedKey& key) {
    return key.head.time;
}

using Codes = std::array<std::uint8_t, kNumTangentCodes>;
using Tangents = std::array<KTATangent, kNumTangentCodes>;

std::string CodesText(const Codes& codes) {
    std::string text;
    for (const std::uint8_t code : codes) {
        text += (text.empty() ? "[" : ",") + std::to_string(code);
    }
    return text + "]";
}

// A pair for each tangent, [0.0,0.0] where there is none.
std::string TangentsText(const Tangents& tangents) {
    std::string text;
    for (const KTATangent& tangent : tangents) {
        const std::array<float, 2> pair = {tangent.length, tangent.slope};
        text += (text.empty() ? "[" : ",") + ListText(pair);
    }
    return text + "]";
}

// A sampled key is its record.
template <typename Sample>
class KeyPairs {
  public:
    void Compare(const Sample& a, const Sample& b, std::size_t position,
                 const Tolerance& tolerance) {
        records_.Compare(a, b, position, tolerance);
    }
    template <typename PlaceOf>
    void Append(const FieldChange& form, PlaceOf placeOf, std::vector<FieldChange>& changes) const {
        records_.Append(form, placeOf, changes);
    }

  private:
    RecordPairs<Sample> records_;
};

template <>
class KeyPairs<KeyframedKey> {
  public:
    void Compare(const KeyframedKey& a, const KeyframedKey& b, std::size_t position,
                 const Tolerance& tolerance) {
        heads_.Compare(a.head, b.head, position, tolerance);
        codes_.Note(a.tangentCodes != b.tangentCodes ? 1 : 0, position, a.tangentCodes,
                    b.tangentCodes);
        double deviation = 0;
        for (std::size_t i = 0; i < kNumTangentCodes; ++i) {
            const KTATangent& itsA = a.tangentRecords[i];
            const KTATangent& itsB = b.tangentRecords[i];
            deviation = std::max({deviation, DeviationOf(itsA.length, itsB.length, tolerance),
                                  DeviationOf(itsA.slope, itsB.slope, tolerance)});
        }
        tangents_.Note(deviation, position, a.tangentRecords, b.tangentRecords);
    }
    template <typename PlaceOf>
    void Append(FieldChange form, PlaceOf placeOf, std::vector<FieldChange>& changes) const {
        heads_.Append(form, placeOf, changes);
        form.compared = heads_.Compared();
        form.field = "tangentCodes";
        codes_.Append(form, placeOf, CodesText, changes);
        form.field = "tangentRecords";
        form.deviation = tangents_.deviation;
        tangents_.Append(form, placeOf, TangentsText, changes);
    }

  private:
    RecordPairs<KTAKeyHead> heads_;
    Differing<Codes> codes_;
    Differing<Tangents> tangents_;
};

// As many keys belong together in their order, another number of keys by their times.
template <typename Key>
void CompareKeys(const std::vector<Key>& a, const std::vector<Key>& b, const Tolerance& tolerance,
                 std::vector<FieldChange>& changes) {
    const bool byTime = a.size() != b.size();
    KeyPairs<Key> keys;
    std::size_t pairs = 0;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < a.size() && j < b.size()) {
        const float timeA = TimeOf(a[i]);
        const float timeB = TimeOf(b[j]);
        if (!byTime || DeviationOf(timeA, timeB, tolerance) == 0) {
            keys.Compare(a[i], b[j], i, tolerance);
            ++i;
            ++j;
            ++pairs;
        } else {
            ++(timeA < timeB ? i : j);
        }
    }
    FieldChange form;
    form.item = "key";
    AppendSurplus(form, b.size() - pairs, a.size() - pairs, changes);
    const auto placeOf = [&](std::size_t key) -> std::vector<Label> {
        return {{"key", std::to_string(key)}, {"time", NumberText(TimeOf(a[key]))}};
    };
    keys.Append(form, placeOf, changes);
}

}  // namespace

void CompareTracks(const Chunk& a, const Chunk& b, const Comparison& by,
                   std::vector<FieldChange>& changes) {
    // Sampled and keyframed values are of different axes and units.
    if (a.version != b.version) {
        FieldChange change;
        change.field = "version";
        change.a = std::to_string(a.version);
        change.b = std::to_string(b.version);
        changes.push_back(std::move(change));
        return;
    }
    const KeyTrack& trackA = *a.As<KeyTrack>();
    const KeyTrack& trackB = *b.As<KeyTrack>();
    CompareKeys(trackA.vectorSamples, trackB.vectorSamples, by.tolerance, changes);
    CompareKeys(trackA.rotationSamples, trackB.rotationSamples, by.tolerance, changes);
    CompareKeys(trackA.keyframedKeys, trackB.keyframedKeys, by.tolerance, changes);
}

}  // namespace kta
