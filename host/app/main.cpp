#include <iostream>
#include <string>
#include <vector>

#include "host/app/run.h"
#include "kta/terminal.h"

#ifndef _WIN32
#include <csignal>
#endif

int main(int argc, char** argv) {
#ifndef _WIN32
    // Where a file may grow no further, writing fails and the program says so.
    std::signal(SIGXFSZ, SIG_IGN);
    // Where it is ignored, which schedulers may hand down, nobody can wait for a process's end.
    std::signal(SIGCHLD, SIG_DFL);
#endif
    maxhost::app::CatchInterrupts();
    const bool isTerminal = kta::IsTerminal(kta::StandardStream::error);
    maxhost::app::Console console(std::cout, std::cerr, isTerminal,
                                  kta::IsTerminal(kta::StandardStream::out));
    return maxhost::app::Run(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc),
                             console, isTerminal);
}
