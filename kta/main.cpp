// The command `kta`. Results go to standard output, everything else to standard error.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <charconv>
#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <system_error>
#include <tuple>
#include <utility>
#include <vector>

#include "kta/dump.h"
#include "kta/info.h"
#include "kta/preview.h"
#include "kta/reader.h"
#include "kta/text.h"
#include "kta/whole_file.h"

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#endif

namespace {

enum Status { kDone = 0, kFaultyFile = 1, kUnusable = 2 };

struct Options {
    std::vector<std::string> infoFiles;
    std::string dumpFile;
    kta::DumpSelection selection;
    bool json = false;
    std::string previewFile;
    std::string picture;
    std::string size = "800x600";
    kta::PreviewView view;
};

void Complain(const std::string& text) {
    std::cerr << "kta: " << kta::OneLine(text) << '\n';
}

Status Report(const std::vector<std::string>& faultLines, const kta::Reading& reading) {
    for (const std::string& line : faultLines) {
        Complain(line);
    }
    if (!reading.inputError.empty()) {
        return kUnusable;
    }
    return reading.faults.empty() ? kDone : kFaultyFile;
}

constexpr const char* kStandardInput = "standard input";

// "-" is the standard input.
kta::Reading ReadGiven(const std::string& path) {
    if (path != "-") {
        return kta::ReadFile(path);
    }
#ifdef _WIN32
    _setmode(_fileno(stdin), _O_BINARY);
#endif
    return kta::Read(std::cin);
}

std::string NameOf(const std::string& path) {
    return path == "-" ? kStandardInput : path;
}

Status Info(const std::vector<std::string>& paths, bool json) {
    Status worst = kDone;
    bool first = true;
    for (const std::string& path : paths) {
        const kta::Reading reading = ReadGiven(path);
        const std::string name = NameOf(path);
        if (json) {
            kta::WriteInfoJson(name, reading, std::cout);
        } else if (reading.file) {
            std::cout << (first ? "" : "\n");
            kta::WriteInfo(name, *reading.file, std::cout);
            first = false;
        }
        worst = std::max(worst,
                         Report(kta::FirstFaults(kta::FaultLines(name, reading), name), reading));
    }
    return worst;
}

Status Dump(const Options& options) {
    const kta::Reading reading = ReadGiven(options.dumpFile);
    const std::string name = NameOf(options.dumpFile);
    if (options.json) {
        kta::DumpJson(name, reading, std::cout, options.selection);
    } else if (reading.file) {
        kta::DumpText(name, *reading.file, std::cout, options.selection);
    }
    return Report(kta::FaultLines(name, reading), reading);
}

// Of a faulty file, the chunks before the fault are drawn.
Status Preview(const std::string& path, const std::string& picturePath,
               const kta::PreviewView& view) {
    const kta::Reading reading = kta::ReadFile(path, kFileKindActor);
    Status status = Report(kta::FirstFaults(kta::FaultLines(path, reading), path), reading);
    if (reading.file && reading.file->kind != kFileKindActor) {
        return kUnusable;
    }
    if (!reading.file) {
        return status;
    }
    const kta::Preview preview = kta::DrawPreview(*reading.file, view);
    if (!preview.picture) {
        Complain(path + ": " +
                 (preview.triangles == 0
                      ? "no triangle to show"
                      : "nothing shows of " + kta::Counted(preview.triangles, "triangle") +
                            ", without area or seen from the edge") +
                 ", nothing written");
        return kUnusable;
    }
    const std::vector<std::uint8_t> bytes = kta::EncodePng(*preview.picture);
    try {
        kta::ReplaceWholeFile(picturePath, [&](std::ostream& out) {
            out.write(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<std::streamsize>(bytes.size()));
        });
    } catch (const std::system_error& error) {
        Complain(picturePath + ": cannot be written (" + error.code().message() + ")");
        return kUnusable;
    }
    return status;
}

// ---------------------------------------------------------------- command line

// The two sides of "WIDTHxHEIGHT"; none for any other text, or a side that no picture has.
std::optional<std::pair<int, int>> ParseSize(const std::string& text) {
    int sides[2] = {};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (int i = 0; i < 2; ++i) {
        const auto [next, error] = std::from_chars(at, end, sides[i]);
        const bool separated = i == 0 ? next != end && *next == 'x' : next == end;
        if (error != std::errc() || !separated || sides[i] < 1 ||
            sides[i] > kta::kGreatestPictureSide) {
            return std::nullopt;
        }
        at = next + (i == 0 ? 1 : 0);
    }
    return std::pair(sides[0], sides[1]);
}

std::string CheckSize(const std::string& text) {
    return ParseSize(text) ? ""
                           : "\"" + text + "\" is no size, expected WIDTHxHEIGHT, each 1 to " +
                                 std::to_string(kta::kGreatestPictureSide);
}

std::string CheckPicture(const std::string& path) {
    return kta::EndsWithIgnoringCase(path, ".png")
               ? ""
               : "\"" + path + "\" is no picture, expected a name that ends in .png";
}

// A number within [-most, most], and so a finite one.
CLI::Validator Degrees(double most) {
    const auto check = [most](const std::string& text) -> std::string {
        double value = 0;
        const char* const end = text.data() + text.size();
        const auto [next, error] = std::from_chars(text.data(), end, value);
        if (error == std::errc() && next == end && value >= -most && value <= most) {
            return "";
        }
        const std::string bound = std::to_string(static_cast<int>(most));
        return "\"" + text + "\" is no angle, expected -" + bound + " to " + bound;
    };
    return CLI::Validator(check, "");
}

void DescribePreview(CLI::App& app, Options& options) {
    CLI::App* preview = app.add_subcommand(
        "preview",
        "A picture of an actor: its meshes in their materials' diffuse colours. Pictures (.png)\n"
        "are all that there is yet; animated pages (.html), motion and textures are not shown.");
    preview->add_option("ACTOR", options.previewFile, "Actor file")->required();
    preview->add_option("-o,--output", options.picture, "The picture to write, named *.png")
        ->required()
        ->check(CheckPicture);
    preview->add_option("--size", options.size, "Width and height in pixels, such as 1920x1080")
        ->type_name("WxH")
        ->capture_default_str()
        ->check(CheckSize);
    preview
        ->add_option("--azimuth", options.view.azimuth,
                     "How far round the scene the viewer stands: 0 in front, 90 to its right")
        ->type_name("DEGREES")
        ->capture_default_str()
        ->check(Degrees(360));
    preview
        ->add_option("--elevation", options.view.elevation,
                     "How far up the viewer is: 0 level, 90 above the scene")
        ->type_name("DEGREES")
        ->capture_default_str()
        ->check(Degrees(90));
    preview->add_flag("--collision", options.view.withCollision, "Show collision meshes as well");
}

void Describe(CLI::App& app, Options& options) {
    app.set_version_flag("--version", "kta " KTA_VERSION);
    app.require_subcommand(1);
    app.allow_windows_style_options(false);  // "/dir/file" is a path on Windows too
    app.footer(
        "Exit status: 0 done, 1 a file is faulty, 2 bad usage, a file that cannot be read or has\n"
        "nothing to show, or output that cannot be written.");

    CLI::App* info = app.add_subcommand(
        "info", "What is in the files: kind, size, chunks, nodes, geometry, motion");
    info->add_option("FILE", options.infoFiles, "Actor or motion files; - is standard input")
        ->required();
    info->add_flag("--json", options.json, "One JSON object a file");

    CLI::App* dump =
        app.add_subcommand("dump", "Every chunk and field of a file, in file order, with offsets");
    dump->add_option("FILE", options.dumpFile, "Actor or motion file; - is standard input")
        ->required();
    dump->add_flag("--json", options.json, "As one JSON object");
    std::vector<std::string> kinds;
    for (const KTAChunkType& type : kChunkTypes) {
        kinds.push_back(type.name);
    }
    dump->add_option("--chunks", options.selection.chunks,
                     "The chunks of these kinds alone, as in node,mesh: " + kta::Joined(kinds))
        ->type_name("KIND,...")
        ->delimiter(',')
        ->check(CLI::IsMember(kinds))
        ->option_text("KIND,...");
    dump->add_flag_callback(
        "--no-arrays", [&options] { options.selection.withArrays = false; },
        "Without vertices, faces, keys, weights and points");
    DescribePreview(app, options);
}

// CLI11's own text does not tell what stands in the command's place.
std::string WithoutCommand(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({})) {
        names.push_back(command->get_name());
    }
    const std::vector<std::string> rest = app.remaining();
    return (rest.empty() ? "no command given" : "\"" + rest.front() + "\": no such command") +
           ", expected one of " + kta::Joined(names);
}

