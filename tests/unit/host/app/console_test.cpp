#include "host/app/console.h"

#include <gtest/gtest.h>

#include <maxapi.h>
#include <chrono>
#include <sstream>
#include <thread>

#include "host/sdk/host.h"

namespace maxhost::app {
namespace {

// ---------------------------------------------------------------- messages

class ConsoleTest : public testing::Test {
  protected:
    std::ostringstream out_, error_;
    Console console_{out_, error_};
};

TEST_F(ConsoleTest, MessagesHaveOneForm) {
    console_.Report("scene.fbx", "what is wrong");
    EXPECT_EQ(error_.str(), "hdo-export: scene.fbx: what is wrong\n");
    EXPECT_EQ(out_.str(), "");
}

TEST_F(ConsoleTest, MessagesAreOneLineWhateverTheTexts) {
    console_.Report("sce\nne", "what\r\nis\n\nwrong\n");
    EXPECT_EQ(error_.str(), "hdo-export: sce ne: what is wrong\n");
}

TEST_F(ConsoleTest, WarningsSayThatTheyAre) {
    console_.Warn(scene::LossCode::pointsAndLines, "scene.fbx", "2 lines dropped");
    EXPECT_EQ(error_.str(), "hdo-export: scene.fbx: warning: 2 lines dropped\n");
}

TEST_F(ConsoleTest, ResultsGoToStandardOutput) {
    console_.Print("a\tb");
    EXPECT_EQ(out_.str(), "a\tb\n");
    EXPECT_EQ(error_.str(), "");
}

TEST_F(ConsoleTest, TheBarMakesWayForMessages) {
    console_.ShowBar("#####");
    console_.ShowBar("##");
    console_.Report("a", "b");
    EXPECT_EQ(error_.str(), "\r#####\r##   \r  \rhdo-export: a: b\n");
}

TEST_F(ConsoleTest, HidingNoBarWritesNothing) {
    console_.HideBar();
    console_.Print("line");
    EXPECT_EQ(error_.str(), "");
}

TEST_F(ConsoleTest, FlushTellsOfALostResult) {
    EXPECT_TRUE(console_.Flush());
    out_.setstate(std::ios::badbit);
    EXPECT_FALSE(console_.Flush());
}

TEST(CopyTest, OnATerminalControlCharactersAreEscaped) {
    const std::string text = "\ta\x1b[31m\r\n\x07 \xc2\x9b \x7f \xc3\xa9 \\\n";
    std::ostringstream out, plain, shown;
    Console(out, plain).Copy(text);
    EXPECT_EQ(plain.str(), text);
    Console(out, shown, true).Copy(text);
    EXPECT_EQ(shown.str(), "\ta\\x1b[31m\r\n\\x07 \\x9b \\x7f \xc3\xa9 \\\n");
}

TEST(ColorTest, ErrorsAreRedAndWarningsYellowWhereAsked) {
    std::ostringstream out, error;
    Console console(out, error);
    console.SetColors(kta::ColorMode::always);
    console.Report("a", "b");
    console.Report("a: b");
    console.Warn(scene::LossCode::nameCut, "a", "b");
    console.Note("a", "b");
    console.Print("c");
    console.Print("c", kta::Style::good);
    console.Hint("nothing, without a terminal");
    const std::string name = "\x1b[1mhdo-export:\x1b[0m ";
    EXPECT_EQ(error.str(), name + "a:\x1b[31m b\x1b[0m\n" + name + "\x1b[31ma: b\x1b[0m\n" + name +
                               "a:\x1b[33m warning: b\x1b[0m\n" + name + "a: b\n");
    EXPECT_EQ(out.str(), "c\n\x1b[32mc\x1b[0m\n");
}

TEST(ColorTest, WithoutATerminalNothingIsColored) {
    std::ostringstream out, error;
    Console console(out, error);
    console.SetColors(kta::ColorMode::automatic);
    console.Report("a", "b");
    console.Print("c", kta::Style::bad);
    EXPECT_EQ(error.str(), "hdo-export: a: b\n");
    EXPECT_EQ(out.str(), "c\n");
}

TEST(ColorTest, ATerminalIsToldWhatToDoNext) {
    std::ostringstream out, error;
    Console console(out, error, true);
    console.SetColors(kta::ColorMode::never);
    console.Hint("this\nand that");
    console.Hint("");
    EXPECT_EQ(error.str(), "next: this and that\n");
}

TEST(ConsoleEnd, ClearsTheBar) {
    std::ostringstream out, error;
    { Console(out, error).ShowBar("###"); }
    EXPECT_EQ(error.str(), "\r###\r   \r");
}

// ---------------------------------------------------------------- progress bar

class ProgressTest : public testing::Test {
  protected:
    // The text written since the last call.
    std::string Written() {
        const std::string text = error_.str();
        error_.str("");
        return text;
    }

