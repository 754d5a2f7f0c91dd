// The person in front of the exporter's dialogs, played.
#pragma once

#include <string>

#include "host/app/console.h"
#include "host/app/options.h"
#include "host/win32/user.h"

namespace maxhost::app {

// Makes the choices in the options dialog, through its controls, and presses Export; or presses
// Cancel at once. A choice that the dialog does not take is reported, and the dialog cancelled.
// Message boxes are reported under the export file's name.
class DialogUser : public win32::User {
  public:
    DialogUser(Console& console, std::string exportFile, const DialogChoices& choices, bool cancels)
        : console_(console),
          exportFile_(std::move(exportFile)),
          choices_(choices),
          cancels_(cancels) {}

    void OnDialog(win32::Dialog& dialog) override;
    void OnMessageBox(const std::string& title, const std::string& text, unsigned flags) override;

    bool HasCancelled() const { return hasCancelled_; }  // as it was told to
    // Whether it had something to choose, but was shown no options dialog to do it in.
    bool LacksDialog() const;
    bool WasRefused() const { return wasRefused_; }  // what it chose was not taken
    int MessageBoxes() const { return messageBoxes_; }

  private:
    bool MakeChoices(win32::Dialog& dialog);
    bool Refuse(const std::string& option, const std::string& why);
    bool Set(win32::Dialog& dialog, const ExporterOption& option, Plinth::UInt8 value);
    template <class Number>
    bool Set(win32::Dialog& dialog, const ExporterOption& option, Number value);
    void PressExport(win32::Dialog& dialog);

    Console& console_;
    std::string exportFile_;
    DialogChoices choices_;
    bool cancels_;
    bool hasAnswered_ = false;
    bool hasCancelled_ = false;
    bool wasRefused_ = false;
    int messageBoxes_ = 0;
};

}  // namespace maxhost::app
