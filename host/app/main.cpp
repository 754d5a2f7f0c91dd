#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "host/app/run.h"
#include "kta/terminal.h"

#ifdef _WIN32
#include "host/app/model_reader.h"
#else
#include <csignal>
#endif

int main(int argc, char** argv) {
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
