#include "host/app/export_run.h"

#include <impexp.h>
#include <max.h>
#include <maxapi.h>

#include <chrono>
#include <fstream>
#include <optional>
#include <system_error>

#include "host/app/audit.h"
#include "host/app/dialog_user.h"
#include "host/app/dry_run.h"
#include "host/app/exit_status.h"
#include "host/app/export_files.h"
#include "host/app/places.h"
#include "host/app/plugin_loader.h"
#include "host/app/plugin_run.h"
#include "host/app/presets.h"
#include "host/app/scene_report.h"
#include "host/app/summary.h"
#include "host/sdk/host.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

void MakeConfigDirectory(const fs::path& directory, Console& console) {
    std::error_code error;
    fs::create_directories(directory, error);
    if (error) {
        console.Warn(scene::LossCode::settingsNotKept, directory.string(),
                     "cannot be made, so that settings are not kept: " + error.message());
    }
}

// What MakeConfigDirectory would warn of.
void CheckConfigDirectory(const fs::path& directory, Console& console) {
    std::error_code ignored;
    if (fs::exists(directory, ignored)) {
        return;
    }
    if (const std::error_code reason = WhyNotMade(directory)) {
        console.Warn(scene::LossCode::settingsNotKept, directory.string(),
                     "cannot be made, so that settings are not kept: " + reason.message());
    }
}

// The least where there is no file.
fs::file_time_type TimeOf(const fs::path& file) {
    std::error_code ignored;
    return fs::last_write_time(file, ignored);
}

// For a dry run: the exporter reads and saves a copy. It is made old, so that it shows whether it
// was saved. Its time.
fs::file_time_type CopySettings(const fs::path& from, const fs::path& to) {
    const fs::path copy = SettingsFile(to);
    std::error_code ignored;
    fs::copy_file(SettingsFile(from), copy, ignored);
    fs::last_write_time(copy, fs::file_time_type::clock::now() - std::chrono::hours(1), ignored);
    return TimeOf(copy);
}

// Where the exporter was to save its settings in earnest.
bool CanSave(const fs::path& directory) {
    std::error_code ignored;
    return !fs::exists(directory, ignored) ||
           (!WhyNotWritable(directory) && !kta::IsWriteProtected(SettingsFile(directory)));
}

void CheckMaterials(const std::string& file, const scene::Scene& scene) {
    if (CountMaterials(scene) > kMostMaterials) {
        throw Failure(kExitRefused, file,
                      "more than " + std::to_string(kMostMaterials) +
                          " materials, each counted wherever it is referred to, expected at most "
                          "as many");
    }
}

// Hands the textures that stand in the scene's file to the export, and says what they replace.
void TakeTextures(const Options& options, std::vector<import::EmbeddedTexture> textures,
                  ExportFiles& files, Console& console) {
    std::vector<fs::path> others;
    for (const std::optional<std::string>* const file :
         {&options.receipt, &options.report, &options.saveScene}) {
        if (*file) {
            others.push_back(Absolute(**file));
        }
    }
    files.AddTextures(TexturesOf(options, std::move(textures)));
    if (const std::string reason = files.TextureObstacle(others); !reason.empty()) {
        throw Failure(kExitRefused, SceneName(options.scene), reason);
    }
    for (const fs::path& place : files.Textures().Replaced()) {
        const scene::LossCode code = scene::LossCode::textureReplaced;
        console.Warn(code, place.string(), scene::KindOf(code).text);
    }
}

// What of a preset the dialog has no control for is what its exporter starts from.
void WriteStartingSettings(const ExportOptions& preset, const fs::path& directory) {
    ExportOptions start = DefaultExportOptions();
    start.collisionMeshes = preset.collisionMeshes;
    start.meshes = preset.meshes;
    start.maxWeightsPerVertex = preset.maxWeightsPerVertex;
    if (HasUnshown(start)) {
        std::ofstream(SettingsFile(directory), std::ios::binary)
            .write(reinterpret_cast<const char*>(&start), sizeof(start));
    }
}

// One export, from the open scene to the files in their places.
class ExportRun {
  public:
    ExportRun(const Options& options, ExportFiles& files, Interrupts& interrupts, Console& console,
              AuditInput& audit, RunReport& report, bool showsProgress)
        : options_(options),
          files_(files),
          interrupts_(interrupts),
          console_(console),
          audit_(audit),
          report_(report),
          showsProgress_(showsProgress),
          user_(console, files.ExportFile().string(), options.choices, options.cancelDialog) {}