    std::ostringstream out_, error_;
    Console console_{out_, error_};
    ProgressBar bar_{console_};
};

TEST_F(ProgressTest, ShowsTitleAndShare) {
    bar_.OnStart("Exporting object...");
    EXPECT_EQ(Written(), "\r[..............................]   0% Exporting object...");
    bar_.OnUpdate(50);
    EXPECT_EQ(Written(), "\r[###############...............]  50% Exporting object...");
    bar_.OnUpdate(100);
    EXPECT_EQ(Written(), "\r[##############################] 100% Exporting object...");
    bar_.OnEnd();
    EXPECT_EQ(Written(), "\r" + std::string(57, ' ') + "\r");
}

TEST_F(ProgressTest, TellsTheSecondsAndThoseThatAreLeft) {
    bar_.OnStart("Exporting object...");
    bar_.OnUpdate(40);
    Written();
    std::this_thread::sleep_for(std::chrono::milliseconds(2100));
    bar_.OnUpdate(50);
    const std::string half = Written();
    EXPECT_NE(half.find("]  50% Exporting object..., 2 s, 2 s left"), std::string::npos) << half;
    bar_.OnUpdate(1);
    EXPECT_NE(Written().find(" min left"), std::string::npos) << "198 s";
    bar_.OnUpdate(100);
    EXPECT_EQ(Written().find("left"), std::string::npos);
}

TEST_F(ProgressTest, RedrawsOnlyWhatChanges) {
    bar_.OnStart("");
    bar_.OnUpdate(7);
    Written();
    bar_.OnUpdate(7);
    EXPECT_EQ(Written(), "");
    bar_.OnUpdate(8);
    EXPECT_NE(Written(), "");
}

TEST_F(ProgressTest, StandsNumbersOutOfRangeAndLongTitles) {
    bar_.OnStart(std::string(1000, 'x') + "\n");
    EXPECT_LE(Written().size(), 80u);
    bar_.OnUpdate(-5);
    EXPECT_EQ(Written(), "") << "still 0";
    bar_.OnUpdate(2000000000);
    EXPECT_NE(Written().find("] 100%"), std::string::npos);
}

TEST_F(ProgressTest, AnExportStandsWhereItsLastStepLeftIt) {
    ExportProgress progress(console_);
    progress.OnStart("");
    progress.OnUpdate(40);
    EXPECT_EQ(Written().find(" 40%"), std::string::npos) << "that step only begins";
    progress.OnWork(0.5);
    EXPECT_NE(Written().find("]  20%"), std::string::npos);
    progress.OnWork(1);
    EXPECT_NE(Written().find("]  40%"), std::string::npos);
    progress.OnUpdate(100);
    EXPECT_EQ(Written(), "") << "where the first step ended";
    progress.OnWork(0.5);
    EXPECT_NE(Written().find("]  70%"), std::string::npos);
    progress.OnUpdate(90);
    EXPECT_NE(Written().find("] 100%"), std::string::npos) << "it never falls";
    progress.OnStart("");
    EXPECT_NE(Written().find("]   0%"), std::string::npos);
}

// ---------------------------------------------------------------- Ctrl-C

class InterruptsTest : public testing::TestWithParam<int> {
  protected:
    InterruptsTest() { Host::Instance().CancelAtUpdate(0); }
    ~InterruptsTest() override { Host::Instance().CancelAtUpdate(0); }
};

TEST_P(InterruptsTest, FirstPressesCancel) {
    {
        Interrupts interrupts;
        interrupts.PressCancel();
        EXPECT_FALSE(GetCOREInterface()->GetCancel());
        EXPECT_EQ(interrupts.Status(), 0);
        std::raise(GetParam());
        EXPECT_TRUE(GetCOREInterface()->GetCancel());
        EXPECT_EQ(interrupts.Status(), GetParam() == SIGINT ? 130 : 143);
    }
    EXPECT_TRUE(GetCOREInterface()->GetCancel()) << "until the next export";
    Host::Instance().CancelAtUpdate(0);
    Interrupts next;
    next.PressCancel();
    EXPECT_FALSE(GetCOREInterface()->GetCancel());
    EXPECT_EQ(next.Status(), 0);
}

TEST_P(InterruptsTest, InterruptThatThePlugInDidNotSeeCancelsNothing) {
    {
        Interrupts interrupts;
        interrupts.PressCancel();
        std::raise(GetParam());
    }
    EXPECT_FALSE(GetCOREInterface()->GetCancel());
}

TEST_P(InterruptsTest, FormerHandlersComeBack) {
    const auto former = std::signal(GetParam(), SIG_DFL);
    {
        Interrupts interrupts;
        interrupts.PressCancel();
        std::raise(GetParam());
    }
    EXPECT_EQ(std::signal(GetParam(), former), SIG_DFL);
}

TEST_P(InterruptsTest, IgnoredSignalsStayIgnored) {
    const auto former = std::signal(GetParam(), SIG_IGN);
    {
        Interrupts interrupts;
        interrupts.PressCancel();
        std::raise(GetParam());
        EXPECT_FALSE(GetCOREInterface()->GetCancel());
        EXPECT_EQ(interrupts.Status(), 0);
    }
    EXPECT_EQ(std::signal(GetParam(), former), SIG_IGN);
}

#ifndef _WIN32
TEST_P(InterruptsTest, ProgramEndsAtOnceBeforeTheExport) {
    EXPECT_EXIT(
        {
            const Interrupts interrupts;
            std::raise(GetParam());
            std::_Exit(0);
        },
        testing::ExitedWithCode(GetParam() == SIGINT ? 130 : 143), "");
}

TEST_P(InterruptsTest, TheProgramsStartAndEndHaveNoGap) {
    EXPECT_EXIT(
        {
            CatchInterrupts();
            std::raise(GetParam());
            std::_Exit(0);
        },
        testing::ExitedWithCode(GetParam() == SIGINT ? 130 : 143), "");
    // What an export has put in place is not taken back.
    EXPECT_EXIT(
        {
            CatchInterrupts();
            {
                Interrupts interrupts;
                interrupts.PressCancel();
            }
            std::raise(GetParam());
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), "");
}

TEST_P(InterruptsTest, SecondEndsTheProgram) {
    for (const int first : {SIGINT, SIGTERM}) {
        EXPECT_EXIT(
            {
                Interrupts interrupts;
                interrupts.PressCancel();
                std::raise(first);
                std::raise(GetParam());
                std::_Exit(0);
            },
            testing::ExitedWithCode(GetParam() == SIGINT ? 130 : 143), "");
    }
}
#endif

INSTANTIATE_TEST_SUITE_P(Signals, InterruptsTest, testing::Values(SIGINT, SIGTERM));

}  // namespace
}  // namespace maxhost::app
