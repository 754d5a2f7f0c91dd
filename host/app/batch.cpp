#include "host/app/batch.h"

#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <iostream>
#include <map>
#include <optional>
#include <thread>
#include <utility>

#include "host/app/all_animations.h"
#include "host/app/batch_index.h"
#include "host/app/batch_jobs.h"
#include "host/app/batch_report.h"
#include "host/app/batch_scenes.h"
#include "host/app/exit_status.h"
#include "host/app/places.h"
#include "host/app/run_report.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

// ---------------------------------------------------------------- the jobs

// Refuses what is to be a directory, or is to have one in it, where something else stands.
void RequireDirectory(const char* option, const std::optional<std::string>& given) {
    if (!given) {
        return;
    }
    fs::path there = Absolute(*given);
    std::error_code ignored;
    // A link that leads nowhere is there, too.
    while (fs::symlink_status(there, ignored).type() == fs::file_type::not_found &&
           there.has_relative_path()) {
        there = there.parent_path();
    }
    const fs::file_status status = fs::status(there, ignored);
    if (fs::status_known(status) && !fs::is_directory(status)) {
        throw Failure(
            kExitRefused, option,
            there.string() + " is no directory, expected one for the files of all scenes");
    }
}

std::string RefusalOf(const std::string& name) {
    return kta::OneLine(name) == name ? std::string()
                                      : "control characters in its name, expected none";
}

// Those that --array-index leaves: the I-th and every N-th behind it.
std::vector<Job> InArray(const BatchOptions& batch, std::vector<Job> jobs) {
    if (!batch.arrayIndex) {
        return jobs;
    }
    const auto size = static_cast<std::size_t>(batch.arraySize.value_or(0));
    const auto index = static_cast<std::size_t>(*batch.arrayIndex);
    const std::size_t most = size > 0 ? size : jobs.size();
    if (index > most) {
        throw Failure(kExitRefused, "--array-index",
                      std::to_string(index) + ", expected 1 to " + std::to_string(most) +
                          (size > 0 ? ", which --array-size says" : ", the number of scenes"));
    }
    std::vector<Job> chosen;
    for (std::size_t i = index - 1; i < jobs.size(); i += most) {
        chosen.push_back(std::move(jobs[i]));
    }
    return chosen;
}

// Where the textures inside of a scene go: each scene has a directory of its own below --textures'
// DIR, so that textures of one name do not meet.
fs::path TexturesOf(const Options& options, const BatchScene& scene,
                    std::map<fs::path, std::string>& taken) {
    const fs::path place = fs::path(scene.place).replace_extension();
    const auto [former, isNew] = taken.emplace(place, scene.name);
    if (!isNew) {
        throw Failure(kExitRefused, "--textures",
                      "textures of " + former->second + " and " + scene.name +
                          " would go to one directory, expected the directory that holds both "
                          "(--batch DIR), whose subdirectories are kept");
    }
    return Absolute(*options.textures) / place;
}

std::vector<Job> JobsOf(const Options& options, const std::vector<BatchScene>& scenes) {
    std::vector<Job> jobs;
    std::map<fs::path, std::string> taken;
    for (const BatchScene& scene : scenes) {
        // A name that begins with a dash is no option.
        Job job{.name = scene.name,
                .scene = scene.name.starts_with('-') ? "./" + scene.name : scene.name,
                .output = scene.output};
        if (const std::string reason = RefusalOf(scene.name); !reason.empty()) {
            job.known = Refused(reason);
        }
        if (options.textures) {
            job.arguments.push_back("--textures=" + TexturesOf(options, scene, taken).string());
        }
        jobs.push_back(std::move(job));
    }
    return InArray(options.batch, std::move(jobs));
}

// What each export of the batch has in common.
JobSettings SettingsOf(const Options& options) {
    const BatchOptions& batch = options.batch;
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    return {.options = options.passedOn,
            .atOnce = static_cast<unsigned>(batch.jobs.value_or(static_cast<int>(cores))),
            .limits = {.seconds = batch.timeout.value_or(0),
                       .memory = std::uint64_t(batch.memory.value_or(0)) << 20},
            .force = batch.force,
            .program = HashOfPrograms(options),
            .isDryRun = options.dryRun};
}

