#include "host/assimp/motion/clips.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <map>
#include <string_view>
#include <utility>

#include "host/assimp/text.h"
#include "host/assimp/tree/gltf.h"

namespace maxhost::import {
namespace {

using nlohmann::json;

// ---------------------------------------------------------------- lengths and frame rates

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
            warnings.Add({LossCode::frameRateRounded,
                          "frame rate " + stated + " rounded to " + std::to_string(whole)},
                         "");
        }
        return whole;
    }
    if (rate != 0) {
        warnings.Add({LossCode::frameRateRefused,
                      "frame rate " + stated + " left out, it is not within 0.5 and 4800"},
                     "");
    }
    return 0;
}

// ---------------------------------------------------------------- clips of glTF files

// A clip of a glTF 2 file with the interpolation of its samplers, which Assimp drops.
struct GltfClip {
    // By node number. Times are seconds; a curve without keys is not animated. Rotations are as
    // the file has them, of any length.
    std::map<std::size_t, Channel> channels;
    std::size_t unreadable = 0;  // channels that are not as the format wants them
};

std::string_view TextAt(const json& object, const char* name) {
    const json* const text = Member(object, name);
    return text && text->is_string() ? std::string_view(text->get_ref<const std::string&>())
                                     : std::string_view();
}

Vector ValueOf(const double* numbers, const Vector&) {
    return {numbers[0], numbers[1], numbers[2]};
}

Quaternion ValueOf(const double* numbers, const Quaternion&) {
    return {numbers[3], numbers[0], numbers[1], numbers[2]};
}

// None where the interpolation is unknown.
std::optional<Interpolation> InterpolationOf(const json& sampler) {
    const std::string_view name = TextAt(sampler, "interpolation");
    return name.empty() || name == "LINEAR" ? std::optional(Interpolation::linear)
           : name == "STEP"                 ? std::optional(Interpolation::step)
           : name == "CUBICSPLINE"          ? std::optional(Interpolation::cubic)
                                            : std::nullopt;
}

// Fills `curve`; false where the sampler is not as the format wants it. A cubic one has three
// values a key: in-slope, value, out-slope.
template <typename T>
bool ReadCurve(GltfFile& file, const json& sampler, std::size_t components, Curve<T>& curve) {
    const json* const input = Member(sampler, "input");
    const json* const output = Member(sampler, "output");
    const auto interpolation = InterpolationOf(sampler);
    if (!input || !output || !interpolation) {
        return false;
    }
    const auto times = file.Numbers(*input, 1);
    const auto numbers = file.Numbers(*output, components);
    const std::size_t valuesAKey = *interpolation == Interpolation::cubic ? 3 : 1;
    const std::size_t stride = valuesAKey * components;
    if (!times || !numbers || numbers->size() != times->size() * stride) {
        return false;
    }
    curve.interpolation = *interpolation;
    for (std::size_t i = 0; i < times->size(); ++i) {
        const double* const first = numbers->data() + i * stride;
        CurveKey<T> key;
        key.time = (*times)[i];
        key.value = ValueOf(first + (valuesAKey == 3 ? components : 0), T());
        if (valuesAKey == 3) {
            key.inSlope = ValueOf(first, T());
            key.outSlope = ValueOf(first + 2 * components, T());
        }
        curve.keys.push_back(key);
    }
    return true;
}

// Reads a channel into the node's curves; false where it is not as the format wants it.
bool ReadChannel(GltfFile& file, const json& samplers, const json& channel, GltfClip& clip) {
    const json* const target = Member(channel, "target");
    const json* const number = Member(channel, "sampler");
    const json* const sampler = number ? ItemAt(samplers, *number) : nullptr;
    if (!target || !sampler) {
        return false;
    }
    const json* const node = Member(*target, "node");
    const std::string_view path = TextAt(*target, "path");
    if (!node || path == "weights") {
        return true;  // nothing that a node's transform shows
    }
    if (!node->is_number_unsigned()) {
        return false;
    }
    Channel read;
    Channel& curves = clip.channels[node->get<std::size_t>()];
    if (path == "translation" && ReadCurve(file, *sampler, 3, read.position)) {
        curves.position = std::move(read.position);
    } else if (path == "rotation" && ReadCurve(file, *sampler, 4, read.rotation)) {
        curves.rotation = std::move(read.rotation);
    } else if (path == "scale" && ReadCurve(file, *sampler, 3, read.scale)) {
        curves.scale = std::move(read.scale);
    } else {
        return false;
    }
    return true;
}

// The member's numbers, where it has as many; else `absent`.
std::vector<double> NumbersOf(const json& node, const char* name, std::vector<double> absent) {
    const json* const member = Member(node, name);
    if (!member || !member->is_array() || member->size() != absent.size()) {
        return absent;
    }
    for (std::size_t i = 0; i < absent.size(); ++i) {
        if ((*member)[i].is_number()) {
            absent[i] = (*member)[i].get<double>();
        }
    }
    return absent;
}

