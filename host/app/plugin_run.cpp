#include "host/app/plugin_run.h"

#include <impexp.h>
#include <max.h>
#include <maxapi.h>

#include <functional>
#include <optional>
#include <string>
#include <system_error>

#include "host/app/audit.h"
#include "host/app/exit_status.h"
#include "host/app/places.h"
#include "host/sdk/host.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

// The current directory while the object lives.
class WorkingDirectory {
  public:
    explicit WorkingDirectory(const fs::path& directory) : former_(fs::current_path()) {
        fs::current_path(directory);
    }
    ~WorkingDirectory() {
        std::error_code ignored;
        fs::current_path(former_, ignored);
    }

    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

  private:
    fs::path former_;
};

// ---------------------------------------------------------------- the debugger's texts

// Gives what the plug-in writes for a debugger, which are the log's lines, to a function while the
// object lives; there is one at a time.
class DebugTexts {
  public:
    using Take = void (*)(const char* text, void* context);

#ifdef _WIN32
    // A text for the debugger is an exception that nobody needs to handle.
    DebugTexts(Take take, void* context) : handler_(AddVectoredExceptionHandler(1, OnException)) {
        take_ = take;
        context_ = context;
    }
    ~DebugTexts() {
        RemoveVectoredExceptionHandler(handler_);
        take_ = nullptr;
    }
#else
    DebugTexts(Take take, void* context) {
        win32::SetDebugSink(take, context);
    }
    ~DebugTexts() {
        win32::SetDebugSink(nullptr, nullptr);
    }
#endif

    DebugTexts(const DebugTexts&) = delete;
    DebugTexts& operator=(const DebugTexts&) = delete;

#ifdef _WIN32
  private:
    static LONG CALLBACK OnException(EXCEPTION_POINTERS* exception) {
        constexpr DWORD kText = 0x40010006;  // DBG_PRINTEXCEPTION_C: its length, and where it is
        const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
        if (record.ExceptionCode == kText && record.NumberParameters >= 2 && take_ != nullptr) {
            take_(reinterpret_cast<const char*>(record.ExceptionInformation[1]), context_);
        }
        return EXCEPTION_CONTINUE_SEARCH;
    }

    static inline Take take_ = nullptr;
    static inline void* context_ = nullptr;
    void* handler_;
#endif
};

// ---------------------------------------------------------------- the run

// Tells when the exporter begins its second file, and passes all on to the bar.
class PassObserver : public ProgressObserver {
  public:
    // `bar` may be null.
    PassObserver(ProgressObserver* bar, const std::function<void()>& onSecondFile)
        : bar_(bar), onSecondFile_(onSecondFile) {}

    void OnStart(const std::string& title) override {
        if (++files_ == 2) {
            onSecondFile_();
        }
        if (bar_) {
            bar_->OnStart(title);
        }
    }
    void OnUpdate(int percent) override {
        if (bar_) {
            bar_->OnUpdate(percent);
        }
    }
    void OnWork(double share) override {
        if (bar_) {
            bar_->OnWork(share);
        }
    }
    void OnEnd() override {
        if (bar_) {
            bar_->OnEnd();
        }
    }

  private:
    ProgressObserver* bar_;
    const std::function<void()>& onSecondFile_;
    int files_ = 0;
};

// The user, the progress bar and the debugger, in place while one export runs.
class RunningExport {
  public:
    RunningExport(const Options& options, DialogUser& user, ProgressObserver& observer,
                  Console& console, StageTimes& times)
        : console_(CopiesTexts(options) ? &console : nullptr), times_(times) {
        Host& host = Host::Instance();
        host.SetProgressObserver(&observer);
        host.CancelAtUpdate(options.cancelAfter);
        if (!options.showDialog) {
            win32::SetUser(&user);
        }
        if (console_ || IsAudited(options)) {
            texts_.emplace(TakeText, this);
        }
    }
    ~RunningExport() {
        Host::Instance().SetProgressObserver(nullptr);
        win32::SetUser(nullptr);
        texts_.reset();
        times_.Stop();
    }

    RunningExport(const RunningExport&) = delete;
    RunningExport& operator=(const RunningExport&) = delete;

  private:
    // Windows itself has a debugger for them.
    static bool CopiesTexts([[maybe_unused]] const Options& options) {
#ifdef _WIN32
        return false;
#else
        return options.verbose;
#endif
    }
    static void TakeText(const char* text, void* context) {
        auto& running = *static_cast<RunningExport*>(context);
        running.times_.OnText(text);
        if (running.console_) {
            running.console_->Copy(text);
        }
    }

    Console* console_;  // null: it gets no copy
    StageTimes& times_;
    std::optional<DebugTexts> texts_;
};

}  // namespace

int RunPlugIn(const PlugInRun& run, const Options& options, const ExportFiles& files,
              DialogUser& user, Console& console, StageTimes& times, RunReport& report) {
    Host& host = Host::Instance();
    host.SetDir(APP_PLUGCFG_DIR, run.configDirectory.string());
    ExportProgress bar(console);
    PassObserver observer(run.showsProgress ? &bar : nullptr, run.onSecondFile);
    const RunningExport running(options, user, observer, console, times);
    const WorkingDirectory directory(files.WorkingDirectory());
    const CallCounts before = CountedCalls();
    const Stopwatch watch;
    const int result = run.exporter->DoExport(files.PrivateName().c_str(), nullptr,
                                              host.GetInterface(), FALSE, run.exportOptions);
    report.exportingSeconds = watch.Seconds();
    report.calls = CallsSince(before);
    const bool isCompared = IsAudited(options) || report.dryRun != nullptr;
    if (!isCompared) {
        host.ReleaseMeshes();
    }
    return result;
}

// ---------------------------------------------------------------- before it and afterwards

DWORD ExportOptionsFor(const Options& options, SceneExport& exporter, const fs::path& plugIn) {
    if (!options.selectedOnly) {
        return 0;
    }
    if (!exporter.SupportsOptions(0, SCENE_EXPORT_SELECTED)) {
        throw Failure(kExitRefused, "--selected", plugIn.string() + " does not export selections");
    }
    return SCENE_EXPORT_SELECTED;
}

std::vector<NodeToExport> NodesToExport(const Options& options, const ExportOptions& inForce) {
    const Class_ID footprint(0x3011, 0);
    const bool isCancelled = Host::Instance().GetInterface()->GetCancel() != FALSE;
    std::vector<NodeToExport> nodes;
    for (INode* const node : Host::Instance().Nodes()) {
        Control* const transform = node->GetTMController();
        const bool isFootprint = transform != nullptr && transform->ClassID() == footprint;
        const bool isHidden = node->IsHidden(0, FALSE) && !inForce.exportHidden;
        using enum scene::LossCode;
        const scene::LossKind* const whyNot = options.selectedOnly && !node->Selected()
                                                  ? &scene::KindOf(nodeNotSelected)
                                              : isFootprint ? &scene::KindOf(nodeFootprint)
                                              : isHidden    ? &scene::KindOf(nodeHidden)
                                              : isCancelled ? &scene::KindOf(nodeCancelled)
                                                            : nullptr;
        nodes.push_back({node->GetName(), whyNot});
    }
    return nodes;
}

}  // namespace maxhost::app