constexpr double kBetweenShows = 0.1;

// ---------------------------------------------------------------- animations

// Asks each scene for its animations, as many at once as are exported at once.
void ListAnimations(JobRun& run, const Interrupts& interrupts, Console& console,
                    bool showsProgress) {
    std::size_t done = 0;
    while (done < run.Jobs().size() && interrupts.Status() == 0) {
        done += run.Wait(kBetweenShows) ? 1 : 0;
        if (showsProgress) {
            console.ShowBar("looking for animations: " + std::to_string(done) + " of " +
                            std::to_string(run.Jobs().size()));
        }
    }
    run.Stop();
    while (run.Wait(0)) {
    }
    console.HideBar();
}

// In the place of each scene an export of each of its animations. A scene that cannot be listed
// stays, with what came of that.
std::vector<Job> ForAllAnimations(const std::vector<Job>& scenes, const JobRun& lists,
                                  ExportPlaces places) {
    std::vector<Job> jobs;
    for (std::size_t i = 0; i < scenes.size(); ++i) {
        const JobResult& listed = lists.Result(i);
        const bool isListed =
            listed.status == JobStatus::exported || listed.status == JobStatus::unchanged;
        for (Job& job : ForAnimations(scenes[i], listed.animations)) {
            if (!isListed) {
                job.known = listed;
            } else if (std::string reason = places.Take(job.output, job.name); !reason.empty()) {
                job.known = Refused(std::move(reason));
            }
            jobs.push_back(std::move(job));
        }
    }
    return jobs;
}

// `all` are also the scenes that --array-index leaves out.
std::vector<Job> WithAnimations(JobSettings settings, const std::vector<Job>& scenes,
                                const std::vector<BatchScene>& all, const Interrupts& interrupts,
                                Console& console, bool showsProgress) {
    ExportPlaces places;
    for (const BatchScene& scene : all) {
        places.AddScene(scene);
    }
    settings.kind = JobKind::animations;
    std::vector<Job> jobs = scenes;
    for (Job& job : jobs) {
        job.output += ".animations";  // which its index has its name from
    }
    JobRun run(std::move(settings), std::move(jobs));
    ListAnimations(run, interrupts, console, showsProgress);
    return ForAllAnimations(scenes, run, std::move(places));
}

// ---------------------------------------------------------------- the exports

// Goes on until all jobs have ended, or an interrupt has ended them.
void RunAll(JobRun& run, const Interrupts& interrupts, BatchReport& told) {
    while (told.SoFar().All() < run.Jobs().size() && interrupts.Status() == 0) {
        if (const std::optional<std::size_t> ended = run.Wait(kBetweenShows)) {
            told.Tell(*ended);
        }
        told.ShowProgress();
    }
    run.Stop();
    while (const std::optional<std::size_t> ended = run.Wait(0)) {
        told.Tell(*ended);
    }
}

// ---------------------------------------------------------------- what there is to do

// The scenes of the jobs, several of which may be of one.
std::vector<std::string> ScenesOf(const std::vector<Job>& jobs) {
    std::vector<std::string> scenes;
    for (const Job& job : jobs) {
        std::string scene = Absolute(job.scene).string();
        if (scenes.empty() || scenes.back() != scene) {
            scenes.push_back(std::move(scene));
        }
    }
    return scenes;
}

Json ListOf(const Options& options, const std::vector<Job>& jobs) {
    const std::vector<std::string> scenes = ScenesOf(jobs);
    Json json = {{"count", scenes.size()}, {"scenes", Json::array()}};
    for (const std::string& scene : scenes) {
        json["scenes"].push_back(Text(scene));
    }
    AddEscaped(json, "scenes", scenes);
    if (options.list && options.allAnimations) {
        json["exports"] = Json::array();
        for (const Job& job : jobs) {
            json["exports"].push_back(PlaceOf(job));
            if (job.animation) {
                json["exports"].back()["animation"] = Text(*job.animation);
            }
            if (job.known) {
                json["exports"].back()["error"] = Text(job.known->error);
            }
        }
    }
    return json;
}

