#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "host/app/child_process.h"
#include "host/app/run.h"
#include "kta/terminal.h"

#ifdef _WIN32
#include "host/app/model_reader.h"
#else
#include <csignal>
#endif
#ifdef __GLIBC__
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

// A run uses much memory once, and a quarter of its time would go into fetching it page by page.
// What was freed is used again rather than given back and fetched anew, and the heap begins in
// large pages where the system has any.
void PrepareHeap() {
#ifdef __GLIBC__
    if (maxhost::app::MemoryIsRationed()) {
        return;
    }
    constexpr int kNever = std::numeric_limits<int>::max();
    constexpr int kRoom = 512 << 20;  // of addresses; memory comes with its use
    constexpr int kLater = 16 << 20;
    mallopt(M_ARENA_MAX, 1);  // threads use the same heap
    mallopt(M_MMAP_THRESHOLD, kNever);
    mallopt(M_TRIM_THRESHOLD, kNever);
    mallopt(M_TOP_PAD, kRoom);
    char* const begin = static_cast<char*>(sbrk(0));
    void* volatile const part = std::malloc(1 << 20);  // more than there is yet
    std::free(part);
    char* const end = static_cast<char*>(sbrk(0));
    if (end > begin) {
        const auto past = reinterpret_cast<std::uintptr_t>(begin) %
                          static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
        madvise(begin - past, static_cast<std::size_t>(end - begin) + past, MADV_HUGEPAGE);
    }
    mallopt(M_TOP_PAD, kLater);
#endif
}

}  // namespace

int main(int argc, char** argv) {
    PrepareHeap();
#ifndef _WIN32
    // Where a file may grow no further, writing fails and the program says so.
    std::signal(SIGXFSZ, SIG_IGN);
    // Where it is ignored, which schedulers may hand down, nobody can wait for a process's end.
    std::signal(SIGCHLD, SIG_DFL);
#endif
    const std::vector<std::string> arguments(argv + (argc > 0 ? 1 : 0), argv + argc);
#if defined(_WIN32) && defined(HDO_READS_MODELS)
    if (const std::optional<int> status = maxhost::app::ServeAsModelReader(arguments)) {
        return *status;
    }
#endif
    maxhost::app::CatchInterrupts();
    const bool isTerminal = kta::IsTerminal(kta::StandardStream::error);
    maxhost::app::Console console(std::cout, std::cerr, isTerminal,
                                  kta::IsTerminal(kta::StandardStream::out));
    return maxhost::app::Run(arguments, console, isTerminal);
}