GltfClip ReadGltfClip(GltfFile& file, std::size_t animation) {
    GltfClip clip;
    const json* const animations = Member(file.Document(), "animations");
    const json* const read = animations ? ItemAt(*animations, json(animation)) : nullptr;
    const json* const channels = read ? Member(*read, "channels") : nullptr;
    const json* const samplers = read ? Member(*read, "samplers") : nullptr;
    if (!channels || !channels->is_array() || !samplers) {
        return clip;
    }
    for (const json& channel : *channels) {
        clip.unreadable += ReadChannel(file, *samplers, channel, clip) ? 0 : 1;
    }
    return clip;
}

Channel RestOf(const aiNode& node) {
    Vector position, scale(1);
    Quaternion rotation;
    Matrix4(node.mTransformation).Decompose(scale, rotation, position);
    return Channel::Still(position, rotation, scale);
}

// The translation, rotation and scale that the file states for the node, or their defaults; of a
// node with a matrix those of the matrix.
Channel RestOf(const GltfFile& file, std::size_t node, const aiNode& imported) {
    const json* const nodes = Member(file.Document(), "nodes");
    const json* const stated = nodes ? ItemAt(*nodes, json(node)) : nullptr;
    if (!stated || Member(*stated, "matrix")) {
        return RestOf(imported);
    }
    return Channel::Still(
        ValueOf(NumbersOf(*stated, "translation", {0, 0, 0}).data(), Vector()),
        ValueOf(NumbersOf(*stated, "rotation", {0, 0, 0, 1}).data(), Quaternion()),
        ValueOf(NumbersOf(*stated, "scale", {1, 1, 1}).data(), Vector()));
}

// ---------------------------------------------------------------- channels

constexpr double kLatestTick = 1e9;

bool FitsFloat(const Vector& v) {
    constexpr double kGreatest = std::numeric_limits<float>::max();
    return std::abs(v.x) <= kGreatest && std::abs(v.y) <= kGreatest && std::abs(v.z) <= kGreatest;
}

bool FitsFloat(const Quaternion& q) {
    return FitsFloat(Vector(q.x, q.y, q.z)) && FitsFloat(Vector(q.w, 0, 0));
}

bool IsValue(const Vector& v) {
    return FitsFloat(v);
}

// A rotation has a direction.
bool IsValue(const Quaternion& q) {
    return FitsFloat(q) && Unit(q) != Quaternion(0, 0, 0, 0);
}

class ChannelReader {
  public:
    ChannelReader(const aiScene& scene, SourceFormat format, double ticksPerSecond,
                  ImportWarnings& warnings)
        : scene_(scene), format_(format), ticksPerSecond_(ticksPerSecond), warnings_(warnings) {}

    Channels Read(std::size_t clip, const std::string& path) {
        const aiAnimation& animation = *scene_.mAnimations[clip];
        if (format_ != SourceFormat::gltf || !ReadFromGltf(clip, path)) {
            ReadFromAssimp(animation);
        }
        warnings_.Add(LossCode::meshAnimation, "",
                      animation.mNumMeshChannels + animation.mNumMorphMeshChannels);
        warnings_.Add(LossCode::keyNotFinite, "", dropped_);
        warnings_.Add(LossCode::keyOrder, "", unordered_);
        return std::move(channels_);
    }

  private:
    // ---- from the file itself

    bool ReadFromGltf(std::size_t clip, const std::string& path) {
        auto file = GltfFile::Read(path);
        const auto nodes =
            file ? MatchGltfNodes(*file, scene_) : std::map<std::size_t, const aiNode*>();
        if (nodes.empty()) {
            return false;
        }
        GltfClip read = ReadGltfClip(*file, clip);
        if (read.channels.empty() && read.unreadable == 0) {
            return false;
        }
        std::size_t strays = 0;
        for (auto& [number, channel] : read.channels) {
            const auto node = nodes.find(number);
            if (node == nodes.end()) {
                ++strays;
                continue;
            }
            Clean(channel, 1);
            Add(*node->second, std::move(channel), RestOf(*file, number, *node->second));
        }
        warnings_.Add(LossCode::channelUnreadable, "", read.unreadable);
        WarnOfStrays(strays);
        return true;
    }

    // ---- from Assimp

    // Channels name their nodes. Of like-named nodes the first that has none yet is taken.
    void ReadFromAssimp(const aiAnimation& animation) {
        std::unordered_map<std::string_view, std::deque<const aiNode*>> byName;
        std::vector<const aiNode*> waiting{scene_.mRootNode};
        while (!waiting.empty()) {
            const aiNode* const node = waiting.back();
            waiting.pop_back();
            if (node) {
                byName[node->mName.C_Str()].push_back(node);
                waiting.insert(waiting.end(),
                               std::make_reverse_iterator(node->mChildren + node->mNumChildren),
                               std::make_reverse_iterator(node->mChildren));
            }
        }
        std::size_t strays = 0;
        for (unsigned i = 0; i < animation.mNumChannels; ++i) {
            const aiNodeAnim& source = *animation.mChannels[i];
            const auto found = byName.find(source.mNodeName.C_Str());
            if (found == byName.end() || found->second.empty()) {
                ++strays;
                continue;
            }
            AddFromAssimp(*found->second.front(), source, KeysPerSecond(animation, format_));
            found->second.pop_front();
        }
        WarnOfStrays(strays);
    }

