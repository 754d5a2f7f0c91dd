// Whole exports of each kind of scene at n, 2n and 4n, with what they ask of 3ds Max.
#include <benchmark/benchmark.h>

#include "bench/passes.h"
#include "bench/workloads.h"
#include "host/sdk/calls.h"

namespace bench {
namespace {

void Export(benchmark::State& state, const Workload& workload, int count) {
    maxhost::Host& host = maxhost::Host::Instance();
    host.KeepOneTransformANode(true);
    host.OpenScene(workload.make(count));
    const support::TemporaryDirectory folder;
    const ExportOptions options = OptionsFor(workload.isSampled);
    maxhost::CallCounts calls;
    for (auto _ : state) {
        const maxhost::CallCounts before = maxhost::CountedCalls();
        RunPasses(options, folder);
        calls = maxhost::CallsSince(before);
    }
    for (const auto& [name, number] : maxhost::NamedCounts(calls)) {
        state.counters[std::string("calls ") + name] = static_cast<double>(number);
    }
    state.SetItemsProcessed(state.iterations() * count);
    host.CloseScene();
}

}  // namespace

void RegisterExports() {
    for (const Workload& workload : Workloads()) {
        for (const int factor : {1, 2, 4}) {
            const int count = factor * workload.size;
            benchmark::RegisterBenchmark(
                (std::string("export/") + workload.name + "/" + std::to_string(count)).c_str(),
                [&workload, count](benchmark::State& state) { Export(state, workload, count); })
                ->Unit(benchmark::kMillisecond);
        }
    }
}

}  // namespace bench
