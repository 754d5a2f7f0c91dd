#include "host/app/model_reader.h"

#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <future>
#include <new>
#include <span>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "host/app/child_process.h"
#include "host/app/places.h"
#include "host/assimp/import.h"
#include "host/assimp/process/scene_blob.h"
#include "host/assimp/source_file.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;
using import::CheckSourceFile;
using import::ImportChoices;
using import::ImportedScene;
using import::ImportError;
using import::NoMemoryWithin;
using import::NoTimeWithin;
using import::ReaderLimits;
using import::ReportPercent;

// The arguments of the program that reads: this word, the file, and the choices.
constexpr char kAsReader[] = "--model-reader";

// The exit status of a reader that took too much time.
constexpr int kOutOfTime = 99;

// How the reader starts its answer, and what stands before it: a byte with the percentage follows.
constexpr char kResult = 'R';
constexpr char kRefusal = 'E';
constexpr char kProgress = 'P';

// A choice as an argument: "-" where it is not made.
template <typename Number>
std::string ArgumentOf(const std::optional<Number>& number) {
    return number ? std::to_string(*number) : "-";
}
std::string ArgumentOf(const std::optional<std::string>& text) {
    return text ? "=" + *text : "-";
}

template <typename Number>
void Take(const std::string& argument, std::optional<Number>& choice) {
    Number number{};
    const char* const end = argument.data() + argument.size();
    if (std::from_chars(argument.data(), end, number).ec == std::errc()) {
        choice = number;
    }
}
void Take(const std::string& argument, std::optional<std::string>& choice) {
    if (argument.starts_with('=')) {
        choice = argument.substr(1);
    }
}

std::vector<std::string> CommandFor(const std::string& path, const ImportChoices& choices) {
    return {ProgramFile().string(),
            kAsReader,
            path,
            ArgumentOf(choices.animation),
            ArgumentOf(choices.frameRate),
            ArgumentOf(choices.up),
            ArgumentOf(choices.clip),
            choices.convertsUnit ? "unit" : "-"};
}

// ---------------------------------------------------------------- in the process that reads

// Ends this process when it has taken so much of the processor's time; other programs' does not
// count.
void LimitTime(unsigned cpuSeconds) {
    std::thread([cpuSeconds] {
        constexpr std::uint64_t kUnits = 10'000'000;  // a second's
        const auto inUnits = [](const FILETIME& time) {
            return std::uint64_t{time.dwHighDateTime} << 32 | time.dwLowDateTime;
        };
        for (;;) {
            constexpr DWORD kBetweenLooks = 500;  // milliseconds
            Sleep(kBetweenLooks);
            FILETIME start{}, end{}, kernel{}, user{};
            GetProcessTimes(GetCurrentProcess(), &start, &end, &kernel, &user);
            if (inUnits(kernel) + inUnits(user) > cpuSeconds * kUnits) {
                TerminateProcess(GetCurrentProcess(), kOutOfTime);
            }
        }
    }).detach();
}

struct ReaderJob {
    std::string path;
    ImportChoices choices{};
    bool hasBegun = false;  // to put its result
};

void Write(std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size()) {
        std::_Exit(EXIT_FAILURE);
    }
}

// Within a result the status alone can tell what went wrong.
void Refuse(const ReaderJob& job, const std::string& reason) {
    if (job.hasBegun) {
        std::_Exit(reason == import::kNoMemory ? import::kReaderLacksMemory : EXIT_FAILURE);
    }
    Write(kRefusal + reason);
}

DWORD WINAPI RunReaderJob(void* argument) {
    ReaderJob& job = *static_cast<ReaderJob*>(argument);
    const auto report = [](int percent) {
        const char bytes[] = {kProgress, static_cast<char>(percent)};
        Write({bytes, sizeof(bytes)});
        std::fflush(stdout);
    };
    const auto put = [&job](std::string_view bytes) {
        if (!std::exchange(job.hasBegun, true)) {
            Write({&kResult, 1});
        }
        Write(bytes);
    };
    try {
        import::ReadAndPut(job.path, job.choices, report, put);
    } catch (const std::bad_alloc&) {
        Refuse(job, import::kNoMemory);
    } catch (const std::exception& failure) {
        Refuse(job, failure.what());
    }
    return 0;
}

// ---------------------------------------------------------------- in the one that waits

// A file that is gone with this object, and with this process, however that ends.
class TemporaryFile {
  public:
    TemporaryFile() {
        wchar_t directory[MAX_PATH + 1];
        wchar_t name[MAX_PATH + 1];
        if (GetTempPathW(MAX_PATH, directory) == 0 ||
            GetTempFileNameW(directory, L"hdo", 0, name) == 0) {
            Fail();
        }
        path_ = name;
        constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
        constexpr DWORD kKind = FILE_ATTRIBUTE_TEMPORARY | FILE_FLAG_DELETE_ON_CLOSE;
        handle_ = CreateFileW(name, GENERIC_READ | DELETE, kShare, nullptr, OPEN_EXISTING, kKind,
                              nullptr);
        if (handle_ == INVALID_HANDLE_VALUE) {
            std::error_code ignored;
            fs::remove(path_, ignored);
            Fail();
        }
    }
    ~TemporaryFile() { CloseHandle(handle_); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const fs::path& Path() const { return path_; }

    // Fills the beginning of `room` with what stands from `begin` on; returns how many bytes.
    std::size_t Read(std::uint64_t begin, std::span<char> room) const {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(begin);
        place.OffsetHigh = static_cast<DWORD>(begin >> 32);
        constexpr std::size_t kAtOnce = 1 << 30;
        const DWORD size = static_cast<DWORD>(std::min(room.size(), kAtOnce));
        DWORD count = 0;
        return ReadFile(handle_, room.data(), size, &count, &place) ? count : 0;
    }

  private:
    [[noreturn]] static void Fail() {
        throw ImportError("no process to read it: no temporary file for what it reads");
    }

    fs::path path_;
    HANDLE handle_;
};

// What the reader writes to the file, as it comes.
class Answer {
  public:
    Answer(const TemporaryFile& file, const ReportPercent& report) : file_(file), report_(report) {}

