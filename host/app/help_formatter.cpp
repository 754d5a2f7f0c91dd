#include "host/app/help_formatter.h"

#include <sstream>

namespace maxhost::app {
namespace {

constexpr std::size_t kWidth = 100;
constexpr std::size_t kTextColumn = 30;

std::string Names(const CLI::Option* option, bool isPositional) {
    if (isPositional) {
        return option->get_name(true);
    }
    std::string names;
    for (const std::string& name : option->get_snames()) {
        names += "-" + name + ", ";
    }
    const std::vector<std::string>& longNames = option->get_lnames();
    const bool isSwitch = longNames.size() == 2 && longNames[1] == "no-" + longNames[0];
    return names + (isSwitch ? "--[no-]" : "--") + longNames.at(0);
}

std::string Wrapped(const std::string& text) {
    std::string lines;
    std::size_t column = kTextColumn;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (column > kTextColumn && column + 1 + word.size() > kWidth) {
            lines += "\n" + std::string(kTextColumn, ' ');
            column = kTextColumn;
        }
        if (column > kTextColumn) {
            lines += ' ';
            ++column;
        }
        lines += word;
        column += word.size();
    }
    return lines + "\n";
}

}  // namespace

std::string HelpFormatter::make_group(std::string group, bool isPositional,
                                      std::vector<const CLI::Option*> options) const {
    std::string text = group + ":\n";
    for (const CLI::Option* option : options) {
        text += make_option(option, isPositional);
    }
    // CLI11 itself puts an empty line between the other groups.
    return isPositional ? "\n" + text + "\n" : text;
}

std::string HelpFormatter::make_option(const CLI::Option* option, bool isPositional) const {
    std::string head = "  " + Names(option, isPositional);
    if (!isPositional && option->get_items_expected_max() > 0) {
        head += " " + option->get_type_name();
    }
    const std::string gap = head.size() + 2 > kTextColumn
                                ? "\n" + std::string(kTextColumn, ' ')
                                : std::string(kTextColumn - head.size(), ' ');
    return head + gap + Wrapped(option->get_description());
}

}  // namespace maxhost::app
