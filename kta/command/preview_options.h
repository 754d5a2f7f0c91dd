// The command line of `kta preview`, and what it asks for.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "kta/command/command.h"
#include "kta/preview/preview.h"
#include "kta/preview/sheet.h"

namespace kta::command {

// As given; texts are checked.
struct PreviewOptions {
    std::string actor;
    std::string motion;
    std::string output;
    std::string size;
    PreviewDirection direction;
    std::vector<std::string> views;
    std::vector<std::string> times;
    std::string sheet;
    int frames = 0;  // 0: not given
    int fps = 0;     // likewise
    std::vector<std::string> morphs;
    std::vector<std::string> textureFolders;
    bool withTextures = true;
    bool withBones = false;
    bool withCollision = false;
};

// Adds the options; those that only pictures have are given back.
std::vector<CLI::Option*> DescribePreview(CLI::App& preview, PreviewOptions& options);

enum class PreviewForm { kPicture, kAnimation, kPage };

// By the output's ending; a .png of which frames are asked for is an animation.
PreviewForm FormOf(const PreviewOptions& options);

// One picture to draw, and how it is called on a sheet.
struct PlannedShot {
    PreviewShot shot;
    std::string label;
};

struct PreviewPlan {
    std::vector<PlannedShot> shots;
    SheetSize sheet;
    int width = 0;  // of each picture
    int height = 0;
    FrameDelay delay{};  // of an animation
};

// What is to be drawn of a motion between these times, if there is one. Or, where that cannot be,
// a line that says why.
std::pair<std::optional<PreviewPlan>, std::string> PlanPreview(
    const PreviewOptions& options, const std::optional<std::pair<double, double>>& motionTimes);

// The channels' weights by name.
std::map<std::string, double, std::less<>> MorphWeights(const PreviewOptions& options);

}  // namespace kta::command
