#include "host/assimp/motion/time.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "host/assimp/text.h"

namespace maxhost::import {
namespace {

constexpr int kTicksPerSecond = 4800;  // of a frame rate that divides it; else a little less

template <typename Key>
double LastTime(const Key* keys, unsigned count) {
    double last = 0;
    for (unsigned i = 0; keys && i < count; ++i) {
        last = std::isfinite(keys[i].mTime) ? std::max(last, keys[i].mTime) : last;
    }
    return last;
}

double LastTime(const aiAnimation& animation) {
    double last = 0;
    for (unsigned i = 0; i < animation.mNumChannels; ++i) {
        const aiNodeAnim& channel = *animation.mChannels[i];
        last = std::max({last, LastTime(channel.mPositionKeys, channel.mNumPositionKeys),
                         LastTime(channel.mRotationKeys, channel.mNumRotationKeys),
                         LastTime(channel.mScalingKeys, channel.mNumScalingKeys)});
    }
    return last;
}

// FBX numbers its frame rates (its "time modes"); 0 where the file states none.
double FbxFrameRate(const aiMetadata* settings) {
    constexpr std::array<double, 18> kModes = {0,
                                               120,
                                               100,
                                               60,
                                               50,
                                               48,
                                               30,
                                               30,
                                               30000.0 / 1001,
                                               30000.0 / 1001,
                                               25,
                                               24,
                                               1000,
                                               24,
                                               0.0,
                                               96,
                                               72,
                                               60000.0 / 1001};
    constexpr std::int32_t kCustom = 14;
    std::int32_t mode = 0;
    double custom = 0;
    if (!settings || !settings->Get("FrameRate", mode) || mode < 0 ||
        mode >= static_cast<std::int32_t>(kModes.size())) {
        return 0;
    }
    return mode != kCustom                            ? kModes[static_cast<std::size_t>(mode)]
           : settings->Get("CustomFrameRate", custom) ? custom
                                                      : 0;
}

// The file's frame rate; 0 where it states none.
double StatedFrameRate(const aiScene& scene, SourceFormat format) {
    return format == SourceFormat::fbx ? FbxFrameRate(scene.mMetaData)
           : format == SourceFormat::bvh && scene.mNumAnimations > 0
               ? scene.mAnimations[0]->mTicksPerSecond
               : 0;
}

// The whole frame rate for a stated one; 0 where there is none. Five digits tell rates apart: files
// that give a frame's time give it rounded.
int WholeRate(double rate, ImportWarnings& warnings) {
    const std::string stated = NumberText(rate, 5);
    if (rate >= 0.5 && rate <= kTicksPerSecond) {
        const int whole = static_cast<int>(std::lround(rate));
        if (stated != std::to_string(whole)) {
            warnings.Add("frame rate " + stated + " rounded to " + std::to_string(whole), "");
        }
        return whole;
    }
    if (rate != 0) {
        warnings.Add("frame rate " + stated + " left out, it is not within 0.5 and 4800", "");
    }
    return 0;
}

}  // namespace

double KeysPerSecond(const aiAnimation& animation, SourceFormat format) {
    constexpr double kAssimpDefault = 25;
    constexpr double kFramesIn3ds = 30;
    const double stated = animation.mTicksPerSecond;
    return stated > 0 && std::isfinite(stated) ? stated
           : format == SourceFormat::threeDs   ? kFramesIn3ds
                                               : kAssimpDefault;
}

std::vector<AnimationClip> ClipsOf(const aiScene& scene, SourceFormat format,
                                   ImportWarnings& warnings) {
    std::vector<AnimationClip> clips;
    for (unsigned i = 0; i < scene.mNumAnimations; ++i) {
        const aiAnimation& animation = *scene.mAnimations[i];
        const double keys = animation.mDuration > 0 && std::isfinite(animation.mDuration)
                                ? animation.mDuration
                                : LastTime(animation);
        const double seconds = keys / KeysPerSecond(animation, format);
        AnimationClip clip;
        bool recoded = false;
        clip.name = TextOf(animation.mName, &recoded);
        warnings.AddOf("name was not UTF-8, read as Latin-1", "animation", Quoted(clip.name),
                       recoded ? 1 : 0);
        clip.seconds = std::isfinite(seconds) ? std::max(seconds, 0.0) : 0.0;
        clip.channels = static_cast<int>(animation.mNumChannels + animation.mNumMeshChannels +
                                         animation.mNumMorphMeshChannels);
        clips.push_back(std::move(clip));
    }
    return clips;
}

scene::Time TimeOf(const aiScene& source, SourceFormat format, const AnimationClip* clip,
                   std::optional<int> chosenRate, ImportWarnings& warnings) {
    constexpr int kFrames = 100;
    scene::Time time;
    const int rate = chosenRate ? std::clamp(*chosenRate, 1, kTicksPerSecond)
                                : WholeRate(StatedFrameRate(source, format), warnings);
    if (rate > 0) {
        time.frameRate = rate;
        time.ticksPerFrame = kTicksPerSecond / rate;
        time.end = kFrames * time.ticksPerFrame;
    }
    if (clip) {
        const double ticks = clip->seconds * time.frameRate * time.ticksPerFrame;
        time.end = static_cast<int>(
            std::lround(std::min(ticks, static_cast<double>(std::numeric_limits<int>::max()))));
    }
    return time;
}

}  // namespace maxhost::import
