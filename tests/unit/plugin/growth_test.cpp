// How cost grows with a scene, by counts, which no busy machine disturbs.
#include <gtest/gtest.h>

#include <cmath>

#include "bench/passes.h"
#include "bench/workloads.h"
#include "host/sdk/calls.h"
#include "tests/support/array_storage.h"

namespace {

struct Cost {
    maxhost::CallCounts calls;
    int allocations;
    std::size_t peak;  // bytes
};

Cost CostOf(const bench::Workload& workload, int count) {
    maxhost::Host& host = maxhost::Host::Instance();
    host.CancelAtUpdate(0);
    host.KeepOneTransformANode(true);
    host.OpenScene(workload.make(count));
    host.KeepOneTransformANode(false);
    const support::TemporaryDirectory folder;
    const maxhost::CallCounts before = maxhost::CountedCalls();
    const ArrayStorage storage;
    bench::RunPasses(bench::OptionsFor(workload.isSampled), folder);
    const Cost cost = {maxhost::CallsSince(before), storage.Requests(), storage.Peak()};
    host.CloseScene();
    return cost;
}

constexpr double kMostExponent = 1.3;

void ExpectGrowth(double once, double twice, const std::string& what) {
    // What does not grow with the scene may come and go.
    constexpr double kFew = 64;
    EXPECT_LE(twice, once * std::pow(2, kMostExponent) + kFew) << what;
}

TEST(Growth, CallsAllocationsAndMemoryGrowInProportion) {
    for (const bench::Workload& workload : bench::Workloads()) {
        const int count = workload.size / 10;
        const Cost once = CostOf(workload, count), twice = CostOf(workload, 2 * count);
        const std::string name = workload.name;
        const auto before = maxhost::NamedCounts(once.calls);
        const auto after = maxhost::NamedCounts(twice.calls);
        double largest = 0;
        for (std::size_t i = 0; i < before.size(); ++i) {
            const auto number = static_cast<double>(after[i].second);
            ExpectGrowth(static_cast<double>(before[i].second), number,
                         name + ": " + before[i].first);
            largest = std::max(largest, number);
        }
        EXPECT_GE(largest, 2 * count) << name << ": each of its things is asked for";
        ExpectGrowth(once.allocations, twice.allocations, name + ": allocations");
        ExpectGrowth(static_cast<double>(once.peak), static_cast<double>(twice.peak),
                     name + ": bytes");
    }
}

}  // namespace
