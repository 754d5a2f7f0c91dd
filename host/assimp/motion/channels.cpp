#include "host/assimp/motion/channels.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <limits>
#include <map>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "host/assimp/motion/gltf_animation.h"
#include "host/assimp/motion/time.h"
#include "host/assimp/text.h"

namespace maxhost::import {
namespace {

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
        warnings_.Add("animation of meshes and morph targets left out", "",
                      animation.mNumMeshChannels + animation.mNumMorphMeshChannels);
        warnings_.Add(
            "keys of animations that are not finite, or beyond the range of times, left "
            "out",
            "", dropped_);
        warnings_.Add("keys of animations put in the order of their times", "", unordered_);
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
            Add(*node->second, std::move(channel), RestOfGltfNode(*file, number, *node->second));
        }
        warnings_.Add("animation channels that cannot be read left out", "", read.unreadable);
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
        Vector position, scale(1);
        Quaternion rotation;
        Matrix4(node.mTransformation).Decompose(scale, rotation, position);
        Channel rest;
        rest.position.keys = {{0, position, {}, {}}};
        rest.rotation.keys = {{0, rotation, {}, {}}};
        rest.scale.keys = {{0, scale, {}, {}}};
        const auto repeats = [](aiAnimBehaviour state) {
            return state == aiAnimBehaviour_LINEAR || state == aiAnimBehaviour_REPEAT;
        };
        const bool isHeld = !repeats(source.mPreState) && !repeats(source.mPostState);
        warnings_.AddOf("motion before the first and behind the last key left out", "node",
                        Quoted(TextOf(node.mName)), isHeld ? 0 : 1);
        Add(node, std::move(channel), std::move(rest));
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
        warnings_.Add("animation of nodes that are not there left out", "", strays);
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

Channels ReadChannels(const aiScene& scene, std::size_t clip, SourceFormat format,
                      const std::string& path, double ticksPerSecond, ImportWarnings& warnings) {
    return ChannelReader(scene, format, ticksPerSecond, warnings).Read(clip, path);
}

void AppendLocal(AnimatedChain& chain, const SourceNode& node, const Channels& channels,
                 const AxisTurn& turn, double stillness) {
    for (const SourceNode::Link& link : node.links) {
        const auto channel = channels.find(link.node);
        if (channel == channels.end()) {
            chain.Append(turn.Conjugate(link.matrix));
        } else {
            chain.Append(Turned(channel->second, turn), stillness);
        }
    }
}

std::vector<Matrix4> LocalsAtStart(const SourceTree& tree, const Channels& channels) {
    std::vector<Matrix4> locals;
    locals.reserve(tree.nodes.size());
    for (const SourceNode& node : tree.nodes) {
        AnimatedChain chain;
        AppendLocal(chain, node, channels, AxisTurn(), 0);
        locals.push_back(chain.At(0));
    }
    return locals;
}

}  // namespace maxhost::import
