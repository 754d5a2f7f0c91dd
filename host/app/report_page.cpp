#include "host/app/report_page.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <string_view>
#include <utility>

#include "host/app/json_parts.h"
#include "kta/dump.h"
#include "kta/text.h"

namespace maxhost::app {
namespace {

constexpr std::size_t kMostRows = 100;
constexpr std::size_t kMostPlaces = 50;

constexpr const char* kStyle = R"(
:root{color-scheme:light dark;--ink:#1b1f24;--soft:#5d6672;--line:#d9dee4;--back:#fff;--card:#f5f7f9;
--bar:#7fa7d6;--good:#19723b;--bad:#b3261e}
@media(prefers-color-scheme:dark){:root{--ink:#e4e8ec;--soft:#9aa4b0;--line:#3a424c;--back:#15191e;
--card:#1e242b;--bar:#3c6597;--good:#6fcf97;--bad:#ff8a80}}
*{box-sizing:border-box}
body{margin:0 auto;max-width:60rem;padding:1rem;background:var(--back);color:var(--ink);
font:1rem/1.45 system-ui,sans-serif;overflow-wrap:anywhere}
h1{font-size:1.4rem;margin:.2rem 0}h2{font-size:1.1rem;margin:2rem 0 .5rem}
p{margin:.3rem 0}.soft{color:var(--soft)}.good{color:var(--good)}.bad{color:var(--bad)}
.facts{display:grid;grid-template-columns:repeat(auto-fit,minmax(9rem,1fr));gap:.6rem;margin:1rem 0}
.facts div{background:var(--card);border-radius:.5rem;padding:.6rem .8rem}
.facts b{display:block;font-size:1.25rem}
table{border-collapse:collapse;width:100%}
th,td{text-align:left;vertical-align:top;padding:.35rem .5rem;border-bottom:1px solid var(--line)}
th{color:var(--soft);font-weight:600}th{white-space:nowrap}
.bar{height:.4rem;border-radius:.2rem;background:var(--bar);margin-top:.2rem}
details{border:1px solid var(--line);border-radius:.5rem;margin:.5rem 0;padding:.5rem .8rem}
summary{cursor:pointer}details ul{margin:.5rem 0;padding-left:1.2rem}
code{font:.9em ui-monospace,monospace}
@media(max-width:36rem){thead{display:none}tr{display:block;padding:.4rem 0;
border-bottom:1px solid var(--line)}td{display:block;border:0;padding:.1rem 0}
td[data-name]::before{content:attr(data-name) ": ";color:var(--soft)}}
)";

std::string Html(std::string_view text) {
    std::string result;
    for (const char c : kta::OneLine(kta::ToUtf8(text))) {
        switch (c) {
            case '&':
                result += "&amp;";
                break;
            case '<':
                result += "&lt;";
                break;
            case '>':
                result += "&gt;";
                break;
            case '"':
                result += "&quot;";
                break;
            case '\'':
                result += "&#39;";
                break;
            default:
                result += c;
        }
    }
    return result;
}

// Three digits are enough for people, but no exponent where the digits are few.
std::string Short(double value) {
    std::array<char, 32> text{};
    const bool isWhole = std::abs(value) >= 999.5 && std::abs(value) < 1e9;
    std::snprintf(text.data(), text.size(), isWhole ? "%.0f" : "%.3g", value);
    return text.data();
}

std::string Code(const std::string& text) {
    return "<code>" + Html(text) + "</code>";
}

class Page {
  public:
    Page(const Receipt& receipt, bool withTimes) : receipt_(receipt), withTimes_(withTimes) {}

    std::string Make() {
        const std::string name = Html(receipt_.scene);
        html_ =
            "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
            "<title>Export receipt: " +
            name + "</title>\n<style>" + kStyle + "</style>\n</head>\n<body>\n";
        AddHead(name);
        AddDeviation();
        AddLosses();
        AddIssues();
        AddCosts();
        if (withTimes_) {
            AddTimes();
        }
        AddFiles();
        return html_ + "</body>\n</html>\n";
    }

  private:
    void AddHead(const std::string& name);
    void AddDeviation();
    enum class Unit { distance, degrees, coordinates };
    void AddWorst(const char* what, const std::string& compared, const NamedWorst& worst,
                  Unit unit);
    void AddLosses();
    void AddLoss(const scene::LossKind& kind, const std::vector<const LedgerEntry*>& losses);
    void AddIssues();
    void AddCosts();
    void AddTimes();
    void AddTimes(const char* what, const std::vector<SpentTime>& times);
    void AddFiles();

    void Head(const std::vector<const char*>& columns) {
        html_ += "<table><thead><tr>";
        for (const char* const column : columns) {
            html_ += std::string("<th>") + column + "</th>";
        }
        html_ += "</tr></thead><tbody>\n";
    }
    // Cells are HTML.
    void Row(const std::vector<std::pair<const char*, std::string>>& cells) {
        html_ += "<tr>";
        for (const auto& [column, cell] : cells) {
            html_ += std::string("<td data-name=\"") + column + "\">" + cell + "</td>";
        }
        html_ += "</tr>\n";
    }
    void EndTable(std::size_t rows) {
        html_ += "</tbody></table>\n";
        if (rows > kMostRows) {
            html_ += "<p class=\"soft\">and " + std::to_string(rows - kMostRows) +
                     " more, which the receipt lists</p>\n";
        }
    }
    static std::string Bar(double share) {
        return "<div class=\"bar\" style=\"width:" + Short(std::clamp(share * 100, 0.5, 100.0)) +
               "%\"></div>";
    }

    const Receipt& receipt_;
    const bool withTimes_;
    std::string html_;
};

void Page::AddHead(const std::string& name) {
    const std::vector<std::string> objections = Objections(receipt_);
    html_ += "<p class=\"soft\">Export receipt</p>\n<h1>" + name + "</h1>\n";
    html_ += receipt_.status == 0
                 ? "<p class=\"good\"><b>Exported</b></p>\n"
                 : "<p class=\"bad\"><b>Failed</b>, nothing was put in place</p>\n";
    for (const auto* const lines : {&receipt_.faults, &objections}) {
        for (const std::string& line : *lines) {
            html_ += "<p class=\"bad\">" + Html(line) + "</p>\n";
        }
    }
    std::uint64_t bytes = 0;
    for (const FileReport& file : receipt_.files) {
        bytes += file.bytes;
    }
    const auto fact = [this](const std::string& value, const std::string& what) {
        html_ += "<div><b>" + value + "</b><span class=\"soft\">" + what + "</span></div>\n";
    };
    html_ += "<div class=\"facts\">\n";
    fact(std::to_string(receipt_.nodesExported) + " of " + std::to_string(receipt_.nodesInScene),
         "nodes exported");
    fact(std::to_string(bytes), "bytes in both files");
    fact(receipt_.deviation ? Short(receipt_.deviation->worst) : "?",
         "worst deviation, percent or degrees");
    fact(std::to_string(receipt_.losses.size()),
         "losses, " + std::to_string(NewLosses(receipt_)) + " of them not accepted before");
    html_ += "</div>\n";
}

void Page::AddWorst(const char* what, const std::string& compared, const NamedWorst& worst,
                    Unit unit) {
    const std::string value = unit == Unit::degrees ? Short(worst.value) + "&deg;"
                              : unit == Unit::coordinates
                                  ? Short(worst.value) + " of the image"
                                  : Short(worst.value) + " units (" + Short(worst.percent) + " %)";
    std::string where = worst.path.empty() ? "" : Code(worst.path);
    const auto add = [&](const std::string& more) { where += (where.empty() ? "" : ", ") + more; };
    if (worst.vertex >= 0) {
        add("vertex " + std::to_string(worst.vertex));
    }
    if (!worst.channel.empty()) {
        add("channel " + Code(worst.channel));
    }
    if (!worst.bone.empty()) {
        add("bone " + Code(worst.bone));
    }
    if (worst.frame && !worst.path.empty()) {
        add("frame " + Short(*worst.frame));
    }
    Row({{"What", what}, {"Compared", compared}, {"Worst", value}, {"Where", where}});
}

void Page::AddDeviation() {
    html_ += "<h2>Deviation from the scene</h2>\n";
    if (!receipt_.deviation) {
        html_ += "<p>Not known, since the files cannot be read.</p>\n";
        return;
    }
    const NamedDeviation& found = *receipt_.deviation;
    html_ += "<p class=\"soft\">The scene is " + Short(found.size) +
             " units across; percents are of that.</p>\n";
    Head({"What", "Compared", "Worst", "Where"});
    AddWorst("Vertices at frame 0", std::to_string(found.vertices) + " vertices", found.vertex,
             Unit::distance);
    const std::string poses =
        std::to_string(found.poses) + " poses at " + kta::Counted(found.times, "time");
    AddWorst("Where nodes stand", poses, found.pose, Unit::distance);
    AddWorst("How nodes are turned", poses, found.angle, Unit::degrees);
    AddWorst("Skinned vertices", std::to_string(found.skinnedVertices) + " places", found.skin,
             Unit::distance);
    AddWorst("Morph targets", kta::Counted(found.morphPoints, "point"), found.morph,
             Unit::distance);
    AddWorst("Normals", kta::Counted(found.normals, "corner"), found.normal, Unit::degrees);
    AddWorst("Texture coordinates", kta::Counted(found.coordinatePairs, "pair"), found.coordinates,
             Unit::coordinates);
    EndTable(0);
}

void Page::AddLoss(const scene::LossKind& kind, const std::vector<const LedgerEntry*>& losses) {
    const auto fresh =
        static_cast<std::size_t>(std::ranges::count(losses, false, &LedgerEntry::isAccepted));
    html_ += "<details" + std::string(losses.size() <= 3 ? " open" : "") + "><summary>" +
             Code(kind.code) + " <b>" + std::to_string(losses.size()) + "</b>" +
             (fresh == losses.size() ? "" : ", " + std::to_string(fresh) + " new") +
             "</summary>\n<p>" + Html(kind.meaning) +
             "</p>\n<p class=\"soft\">What to do: " + Html(kind.remedy) + "</p>\n<ul>\n";
    for (std::size_t i = 0; i < std::min(losses.size(), kMostPlaces); ++i) {
        const LedgerEntry& loss = *losses[i];
        html_ +=
            "<li>" + (loss.path.empty() ? "" : Code(loss.path) + " ") +
            (loss.subject.empty() || loss.subject == loss.text ? "" : Html(loss.subject) + ": ") +
            Html(loss.text) + (loss.count == 1 ? "" : " (" + std::to_string(loss.count) + ")") +
            (loss.isAccepted ? " <span class=\"soft\">accepted</span>" : "") + "</li>\n";
    }
    html_ += "</ul>\n";
    if (losses.size() > kMostPlaces) {
        html_ += "<p class=\"soft\">and " + std::to_string(losses.size() - kMostPlaces) +
                 " more, which the receipt lists</p>\n";
    }
    html_ += "</details>\n";
}

void Page::AddLosses() {
    std::map<scene::LossCode, std::vector<const LedgerEntry*>> byCode;
    for (const LedgerEntry& loss : receipt_.losses) {
        byCode[loss.code].push_back(&loss);
    }
    html_ += "<h2>Losses</h2>\n";
    if (byCode.empty()) {
        html_ += "<p>Nothing was left out or altered.</p>\n";
    }
    for (const auto& [code, losses] : byCode) {
        AddLoss(scene::KindOf(code), losses);
    }
}

void Page::AddIssues() {
    if (receipt_.issues.empty()) {
        return;
    }
    html_ += "<h2>Check</h2>\n";
    Head({"Code", "File", "What"});
    for (std::size_t i = 0; i < std::min(receipt_.issues.size(), kMostRows); ++i) {
        const kta::Issue& issue = receipt_.issues[i];
        Row({{"Code", Code(kta::TypeOf(issue.code).name)},
             {"File", kta::KindName(issue.file)},
             {"What", (issue.subject.empty() ? "" : Code(issue.subject) + " ") +
                          Html(issue.where + ": " + issue.text)}});
    }
    EndTable(receipt_.issues.size());
}

void Page::AddCosts() {
    html_ += "<h2>Bytes by node</h2>\n";
    Head({"Node", "Bytes", "Chunks"});
    for (std::size_t i = 0; i < std::min(receipt_.costs.size(), kMostRows); ++i) {
        const NodeCost& cost = receipt_.costs[i];
        std::vector<std::string> chunks;
        for (const kta::ChunkTotal& total : cost.chunks) {
            chunks.push_back(std::to_string(total.count) + " " + total.type->name);
        }
        Row({{"Node", Code(cost.path)},
             {"Bytes",
              std::to_string(cost.bytes) + Bar(static_cast<double>(cost.bytes) /
                                               static_cast<double>(receipt_.costs.front().bytes))},
             {"Chunks", Html(kta::Joined(chunks))}});
    }
    EndTable(receipt_.costs.size());
}

void Page::AddTimes(const char* what, const std::vector<SpentTime>& times) {
    if (times.empty()) {
        return;
    }
    Head({what, "Seconds"});
    for (std::size_t i = 0; i < std::min(times.size(), kMostRows); ++i) {
        const double most = std::max(times.front().seconds, 1e-9);
        Row({{what, Code(times[i].name)},
             {"Seconds", Short(times[i].seconds) + Bar(times[i].seconds / most)}});
    }
    EndTable(times.size());
}

void Page::AddTimes() {
    html_ += "<h2>Time</h2>\n<p>Reading " + Short(receipt_.readingSeconds) + " s, exporting " +
             Short(receipt_.exportingSeconds) + " s, checking " + Short(receipt_.checkingSeconds) +
             " s, comparing with the scene " + Short(receipt_.comparingSeconds) + " s.</p>\n";
    AddTimes("Stage", receipt_.times.Stages());
    AddTimes("Node", receipt_.times.Nodes());
}

void Page::AddFiles() {
    html_ += "<h2>Files and options</h2>\n";
    Head({"File", "Kind", "Bytes"});
    for (const FileReport& file : receipt_.files) {
        Row({{"File", Code(file.path.filename().string())},
             {"Kind", Html(file.kind)},
             {"Bytes", std::to_string(file.bytes)}});
    }
    EndTable(0);
    html_ += "<p>" + Code(OnCommandLine(receipt_.inForce)) + "</p>\n";
}

}  // namespace

std::string PageOf(const Receipt& receipt, bool withTimes) {
    return Page(receipt, withTimes).Make();
}

}  // namespace maxhost::app
