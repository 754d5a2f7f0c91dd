#include "kta/help.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "kta/completion.h"

#ifndef _WIN32
#include <sys/ioctl.h>
#include <unistd.h>
#endif

namespace kta {

std::string OptionNames(const CLI::Option* option, bool isPositional) {
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

std::string Wrapped(const std::string& text, std::size_t indent, std::size_t columns) {
    std::string lines;
    std::size_t column = indent;
    std::istringstream words(text);
    for (std::string word; words >> word;) {
        if (column > indent && column + 1 + word.size() > columns) {
            lines += "\n" + std::string(indent, ' ');
            column = indent;
        }
        if (column > indent) {
            lines += ' ';
            ++column;
        }
        lines += word;
        column += word.size();
    }
    return lines + "\n";
}

std::vector<std::string> ParagraphsOf(const std::string& text) {
    std::vector<std::string> paragraphs;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find("\n\n", begin), text.size());
        if (end > begin) {
            paragraphs.push_back(text.substr(begin, end - begin));
        }
        begin = end + 2;
    }
    return paragraphs;
}

std::string DescriptionWithDefault(const CLI::Option* option) {
    const std::string standard = option->get_default_str();
    return option->get_description() + (standard.empty() ? "" : " (default: " + standard + ")");
}

// CLI11 appends the names of checks to a type's, after a colon.
std::string ValueName(const CLI::Option* option) {
    if (!option->get_option_text().empty()) {
        return " " + option->get_option_text();
    }
    if (option->get_positional() || option->get_items_expected_max() == 0) {
        return "";
    }
    const std::string type = option->get_type_name();
    return " " + type.substr(0, type.find(':'));
}

namespace {

constexpr std::size_t kMostColumns = 100;
constexpr std::size_t kFewestColumns = 40;

std::string WrappedParagraphs(const std::string& text, std::size_t columns) {
    std::string lines;
    for (const std::string& paragraph : ParagraphsOf(text)) {
        lines += (lines.empty() ? "" : "\n") + Wrapped(paragraph, 0, columns);
    }
    return lines;
}

// One block an option: its names and the name of its value, then its wrapped description.
class HelpFormatter : public CLI::Formatter {
  public:
    explicit HelpFormatter(std::size_t columns)
        : columns_(columns), textColumn_(columns >= 70 ? 30 : 8) {}

    std::string make_description(const CLI::App* app) const override {
        return WrappedParagraphs(app->get_description(), columns_) + "\n";
    }
    std::string make_usage(const CLI::App* app, std::string name) const override {
        const bool isAlone = make_positionals(app).empty();
        return CLI::Formatter::make_usage(app, name) + (isAlone ? "\n" : "");
    }
    std::string make_footer(const CLI::App* app) const override {
        return WrappedParagraphs(app->get_footer(), columns_);
    }
    std::string make_group(std::string group, bool isPositional,
                           std::vector<const CLI::Option*> options) const override;
    std::string make_option(const CLI::Option* option, bool isPositional) const override;
    std::string make_subcommand(const CLI::App* command) const override {
        return Block(command->get_name(), command->get_description());
    }

  private:
    std::string Block(const std::string& name, const std::string& description) const;

    std::size_t columns_, textColumn_;
};

std::string HelpFormatter::Block(const std::string& name, const std::string& description) const {
    const std::string head = "  " + name;
    const std::string gap = head.size() + 2 > textColumn_
                                ? "\n" + std::string(textColumn_, ' ')
                                : std::string(textColumn_ - head.size(), ' ');
    return head + gap + Wrapped(description, textColumn_, columns_);
}

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
    return Block(OptionNames(option, isPositional) + ValueName(option),
                 DescriptionWithDefault(option));
}

}  // namespace

std::size_t TerminalColumns() {
    constexpr std::size_t kUsual = 80;
    if (const char* const columns = std::getenv("COLUMNS")) {
        const long count = std::strtol(columns, nullptr, 10);
        return count > 0 ? static_cast<std::size_t>(count) : kUsual;
    }
#ifndef _WIN32
    winsize size{};
    if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) {
        return size.ws_col;
    }
#endif
    return kUsual;
}

void WrapHelp(CLI::App& app, std::size_t columns) {
    app.formatter(
        std::make_shared<HelpFormatter>(std::clamp(columns, kFewestColumns, kMostColumns)));
}

CLI::Option* AddColorOption(CLI::App& app, ColorMode& mode) {
    static const std::map<std::string, ColorMode> kModes = {
        {"auto", ColorMode::automatic}, {"always", ColorMode::always}, {"never", ColorMode::never}};
    CLI::Option* const option = app.add_option_function<std::string>(
        "--color", [&mode](const std::string& text) { mode = kModes.at(text); },
        "colours: auto, always or never (default: auto, on a terminal, unless NO_COLOR is set or "
        "TERM is dumb)");
    return OfferWords(option, {"always", "auto", "never"})
        ->type_name("MODE")
        ->check(CLI::Validator(
            [](std::string& text) {
                return kModes.contains(text) ? std::string()
                                             : "\"" + text + "\", expected auto, always or never";
            },
            ""));
}

}  // namespace kta
