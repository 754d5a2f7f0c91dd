#include "kta/command/preview_options.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "kta/completion.h"
#include "kta/text.h"

namespace kta::command {
namespace {

constexpr int kMostFrames = 1000;
constexpr int kMostFps = 120;
constexpr int kTurnFrames = 36;  // of a turn round a model without motion
constexpr int kUsualFps = 12;
constexpr double kMostSeconds = 1e6;

// ---------------------------------------------------------------- texts

std::optional<double> ParseNumber(std::string_view text, double least, double most) {
    double value = 0;
    const auto [next, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && next == text.data() + text.size();
    return isWhole && value >= least && value <= most ? std::optional(value) : std::nullopt;
}

// The two numbers of "AxB", each 1 to `most`.
std::optional<std::pair<int, int>> ParsePair(const std::string& text, int most) {
    int sides[2] = {};
    const char* at = text.data();
    const char* const end = at + text.size();
    for (int i = 0; i < 2; ++i) {
        const auto [next, error] = std::from_chars(at, end, sides[i]);
        const bool separated = i == 0 ? next != end && *next == 'x' : next == end;
        if (error != std::errc() || !separated || sides[i] < 1 || sides[i] > most) {
            return std::nullopt;
        }
        at = next + (i == 0 ? 1 : 0);
    }
    return std::pair(sides[0], sides[1]);
}

struct NamedView {
    const char* name;
    PreviewDirection direction;
};

constexpr NamedView kNamedViews[] = {{"front", {0, 0}},  {"right", {90, 0}}, {"back", {180, 0}},
                                     {"left", {270, 0}}, {"top", {0, 90}},   {"bottom", {0, -90}}};

std::vector<std::string> ViewNames() {
    std::vector<std::string> names;
    for (const NamedView& view : kNamedViews) {
        names.emplace_back(view.name);
    }
    return names;
}

// A named view, "AZIMUTH", or "AZIMUTH:ELEVATION".
std::optional<PreviewDirection> ParseView(const std::string& text) {
    for (const NamedView& view : kNamedViews) {
        if (text == view.name) {
            return view.direction;
        }
    }
    const std::size_t colon = text.find(':');
    const auto azimuth = ParseNumber(std::string_view(text).substr(0, colon), -360, 360);
    const auto elevation = colon == std::string::npos
                               ? std::optional(0.0)
                               : ParseNumber(std::string_view(text).substr(colon + 1), -90, 90);
    if (!azimuth || !elevation) {
        return std::nullopt;
    }
    return PreviewDirection{*azimuth, *elevation};
}

// "1.5" and "1.5s" are seconds, "12f" frames.
struct GivenTime {
    double value;
    bool inFrames;
};

std::optional<GivenTime> ParseTime(std::string_view text) {
    const bool inFrames = text.ends_with('f');
    if (inFrames || text.ends_with('s')) {
        text.remove_suffix(1);
    }
    const auto value = ParseNumber(text, -kMostSeconds, kMostSeconds);
    return value ? std::optional(GivenTime{*value, inFrames}) : std::nullopt;
}

// "CHANNEL=PERCENT", where the channel's name may hold = itself.
std::optional<std::pair<std::string, double>> ParseMorph(const std::string& text) {
    const std::size_t sign = text.rfind('=');
    if (sign == std::string::npos) {
        return std::nullopt;
    }
    const auto percent = ParseNumber(std::string_view(text).substr(sign + 1), -1000, 1000);
    return percent ? std::optional(std::pair(text.substr(0, sign), *percent / 100)) : std::nullopt;
}

// A validator that wants what `parse` does not refuse.
template <class Parse>
CLI::Validator Wants(Parse parse, const std::string& what) {
    return CLI::Validator(
        [parse, what](const std::string& text) {
            return parse(text) ? std::string() : "\"" + text + "\" is no " + what;
        },
        "");
}

CLI::Validator Degrees(double most) {
    const std::string bound = std::to_string(static_cast<int>(most));
    return Wants([most](const std::string& text) { return ParseNumber(text, -most, most); },
                 "angle, expected -" + bound + " to " + bound);
}

CLI::Validator Number(int least, int most, const std::string& what) {
    return Wants(
        [least, most](const std::string& text) {
            const auto value = ParseNumber(text, least, most);
            return value && *value == std::floor(*value);
        },
        "number of " + what + ", expected " + std::to_string(least) + " to " +
            std::to_string(most));
}

std::string CheckOutput(const std::string& path) {
    for (const char* const ending : {".png", ".apng", ".html"}) {
        if (EndsWithIgnoringCase(path, ending)) {
            return "";
        }
    }
    return "\"" + path +
           "\" is no picture and no page, expected a name that ends in .png, .apng or .html";
}

std::string Printed(const char* format, double value) {
    char text[64];
    std::snprintf(text, sizeof(text), format, value);
    return text;
}

// ---------------------------------------------------------------- plans

struct LabelledView {
    PreviewDirection direction;
    std::string label;
};

struct LabelledTime {
    std::optional<double> seconds;
    std::string label;
};

LabelledTime TimeOf(double seconds) {
    return {seconds, Printed("%.2f s", seconds)};
}

// `count` times from the first to the last, evenly.
std::vector<LabelledTime> EvenTimes(const std::pair<double, double>& between, int count) {
    std::vector<LabelledTime> times;
    for (int i = 0; i < count; ++i) {
        const double share = count == 1 ? 0 : static_cast<double>(i) / (count - 1);
        times.push_back(TimeOf(between.first + (between.second - between.first) * share));
    }
    return times;
}

// `count` views round the model, the first from that direction.
std::vector<LabelledView> EvenViews(const PreviewDirection& first, int count) {
    std::vector<LabelledView> views;
    for (int i = 0; i < count; ++i) {
        const double azimuth = first.azimuth + 360.0 * i / count;
        views.push_back({{azimuth, first.elevation}, Printed("%g deg", azimuth)});
    }
    return views;
}

using Times = std::optional<std::pair<double, double>>;

class Planner {
  public:
    Planner(const PreviewOptions& options, const Times& motionTimes)
        : options_(options), motionTimes_(motionTimes), form_(FormOf(options)) {}

    std::pair<std::optional<PreviewPlan>, std::string> Plan() {
        std::string refusal = ReadTimes();
        ReadViews();
        if (refusal.empty()) {
            refusal = form_ == PreviewForm::kAnimation ? PlanFrames() : PlanSheet();
        }
        for (const LabelledTime& time : times_) {
            for (const LabelledView& view : views_) {
                plan_.shots.push_back({{view.direction, time.seconds}, Label(view, time)});
            }
        }
        if (refusal.empty()) {
            refusal = SetSize();
        }
        return refusal.empty() ? std::pair(std::optional(plan_), refusal)
                               : std::pair(std::optional<PreviewPlan>(), refusal);
    }

  private:
    std::string ReadTimes() {
        for (const std::string& text : options_.times) {
            const GivenTime time = ParseTime(text).value();
            if (!motionTimes_) {
                return "--time needs a motion file";
            }
            if (time.inFrames && options_.fps == 0) {
                return "\"" + text + "\": the files state no frame rate, --fps has to";
            }
            times_.push_back(TimeOf(time.inFrames ? time.value / options_.fps : time.value));
        }
        if (times_.empty()) {
            times_.push_back({});
        }
        return "";
    }

    void ReadViews() {
        for (const std::string& text : options_.views) {
            views_.push_back({ParseView(text).value(), text});
        }
        if (views_.empty()) {
            views_.push_back({options_.direction, ""});
        }
    }

    // Without lists a sheet shows the motion, and without motion all sides.
    std::string PlanSheet() {
        const bool isOne = views_.size() * times_.size() == 1;
        if (options_.sheet.empty()) {
            const auto views = static_cast<int>(views_.size());
            const auto times = static_cast<int>(times_.size());
            plan_.sheet =
                views > 1 && times > 1 ? SheetSize{views, times} : SquareSheet(views * times);
            return "";
        }
        const auto [columns, rows] = ParsePair(options_.sheet, kGreatestPictureSide).value();
        plan_.sheet = {columns, rows};
        const std::int64_t places = std::int64_t{columns} * rows;
        if (places > kMostFrames) {
            return "a sheet of " + options_.sheet + " would hold more than " +
                   std::to_string(kMostFrames) + " pictures";
        }
        if (isOne && motionTimes_ && options_.times.empty()) {
            times_ = EvenTimes(*motionTimes_, static_cast<int>(places));
        } else if (isOne && options_.views.empty()) {
            views_ = EvenViews(options_.direction, static_cast<int>(places));
        } else if (views_.size() * times_.size() > static_cast<std::size_t>(places)) {
            return std::to_string(views_.size() * times_.size()) +
                   " pictures do not fit on a sheet of " + options_.sheet;
        }
        return "";
    }

    std::string PlanFrames() {
        if (!options_.sheet.empty() || !options_.times.empty() || views_.size() > 1) {
            return "an animated picture has one view and the motion's times, so neither --sheet "
                   "nor --time nor several of --view";
        }
        const double duration = motionTimes_ ? motionTimes_->second - motionTimes_->first : 0;
        const int fps = options_.fps > 0 ? options_.fps : kUsualFps;
        if (!motionTimes_) {
            const int frames = options_.frames > 0 ? options_.frames : kTurnFrames;
            views_ = EvenViews(views_.front().direction, frames);
            plan_.delay = {1, static_cast<std::uint16_t>(fps)};
            return "";
        }
        if (options_.frames > 1 && options_.fps == 0 && duration > 0) {
            times_ = EvenTimes(*motionTimes_, options_.frames);
            const double delay = std::round(1000 * duration / (options_.frames - 1));
            plan_.delay = {static_cast<std::uint16_t>(std::clamp(delay, 1.0, 65535.0)), 1000};
            return "";
        }
        const double frames =
            options_.frames > 0 ? options_.frames : std::floor(duration * fps + 1e-6) + 1;
        if (frames > kMostFrames) {
            return "the motion of " + Printed("%g s", duration) + " has more than " +
                   std::to_string(kMostFrames) + " pictures at " + std::to_string(fps) +
                   " a second; --frames takes fewer";
        }
        times_.clear();
        for (int i = 0; i < static_cast<int>(frames); ++i) {
            times_.push_back(TimeOf(motionTimes_->first + static_cast<double>(i) / fps));
        }
        plan_.delay = {1, static_cast<std::uint16_t>(fps)};
        return "";
    }

    std::string SetSize() {
        const bool isAlone = plan_.shots.size() == 1 && form_ == PreviewForm::kPicture;
        const std::string size =
            !options_.size.empty() ? options_.size : std::string(isAlone ? "800x600" : "400x300");
        std::tie(plan_.width, plan_.height) = ParsePair(size, kGreatestPictureSide).value();
        if (form_ == PreviewForm::kPicture &&
            (std::int64_t{plan_.width} * plan_.sheet.columns > kGreatestPictureSide ||
             std::int64_t{plan_.height} * plan_.sheet.rows > kGreatestPictureSide)) {
            return "a sheet of " + std::to_string(plan_.sheet.columns) + "x" +
                   std::to_string(plan_.sheet.rows) + " pictures of " + size +
                   " would be wider or higher than " + std::to_string(kGreatestPictureSide) +
                   " pixels";
        }
        return "";
    }

    static std::string Label(const LabelledView& view, const LabelledTime& time) {
        return view.label + (view.label.empty() || time.label.empty() ? "" : "  ") + time.label;
    }

    const PreviewOptions& options_;
    const Times& motionTimes_;
    PreviewForm form_;
    std::vector<LabelledView> views_;
    std::vector<LabelledTime> times_;
    PreviewPlan plan_;
};

// ---------------------------------------------------------------- options

void AddInputs(CLI::App& preview, PreviewOptions& options) {
    preview.add_option("ACTOR", options.actor, "Actor file; - is standard input")->required();
    preview.add_option("MOTION", options.motion, "Motion file");
    preview
        .add_option(
            "-o,--output", options.output,
            "What to write: a picture (.png), an animated one (.apng, or .png with --frames or "
            "--fps), or a page for browsers (.html)")
        ->type_name("FILE")
        ->required()
        ->check(CheckOutput);
    preview
        .add_option("--texture-dir", options.textureFolders,
                    "Folder to look for textures in, with its subfolders, when they do not stand "
                    "beside the actor file (repeatable)")
        ->type_name("DIR")
        ->allow_extra_args(false)
        ->check(CLI::ExistingDirectory);
    preview.add_flag_callback(
        "--no-textures", [&options] { options.withTextures = false; }, "Show colours alone");
    preview.add_flag("--collision", options.withCollision, "Show collision meshes as well");
}

// Of pictures, as is what follows; pages have none of these.
std::vector<CLI::Option*> AddView(CLI::App& preview, PreviewOptions& options) {
    const auto size =
        Wants([](const std::string& text) { return ParsePair(text, kGreatestPictureSide); },
              "size, expected WIDTHxHEIGHT, each 1 to " + std::to_string(kGreatestPictureSide));
    return {
        preview
            .add_option("--size", options.size,
                        "Width and height in pixels, such as 1920x1080, of each picture "
                        "[800x600; 400x300 on sheets and in animations]")
            ->type_name("WxH")
            ->check(size),
        preview
            .add_option("--azimuth", options.direction.azimuth,
                        "How far round the scene the viewer stands: 0 in front, 90 to its right")
            ->type_name("DEGREES")
            ->capture_default_str()
            ->check(Degrees(360)),
        preview
            .add_option("--elevation", options.direction.elevation,
                        "How far up the viewer is: 0 level, 90 above the scene")
            ->type_name("DEGREES")
            ->capture_default_str()
            ->check(Degrees(90))};
}

// Of which several stand on one sheet.
std::vector<CLI::Option*> AddSeries(CLI::App& preview, PreviewOptions& options) {
    return {
        OfferWords(AddList(preview, "--view", options.views,
                           "Instead: front, right, back, left, top, bottom, AZIMUTH or "
                           "AZIMUTH:ELEVATION; several stand on one sheet",
                           Wants(ParseView,
                                 "view, expected front, right, back, left, top, bottom, AZIMUTH or "
                                 "AZIMUTH:ELEVATION")),
                   ViewNames())
            ->type_name("VIEW,..."),
        AddList(preview, "--time", options.times,
                "The pose at that time of the motion, in seconds (0.5) or in frames of --fps "
                "(12f); several stand on one sheet",
                Wants(ParseTime, "time, expected seconds as in 0.5 or frames as in 12f"))
            ->type_name("TIME,..."),
        preview
            .add_option("--sheet", options.sheet,
                        "Columns and rows of pictures; without lists of views or times they show "
                        "the motion, or without one the model from all sides")
            ->type_name("CxR")
            ->check(Wants([](const std::string& text) { return ParsePair(text, 1000); },
                          "sheet, expected COLUMNSxROWS as in 4x2"))};
}

std::vector<CLI::Option*> AddMotion(CLI::App& preview, PreviewOptions& options) {
    return {preview.add_option("--frames", options.frames, "Pictures of an animation, up to 1000")
                ->type_name("N")
                ->check(Number(1, kMostFrames, "frames")),
            preview
                .add_option("--fps", options.fps,
                            "Pictures of an animation a second [12], and frames of --time")
                ->type_name("N")
                ->check(Number(1, kMostFps, "frames a second")),
            preview
                .add_option("--morph", options.morphs,
                            "A morph channel's weight, 100 for full (repeatable)")
                ->type_name("CHANNEL=PERCENT")
                ->allow_extra_args(false)
                ->check(Wants(ParseMorph, "morph, expected CHANNEL=PERCENT as in Smile=50")),
            preview.add_flag("--bones", options.withBones, "Show the skeleton, before all else")};
}

}  // namespace

// ---------------------------------------------------------------- command line

std::vector<CLI::Option*> DescribePreview(CLI::App& preview, PreviewOptions& options) {
    AddInputs(preview, options);
    std::vector<CLI::Option*> ofPictures = AddView(preview, options);
    for (const auto add : {AddSeries, AddMotion}) {
        for (CLI::Option* const option : add(preview, options)) {
            ofPictures.push_back(option);
        }
    }
    return ofPictures;
}

PreviewForm FormOf(const PreviewOptions& options) {
    if (EndsWithIgnoringCase(options.output, ".html")) {
        return PreviewForm::kPage;
    }
    const bool asksForFrames = options.frames > 0 || (options.fps > 0 && options.times.empty());
    return EndsWithIgnoringCase(options.output, ".apng") || asksForFrames ? PreviewForm::kAnimation
                                                                          : PreviewForm::kPicture;
}

std::pair<std::optional<PreviewPlan>, std::string> PlanPreview(
    const PreviewOptions& options, const std::optional<std::pair<double, double>>& motionTimes) {
    return Planner(options, motionTimes).Plan();
}

std::map<std::string, double, std::less<>> MorphWeights(const PreviewOptions& options) {
    std::map<std::string, double, std::less<>> weights;
    for (const std::string& text : options.morphs) {
        weights.insert_or_assign(ParseMorph(text)->first, ParseMorph(text)->second);
    }
    return weights;
}

}  // namespace kta::command
