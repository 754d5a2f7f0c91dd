// Memory runs out: nothing crashes, leaks or keeps a part.
#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <new>
#include <string>

#include "core/array.h"
#include "core/exception.h"
#include "core/log.h"
#include "core/memory_manager.h"
#include "core/pointer_list.h"
#include "core/string.h"
#include "tests/support/debug_output.h"
#include "tests/support/temporary_directory.h"
#include "wrapped_calls.h"

namespace {

using Plinth::String;

class FailingAllocation : public testing::Test {
  protected:
    // The services exist before memory runs out.
    void SetUp() override {
        Plinth::GetMemoryManager();
        Plinth::GetLogManager();
    }
};

TEST_F(FailingAllocation, StringsEndWithNullData) {
    String text("abc");
    const FailingReallocations failing(0);
    EXPECT_EQ(String("abc").Data(), nullptr);
    EXPECT_EQ(String('a').Data(), nullptr);
    EXPECT_EQ(String(text).Data(), nullptr);
    EXPECT_EQ(String("a", 1, "b", 1).Data(), nullptr);
    EXPECT_EQ((text + "d").Data(), nullptr);
    EXPECT_STREQ(text.Text(), "abc");
    EXPECT_EQ(failing.Refused(), 5);

    text.Resize(100);
    EXPECT_EQ(text.Data(), nullptr);
    text.Append("abc");
    text.Append('d');
    EXPECT_STREQ(text.Text(), "");
    EXPECT_TRUE(text == "");
}

TEST_F(FailingAllocation, StringOperationsLoseTheTextWhole) {
    String appended("abc");
    String assigned("abc");
    String copied("abc");
    String formatted("abc");
    const String source("source");
    const FailingReallocations failing(0);
    appended.Append("defghi");
    EXPECT_EQ(appended.Data(), nullptr);
    assigned.Assign("defghi");
    EXPECT_EQ(assigned.Data(), nullptr);
    copied = source;
    EXPECT_EQ(copied.Data(), nullptr);
    formatted.Format("%d", 1);
    EXPECT_EQ(formatted.Data(), nullptr);
    formatted.FormatAdd("%d", 1);
    EXPECT_EQ(formatted.Data(), nullptr);
}

// No request for 2 GiB is made here: the next one is refused before its size matters.
TEST_F(FailingAllocation, StringLengthsEndBelowTheLargestNumber) {
    constexpr int kMaxLength = INT_MAX - 1;
    const FailingReallocations failing(0);
    String text;
    text.Resize(INT_MAX);
    EXPECT_EQ(text.Length(), kMaxLength);
    EXPECT_EQ(text.MaxLength(), kMaxLength);
    text.Resize(10, INT_MAX);
    EXPECT_EQ(text.Length(), 10);
    EXPECT_EQ(text.MaxLength(), kMaxLength);
    EXPECT_EQ(failing.Refused(), 2);
}

TEST_F(FailingAllocation, TextsThatWouldPassTheLargestLengthTogetherAreLost) {
    String text("abc");
    text.Append("x", INT_MAX - 3);
    EXPECT_EQ(text.Data(), nullptr);
    EXPECT_EQ(String("a", INT_MAX - 5, "b", 100).Data(), nullptr);
    EXPECT_EQ(String("a", INT_MAX, "b", INT_MAX).Data(), nullptr);
}

// One allocation is refused, and the next one is not.
TEST_F(FailingAllocation, NoPartIsKeptWhenMemoryComesBack) {
    const String left("left");
    for (int failing = 0; failing < 3; ++failing) {
        const FailingReallocations one(failing, 1);
        const String sum = left + "right";
        EXPECT_TRUE(sum.Data() == nullptr || sum == "leftright") << failing << sum.Text();
    }
    String text("abc");
    {
        const FailingReallocations one(0, 1);
        text.FormatAdd("%d", 1);
        EXPECT_EQ(one.Refused(), 1);
    }
    EXPECT_EQ(text.Data(), nullptr);
}

TEST_F(FailingAllocation, RemovalNeedsNoMemoryOrLeavesTheText) {
    String text("a-b+c--d");
    const FailingReallocations failing(0);
    EXPECT_FALSE(text.RemoveAll("-"));
    EXPECT_STREQ(text.Data(), "a-b+c--d");
    EXPECT_TRUE(text.RemoveFirst("-"));
    EXPECT_TRUE(text.RemoveChars("+-"));
    EXPECT_STREQ(text.Data(), "abcd");
}

TEST_F(FailingAllocation, StringsRecover) {
    String text("abc");
    {
        const FailingReallocations failing(0);
        text.Append("def");
    }
    EXPECT_EQ(text.Data(), nullptr);
    text.Append("ghi");
    EXPECT_STREQ(text.Text(), "ghi");
    EXPECT_EQ(text.Length(), 3);
}

TEST_F(FailingAllocation, ArraysStayAsTheyAre) {
    Plinth::Array<int> array;
    array.Add(1);
    array.Add(2);
    const FailingReallocations failing(0);
    EXPECT_THROW(array.Add(3), std::bad_alloc);
    EXPECT_THROW(array.Resize(50), std::bad_alloc);
    EXPECT_THROW(array.Reserve(50), std::bad_alloc);
    EXPECT_EQ(failing.Refused(), 3);
    ASSERT_EQ(array.Count(), 2);
    EXPECT_EQ(array.Capacity(), 2);
    EXPECT_EQ(array[0], 1);
    EXPECT_EQ(array[1], 2);
}

// Where memory ends at each of the index's requests in turn.
TEST_F(FailingAllocation, KeyIndexStaysAsItIs) {
    for (int failing = 0; failing < 3; ++failing) {
        Plinth::KeyIndex index;
        for (int i = 0; i < 16; ++i) {
            index.Set(i, i);
        }
        const FailingReallocations refusing(failing);
        EXPECT_THROW(index.Set(16, 16), std::bad_alloc);
        index.Set(0, 100);
        int value = -1;
        EXPECT_FALSE(index.Find(16, value));
        ASSERT_TRUE(index.Find(0, value));
        EXPECT_EQ(value, 100);
    }
}

// Where memory ends at each of the list's requests in turn.
TEST_F(FailingAllocation, PointerListStaysAsItIs) {
    int objects[2] = {};
    for (int failing = 0; failing < 3; ++failing) {
        Plinth::PointerList<int> list;
        {
            const FailingReallocations refusing(failing);
            EXPECT_THROW(list.Add(&objects[0]), std::bad_alloc);
            EXPECT_EQ(refusing.Refused(), 1);
        }
        EXPECT_EQ(list.Count(), 0);
        EXPECT_EQ(list.Find(&objects[0]), -1);
        EXPECT_EQ(list.Add(&objects[1]), 0);
        EXPECT_EQ(list.Add(&objects[0]), 1);
        const FailingReallocations refusing(0);
        EXPECT_THROW(list.Reserve(100), std::bad_alloc);
        EXPECT_EQ(list.Add(&objects[0]), 1);
        EXPECT_EQ(list.Count(), 2);
    }
}

class Sink : public Plinth::LogCallback {
  public:
    explicit Sink(bool& destroyed) : destroyed_(destroyed) {}
    ~Sink() override { destroyed_ = true; }
    void Log(const String&) override {}

