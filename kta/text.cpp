#include "kta/text.h"

#include <algorithm>

namespace kta {
namespace {

bool IsControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7f;
}

char Small(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

std::string Escaped(std::string_view text) {
    constexpr char kDigits[] = "0123456789abcdef";
    std::string escaped;
    for (const char c : text) {
        if (IsControl(c)) {
            const auto byte = static_cast<unsigned char>(c);
            escaped += {'\\', 'x', kDigits[byte >> 4], kDigits[byte & 0xf]};
        } else if (c == '\\') {
            escaped += "\\\\";
        } else {
            escaped += c;
        }
    }
    return escaped;
}

std::string OneLine(std::string_view text) {
    std::string line;
    for (const char c : text) {
        if (!IsControl(c)) {
            line += c;
        } else if (!line.empty() && line.back() != ' ') {
            line += ' ';
        }
    }
    while (!line.empty() && line.back() == ' ') {
        line.pop_back();
    }
    return line;
}

std::string Counted(std::size_t count, const std::string& noun) {
    const std::string number = std::to_string(count) + " ";
    if (count == 1) {
        return number + noun;
    }
    if (noun.ends_with("ex")) {
        return number + noun.substr(0, noun.size() - 2) + "ices";
    }
    return number + noun + (noun.ends_with("sh") ? "es" : "s");
}

bool EndsWithIgnoringCase(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), text.rbegin(),
                      [](char wanted, char c) { return wanted == Small(c); });
}

std::vector<std::string> FirstFaults(std::vector<std::string> lines, const std::string& subject) {
    if (lines.size() > kMostFaultLines) {
        const std::size_t rest = lines.size() - kMostFaultLines;
        lines.resize(kMostFaultLines);
        lines.push_back(subject + ": and " + Counted(rest, "more fault"));
    }
    return lines;
}

}  // namespace kta
