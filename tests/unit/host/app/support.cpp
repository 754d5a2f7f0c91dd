#include "tests/unit/host/app/support.h"

#include <algorithm>
#include <stdexcept>

#include "host/app/exit_status.h"
#include "host/app/run.h"
#include "host/win32/module.h"

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
