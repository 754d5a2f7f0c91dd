// Interrupting an export from outside.
#pragma once

#include <csignal>

namespace maxhost::app {

// While the object lives, the first SIGINT (Ctrl-C) or SIGTERM presses Cancel in the progress bar,
// and a second one ends the program at once. Signals that are ignored stay so. One object at a
// time.
class CancelOnInterrupt {
  public:
    CancelOnInterrupt();
    ~CancelOnInterrupt();

    CancelOnInterrupt(const CancelOnInterrupt&) = delete;
    CancelOnInterrupt& operator=(const CancelOnInterrupt&) = delete;

  private:
    using Handler = void (*)(int);
    Handler formerInterrupt_, formerTermination_;
};

}  // namespace maxhost::app
