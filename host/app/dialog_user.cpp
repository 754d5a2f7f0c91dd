#include "host/app/dialog_user.h"

#include <array>
#include <charconv>

namespace maxhost::app {
namespace {

// The controls of the exporter's options dialog.
constexpr int kCancel = 2;
constexpr int kExport = 3;
constexpr int kHiddenObjects = 1032;
constexpr int kOptimizeSkin = 1034;
constexpr int kHiddenMotions = 1037;
constexpr int kNonRenderable = 1038;
constexpr int kSampleRate = 1042;
constexpr int kWeightThreshold = 1044;
constexpr int kSampleAnimation = 1049;
constexpr int kMorphers = 1052;

// The shortest text that reads back to the same number.
std::string Shortest(float number) {
    std::array<char, 32> text;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number);
    return std::string(text.data(), end);
}

}  // namespace

void DialogUser::OnDialog(win32::Dialog& dialog) {
    if (!dialog.IsEnabled(kExport)) {
        dialog.Click(dialog.DefaultButton());
        return;
    }
    hasAnswered_ = true;
    if (cancels_) {
        hasCancelled_ = true;
        dialog.Click(kCancel);
    } else if (MakeChoices(dialog)) {
        PressExport(dialog);
    } else {
        dialog.Click(kCancel);
    }
}

bool DialogUser::LacksDialog() const {
    return !hasAnswered_ && (cancels_ || !NamesOf(choices_).empty());
}

void DialogUser::OnMessageBox(const std::string& title, const std::string& text, unsigned) {
    ++messageBoxes_;
    console_.Report(exportFile_, title + ": " + text);
}

bool DialogUser::Refuse(const std::string& option, const std::string& why) {
    wasRefused_ = true;
    console_.Report(option, why);
    return false;
}

// The check boxes first: they enable the edits.
bool DialogUser::MakeChoices(win32::Dialog& dialog) {
    return Switch(dialog, kHiddenObjects, "export-hidden", choices_.exportHidden) &&
           Switch(dialog, kNonRenderable, "non-renderable", choices_.nonRenderable) &&
           Switch(dialog, kMorphers, "morphers", choices_.morphers) &&
           Switch(dialog, kOptimizeSkin, "optimize-skin", choices_.optimizeSkin) &&
           Switch(dialog, kHiddenMotions, "motions-for-hidden", choices_.motionsForHidden) &&
           Switch(dialog, kSampleAnimation, "sample-animation", choices_.sampleAnimation) &&
           (!choices_.weightThreshold ||
            Type(dialog, kWeightThreshold, "--weight-threshold",
                 Shortest(*choices_.weightThreshold), "--optimize-skin")) &&
           (!choices_.sampleRate ||
            Type(dialog, kSampleRate, "--sample-rate", std::to_string(*choices_.sampleRate),
                 "--sample-animation"));
}

bool DialogUser::Switch(win32::Dialog& dialog, int id, const char* option,
                        std::optional<bool> choice) {
    if (!choice) {
        return true;
    }
    if (dialog.IsChecked(id) != *choice) {
        dialog.Click(id);
    }
    return (dialog.IsEnabled(id) && dialog.IsChecked(id) == *choice) ||
           Refuse((*choice ? "--" : "--no-") + std::string(option),
                  "the options dialog does not let it be chosen");
}

bool DialogUser::Type(win32::Dialog& dialog, int id, const char* option, const std::string& text,
                      const char* enabledBy) {
    if (!dialog.IsEnabled(id)) {
        return Refuse(option, "is disabled in the options dialog, expected " +
                                  std::string(enabledBy) + " beside it");
    }
    dialog.Type(id, text);
    return true;
}

void DialogUser::PressExport(win32::Dialog& dialog) {
    const int messageBoxesBefore = messageBoxes_;
    dialog.Click(kExport);
    if (!dialog.IsOpen()) {
        return;
    }
    wasRefused_ = true;
    if (messageBoxes_ == messageBoxesBefore) {
        console_.Report(exportFile_, "the options dialog stays open after Export");
    }
    dialog.Click(kCancel);
}

}  // namespace maxhost::app
