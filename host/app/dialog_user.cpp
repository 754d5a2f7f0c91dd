#include "host/app/dialog_user.h"

namespace maxhost::app {
void DialogUser::OnDialog(win32::Dialog& dialog) {
    if (!dialog.IsEnabled(IDC_EXPORT)) {
        dialog.Click(dialog.DefaultButton());
        return;
    }
    hasAnswered_ = true;
    if (cancels_) {
        hasCancelled_ = true;
        dialog.Click(IDC_CANCEL);
    } else if (MakeChoices(dialog)) {
        PressExport(dialog);
    } else {
        dialog.Click(IDC_CANCEL);
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
    for (const bool boxes : {true, false}) {
        for (std::size_t i = 0; i < choices_.isChosen.size(); ++i) {
            const ExporterOption& option = kExporterOptions[i];
            const auto make = [&](auto setting) {
                return Set(dialog, option, choices_.values.*setting);
            };
            const bool isBox = option.setting.index() == 0;
            if (choices_.isChosen[i] && isBox == boxes && !std::visit(make, option.setting)) {
                return false;
            }
        }
    }
    return true;
}

bool DialogUser::Set(win32::Dialog& dialog, const ExporterOption& option, Plinth::UInt8 value) {
    const bool wanted = value != 0;
    if (dialog.IsChecked(option.control) != wanted) {
        dialog.Click(option.control);
    }
    return (dialog.IsEnabled(option.control) && dialog.IsChecked(option.control) == wanted) ||
           Refuse((wanted ? "--" : "--no-") + std::string(option.name),
                  "the options dialog does not let it be chosen");
}

template <class Number>
bool DialogUser::Set(win32::Dialog& dialog, const ExporterOption& option, Number value) {
    if (!dialog.IsEnabled(option.control)) {
        return Refuse("--" + std::string(option.name),
                      "is disabled in the options dialog, expected --" +
                          std::string(option.enabledBy) + " beside it");
    }
    dialog.Type(option.control, Shortest(value));
    return true;
}

void DialogUser::PressExport(win32::Dialog& dialog) {
    const int messageBoxesBefore = messageBoxes_;
    dialog.Click(IDC_EXPORT);
    if (!dialog.IsOpen()) {
        return;
    }
    wasRefused_ = true;
    if (messageBoxes_ == messageBoxesBefore) {
        console_.Report(exportFile_, "the options dialog stays open after Export");
    }
    dialog.Click(IDC_CANCEL);
}

}  // namespace maxhost::app
