#include "host/app/all_animations.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <system_error>
#include <utility>

#include "host/app/places.h"
#include "host/cut_text.h"
#include "host/file_name.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

// robot.hdo with "Walk": robot-Walk.hdo. What is no file, such as a device, stays as it is.
std::string WithName(const fs::path& file, const std::string& name) {
    std::error_code ignored;
    if (fs::exists(file, ignored) && !fs::is_regular_file(file, ignored)) {
        return file.string();
    }
    return (file.parent_path() / (file.stem().string() + "-" + name + file.extension().string()))
        .string();
}

}  // namespace

std::vector<std::string> NamesOfExports(const std::vector<std::string>& animations) {
    constexpr std::size_t kMostBytes = 80;  // the exporter has room for 259 in a path
    std::vector<std::string> names;
    std::set<std::string> taken;
    std::map<std::string, std::size_t> numbers;
    for (std::size_t i = 0; i < animations.size(); ++i) {
        const std::string own =
            FittingFileName(std::string(CutUtf8(FittingFileName(animations[i]), kMostBytes)));
        const std::string wanted = own.empty() ? std::to_string(i) : own;
        std::string name = wanted;
        while (!taken.insert(InSmallLetters(name)).second) {
            std::size_t& number = numbers[InSmallLetters(wanted)];
            number = std::max<std::size_t>(number + 1, 2);
            name = wanted + "-" + std::to_string(number);
        }
        names.push_back(std::move(name));
    }
    return names;
}

std::string SubjectOf(const std::string& animation, std::size_t position) {
    return "animation " + (animation.empty() ? std::to_string(position) : animation);
}

Options ForAnimation(const Options& options, std::size_t position, const std::string& name) {
    Options one = options;
    one.clip = position;
    one.output = WithName(ExportFile(options), name);
    for (std::optional<std::string>* const file :
         {&one.log, &one.receipt, &one.report, &one.accept}) {
        if (*file) {
            *file = WithName(**file, name);
        }
    }
    return one;
}

std::vector<Job> ForAnimations(const Job& scene, const std::vector<std::string>& animations) {
    if (animations.empty()) {
        return {scene};
    }
    const std::vector<std::string> names = NamesOfExports(animations);
    std::vector<Job> jobs;
    for (std::size_t i = 0; i < names.size(); ++i) {
        Job one = scene;
        one.part = SubjectOf(animations[i], i);
        one.name += ": " + one.part;
        one.animation = animations[i];
        one.output = WithName(scene.output, names[i]);
        one.arguments.insert(one.arguments.end(),
                             {"--all-animations", "--clip=" + std::to_string(i)});
        jobs.push_back(std::move(one));
    }
    return jobs;
}

}  // namespace maxhost::app
