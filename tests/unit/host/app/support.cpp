#include "tests/unit/host/app/support.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>

#include "host/app/exit_status.h"
#include "host/app/run.h"
#include "host/win32/module.h"

#ifndef _WIN32
#include <sys/wait.h>
#endif

namespace maxhost::app {

namespace fs = std::filesystem;

FakePlugInBehaviour& ResetFakePlugIn() {
    const HMODULE module = LoadLibraryA(FAKE_PLUGIN);
    if (!module) {
        throw std::runtime_error(FAKE_PLUGIN " does not load");
    }
    const auto fakePlugIn = win32::ModuleFunction<FakePlugInBehaviour* (*)()>(module, "FakePlugIn");
    FakePlugInBehaviour& behaviour = *fakePlugIn();
    const HINSTANCE instance = behaviour.instance;
    behaviour = FakePlugInBehaviour();
    behaviour.instance = instance;
    return behaviour;
}

std::vector<std::string> InDirectory::Names() const {
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory_)) {
        names.push_back(entry.path().filename().string());
    }
    std::sort(names.begin(), names.end());
    return names;
}

Outcome RunProgram(const std::vector<std::string>& arguments) {
    std::ostringstream out, error;
    Outcome outcome;
    {
        Console console(out, error);
        outcome.status = Run(arguments, console, false);
    }
    outcome.out = out.str();
    outcome.error = error.str();
    return outcome;
}

void ProgramTest::SetUp() {
    Write("s.maxscene.json", R"({
        "maxscene": 1,
        "nodes": [
            {"name": "root"},
            {"name": "hidden", "parent": 0, "hidden": true},
            {"name": "leaf", "parent": 1}
        ]})");
}

Outcome ProgramTest::RunReal(const std::string& arguments) const {
    // Beside the directory: what the program starts may hold them open for longer than it runs.
    const std::string beside = (std::filesystem::path("..") / directory_.filename()).string();
    const std::string out = beside + ".out";
    const std::string error = beside + ".error";
    const std::string command =
        "\"" HDO_EXPORT "\" --config-dir cfg " + arguments + " >" + out + " 2>" + error;
    const int result = std::system(command.c_str());
    Outcome outcome;
#ifdef _WIN32
    outcome.status = result;
#else
    outcome.status = WIFEXITED(result) ? WEXITSTATUS(result) : -1;
#endif
    outcome.out = Read(out);
    outcome.error = Read(error);
    std::error_code ignored;
    std::filesystem::remove(out, ignored);
    std::filesystem::remove(error, ignored);
    return outcome;
}

std::string Native(const std::string& path) {
    return fs::absolute(path).make_preferred().string();
}

std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        if (line.ends_with('\r')) {
            line.pop_back();
        }
        lines.push_back(line);
    }
    return lines;
}

Thrown Catch(const std::function<void()>& action) {
    try {
        action();
    } catch (const Failure& failure) {
        return {failure.Status(), failure.Subject() + ": " + failure.what()};
    }
    return {};
}

}  // namespace maxhost::app
