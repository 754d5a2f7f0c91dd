// Whether Assimp by itself, with its default settings, loads a file: exit status 0 if it does, 1
// and its reason if it does not. With --limited it has the memory and the CPU time that an import
// of the file has.
#include <sys/resource.h>
#include <unistd.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>

#include <assimp/scene.h>

#include <assimp/Importer.hpp>

#include "host/assimp/process/reader_process.h"

namespace {

std::uint64_t MappedMemory() {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

void LimitTo(const maxhost::import::ReaderLimits& limits) {
    const rlim_t memory = MappedMemory() + limits.memory + maxhost::import::kReaderStack;
    const rlimit address{memory, memory};
    const rlimit cpu{limits.cpuSeconds, limits.cpuSeconds};
    setrlimit(RLIMIT_AS, &address);
    setrlimit(RLIMIT_CPU, &cpu);
}

}  // namespace

int main(int argc, char** argv) {
    const bool isLimited = argc == 3 && argv[1] == std::string_view("--limited");
    if (argc != 2 && !isLimited) {
        std::cerr << "usage: assimp_loads [--limited] FILE\n";
        return 2;
    }
    const char* const file = argv[argc - 1];
    if (isLimited) {
        std::error_code error;
        const std::uintmax_t size = std::filesystem::file_size(file, error);
        LimitTo(maxhost::import::LimitsFor(error ? 0 : size));
    }
    Assimp::Importer importer;
    if (importer.ReadFile(file, 0)) {
        return 0;
    }
    std::cout << importer.GetErrorString() << '\n';
    return 1;
}
