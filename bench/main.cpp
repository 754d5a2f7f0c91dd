// hdo_bench: Google Benchmark's program, or with `--write-scene WORKLOAD COUNT FILE` a scene of
// that kind as a scene description.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>

#include "bench/workloads.h"
#include "host/scene_file/scene_description.h"

namespace bench {
void RegisterExports();
void RegisterRivals();
}  // namespace bench

namespace {

int WriteScene(const std::string& workload, const std::string& count, const std::string& file) {
    std::ofstream out(file, std::ios::binary);
    maxhost::scene_file::WriteSceneDescription(
        bench::WorkloadNamed(workload).make(std::stoi(count)), out);
    return out.flush() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    try {
        if (argc == 5 && std::string(argv[1]) == "--write-scene") {
            return WriteScene(argv[2], argv[3], argv[4]);
        }
        bench::RegisterExports();
        bench::RegisterRivals();
        benchmark::Initialize(&argc, argv);
        if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
            return 2;
        }
        benchmark::RunSpecifiedBenchmarks();
        benchmark::Shutdown();
    } catch (const std::exception& error) {
        std::cerr << "hdo_bench: " << error.what() << '\n';
        return 1;
    }
}
