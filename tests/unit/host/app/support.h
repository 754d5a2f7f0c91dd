// Fixtures and helpers of the tests of hdo-export.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "host/app/console.h"
#include "host/app/options.h"
#include "tests/support/temporary_directory.h"
#include "tests/unit/host/app/modules/fake_plugin.h"

namespace maxhost::app {

// The behaviour of the fake plug-in, which this loads; reset to the ordinary one.
FakePlugInBehaviour& ResetFakePlugIn();

// An empty directory of its own, the current one while a test runs.
class InDirectory : public testing::Test {
  protected:
    std::filesystem::path Path(const std::string& name) const { return directory_ / name; }
    static void Write(const std::filesystem::path& path, const std::string& text) {
        support::WriteFile(path, text);
    }
    static std::string Read(const std::filesystem::path& path) { return support::ReadFile(path); }
    // Names of what is in the directory, sorted.
    std::vector<std::string> Names() const;

  private:
    const support::WorkDirectory work_;

  protected:
    const std::filesystem::path directory_ = work_.Path();
};

// Runs app::Run and keeps what it says.
struct Outcome {
    int status = -1;
    std::string out, error;
};
Outcome RunProgram(const std::vector<std::string>& arguments);

// The program itself, with the real plug-in and converter. "s.maxscene.json" is a scene of a hidden
// node between two others.
class ProgramTest : public InDirectory {
  protected:
    void SetUp() override;
    // `arguments` as a command line has them, redirections included.
    Outcome RunReal(const std::string& arguments) const;
};

// The chosen value of a setting; absent where it is not chosen.
template <class Value>
std::optional<Value> Chosen(const DialogChoices& choices, Value ExportOptions::*setting) {
    for (std::size_t i = 0; i < choices.isChosen.size(); ++i) {
        const auto* const own = std::get_if<Value ExportOptions::*>(&kExporterOptions[i].setting);
        if (choices.isChosen[i] && own != nullptr && *own == setting) {
            return choices.values.*setting;
        }
    }
    return std::nullopt;
}

// The path made absolute, with the platform's own separators.
std::string Native(const std::string& path);

// Line ends may be either system's.
std::vector<std::string> Lines(const std::string& text);

// The status and "SUBJECT: TEXT" of the Failure that the action throws; status -1 when it throws
// none.
struct Thrown {
    int status = -1;
    std::string line;
};
Thrown Catch(const std::function<void()>& action);

}  // namespace maxhost::app
