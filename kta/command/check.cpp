#include "kta/check.h"

#include <algorithm>
#include <filesystem>
#include <iostream>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <system_error>

#include "kta/check/report.h"
#include "kta/check/self_test.h"
#include "kta/command/command.h"
#include "kta/help.h"
#include "kta/text.h"
#include "kta/whole_file.h"

namespace kta::command {
namespace {

namespace fs = std::filesystem;

// What a run shows instead of checking files.
enum class Instead { nothing, selfTest, codes, schema };

struct CheckArguments {
    std::vector<std::string> paths;
    std::vector<std::string> ignored;  // codes
    std::string rulesFile;
    std::string fixtures;  // directory
    ReportOptions report{.maxIssues = 100};
    bool strict = false;
    bool json = false;
    bool markdown = false;
    ColorMode color = ColorMode::automatic;
    Instead instead = Instead::nothing;
};

// ---------------------------------------------------------------- files

// The paths of what is checked together; empty where there is none.
struct Pair {
    std::string actor;
    std::string motion;
};

constexpr std::string_view kActorEnding = "temp1";
constexpr std::string_view kMotionEnding = "temp2";

// Every FILEtemp1 and FILEtemp2 below a directory, those of one FILE together, by their paths.
std::vector<Pair> PairsBelow(const std::string& directory) {
    std::map<std::string, Pair> pairs;
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(directory)) {
        const std::string path = entry.path().string();
        const bool isActor = path.ends_with(kActorEnding);
        if ((isActor || path.ends_with(kMotionEnding)) && entry.is_regular_file()) {
            Pair& pair = pairs[path.substr(0, path.size() - kActorEnding.size())];
            (isActor ? pair.actor : pair.motion) = path;
        }
    }
    std::vector<Pair> sorted;
    for (auto& [name, pair] : pairs) {
        sorted.push_back(std::move(pair));
    }
    return sorted;
}

// What the arguments mean: directories, or one or two files. Complains where that is nothing.
std::vector<Pair> PairsOf(const std::vector<std::string>& paths) {
    const auto isDirectory = [](const std::string& path) {
        std::error_code error;
        return fs::is_directory(path, error);
    };
    if (!std::any_of(paths.begin(), paths.end(), isDirectory)) {
        if (paths.size() > 2) {
            Complain("check: " + std::to_string(paths.size()) +
                     " files given, expected an actor and a motion file, or directories");
            return {};
        }
        return {{paths.front(), paths.size() == 2 ? paths.back() : ""}};
    }
    std::vector<Pair> pairs;
    for (const std::string& path : paths) {
        if (!isDirectory(path)) {
            Complain(path + ": is no directory, expected one as the others are");
            return {};
        }
        try {
            std::vector<Pair> found = PairsBelow(path);
            if (found.empty()) {
                Complain(path + ": no file in it whose name ends in temp1 or temp2");
                return {};
            }
            std::move(found.begin(), found.end(), std::back_inserter(pairs));
        } catch (const fs::filesystem_error& error) {
            Complain(path + ": cannot be read (" + error.code().message() + ")");
            return {};
        }
    }
    return pairs;
}

// ---------------------------------------------------------------- checks

// A single file may be of either kind.
CheckedFiles CheckPair(const Pair& pair, const CheckOptions& options) {
    CheckedFiles checked{.actor = NameOf(pair.actor), .motion = pair.motion};
    const bool both = !pair.actor.empty() && !pair.motion.empty();
    const std::string& only = pair.actor.empty() ? pair.motion : pair.actor;
    Reading first = ReadGiven(only);
    Reading motion;
    if (both) {
        RequireKind(first, kFileKindActor);
        motion = ReadFile(pair.motion, kFileKindMotion);
    } else if (only.ends_with(kActorEnding)) {
        RequireKind(first, kFileKindActor);
    } else if (only.ends_with(kMotionEnding)) {
        RequireKind(first, kFileKindMotion);
    }
    if (!both && first.file && first.file->kind == kFileKindMotion) {
        checked.motion = NameOf(only);
        checked.actor.clear();
    }
    checked.issues = Check(first, both ? &motion : nullptr, options);
    for (const auto& [reading, path] :
         {std::pair(&first, &only), std::pair(&motion, &pair.motion)}) {
        if (!reading->inputError.empty()) {
            checked.unreadable.push_back({NameOf(*path), reading->inputError});
        }
    }
    return checked;
}

Style StyleOf(Severity severity) {
    return severity == Severity::error     ? Style::bad
           : severity == Severity::warning ? Style::caution
                                           : Style::plain;
}

void ShowLines(const CheckedFiles& files, const ReportOptions& options, bool isColored) {
    const std::vector<const Issue*> shown = ShownIssues(files, options);
    for (const Issue* issue : shown) {
        std::cout << Styled(StyleOf(issue->severity),
                            OneLine(IssueLine(PathOf(files, *issue), *issue)), isColored)
                  << '\n';
    }
    const IssueCounts counts = CountIssues(files.issues);
    const std::size_t all = counts.errors + counts.warnings + (options.notes ? counts.notes : 0);
    if (all > shown.size()) {
        std::cout << (files.actor.empty() ? files.motion : files.actor) << ": and "
                  << all - shown.size() << " more (--max-issues 0 shows all)\n";
    }
}

void ShowSummary(const std::vector<CheckedFiles>& checks, const ReportOptions& options,
                 bool isColored) {
    std::size_t files = 0;
    IssueCounts counts;
    for (const CheckedFiles& check : checks) {
        files += (check.actor.empty() ? 0 : 1) + (check.motion.empty() ? 0 : 1) -
                 check.unreadable.size();
        counts.Add(CountIssues(check.issues));
    }
    const Style style = counts.errors > 0     ? Style::bad
                        : counts.warnings > 0 ? Style::caution
                                              : Style::good;
    std::cout << Styled(style,
                        Counted(files, "file") + " checked: " + Counted(counts.errors, "error") +
                            ", " + Counted(counts.warnings, "warning") + ", " +
                            Counted(counts.notes, "note") +
                            (counts.notes > 0 && !options.notes ? " (--notes shows them)" : ""),
                        isColored)
              << '\n';
}

// Of all checks; complains of what could not be read.
Status StatusOf(const std::vector<CheckedFiles>& checks, bool strict) {
    Status status = kDone;
    for (const CheckedFiles& check : checks) {
        const IssueCounts counts = CountIssues(check.issues);
        if (counts.errors > 0 || (strict && counts.warnings > 0)) {
            status = std::max(status, kFaultyFile);
        }
        for (const UnreadableFile& file : check.unreadable) {
            Complain(file.path + ": " + file.error);
            status = kUnusable;
        }
    }
    return status;
}

// False, after a complaint, where rules or codes are none.
bool ReadChoices(const CheckArguments& arguments, CheckOptions& options) {
    if (!arguments.rulesFile.empty()) {
        constexpr std::size_t kMostBytes = 1 << 20;
        const std::optional<std::string> text = ReadWholeFile(arguments.rulesFile, kMostBytes + 1);
        if (text && text->size() > kMostBytes) {
            Complain(arguments.rulesFile + ": has more than 1 MiB, expected a file of rules");
            return false;
        }
        if (!text) {
            std::error_code ignored;
            Complain(arguments.rulesFile + (fs::is_directory(arguments.rulesFile, ignored)
                                                ? ": is a directory, expected a JSON file"
                                                : ": cannot be read"));
            return false;
        }
        try {
            AddRules(*text, options);
        } catch (const RulesError& error) {
            Complain(arguments.rulesFile + ": " + error.what());
            return false;
        }
    }
    for (const std::string& name : arguments.ignored) {
        const IssueType* type = FindIssueType(name);
        if (type == nullptr) {
            Complain("--ignore: \"" + name + "\" is no code (kta check --list-codes shows them)");
            return false;
        }
        options.severities[type->code] = std::nullopt;
    }
    return true;
}

Status CheckAll(const CheckArguments& arguments) {
    CheckOptions options{.notes = true};
    if (!ReadChoices(arguments, options)) {
        return kUnusable;
    }
    if (arguments.paths.empty()) {
        Complain("check: ACTOR is required (see kta check --help)");
        return kUnusable;
    }
    const std::vector<Pair> pairs = PairsOf(arguments.paths);
    if (pairs.empty()) {
        return kUnusable;
    }
    const bool isColored =
        ShowsColors(arguments.color, StandardStream::out, IsTerminal(StandardStream::out));
    std::vector<CheckedFiles> checks;
    for (const Pair& pair : pairs) {
        checks.push_back(CheckPair(pair, options));
        if (!arguments.json) {
            ShowLines(checks.back(), arguments.report, isColored);
        }
    }
    if (arguments.json) {
        WriteCheckJson(checks, arguments.report, std::cout);
    } else {
        ShowSummary(checks, arguments.report, isColored);
    }
    return StatusOf(checks, arguments.strict);
}

Status Run(const CheckArguments& arguments) {
    switch (arguments.instead) {
        case Instead::selfTest:
            return RunSelfTest(arguments.fixtures, std::cout) ? kDone : kFaultyFile;
        case Instead::codes:
            arguments.markdown ? WriteCodesPage(std::cout) : WriteCodes(std::cout);
            return kDone;
        case Instead::schema:
            WriteCheckSchema(std::cout);
            return kDone;
        case Instead::nothing:
            break;
    }
    return CheckAll(arguments);
}

void AddInsteadFlag(CLI::App& check, const std::shared_ptr<CheckArguments>& arguments,
                    const std::string& name, Instead instead, const std::string& help) {
    check.add_flag_callback(
        name, [arguments, instead] { arguments->instead = instead; }, help);
}

// What is checked, and what is told of it.
void AddChoices(CLI::App& check, CheckArguments& arguments) {
    check
        .add_option("ACTOR", arguments.paths,
                    "An actor file and, if wanted, its motion file; or a single file of either\n"
                    "kind; or directories, of which every FILEtemp1 and FILEtemp2 is checked")
        ->option_text("[MOTION] | DIRECTORY...");
    check.add_flag("--notes", arguments.report.notes,
                   "Tell also what is rightly so and yet worth knowing");
    check.add_flag("--strict", arguments.strict, "Status 1 for warnings too");
    AddList(check, "--ignore", arguments.ignored,
            "Leave out what has this code, as in weight-sum (repeatable)", CLI::Validator())
        ->type_name("CODE,...")
        ->option_text("CODE,...");
    check.add_option("--rules", arguments.rulesFile, "A studio's rules, a JSON file")
        ->type_name("FILE");
    check
        .add_option("--max-issues", arguments.report.maxIssues,
                    "Show so many of each actor and motion file; 0 shows all")
        ->type_name("N")
        ->check(CLI::Validator(CheckCount, ""))
        ->capture_default_str();
}

// Other forms, and what is done instead of checking.
void AddForms(CLI::App& check, const std::shared_ptr<CheckArguments>& arguments) {
    check.add_flag("--json", arguments->json, "One JSON object; --json-schema describes it");
    AddInsteadFlag(check, arguments, "--json-schema", Instead::schema,
                   "Print the JSON Schema of --json");
    AddInsteadFlag(check, arguments, "--list-codes", Instead::codes, "Print the table of codes");
    check.add_flag("--markdown", arguments->markdown, "With --list-codes: as a page");
    AddInsteadFlag(check, arguments, "--self-test", Instead::selfTest,
                   "Plant each fault into good files made in memory and see that it is found,\n"
                   "and nothing else");
    check
        .add_option("--fixtures", arguments->fixtures,
                    "With --self-test: write the faulty files into this directory")
        ->type_name("DIR");
}

}  // namespace

Command AddCheck(CLI::App& kta) {
    const auto arguments = std::make_shared<CheckArguments>();
    CLI::App* check =
        kta.add_subcommand("check",
                           "Every rule that readers of the files rely on, and a studio's own: one "
                           "line for each thing\n"
                           "wrong, with its place and code. Status 1 when there is an error.");
    AddChoices(*check, *arguments);
    AddForms(*check, arguments);
    AddColorOption(*check, arguments->color);
    return {check, [arguments] { return Run(*arguments); }};
}

}  // namespace kta::command