Status Run(int argc, char** argv) {
    Options options;
    CLI::App app("Looks into the KTA files that the HDO exporter writes.", "kta");
    Describe(app, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0) {
            app.exit(error);  // prints the help or the version asked for
            return kDone;
        }
        const bool lacksCommand = app.get_subcommands().empty();
        Complain((lacksCommand ? WithoutCommand(app) : error.what()) + " (see kta --help)");
        return kUnusable;
    }
    if (app.got_subcommand("info")) {
        return Info(options.infoFiles, options.json);
    }
    if (app.got_subcommand("dump")) {
        return Dump(options);
    }
    std::tie(options.view.width, options.view.height) = ParseSize(options.size).value();
    return Preview(options.previewFile, options.picture, options.view);
}

}  // namespace

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    // A result that finds no room ends the program at once, while it is known why.
    std::cout.exceptions(std::ios::failbit | std::ios::badbit);
    try {
        const Status status = Run(argc, argv);
        std::cout.flush();
        return status;
    } catch (const std::ios_base::failure&) {
        const int reason = errno;
        std::cout.exceptions(std::ios::goodbit);  // the library flushes once more in the end
        Complain("standard output: cannot be written (" + std::generic_category().message(reason) +
                 ")");
    } catch (const std::exception& error) {
        Complain(error.what());
    }
    return kUnusable;
}
