// Readers that crash, hang or fail.
#include "host/assimp/process/reader_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/assimp/import.h"

using maxhost::import::GetResult;
using maxhost::import::ImportError;
using maxhost::import::LimitsFor;
using maxhost::import::PutResult;
using maxhost::import::ReaderLimits;
using maxhost::import::ReportPercent;
using maxhost::import::RunInReaderProcess;

namespace {

std::string FailureOf(const std::function<std::string()>& work, const ReaderLimits& limits = {}) {
    try {
        RunInReaderProcess(work, limits);
    } catch (const ImportError& error) {
        return error.what();
    }
    return "no refusal";
}

// A level of recursion that the compiler keeps.
int Recurse(int depth) {
    volatile char room[512];
    room[0] = static_cast<char>(depth);
    return depth == 0 ? 0 : Recurse(depth - 1) + (room[0] == static_cast<char>(depth) ? 1 : 0);
}

}  // namespace

TEST(ReaderProcess, HandsTheResultOver) {
    EXPECT_EQ(RunInReaderProcess([] { return std::string("a\0b", 3); }), std::string("a\0b", 3));
    EXPECT_EQ(RunInReaderProcess([] { return std::string(); }), "");
    const std::string big(50'000'000, 'x');
    EXPECT_EQ(RunInReaderProcess([&] { return big; }), big);
}

TEST(ReaderProcess, ProgressComesOverBeforeTheResult) {
    std::vector<int> seen;
    const std::string result = RunInReaderProcess(
        [](const ReportPercent& report) {
            for (const int percent : std::vector<int>{1, 50, 'R', 100}) {
                report(percent);
            }
            return std::string("P1");
        },
        {}, [&](int percent) { seen.push_back(percent); });
    EXPECT_EQ(result, "P1");
    EXPECT_EQ(seen, (std::vector<int>{1, 50, 'R', 100}));
}

TEST(ReaderProcess, AResultIsTakenAsItComes) {
    const std::string part(3'000'000, 'x');
    std::size_t most = 0, all = 0;
    RunInReaderProcess(
        [&part](const ReportPercent&, const PutResult& put) {
            for (int i = 0; i < 20; ++i) {
                put(part);
            }
        },
        {}, [](int) {},
        [&](const GetResult& get) {
            std::vector<char> room(10'000'000);
            while (const std::size_t count = get(room)) {
                most = std::max(most, count);
                all += count;
            }
        });
    EXPECT_EQ(all, 20 * part.size());
    EXPECT_LT(most, part.size());
}

TEST(ReaderProcess, WhatEndsWithinItsResultIsTold) {
    const auto breakOff = [](const std::function<void()>& end) {
        RunInReaderProcess(
            [&end](const ReportPercent&, const PutResult& put) {
                put("part");
                end();
            },
            {}, [](int) {},
            [](const GetResult& get) {
                std::array<char, 100> room;
                while (get(room) > 0) {
                }
                throw ImportError("cut off");
            });
    };
    const auto failureOf = [&breakOff](const std::function<void()>& end) -> std::string {
        try {
            breakOff(end);
        } catch (const ImportError& error) {
            return error.what();
        }
        return "no refusal";
    };
    EXPECT_EQ(failureOf([] {
                  signal(SIGSEGV, SIG_DFL);
                  raise(SIGSEGV);
              }),
              "cannot be read: the reader crashed on it (signal 11)");
    EXPECT_EQ(failureOf([] { throw std::runtime_error("too late"); }),
              "cannot be read: the reader gave up with status 1");
    EXPECT_EQ(failureOf([] { throw std::bad_alloc(); }),
              "cannot be read: not enough memory, the reader may take 512 MiB, the limit for its "
              "size (512 MiB and 400 times its bytes)");
    EXPECT_EQ(failureOf([] {}), "cut off");
}

// The child, which would go on forever, ends with what is thrown.
TEST(ReaderProcess, WhatCannotBeTakenEndsIt) {
    const auto give = [](const ReportPercent&, const PutResult& put) {
        for (;;) {
            put("more and more");
        }
    };
    EXPECT_THROW(RunInReaderProcess(
                     give, {}, [](int) {}, [](const GetResult&) { throw std::bad_alloc(); }),
                 std::bad_alloc);
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
}

