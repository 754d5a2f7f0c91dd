#include "tests/support/debug_output.h"

#include <numeric>

#ifdef _WIN32
#include <windows.h>
#else
#include "host/win32/user.h"
#endif

namespace support {

#ifdef _WIN32

namespace {

DebugOutput* current = nullptr;
void* handler = nullptr;

// OutputDebugStringA raises an exception that a debugger would take: its length, NUL included, and
// the text.
LONG CALLBACK OnException(EXCEPTION_POINTERS* exception) {
    constexpr DWORD kDebugPrint = 0x40010006;
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    if (record.ExceptionCode != kDebugPrint || record.NumberParameters < 2) {
        return EXCEPTION_CONTINUE_SEARCH;
    }
    current->Add(reinterpret_cast<const char*>(record.ExceptionInformation[1]));
    return EXCEPTION_CONTINUE_EXECUTION;
}

}  // namespace

DebugOutput::DebugOutput() {
    current = this;
    handler = AddVectoredExceptionHandler(1, OnException);
}

DebugOutput::~DebugOutput() {
    RemoveVectoredExceptionHandler(handler);
    current = nullptr;
}

#else

DebugOutput::DebugOutput() {
    win32::SetDebugSink(
        [](const char* text, void* context) { static_cast<DebugOutput*>(context)->Add(text); },
        this);
}

DebugOutput::~DebugOutput() {
    win32::SetDebugSink(nullptr, nullptr);
}

#endif

std::string DebugOutput::Text() const {
    return std::accumulate(messages_.begin(), messages_.end(), std::string());
}

}  // namespace support
