#include "host/app/progress.h"

#include <algorithm>

#include "kta/text.h"

namespace maxhost::app {
namespace {

constexpr int kBarCells = 30;
constexpr std::size_t kTitleColumns = 40;

}  // namespace

void ProgressBar::OnStart(const std::string& title) {
    title_ = kta::OneLine(title).substr(0, kTitleColumns);
    percent_ = 0;
    Show();
}

void ProgressBar::OnUpdate(int percent) {
    const int shown = std::clamp(percent, 0, 100);
    // Scenes of many nodes update far more often than the line changes.
    if (shown != percent_) {
        percent_ = shown;
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
    line.append(3 - number.size(), ' ').append(number).append("% ").append(title_);
    console_.ShowBar(line);
}

}  // namespace maxhost::app
