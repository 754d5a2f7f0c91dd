#include "host/app/presets.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <map>
#include <optional>
#include <ostream>
#include <string_view>
#include <system_error>
#include <utility>

#include "host/app/dry_run.h"
#include "host/app/exit_status.h"
#include "host/app/json_parts.h"
#include "host/app/option_group.h"
#include "host/app/option_table.h"
#include "host/scene/error.h"
#include "host/scene_file/json_in.h"
#include "kta/text.h"
#include "kta/whole_file.h"

namespace maxhost::app {

namespace fs = std::filesystem;
using scene_file::JsonKind;
using scene_file::JsonTree;
using scene_file::JsonValue;

const char* NameOf(Origin origin) {
    switch (origin) {
        case Origin::savedSettings:
            return "saved settings";
        case Origin::preset:
            return "preset";
        case Origin::sidecar:
            return "sidecar";
        case Origin::dialog:
            return "dialog";
        case Origin::commandLine:
            return "command line";
        default:
            return "default";
    }
}

namespace {

constexpr std::size_t kMostBytes = 1 << 20;
constexpr std::string_view kSettingsEnding = ".cfg";

// ---------------------------------------------------------------- the table of options

enum class ValueType { boolean, number, numberOrText, text };

// As the help names what the option takes.
ValueType TypeOf(const CLI::Option& option) {
    if (option.get_items_expected_max() == 0) {
        return ValueType::boolean;
    }
    const std::string type = option.get_type_name();
    const std::string name = type.substr(0, type.find(':'));
    return name == "N" || name == "X"        ? ValueType::number
           : name == "T" || name == "NAME|N" ? ValueType::numberOrText
                                             : ValueType::text;
}

bool IsRepeatable(const CLI::Option& option) {
    return option.get_items_expected_max() > 1;
}

// Asks the table of the command line what it takes.
class OptionTable {
  public:
    OptionTable() { AddOptions(app_, options_); }

    // Null where presets have no option of that name.
    CLI::Option* Find(const std::string& name) {
        CLI::Option* const option = Known(name);
        return option != nullptr && option->get_configurable() ? option : nullptr;
    }

    // Why there is no such option.
    std::string WhyNot(const std::string& name) {
        if (Known(name) != nullptr) {
            return "stands on the command line alone, expected an option that presets may hold";
        }
        const std::string unknown = "unknown option '" + kta::OneLine(name) + "'";
        const std::string positive = name.starts_with("no-") ? name.substr(3) : std::string();
        const CLI::Option* const option = Find(positive);
        if (option != nullptr && TypeOf(*option) == ValueType::boolean) {
            return unknown + ": did you mean '" + positive + "', false?";
        }
        const std::vector<std::string> names = Names();
        const std::string nearest = kta::NearestWord(name, names);
        return unknown + (nearest.empty() ? ", expected one of " + kta::Joined(names)
                                          : ": did you mean '" + nearest + "'?");
    }

    // What is wrong with the texts as the option's value; empty where nothing is.
    static std::string Fault(CLI::Option& option, const std::vector<std::string>& texts) {
        try {
            option.clear();
            for (const std::string& text : texts) {
                option.add_result(text);
            }
            option.run_callback();
            return {};
        } catch (const CLI::ParseError& error) {
            const std::string text = error.what();
            const std::string name = option.get_name() + ": ";
            return text.starts_with(name) ? text.substr(name.size()) : text;
        }
    }

  private:
    CLI::Option* Known(const std::string& name) {
        CLI::Option* const option = app_.get_option_no_throw("--" + name);
        const bool isNamedSo = option != nullptr && option->get_lnames().at(0) == name;
        return isNamedSo ? option : nullptr;
    }

    std::vector<std::string> Names() const {
        std::vector<std::string> names;
        for (const CLI::Option* option : app_.get_options()) {
            if (option->get_configurable()) {
                names.push_back(option->get_lnames().at(0));
            }
        }
        return names;
    }

