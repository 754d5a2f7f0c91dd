#include "host/assimp/process/reader_process.h"

#include <fcntl.h>
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

// How the child starts its answer.
constexpr char kResult = 'R';
constexpr char kRefusal = 'E';

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

struct Job {
    const std::function<std::string()>& work;
    std::string answer;
};

void* RunJob(void* argument) {
    Job& job = *static_cast<Job*>(argument);
    try {
        job.answer = kResult + job.work();
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

void WriteAll(int file, const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t written = write(file, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno != EINTR) {
            _exit(EXIT_FAILURE);
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
}

[[noreturn]] void BeTheChild(int output, const std::function<std::string()>& work,
                             const ReaderLimits& limits) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    SetLimits(limits);
    Job job{work, {}};
    RunWithDeepStack(job);
    WriteAll(output, job.answer);
    // Past every destructor and buffer that this process has a copy of.
    _exit(EXIT_SUCCESS);
}

// ---------------------------------------------------------------- in the parent

std::string ReadAll(int file) {
    std::string bytes;
    std::array<char, 1 << 16> buffer;
    for (;;) {
        const ssize_t count = read(file, buffer.data(), buffer.size());
        if (count > 0) {
            bytes.append(buffer.data(), static_cast<std::size_t>(count));
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
    std::string answer = ReadAll(input.Number());
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