    // `run` has the directory of settings, or none for one that goes with the export.
    int Run(PlugInRun run, ExportOutcome outcome);

  private:
    std::vector<std::string> MakePreview();
    int Compare(const std::vector<std::string>& faults);
    std::optional<int> Prepare();
    void TakeLog();
    void TakeOutcome(const fs::path& settings);
    void Tell(int result);
    void ShowStage(const std::string& name);
    int StatusOf(int result);
    std::optional<int> EndedInDialog(int result);
    int ReportFailure();
    int Check();
    int Place(int status, bool isExport);
    Origin OriginOfTheRest() const;
    void Report(const std::string& text) { console_.Report(files_.ExportFile().string(), text); }

    const Options& options_;
    ExportFiles& files_;
    Interrupts& interrupts_;
    Console& console_;
    AuditInput& audit_;
    RunReport& report_;
    const bool showsProgress_;
    ExportOutcome outcome_;
    std::optional<Receipt> receipt_;
    DialogUser user_;
    bool readsAlone_ = false;  // not the converter too
};

// The status when that failed, which is reported.
std::optional<int> ExportRun::Prepare() {
    std::string reason = files_.Obstacle();
    if (reason.empty()) {
        try {
            files_.Prepare();
            return std::nullopt;
        } catch (const fs::filesystem_error& error) {
            const std::string place = error.path1().string();
            if (error.code() == std::errc::no_space_on_device) {
                console_.Report(place, error.code().message());
                return kExitFaultyOutput;
            }
            reason = "nothing can be made in " + place + " (" + error.code().message() + ")";
        }
    }
    Report("the export failed: " + reason);
    return kExitExportFailed;
}

int ExportRun::ReportFailure() {
    const std::vector<std::string> errors = files_.WriteErrors();
    for (const std::string& line : errors) {
        console_.Report(line);
    }
    if (!errors.empty()) {
        return kExitFaultyOutput;
    }
    Report("the export failed: " +
           (user_.MessageBoxes() > 0 ? "the exporter says why above"
            : files_.LacksMemory()
                ? "it needs more memory than there is"
                : (options_.showDialog ? "if no message box said why, " : "") +
                      files_.FirstMissing().path.string() + " cannot be written"));
    return kExitExportFailed;
}

// The status where the dialog, or its lack, left nothing to conclude; `result` is DoExport's.
std::optional<int> ExportRun::EndedInDialog(int result) {
    if (result == IMPEXP_FAIL) {
        return std::nullopt;
    }
    if (user_.LacksDialog()) {
        Report(
            "the exporter showed no options dialog; what it did, it did without the choices "
            "asked for");
        return kExitRefused;
    }
    if (user_.WasRefused()) {  // the dialog's user has said what
        return kExitRefused;
    }
    const bool personCancelled = options_.showDialog && !files_.AnyWritten();
    if (user_.HasCancelled() || personCancelled || result == IMPEXP_CANCEL) {
        Report("cancelled in the options dialog; no export was written");
        return kExitDone;
    }
    return std::nullopt;
}

// In the bar's place, of what the plug-in does not do.
void ExportRun::ShowStage(const std::string& name) {
    if (showsProgress_) {
        console_.ShowBar(name);
    }
}

// Whether what was written is whole and sound.
int ExportRun::Check() {
    const Stopwatch watch;
    ShowStage("Checking what was written");
    files_.Verify();
    std::vector<std::string> faults = files_.WriteErrors();
    const bool isDiskFull = !faults.empty();
    if (faults.empty()) {
        std::vector<std::string> converterFaults = ConverterFaults(PlugInDirectories(options_));
        for (std::string& line : converterFaults) {
            line = files_.InUsersWords(std::move(line));
        }
        faults = FaultReport(files_.Files(), converterFaults);
    }
    if (faults.empty()) {
        report_.issues = files_.Check();
        faults = ErrorLines(files_.Files(), report_.issues);
    }
    if (faults.empty() && readsAlone_) {
        faults = MakePreview();
    }
    for (const std::string& line : faults) {
        console_.Report(line);
    }
    if (!faults.empty() && readsAlone_) {
        files_.DropConverted();
    }
    report_.checkingSeconds = watch.Seconds();
    const bool tellsLosses = report_.dryRun != nullptr && faults.empty();
    if ((IsAudited(options_) || tellsLosses) && !isDiskFull) {
        return Compare(faults);
    }
    return faults.empty() ? kExitDone : kExitFaultyOutput;
}

