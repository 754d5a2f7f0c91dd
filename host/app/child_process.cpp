#include "host/app/child_process.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <system_error>

#ifdef _WIN32
#include <windows.h>
// Behind windows.h, which it needs.
#include <psapi.h>

#include <cstdio>
#include <memory>
#include <mutex>
#include <type_traits>
#else
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <thread>
#endif

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;
using How = ProcessEnd::How;

constexpr std::chrono::milliseconds kBetweenLooks(50);

// What ends a program before its time.
class Watch {
  public:
    Watch(const ProcessLimits& limits, const std::atomic<bool>* stop)
        : limits_(limits), stop_(stop) {}

    // Why a program that takes so much memory now is to end; nothing while it may go on.
    std::optional<How> Look(std::uint64_t memory) {
        mostMemory_ = std::max(mostMemory_, memory);
        const std::chrono::duration<double> seconds = Clock::now() - start_;
        if (stop_ != nullptr && *stop_) {
            return How::stopped;
        }
        if (limits_.memory > 0 && memory > limits_.memory) {
            return How::ranOutOfMemory;
        }
        return limits_.seconds > 0 && seconds.count() > limits_.seconds
                   ? std::optional(How::ranOutOfTime)
                   : std::nullopt;
    }
    // How long to wait for the program's end before the next look.
    std::chrono::milliseconds UntilNextLook() const {
        using std::chrono::milliseconds;
        if (limits_.seconds <= 0) {
            return kBetweenLooks;
        }
        const std::chrono::duration<double> left =
            std::chrono::duration<double>(limits_.seconds) - (Clock::now() - start_);
        return std::clamp(std::chrono::ceil<milliseconds>(left), milliseconds(1), kBetweenLooks);
    }
    std::uint64_t MostMemory() const { return mostMemory_; }

  private:
    using Clock = std::chrono::steady_clock;

    const ProcessLimits limits_;
    const std::atomic<bool>* const stop_;
    const Clock::time_point start_ = Clock::now();
    std::uint64_t mostMemory_ = 0;
};

}  // namespace

