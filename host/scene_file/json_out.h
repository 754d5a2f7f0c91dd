// Writes JSON text piece by piece, in a layout that people can read and compare: blocks on lines of
// their own, everything else filled into lines of about 100 columns.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <string_view>

namespace maxhost::scene_file {

class JsonOut {
  public:
    explicit JsonOut(std::ostream& out) : out_(out) {}
    JsonOut(const JsonOut&) = delete;
    JsonOut& operator=(const JsonOut&) = delete;

    void BeginObject() { Begin('{'); }
    void EndObject() { End('}'); }
    void BeginList() { Begin('['); }
    void EndList() { End(']'); }

    // The next member or element begins a line.
    void StartLine() { isLineWanted_ = true; }
    void Name(std::string_view name);  // before each value in an object; begins a line in time
    void Item();                       // before each value in a list; begins a line in time
    void Part();                       // the same without a new line, for short lists

    void Null() { Put("null"); }
    void Boolean(bool value) { Put(value ? "true" : "false"); }
    void Whole(std::int64_t value);
    void Word(std::uint32_t value);     // "0x..."
    void Real(float value);             // finite; the shortest text that reads back to the same f32
    void Text(std::string_view value);  // UTF-8
    void Finish();                      // ends the last line and gives everything to the stream

  private:
    void Begin(char bracket);
    void End(char bracket);
    void Separate(bool canBreak);
    void NewLine();
    void Put(std::string_view text);
    void Flush();

    std::ostream& out_;
    std::string buffer_;
    std::size_t lineStart_ = 0;  // in the buffer
    int depth_ = 0;
    bool isFirst_ = true;
    bool isLineWanted_ = false;
};

}  // namespace maxhost::scene_file