  private:
    bool& destroyed_;
};

TEST_F(FailingAllocation, ASinkThatCannotBeListedIsDestroyed) {
    Plinth::LogManager manager;
    bool destroyed = false;
    Sink* const sink = new Sink(destroyed);
    const FailingReallocations failing(0);
    EXPECT_THROW(manager.AddLogCallback(sink), std::bad_alloc);
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(manager.CallbackCount(), 0);
}

TEST_F(FailingAllocation, ALogFileThatCannotBeMadeIsNoSink) {
    const support::TemporaryDirectory directory;
    const String name(directory.PathOf("log").c_str());
    for (int failing = 0; failing < 2; ++failing) {
        Plinth::LogManager manager;
        const FailingNews refusing(failing, 1);
        EXPECT_THROW(manager.AddLogFileCallback(name), std::bad_alloc);
        EXPECT_EQ(refusing.Refused(), 1);
        EXPECT_EQ(manager.CallbackCount(), 0);
    }
}

// Neither the name of the sink's file nor the file's own copy of it.
TEST_F(FailingAllocation, ALogFileWithoutItsNameIsNoSink) {
    const support::TemporaryDirectory directory;
    const std::string path = directory.PathOf("log");
    for (int failing = 0; failing < 2; ++failing) {
        Plinth::LogManager manager;
        const FailingReallocations refusing(failing, 1);
        EXPECT_THROW(manager.AddLogFileCallback(path.c_str()), std::bad_alloc);
        EXPECT_EQ(manager.CallbackCount(), 0);
        EXPECT_FALSE(std::filesystem::exists(path));
    }
}

TEST_F(FailingAllocation, ALineOfTheLogCallNeedsNoMemory) {
    const support::TemporaryDirectory directory;
    const std::string path = directory.PathOf("log");
    const support::DebugOutput debugger;
    Plinth::LogFile file(path.c_str());
    const std::string longest(4095, 'x');
    const String message(longest.c_str());
    const String tooLong((longest + "x").c_str());
    {
        const FailingReallocations failing(0);
        file.WriteLine(message, Plinth::kLogImportant, String());
        EXPECT_EQ(failing.Refused(), 0);
        EXPECT_THROW(file.WriteLine(tooLong, Plinth::kLogNormal, String()), std::bad_alloc);
    }
    file.Close();
    EXPECT_EQ(support::ReadFile(path), "HIGH: " + longest + "\n");
    EXPECT_EQ(debugger.Text(), "HIGH: " + longest + "\n");
}

// The message itself needs memory.
TEST_F(FailingAllocation, ALogCallThatCannotBeMadeSaysSo) {
    const FailingReallocations failing(0);
    EXPECT_THROW(Plinth::Log("text"), std::bad_alloc);
}

class Holder : public Plinth::InstanceManagerBase {
  public:
    explicit Holder(bool& destroyed) : destroyed_(destroyed) {}
    ~Holder() override { destroyed_ = true; }
    void DestroyInstance() override {}

