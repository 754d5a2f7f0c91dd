// The exporter's own options, which its dialog offers and its settings file holds.
#pragma once

#include <array>
#include <charconv>
#include <iterator>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "export/export_options.h"
#include "resources/resource.h"

namespace maxhost::app {

// An option of the exporter: a control of its options dialog, and a field of its settings, whose
// type says what it is: a switch, a real or a whole number.
struct ExporterOption {
    const char* name;  // on the command line, without dashes
    int control;
    std::variant<Plinth::UInt8 ExportOptions::*, Plinth::Float32 ExportOptions::*,
                 Plinth::Int32 ExportOptions::*>
        setting;
    const char* meaning;    // for --help
    const char* enabledBy;  // the name of the switch that enables the control; null: none
};

// Their defaults are DefaultExportOptions().
inline constexpr ExporterOption kExporterOptions[] = {
    {"export-hidden", IDC_EXPORT_HIDDEN, &ExportOptions::exportHidden, "export hidden objects",
     nullptr},
    {"non-renderable", IDC_NON_RENDERABLE, &ExportOptions::nonRenderable,
     "export meshes for non-renderable objects", nullptr},
    {"morphers", IDC_MORPHERS, &ExportOptions::morphers, "export morphers", nullptr},
    {"optimize-skin", IDC_OPTIMIZE_SKIN, &ExportOptions::optimizeSkin, "optimize skinning info",
     nullptr},
    {"weight-threshold", IDC_THRESHOLD_EDIT, &ExportOptions::weightThreshold,
     "weight threshold, 0 to 0.9999; asks for --optimize-skin", "optimize-skin"},
    {"motions-for-hidden", IDC_MOTIONS_FOR_HIDDEN, &ExportOptions::motionsForHidden,
     "export motions for hidden objects", nullptr},
    {"sample-animation", IDC_SAMPLE_ANIMATION, &ExportOptions::sampleAnimation,
     "sample the animation", nullptr},
    {"sample-rate", IDC_SAMPLE_RATE, &ExportOptions::sampleRate,
     "export a keyframe every N frames, at least 1; asks for --sample-animation",
     "sample-animation"},
};

// Null where there is none of that name.
const ExporterOption* FindExporterOption(std::string_view name);

// What the user chooses in the exporter's options dialog; what is not chosen stays as the dialog
// shows it.
struct DialogChoices {
    ExportOptions values = DefaultExportOptions();
    std::array<bool, std::size(kExporterOptions)> isChosen{};  // by position in kExporterOptions
};

// The options that are chosen, as on the command line: --morphers, --no-morphers, --sample-rate.
std::vector<std::string> NamesOf(const DialogChoices& choices);

// The shortest text that reads back to the same number.
template <class Number>
std::string Shortest(Number number) {
    std::array<char, 32> text;
    const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number);
    return std::string(text.data(), end);
}

// The value as the command line has it; "on" or "off" of a switch.
std::string ValueText(Plinth::UInt8 value);
template <class Number>
std::string ValueText(Number number) {
    return Shortest(number);
}

// Whether the switch that enables the option is on, or it needs none.
bool IsEnabled(const ExporterOption& option, const ExportOptions& values);

// All options of `values` as on the command line, but those that their switch disables.
std::string OnCommandLine(const ExportOptions& values);

}  // namespace maxhost::app
