#include <iostream>
#include <string>
#include <vector>

#include "host/app/run.h"

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
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
    maxhost::app::Console console(std::cout, std::cerr, IsErrorATerminal());
    return maxhost::app::Run(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc),
                             console, IsErrorATerminal());
}
