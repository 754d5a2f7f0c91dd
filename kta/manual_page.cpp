#include "kta/manual_page.h"

#include <cctype>
#include <string_view>

#include "kta/completion.h"
#include "kta/help.h"

namespace kta {
namespace {

// Text of a page: nothing in it is a macro or an escape, and a hyphen before a letter of an option
// stays one when it is copied from the page.
std::string Escaped(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else {
            if ((c == '.' || c == '\'') && (escaped.empty() || escaped.back() == '\n')) {
                escaped += "\\&";
            }
            escaped += c;
        }
    }
    return escaped;
}

std::string Bold(std::string_view text) {
    return "\\fB" + Escaped(text) + "\\fR";
}

std::string Italic(std::string_view text) {
    return "\\fI" + Escaped(text) + "\\fR";
}

// One paragraph, in lines that an editor shows whole.
std::string Filled(const std::string& text) {
    return Escaped(Wrapped(text, 0, 78));
}

std::string Paragraphs(const std::string& text) {
    std::string page;
    for (const std::string& paragraph : ParagraphsOf(text)) {
        page += (page.empty() ? "" : ".PP\n") + Filled(paragraph);
    }
    return page;
}

std::string Entry(const std::string& term, const std::string& text) {
    return ".TP\n" + term + "\n" + Filled(text);
}

// ---------------------------------------------------------------- options

std::string OptionEntry(const CLI::Option& option, bool isPositional) {
    const std::string value = ValueName(&option);
    const std::string names = OptionNames(&option, isPositional);
    return Entry((isPositional ? Italic(names) : Bold(names)) + (value.empty() ? "" : " ") +
                     (value.empty() ? "" : Italic(std::string_view(value).substr(1))),
                 DescriptionWithDefault(&option));
}

std::string Synopsis(const CLI::App& app, const std::string& name) {
    std::string line = Bold(name) + " [" + Italic("OPTIONS") + "]";
    for (const CLI::Option* option : app.get_options()) {
        if (!option->get_positional()) {
            continue;
        }
        const bool isSeveral =
            option->get_items_expected_max() > 1 && option->get_option_text().empty();
        const std::string text = option->get_option_text().empty()
                                     ? option->get_name(true)
                                     : option->get_name(true) + " " + option->get_option_text();
        const std::string shown = Italic(text) + (isSeveral ? "..." : "");
        line += " " + (option->get_required() ? shown : "[" + shown + "]");
    }
    return line;
}

std::string Positionals(const CLI::App& app) {
    std::string page;
    for (const CLI::Option* option : app.get_options()) {
        page += option->get_positional() ? OptionEntry(*option, true) : "";
    }
    return page;
}

std::string OptionsOf(const CLI::App& app, const std::string& group) {
    std::string page;
    for (const CLI::Option* option : app.get_options()) {
        const bool isHelpOfCommand = app.get_parent() != nullptr && option == app.get_help_ptr();
        if (option->get_group() == group && option->nonpositional() && !isHelpOfCommand) {
            page += OptionEntry(*option, false);
        }
    }
    return page;
}

// A heading a group, where there are several.
std::string OptionGroups(const CLI::App& app) {
    const std::vector<std::string> groups = app.get_groups();
    std::string page;
    for (const std::string& group : groups) {
        const std::string options = group.empty() ? "" : OptionsOf(app, group);
        page +=
            (options.empty() || groups.size() < 2 ? "" : ".SS " + Escaped(group) + "\n") + options;
    }
    return page;
}

std::string Commands(const CLI::App& app) {
    std::string page;
    for (const CLI::App* command : app.get_subcommands(nullptr)) {
        page += ".SS " + Synopsis(*command, app.get_name() + " " + command->get_name()) + "\n" +
                Paragraphs(command->get_description()) + Positionals(*command) +
                OptionGroups(*command);
        if (command->get_footer() != app.get_footer()) {
            page += ".PP\n" + Paragraphs(command->get_footer());
        }
    }
    return page;
}

// ---------------------------------------------------------------- the page

constexpr std::string_view kExitStatus = "Exit status: ";

// The paragraphs of the help's footer that do, or do not, tell the exit status.
std::string Footer(const CLI::App& app, bool exitStatus) {
    std::string text;
    for (const std::string& paragraph : ParagraphsOf(app.get_footer())) {
        if (paragraph.starts_with(kExitStatus) == exitStatus) {
            text += "\n\n" + paragraph.substr(exitStatus ? kExitStatus.size() : 0);
        }
    }
    if (exitStatus && !text.empty()) {
        text[2] = static_cast<char>(std::toupper(static_cast<unsigned char>(text[2])));
    }
    return text;
}

std::string Section(const std::string& heading, const std::string& text) {
    return text.empty() ? "" : ".SH " + Escaped(heading) + "\n" + text;
}

std::string Entries(const ManualSection& section) {
    std::string page;
    for (const ManualEntry& entry : section.entries) {
        page += entry.term.empty() ? (page.empty() ? "" : ".PP\n") + Filled(entry.text)
                                   : Entry(Bold(entry.term), entry.text);
    }
    return page;
}

std::string UpperCase(std::string text) {
    for (char& c : text) {
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    return text;
}

}  // namespace

std::string ManualPage(CLI::App& app, const Manual& manual) {
    const std::string name = app.get_name();
    const bool hasCommands = !app.get_subcommands(nullptr).empty();
    const std::string synopsis = hasCommands ? Bold(name) + " " + Italic("COMMAND") + " [" +
                                                   Italic("OPTIONS") + "] " + Italic("FILE") + "..."
                                             : Synopsis(app, name);
    std::string page =
        "."
        "TH " +
        Escaped(UpperCase(name)) + " 1 " HDO_RELEASE_DATE " \"" + Escaped(app.version()) +
        "\" \"User Commands\"\n" +
        Section("NAME", Escaped(name) + " \\- " + Escaped(manual.summary) + "\n") +
        Section("SYNOPSIS", synopsis + "\n") +
        Section("DESCRIPTION",
                Paragraphs(app.get_description() + Footer(app, false)) + Positionals(app)) +
        Section("COMMANDS", Commands(app)) + Section("OPTIONS", OptionGroups(app)) +
        Section("EXIT STATUS", Paragraphs(Footer(app, true)));
    for (const ManualSection& section : manual.sections) {
        page += Section(section.heading, Entries(section));
    }
    return page;
}

void AddGenerate(CLI::App& app, const Manual& manual, const std::string& group,
                 const std::function<void(CLI::App&)>& addOffers) {
    CLI::Option* const generate = app.add_option_function<std::string>(
        "--generate",
        [&app, manual, addOffers](const std::string& what) {
            if (addOffers) {
                addOffers(app);
            }
            std::string text = what == "man" ? ManualPage(app, manual) : BashCompletion(app);
            text.pop_back();  // printed with a line end
            throw CLI::CallForVersion(text, 0);
        },
        "print the manual page (man), or the script that completes command lines in bash "
        "(bash-completion), and end");
    generate->type_name("man|bash-completion")
        ->group(group)
        ->check(CLI::Validator(
            [](std::string& text) {
                return text == "man" || text == "bash-completion"
                           ? std::string()
                           : "\"" + text + "\", expected man or bash-completion";
            },
            ""));
    OfferWords(generate, {"man", "bash-completion"});
}

}  // namespace kta
