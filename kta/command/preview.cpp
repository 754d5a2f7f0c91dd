#include "kta/preview.h"

#include <charconv>
#include <memory>
#include <optional>
#include <tuple>
#include <utility>

#include "kta/command/command.h"
#include "kta/text.h"

namespace kta::command {
namespace {

struct PreviewOptions {
    std::string actor;
    std::string picture;
    std::string size = "800x600";
    PreviewView view;
};

// Of a faulty file, the chunks before the fault are drawn.
Status DrawPicture(const std::string& path, const std::string& picturePath,
                   const PreviewView& view) {
    const Reading reading = ReadFile(path, kFileKindActor);
    const Status status = Report(FirstFaults(FaultLines(path, reading), path), reading);
    if (reading.file && reading.file->kind != kFileKindActor) {
        return kUnusable;
    }
    if (!reading.file) {
        return status;
    }
    const Preview preview = DrawPreview(*reading.file, view);
    if (!preview.picture) {
        Complain(path + ": " +
                 (preview.triangles == 0
                      ? "no triangle to show"
                      : "nothing shows of " + Counted(preview.triangles, "triangle") +
                            ", without area or seen from the edge") +
                 ", nothing written");
        return kUnusable;
    }
    return WriteOutput(picturePath, EncodePng(*preview.picture)) ? status : kUnusable;
}

// The two sides of "WIDTHxHEIGHT"; none for any other text, or a side that no picture has.
std::optional<std::pair<int, int>> ParseSize(const std::string& text) {
    int sides[2] = {};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (int i = 0; i < 2; ++i) {
        const auto [next, error] = std::from_chars(at, end, sides[i]);
        const bool separated = i == 0 ? next != end && *next == 'x' : next == end;
        if (error != std::errc() || !separated || sides[i] < 1 || sides[i] > kGreatestPictureSide) {
            return std::nullopt;
        }
        at = next + (i == 0 ? 1 : 0);
    }
    return std::pair(sides[0], sides[1]);
}

std::string CheckSize(const std::string& text) {
    return ParseSize(text) ? ""
                           : "\"" + text + "\" is no size, expected WIDTHxHEIGHT, each 1 to " +
                                 std::to_string(kGreatestPictureSide);
}

std::string CheckPicture(const std::string& path) {
    return EndsWithIgnoringCase(path, ".png")
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

}  // namespace

Command AddPreview(CLI::App& kta) {
    const auto options = std::make_shared<PreviewOptions>();
    CLI::App* preview = kta.add_subcommand(
        "preview",
        "A picture of an actor: its meshes in their materials' diffuse colours. Pictures (.png)\n"
        "are all that there is yet; animated pages (.html), motion and textures are not shown.");
    preview->add_option("ACTOR", options->actor, "Actor file")->required();
    preview->add_option("-o,--output", options->picture, "The picture to write, named *.png")
        ->required()
        ->check(CheckPicture);
    preview->add_option("--size", options->size, "Width and height in pixels, such as 1920x1080")
        ->type_name("WxH")
        ->capture_default_str()
        ->check(CheckSize);
    preview
        ->add_option("--azimuth", options->view.azimuth,
                     "How far round the scene the viewer stands: 0 in front, 90 to its right")
        ->type_name("DEGREES")
        ->capture_default_str()
        ->check(Degrees(360));
    preview
        ->add_option("--elevation", options->view.elevation,
                     "How far up the viewer is: 0 level, 90 above the scene")
        ->type_name("DEGREES")
        ->capture_default_str()
        ->check(Degrees(90));
    preview->add_flag("--collision", options->view.withCollision, "Show collision meshes as well");
    return {preview, [options] {
                std::tie(options->view.width, options->view.height) =
                    ParseSize(options->size).value();
                return DrawPicture(options->actor, options->picture, options->view);
            }};
}

}  // namespace kta::command