  private:
    bool& destroyed_;
};

TEST_F(FailingAllocation, AHolderThatCannotBeListedIsDestroyed) {
    bool destroyed = false;
    Holder* const holder = new Holder(destroyed);
    Plinth::InstanceRegistry registry;
    const FailingReallocations failing(0);
    EXPECT_THROW(registry.Register(holder), std::bad_alloc);
    EXPECT_TRUE(destroyed);
    EXPECT_EQ(registry.Count(), 0);
}

TEST_F(FailingAllocation, BlocksAreRefused) {
    Plinth::MemoryManager manager;
    {
        const FailingReallocations failing(0);
        EXPECT_THROW(manager.AddBlock(1000), std::bad_alloc);
        EXPECT_THROW(manager.AllocateInBlocks(10, 1, 16, 1), std::bad_alloc);
        EXPECT_EQ(failing.Refused(), 2);
    }
    for (int i = 0; i < 2; ++i) {
        const FailingNews failing(0, 1);
        EXPECT_THROW(manager.AddBlock(1000), std::bad_alloc);
        EXPECT_EQ(failing.Refused(), 1);
    }
    EXPECT_EQ(manager.Statistics().numBlocks, 0u);
    EXPECT_EQ(manager.Statistics().blockMemory, 0u);
}

TEST_F(FailingAllocation, ShrinkingTheBlockListNeedsNoMemory) {
    Plinth::MemoryManager manager;
    void* const inFirst = manager.AllocateInBlocks(60000, 1, 16, 1);
    void* const inSecond = manager.AllocateInBlocks(60000, 1, 16, 1);
    ASSERT_EQ(manager.Statistics().numBlocks, 2u);
    {
        const FailingReallocations failing(0);
        manager.FreeInBlocks(inFirst);
        EXPECT_EQ(failing.Refused(), 1);
    }
    EXPECT_EQ(manager.Statistics().numBlocks, 1u);
    manager.FreeInBlocks(inSecond);
    EXPECT_EQ(manager.Statistics().numBlocks, 0u);
}

}  // namespace