// In the place of the stand-in converter, which makes it where it reads the files. Why it cannot be
// written; where it would be too large there is none, and the export is none the worse.
std::vector<std::string> ExportRun::MakePreview() {
    const fs::path place = files_.Preview();
    try {
        outcome_.previewProblems = files_.MakePreview();
        outcome_.preview = place;
    } catch (const std::system_error& error) {
        return {place.string() + ": cannot be written (" + error.code().message() + ")"};
    } catch (const std::length_error& error) {
        console_.Report(place.string(), std::string("left out: ") + error.what());
    }
    return {};
}

// With the scene; the status that the receipt says. Faults, which are told already, stand in it.
int ExportRun::Compare(const std::vector<std::string>& faults) {
    ShowStage("Comparing it with the scene");
    report_.origins = OriginsOf(options_, outcome_.inForce, OriginOfTheRest());
    receipt_ = Audit(options_, files_, faults, outcome_.nodes, outcome_.inForce, audit_, report_);
    if (report_.dryRun) {
        report_.dryRun->SetLosses(receipt_->losses);
    }
    if (!IsAudited(options_)) {
        return kExitDone;
    }
    if (faults.empty()) {
        for (const std::string& line : Objections(*receipt_)) {
            Report(line);
        }
        report_.isObjected = receipt_->status != kExitDone;
    }
    return receipt_->status;
}

// Where those of the exporter's options come from that were not given.
Origin ExportRun::OriginOfTheRest() const {
    return options_.showDialog         ? Origin::dialog
           : ConfigDirectory(options_) ? Origin::savedSettings
                                       : Origin::byDefault;
}

// How an export ended that no dialog did; `result` is DoExport's.
int ExportRun::StatusOf(int result) {
    int status = kExitDone;
    if (result == IMPEXP_FAIL && interrupts_.Status() == 0) {
        status = ReportFailure();
    } else if (result != IMPEXP_FAIL) {
        status = Check();
    }
    // The last look: what is put in place from here on is not taken back.
    if (interrupts_.Status() != 0) {
        Report("interrupted");
        return interrupts_.Status();
    }
    if (result != IMPEXP_FAIL && Host::Instance().GetInterface()->GetCancel()) {
        Report("cancelled in the progress bar");
        return kExitCancelled;
    }
    return status;
}

// Puts in place what a run of that status is to leave, unless a dialog kept it from exporting, and
// says what it does not; the status after that.
int ExportRun::Place(int status, bool isExport) {
    const std::vector<std::string> parts =
        status == kExitExportFailed ? files_.Parts() : std::vector<std::string>();
    try {
        files_.WriteLog();
        const auto putInPlace = [&] {
            if (isExport && (status == kExitDone || options_.keepPartial)) {
                files_.PutInPlace();
            }
        };
        if (isExport && receipt_ && status == receipt_->status) {
            WriteReceipt(options_, *receipt_, report_.dryRun.get(), putInPlace);
        } else {
            putInPlace();
        }
    } catch (const fs::filesystem_error& error) {
        // Another program may have put a file in a texture's place since that was looked at.
        const std::string texture =
            error.code() == std::errc::file_exists ? files_.TextureObstacle({}) : std::string();
        console_.Report(texture.empty() ? error.path1().string() : SceneName(options_.scene),
                        texture.empty() ? error.code().message() : texture);
        const int failure = texture.empty() ? kExitFaultyOutput : kExitRefused;
        status = status == kExitDone ? failure : status;
    }
    if (files_.IsInPlace()) {
        for (const std::string& line : parts) {
            console_.Report(line);
        }
    } else if (files_.AnyWritten()) {
        Report("nothing was put in place (--keep-partial does so all the same)");
    }
    return status;
}

void ExportRun::TakeLog() {
    if (files_.HasLog()) {
        outcome_.log = files_.Log();
    } else {
        const scene::LossCode code = scene::LossCode::logMissing;
        console_.Warn(code, files_.Log().string(), scene::KindOf(code).text);
    }
}

// What is known once the exporter has ended, which had its settings there.
void ExportRun::TakeOutcome(const fs::path& settings) {
    outcome_.inForce = ReadSettings(settings);
    outcome_.options = OnCommandLine(outcome_.inForce);
    outcome_.nodes = NodesToExport(options_, outcome_.inForce);
    for (const import::EmbeddedTexture& texture : files_.Textures().Textures()) {
        outcome_.textures.push_back(files_.Textures().Place(texture));
    }
    TakeLog();
}

