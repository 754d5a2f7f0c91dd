#include "kta/gltf/animation.h"

#include <algorithm>
#include <charconv>

#include "kta/dump.h"
#include "kta/gltf/keyframes.h"
#include "kta/text.h"

namespace kta::gltf {
namespace {

const char* NameOf(Interpolation interpolation) {
    switch (interpolation) {
        case Interpolation::step:
            return "STEP";
        case Interpolation::cubic:
            return "CUBICSPLINE";
        default:
            return "LINEAR";
    }
}

class AnimationBuilder {
  public:
    AnimationBuilder(double start, Document& document) : start_(start), document_(document) {}

    void Add(std::size_t node, const NodeMotion& motion, const NodePlace& place) {
        Add(node, "translation", "VEC3",
            VectorKeyframes(motion.position, motion.rest.translation, {1, 1, -1}, start_));
        Add(node, "rotation", "VEC4", RotationKeyframes(motion.rotation, start_));
        Add(node, "scale", "VEC3",
            VectorKeyframes(motion.scale, motion.rest.scale, place.scaleFactor, start_));
    }

    bool IsEmpty() const { return channels_.empty(); }
    std::size_t CutTracks() const { return cutTracks_; }
    Json Take() {
        return {{"name", "motion"},
                {"channels", std::move(channels_)},
                {"samplers", std::move(samplers_)}};
    }

  private:
    void Add(std::size_t node, const char* path, const char* form, const Keyframes& keyframes) {
        if (keyframes.times.empty()) {
            return;
        }
        cutTracks_ += keyframes.isCut ? 1 : 0;
        channels_.push_back(
            {{"sampler", samplers_.size()}, {"target", {{"node", node}, {"path", path}}}});
        samplers_.push_back(
            {{"input", TimesAccessor(keyframes.times)},
             {"interpolation", NameOf(keyframes.interpolation)},
             {"output",
              document_.AddAccessor(std::span<const float>(keyframes.values), form, Usage::data)}});
    }

    // Tracks of the same times have them in common.
    std::size_t TimesAccessor(const std::vector<float>& times) {
        const auto known = times_.find(times);
        if (known != times_.end()) {
            return known->second;
        }
        const std::size_t accessor =
            document_.AddAccessor(std::span<const float>(times), "SCALAR", Usage::data, true);
        times_.emplace(times, accessor);
        return accessor;
    }

    double start_;
    Document& document_;
    Json channels_ = Json::array();
    Json samplers_ = Json::array();
    std::map<std::vector<float>, std::size_t> times_;
    std::size_t cutTracks_ = 0;
};

std::string Seconds(double seconds) {
    std::array<char, 32> digits{};
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), static_cast<float>(seconds));
    return std::string(digits.data(), end.ptr) + " s";
}

}  // namespace

std::vector<std::string> AddAnimation(const NodeTree& tree, const std::vector<NodePlace>& places,
                                      Document& document) {
    AnimationBuilder builder(std::min(0.0, tree.FirstTime()), document);
    for (std::size_t i = 0; i < tree.Size(); ++i) {
        if (const NodeMotion* motion = tree.MotionOf(i)) {
            builder.Add(i, *motion, places[i]);
        }
    }
    std::vector<std::string> warnings;
    if (!tree.StrayParts().empty()) {
        warnings.push_back(Counted(tree.StrayParts().size(), "motion part") +
                           " left out, of nodes that the actor file lacks, such as \"" +
                           OneLine(ToUtf8(tree.StrayParts().front())) + "\"");
    }
    if (builder.IsEmpty()) {
        return warnings;
    }
    if (tree.FirstTime() < 0) {
        warnings.push_back("the motion begins at " + Seconds(tree.FirstTime()) +
                           ", which becomes 0 s: glTF has no earlier time");
    }
    if (builder.CutTracks() > 0) {
        warnings.push_back(Counted(builder.CutTracks(), "track") +
                           " less exact than the file, for want of more keys");
    }
    document.Add("animations", builder.Take());
    return warnings;
}

}  // namespace kta::gltf