    void AddFromAssimp(const aiNode& node, const aiNodeAnim& source, double keysPerSecond) {
        Channel channel;
        CopyKeys(source.mPositionKeys, source.mNumPositionKeys, channel.position);
        CopyKeys(source.mRotationKeys, source.mNumRotationKeys, channel.rotation);
        CopyKeys(source.mScalingKeys, source.mNumScalingKeys, channel.scale);
        Clean(channel, keysPerSecond);
        const auto repeats = [](aiAnimBehaviour state) {
            return state == aiAnimBehaviour_LINEAR || state == aiAnimBehaviour_REPEAT;
        };
        const bool isHeld = !repeats(source.mPreState) && !repeats(source.mPostState);
        warnings_.AddOf(LossCode::motionOutsideKeys, "node", Quoted(TextOf(node.mName)),
                        isHeld ? 0 : 1);
        Add(node, std::move(channel), RestOf(node));
    }

    static void CopyKeys(const aiVectorKey* keys, unsigned count, Curve<Vector>& curve) {
        for (unsigned i = 0; keys && i < count; ++i) {
            const aiVector3D& v = keys[i].mValue;
            curve.keys.push_back({keys[i].mTime, Vector(v.x, v.y, v.z), {}, {}});
        }
    }

    static void CopyKeys(const aiQuatKey* keys, unsigned count, Curve<Quaternion>& curve) {
        for (unsigned i = 0; keys && i < count; ++i) {
            const aiQuaternion& q = keys[i].mValue;
            curve.keys.push_back({keys[i].mTime, Quaternion(q.w, q.x, q.y, q.z), {}, {}});
        }
    }

    // ---- both

    void Clean(Channel& channel, double keysPerSecond) {
        const double ticksPerKey = ticksPerSecond_ / keysPerSecond;
        Clean(channel.position, ticksPerKey);
        Clean(channel.rotation, ticksPerKey);
        Clean(channel.scale, ticksPerKey);
    }

    // Brings the times to ticks, and leaves out what is no key.
    template <typename T>
    void Clean(Curve<T>& curve, double ticksPerKey) {
        const bool isCubic = curve.interpolation == Interpolation::cubic;
        const auto isBad = [isCubic](const CurveKey<T>& key) {
            return !(std::abs(key.time) <= kLatestTick) || !IsValue(key.value) ||
                   (isCubic && !(FitsFloat(key.inSlope) && FitsFloat(key.outSlope)));
        };
        for (CurveKey<T>& key : curve.keys) {
            key.time *= ticksPerKey;
            key.inSlope = 1 / ticksPerKey * key.inSlope;
            key.outSlope = 1 / ticksPerKey * key.outSlope;
        }
        dropped_ += std::erase_if(curve.keys, isBad);
        const auto isEarlier = [](const CurveKey<T>& a, const CurveKey<T>& b) {
            return a.time < b.time;
        };
        if (!std::is_sorted(curve.keys.begin(), curve.keys.end(), isEarlier)) {
            ++unordered_;
            std::stable_sort(curve.keys.begin(), curve.keys.end(), isEarlier);
        }
        for (CurveKey<T>& key : curve.keys) {
            key.value = isCubic ? key.value : OnCurve(key.value);
        }
    }

    // A curve without keys is that of the node at rest.
    void Add(const aiNode& node, Channel channel, Channel rest) {
        const std::size_t dropped = dropped_;
        Clean(rest, ticksPerSecond_);
        dropped_ = dropped;
        if (channel.position.keys.empty()) {
            channel.position = std::move(rest.position);
        }
        if (channel.rotation.keys.empty()) {
            channel.rotation = std::move(rest.rotation);
        }
        if (channel.scale.keys.empty()) {
            channel.scale = std::move(rest.scale);
        }
        const bool isWhole = !channel.position.keys.empty() && !channel.rotation.keys.empty() &&
                             !channel.scale.keys.empty();
        if (isWhole) {
            channels_.emplace(&node, std::move(channel));
        }
    }

    void WarnOfStrays(std::size_t strays) {
        warnings_.Add(LossCode::animationWithoutNode, "", strays);
    }

    const aiScene& scene_;
    const SourceFormat format_;
    const double ticksPerSecond_;
    ImportWarnings& warnings_;
    Channels channels_;
    std::size_t dropped_ = 0;
    std::size_t unordered_ = 0;  // curves
};

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
        warnings.AddOf(LossCode::nameRecoded, "animation", Quoted(clip.name), recoded ? 1 : 0);
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

Channels ReadChannels(const aiScene& scene, std::size_t clip, SourceFormat format,
                      const std::string& path, double ticksPerSecond, ImportWarnings& warnings) {
    return ChannelReader(scene, format, ticksPerSecond, warnings).Read(clip, path);
}

}  // namespace maxhost::import