// What became of an export that no dialog ended; `result` is DoExport's.
void ExportRun::Tell(int result) {
    for (const NodeToExport* const node : NodesNotExported(files_.Files(), outcome_.nodes)) {
        report_.leftOut.push_back(&WhyNotExported(*node));
    }
    if (files_.IsInPlace() && result != IMPEXP_FAIL && !options_.quiet && !options_.json) {
        for (const std::string& line : Summarize(files_.Files(), outcome_)) {
            console_.Print(line, StyleOf(line));
        }
    }
    if (options_.json) {
        report_.origins = OriginsOf(options_, outcome_.inForce, OriginOfTheRest());
        report_.exported = ReportOf(files_, std::move(outcome_));
    }
}

int ExportRun::Run(PlugInRun run, ExportOutcome outcome) {
    // What Prepare() makes is to be gone after an interrupt too.
    interrupts_.PressCancel();
    if (const std::optional<int> status = Prepare()) {
        return *status;
    }
    outcome_ = std::move(outcome);
    DryRun* const dryRun = report_.dryRun.get();
    const fs::path savedSettings = run.configDirectory;
    if (savedSettings.empty() || dryRun != nullptr) {
        run.configDirectory = files_.SettingsDirectory();
    }
    if (savedSettings.empty() && options_.presetSettings) {
        WriteStartingSettings(*options_.presetSettings, run.configDirectory);
    }
    const bool isCopied = !savedSettings.empty() && dryRun != nullptr;
    const fs::file_time_type before =
        isCopied ? CopySettings(savedSettings, run.configDirectory) : fs::file_time_type::min();
    readsAlone_ = TakeReadingFromConverter(PlugInDirectories(options_));
    if (readsAlone_) {  // another converter may do with the files what it likes
        run.onSecondFile = [this] { files_.ReadAhead(); };
    }
    const int result = RunPlugIn(run, options_, files_, user_, console_, audit_.times, report_);
    report_.hasExported = true;
    if (isCopied && TimeOf(SettingsFile(run.configDirectory)) != before && CanSave(savedSettings)) {
        dryRun->Add(SettingsFile(savedSettings), SettingsFile(run.configDirectory));
    }
    TakeOutcome(run.configDirectory);
    if (const std::optional<int> status = EndedInDialog(result)) {
        return Place(*status, false);
    }
    const int status = Place(StatusOf(result), true);
    Tell(result);
    return status;
}

// What of the outcome is known before the export.
ExportOutcome OutcomeOfReading(const Options& options, const LoadedScene& loaded) {
    ExportOutcome outcome{.namesAll = options.verbose,
                          .warnings = loaded.warnings.size(),
                          .coloredMeshes = loaded.coloredMeshes,
                          .unit = loaded.unit,
                          .upAxis = loaded.upAxis};
    if (options.preset) {
        outcome.optionFiles.push_back("preset: " + *options.preset);
    }
    if (options.sidecarFile) {
        outcome.optionFiles.push_back("sidecar: " + *options.sidecarFile);
    }
    return outcome;
}

}  // namespace

int ExportScene(const Options& options, LoadedScene loaded, ExportFiles& files,
                Interrupts& interrupts, Console& console, RunReport& report, bool showsProgress) {
    CheckMaterials(SceneName(options.scene), loaded.scene);
    const std::optional<fs::path> configDirectory = ConfigDirectory(options);
    const fs::path plugIn = PlugInFile(options);
    const std::vector<std::string> plugInDirectories = PlugInDirectories(options);

    AuditInput audit;
    if (options.accept) {
        audit.accepted = AcceptedLosses(*options.accept);
    }
    audit.losses = std::move(loaded.losses);
    audit.unit = loaded.unit;

    Host& host = Host::Instance();
    host.SetPlugInDirs(plugInDirectories);
    const Exporter exporter = LoadExporter(plugIn, plugInDirectories);
    CheckConverter(plugInDirectories);
    const DWORD exportOptions = ExportOptionsFor(options, *exporter, plugIn);

    TakeTextures(options, std::move(loaded.textures), files, console);
    if (configDirectory) {
        (report.dryRun ? CheckConfigDirectory : MakeConfigDirectory)(*configDirectory, console);
        if (options.verbose) {
            console.Note(SettingsFile(*configDirectory).string(), "settings file");
        }
    }
    ExportOutcome outcome = OutcomeOfReading(options, loaded);
    host.OpenScene(std::move(loaded.scene));
    return ExportRun(options, files, interrupts, console, audit, report, showsProgress)
        .Run({exporter, exportOptions, configDirectory.value_or(fs::path()), showsProgress},
             std::move(outcome));
}

}  // namespace maxhost::app
