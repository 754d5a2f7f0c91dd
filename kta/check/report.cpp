#include "kta/check/report.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "kta/dump.h"
#include "kta/text.h"

namespace kta {
namespace {

using Json = nlohmann::ordered_json;

Json PathOrNull(const std::string& path) {
    return path.empty() ? Json() : Json(ToUtf8(path));
}

void AddCounts(Json& object, const IssueCounts& counts) {
    object["errors"] = counts.errors;
    object["warnings"] = counts.warnings;
    object["notes"] = counts.notes;
}

Json ChunkOf(const Place& place) {
    if (place.chunkType == nullptr) {
        return {};
    }
    return {{"kind", place.chunkType->name}, {"index", place.chunk}, {"offset", place.chunkOffset}};
}

Json IssueJson(const CheckedFiles& files, const Issue& issue) {
    return {{"code", TypeOf(issue.code).name},
            {"severity", SeverityName(issue.severity)},
            {"file", ToUtf8(PathOf(files, issue))},
            {"offset", issue.offset},
            {"where", issue.where},
            {"chunk", ChunkOf(issue.place)},
            {"subject", ToUtf8(issue.subject)},
            {"text", ToUtf8(issue.text)},
            {"what", ToUtf8(issue.what)},
            {"found", ToUtf8(issue.found)},
            {"expected", ToUtf8(issue.expected)},
            {"count", issue.count}};
}

Json CheckJson(const CheckedFiles& files, const ReportOptions& options) {
    Json check = {{"actor", PathOrNull(files.actor)}, {"motion", PathOrNull(files.motion)}};
    AddCounts(check, CountIssues(files.issues));
    check["unreadable"] = Json::array();
    for (const UnreadableFile& file : files.unreadable) {
        check["unreadable"].push_back({{"file", ToUtf8(file.path)}, {"error", ToUtf8(file.error)}});
    }
    const IssueCounts counts = CountIssues(files.issues);
    const std::vector<const Issue*> shown = ShownIssues(files, options);
    check["issues"] = Json::array();
    for (const Issue* issue : shown) {
        check["issues"].push_back(IssueJson(files, *issue));
    }
    check["omitted"] =
        counts.errors + counts.warnings + (options.notes ? counts.notes : 0) - shown.size();
    return check;
}

// ---------------------------------------------------------------- schema

const Json kText = {{"type", "string"}};
const Json kCount = {{"type", "integer"}, {"minimum", 0}};
const Json kPath = {{"type", {"string", "null"}}};

Json OneOf(const Json& names) {
    return {{"enum", names}};
}

Json ListOf(const Json& items) {
    return {{"type", "array"}, {"items", items}};
}

// An object with these members, each of them required, and no others.
Json ObjectOf(const Json& members) {
    Json names = Json::array();
    for (const auto& member : members.items()) {
        names.push_back(member.key());
    }
    return {{"type", "object"},
            {"properties", members},
            {"required", names},
            {"additionalProperties", false}};
}

Json IssueSchema() {
    Json codes = Json::array();
    for (const IssueType& type : IssueTypes()) {
        codes.push_back(type.name);
    }
    Json kinds = Json::array();
    for (const KTAChunkType& type : kChunkTypes) {
        kinds.push_back(type.name);
    }
    Json chunk = ObjectOf({{"kind", OneOf(kinds)}, {"index", kCount}, {"offset", kCount}});
    chunk["type"] = {"object", "null"};
    return ObjectOf({{"code", OneOf(codes)},
                     {"severity", OneOf({"note", "warning", "error"})},
                     {"file", kText},
                     {"offset", kCount},
                     {"where", kText},
                     {"chunk", chunk},
                     {"subject", kText},
                     {"text", {{"type", "string"}, {"minLength", 1}}},
                     {"what", kText},
                     {"found", kText},
                     {"expected", kText},
                     {"count", {{"type", "integer"}, {"minimum", 1}}}});
}

// ---------------------------------------------------------------- the page

// "WHAT is FOUND": the message's places in capitals.
std::string ShownMessage(const IssueType& type) {
    std::string text = MessageOf(type.code, "WHAT", "FOUND", "EXPECTED");
    for (std::size_t at = text.find('|'); at != std::string::npos; at = text.find('|', at + 2)) {
        text.insert(at, "\\");
    }
    return text;
}

constexpr const char* kIntroduction =
    R"(# The codes of kta check

Everything that [kta check](kta.md#kta-check-actor-motion) tells has a code, which does not change.
This page is made by `kta check --list-codes --markdown`.

- An **error** breaks a rule that readers of the files rely on.
- A **warning** is what the exporter does not write of itself, or what will not look as the scene did.
- A **note** is what the exporter writes rightly of some scenes and yet is worth knowing. Notes are
  told with `--notes`.

WHAT is the field or item, FOUND what stands there, EXPECTED what should.
)";

}  // namespace

const std::string& PathOf(const CheckedFiles& files, const Issue& issue) {
    return issue.file == kFileKindActor && !files.actor.empty() ? files.actor
           : files.motion.empty()                               ? files.actor
                                                                : files.motion;
}

void IssueCounts::Add(const IssueCounts& other) {
    errors += other.errors;
    warnings += other.warnings;
    notes += other.notes;
}

IssueCounts CountIssues(const std::vector<Issue>& issues) {
    IssueCounts counts;
    for (const Issue& issue : issues) {
        ++(issue.severity == Severity::error     ? counts.errors
           : issue.severity == Severity::warning ? counts.warnings
                                                 : counts.notes);
    }
    return counts;
}

std::vector<const Issue*> ShownIssues(const CheckedFiles& files, const ReportOptions& options) {
    std::vector<const Issue*> shown;
    for (const Issue& issue : files.issues) {
        const bool full = options.maxIssues != 0 && shown.size() == options.maxIssues;
        if (!full && (options.notes || issue.severity != Severity::note)) {
            shown.push_back(&issue);
        }
    }
    return shown;
}

void WriteCheckJson(const std::vector<CheckedFiles>& checks, const ReportOptions& options,
                    std::ostream& out) {
    IssueCounts counts;
    Json list = Json::array();
    for (const CheckedFiles& files : checks) {
        counts.Add(CountIssues(files.issues));
        list.push_back(CheckJson(files, options));
    }
    Json report = {{"report", "kta check"}, {"version", 1}};
    AddCounts(report, counts);
    report["checks"] = std::move(list);
    out << report.dump(1) << '\n';
}

void WriteCheckSchema(std::ostream& out) {
    const Json check =
        ObjectOf({{"actor", kPath},
                  {"motion", kPath},
                  {"errors", kCount},
                  {"warnings", kCount},
                  {"notes", kCount},
                  {"unreadable", ListOf(ObjectOf({{"file", kText}, {"error", kText}}))},
                  {"issues", ListOf(IssueSchema())},
                  {"omitted", kCount}});
    Json schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                   {"title", "The report of kta check --json"}};
    schema.update(ObjectOf({{"report", {{"const", "kta check"}}},
                            {"version", {{"const", 1}}},
                            {"errors", kCount},
                            {"warnings", kCount},
                            {"notes", kCount},
                            {"checks", ListOf(check)}}));
    out << schema.dump(1) << '\n';
}

void WriteCodes(std::ostream& out) {
    for (const IssueType& type : IssueTypes()) {
        out << type.name << '\t' << SeverityName(type.severity) << '\t' << type.meaning << '\n';
    }
}

void WriteCodesPage(std::ostream& out) {
    out << kIntroduction;
    std::vector<std::string_view> areas;
    for (const IssueType& type : IssueTypes()) {
        if (std::find(areas.begin(), areas.end(), type.area) == areas.end()) {
            areas.push_back(type.area);
        }
    }
    for (const std::string_view area : areas) {
        out << "\n## " << area << "\n\n| Code | Severity | Message | Meaning | Remedy |\n"
            << "|---|---|---|---|---|\n";
        for (const IssueType& type : IssueTypes()) {
            if (type.area == area) {
                out << "| `" << type.name << "` | " << SeverityName(type.severity) << " | "
                    << ShownMessage(type) << " | " << type.meaning << " | " << type.remedy
                    << " |\n";
            }
        }
    }
}

}  // namespace kta
