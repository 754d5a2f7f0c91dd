#include "kta/terminal.h"

#include <cstdlib>

#ifdef _WIN32
#include <io.h>
#include <windows.h>
#else
#include <unistd.h>
#endif

namespace kta {

bool IsTerminal(StandardStream stream) {
#ifdef _WIN32
    return _isatty(static_cast<int>(stream)) != 0;
#else
    return isatty(static_cast<int>(stream)) != 0;
#endif
}

namespace {

bool AreColorsWanted() {
    const char* const none = std::getenv("NO_COLOR");
    const char* const terminal = std::getenv("TERM");
    return (none == nullptr || *none == '\0') &&
           (terminal == nullptr || std::string_view(terminal) != "dumb");
}

// Whether the terminal follows escape sequences.
bool FollowsEscapes([[maybe_unused]] StandardStream stream) {
#ifdef _WIN32
    constexpr DWORD kFollow = 4;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING, which older headers lack
    const HANDLE console =
        GetStdHandle(stream == StandardStream::out ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) != 0 && SetConsoleMode(console, mode | kFollow) != 0;
#else
    return true;
#endif
}

}  // namespace

bool ShowsColors(ColorMode mode, StandardStream stream, bool isTerminal) {
    if (mode != ColorMode::automatic) {
        if (isTerminal && mode == ColorMode::always) {
            FollowsEscapes(stream);
        }
        return mode == ColorMode::always;
    }
    return isTerminal && AreColorsWanted() && FollowsEscapes(stream);
}

std::string Styled(Style style, std::string_view text, bool isColored) {
    static constexpr const char* kCodes[] = {"", "1", "32", "33", "31", "36"};
    if (!isColored || style == Style::plain || text.empty()) {
        return std::string(text);
    }
    return std::string("\x1b[") + kCodes[static_cast<int>(style)] + "m" + std::string(text) +
           "\x1b[0m";
}

}  // namespace kta
