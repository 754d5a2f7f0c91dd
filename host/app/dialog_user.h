// The person in front of the exporter's dialogs, played.
#pragma once

#include <string>

#include "host/app/console.h"
#include "host/win32/user.h"

namespace maxhost::app {

// Presses Export or Cancel in the options dialog, and reports message boxes under the export
// file's name.
class DialogUser : public win32::User {
  public:
    DialogUser(Console& console, std::string exportFile, bool cancels)
        : console_(console), exportFile_(std::move(exportFile)), cancels_(cancels) {}

    long OnDialog(int templateId) override;
    void OnMessageBox(const std::string& title, const std::string& text, unsigned flags) override;

    bool HasCancelled() const { return hasCancelled_; }
    int MessageBoxes() const { return messageBoxes_; }

  private:
    Console& console_;
    std::string exportFile_;
    bool cancels_;
    bool hasCancelled_ = false;
    int messageBoxes_ = 0;
};

}  // namespace maxhost::app
