#include "core/log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/support/debug_output.h"
#include "tests/support/temporary_directory.h"

namespace {

using Plinth::Log;
using Plinth::LogManager;
using Plinth::String;
using support::DebugOutput;

// A sink that notes what it sees, and its end.
class RecordingSink : public Plinth::LogCallback {
  public:
    RecordingSink(std::string name, std::vector<std::string>& events)
        : name_(std::move(name)), events_(events) {}
    ~RecordingSink() override { events_.push_back(name_ + " destroyed"); }
    void Log(const String& message) override { events_.push_back(name_ + ": " + message.Text()); }

  private:
    std::string name_;
    std::vector<std::string>& events_;
};

// The log manager that the log call uses, without sinks before and after.
class LogTest : public testing::Test {
  protected:
    LogTest() : path(directory.PathOf("KTAExporter.log")), manager(Plinth::GetLogManager()) {
        manager.ClearLogCallbacks();
    }
    ~LogTest() override { manager.ClearLogCallbacks(); }

    support::TemporaryDirectory directory;
    std::string path;
    LogManager& manager;
    DebugOutput debugger;
};

TEST_F(LogTest, ClassTree) {
    EXPECT_TRUE((std::is_base_of_v<Plinth::DiskFile, Plinth::LogFile>));
    EXPECT_TRUE((std::is_base_of_v<Plinth::LogCallback, Plinth::LogFileCallback>));
    EXPECT_EQ(sizeof(Plinth::LogFile), sizeof(Plinth::DiskFile));
}

TEST_F(LogTest, AMessageIsWrittenOnceToFileAndDebugger) {
    manager.AddLogFileCallback(path.c_str());
    Log("- Exporting node '%s'", "Bip01");
    manager.ClearLogCallbacks();
    EXPECT_EQ(support::ReadFile(path), support::OnDisk("- Exporting node 'Bip01'\n"));
    EXPECT_EQ(debugger.Messages(), std::vector<std::string>{"- Exporting node 'Bip01'\n"});
}

TEST_F(LogTest, LinesStandInOrder) {
    manager.AddLogFileCallback(path.c_str());
    Log("+ Translation = %f, %f, %f", 1.0, -2.5, 0.0);
    Log("100%%");
    Log("%d nodes", 3);
    manager.ClearLogCallbacks();
    const std::string expected = "+ Translation = 1.000000, -2.500000, 0.000000\n100%\n3 nodes\n";
    EXPECT_EQ(support::ReadFile(path), support::OnDisk(expected));
    EXPECT_EQ(debugger.Text(), expected);
}

TEST_F(LogTest, NothingIsWrittenAfterClear) {
    manager.AddLogFileCallback(path.c_str());
    Log("before");
    manager.ClearLogCallbacks();
    Log("after");
    EXPECT_EQ(support::ReadFile(path), support::OnDisk("before\n"));
    EXPECT_EQ(debugger.Text(), "before\n");
    EXPECT_EQ(manager.CallbackCount(), 0);
}

TEST_F(LogTest, EmptyOutputIsAnEmptyLine) {
    manager.AddLogFileCallback(path.c_str());
    Log("%s", "");
    manager.ClearLogCallbacks();
    EXPECT_EQ(support::ReadFile(path), support::OnDisk("\n"));
    EXPECT_EQ(debugger.Text(), "\n");
}

TEST_F(LogTest, ALineEndIsAMessageLikeAnyOther) {
    manager.AddLogFileCallback(path.c_str());
    Log("\n");
    manager.ClearLogCallbacks();
    EXPECT_EQ(support::ReadFile(path), support::OnDisk("\n\n"));
}

TEST_F(LogTest, EveryLineIsOnDiskAtOnce) {
    manager.AddLogFileCallback(path.c_str());
    EXPECT_EQ(std::filesystem::file_size(path), 0u);
    Log("one");
    EXPECT_EQ(std::filesystem::file_size(path), support::OnDisk("one\n").size());
    Log("two");
    EXPECT_EQ(std::filesystem::file_size(path), support::OnDisk("one\ntwo\n").size());
}

TEST_F(LogTest, AnExistingLogIsReplaced) {
    support::WriteFile(path, "an earlier export\n");
    manager.AddLogFileCallback(path.c_str());
    Log("now");
    manager.ClearLogCallbacks();
    EXPECT_EQ(support::ReadFile(path), support::OnDisk("now\n"));
}

TEST_F(LogTest, AMessageIsCutAt4095Characters) {
    manager.AddLogFileCallback(path.c_str());
    const std::string text(5000, 'x');
    Log("%s", text.c_str());
    Log("%s", text.substr(0, 4095).c_str());
    Log("%s", text.substr(0, 4094).c_str());
    manager.ClearLogCallbacks();
    const std::string cut = text.substr(0, 4095) + "\n";
    EXPECT_EQ(support::ReadFile(path), support::OnDisk(cut + cut + text.substr(0, 4094) + "\n"));
}

TEST_F(LogTest, AFileThatCannotBeOpenedLeavesTheDebugger) {
    Plinth::LogFile* const file =
        manager.AddLogFileCallback(directory.PathOf("missing/KTAExporter.log").c_str());
    ASSERT_NE(file, nullptr);
    EXPECT_FALSE(file->IsOpen());
    EXPECT_EQ(manager.CallbackCount(), 1);
    Log("lost");
    EXPECT_EQ(debugger.Text(), "lost\n");
}

TEST_F(LogTest, TheReturnedFileIsTheSinksOwn) {
    Plinth::LogFile* const file = manager.AddLogFileCallback(path.c_str());
    ASSERT_NE(file, nullptr);
    EXPECT_TRUE(file->IsOpen());
    EXPECT_STREQ(file->Name().Data(), path.c_str());
    EXPECT_EQ(file->Mode(), 2u);
    file->Close();
    Log("debugger only");
    EXPECT_EQ(support::ReadFile(path), "");
    EXPECT_EQ(debugger.Text(), "debugger only\n");
}

TEST_F(LogTest, LogMessageTakesABuiltString) {
    manager.AddLogFileCallback(path.c_str());
    String message("Bones influencing ");
    message.FormatAdd("node '%s':", "Box01");
    manager.LogMessage(message);
    manager.LogMessage(String());
    manager.ClearLogCallbacks();
    EXPECT_EQ(support::ReadFile(path), support::OnDisk("Bones influencing node 'Box01':\n\n"));
}

TEST_F(LogTest, ABuiltStringIsNeverCut) {
    manager.AddLogFileCallback(path.c_str());
    const std::string text(10000, 'y');
    manager.LogMessage(String(text.c_str()));
    manager.ClearLogCallbacks();
    EXPECT_EQ(support::ReadFile(path), support::OnDisk(text + "\n"));
}

// ---------------------------------------------------------------- the line writer

TEST_F(LogTest, OnlyImportantLinesHaveAPrefix) {
    Plinth::LogFile file(path.c_str());
    file.WriteLine("one", 1, "never written");
    file.WriteLine("two", 2, "never written");
    file.WriteLine("three", 3, "");
    file.WriteLine("zero", 0, String());
    file.WriteLine(String(), 2, "");
    file.Close();
    const std::string expected = "one\nHIGH: two\nthree\nzero\nHIGH: \n";
    EXPECT_EQ(support::ReadFile(path), support::OnDisk(expected));
    EXPECT_EQ(debugger.Text(), expected);
}

// ---------------------------------------------------------------- the list of sinks

TEST(LogManagerTest, CallsSinksInOrder) {
    std::vector<std::string> events;
    LogManager manager;
    manager.AddLogCallback(new RecordingSink("a", events));
    manager.AddLogCallback(new RecordingSink("b", events));
    manager.LogMessage("x");
    EXPECT_EQ(events, (std::vector<std::string>{"a: x", "b: x"}));
}

TEST(LogManagerTest, NullIsNotAdded) {
    LogManager manager;
    manager.AddLogCallback(nullptr);
    EXPECT_EQ(manager.CallbackCount(), 0);
}

TEST(LogManagerTest, RemovesByIndexAndClosesTheGap) {
    std::vector<std::string> events;
    LogManager manager;
    for (const char* name : {"a", "b", "c"}) {
        manager.AddLogCallback(new RecordingSink(name, events));
    }
    manager.RemoveLogCallback(-1);
    manager.RemoveLogCallback(3);
    EXPECT_TRUE(events.empty());
    manager.RemoveLogCallback(1);
    EXPECT_EQ(events, std::vector<std::string>{"b destroyed"});
    EXPECT_EQ(manager.CallbackCount(), 2);
    manager.LogMessage("x");
    manager.RemoveLogCallback(1);
    manager.RemoveLogCallback(0);
    manager.RemoveLogCallback(0);
    EXPECT_EQ(events, (std::vector<std::string>{"b destroyed", "a: x", "c: x", "c destroyed",
                                                "a destroyed"}));
}

TEST(LogManagerTest, ClearDestroysInListOrder) {
    std::vector<std::string> events;
    LogManager manager;
    manager.AddLogCallback(new RecordingSink("a", events));
    manager.AddLogCallback(new RecordingSink("b", events));
    manager.ClearLogCallbacks();
    EXPECT_EQ(events, (std::vector<std::string>{"a destroyed", "b destroyed"}));
    manager.ClearLogCallbacks();
    manager.AddLogCallback(new RecordingSink("c", events));
    manager.LogMessage("x");
    EXPECT_EQ(events.back(), "c: x");
}

TEST(LogManagerTest, DestructionClears) {
    std::vector<std::string> events;
    {
        LogManager manager;
        manager.AddLogCallback(new RecordingSink("a", events));
    }
    EXPECT_EQ(events, std::vector<std::string>{"a destroyed"});
}

// Logs to the manager that destroys it.
class PartingSink : public Plinth::LogCallback {
  public:
    PartingSink(LogManager& manager, std::vector<std::string>& events)
        : manager_(manager), events_(events) {}
    ~PartingSink() override { manager_.LogMessage("farewell"); }
    void Log(const String& message) override { events_.push_back(message.Text()); }

