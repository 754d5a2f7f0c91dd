#include "kta/preview/overlay_page.h"

#include <sstream>

#include "kta/dump.h"
#include "kta/preview/page.h"

namespace kta {
namespace {

// Collision meshes are compared like others.
std::string GlbText(const File& actor, std::vector<std::string>& warnings) {
    GlbOptions options;
    options.withCollision = true;
    options.withNumbers = true;
    return Base64(EncodeGlb(actor, nullptr, options, warnings));
}

// JSON that no text of which ends the script that it stands in.
std::string DiffText(const Diff& diff, const DiffReport& report) {
    std::ostringstream out;
    WriteDiffJson(diff, kFileKindActor, report, out);
    std::string text;
    for (const char c : out.str()) {
        c == '<' ? text += "\\u003c" : text += c;
    }
    return text;
}

}  // namespace

std::string EncodeOverlayPage(const File& a, const File& b, const Diff& diff,
                              const DiffReport& report, std::vector<std::string>& warnings) {
    const std::string title = ToUtf8(report.nameA) + " and " + ToUtf8(report.nameB);
    return FilledPage("overlay.html", {{"title", EscapedForPage(title)},
                                       {"diff", DiffText(diff, report)},
                                       {"first", GlbText(a, warnings)},
                                       {"second", GlbText(b, warnings)}});
}

}  // namespace kta
