#include <iostream>
#include <string>
#include <vector>

#include "host/app/run.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>

#include <csignal>
#endif

namespace {

bool IsErrorATerminal() {
    constexpr int kStandardError = 2;
#ifdef _WIN32
    return _isatty(kStandardError) != 0;
#else
    return isatty(kStandardError) != 0;
#endif
}

}  // namespace

int main(int argc, char** argv) {
#ifndef _WIN32
    // Where a file may grow no further, writing fails and the program says so.
    std::signal(SIGXFSZ, SIG_IGN);
#endif
    maxhost::app::CatchInterrupts();
    maxhost::app::Console console(std::cout, std::cerr, IsErrorATerminal());
    return maxhost::app::Run(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc),
                             console, IsErrorATerminal());
}
