#include "kta/diff/diff.h"

#include <charconv>
#include <cmath>
#include <iostream>
#include <memory>

#include "kta/command/command.h"
#include "kta/dump.h"
#include "kta/preview/overlay_page.h"
#include "kta/text.h"

namespace kta::command {
namespace {

struct DiffOptions {
    std::vector<std::string> files;
    Tolerance tolerance;
    bool order = false;
    std::size_t mostLines = 100;
    bool json = false;
    bool quiet = false;
    bool git = false;
    std::string page;  // empty: none
};

// ---------------------------------------------------------------- two files

DiffReport ReportOf(const DiffOptions& options, const std::string& nameA,
                    const std::string& nameB) {
    return {nameA, nameB, options.tolerance, options.order, options.mostLines};
}

void Write(const Diff& diff, const DiffOptions& options, const DiffReport& report,
           KTAFileKind kind) {
    if (options.json) {
        WriteDiffJson(diff, kind, report, std::cout);
    } else if (!options.quiet) {
        WriteDiff(diff, report, std::cout);
    }
}

// False where it cannot be written, which was complained of.
bool WritePage(const File& a, const File& b, const Diff& diff, const DiffReport& report,
               const std::string& path) {
    if (a.kind != kFileKindActor) {
        Complain("--preview: " + report.nameA + " and " + report.nameB +
                 " are motion files, expected actor files");
        return false;
    }
    std::vector<std::string> warnings;
    const std::string page = EncodeOverlayPage(a, b, diff, report, warnings);
    for (const std::string& warning : warnings) {
        Complain(warning);
    }
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(page.data());
    return WriteOutput(path, {bytes, page.size()});
}

std::vector<std::string> FirstFaultsOf(const std::string& name, const Reading& reading) {
    return FirstFaults(FaultLines(name, reading), name);
}

std::string KindsText(const std::string& nameA, const File& a, const std::string& nameB,
                      const File& b) {
    return nameA + " is of the kind \"" + KindName(a.kind) + "\", " + nameB + " of the kind \"" +
           KindName(b.kind) + "\", expected two of one kind";
}

// What could be read of faulty files is compared; that they are equal cannot be told then.
Status CompareFiles(const DiffOptions& options) {
    const std::string& pathA = options.files[0];
    const std::string& pathB = options.files[1];
    if (pathA == "-" && pathB == "-") {
        Complain("standard input given for both files, expected one");
        return kUnusable;
    }
    const std::string nameA = NameOf(pathA);
    const std::string nameB = NameOf(pathB);
    const Reading a = ReadGiven(pathA);
    const Reading b = ReadGiven(pathB);
    const bool goodA = Report(FirstFaultsOf(nameA, a), a) == kDone;
    const bool goodB = Report(FirstFaultsOf(nameB, b), b) == kDone;
    if (!a.file || !b.file) {
        return kUnusable;
    }
    if (a.file->kind != b.file->kind) {
        Complain(KindsText(nameA, *a.file, nameB, *b.file));
        return kUnusable;
    }
    const Diff diff = Compare(*a.file, *b.file, options.tolerance);
    const DiffReport report = ReportOf(options, nameA, nameB);
    Write(diff, options, report, a.file->kind);
    if (!options.page.empty() && !WritePage(*a.file, *b.file, diff, report, options.page)) {
        return kUnusable;
    }
    if (!goodA || !goodB) {
        return kUnusable;
    }
    return diff.Different(options.order) ? kDifferent : kDone;
}

// ---------------------------------------------------------------- called by git

// What git gives a program that compares for it: the path in the repository, then file, object and
// mode of the old and of the new state, and for a renamed file its new path and a text. A file that
// is not there is /dev/null. Of an unmerged file there is the path alone.
constexpr std::size_t kGitArguments = 7;
constexpr std::size_t kGitArgumentsOfRenamed = 9;
constexpr const char* kGitNoFile = "/dev/null";

struct GitSide {
    std::string name;  // as shown
    Reading reading;
    bool exists = true;
};

GitSide ReadGitSide(const std::string& prefix, const std::string& path, const std::string& file) {
    GitSide side;
    side.exists = file != kGitNoFile;
    side.name = side.exists ? prefix + path : file;
    if (side.exists) {
        side.reading = ReadFile(file);
    }
    return side;
}

// As it is not there, a file of the other's kind without chunks.
void FillMissing(GitSide& side, const GitSide& other) {
    if (!side.exists && other.reading.file) {
        side.reading.file.emplace().kind = other.reading.file->kind;
    }
}

void CompareGitSides(GitSide& a, GitSide& b, const DiffOptions& options) {
    for (const GitSide* side : {&a, &b}) {
        for (const std::string& line : FirstFaultsOf(side->name, side->reading)) {
            std::cout << OneLine(ToUtf8(line)) << '\n';
        }
    }
    FillMissing(a, b);
    FillMissing(b, a);
    if (!a.reading.file || !b.reading.file) {
        std::cout << "not compared\n";
    } else if (a.reading.file->kind != b.reading.file->kind) {
        std::cout << OneLine(ToUtf8(KindsText(a.name, *a.reading.file, b.name, *b.reading.file)))
                  << '\n';
    } else {
        WriteDiff(Compare(*a.reading.file, *b.reading.file, options.tolerance),
                  ReportOf(options, a.name, b.name), std::cout);
    }
}

// Everything is told on standard output, which git shows with the other files' differences, and the
// status is always 0: any other ends git.
Status CompareForGit(const DiffOptions& options) {
    const std::vector<std::string>& files = options.files;
    const bool renamed = files.size() == kGitArgumentsOfRenamed;
    const std::string& path = files[0];
    const std::string& newPath = renamed ? files[7] : path;
    std::cout << "diff --kta " << OneLine(ToUtf8("a/" + path + " b/" + newPath)) << '\n';
    if (files.size() == 1) {
        std::cout << "unmerged\n";
        return kDone;
    }
    GitSide a = ReadGitSide("a/", path, files[1]);
    GitSide b = ReadGitSide("b/", newPath, files[4]);
    CompareGitSides(a, b, options);
    return kDone;
}

Status Run(const DiffOptions& options) {
    const std::size_t count = options.files.size();
    if (options.git) {
        if (count == 1 || count == kGitArguments || count == kGitArgumentsOfRenamed) {
            return CompareForGit(options);
        }
        Complain(Counted(count, "argument") +
                 " behind --git, expected the 1, 7 or 9 that git gives");
        return kUnusable;
    }
    if (count != 2) {
        Complain(Counted(count, "file") + " to compare, expected 2 (see kta diff --help)");
        return kUnusable;
    }
    return CompareFiles(options);
}

// ---------------------------------------------------------------- command line

std::string CheckPage(const std::string& path) {
    return EndsWithIgnoringCase(path, ".html")
               ? ""
               : "\"" + path + "\" is no page, expected a name that ends in .html";
}

std::string CheckTolerance(const std::string& text) {
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [next, error] = std::from_chars(text.data(), end, value);
    return error == std::errc() && next == end && std::isfinite(value) && value >= 0
               ? ""
               : "\"" + text + "\" is no tolerance, expected a number of 0 or more";
}

}  // namespace

Command AddDiff(CLI::App& kta) {
    const auto options = std::make_shared<DiffOptions>();
    CLI::App* diff = kta.add_subcommand(
        "diff",
        "What differs between two actor files or two motion files, by the names of nodes and\n"
        "materials: added, removed, changed and by how much.");
    diff->footer(
        "Exit status: 0 equal, 1 different, 2 bad usage, or a file that cannot be read whole.");
    diff->add_option("FILES", options->files, "The old and the new file; - is standard input")
        ->required()
        ->option_text("A B");
    diff->add_option("--tolerance", options->tolerance.absolute,
                     "Reals that are so far apart are equal")
        ->type_name("X")
        ->capture_default_str()
        ->check(CLI::Validator(CheckTolerance, ""));
    diff->add_option("--relative", options->tolerance.relative,
                     "So are reals that are so far apart in proportion to the greater one")
        ->type_name("X")
        ->capture_default_str()
        ->check(CLI::Validator(CheckTolerance, ""));
    diff->add_flag("--order", options->order, "Another order is a difference as well");
    diff->add_option("--max", options->mostLines, "Most lines shown of a kind of chunk; 0: all")
        ->type_name("N")
        ->check(CLI::Validator(CheckCount, ""))
        ->capture_default_str();
    CLI::Option* json = diff->add_flag("--json", options->json, "One JSON object, of all lines");
    diff->add_flag("-q,--quiet", options->quiet, "The exit status alone")->excludes(json);
    CLI::Option* git =
        diff->add_flag("--git", options->git,
                       "For git's diff.NAME.command: takes the arguments that git gives, status 0")
            ->excludes(json);
    diff->add_option("--preview", options->page,
                     "A page that lays two actor files over each other, named *.html")
        ->type_name("OUT")
        ->check(CheckPage)
        ->excludes(git);
    return {diff, [options] { return Run(*options); }};
}

}  // namespace kta::command
