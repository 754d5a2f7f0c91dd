// Every allocation of an export fails in turn, alone or with all that follow: the plug-in's own,
// through its memory manager and operator new, and those of 3ds Max's functions that it calls. An
// export then either is what it always is, or gives 0 with one line in its log.
#include <dlfcn.h>
#include <gtest/gtest.h>
#include <impexp.h>
#include <max.h>
#include <maxapi.h>
#include <plugin.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iterator>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "host/scene_file/scene_description.h"
#include "host/sdk/host.h"
#include "host/sdk/live_objects.h"
#include "host/win32/module.h"
#include "host/win32/user.h"
#include "tests/support/chunks.h"
#include "tests/support/export_run.h"
#include "tests/support/kta_bytes.h"
#include "tests/support/sweep.h"

namespace {

namespace fs = std::filesystem;

struct Failing {
    bool active = false;
    bool andLater = false;
    long failing = -1;  // number of the allocation that fails; -1: none
    long count = 0;     // of the allocations so far
} allocations;

void* Allocate(std::size_t size);

}  // namespace

extern "C" __attribute__((visibility("default"))) bool NextAllocationFails();

bool NextAllocationFails() {
    if (!allocations.active) {
        return false;
    }
    const long number = allocations.count++;
    return allocations.failing >= 0 && (number == allocations.failing ||
                                        (allocations.andLater && number > allocations.failing));
}

