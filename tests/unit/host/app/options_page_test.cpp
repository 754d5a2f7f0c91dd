// docs/options.md has a row for each option, which says of its control, its place in the settings
// file and its default what the table, the dialog and the settings say.
#include <gtest/gtest.h>
#include <windows.h>

#include <sstream>

#include "host/app/options.h"
#include "host/sdk/host.h"
#include "host/win32/module.h"
#include "host/win32/resources.h"
#include "tests/support/temporary_directory.h"
#include "tests/unit/host/app/support.h"

namespace maxhost::app {
namespace {

constexpr int kCellsOfFacts = 4;

win32::DialogTemplate OptionsDialog() {
    // The plug-in loads where it finds a converter library: the one beside it.
    Host::Instance().SetPlugInDirs({std::filesystem::path(HDO_PLUGIN_FILE).parent_path().string()});
    const HMODULE plugIn = LoadLibraryA(HDO_PLUGIN_FILE);
    EXPECT_NE(plugIn, nullptr);
    const auto bytes =
        win32::FindResource(win32::ResourcesOf(plugIn), win32::kDialogType, IDD_OPTIONS);
    const auto dialog = bytes ? win32::ReadDialogTemplate(*bytes) : std::nullopt;
    EXPECT_TRUE(dialog);
    FreeLibrary(plugIn);
    return dialog.value_or(win32::DialogTemplate());
}

// A control without a text of its own stands behind its label.
std::string CaptionOf(const win32::DialogTemplate& dialog, int id) {
    std::string label;
    for (const win32::ControlTemplate& control : dialog.controls) {
        const std::string caption = control.text.empty() ? label : control.text;
        if (control.id == id) {
            return caption.substr(0, caption.find(':'));
        }
        label = control.text;
    }
    return "no control";
}

struct SettingText {
    const char* value;  // on the command line
    const char* kind;   // in the settings file
    std::string fallback;
};

SettingText Describe(Plinth::UInt8 value) {
    return {nullptr, "switch", value ? "on" : "off"};
}
SettingText Describe(Plinth::Int32 value) {
    return {" N", "i32", std::to_string(value)};
}
SettingText Describe(Plinth::Float32 value) {
    std::ostringstream text;
    text << value;
    return {" X", "f32", text.str()};
}

std::string ExpectedFacts(const win32::DialogTemplate& dialog, const ExporterOption& option) {
    const ExportOptions defaults = DefaultExportOptions();
    std::ostringstream row;
    std::visit(
        [&](auto setting) {
            const auto& value = defaults.*setting;
            const auto at =
                reinterpret_cast<const char*>(&value) - reinterpret_cast<const char*>(&defaults);
            const SettingText text = Describe(value);
            row << "| `--" << (text.value ? "" : "[no-]") << option.name
                << (text.value ? text.value : "") << "` | " << CaptionOf(dialog, option.control)
                << " (" << option.control << ") | " << at << ", " << text.kind << " | "
                << text.fallback << " |";
        },
        option.setting);
    return row.str();
}

TEST(OptionsPage, SaysWhatTheTableSays) {
    const win32::DialogTemplate dialog = OptionsDialog();
    std::vector<std::string> expected;
    for (const ExporterOption& option : kExporterOptions) {
        expected.push_back(ExpectedFacts(dialog, option));
    }
    std::vector<std::string> rows;
    for (const std::string& line : Lines(support::ReadFile(OPTIONS_PAGE))) {
        if (line.starts_with("| `")) {
            std::size_t end = 0;
            for (int cell = 0; cell < kCellsOfFacts; ++cell) {
                end = line.find('|', end + 1);
            }
            rows.push_back(line.substr(0, end + 1));
            EXPECT_GT(line.size(), end + 4) << line << ": does not say what the option changes";
        }
    }
    EXPECT_EQ(rows, expected);
}

}  // namespace
}  // namespace maxhost::app
