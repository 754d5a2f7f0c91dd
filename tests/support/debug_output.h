// The debugger's output, caught.
#pragma once

#include <string>
#include <vector>

namespace support {

// Collects what goes to OutputDebugStringA while it lives. At most one lives at a time.
class DebugOutput {
  public:
    DebugOutput();
    ~DebugOutput();
    DebugOutput(const DebugOutput&) = delete;
    DebugOutput& operator=(const DebugOutput&) = delete;

    // One entry a call.
    const std::vector<std::string>& Messages() const { return messages_; }
    // All calls' texts, end to end.
    std::string Text() const;

    void Add(const std::string& message) { messages_.push_back(message); }

  private:
    std::vector<std::string> messages_;
};

}  // namespace support
