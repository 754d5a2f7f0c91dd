// Text that comes from files and command lines and is shown in lines.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace kta {

// Control characters become \xNN and a backslash two, so that nothing is lost and the text stays
// one field of a table.
std::string Escaped(std::string_view text);

// Line ends and other control characters become one blank a run; none at the ends.
std::string OneLine(std::string_view text);

// "1 node", "2 nodes", "2 meshes", "2 vertices".
std::string Counted(std::size_t count, const std::string& noun);

// The texts with ", " between them.
template <class Texts>
std::string Joined(const Texts& texts) {
    std::string joined;
    for (const auto& text : texts) {
        joined += (joined.empty() ? "" : ", ") + std::string(text);
    }
    return joined;
}

// Capital letters A to Z count as small; `ending` holds none.
bool EndsWithIgnoringCase(std::string_view text, std::string_view ending);

// The word that was probably meant: the first of `words` that is fewest letters left out, added,
// replaced or swapped with their neighbour away (the optimal string alignment distance), at most a
// third of the letters of `typed`, but one at least. Empty where there is none, and for more than
// 64 letters.
std::string NearestWord(std::string_view typed, const std::vector<std::string>& words);

// The lines shown of one file's faults: the first kMostFaultLines, and in a last line, if there
// are more, "SUBJECT: and N more faults".
constexpr std::size_t kMostFaultLines = 20;
std::vector<std::string> FirstFaults(std::vector<std::string> lines, const std::string& subject);

}  // namespace kta