    Options options_;
    CLI::App app_;
};

// ---------------------------------------------------------------- JSON

std::string NumberText(JsonValue value) {
    return value.Kind() == JsonKind::integer ? std::to_string(value.Integer())
                                             : Shortest(value.Real());
}

bool IsNumber(JsonValue value) {
    return value.Kind() == JsonKind::integer || value.Kind() == JsonKind::real;
}

// As the command line has the value; refuses what is of another type than the option's.
std::vector<std::string> TextsOf(JsonValue value, const CLI::Option& option) {
    const ValueType type = TypeOf(option);
    if (type == ValueType::boolean) {
        if (value.Kind() != JsonKind::boolean) {
            value.Refuse("true or false");
        }
        return {value.Boolean() ? "true" : "false"};
    }
    if (type != ValueType::text && IsNumber(value)) {
        return {NumberText(value)};
    }
    if (type == ValueType::number) {
        value.Refuse("a number");
    }
    std::vector<std::string> texts;
    const auto add = [&](JsonValue text) {
        if (text.Kind() != JsonKind::text) {
            text.Refuse(type == ValueType::text ? "a text" : "a text or a number");
        }
        texts.emplace_back(text.Text());
    };
    if (IsRepeatable(option) && value.Kind() == JsonKind::list) {
        for (const JsonValue element : value) {
            add(element);
        }
        if (texts.empty()) {
            value.Refuse("a text, or a list of at least one");
        }
    } else {
        add(value);
    }
    return texts;
}

std::vector<GivenOption> OptionsIn(const JsonTree& tree, Origin origin) {
    if (tree.Root().Kind() != JsonKind::object) {
        tree.Root().Refuse("an object of options");
    }
    OptionTable table;
    std::vector<GivenOption> options;
    for (auto at = tree.Root().begin(); at != tree.Root().end(); ++at) {
        const std::string name((*at).Text());
        ++at;
        const JsonValue value = *at;
        CLI::Option* const option = table.Find(name);
        if (option == nullptr) {
            throw scene::SceneError(value.Pointer() + ": " + table.WhyNot(name));
        }
        GivenOption given{name, TextsOf(value, *option), origin};
        if (std::string fault = OptionTable::Fault(*option, given.texts); !fault.empty()) {
            // The command line's texts stand in quotes, a number does not.
            if (IsNumber(value) && fault.starts_with(Quoted(given.texts.front()))) {
                fault.replace(0, given.texts.front().size() + 2, given.texts.front());
            }
            throw scene::SceneError(value.Pointer() + ": " + fault);
        }
        options.push_back(std::move(given));
    }
    return options;
}

// ---------------------------------------------------------------- settings files

std::string TextOf(Plinth::UInt8 value) {
    return value ? "true" : "false";
}
template <class Number>
std::string TextOf(Number value) {
    return Shortest(value);
}

std::string TextOf(const ExporterOption& option, const ExportOptions& values) {
    return std::visit([&](auto setting) { return TextOf(values.*setting); }, option.setting);
}

// The place of the option's field in the record.
std::ptrdiff_t PlaceOf(const ExporterOption& option) {
    static const ExportOptions record = DefaultExportOptions();
    return std::visit(
        [](auto setting) {
            return reinterpret_cast<const char*>(&(record.*setting)) -
                   reinterpret_cast<const char*>(&record);
        },
        option.setting);
}

PresetFile SettingsOf(const std::string& bytes, Origin origin) {
    PresetFile file;
    ExportOptions& settings = file.settings.emplace();
    std::memcpy(&settings, bytes.data(), sizeof(settings));
    OptionTable table;
    for (const ExporterOption& exporters : kExporterOptions) {
        GivenOption given{exporters.name, {TextOf(exporters, settings)}, origin};
        const std::string fault = OptionTable::Fault(*table.Find(given.name), given.texts);
        if (!fault.empty()) {
            throw scene::SceneError("byte " + std::to_string(PlaceOf(exporters)) + " (" +
                                    given.name + "): " + fault);
        }
        file.options.push_back(std::move(given));
    }
    return file;
}

// ---------------------------------------------------------------- files

std::string Contents(const std::string& path, Origin origin) {
    const auto refuse = [&](const char* reason) { throw Failure(kExitRefused, path, reason); };
    std::error_code error;
    const fs::file_status status = fs::status(path, error);
    if (!fs::exists(status)) {
        refuse("does not exist, expected a file of options");
    }
    if (fs::is_directory(status)) {
        refuse("is a directory, expected a file of options");
    }
    if (origin == Origin::sidecar && !fs::is_regular_file(status)) {
        refuse("is not a regular file, expected a file of options");
    }
    std::optional<std::string> bytes = kta::ReadWholeFile(path, kMostBytes + 1);
    if (!bytes) {
        refuse("cannot be opened for reading");
    }
    if (bytes->size() > kMostBytes) {
        refuse("has more than 1 MiB, expected a file of options");
    }
    return *std::move(bytes);
}

bool IsSettingsFile(const std::string& path, const std::string& bytes) {
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    const bool isObject = first != std::string::npos && bytes[first] == '{';
    return kta::EndsWithIgnoringCase(path, kSettingsEnding) ||
           (bytes.size() == sizeof(ExportOptions) && !isObject &&
            !kta::EndsWithIgnoringCase(path, ".json"));
}

}  // namespace

bool HasUnshown(const ExportOptions& settings) {
    const ExportOptions defaults = DefaultExportOptions();
    const auto isOn = [](Plinth::UInt8 value) { return value != 0; };
    return isOn(settings.collisionMeshes) != isOn(defaults.collisionMeshes) ||
           isOn(settings.meshes) != isOn(defaults.meshes) ||
           settings.maxWeightsPerVertex != defaults.maxWeightsPerVertex;
}

PresetFile ReadPreset(const std::string& path, Origin origin) {
    constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";
    const std::string bytes = Contents(path, origin);
    try {
        if (IsSettingsFile(path, bytes)) {
            if (bytes.size() != sizeof(ExportOptions)) {
                throw scene::SceneError("has " + kta::Counted(bytes.size(), "byte") +
                                        ", expected the 24 bytes of a settings file");
            }
            return SettingsOf(bytes, origin);
        }
        std::string_view text = bytes;
        text.remove_prefix(text.starts_with(kByteOrderMark) ? kByteOrderMark.size() : 0);
        return {OptionsIn(JsonTree(text), origin), std::nullopt};
    } catch (const scene::SceneError& error) {
        throw Failure(kExitRefused, path, error.what());
    }
}

// ---------------------------------------------------------------- what counts

std::vector<GivenOption> Merged(const std::vector<std::vector<GivenOption>>& given) {
    std::map<std::string_view, const GivenOption*> counting;
    std::vector<std::string_view> order;
    for (const std::vector<GivenOption>& options : given) {
        for (const GivenOption& option : options) {
            if (counting.insert_or_assign(option.name, &option).second) {
                order.push_back(option.name);
            }
        }
    }
    for (const ExporterOption& option : kExporterOptions) {
        const auto own = counting.find(option.name);
        const auto enabling = option.enabledBy ? counting.find(option.enabledBy) : counting.end();
        if (own == counting.end() || enabling == counting.end() ||
            enabling->second->texts.back() != "false" ||
            own->second->origin == Origin::commandLine ||
            own->second->origin > enabling->second->origin) {
            continue;
        }
        counting.erase(own);
    }
    std::vector<GivenOption> merged;
    for (const std::string_view name : order) {
        if (const auto found = counting.find(name); found != counting.end()) {
            merged.push_back(*found->second);
        }
    }
    return merged;
}

// ---------------------------------------------------------------- saving

namespace {

Json NumberOf(const std::string& text) {
    double value = 0;
    const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    const bool isWhole = error == std::errc() && std::trunc(value) == value &&
                         std::abs(value) <= std::numeric_limits<std::int32_t>::max();
    // The shortest decimal number, not the double next to it.
    return isWhole ? Json(static_cast<std::int32_t>(value)) : Json::parse(Shortest(value));
}

Json ValueOf(const GivenOption& given, const CLI::Option& option) {
    const std::string& last = given.texts.back();
    switch (TypeOf(option)) {
        case ValueType::boolean:
            return last == "true";
        case ValueType::number:
            return NumberOf(last);
        default:
            break;
    }
    if (!IsRepeatable(option) || given.texts.size() == 1) {
        return Text(last);
    }
    Json list = Json::array();
    for (const std::string& text : given.texts) {
        list.push_back(Text(text));
    }
    return list;
}

void WriteSettings(const Options& options, const ExportOptions& exporters, std::ostream& out) {
    for (const GivenOption& given : options.given) {
        if (FindExporterOption(given.name) == nullptr) {
            throw Failure(kExitRefused, "--save-preset",
                          "a settings file holds the exporter's options alone, not --" +
                              given.name + ", expected a name that does not end in .cfg");
        }
    }
    out.write(reinterpret_cast<const char*>(&exporters), sizeof(exporters));
}

void WriteJson(const Options& options, const ExportOptions& exporters, std::ostream& out) {
    if (HasUnshown(exporters)) {
        throw Failure(kExitRefused, "--save-preset",
                      "choices without a control of the dialog (bytes 0, 2 and 12 to 15) stand in "
                      "settings files alone, expected a name that ends in .cfg");
    }
    OptionTable table;
    Json json = Json::object();
    for (const ExporterOption& option : kExporterOptions) {
        json[option.name] = SettingOf(option, exporters);
    }
    for (const GivenOption& given : options.given) {
        if (FindExporterOption(given.name) == nullptr) {
            json[given.name] = ValueOf(given, *table.Find(given.name));
        }
    }
    out << json.dump(2) << "\n";
}

}  // namespace

void SavePreset(const Options& options, const fs::path& file, const ExportOptions& start,
                DryRun* dryRun) {
    ExportOptions exporters = start;
    for (std::size_t i = 0; i < options.choices.isChosen.size(); ++i) {
        if (options.choices.isChosen[i]) {
            std::visit([&](auto setting) { exporters.*setting = options.choices.values.*setting; },
                       kExporterOptions[i].setting);
        }
    }
    const bool isSettings = kta::EndsWithIgnoringCase(file.string(), kSettingsEnding);
    try {
        kta::ReplaceWholeFile(PlaceToWrite(dryRun, file), [&](std::ostream& out) {
            (isSettings ? WriteSettings : WriteJson)(options, exporters, out);
        });
    } catch (const std::system_error& error) {
        throw Failure(kExitRefused, file.string(),
                      "cannot be written (" + error.code().message() + ")");
    }
}

Json OriginsOf(const Options& options, const ExportOptions& inForce, Origin ofTheRest) {
    Json json = Json::object();
    if (options.preset) {
        json["preset"] = Text(*options.preset);
    }
    if (options.sidecarFile) {
        json["sidecar"] = Text(*options.sidecarFile);
    }
    Json& values = json["values"] = Json::object();
    const auto add = [&](const std::string& name, Json value, const char* origin) {
        values[name] = {{"value", std::move(value)}, {"from", origin}};
    };
    const ExportOptions defaults = DefaultExportOptions();
    for (const ExporterOption& option : kExporterOptions) {
        if (!IsEnabled(option, inForce)) {
            continue;
        }
        const Json value = SettingOf(option, inForce);
        const auto given = std::ranges::find(options.given, option.name, &GivenOption::name);
        const bool isDefault =
            ofTheRest == Origin::savedSettings && value == SettingOf(option, defaults);
        add(option.name, value,
            NameOf(given != options.given.end() ? given->origin
                   : isDefault                  ? Origin::byDefault
                                                : ofTheRest));
    }
    OptionTable table;
    for (const GivenOption& given : options.given) {
        if (FindExporterOption(given.name) == nullptr) {
            add(given.name, ValueOf(given, *table.Find(given.name)), NameOf(given.origin));
        }
    }
    return json;
}

}  // namespace maxhost::app
