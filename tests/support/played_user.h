// A user in front of dialogs who does what a test tells, and notes what is shown.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/win32/user.h"

namespace support {

struct MessageBoxShown {
    std::string title;
    std::string text;
    unsigned flags = 0;  // on Windows always 0
    bool operator==(const MessageBoxShown&) const = default;
};

using Boxes = std::vector<MessageBoxShown>;

// Installed while it lives; then the former user is again.
struct PlayedUser : win32::User {
    PlayedUser() : former(win32::SetUser(this)) {}
    ~PlayedUser() override { win32::SetUser(former); }

    void OnDialog(win32::Dialog& dialog) override {
        titles.push_back(dialog.Title());
        if (acts) {
            acts(dialog);
        }
    }
    void OnMessageBox(const std::string& title, const std::string& text, unsigned flags) override {
        boxes.push_back({title, text, flags});
    }

    std::function<void(win32::Dialog&)> acts;
    std::vector<std::string> titles;
    Boxes boxes;
    win32::User* const former;
};

}  // namespace support
