#include "host/app/interrupt.h"

#include <gtest/gtest.h>
#include <maxapi.h>

#include "host/sdk/host.h"

namespace maxhost::app {
namespace {

class CancelOnInterruptTest : public testing::TestWithParam<int> {
  protected:
    CancelOnInterruptTest() { Host::Instance().CancelAtUpdate(0); }
    ~CancelOnInterruptTest() override { Host::Instance().CancelAtUpdate(0); }
};

TEST_P(CancelOnInterruptTest, FirstPressesCancel) {
    {
        const CancelOnInterrupt interrupts;
        EXPECT_FALSE(GetCOREInterface()->GetCancel());
        std::raise(GetParam());
        EXPECT_TRUE(GetCOREInterface()->GetCancel());
    }
    EXPECT_TRUE(GetCOREInterface()->GetCancel()) << "until the next export";
    Host::Instance().CancelAtUpdate(0);
    const CancelOnInterrupt next;
    EXPECT_FALSE(GetCOREInterface()->GetCancel());
}

TEST_P(CancelOnInterruptTest, InterruptThatThePlugInDidNotSeeCancelsNothing) {
    {
        const CancelOnInterrupt interrupts;
        std::raise(GetParam());
    }
    EXPECT_FALSE(GetCOREInterface()->GetCancel());
}

TEST_P(CancelOnInterruptTest, FormerHandlersComeBack) {
    const auto former = std::signal(GetParam(), SIG_DFL);
    {
        const CancelOnInterrupt interrupts;
        std::raise(GetParam());
    }
    EXPECT_EQ(std::signal(GetParam(), former), SIG_DFL);
}

TEST_P(CancelOnInterruptTest, IgnoredSignalsStayIgnored) {
    const auto former = std::signal(GetParam(), SIG_IGN);
    {
        const CancelOnInterrupt interrupts;
        std::raise(GetParam());
        EXPECT_FALSE(GetCOREInterface()->GetCancel());
    }
    EXPECT_EQ(std::signal(GetParam(), former), SIG_IGN);
}

#ifndef _WIN32
TEST_P(CancelOnInterruptTest, SecondEndsTheProgram) {
    for (const int first : {SIGINT, SIGTERM}) {
        EXPECT_EXIT(
            {
                const CancelOnInterrupt interrupts;
                std::raise(first);
                std::raise(GetParam());
                std::_Exit(0);
            },
            testing::KilledBySignal(GetParam()), "");
    }
}
#endif

INSTANTIATE_TEST_SUITE_P(Signals, CancelOnInterruptTest, testing::Values(SIGINT, SIGTERM));

}  // namespace
}  // namespace maxhost::app
