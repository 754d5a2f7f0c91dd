// What the program says, and where: results to standard output, messages to standard error, one
// line each, with the progress bar out of their way.
#pragma once

#include <ostream>
#include <string>
#include <string_view>

namespace maxhost::app {

class Console {
  public:
    // Both streams must outlive the object.
    Console(std::ostream& out, std::ostream& error) : out_(out), error_(error) {}
    ~Console() { HideBar(); }

    // The line "hdo-export: SUBJECT: TEXT"; control characters in either become blanks.
    void Report(std::string_view subject, std::string_view text);
    // The same for a text that names its subject itself.
    void Report(std::string_view text);
    // The same with "warning: " before the text.
    void Warn(std::string_view subject, std::string_view text);
    // One line of a result, as it stands.
    void Print(std::string_view line);
    // Text for standard error that brings its own line ends.
    void Copy(std::string_view text);

    // One line that the next one replaces; at most 79 columns of ASCII.
    void ShowBar(const std::string& line);
    void HideBar();

    // Whether all results reached standard output so far.
    bool Flush();

    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

  private:
    std::ostream& out_;
    std::ostream& error_;
    std::size_t barWidth_ = 0;
};

}  // namespace maxhost::app
