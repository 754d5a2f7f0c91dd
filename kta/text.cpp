#include "kta/text.h"

#include <algorithm>
#include <utility>

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
    return number + noun + (noun.ends_with("sh") || noun.ends_with("ss") ? "es" : "s");
}

bool EndsWithIgnoringCase(std::string_view text, std::string_view ending) {
    return text.size() >= ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), text.rbegin(),
                      [](char wanted, char c) { return wanted == Small(c); });
}

namespace {

std::size_t Distance(std::string_view a, std::string_view b) {
    std::vector<std::size_t> beforeLast(b.size() + 1), last(b.size() + 1), row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) {
        row[j] = j;
    }
    for (std::size_t i = 1; i <= a.size(); ++i) {
        beforeLast = std::exchange(last, row);
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t replaced = last[j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1]) {
                row[j] = std::min(row[j], beforeLast[j - 2] + 1);
            }
        }
    }
    return row[b.size()];
}

}  // namespace

std::string NearestWord(std::string_view typed, const std::vector<std::string>& words) {
    constexpr std::size_t kMostLetters = 64;
    std::string nearest;
    if (typed.size() > kMostLetters) {
        return nearest;
    }
    std::size_t least = std::max<std::size_t>(1, typed.size() / 3) + 1;
    for (const std::string& word : words) {
        if (const std::size_t distance = Distance(typed, word); distance < least) {
            least = distance;
            nearest = word;
        }
    }
    return nearest;
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
