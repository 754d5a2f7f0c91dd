// The core library inside a module that is loaded and unloaded.
#include <gtest/gtest.h>
#include <windows.h>

#include <algorithm>
#include <string>
#include <vector>

#include "modules/services.h"
#include "tests/support/debug_output.h"
#include "tests/support/temporary_directory.h"

namespace {

using Messages = std::vector<std::string>;

// Puts events and what the module itself prints into one order.
void OnEvent(const char* text) {
    OutputDebugStringA(text);
}

bool Contains(const Messages& messages, const std::string& text) {
    return std::find(messages.begin(), messages.end(), text) != messages.end();
}

// The module's output before and behind its memory manager's report, and the report itself.
struct Ending {
    explicit Ending(const Messages& messages) {
        const auto begin = std::find(messages.begin(), messages.end(), "\n\n");
        const auto end = std::find(
            begin, messages.end(),
            "MemoryManager: Releasing unreleased memory from detected memory leaks...\n\n");
        before.assign(messages.begin(), begin);
        report.assign(begin, end);
        behind.assign(end == messages.end() ? end : end + 1, messages.end());
    }

    Messages before;
    Messages report;
    Messages behind;
};

// The sink's storage is given back while the log manager goes; the memory manager goes after it and
// has seen that.
TEST(Module, ServicesGoInOrderWhenItIsUnloaded) {
    const support::TemporaryDirectory directory;
    const std::string log = directory.PathOf("module.log");
    for (int load = 0; load < 2; ++load) {
        const support::DebugOutput debugger;
        const HMODULE module = LoadLibraryA(CORE_MODULE_FILE);
        ASSERT_NE(module, nullptr);
        const auto use = reinterpret_cast<decltype(&UseServices)>(
            reinterpret_cast<void (*)()>(GetProcAddress(module, "UseServices")));
        ASSERT_NE(use, nullptr);
        use(OnEvent, log.c_str());
        EXPECT_EQ(debugger.Messages(), (Messages{"in use", "in use\n"}));
        ASSERT_TRUE(FreeLibrary(module));
        const Ending ending(debugger.Messages());
        EXPECT_EQ(ending.before, (Messages{"in use", "in use\n", "the early service ends",
                                           "the early service ends\n", "sink destroyed"}));
        EXPECT_TRUE(Contains(ending.report,
                             "*** THE FOLLOWING 1 MEMORY LEAK(S) HAVE BEEN DETECTED (totally 10 "
                             "bytes / 0 kb): ***\n"));
        EXPECT_TRUE(Contains(ending.report, "Maximum number of allocations......... = 2\n"));
        EXPECT_EQ(ending.behind, Messages{"the late service ends"});
        EXPECT_EQ(support::ReadFile(log), support::OnDisk("in use\nthe early service ends\n"));
    }
}

}  // namespace
