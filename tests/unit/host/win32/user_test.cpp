#include "host/win32/user.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <windows.h>

#include <string>

namespace {

TEST(DebugOutput, GoesToTheSinkOrNowhere) {
    OutputDebugStringA("dropped");
    std::string seen;
    win32::SetDebugSink(
        [](const char* text, void* context) { static_cast<std::string*>(context)->append(text); },
        &seen);
    OutputDebugStringA("one\n");
    OutputDebugStringA(nullptr);
    OutputDebugStringA("two");
    win32::SetDebugSink(nullptr, nullptr);
    OutputDebugStringA("dropped");
    EXPECT_EQ(seen, "one\ntwo");
}

TEST(CommonControls, CanBeInitialisedRepeatedly) {
    InitCommonControls();
    InitCommonControls();
}

}  // namespace