TEST(ReaderProcess, ReportsStandWhereTheWorkFailsToo) {
    std::vector<int> seen;
    EXPECT_THROW(RunInReaderProcess(
                     [](const ReportPercent& report) -> std::string {
                         report(7);
                         throw std::runtime_error("no more");
                     },
                     {}, [&](int percent) { seen.push_back(percent); }),
                 ImportError);
    EXPECT_EQ(seen, std::vector<int>{7});
}

TEST(ReaderProcess, SilentWorkIsReportedTwiceASecond) {
    std::vector<int> seen;
    RunInReaderProcess(
        [](const ReportPercent& report) {
            report(30);
            usleep(1'200'000);
            return std::string();
        },
        {}, [&](int percent) { seen.push_back(percent); });
    EXPECT_GE(seen.size(), 3u);
    EXPECT_EQ(seen, std::vector<int>(seen.size(), 30));
}

TEST(ReaderProcess, ChangesNothingHere) {
    int value = 1;
    RunInReaderProcess([&] {
        value = 2;
        return std::string();
    });
    EXPECT_EQ(value, 1);
}

TEST(ReaderProcess, ExceptionsComeOver) {
    EXPECT_EQ(FailureOf([]() -> std::string { throw ImportError("the reason"); }), "the reason");
    EXPECT_EQ(FailureOf([]() -> std::string { throw std::runtime_error("other"); }), "other");
    EXPECT_EQ(FailureOf([]() -> std::string { throw std::bad_alloc(); }),
              "cannot be read: not enough memory, the reader may take 512 MiB, the limit for its "
              "size (512 MiB and 400 times its bytes)");
}

TEST(ReaderProcess, CrashesBecomeErrors) {
    EXPECT_EQ(FailureOf([]() -> std::string {
                  signal(SIGSEGV, SIG_DFL);
                  raise(SIGSEGV);
                  return "";
              }),
              "cannot be read: the reader crashed on it (signal 11)");
    EXPECT_EQ(FailureOf([]() -> std::string {
                  signal(SIGABRT, SIG_DFL);
                  std::abort();
              }),
              "cannot be read: the reader crashed on it (signal 6)");
    EXPECT_EQ(FailureOf([]() -> std::string { _exit(3); }),
              "cannot be read: the reader gave up with status 3");
    EXPECT_EQ(FailureOf([]() -> std::string { _exit(0); }),
              "cannot be read: the reader gave up with status 0");
}

TEST(ReaderProcess, HangsEnd) {
    ReaderLimits limits;
    limits.cpuSeconds = 1;
    EXPECT_EQ(
        FailureOf(
            []() -> std::string {
                volatile bool isHanging = true;
                while (isHanging) {
                }
                return "";
            },
            limits),
        "cannot be read: the reader was stopped after 1 seconds of CPU time, the limit for its "
        "size (45 s, 30 s more for each 100 MB)");
}

TEST(ReaderProcess, LimitsGrowWithTheInput) {
    EXPECT_EQ(LimitsFor(0).cpuSeconds, 45u);
    EXPECT_EQ(LimitsFor(0).memory, std::uint64_t{512} << 20);
    EXPECT_EQ(LimitsFor(200'000'000).cpuSeconds, 105u);
    EXPECT_EQ(LimitsFor(200'000'000).memory, (std::uint64_t{512} << 20) + 80'000'000'000);
    EXPECT_GE(LimitsFor(std::uint64_t{1} << 53).cpuSeconds, 1u << 31);
}

#if !defined(__SANITIZE_ADDRESS__)
TEST(ReaderProcess, MemoryEnds) {
    ReaderLimits limits;
    limits.memory = 100 << 20;
    EXPECT_EQ(FailureOf([] { return std::string(200 << 20, 'x'); }, limits),
              "cannot be read: not enough memory, the reader may take 100 MiB, the limit for its "
              "size (512 MiB and 400 times its bytes)");
    EXPECT_EQ(RunInReaderProcess([] { return std::string(20 << 20, 'x'); }, limits).size(),
              std::size_t{20} << 20);
}
#endif

TEST(ReaderProcess, WhatItPrintsIsDropped) {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    RunInReaderProcess([] {
        std::cout << "noise" << std::endl;
        std::cerr << "noise" << std::endl;
        std::fputs("noise", stderr);
        return std::string();
    });
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(ReaderProcess, ItsStackIsDeep) {
    EXPECT_EQ(RunInReaderProcess([] { return std::to_string(Recurse(200'000)); }), "200000");
}
