#include "host/assimp/process/reader_process.h"

#include <fcntl.h>
#include <malloc.h>
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
    FileDescriptor() = default;
    ~FileDescriptor() { Close(); }
    void Take(int number) { number_ = number; }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    void Close() {
        if (number_ >= 0) {
            close(std::exchange(number_, -1));
        }
    }
    int Number() const { return number_; }

  private:
    int number_ = -1;
};

// ---------------------------------------------------------------- in the child

void WriteAll(int file, std::string_view bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const ssize_t written = write(file, bytes.data() + done, bytes.size() - done);
        if (written < 0 && errno != EINTR) {
            _exit(EXIT_FAILURE);
        }
        done += written > 0 ? static_cast<std::size_t>(written) : 0;
    }
}

using Work = std::function<void(const ReportPercent&, const PutResult&)>;

struct Job {
    const Work& work;
    int output;
    bool hasBegun = false;  // to put its result

    void Begin() {
        if (!std::exchange(hasBegun, true)) {
            WriteAll(output, {&kResult, 1});
        }
    }
};

// Within a result the status alone can tell what went wrong.
void Refuse(const Job& job, const std::string& reason) {
    if (job.hasBegun) {
        _exit(reason == kNoMemory ? kReaderLacksMemory : EXIT_FAILURE);
    }
    WriteAll(job.output, kRefusal + reason);
}

void* RunJob(void* argument) {
    Job& job = *static_cast<Job*>(argument);
    try {
        job.work(
            [&job](int percent) {
                const char bytes[] = {kProgress, static_cast<char>(percent)};
                WriteAll(job.output, {bytes, sizeof bytes});
            },
            [&job](std::string_view bytes) {
                job.Begin();
                WriteAll(job.output, bytes);
            });
        job.Begin();
    } catch (const std::bad_alloc&) {
        Refuse(job, kNoMemory);
    } catch (const std::exception& failure) {
        Refuse(job, failure.what());
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

// The memory that this process has mapped and in use already, in bytes.
std::uint64_t UsedMemory() {
    std::uint64_t pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    const std::uint64_t mapped = pages * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
#ifdef __GLIBC__
    const std::uint64_t free = mallinfo2().fordblks;
    return mapped - std::min(mapped, free);
#else
    return mapped;
#endif
}

void SetLimits(const ReaderLimits& limits) {
    LimitResource(RLIMIT_CORE, 0);
    LimitResource(RLIMIT_CPU, limits.cpuSeconds);
    // Relative to what there is: a sanitizer's shadow alone takes more than any memory.
    LimitResource(RLIMIT_AS, UsedMemory() + limits.memory + kReaderStack);
}

[[noreturn]] void BeTheChild(int output, const Work& work, const ReaderLimits& limits) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    const int nowhere = open("/dev/null", O_WRONLY);
    dup2(nowhere, STDOUT_FILENO);
    dup2(nowhere, STDERR_FILENO);
    SetLimits(limits);
    Job job{work, output};
    RunWithDeepStack(job);
    // Past every destructor and buffer that this process has a copy of.
    _exit(EXIT_SUCCESS);
}

// ---------------------------------------------------------------- in the parent

// What the child writes, as it comes.
class Answer {
  public:
    Answer(int file, const ReportPercent& report) : file_(file), report_(report) {}

    // Reports what the child does, until its answer begins; how it does, or kNothing.
    static constexpr char kNothing = 0;
    char Begin() {
        char kind = kNothing;
        while (Read({&kind, 1}) > 0 && kind == kProgress) {
            char percent = 0;
            if (Read({&percent, 1}) == 0) {
                return kNothing;
            }
            percent_ = percent;
            report_(percent_);
            kind = kNothing;
        }
        return kind;
    }

    // Up to as many bytes as there is room for; 0 at the end.
    std::size_t Read(std::span<char> room) {
        constexpr int kPatience = 500;  // milliseconds
        for (;;) {
            pollfd input{file_, POLLIN, 0};
            if (poll(&input, 1, kPatience) == 0) {
                report_(percent_);
                continue;
            }
            const ssize_t count = read(file_, room.data(), room.size());
            if (count > 0) {
                return static_cast<std::size_t>(count);
            }
            if (count == 0 || errno != EINTR) {
                isAtEnd_ = true;
                return 0;
            }
        }
    }

    std::string ReadToEnd() {
        std::string text;
        std::array<char, 1 << 12> buffer;
        while (const std::size_t count = Read(buffer)) {
            text.append(buffer.data(), count);
        }
        return text;
    }

    // Whether the child has closed it.
    bool IsAtEnd() const { return isAtEnd_; }

  private:
    const int file_;
    const ReportPercent& report_;
    int percent_ = 0;
    bool isAtEnd_ = false;
};

int WaitFor(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return status;
}

std::string HowItEnded(int status, const ReaderLimits& limits) {
    if (WIFEXITED(status) && WEXITSTATUS(status) == kReaderLacksMemory) {
        return NoMemoryWithin(limits);
    }
    if (!WIFSIGNALED(status)) {
        return "cannot be read: the reader gave up with status " +
               std::to_string(WEXITSTATUS(status));
    }
    if (WTERMSIG(status) == SIGXCPU) {
        return NoTimeWithin(limits);
    }
    return "cannot be read: the reader crashed on it (signal " + std::to_string(WTERMSIG(status)) +
           ")";
}

// Starts the child, whose answer comes from `input`; its number.
pid_t StartChild(const Work& work, const ReaderLimits& limits, FileDescriptor& input) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) {
        FailWith(errno);
    }
    FileDescriptor output;
    input.Take(ends[0]);
    output.Take(ends[1]);
    constexpr int kRoom = 1 << 20;  // the most for users without privileges
    fcntl(output.Number(), F_SETPIPE_SZ, kRoom);
    const pid_t child = fork();
    if (child < 0) {
        FailWith(errno);
    }
    if (child == 0) {
        input.Close();
        BeTheChild(output.Number(), work, limits);
    }
    return child;
}