    // Reads the reports that came since the last time; where none did, the last one once more. True
    // when what follows is no report.
    bool HasBegun() {
        const std::uint64_t former = begin_;
        char bytes[2];
        std::size_t count = 0;
        while ((count = file_.Read(begin_, bytes)) == sizeof(bytes) && bytes[0] == kProgress) {
            percent_ = bytes[1];
            report_(percent_);
            begin_ += sizeof(bytes);
        }
        if (begin_ == former) {
            report_(percent_);
        }
        return count > 0 && bytes[0] != kProgress;
    }

    // When all of it is there, and has begun.
    ImportedScene Take(const ReaderLimits& limits) {
        char kind = 0;
        Read({&kind, 1});
        if (kind == kResult) {
            const auto get = [this](std::span<char> room) { return Read(room); };
            return import::DecodeScene(get, limits.memory);
        }
        std::string refusal;
        char bytes[1 << 10];
        while (const std::size_t count = Read(bytes)) {
            refusal.append(bytes, count);
        }
        throw ImportError(refusal == import::kNoMemory ? NoMemoryWithin(limits) : refusal);
    }

  private:
    std::size_t Read(std::span<char> room) {
        const std::size_t count = file_.Read(begin_, room);
        begin_ += count;
        return count;
    }

    const TemporaryFile& file_;
    const ReportPercent& report_;
    std::uint64_t begin_ = 0;  // of what was not read yet
    int percent_ = 0;
};

std::string HowItEnded(const ProcessEnd& end, const ReaderLimits& limits) {
    using How = ProcessEnd::How;
    if (end.how == How::ranOutOfMemory ||
        (end.how == How::exited && end.number == import::kReaderLacksMemory)) {
        return NoMemoryWithin(limits);
    }
    if (end.how == How::crashed) {
        return "cannot be read: the reader crashed on it (" + CauseOfCrash(end) + ")";
    }
    if (end.number == kOutOfTime) {
        return NoTimeWithin(limits);
    }
    return "cannot be read: the reader gave up with status " + std::to_string(end.number);
}

}  // namespace

ImportedScene ReadModelInProcess(const std::string& given, const ImportChoices& choices,
                                 const ReportPercent& report) {
    const std::string path = import::PathWithoutDots(given);
    CheckSourceFile(path);
    const ReaderLimits limits = import::LimitsFor(import::SourceSize(path));
    const std::vector<std::string> command = CommandFor(path, choices);
    const TemporaryFile output;
    Answer answer(output, report);
    ProcessEnd end;
    try {
        ProcessLimits ends;
        ends.memory = limits.memory;
        std::future<ProcessEnd> process = std::async(
            std::launch::async, [&] { return RunProcess(command, output.Path(), "NUL", ends); });
        constexpr std::chrono::milliseconds kBetweenLooks(200);
        while (process.wait_for(kBetweenLooks) != std::future_status::ready) {
            answer.HasBegun();
        }
        end = process.get();
    } catch (const std::system_error& error) {
        throw ImportError("no process to read it: " + error.code().message());
    }
    if (end.how != ProcessEnd::How::exited || end.number != EXIT_SUCCESS || !answer.HasBegun()) {
        throw ImportError(HowItEnded(end, limits));
    }
    return answer.Take(limits);
}

std::optional<int> ServeAsModelReader(const std::vector<std::string>& arguments) {
    constexpr std::size_t kArguments = 7;
    if (arguments.size() != kArguments || arguments[0] != kAsReader) {
        return std::nullopt;
    }
    ReaderJob job{arguments[1]};
    Take(arguments[2], job.choices.animation);
    Take(arguments[3], job.choices.frameRate);
    Take(arguments[4], job.choices.up);
    Take(arguments[5], job.choices.clip);
    job.choices.convertsUnit = arguments[6] == "unit";
    LimitTime(import::LimitsFor(import::SourceSize(job.path)).cpuSeconds);
    _setmode(_fileno(stdout), _O_BINARY);
    // Readers recurse through hierarchies.
    const HANDLE thread =
        CreateThread(nullptr, static_cast<SIZE_T>(import::kReaderStack), RunReaderJob, &job,
                     STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    if (thread == nullptr) {
        return EXIT_FAILURE;
    }
    WaitForSingleObject(thread, INFINITE);
    // Past the destructors of what the reader left behind.
    std::_Exit(std::fflush(stdout) == 0 ? EXIT_SUCCESS : EXIT_FAILURE);
}

}  // namespace maxhost::app
