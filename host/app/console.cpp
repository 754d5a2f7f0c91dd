#include "host/app/console.h"

#include <algorithm>

#include "host/sdk/host.h"
#include "kta/text.h"

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace maxhost::app {

void Console::Report(std::string_view subject, std::string_view text) {
    const std::string start = std::string(subject) + ": ";
    notices_.push_back({nullptr, kta::OneLine(start + std::string(text))});
    Say(start, text, kta::Style::bad);
}

void Console::Report(std::string_view text) {
    notices_.push_back({nullptr, kta::OneLine(text)});
    Say("", text, kta::Style::bad);
}

void Console::Warn(scene::LossCode code, std::string_view subject, std::string_view text) {
    const std::string start = std::string(subject) + ": ";
    notices_.push_back({&scene::KindOf(code), kta::OneLine(start + std::string(text))});
    Say(start, "warning: " + std::string(text), kta::Style::caution);
}

void Console::Note(std::string_view subject, std::string_view text) {
    Say(std::string(subject) + ": ", text, kta::Style::plain);
}

// The text has the style, the start has none.
void Console::Say(std::string_view start, std::string_view text, kta::Style style) {
    HideBar();
    const std::string line = kta::OneLine(std::string(start) + std::string(text));
    const std::string plain = kta::OneLine(start);
    const std::size_t begin = line.starts_with(plain) ? plain.size() : 0;
    error_ << kta::Styled(kta::Style::bold, "hdo-export:", colorsError_) << ' '
           << line.substr(0, begin) << kta::Styled(style, line.substr(begin), colorsError_) << '\n'
           << std::flush;
}

void Console::SetColors(kta::ColorMode mode) {
    colorsError_ = kta::ShowsColors(mode, kta::StandardStream::error, isTerminal_);
    colorsOut_ = kta::ShowsColors(mode, kta::StandardStream::out, isOutTerminal_);
}

void Console::Print(std::string_view line, kta::Style style) {
    HideBar();
    (isOutTaken_ ? error_ : out_) << kta::Styled(style, line,
                                                 isOutTaken_ ? colorsError_ : colorsOut_)
                                  << '\n';
}

void Console::Hint(std::string_view text) {
    if (isTerminal_ && !text.empty()) {
        HideBar();
        out_.flush();  // what the hint is about stands above it
        error_ << kta::Styled(kta::Style::hint, "next:", colorsError_) << ' ' << kta::OneLine(text)
               << '\n'
               << std::flush;
    }
}

std::ostream& Console::TakeOut() {
    isOutTaken_ = true;
    return out_;
}

namespace {

// The control characters of one byte, and those of two, 0x80 to 0x9f in UTF-8.
std::string ForTerminal(std::string_view text) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string shown;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
        const bool isLayout = byte == '\n' || byte == '\r' || byte == '\t';
        const bool isOfTwo = byte == 0xc2 && next >= 0x80 && next <= 0x9f;
        if ((byte < 0x20 && !isLayout) || byte == 0x7f) {
            shown += std::string("\\x") + kDigits[byte >> 4] + kDigits[byte & 15];
        } else if (isOfTwo) {
            shown += std::string("\\x") + kDigits[next >> 4] + kDigits[next & 15];
            ++i;
        } else {
            shown += text[i];
        }
    }
    return shown;
}

}  // namespace

void Console::Copy(std::string_view text) {
    HideBar();
    error_ << (isTerminal_ ? ForTerminal(text) : std::string(text)) << std::flush;
}

