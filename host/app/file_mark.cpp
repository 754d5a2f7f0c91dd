#include "host/app/file_mark.h"

#include <thread>

#ifdef _WIN32
#include <windows.h>
#endif

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

// Windows counts time in these, and finer differences mean nothing elsewhere.
using Time = std::chrono::duration<std::int64_t, std::ratio<1, 10'000'000>>;

// Time stamps come from the system's tick, which is 16 ms where it is longest.
constexpr std::chrono::milliseconds kTick(20);

#ifdef _WIN32
// The standard library of mingw-w64 tells whole seconds only.
Time TimeOf(const FILETIME& time) {
    return Time(static_cast<std::int64_t>(time.dwHighDateTime) << 32 | time.dwLowDateTime);
}

Time LastWriting(const fs::path& file) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    GetFileAttributesExW(file.c_str(), GetFileExInfoStandard, &data);
    return TimeOf(data.ftLastWriteTime);
}

Time ClockOfFiles() {
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    return TimeOf(now);
}
#else
Time TimeOf(fs::file_time_type time) {
    return std::chrono::duration_cast<Time>(time.time_since_epoch());
}

Time LastWriting(const fs::path& file) {
    std::error_code error;
    return TimeOf(fs::last_write_time(file, error));
}

Time ClockOfFiles() {
    return TimeOf(fs::file_time_type::clock::now());
}
#endif

void WaitUntilOld(Time time) {
    const Time age = ClockOfFiles() - time;
    if (age >= age.zero() && age < kTick) {
        std::this_thread::sleep_for(kTick - age);
    }
}

}  // namespace

FileMark::FileMark(fs::path file) : file_(std::move(file)), before_(Now()) {
    if (before_) {
        WaitUntilOld(before_->time);
    }
}

bool FileMark::IsThere() const {
    return Now().has_value();
}

bool FileMark::IsWritten() const {
    const std::optional<Stamp> now = Now();
    return now && now != before_;
}

std::optional<FileMark::Stamp> FileMark::Now() const {
    std::error_code error;
    if (!fs::is_regular_file(file_, error)) {
        return std::nullopt;
    }
    return Stamp{LastWriting(file_), fs::file_size(file_, error)};
}

}  // namespace maxhost::app
