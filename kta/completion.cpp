#include "kta/completion.h"

#include <algorithm>
#include <functional>
#include <string_view>
#include <utility>

#include "kta/help.h"

namespace kta {
namespace {

// ---------------------------------------------------------------- what is offered

// An offer is a line: its kind, then the words or endings, each behind a bar. It stands in the
// option as the name of a check that accepts all, which nothing else shows.
constexpr std::string_view kWords = "words";
constexpr std::string_view kList = "list";  // several of the words, separated by commas
constexpr std::string_view kFiles = "files";
constexpr std::string_view kDirectories = "directories";

CLI::Option* Keep(CLI::Option* option, std::string_view kind,
                  const std::vector<std::string>& parts) {
    std::string offer(kind);
    for (const std::string& part : parts) {
        offer += "|" + part;
    }
    return option->check(CLI::Validator([](std::string&) { return std::string(); }, "", offer));
}

// Empty where none is kept.
std::string KeptOffer(CLI::Option* option) {
    try {
        for (int i = 0;; ++i) {
            const std::string& name = option->get_validator(i)->get_name();
            if (name.starts_with(kWords) || name.starts_with(kFiles)) {
                return name;
            }
        }
    } catch (const CLI::OptionNotFound&) {
        return {};
    }
}

std::string OfferOf(CLI::Option* option) {
    std::string offer = KeptOffer(option);
    if (offer.starts_with(kWords) && ValueName(option).ends_with(",...")) {
        offer.replace(0, kWords.size(), kList);
    }
    if (!offer.empty()) {
        return offer;
    }
    const std::string value = ValueName(option);
    if (value == " DIR") {
        return std::string(kDirectories);
    }
    const bool isFile = option->get_positional() || value.find("FILE") != value.npos ||
                        value.find("OUT") != value.npos || value.find("DIR") != value.npos;
    return isFile ? std::string(kFiles) : std::string();
}

// ---------------------------------------------------------------- tables of the script

// As bash quotes it.
std::string Quoted(const std::string& text) {
    std::string quoted = "'";
    for (const char c : text) {
        quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    }
    return quoted + "'";
}

std::vector<std::string> Dashed(const CLI::Option* option) {
    std::vector<std::string> names;
    for (const std::string& name : option->get_snames()) {
        names.push_back("-" + name);
    }
    for (const std::string& name : option->get_lnames()) {
        names.push_back("--" + name);
    }
    return names;
}

bool IsShown(const CLI::Option* option) {
    return !option->get_group().empty();
}

// The program's own options under the empty name, then those of each command.
std::vector<std::pair<std::string, CLI::App*>> CommandsOf(CLI::App& app) {
    std::vector<std::pair<std::string, CLI::App*>> commands = {{"", &app}};
    for (CLI::App* command : app.get_subcommands(std::function<bool(CLI::App*)>())) {
        commands.emplace_back(command->get_name(), command);
    }
    return commands;
}

std::string OptionLines(CLI::App& app) {
    std::string lines;
    for (const auto& [name, command] : CommandsOf(app)) {
        std::string names;
        for (const CLI::Option* option : command->get_options()) {
            for (const std::string& dashed :
                 IsShown(option) ? Dashed(option) : std::vector<std::string>()) {
                names += (names.empty() ? "" : "|") + dashed;
            }
        }
        lines += "        " + Quoted(name) + ") echo " + Quoted(names) + " ;;\n";
    }
    return lines;
}

std::string ValueLines(CLI::App& app) {
    std::string lines;
    for (const auto& [name, command] : CommandsOf(app)) {
        for (CLI::Option* option : command->get_options(std::function<bool(CLI::Option*)>())) {
            if (option->get_positional() || option->get_items_expected_max() == 0) {
                continue;
            }
            std::string patterns;
            for (const std::string& dashed : Dashed(option)) {
                patterns += (patterns.empty() ? "" : " | ") + Quoted(name + " " + dashed);
            }
            lines += "        " + patterns + ") offer=" + Quoted(OfferOf(option)) + " ;;\n";
        }
    }
    return lines;
}

std::string PlaceLines(CLI::App& app) {
    std::string lines;
    for (const auto& [name, command] : CommandsOf(app)) {
        int place = 0;
        for (CLI::Option* option : command->get_options(std::function<bool(CLI::Option*)>())) {
            if (option->get_positional()) {
                ++place;
                const bool isSeveral = option->get_items_expected_max() > 1;
                const std::string pattern = isSeveral ? Quoted(name + " ") + "*"
                                                      : Quoted(name + " " + std::to_string(place));
                lines += "        " + pattern + ") offer=" + Quoted(OfferOf(option)) + " ;;\n";
            }
        }
    }
    return lines;
}

// ---------------------------------------------------------------- the script

// @NAME@ is the program's name, @F@ what its functions' names begin with, @LINES@ of the tables.
constexpr std::string_view kScript =
    R"script(# Completes command lines of @NAME@ in bash; made by @NAME@ --generate bash-completion.

# The options of command $1.
@F@_options() {
    case $1 in
@OPTIONS@    esac
}

# What to offer as the value of option $2 of command $1; fails where it has none.
@F@_value() {
    case "$1 $2" in
@VALUES@        *) return 1 ;;
    esac
}

# What to offer in place $2, counted from 1, of the arguments of command $1 that are no options.
@F@_place() {
    case "$1 $2" in
@PLACES@        *) offer= ;;
    esac
}

