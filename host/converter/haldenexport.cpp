#include "host/converter/haldenexport.h"

#include <string>
#include <system_error>
#include <vector>

#include "host/converter/manifest.h"
#include "kta/reader.h"

namespace {

enum class Step { closed, opened, actorTaken, motionTaken, motionEnded };

Step step = Step::closed;
std::string exportFile;                     // the HDO file that the user named
std::vector<halden::ManifestEntry> handed;  // the files of this export
std::string faults;
bool faultsAreLost = false;  // memory was missing for one
bool readingIsLeft = false;  // to the caller

void AddFault(const std::string& line) {
    if (!faults.empty()) {
        faults += '\n';
    }
    faults += line;
}

// Goes on to the next step of an export even when the call comes out of order, so that one missing
// call is one fault.
void Advance(const char* call, Step expected, Step next) {
    if (step != expected) {
        AddFault(std::string(call) + ": called out of order");
    }
    step = next;
}

void CheckFile(const char* call, const char* path, KTAFileKind kind) {
    if (path == nullptr) {
        AddFault(std::string(call) + ": no file name given");
        return;
    }
    if (!readingIsLeft) {
        for (const std::string& line : kta::FaultLines(path, kta::ReadFile(path, kind))) {
            AddFault(line);
        }
    }
    handed.push_back({kta::KindName(kind), path});
}

// An export with a fault gets none: what bears the name of the HDO file says that all is well.
void LeaveManifest() {
    if (!faults.empty() || faultsAreLost) {
        return;
    }
    if (exportFile.empty()) {
        AddFault("InitSpecialHalden: no export file name given");
        return;
    }
    try {
        halden::WriteManifest(exportFile, handed);
    } catch (const std::system_error& error) {
        AddFault(error.what());
    }
}

// The callers expect plain C functions.
template <typename Action>
void WithoutExceptions(Action action) noexcept {
    try {
        action();
    } catch (...) {
        faultsAreLost = true;
    }
}

}  // namespace

void InitSpecialHalden(const char*, const char* exportFileName, bool) {
    faults.clear();
    faultsAreLost = false;
    handed.clear();
    step = Step::opened;
    WithoutExceptions([=] { exportFile = exportFileName != nullptr ? exportFileName : ""; });
}

void WriteKTActorFile(const char* ktaFileName) {
    WithoutExceptions([=] {
        Advance("WriteKTActorFile", Step::opened, Step::actorTaken);
        CheckFile("WriteKTActorFile", ktaFileName, kFileKindActor);
    });
}

void WriteKTMotionFile(const char* ktaFileName) {
    WithoutExceptions([=] {
        if (ktaFileName == nullptr) {
            Advance("WriteKTMotionFile(null)", Step::motionTaken, Step::motionEnded);
        } else {
            Advance("WriteKTMotionFile", Step::actorTaken, Step::motionTaken);
            CheckFile("WriteKTMotionFile", ktaFileName, kFileKindMotion);
        }
    });
}

void EndSpecialHalden() {
    WithoutExceptions([] {
        Advance("EndSpecialHalden", Step::motionEnded, Step::closed);
        LeaveManifest();
    });
}

const char* SpecialHaldenFaults() {
    return faultsAreLost ? "not all could be checked, memory is missing" : faults.c_str();
}

void SpecialHaldenLeaveReading(bool isLeft) {
    readingIsLeft = isLeft;
}
