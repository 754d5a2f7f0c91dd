#include "host/assimp/process/reader_process.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <limits>
#include <new>
#include <system_error>
#include <utility>

#include "host/assimp/imported_scene.h"

namespace maxhost::import {
namespace {

// How the child starts its answer, and what stands before it: a byte with the percentage follows.
constexpr char kResult = 'R';
constexpr char kRefusal = 'E';
constexpr char kProgress = 'P';

[[noreturn]] void FailWith(int error) {
    throw ImportError("no process to read it: " + std::generic_category().message(error));
}

class FileDescriptor {
  public:
    explicit FileDescriptor(int number) : number_(number) {}
    ~FileDescriptor() { Close(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    void Close() {
        if (number_ >= 0) {
            close(std::exchange(number_, -1));
        }
    }
    int Number() const { return number_; }

  private:
    int number_;
};

// ---------------------------------------------------------------- in the child

void WriteAll(int file, const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t written = write(file, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno != EINTR) {
            _exit(EXIT_FAILURE);
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
}

using Work = std::function<std::string(const ReportPercent&)>;

struct Job {
    const Work& work;
    int output;
    std::string answer;
};

void* RunJob(void* argument) {
    Job& job = *static_cast<Job*>(argument);
    try {
        job.answer = kResult + job.work([&job](int percent) {
            WriteAll(job.output, {kProgress, static_cast<char>(percent)});
        });
    } catch (const std::bad_alloc&) {
        job.answer = kRefusal + std::string(kNoMemory);
    } catch (const std::exception& failure) {
        job.answer = kRefusal + std::string(failure.what());
    }
    return nullptr;
}

void RunWithDeepStack(Job& job) {
    pthread_attr_t attributes;
    pthread_attr_init(&attributes);
    pthread_attr_setstacksize(&attributes, kReaderStack);
    pthread_t thread;
    if (pthread_create(&thread, &attributes, RunJob, &job) == 0) {
        pthread_join(thread, nullptr);
    } else {
        RunJob(&job);
    }
    pthread_attr_destroy(&attributes);
}

void LimitResource(decltype(RLIMIT_CPU) resource, rlim_t limit) {
    rlimit now{};
    getrlimit(resource, &now);
    now.rlim_cur = now.rlim_max == RLIM_INFINITY || limit < now.rlim_max ? limit : now.rlim_max;
    setrlimit(resource, &now);
}

// The memory that this process has mapped already, in bytes.
std::uint64_t MappedMemory() {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

void SetLimits(const ReaderLimits& limits) {
    LimitResource(RLIMIT_CORE, 0);
    LimitResource(RLIMIT_CPU, limits.cpuSeconds);
    // Relative to what there is: a sanitizer's shadow alone takes more than any memory.
    LimitResource(RLIMIT_AS, MappedMemory() + limits.memory + kReaderStack);
}

[[noreturn]] void BeTheChild(int output, const Work& work, const ReaderLimits& limits) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    SetLimits(limits);
    Job job{work, output, {}};
    RunWithDeepStack(job);
    WriteAll(output, job.answer);
    // Past every destructor and buffer that this process has a copy of.
    _exit(EXIT_SUCCESS);
}

// ---------------------------------------------------------------- in the parent

// Takes the child's reports from the front of what it has written so far; the last one is
// `percent`.
void TakeReports(std::string& bytes, int& percent, const ReportPercent& report) {
    std::size_t at = 0;
    while (at + 1 < bytes.size() && bytes[at] == kProgress) {
        percent = bytes[at + 1];
        report(percent);
        at += 2;
    }
    bytes.erase(0, at);
}

// The child's answer, to its end.
std::string ReadAnswer(int file, const ReportPercent& report) {
    constexpr int kPatience = 500;  // milliseconds
    std::string bytes;
    int percent = 0;
    std::array<char, 1 << 16> buffer;
    for (;;) {
        pollfd input{file, POLLIN, 0};
        if (poll(&input, 1, kPatience) == 0) {
            report(percent);
            continue;
        }
        const ssize_t count = read(file, buffer.data(), buffer.size());
        if (count > 0) {
            bytes.append(buffer.data(), static_cast<std::size_t>(count));
            TakeReports(bytes, percent, report);
        } else if (count == 0 || errno != EINTR) {
            return bytes;
        }
    }
}

int WaitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

std::string HowItEnded(int status, const ReaderLimits& limits) {
    if (!WIFSIGNALED(status)) {
        return "cannot be read: the reader gave up with status " +
               std::to_string(WEXITSTATUS(status));
    }
    if (WTERMSIG(status) == SIGXCPU) {
        return "cannot be read: the reader was stopped after " + std::to_string(limits.cpuSeconds) +
               " seconds of CPU time, the limit for its size (45 s, 30 s more for each 100 MB)";
    }
    return "cannot be read: the reader crashed on it (signal " + std::to_string(WTERMSIG(status)) +
           ")";
}

}  // namespace

ReaderLimits LimitsFor(std::uint64_t bytes) {
    constexpr std::uint64_t kBytesPerSecond = 100'000'000 / 30;
    // Several times what the densest packed formats grow to.
    constexpr std::uint64_t kMemoryPerByte = 400;
    ReaderLimits limits;
    limits.cpuSeconds += static_cast<unsigned>(
        std::min<std::uint64_t>(bytes / kBytesPerSecond, std::numeric_limits<int>::max()));
    limits.memory += kMemoryPerByte * bytes;
    return limits;
}

std::string RunInReaderProcess(const std::function<std::string()>& work,
                               const ReaderLimits& limits) {
    return RunInReaderProcess([&work](const ReportPercent&) { return work(); }, limits, [](int) {});
}

std::string RunInReaderProcess(const Work& work, const ReaderLimits& limits,
                               const ReportPercent& report) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        FailWith(errno);
    }
    FileDescriptor input(ends[0]);
    FileDescriptor output(ends[1]);
    const pid_t child = fork();
    if (child < 0) {
        FailWith(errno);
    }
    if (child == 0) {
        input.Close();
        BeTheChild(output.Number(), work, limits);
    }
    output.Close();
    std::string answer = ReadAnswer(input.Number(), report);
    const int status = WaitFor(child);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != EXIT_SUCCESS || answer.empty()) {
        throw ImportError(HowItEnded(status, limits));
    }
    const bool isRefusal = answer.front() == kRefusal;
    answer.erase(0, 1);
    if (isRefusal && answer == kNoMemory) {
        throw ImportError(answer + ", the reader may take " + std::to_string(limits.memory >> 20) +
                          " MiB, the limit for its size (512 MiB and 400 times its bytes)");
    }
    if (isRefusal) {
        throw ImportError(answer);
    }
    return answer;
}

}  // namespace maxhost::import
