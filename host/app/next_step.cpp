#include "host/app/next_step.h"

#include <map>
#include <string_view>

#include "host/app/exit_status.h"

namespace maxhost::app {
namespace {

// The remedy of the kind that most warnings and left out nodes have; of several the first in the
// table. Kinds that nothing needs to be done about do not count.
std::string RemedyOf(const RunReport& report, const std::vector<Notice>& notices) {
    std::map<scene::LossCode, std::size_t> counts;
    for (const Notice& notice : notices) {
        if (notice.warning != nullptr) {
            ++counts[notice.warning->value];
        }
    }
    for (const scene::LossKind* kind : report.leftOut) {
        ++counts[kind->value];
    }
    const scene::LossKind* most = nullptr;
    for (const auto& [code, count] : counts) {
        const scene::LossKind& kind = scene::KindOf(code);
        if (!std::string_view(kind.remedy).starts_with("Nothing") &&
            (most == nullptr || count > counts.at(most->value))) {
            most = &kind;
        }
    }
    return most != nullptr ? most->remedy : std::string();
}

// What a loss is worth a look at. `receipt` asks for a list of all.
std::string AfterLosses(const Options& options, const RunReport& report,
                        const std::vector<Notice>& notices) {
    const std::string remedy = RemedyOf(report, notices);
    const bool hasBooks = options.receipt || options.report || options.dryRun;
    return remedy.empty() || hasBooks ? remedy : remedy + " --report FILE shows every loss.";
}

}  // namespace

std::string NextStep(const Options* options, int status, const RunReport& report,
                     const std::vector<Notice>& notices) {
    if (options == nullptr) {
        return status == kExitRefused ? "hdo-export --help explains all options" : "";
    }
    if (options->about || options->bisect || options->list) {
        return {};
    }
    const bool isChecked = !report.issues.empty();
    switch (status) {
        case kExitDone:
            return AfterLosses(*options, report, notices);
        case kExitExportFailed:
            return report.hasExported
                       ? "--bisect finds the smallest scene that fails in the same way"
                       : "";
        case kExitNoPlugIn:
            return "--plugin FILE names the plug-in, --plugin-dir DIR where its converter stands";
        case kExitFaultyOutput:
            if (report.isObjected) {
                return options->report ? "" : "--report FILE shows what deviates and what is lost";
            }
            return isChecked ? "--bisect finds the smallest scene that fails in the same way; "
                               "docs/kta-check.md explains the codes"
                             : RemedyOf(report, notices);
        default:
            return {};
    }
}

}  // namespace maxhost::app