namespace {

void* Allocate(std::size_t size) {
    return NextAllocationFails() ? nullptr : std::malloc(size != 0 ? size : 1);
}

void* AllocateOrThrow(std::size_t size) {
    void* const memory = Allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

}  // namespace

void* operator new(std::size_t size) {
    return AllocateOrThrow(size);
}

void* operator new[](std::size_t size) {
    return AllocateOrThrow(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return Allocate(size);
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete[](void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept {
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept {
    std::free(memory);
}

namespace {

// Chooses the allocations that fail; none do outside a FailingWindow.
struct Choice {
    long failing;
    bool andLater;
};

class FailingWindow {
  public:
    explicit FailingWindow(const Choice& choice) {
        allocations = {true, choice.andLater, choice.failing, 0};
    }
    ~FailingWindow() { allocations.active = false; }
    FailingWindow(const FailingWindow&) = delete;
    FailingWindow& operator=(const FailingWindow&) = delete;
};

// Holds every kind of chunk, and what the exporter does on the way to them.
const char kScene[] = R"({"maxscene": 1,
"time": {"frameRate": 30, "start": 0, "end": 640},
"materials": [
 {"class": "multi", "name": "Both", "subMaterials": [
  {"class": "standard", "name": "Plain", "maps": [
   {"slot": 1, "map": {"class": "bitmap", "file": "maps\\plain.tga"}}]},
  {"class": "standard", "name": "Mixed", "maps": [
   {"slot": 2, "map": {"class": "other", "classId": ["0x230", 0],
    "subMaps": [{"class": "bitmap", "file": "mix.png"}]}}]}]}],
"nodes": [
 {"name": "Root", "transform": {
   "position": {"class": "positionXYZ", "id": "root position",
     "x": {"class": "bezierFloat", "id": "root x", "keys": [
       {"time": 0, "value": 0}, {"time": 640, "value": 5}]},
     "y": {"class": "bezierFloat", "keys": [{"time": 0, "value": 0}]},
     "z": {"class": "bezierFloat", "keys": [{"time": 0, "value": 1}]}},
   "rotation": {"class": "eulerXYZ",
     "x": {"class": "bezierFloat", "keys": [{"time": 0, "value": 0}, {"time": 640, "value": 1}]},
     "y": {"class": "bezierFloat", "keys": [{"time": 0, "value": 0}]},
     "z": {"class": "bezierFloat", "keys": [{"time": 0, "value": 0}]},
     "jointParams": {"flags": "0x40000036", "min": [-0.5, -0.25, -0.125], "max": [0.5, 0.75, 1]}},
   "scale": {"class": "bezierScale", "keys": [
     {"time": 0, "value": [1, 2, 3]}, {"time": 640, "value": [4, 5, 6]}]}}},
 {"name": "End", "parent": 0},
 {"name": "Chain", "transform": {"class": "ikChain", "startJoint": 0, "endJoint": 1}},
 {"name": "Follower", "transform": {"position": {"class": "positionXYZ",
   "x": {"class": "wire", "wires": [{"coController": "root x", "expression": "2 * X"}]},
   "y": {"class": "wire", "wires": [{"parent": "root position", "subnum": 1, "expression": "Y"}]},
   "z": {"class": "floatList", "items": [
     {"weight": 0.5, "controller": 1},
     {"weight": 0.25, "controller": {"class": "wire", "wires": [
       {"coController": "last", "expression": "Z / 2"}]}}]}}}},
 {"name": "Skinned", "material": 0, "userProperties": "CollisionMesh = yes",
  "object": {"class": "mesh", "vertices": [[0, 0, 0], [1, 0, 0], [0, 1, 0], [0, 0, 1]],
   "faces": [[0, 2, 1, 1, 0], [0, 1, 3, 1, 1], [0, 3, 2, 2, 0]],
   "channels": {"1": {"vertices": [[0, 0], [1, 0], [0, 1]],
     "faces": [[0, 1, 2], [0, 2, 1], [1, 2, 0]]}}},
  "modifiers": [
   {"class": "skin", "bones": [0, 1], "weights": [
     [[0, 1]], [[0, 0.5], [1, 0.5]], [[1, 0.97], [0, 0.03]], [[1, 1]]]},
   {"class": "morpher", "channels": [{"name": "Wide", "points": [[0, 0, 0], [2.5, 0, 0]]}]}]},
 {"name": "Physique",
  "object": {"class": "mesh", "vertices": [[0, 0, 0], [1, 0, 0], [0, 1, 0]], "faces": [[0, 1, 2]]},
  "modifiers": [{"class": "physique", "vertices": [
    {"rigid": 0}, {"blended": [[0, 0.5], [1, 0.5]]}, {"blended": [[6, 1]]}]}]},
 {"name": "Late bone", "transform": {"position": {"class": "positionXYZ",
   "z": {"class": "bezierFloat", "id": "last"}}}}]})";

const std::string kOutOfMemory = "*** Out of memory: the export is given up ***";

std::string SweepSettings(bool sampled) {
    support::Bytes bytes;
    for (const int option : {1, 1, 1, 1, 1, 1, 0, 0}) {
        bytes.U8(static_cast<unsigned char>(option));
    }
    bytes.F32({0.075f}).U32(4).U8(1).U8(sampled ? 1 : 0).U8(0).U8(0).U32(1);
    return bytes.Str();
}

// The calls of 3ds Max that throw something else than std::bad_alloc.
struct Throwing {
    bool update = false, end = false;
};

// Counts what the plug-in shows, without memory.
class Progress : public maxhost::ProgressObserver {
  public:
    explicit Progress(const Throwing& throwing) : throwing_(throwing) {
        maxhost::Host::Instance().SetProgressObserver(this);
    }
    ~Progress() override { maxhost::Host::Instance().SetProgressObserver(nullptr); }
    void OnStart(const std::string&) override { ++starts; }
    void OnUpdate(int) override {
        if (throwing_.update) {
            throw std::runtime_error("update");
        }
    }
    void OnEnd() override {
        ++ends;
        if (throwing_.end) {
            throw std::runtime_error("end");
        }
    }

    int starts = 0, ends = 0;

  private:
    const Throwing throwing_;
};

// Presses the default button.
struct PressingUser : win32::User {
    explicit PressingUser(int id) : button(id), former(win32::SetUser(this)) {}
    ~PressingUser() override { win32::SetUser(former); }
    void OnDialog(win32::Dialog& dialog) override { dialog.Click(button); }
    void OnMessageBox(const std::string&, const std::string&, unsigned) override {}

    const int button;
    win32::User* const former;
};

std::vector<int> CallsOfConverter(const fs::path& converter) {
    void* const handle = dlopen(converter.c_str(), RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr) {
        return {};
    }
    const int* const counts = static_cast<const int*>(dlsym(handle, "converterCalls"));
    std::vector<int> calls(counts, counts + 4);
    dlclose(handle);
    return calls;
}

void ForgetCalls(const fs::path& converter) {
    if (void* const handle = dlopen(converter.c_str(), RTLD_NOW | RTLD_NOLOAD)) {
        std::fill_n(static_cast<int*>(dlsym(handle, "converterCalls")), 4, 0);
        dlclose(handle);
    }
}

long NumOpenFiles() {
    const fs::directory_iterator files("/proc/self/fd");
    return std::distance(begin(files), end(files));
}

struct Outcome {
    std::optional<int> result;  // none: Create gave null
    std::optional<std::string> actor, motion, log;
    std::vector<int> converterCalls;
    int progressStarts = 0, progressEnds = 0;
    long openFiles = 0;  // more than before the export
    long allocations = 0;
};

// The copy of the plug-in whose storage can fail, loaded as 3ds Max loads it.
class SweptPlugIn {
  public:
    SweptPlugIn() {
        maxhost::Host::Instance().SetPlugInDirs({fs::path(SWEPT_CONVERTER).parent_path().string()});
        module_ = LoadLibraryA(SWEPT_PLUGIN);
        if (module_ == nullptr) {
            throw std::runtime_error("the plug-in does not load");
        }
    }
    ~SweptPlugIn() { FreeLibrary(module_); }
    SweptPlugIn(const SweptPlugIn&) = delete;
    SweptPlugIn& operator=(const SweptPlugIn&) = delete;

    ClassDesc* Description() const {
        return win32::ModuleFunction<ClassDesc* (*)(int)>(module_, "LibClassDesc")(0);
    }
    HMODULE Module() const { return module_; }

  private:
    HMODULE module_;
};

class AllocationSweep : public testing::Test {
  protected:
    void Open(bool sampled, bool selected) {
        fs::create_directory("out");
        fs::create_directory("config");
        settings_ = SweepSettings(sampled);
        selected_ = selected;
        maxhost::Host& host = maxhost::Host::Instance();
        host.SetDir(APP_PLUGCFG_DIR, fs::absolute("config").string());
        host.OpenScene(maxhost::scene_file::ReadSceneDescriptionFromText(kScene));
        host.Select(host.Nodes());
    }
    void TearDown() override { maxhost::Host::Instance().CloseScene(); }

    Outcome Run(const Choice& choice) {
        for (const char* name : {"out/a.hdotemp1", "out/a.hdotemp2", "KTAExporter.log"}) {
            fs::remove(name);
        }
        support::WriteFile("config/KTAExp2.cfg", settings_);
        const fs::path exportFile = fs::absolute("out/a.hdo");
        const std::string name = exportFile.string();
        const SweptPlugIn plugIn;
        ForgetCalls(SWEPT_CONVERTER);
        const long openFiles = NumOpenFiles();
        const auto loans = maxhost::CountLoans();
        Outcome outcome;
        SceneExport* exporter = nullptr;
        {
            Progress progress(throwing_);
            PressingUser user(button_);
            const FailingWindow window(choice);
            exporter = static_cast<SceneExport*>(plugIn.Description()->Create(FALSE));
            if (exporter != nullptr) {
                outcome.result = exporter->DoExport(name.c_str(), nullptr,
                                                    maxhost::Host::Instance().GetInterface(), FALSE,
                                                    selected_ ? SCENE_EXPORT_SELECTED : 0);
            }
            outcome.progressStarts = progress.starts;
            outcome.progressEnds = progress.ends;
            outcome.allocations = allocations.count;
        }
        outcome.openFiles = NumOpenFiles() - openFiles;
        EXPECT_EQ(maxhost::CountLoans().outstanding, loans.outstanding);
        EXPECT_EQ(maxhost::CountLoans().wrongReleases, loans.wrongReleases);
        outcome.log = Contents("KTAExporter.log");
        outcome.actor = Contents("out/a.hdotemp1");
        outcome.motion = Contents("out/a.hdotemp2");
        outcome.converterCalls = CallsOfConverter(SWEPT_CONVERTER);
        delete exporter;
        return outcome;
    }

    static std::optional<std::string> Contents(const fs::path& path) {
        return fs::exists(path) ? std::optional(support::ReadFile(path)) : std::nullopt;
    }

    const support::WorkDirectory directory_;
    std::string settings_;
    bool selected_ = false;
    int button_ = 3;  // that the user presses in the options dialog
    Throwing throwing_;
};

// The log of an export that memory ended: some of the lines of a whole one, then the line.
bool IsGivenUpLog(const std::string& log, const std::string& whole) {
    const std::string line = kOutOfMemory + "\n";
    const std::size_t before = log.size() - std::min(log.size(), line.size());
    return log.compare(before, std::string::npos, line) == 0 &&
           whole.compare(0, before, log, 0, before) == 0 &&
           (before == 0 || log[before - 1] == '\n');
}

void ExpectAsEver(const Outcome& outcome, const Outcome& whole) {
    EXPECT_EQ(outcome.log, whole.log);
    EXPECT_EQ(outcome.actor, whole.actor);
    EXPECT_EQ(outcome.motion, whole.motion);
    EXPECT_EQ(outcome.converterCalls, (std::vector{1, 1, 2, 1}));
    EXPECT_EQ(outcome.progressStarts, 2);
    EXPECT_EQ(outcome.openFiles, 0);
}

std::set<std::uint32_t> Kinds(const std::string& file) {
    std::set<std::uint32_t> kinds;
    for (const support::Chunk& chunk : support::Chunks(file)) {
        kinds.insert(chunk.id);
    }
    return kinds;
}

struct Sweep {
    long allocations = 0;
    long asEver = 0, givenUp = 0, notCreated = 0, withoutLog = 0;
};

class ExportSweep : public AllocationSweep,
                    public testing::WithParamInterface<std::tuple<bool, bool>> {
  protected:
    // Lets one allocation in four fail, or each, and looks at what comes of it.
    Sweep SweepAll(const Outcome& whole, bool andLater) {
        Sweep sweep;
        sweep.allocations = whole.allocations;
        const long stride = static_cast<long>(support::SweepStride(4));
        for (long failing = 0; failing < whole.allocations && !HasFailure(); failing += stride) {
            SCOPED_TRACE("allocation " + std::to_string(failing));
            Look(Run({failing, andLater}), whole, sweep);
        }
        return sweep;
    }

  private:
    void Look(const Outcome& outcome, const Outcome& whole, Sweep& sweep) {
        EXPECT_EQ(outcome.progressEnds, outcome.progressStarts);
        for (const auto& entry : fs::directory_iterator(".")) {
            const std::string name = entry.path().filename().string();
            EXPECT_TRUE(name == "out" || name == "config" || name == "KTAExporter.log") << name;
        }
        if (!outcome.result) {
            ++sweep.notCreated;
            EXPECT_EQ(outcome.log, std::nullopt);
            return;
        }
        if (*outcome.result == IMPEXP_SUCCESS) {
            ++sweep.asEver;
            ExpectAsEver(outcome, whole);
            return;
        }
        EXPECT_EQ(*outcome.result, IMPEXP_FAIL);
        EXPECT_EQ(outcome.converterCalls[3], 0);
        if (outcome.log.value_or("").empty()) {
            // The log itself could not be made. Once it can, it always has its line.
            ++sweep.withoutLog;
            EXPECT_EQ(sweep.givenUp, 0);
            EXPECT_EQ(outcome.actor, std::nullopt);
            return;
        }
        ++sweep.givenUp;
        EXPECT_TRUE(IsGivenUpLog(*outcome.log, *whole.log)) << *outcome.log;
        EXPECT_EQ(outcome.openFiles, 0);
    }
};

TEST_P(ExportSweep, EndsAsEverOrWithItsLine) {
    const auto [sampled, andLater] = GetParam();
    Open(sampled, !sampled);
    Run({-1, false});  // makes what the host keeps from one export to the next
    const Outcome whole = Run({-1, false});
    ASSERT_EQ(whole.result, IMPEXP_SUCCESS);
    ExpectAsEver(whole, whole);
    const auto begin = std::chrono::steady_clock::now();
    const Sweep sweep = SweepAll(whole, andLater);
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - begin;
    std::printf("%ld allocations, %ld exports as ever, %ld given up, %ld not begun: %.1f s\n",
                sweep.allocations, sweep.asEver, sweep.givenUp, sweep.notCreated + sweep.withoutLog,
                time.count());
    EXPECT_GT(sweep.givenUp, 50);
    EXPECT_GT(sweep.notCreated, 0);
    EXPECT_LT(sweep.withoutLog, 20);
}

INSTANTIATE_TEST_SUITE_P(Sampled, ExportSweep, testing::Combine(testing::Bool(), testing::Bool()));

TEST_F(AllocationSweep, TheNextExportIsAsEver) {
    Open(true, false);
    const SweptPlugIn staysLoaded;
    Run({-1, false});
    const Outcome whole = Run({-1, false});
    int givenUp = 0;
    for (long failing = 0; failing < whole.allocations; failing += 17) {
        SCOPED_TRACE("allocation " + std::to_string(failing));
        givenUp += Run({failing, true}).result == IMPEXP_FAIL;
        const Outcome next = Run({-1, false});
        EXPECT_EQ(next.result, IMPEXP_SUCCESS);
        ExpectAsEver(next, whole);
    }
    EXPECT_GT(givenUp, 10);
}

TEST_F(AllocationSweep, AnyExceptionEndsTheExport) {
    Open(true, false);
    Run({-1, false});
    const Outcome whole = Run({-1, false});
    for (const bool end : {false, true}) {
        throwing_ = {true, end};
        const Outcome outcome = Run({-1, false});
        EXPECT_EQ(outcome.result, IMPEXP_FAIL);
        const std::string line = "*** Unexpected exception: the export is given up ***\n";
        const std::string log = outcome.log.value();
        ASSERT_GT(log.size(), line.size());
        EXPECT_EQ(log.substr(log.size() - line.size()), line);
        EXPECT_EQ(outcome.progressEnds, 1);
        EXPECT_EQ(outcome.openFiles, 0);
    }
    // An exception at the end of the progress bar alone costs nothing.
    throwing_ = {false, true};
    const Outcome outcome = Run({-1, false});
    EXPECT_EQ(outcome.result, IMPEXP_SUCCESS);
    ExpectAsEver(outcome, whole);
}

TEST_F(AllocationSweep, TheSceneHoldsEveryKindOfChunk) {
    Open(true, false);
    const Outcome whole = Run({-1, false});
    ASSERT_TRUE(whole.actor && whole.motion);
    EXPECT_EQ(Kinds(*whole.actor), (std::set<std::uint32_t>{0, 3, 4, 6, 7, 8, 10, 14, 15}));
    EXPECT_EQ(Kinds(*whole.motion), (std::set<std::uint32_t>{1, 2}));
}

// ---------------------------------------------------------------- what else 3ds Max calls

// Calls `call` with each of its allocations failing, alone and with all that follow; nothing but
// its answers may leave it. `accept` sees each answer, and the one without a failure first.
template <class Call, class Accept>
void SweepCalls(Call call, Accept accept) {
    long count = 0;
    {
        const FailingWindow window({-1, false});
        const auto answer = call();
        count = allocations.count;
        allocations.active = false;
        accept(answer, false);
    }
    for (long failing = 0; failing < count; ++failing) {
        for (const bool andLater : {false, true}) {
            SCOPED_TRACE("allocation " + std::to_string(failing));
            const FailingWindow window({failing, andLater});
            const auto answer = call();
            allocations.active = false;
            accept(answer, true);
        }
    }
}

// Not by LoadLibraryA, whose own allocations are not the plug-in's.
BOOL CallEntryPoint() {
    const bool active = std::exchange(allocations.active, false);
    void* const module = dlopen(SWEPT_PLUGIN, RTLD_NOW | RTLD_LOCAL);
    const auto entry =
        reinterpret_cast<BOOL (*)(HINSTANCE, DWORD, LPVOID)>(dlsym(module, "DllMain"));
    allocations.active = active;
    const BOOL answer = entry(nullptr, DLL_PROCESS_ATTACH, nullptr);
    allocations.active = false;
    dlclose(module);
    return answer;
}

TEST_F(AllocationSweep, TheEntryPointRefusesToLoad) {
    maxhost::Host::Instance().SetPlugInDirs({fs::path(SWEPT_CONVERTER).parent_path().string()});
    int refused = 0;
    SweepCalls(CallEntryPoint, [&](BOOL answer, bool failed) {
        EXPECT_TRUE(failed || answer == TRUE);
        refused += answer == FALSE;
    });
    EXPECT_GT(refused, 0);
}

TEST_F(AllocationSweep, AnswersAreTextsOrNull) {
    const SweptPlugIn plugIn;
    ClassDesc* const description = plugIn.Description();
    const std::unique_ptr<SceneExport> exporter(
        static_cast<SceneExport*>(description->Create(FALSE)));
    const auto describe =
        win32::ModuleFunction<const MCHAR* (*)()>(plugIn.Module(), "LibDescription");
    const std::function<const MCHAR*()> calls[] = {
        describe,
        [&] { return description->ClassName(); },
        [&] { return description->Category(); },
        [&] { return exporter->Ext(0); },
        [&] { return exporter->LongDesc(); },
        [&] { return exporter->ShortDesc(); },
        [&] { return exporter->AuthorName(); },
        [&] { return exporter->CopyrightMessage(); },
        [&] { return exporter->OtherMessage1(); },
        [&] { return exporter->OtherMessage2(); },
    };
    for (const auto& call : calls) {
        const std::string expected = call();
        SweepCalls(call, [&](const MCHAR* answer, bool failed) {
            EXPECT_TRUE(answer == nullptr ? failed : answer == expected);
        });
    }
}

TEST_F(AllocationSweep, TheAboutBoxOpensOrDoesNot) {
    const SweptPlugIn plugIn;
    const std::unique_ptr<SceneExport> exporter(
        static_cast<SceneExport*>(plugIn.Description()->Create(FALSE)));
    const PressingUser user(1);
    exporter->ShowAbout(nullptr);
    int calls = 0;
    SweepCalls(
        [&] {
            exporter->ShowAbout(nullptr);
            return 0;
        },
        [&](int, bool) { ++calls; });
    EXPECT_GT(calls, 1);
}

TEST_F(AllocationSweep, ADialogThatCannotGoOnIsNoCancel) {
    Open(false, false);
    Run({-1, false});
    button_ = 2;
    const Outcome whole = Run({-1, false});
    ASSERT_EQ(whole.result, IMPEXP_SUCCESS);
    EXPECT_EQ(whole.log, "");
    int givenUp = 0;
    for (long failing = 0; failing < whole.allocations; ++failing) {
        SCOPED_TRACE("allocation " + std::to_string(failing));
        const Outcome outcome = Run({failing, false});
        if (outcome.result && !outcome.log.value_or("").empty()) {
            EXPECT_EQ(*outcome.result, IMPEXP_FAIL);
            EXPECT_EQ(*outcome.log, kOutOfMemory + "\n");
            ++givenUp;
        }
    }
    EXPECT_GT(givenUp, 10);
}

}  // namespace
