#include "host/app/trial.h"

#include <cctype>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>
#include <variant>

#include "host/app/exit_status.h"
#include "host/app/loaded_scene.h"
#include "host/app/places.h"
#include "host/app/run_report.h"
#include "kta/text.h"

namespace maxhost::app {

namespace fs = std::filesystem;

// ---------------------------------------------------------------- what was said

namespace {

// The first line of a file that `accepts`; empty where there is none.
template <class Accept>
std::string FirstLine(const fs::path& file, Accept accepts) {
    std::ifstream in(file);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && accepts(line)) {
            return line;
        }
    }
    return {};
}

std::string Without(std::string text, const std::string& part) {
    for (std::size_t at = 0; !part.empty() && (at = text.find(part, at)) != std::string::npos;) {
        text.erase(at, part.size());
    }
    return text;
}

// What stays of a message when names, in quotes, and numbers are left aside: of one that ends with
// the code of an issue, "[weight-range]", that alone; of a loss, its code.
std::string Pattern(const std::string& message) {
    constexpr std::string_view kLoss = "new loss: ";
    if (const std::size_t at = message.find(kLoss); at != message.npos) {
        return message.substr(at, message.find(':', at + kLoss.size()) - at);
    }
    if (const std::size_t code = message.rfind(" [");
        message.ends_with(']') && code != message.npos) {
        return message.substr(code);
    }
    std::string pattern;
    char quote = 0;
    for (std::size_t i = 0; i < message.size(); ++i) {
        const char c = message[i];
        const bool begins = (c == '"' || c == '\'') &&
                            (i == 0 || !std::isalnum(static_cast<unsigned char>(message[i - 1])));
        if (quote != 0) {
            quote = c == quote ? 0 : quote;
        } else if (begins && message.find(c, i + 1) != std::string::npos) {
            quote = c;
            pattern += "...";
        } else if (!std::isdigit(static_cast<unsigned char>(c))) {
            pattern += c;
        } else if (pattern.empty() || pattern.back() != '#') {
            pattern += '#';
        }
    }
    return pattern;
}

std::string FileOf(const char* suffix) {
    return std::string("scene.hdo") + suffix;
}

// ---------------------------------------------------------------- the command

void AddChoices(const DialogChoices& choices, std::vector<std::string>& command) {
    const std::vector<std::string> names = NamesOf(choices);
    for (std::size_t i = 0, name = 0; i < choices.isChosen.size(); ++i) {
        if (!choices.isChosen[i]) {
            continue;
        }
        command.push_back(names[name++]);
        std::visit(
            [&](auto setting) {
                const auto value = choices.values.*setting;
                if constexpr (!std::is_same_v<decltype(value), const Plinth::UInt8>) {
                    command.push_back(Shortest(value));
                }
            },
            kExporterOptions[i].setting);
    }
}

std::vector<std::string> CommandOf(const Options& options) {
    std::vector<std::string> command = {ProgramFile().string(), "-q", "--progress", "never",
                                        "--allow-empty"};
    AddChoices(options.choices, command);
    const auto add = [&](bool isGiven, const char* name) {
        if (isGiven) {
            command.emplace_back(name);
        }
    };
    add(options.selectedOnly, "--selected");
    add(options.strict, "--strict");
    add(options.savedSettings, "--saved-settings");
    if (options.maxError) {
        command.insert(command.end(), {"--max-error", Shortest(*options.maxError)});
    }
    if (options.configDir) {
        command.insert(command.end(), {"--config-dir", Absolute(*options.configDir).string()});
    }
    if (options.presetSettings) {
        command.insert(command.end(), {"--preset", Absolute(*options.preset).string()});
    }
    for (const std::string& directory : options.pluginDirs) {
        command.insert(command.end(), {"--plugin-dir", Absolute(directory).string()});
    }
    if (options.plugin) {
        command.insert(command.end(), {"--plugin", Absolute(*options.plugin).string()});
    }
    return command;
}

}  // namespace

// ---------------------------------------------------------------- one try

Trial::Trial(const Options& options, fs::path room)
    : room_(std::move(room)), isStrict_(options.strict), command_(CommandOf(options)) {
    const std::string scene = (room_ / "scene.maxscene.json").string();
    command_.insert(command_.end(), {"-o", (Made() / FileOf("")).string(), scene});
}

TrialResult Trial::Run(const scene::Scene& scene, double seconds) const {
    std::error_code ignored;
    fs::remove_all(Made(), ignored);
    fs::create_directory(Made(), ignored);
    SaveScene(scene, command_.back());
    const Stopwatch watch;
    try {
        const ProcessEnd end =
            RunProcess(command_, room_ / "out", room_ / "error", {.seconds = seconds});
        TrialResult result = ResultOf(end, seconds);
        result.seconds = watch.Seconds();
        return result;
    } catch (const std::system_error& error) {
        throw Failure(kExitRefused, command_.front(),
                      "cannot be started: " + error.code().message());
    }
}

TrialResult Trial::ResultOf(const ProcessEnd& end, double seconds) const {
    TrialResult result;
    result.fails = true;
    if (end.how == ProcessEnd::How::ranOutOfTime) {
        result.kind = result.shown = "does not end";
        result.shown += " within " + Shortest(seconds) + " s";
        return result;
    }
    const bool countsWarnings = isStrict_ && end.number == kExitFaultyOutput;
    const std::string message =
        Without(Without(FirstLine(room_ / "error",
                                  [&](const std::string& line) {
                                      return countsWarnings ||
                                             line.find(": warning: ") == std::string::npos;
                                  }),
                        (Made() / "").string()),
                "hdo-export: ");
    if (end.how == ProcessEnd::How::crashed || end.number != kExitDone) {
        result.shown = end.how == ProcessEnd::How::crashed
                           ? "crashes, " + CauseOfCrash(end)
                           : "exit status " + std::to_string(end.number);
        result.kind = result.shown + Pattern(message);
        result.shown += message.empty() ? "" : ": " + message;
        result.isRefused = end.how == ProcessEnd::How::exited &&
                           (end.number == kExitRefused || end.number == kExitNoPlugIn);
        return result;
    }
    result.fails = false;
    return result;
}

}  // namespace maxhost::app
