// Reading where memory is missing. A program of its own, since it replaces the allocation
// functions.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <sstream>
#include <string>

#include "kta/check/good_export.h"
#include "kta/reader.h"

namespace {

// How many allocations succeed before they fail, and whether all fail from there on. The test's own
// allocations succeed.
struct Failing {
    bool on = false;
    bool forGood = false;
    long left = 0;
    long made = 0;
} g_failing;

bool Fails() {
    if (!g_failing.on) {
        return false;
    }
    ++g_failing.made;
    if (g_failing.left > 0) {
        --g_failing.left;
        return false;
    }
    const bool fails = g_failing.left == 0;
    g_failing.left = g_failing.forGood ? 0 : -1;
    return fails;
}

void* Allocate(std::size_t size) {
    void* const block = Fails() ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    return block;
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
void operator delete(void* block) noexcept {
    std::free(block);
}
void operator delete[](void* block) noexcept {
    std::free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    std::free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    std::free(block);
}

namespace {

// Whether memory was missing, as the reading says.
template <typename Read>
bool LacksMemory(Read read, long allocations, bool forGood) {
    g_failing = {.on = true, .forGood = forGood, .left = allocations};
    const kta::Reading reading = read();
    g_failing.on = false;
    EXPECT_TRUE(reading.inputError == "" || reading.inputError == "out of memory" ||
                reading.inputError == "is too large for the memory there is")
        << reading.inputError;
    EXPECT_TRUE(reading.Good() || !reading.file) << allocations;
    return !reading.Good();
}

// Fails each allocation of a reading in turn, alone and with all that follow.
template <typename Read>
void FailEach(Read read) {
    for (const bool forGood : {false, true}) {
        long allocations = 0;
        while (LacksMemory(read, allocations, forGood)) {
            ++allocations;
        }
        EXPECT_GE(allocations, 10) << "hardly any allocation was tried";
    }
}

TEST(ReadingWithoutMemory, OfBytesSaysSo) {
    const kta::DraftExport drafts = kta::GoodExport();
    for (const kta::DraftFile& file : {drafts.actor, drafts.sampled, drafts.keyframed}) {
        const kta::FileBytes bytes = file.Bytes();
        FailEach([&] { return kta::Read(bytes); });
    }
}

// Faults take memory too.
TEST(ReadingWithoutMemory, OfFaultyBytesSaysSo) {
    kta::DraftExport drafts = kta::GoodExport();
    drafts.actor.chunks[kta::kFigure].Put(offsetof(KTANode, isBone), std::uint8_t{2});
    const kta::FileBytes bytes = drafts.actor.Bytes();
    const std::size_t faults = kta::Read(bytes).faults.size();
    for (long allocations = 0; allocations < 200; ++allocations) {
        g_failing = {.on = true, .forGood = true, .left = allocations};
        const kta::Reading reading = kta::Read(bytes);
        g_failing.on = false;
        EXPECT_TRUE(reading.inputError != "" || reading.faults.size() == faults) << allocations;
    }
}

TEST(ReadingWithoutMemory, OfAStreamSaysSo) {
    const kta::FileBytes bytes = kta::GoodExport().sampled.Bytes();
    std::istringstream stream(std::string(bytes.begin(), bytes.end()));
    FailEach([&] {
        stream.clear();
        stream.seekg(0);
        return kta::Read(stream);
    });
}

class ThrowingBuffer : public std::stringbuf {
  public:
    using std::stringbuf::stringbuf;

  protected:
    std::streamsize xsgetn(char* text, std::streamsize size) override {
        if (++calls_ > 1) {
            throw std::runtime_error("the connection is gone");
        }
        return std::stringbuf::xsgetn(text, size);
    }

  private:
    int calls_ = 0;
};

TEST(ReadingAStreamThatFails, SaysSo) {
    const kta::FileBytes bytes = kta::GoodExport().sampled.Bytes();
    for (const bool throwing : {false, true}) {
        ThrowingBuffer buffer(std::string(bytes.begin(), bytes.end()));
        std::istream stream(&buffer);
        if (throwing) {
            stream.exceptions(std::ios::badbit | std::ios::failbit);
        }
        const kta::Reading reading = kta::Read(stream);
        EXPECT_FALSE(reading.file);
        EXPECT_TRUE(reading.inputError.starts_with("cannot be read")) << reading.inputError;
    }
}

}  // namespace
