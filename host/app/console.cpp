#include "host/app/console.h"

#include "kta/text.h"

namespace maxhost::app {

void Console::Report(std::string_view subject, std::string_view text) {
    Report(std::string(subject) + ": " + std::string(text));
}

void Console::Report(std::string_view text) {
    HideBar();
    error_ << "hdo-export: " << kta::OneLine(text) << '\n' << std::flush;
}

void Console::Warn(std::string_view subject, std::string_view text) {
    Report(subject, "warning: " + std::string(text));
}

void Console::Print(std::string_view line) {
    HideBar();
    out_ << line << '\n';
}

void Console::Copy(std::string_view text) {
    HideBar();
    error_ << text << std::flush;
}

void Console::ShowBar(const std::string& line) {
    const std::size_t rest = line.size() < barWidth_ ? barWidth_ - line.size() : 0;
    error_ << '\r' << line << std::string(rest, ' ') << std::flush;
    barWidth_ = line.size();
}

void Console::HideBar() {
    if (barWidth_ > 0) {
        error_ << '\r' << std::string(barWidth_, ' ') << '\r' << std::flush;
        barWidth_ = 0;
    }
}

bool Console::Flush() {
    return static_cast<bool>(out_.flush());
}

}  // namespace maxhost::app
