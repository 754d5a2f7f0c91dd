#include "host/sdk/calls.h"

namespace maxhost {
namespace {

constexpr std::pair<const char*, std::uint64_t CallCounts::*> kCounts[] = {
    {"nodeTransforms", &CallCounts::nodeTransforms},
    {"transformEvaluations", &CallCounts::transformEvaluations},
    {"objectEvaluations", &CallCounts::objectEvaluations},
    {"nodeMaterials", &CallCounts::nodeMaterials},
    {"objectClasses", &CallCounts::objectClasses},
    {"modifiers", &CallCounts::modifiers},
    {"conversions", &CallCounts::conversions},
    {"normalBuilds", &CallCounts::normalBuilds},
    {"renderVertices", &CallCounts::renderVertices},
    {"faceNormals", &CallCounts::faceNormals},
    {"skinContexts", &CallCounts::skinContexts},
    {"skinVertices", &CallCounts::skinVertices},
    {"skinBones", &CallCounts::skinBones},
    {"skinWeights", &CallCounts::skinWeights},
    {"morphPoints", &CallCounts::morphPoints},
    {"keyCounts", &CallCounts::keyCounts},
    {"keys", &CallCounts::keys},
};

}  // namespace

std::vector<std::pair<const char*, std::uint64_t>> NamedCounts(const CallCounts& counts) {
    std::vector<std::pair<const char*, std::uint64_t>> named;
    for (const auto& [name, member] : kCounts) {
        named.emplace_back(name, counts.*member);
    }
    return named;
}

const CallCounts& CountedCalls() {
    return calls;
}

CallCounts CallsSince(const CallCounts& before) {
    CallCounts since;
    for (const auto& [name, member] : kCounts) {
        since.*member = calls.*member - before.*member;
    }
    return since;
}

}  // namespace maxhost