// What --list and --count print. Returns 1 where one of the scenes was read for its animations, and
// could not be, or where an animation's export has no place.
int Show(const Options& options, const std::vector<Job>& jobs, Console& console,
         RunReport& report) {
    int status = kExitDone;
    for (const Job& job : jobs) {
        if (options.list && options.allAnimations && job.known) {
            console.Report(job.name,
                           std::string(NameOf(job.known->status)) + ": " + job.known->error);
            status = kExitExportFailed;
        }
    }
    if (options.json) {
        report.batch = ListOf(options, jobs);
    } else if (!options.list) {
        console.Print(std::to_string(jobs.size()));
    } else {
        for (const Job& job : jobs) {
            const std::string line =
                Absolute(job.scene).string() + (job.part.empty() ? "" : ": " + job.part);
            // What is no name for a list must not look like two.
            console.Print(kta::OneLine(line) == line ? line : kta::Escaped(line));
        }
    }
    return status;
}

}  // namespace

std::string FaultOfBatch(const Options& options) {
    const BatchOptions& batch = options.batch;
    const std::pair<bool, const char*> parts[] = {{batch.jobs.has_value(), "--jobs"},
                                                  {batch.timeout.has_value(), "--timeout"},
                                                  {batch.memory.has_value(), "--memory"},
                                                  {batch.force, "--force"},
                                                  {batch.count, "--count"},
                                                  {batch.arrayIndex.has_value(), "--array-index"},
                                                  {batch.arraySize.has_value(), "--array-size"}};
    const std::pair<bool, const char*> others[] = {
        {!options.scene.empty(), "SCENE"},
        {options.saveScene.has_value(), "--save-scene"},
        {options.log.has_value(), "--log"},
        {options.receipt.has_value(), "--receipt"},
        {options.report.has_value(), "--report"},
        {options.accept.has_value(), "--accept"},
        {options.savePreset.has_value(), "--save-preset"},
        {options.savedSettings, "--saved-settings"},
        {options.configDir.has_value(), "--config-dir"},
        {options.bisect, "--bisect"},
        {options.about, "--about"},
        {options.showDialog, "--show-dialog"}};
    if (batch.items.empty()) {
        for (const auto& [isGiven, name] : parts) {
            if (isGiven) {
                return std::string(name) + ": is of a batch, expected --batch beside it";
            }
        }
        return {};
    }
    for (const auto& [isGiven, name] : others) {
        if (isGiven) {
            return std::string(name) + ": is of one scene alone, expected no --batch beside it";
        }
    }
    return batch.arraySize && !batch.arrayIndex ? "--array-size: expected --array-index beside it"
                                                : "";
}

int RunBatch(const Options& options, Interrupts& interrupts, Console& console, RunReport& report,
             bool showsProgress) {
    RequireDirectory("--output", options.output);
    RequireDirectory("--textures", options.textures);
    const std::vector<BatchScene> scenes =
        FindBatchScenes(options.batch.items, options.output, std::cin);
    std::vector<Job> jobs = JobsOf(options, scenes);
    const bool isShown = options.batch.count || options.list;
    if (isShown && !(options.list && options.allAnimations)) {
        return Show(options, jobs, console, report);
    }
    JobSettings settings = SettingsOf(options);
    settings.isDryRun = settings.isDryRun || isShown;
    // A second interrupt ends the program at once, and with it the exports.
    interrupts.PressCancel();
    if (options.allAnimations) {
        jobs = WithAnimations(settings, jobs, scenes, interrupts, console, showsProgress);
    }
    if (isShown) {
        return interrupts.Status() != 0 ? interrupts.Status()
                                        : Show(options, jobs, console, report);
    }
    JobRun run(std::move(settings), std::move(jobs));
    BatchReport told(options, run, console, showsProgress);
    RunAll(run, interrupts, told);
    const int status = interrupts.Status() != 0 ? interrupts.Status()
                       : told.SoFar().Bad() > 0 ? kExitExportFailed
                                                : kExitDone;
    told.Conclude(report);
    return status;
}

}  // namespace maxhost::app
