#include "host/app/interrupt.h"

#include "host/sdk/host.h"

namespace maxhost::app {
namespace {

volatile std::sig_atomic_t isInterrupted = 0;

void OnSignal(int signal) {
    std::signal(signal, SIG_DFL);
    if (isInterrupted) {
        std::raise(signal);
    }
    isInterrupted = 1;
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

CancelOnInterrupt::CancelOnInterrupt() {
    isInterrupted = 0;
    Host::Instance().SetCancelFlag(&isInterrupted);
    formerInterrupt_ = Handle(SIGINT);
    formerTermination_ = Handle(SIGTERM);
}

CancelOnInterrupt::~CancelOnInterrupt() {
    std::signal(SIGINT, formerInterrupt_);
    std::signal(SIGTERM, formerTermination_);
    Host::Instance().SetCancelFlag(nullptr);
}

}  // namespace maxhost::app
