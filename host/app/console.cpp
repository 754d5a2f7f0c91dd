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
    Report(std::string(subject) + ": " + std::string(text));
}

void Console::Report(std::string_view text) {
    notices_.push_back({nullptr, kta::OneLine(text)});
    Say(text);
}

void Console::Warn(scene::LossCode code, std::string_view subject, std::string_view text) {
    const std::string start = std::string(subject) + ": ";
    notices_.push_back({&scene::KindOf(code), kta::OneLine(start + std::string(text))});
    Say(start + "warning: " + std::string(text));
}

void Console::Note(std::string_view subject, std::string_view text) {
    Say(std::string(subject) + ": " + std::string(text));
}

void Console::Say(std::string_view line) {
    HideBar();
    error_ << "hdo-export: " << kta::OneLine(line) << '\n' << std::flush;
}

void Console::Print(std::string_view line) {
    HideBar();
    (isOutTaken_ ? error_ : out_) << line << '\n';
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

void ProgressBar::Show() {
    const auto done = static_cast<std::size_t>(percent_ * kBarCells / 100);
    const std::string number = std::to_string(percent_);
    std::string line = "[";
    line.append(done, '#').append(kBarCells - done, '.').append("] ");
    line.append(3 - number.size(), ' ').append(number).append("% ");
    const std::string time = seconds_ > 0 ? ", " + std::to_string(seconds_) + " s" : "";
    console_.ShowBar(line + title_.substr(0, kTitleColumns - time.size()) + time);
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
