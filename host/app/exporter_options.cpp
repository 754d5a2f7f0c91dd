#include "host/app/exporter_options.h"

#include <algorithm>
#include <string_view>

namespace maxhost::app {

std::string ValueText(Plinth::UInt8 value) {
    return value ? "on" : "off";
}

namespace {

std::string Name(const ExporterOption& option, const ExportOptions& values) {
    const auto* const box = std::get_if<Plinth::UInt8 ExportOptions::*>(&option.setting);
    const bool isOff = box != nullptr && values.**box == 0;
    return (isOff ? "--no-" : "--") + std::string(option.name);
}

bool IsSwitchedOff(const char* name, const ExportOptions& values) {
    return std::ranges::any_of(kExporterOptions, [&](const ExporterOption& option) {
        return name != nullptr && std::string_view(option.name) == name &&
               Name(option, values).starts_with("--no-");
    });
}

}  // namespace

const ExporterOption* FindExporterOption(std::string_view name) {
    const auto* const found = std::ranges::find_if(
        kExporterOptions, [&](const ExporterOption& option) { return name == option.name; });
    return found == std::end(kExporterOptions) ? nullptr : found;
}

bool IsEnabled(const ExporterOption& option, const ExportOptions& values) {
    return !IsSwitchedOff(option.enabledBy, values);
}

std::string OnCommandLine(const ExportOptions& values) {
    std::string line;
    for (const ExporterOption& option : kExporterOptions) {
        if (IsEnabled(option, values)) {
            line += (line.empty() ? "" : " ") + Name(option, values);
            if (!std::holds_alternative<Plinth::UInt8 ExportOptions::*>(option.setting)) {
                line += " " + std::visit([&](auto setting) { return ValueText(values.*setting); },
                                         option.setting);
            }
        }
    }
    return line;
}

std::vector<std::string> NamesOf(const DialogChoices& choices) {
    std::vector<std::string> names;
    for (std::size_t i = 0; i < choices.isChosen.size(); ++i) {
        if (choices.isChosen[i]) {
            names.push_back(Name(kExporterOptions[i], choices.values));
        }
    }
    return names;
}

}  // namespace maxhost::app
