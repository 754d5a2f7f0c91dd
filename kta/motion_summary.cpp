#include "kta/motion_summary.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace kta {
namespace {

constexpr std::size_t kMostParts = 5;

constexpr struct {
    char letter;
    std::uint32_t version;
} kTracks[] = {{'P', kKeyTrackSampled},   {'P', kKeyTrackKeyframed}, {'R', kKeyTrackSampled},
               {'r', kKeyTrackKeyframed}, {'S', kKeyTrackSampled},   {'S', kKeyTrackKeyframed}};

// The least and greatest finite time.
class TimeSpan {
  public:
    void Add(const KeyTrack& track) {
        for (const SampledKey& key : track.sampledKeys) {
            Add(key.time);
        }
        for (const CurveKey& key : track.curveKeys) {
            Add(key.time);
        }
    }

    float First() const { return first_ <= last_ ? first_ : 0; }
    float Last() const { return first_ <= last_ ? last_ : 0; }

  private:
    void Add(float time) {
        if (std::isfinite(time)) {
            first_ = std::min(first_, time);
            last_ = std::max(last_, time);
        }
    }

    float first_ = std::numeric_limits<float>::infinity();
    float last_ = -std::numeric_limits<float>::infinity();
};

void Count(const Chunk& chunk, const KeyTrack& track, std::vector<TrackTotal>& totals) {
    for (TrackTotal& total : totals) {
        if (total.trackLetter == track.trackLetter && total.version == chunk.version) {
            total.tracks += 1;
            total.keys += track.NumKeys();
        }
    }
}

}  // namespace

MotionSummary SummarizeMotion(const File& file) {
    MotionSummary summary;
    for (const auto& [letter, version] : kTracks) {
        summary.totals.push_back({letter, version});
    }
    TimeSpan times;
    std::vector<PartKeys> parts;
    for (const Chunk& chunk : file.chunks) {
        if (const auto* part = std::get_if<MotionPart>(&chunk.body)) {
            parts.push_back({part->nodeName});
        } else if (const auto* track = std::get_if<KeyTrack>(&chunk.body)) {
            summary.tracks += 1;
            summary.keys += track->NumKeys();
            Count(chunk, *track, summary.totals);
            times.Add(*track);
            if (!parts.empty()) {
                parts.back().keys += track->NumKeys();
            }
        }
    }
    summary.parts = parts.size();
    std::erase_if(summary.totals, [](const TrackTotal& total) { return total.tracks == 0; });
    summary.firstTime = times.First();
    summary.lastTime = times.Last();
    std::erase_if(parts, [](const PartKeys& part) { return part.keys == 0; });
    std::stable_sort(parts.begin(), parts.end(),
                     [](const PartKeys& a, const PartKeys& b) { return a.keys > b.keys; });
    parts.resize(std::min(parts.size(), kMostParts));
    summary.mostKeys = std::move(parts);
    return summary;
}

}  // namespace kta