#ifdef _WIN32
namespace {

struct CloseIt {
    void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OpenHandle = std::unique_ptr<std::remove_pointer_t<HANDLE>, CloseIt>;

// As the C library of the program started takes it apart.
std::string AsArgument(const std::string& word) {
    std::string quoted = "\"";
    std::size_t backslashes = 0;
    for (const char c : word) {
        quoted.append(c == '"' ? backslashes + 1 : 0, '\\');
        backslashes = c == '\\' ? backslashes + 1 : 0;
        quoted += c;
    }
    return quoted.append(backslashes, '\\') + "\"";
}

OpenHandle Open(const fs::path& file, DWORD access, DWORD disposition) {
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    constexpr DWORD kShare = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const HANDLE handle = CreateFileW(file.c_str(), access, kShare, &inherited, disposition,
                                      FILE_ATTRIBUTE_NORMAL, nullptr);
    return OpenHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

// A job whose processes end when the last handle to it is closed, as it is when this process ends.
OpenHandle NewJob() {
    OpenHandle job(CreateJobObjectW(nullptr, nullptr));
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    SetInformationJobObject(job.get(), JobObjectExtendedLimitInformation, &limits, sizeof(limits));
    return job;
}

OpenHandle Start(const std::vector<std::string>& command, const fs::path& out,
                 const fs::path& error, HANDLE job) {
    std::string line;
    for (const std::string& word : command) {
        line += (line.empty() ? "" : " ") + AsArgument(word);
    }
    // A program started beside would inherit the files of this one too.
    static std::mutex oneAtATime;
    const std::lock_guard lock(oneAtATime);
    const OpenHandle input = Open("NUL", GENERIC_READ, OPEN_EXISTING);
    const OpenHandle output = Open(out, GENERIC_WRITE, CREATE_ALWAYS);
    const OpenHandle errors = Open(error, GENERIC_WRITE, CREATE_ALWAYS);
    STARTUPINFOA start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdInput = input.get();
    start.hStdOutput = output.get();
    start.hStdError = errors.get();
    PROCESS_INFORMATION process{};
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);  // the process inherits it
    // Not in the console's group: Ctrl-C is for this process, which ends its own itself.
    constexpr DWORD kHow = CREATE_SUSPENDED | CREATE_NEW_PROCESS_GROUP;
    if (!CreateProcessA(command[0].c_str(), line.data(), nullptr, nullptr, TRUE, kHow, nullptr,
                        nullptr, &start, &process)) {
        throw std::system_error(static_cast<int>(GetLastError()), std::system_category());
    }
    AssignProcessToJobObject(job, process.hProcess);
    ResumeThread(process.hThread);
    CloseHandle(process.hThread);
    return OpenHandle(process.hProcess);
}

std::uint64_t MemoryOf(HANDLE process) {
    PROCESS_MEMORY_COUNTERS_EX counters{};
    counters.cb = sizeof(counters);
    return K32GetProcessMemoryInfo(process, reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                                   sizeof(counters))
               // Either can be 0, by the system's version.
               ? std::max(counters.PrivateUsage, counters.PagefileUsage)
               : 0;
}

}  // namespace

std::string CauseOfCrash(const ProcessEnd& end) {
    char number[16];
    std::snprintf(number, sizeof(number), "0x%08x", static_cast<unsigned>(end.number));
    return std::string("exception ") + number;
}

ProcessEnd RunProcess(const std::vector<std::string>& command, const fs::path& out,
                      const fs::path& error, const ProcessLimits& limits,
                      const std::atomic<bool>* stop) {
    const OpenHandle job = NewJob();
    const OpenHandle process = Start(command, out, error, job.get());
    Watch watch(limits, stop);
    ProcessEnd end;
    while (WaitForSingleObject(process.get(), static_cast<DWORD>(watch.UntilNextLook().count())) !=
           WAIT_OBJECT_0) {
        if (const std::optional<How> why = watch.Look(MemoryOf(process.get()))) {
            end.how = *why;
            TerminateProcess(process.get(), 1);
            WaitForSingleObject(process.get(), INFINITE);
            break;
        }
    }
    end.memory = watch.MostMemory();
    DWORD status = 0;
    GetExitCodeProcess(process.get(), &status);
    constexpr DWORD kFirstException = 0xc0000000;
    if (end.how == How::exited) {
        end.how = status >= kFirstException ? How::crashed : How::exited;
        end.number = static_cast<int>(status);
    }
    return end;
}
#else
namespace {

// All that the new process needs, made before it: between fork() and exec() of a program with
// several threads nothing may be allocated.
struct Start {
    std::vector<char*> words;
    const char* out;
    const char* error;
    pid_t parent;
};

[[noreturn]] void Become(const Start& start) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != start.parent) {
        _exit(127);
    }
    // Not in the terminal's group: Ctrl-C is for the parent, which ends its processes itself.
    setpgid(0, 0);
    const rlimit none{0, 0};
    setrlimit(RLIMIT_CORE, &none);
    dup2(open("/dev/null", O_RDONLY), STDIN_FILENO);
    dup2(open(start.out, O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
    dup2(open(start.error, O_WRONLY | O_CREAT | O_TRUNC, 0600), STDERR_FILENO);
    execv(start.words[0], start.words.data());
    _exit(127);
}

// What is mapped of no file, of the process and of those that its first thread started.
std::uint64_t MemoryOf(pid_t process) {
    const std::string place = "/proc/" + std::to_string(process);
    std::uint64_t all = 0, resident = 0, shared = 0;
    std::ifstream(place + "/statm") >> all >> resident >> shared;
    std::uint64_t memory =
        (resident - std::min(resident, shared)) * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
    std::ifstream children(place + "/task/" + std::to_string(process) + "/children");
    for (pid_t child = 0; children >> child;) {
        memory += MemoryOf(child);
    }
    return memory;
}

// Whether the process ended; waits for that. `handle` is -1 where the system gives none.
bool EndsWithin(std::chrono::milliseconds time, pid_t process, int handle, int& status) {
    if (handle >= 0) {
        pollfd input{handle, POLLIN, 0};
        poll(&input, 1, static_cast<int>(time.count()));
    } else {
        constexpr std::chrono::milliseconds kShort(2);
        std::this_thread::sleep_for(std::min(time, kShort));
    }
    const pid_t ended = waitpid(process, &status, WNOHANG);
    return ended > 0 || (ended < 0 && errno != EINTR);
}

}  // namespace

std::string CauseOfCrash(const ProcessEnd& end) {
    return "signal " + std::to_string(end.number);
}

ProcessEnd RunProcess(const std::vector<std::string>& command, const fs::path& out,
                      const fs::path& error, const ProcessLimits& limits,
                      const std::atomic<bool>* stop) {
    if (access(command[0].c_str(), X_OK) != 0) {
        throw std::system_error(errno, std::generic_category());
    }
    Start start{{}, out.c_str(), error.c_str(), getpid()};
    for (const std::string& word : command) {
        start.words.push_back(const_cast<char*>(word.c_str()));
    }
    start.words.push_back(nullptr);
    const pid_t process = fork();
    if (process < 0) {
        throw std::system_error(errno, std::generic_category());
    }
    if (process == 0) {
        Become(start);
    }
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, process, 0));
    Watch watch(limits, stop);
    ProcessEnd end;
    int status = 0;
    while (!EndsWithin(watch.UntilNextLook(), process, handle, status)) {
        if (const std::optional<How> why = watch.Look(MemoryOf(process))) {
            end.how = *why;
            kill(process, SIGKILL);
            waitpid(process, &status, 0);
            break;
        }
    }
    if (handle >= 0) {
        close(handle);
    }
    end.memory = watch.MostMemory();
    if (end.how == How::exited) {
        end.how = WIFSIGNALED(status) ? How::crashed : How::exited;
        end.number = WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
    }
    return end;
}
#endif

bool MemoryIsRationed() {
#ifdef _WIN32
    return false;
#else
    const auto isLimited = [](auto resource) {
        rlimit limit{};
        return getrlimit(resource, &limit) == 0 && limit.rlim_cur != RLIM_INFINITY;
    };
    int overcommit = 0;
    std::ifstream("/proc/sys/vm/overcommit_memory") >> overcommit;
    constexpr int kNone = 2;
    return isLimited(RLIMIT_AS) || isLimited(RLIMIT_DATA) || overcommit == kNone;
#endif
}

}  // namespace maxhost::app
