// A converter library that crashes at an actor file in which a name is "crash-me", and hangs at
// one with "hang-me".
#include <chrono>
#include <csignal>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>

#include "tests/support/export.h"

TEST_EXPORT void InitSpecialHalden(const char*, const char*, bool) {
}
TEST_EXPORT void WriteKTActorFile(const char* path) {
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    if (bytes.find("crash-me") != std::string::npos) {
        std::signal(SIGSEGV, SIG_DFL);
        std::raise(SIGSEGV);
    }
    while (bytes.find("hang-me") != std::string::npos) {
        std::this_thread::sleep_for(std::chrono::seconds(1));
    }
}
TEST_EXPORT void WriteKTMotionFile(const char*) {
}
TEST_EXPORT void EndSpecialHalden() {
}