  private:
    LogManager& manager_;
    std::vector<std::string>& events_;
};

TEST(LogManagerTest, ASinkMayLogWhileItIsDestroyed) {
    std::vector<std::string> events;
    LogManager manager;
    manager.AddLogCallback(new PartingSink(manager, events));
    manager.AddLogCallback(new PartingSink(manager, events));
    manager.AddLogCallback(new RecordingSink("a", events));
    manager.RemoveLogCallback(1);
    EXPECT_EQ(events, (std::vector<std::string>{"farewell", "a: farewell"}));
    events.clear();
    manager.ClearLogCallbacks();
    EXPECT_EQ(events, (std::vector<std::string>{"a: farewell", "a destroyed"}));
}

// Clears the list that it stands in.
class ClearingSink : public Plinth::LogCallback {
  public:
    ClearingSink(LogManager& manager, std::vector<std::string>& events)
        : manager_(manager), events_(events) {}
    ~ClearingSink() override {
        events_.push_back("clearing");
        manager_.ClearLogCallbacks();
    }
    void Log(const String&) override {}

  private:
    LogManager& manager_;
    std::vector<std::string>& events_;
};

TEST(LogManagerTest, ASinkMayClearTheListWhileItIsDestroyed) {
    const std::vector<std::string> expected = {"clearing", "a destroyed", "b destroyed"};
    for (const bool all : {false, true}) {
        std::vector<std::string> events;
        LogManager manager;
        manager.AddLogCallback(new ClearingSink(manager, events));
        manager.AddLogCallback(new RecordingSink("a", events));
        manager.AddLogCallback(new RecordingSink("b", events));
        if (all) {
            manager.ClearLogCallbacks();
        } else {
            manager.RemoveLogCallback(0);
        }
        EXPECT_EQ(events, expected);
        EXPECT_EQ(manager.CallbackCount(), 0);
    }
}

TEST(LogManagerTest, TheOneManagerHasPriorityZero) {
    EXPECT_EQ(&Plinth::GetLogManager(), &Plinth::InstanceManager<LogManager>::Get());
    EXPECT_EQ(Plinth::InstanceManager<LogManager>::Holder().Priority(), 0);
}

}  // namespace
