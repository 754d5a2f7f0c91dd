#include "host/app/dialog_user.h"

namespace maxhost::app {
namespace {

// The options dialog returns 1 for Export and 0 for Cancel; every other dialog's button 1.
constexpr int kOptionsDialog = 103;

}  // namespace

long DialogUser::OnDialog(int templateId) {
    if (templateId == kOptionsDialog && cancels_) {
        hasCancelled_ = true;
        return 0;
    }
    return 1;
}

void DialogUser::OnMessageBox(const std::string& title, const std::string& text, unsigned) {
    ++messageBoxes_;
    console_.Report(exportFile_, title + ": " + text);
}

}  // namespace maxhost::app
