// The terminal: what the program says there, the progress bar, and Ctrl-C.
#pragma once

#include <chrono>
#include <csignal>
#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "host/scene/losses.h"
#include "host/sdk/host.h"
#include "kta/terminal.h"

namespace maxhost::app {

// A line that was said on standard error, without the program's name.
struct Notice {
    const scene::LossKind* warning = nullptr;  // null: no warning
    std::string text;                          // without "warning: "
};

class Console {
  public:
    // Both streams must outlive the object. Whether each is shown on a terminal. Nothing is
    // coloured before SetColors().
    Console(std::ostream& out, std::ostream& error, bool isTerminal = false,
            bool isOutTerminal = false)
        : out_(out), error_(error), isTerminal_(isTerminal), isOutTerminal_(isOutTerminal) {}
    ~Console() { HideBar(); }

    void SetColors(kta::ColorMode mode);

    // The line "hdo-export: SUBJECT: TEXT"; control characters in either become blanks.
    void Report(std::string_view subject, std::string_view text);
    // The same for a text that names its subject itself.
    void Report(std::string_view text);
    // The same with "warning: " before the text.
    void Warn(scene::LossCode code, std::string_view subject, std::string_view text);
    // The line of Report(), but nothing that went wrong.
    void Note(std::string_view subject, std::string_view text);
    // What was reported and warned of, in order.
    const std::vector<Notice>& Notices() const { return notices_; }

    // One line of a result, as it stands.
    void Print(std::string_view line, kta::Style style = kta::Style::plain);
    // The line "next: TEXT" on standard error, where that is a terminal.
    void Hint(std::string_view text);
    // From here on standard output is another's: lines of results go to standard error.
    std::ostream& TakeOut();
    // Text for standard error that brings its own line ends. On a terminal all other control
    // characters but tabs become \xNN, so that a scene's names cannot steer it.
    void Copy(std::string_view text);

    // One line that the next one replaces; at most 79 columns of ASCII. Its beginning is what is
    // done, and coloured so.
    void ShowBar(const std::string& line, std::size_t done = 0);
    void HideBar();

    // Whether all results reached standard output so far.
    bool Flush();

    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

  private:
    void Say(std::string_view start, std::string_view text, kta::Style style);

    std::ostream& out_;
    std::ostream& error_;
    const bool isTerminal_, isOutTerminal_;
    bool colorsError_ = false, colorsOut_ = false;
    bool isOutTaken_ = false;
    std::size_t barWidth_ = 0;
    std::vector<Notice> notices_;
};

class ProgressBar : public ProgressObserver {
  public:
    explicit ProgressBar(Console& console) : console_(console) {}

    void OnStart(const std::string& title) override;
    void OnUpdate(int percent) override;
    void OnEnd() override;

  private:
    void Show();

    Console& console_;
    std::string title_;
    int percent_ = 0;
    std::chrono::steady_clock::time_point start_;
    std::int64_t seconds_ = 0;  // since the start; shown from the first on
};

// For main(): Interrupts' treatment of signals from the program's start to its end, so that the
// time before and behind the object's life leaves no gap. A signal after the export changes
// nothing.
void CatchInterrupts();

// An exporter's bar: its update to a share names what it begins to do, so that the bar stands where
// the update before it left it, and goes on with the work.
class ExportProgress : public ProgressObserver {
  public:
    explicit ExportProgress(Console& console) : bar_(console) {}

    void OnStart(const std::string& title) override;
    void OnUpdate(int percent) override;
    void OnWork(double share) override;
    void OnEnd() override { bar_.OnEnd(); }

  private:
    ProgressBar bar_;
    int reached_ = 0;
    int goal_ = 0;
};

// While the object lives, SIGINT (Ctrl-C) and SIGTERM end the program at once, with the exit status
// 128 + the signal's number, as shells tell it. After PressCancel() the first of them presses
// Cancel in the progress bar instead, and a second one ends the program. Signals that are ignored
// stay so. One object at a time.
class Interrupts {
  public:
    Interrupts();
    ~Interrupts();

    void PressCancel();
    // The exit status after the signal that pressed Cancel; 0: there was none.
    int Status() const;

    Interrupts(const Interrupts&) = delete;
    Interrupts& operator=(const Interrupts&) = delete;

  private:
    using Handler = void (*)(int);
    Handler formerInterrupt_, formerTermination_;
};

}  // namespace maxhost::app
