#include "host/scene_file/json_out.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>

namespace maxhost::scene_file {
namespace {

constexpr std::size_t kFullLine = 88;
constexpr std::size_t kFullBuffer = 64 * 1024;

// Whether the character stands in JSON text for itself.
bool IsPlain(char c) {
    return c >= ' ' && c <= '~' && c != '"' && c != '\\';
}

}  // namespace

void JsonOut::Name(std::string_view name) {
    Separate(true);
    Text(name);
    Put(": ");
}

void JsonOut::Item() {
    Separate(true);
}

void JsonOut::Part() {
    Separate(false);
}

void JsonOut::Whole(std::int64_t value) {
    char text[24];
    Put({text, std::to_chars(text, text + sizeof text, value).ptr});
}

void JsonOut::Word(std::uint32_t value) {
    char text[12] = {'"', '0', 'x'};
    char* const end = std::to_chars(text + 3, text + sizeof text - 1, value, 16).ptr;
    *end = '"';
    Put({text, end + 1});
}

void JsonOut::Real(float value) {
    char text[32];
    Put({text, std::to_chars(text, text + sizeof text, value).ptr});
    if (value == 0 && std::signbit(value)) {
        Put(".0");  // many readers take -0 for the integer 0
    }
}

void JsonOut::Text(std::string_view value) {
    if (std::all_of(value.begin(), value.end(), IsPlain)) {
        Put("\"");
        Put(value);
        Put("\"");
    } else {
        Put(nlohmann::json(value).dump());
    }
}

void JsonOut::Finish() {
    Put("\n");
    Flush();
}

void JsonOut::Begin(char bracket) {
    Put({&bracket, 1});
    ++depth_;
    isFirst_ = true;
}

void JsonOut::End(char bracket) {
    --depth_;
    if (isLineWanted_) {
        NewLine();
    }
    Put({&bracket, 1});
    isFirst_ = false;
}

void JsonOut::Separate(bool canBreak) {
    const bool isFull = canBreak && !isFirst_ && buffer_.size() - lineStart_ > kFullLine;
    if (!isFirst_) {
        Put(",");
    }
    if (isLineWanted_ || isFull) {
        NewLine();
    } else if (!isFirst_) {
        Put(" ");
    }
    isFirst_ = false;
}

void JsonOut::NewLine() {
    isLineWanted_ = false;
    Put("\n");
    if (buffer_.size() > kFullBuffer) {
        Flush();
    }
    lineStart_ = buffer_.size();
    buffer_.append(2 * static_cast<std::size_t>(depth_), ' ');
}

void JsonOut::Put(std::string_view text) {
    buffer_ += text;
}

void JsonOut::Flush() {
    out_.write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
    buffer_.clear();
    lineStart_ = 0;
}

}  // namespace maxhost::scene_file