struct Received {
    char kind = Answer::kNothing;
    std::string refusal;         // where it is one
    std::exception_ptr failure;  // of taking it
};

Received Receive(Answer& answer, const std::function<void(const GetResult&)>& take) {
    Received received;
    try {
        received.kind = answer.Begin();
        if (received.kind == kResult) {
            take([&answer](std::span<char> room) { return answer.Read(room); });
        } else {
            received.refusal = answer.ReadToEnd();
        }
    } catch (...) {
        received.failure = std::current_exception();
    }
    return received;
}

}  // namespace

void RunInReaderProcess(const Work& work, const ReaderLimits& limits, const ReportPercent& report,
                        const std::function<void(const GetResult&)>& take) {
    FileDescriptor input;
    const pid_t child = StartChild(work, limits, input);
    Answer answer(input.Number(), report);
    const Received received = Receive(answer, take);
    if (received.failure && !answer.IsAtEnd()) {
        kill(child, SIGKILL);
        WaitFor(child);
        std::rethrow_exception(received.failure);
    }
    // A child that writes more than it announced would wait for a reader.
    input.Close();
    const int status = WaitFor(child);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != EXIT_SUCCESS ||
        received.kind == Answer::kNothing) {
        throw ImportError(HowItEnded(status, limits));
    }
    if (received.kind == kRefusal) {
        throw ImportError(received.refusal == kNoMemory ? NoMemoryWithin(limits)
                                                        : received.refusal);
    }
    if (received.failure) {
        std::rethrow_exception(received.failure);
    }
}

std::string RunInReaderProcess(const std::function<std::string(const ReportPercent&)>& work,
                               const ReaderLimits& limits, const ReportPercent& report) {
    std::string result;
    RunInReaderProcess(
        [&work](const ReportPercent& reportThere, const PutResult& put) { put(work(reportThere)); },
        limits, report,
        [&result](const GetResult& get) {
            std::array<char, 1 << 16> buffer;
            while (const std::size_t count = get(buffer)) {
                result.append(buffer.data(), count);
            }
        });
    return result;
}

std::string RunInReaderProcess(const std::function<std::string()>& work,
                               const ReaderLimits& limits) {
    return RunInReaderProcess([&work](const ReportPercent&) { return work(); }, limits, [](int) {});
}

}  // namespace maxhost::import