void Console::ShowBar(const std::string& line, std::size_t done) {
    const std::size_t rest = line.size() < barWidth_ ? barWidth_ - line.size() : 0;
    error_ << '\r' << kta::Styled(kta::Style::good, line.substr(0, done), colorsError_)
           << line.substr(std::min(done, line.size())) << std::string(rest, ' ') << std::flush;
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

// ---------------------------------------------------------------- progress bar

namespace {

constexpr int kBarCells = 30;
constexpr std::size_t kTitleColumns = 40;

}  // namespace

void ProgressBar::OnStart(const std::string& title) {
    title_ = kta::OneLine(title).substr(0, kTitleColumns);
    percent_ = 0;
    start_ = std::chrono::steady_clock::now();
    seconds_ = 0;
    Show();
}

void ProgressBar::OnUpdate(int percent) {
    const int shown = std::clamp(percent, 0, 100);
    const std::int64_t seconds =
        std::chrono::duration_cast<std::chrono::seconds>(std::chrono::steady_clock::now() - start_)
            .count();
    // Scenes of many nodes update far more often than the line changes.
    if (shown != percent_ || seconds != seconds_) {
        percent_ = shown;
        seconds_ = seconds;
        Show();
    }
}

void ProgressBar::OnEnd() {
    console_.HideBar();
}

namespace {

constexpr std::int64_t kFewSeconds = 100;

// What the work so far lets expect; empty while that says little.
std::string TimeLeft(std::int64_t seconds, int percent) {
    constexpr std::int64_t kEnoughSeconds = 2;
    if (seconds < kEnoughSeconds || percent <= 0 || percent >= 100) {
        return {};
    }
    const std::int64_t left = (seconds * (100 - percent) + percent - 1) / percent;
    return left <= kFewSeconds ? ", " + std::to_string(left) + " s left"
                               : ", " + std::to_string((left + 59) / 60) + " min left";
}

}  // namespace

void ProgressBar::Show() {
    const auto done = static_cast<std::size_t>(percent_ * kBarCells / 100);
    const std::string number = std::to_string(percent_);
    std::string line = "[";
    line.append(done, '#').append(kBarCells - done, '.').append("] ");
    line.append(3 - number.size(), ' ').append(number).append("% ");
    const std::string time =
        seconds_ > 0 ? ", " + std::to_string(seconds_) + " s" + TimeLeft(seconds_, percent_) : "";
    const std::size_t columns = kTitleColumns - std::min(time.size(), kTitleColumns);
    console_.ShowBar(line + title_.substr(0, columns) + time, 1 + done);
}

void ExportProgress::OnStart(const std::string& title) {
    reached_ = goal_ = 0;
    bar_.OnStart(title);
}

void ExportProgress::OnUpdate(int percent) {
    reached_ = goal_;
    goal_ = std::clamp(percent, reached_, 100);
    bar_.OnUpdate(reached_);
}

void ExportProgress::OnWork(double share) {
    bar_.OnUpdate(reached_ + static_cast<int>(share * (goal_ - reached_)));
}

// ---------------------------------------------------------------- Ctrl-C

namespace {

constexpr int kSignalStatus = 128;

volatile std::sig_atomic_t pressesCancel = 0;
volatile std::sig_atomic_t caught = 0;

void OnSignal(int signal) {
    if (!pressesCancel || caught) {
        _exit(kSignalStatus + signal);
    }
    caught = signal;
    // Some systems take the handler away when they call it.
    std::signal(signal, OnSignal);
}

// Returns the former handler.
auto Handle(int signal) {
    const auto former = std::signal(signal, OnSignal);
    if (former == SIG_IGN) {
        std::signal(signal, SIG_IGN);
    }
    return former;
}

}  // namespace

void CatchInterrupts() {
    pressesCancel = 0;
    caught = 0;
    Handle(SIGINT);
    Handle(SIGTERM);
}

Interrupts::Interrupts() {
    pressesCancel = 0;
    caught = 0;
    formerInterrupt_ = Handle(SIGINT);
    formerTermination_ = Handle(SIGTERM);
}

Interrupts::~Interrupts() {
    std::signal(SIGINT, formerInterrupt_);
    std::signal(SIGTERM, formerTermination_);
    Host::Instance().SetCancelFlag(nullptr);
}

void Interrupts::PressCancel() {
    Host::Instance().SetCancelFlag(&caught);
    pressesCancel = 1;
}

int Interrupts::Status() const {
    return caught ? kSignalStatus + caught : 0;
}

}  // namespace maxhost::app
