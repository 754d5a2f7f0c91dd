#include "host/app/scene_skin.h"

#include <algorithm>
#include <optional>

namespace maxhost::app {
namespace {

using kta::operator+;
using kta::operator*;

void Append(const scene::Physique& physique, std::size_t vertex,
            std::vector<scene::NodeWeight>& influences) {
    if (vertex >= physique.vertices.size()) {
        return;
    }
    const auto& link = physique.vertices[vertex];
    if (const auto* const rigid = std::get_if<scene::PhysiqueRigid>(&link)) {
        influences.push_back({rigid->node, 1});
    } else if (const auto* const blended = std::get_if<scene::PhysiqueBlended>(&link)) {
        influences.insert(influences.end(), blended->nodes.begin(), blended->nodes.end());
    }
}

void Append(const scene::Skin& skin, std::size_t vertex,
            std::vector<scene::NodeWeight>& influences) {
    if (!skin.context || vertex >= skin.weights.size()) {
        return;
    }
    for (const scene::SkinWeight& weight : skin.weights[vertex]) {
        const auto slot = static_cast<std::size_t>(weight.slot);
        if (weight.slot >= 0 && slot < skin.bones.size()) {
            influences.push_back({skin.bones[slot], weight.weight});
        }
    }
}

}  // namespace

std::vector<kta::Affine> WaysBetween(const std::vector<kta::Affine>& from,
                                     const std::vector<kta::Affine>& to) {
    std::vector<kta::Affine> ways(from.size());
    for (std::size_t i = 0; i < from.size(); ++i) {
        if (const std::optional<kta::Affine> inverse = kta::Inverse(from[i])) {
            ways[i] = to[i] * *inverse;
        }
    }
    return ways;
}

SceneSkin::SceneSkin(const scene::Node& node, int own, std::size_t vertices) : own_(own) {
    const auto* const physique = EnabledModifier<scene::Physique>(node);
    const auto* const skin = EnabledModifier<scene::Skin>(node);
    isThere_ = physique || skin;
    for (std::size_t vertex = 0; isThere_ && vertex < vertices; ++vertex) {
        if (physique) {
            Append(*physique, vertex, influences_);
        } else {
            Append(*skin, vertex, influences_);
        }
        ends_.push_back(influences_.size());
    }
    // What moves nothing, or stands for no node.
    std::size_t kept = 0, at = 0;
    for (std::size_t& end : ends_) {
        for (; at < end; ++at) {
            if (influences_[at].node != scene::kNone && influences_[at].weight > 0) {
                influences_[kept++] = influences_[at];
            }
        }
        end = kept;
    }
    influences_.resize(kept);
}

std::vector<scene::NodeWeight> SceneSkin::Of(std::size_t vertex) const {
    const std::size_t begin = vertex == 0 ? 0 : ends_[vertex - 1];
    return {influences_.begin() + static_cast<std::ptrdiff_t>(begin),
            influences_.begin() + static_cast<std::ptrdiff_t>(ends_[vertex])};
}

int SceneSkin::MostOf(std::size_t vertex) const {
    const std::vector<scene::NodeWeight> weights = Of(vertex);
    const auto most = std::ranges::max_element(weights, {}, &scene::NodeWeight::weight);
    return most == weights.end() ? scene::kNone : most->node;
}

kta::Vector3 SceneSkin::Position(std::size_t vertex, const std::vector<kta::Affine>& ways,
                                 const kta::Vector3& position) const {
    kta::Vector3 sum{};
    double weights = 0;
    const std::size_t begin = vertex == 0 ? 0 : ends_[vertex - 1];
    for (std::size_t i = begin; i < ends_[vertex]; ++i) {
        const double weight = influences_[i].weight;
        sum = sum + ways[static_cast<std::size_t>(influences_[i].node)].Position(position) * weight;
        weights += weight;
    }
    return weights > 0 ? sum * (1 / weights)
                       : ways[static_cast<std::size_t>(own_)].Position(position);
}

}  // namespace maxhost::app