# Offers directories, and the files that begin with $1 and end in one of the others; all files where
# there is none of these.
@F@_files() {
    local word=$1 name ending
    shift
    local -a all=()
    mapfile -t all < <(compgen -f -- "$word")
    for name in "${all[@]}"; do
        if [[ -d ${name/#~/$HOME} ]]; then
            COMPREPLY+=("$name")
            continue
        fi
        for ending in "$@"; do
            if [[ ${name,,} == *"$ending" ]]; then
                COMPREPLY+=("$name")
                break
            fi
        done
    done
    [[ $# -gt 0 && ${#COMPREPLY[@]} -gt 0 ]] || COMPREPLY=("${all[@]}")
    compopt -o filenames 2>/dev/null
}

# Offers what is told by $2, as the tables have it, for a word that begins with $1.
@F@_offer() {
    local word=$1 before= part
    local -a parts
    IFS='|' read -ra parts <<<"$2"
    # As the shell will read it.
    word=${word#[\"\']}
    word=${word//\\/}
    case ${parts[0]} in
        words | list)
            if [[ ${parts[0]} == list ]]; then
                [[ $word != *,* ]] || before=${word%,*},
                compopt -o nospace 2>/dev/null
            fi
            for part in "${parts[@]:1}"; do
                part=${part// /\\ }
                [[ ${part//\\/} != "${word##*,}"* ]] || COMPREPLY+=("${before// /\\ }$part")
            done
            ;;
        directories)
            mapfile -t COMPREPLY < <(compgen -d -- "$word")
            compopt -o filenames 2>/dev/null
            ;;
        files) @F@_files "$word" "${parts[@]:1}" ;;
    esac
}

@F@() {
    local word=${COMP_WORDS[COMP_CWORD]} command= option= ended= offer= part i place=1
    local commands=@COMMANDS@
    COMPREPLY=()
    # bash has --option=value as three words.
    [[ $word != = ]] || word=
    for ((i = 1; i < COMP_CWORD; ++i)); do
        part=${COMP_WORDS[i]}
        if [[ $part == : ]]; then
            ((++i))
        elif [[ -n $option ]]; then
            [[ $part == = ]] || option=
        elif [[ $part == -- ]]; then
            ended=1
        elif [[ $part == -?* && -z $ended ]]; then
            ! @F@_value "$command" "$part" || option=$part
        elif [[ -n $commands && -z $command ]]; then
            command=$part
        else
            ((++place))
        fi
    done
    if [[ -n $option ]]; then
        @F@_value "$command" "$option"
        @F@_offer "$word" "$offer"
    elif [[ $word == -* && -z $ended ]]; then
        @F@_offer "$word" "words|$(@F@_options "$command")"
    elif [[ -n $commands && -z $command ]]; then
        @F@_offer "$word" "words|$commands"
    else
        @F@_place "$command" "$place"
        @F@_offer "$word" "$offer"
    fi
}

complete -F @F@ @NAME@
)script";

void ReplaceAll(std::string& text, std::string_view name, const std::string& value) {
    for (std::size_t at = 0; (at = text.find(name, at)) != std::string::npos; at += value.size()) {
        text.replace(at, name.size(), value);
    }
}

}  // namespace

CLI::Option* OfferWords(CLI::Option* option, const std::vector<std::string>& words) {
    return Keep(option, kWords, words);
}

CLI::Option* OfferFiles(CLI::Option* option, const std::vector<std::string>& endings) {
    return Keep(option, kFiles, endings);
}

std::string BashCompletion(CLI::App& app) {
    std::string commands;
    for (const auto& [name, command] : CommandsOf(app)) {
        commands += (commands.empty() ? "" : "|") + name;
    }
    std::string function = "_" + app.get_name();
    std::replace(function.begin(), function.end(), '-', '_');
    std::string script(kScript);
    ReplaceAll(script, "@OPTIONS@", OptionLines(app));
    ReplaceAll(script, "@VALUES@", ValueLines(app));
    ReplaceAll(script, "@PLACES@", PlaceLines(app));
    ReplaceAll(script, "@COMMANDS@", Quoted(commands));
    ReplaceAll(script, "@F@", function);
    ReplaceAll(script, "@NAME@", app.get_name());
    return script;
}

}  // namespace kta
