#include "host/converter/haldenexport.h"

#include <optional>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "host/converter/manifest.h"
#include "kta/glb.h"

namespace {

enum class Step { closed, opened, actorTaken, motionTaken, motionEnded };

Step step = Step::closed;
std::string exportFile;                     // the HDO file that the user named
std::vector<halden::ManifestEntry> handed;  // the files of this export
std::optional<kta::File> actor, motion;     // read of them
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
        kta::Reading reading = kta::ReadFile(path, kind);
        for (const std::string& line : kta::FaultLines(path, reading)) {
            AddFault(line);
        }
        (kind == kFileKindActor ? actor : motion) = std::move(reading.file);
    }
    handed.push_back({kta::KindName(kind), path});
}

// Of files that were read here. One that would be too large is left out, and the export is none the
// worse for it.
void LeavePreview() {
    if (!actor) {
        return;
    }
    const std::string file = exportFile + ".glb";
    try {
        kta::WriteGlb(file, *actor, motion ? &*motion : nullptr);
    } catch (const std::system_error& error) {
        AddFault(file + ": cannot be written (" + error.code().message() + ")");
    } catch (const std::length_error&) {
    }
}

// An export with a fault gets neither: what bears the name of the HDO file says that all is well.
void LeaveResults() {
    if (!faults.empty() || faultsAreLost) {
        return;
    }
    if (exportFile.empty()) {
        AddFault("InitSpecialHalden: no export file name given");
        return;
    }
    try {
        halden::WriteManifest(exportFile, handed);
        LeavePreview();
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
    actor.reset();
    motion.reset();
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
        LeaveResults();
        actor.reset();
        motion.reset();
    });
}

const char* SpecialHaldenFaults() {
    return faultsAreLost ? "not all could be checked, memory is missing" : faults.c_str();
}

void SpecialHaldenLeaveReading(bool isLeft) {
    readingIsLeft = isLeft;
}
