// The plug-in's progress bar, on a terminal.
#pragma once

#include <string>

#include "host/app/console.h"
#include "host/sdk/host.h"

namespace maxhost::app {

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
};

}  // namespace maxhost::app
