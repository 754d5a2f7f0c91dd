#include "kta/check.h"

#include <algorithm>
#include <cmath>

#include "kta/check/findings.h"
#include "kta/cursor.h"
#include "kta/text.h"

namespace kta {

// ---------------------------------------------------------------- findings

std::string InQuotes(std::string_view name) {
    return '"' + Escaped(name) + '"';
}

std::string Listed(std::span<const float> numbers) {
    std::string text;
    for (const float number : numbers) {
        text += (text.empty() ? "(" : ", ") + Digits(number);
    }
    return text + ")";
}

bool IsUnit(std::span<const float> quaternion) {
    constexpr double kTolerance = 1e-3;
    double square = 0;
    for (const float part : quaternion) {
        square += double{part} * part;
    }
    // What is not finite is a fault of its own.
    return !std::isfinite(square) || std::abs(std::sqrt(square) - 1) <= kTolerance;
}

void Findings::AddInBody(IssueCode code, std::size_t chunk, std::uint64_t at, const Words& words,
                         std::string_view subject) {
    Add(code, chunk, BodyOffset(chunk) + at, words, subject, 1, "");
}

void Findings::AddAtChunk(IssueCode code, std::size_t chunk, const Words& words,
                          std::string_view subject) {
    Add(code, chunk, file_.chunks[chunk].offset, words, subject, 1, "");
}

void Findings::Add(IssueCode code, std::size_t chunk, std::uint64_t offset, const Words& words,
                   std::string_view subject, std::uint64_t count, const char* group) {
    const Chunk& where = file_.chunks[chunk];
    Issue issue;
    issue.offset = offset;
    issue.place = {std::string(where.type->name) + " chunk", where.type, where.offset, chunk};
    issue.count = count;
    if (count > 1) {
        issue.text = ", and so for " + std::to_string(count - 1) + " more of the " + group;
    }
    issue.subject = subject;
    Keep(std::move(issue), code, words);
}

void Findings::AddOfFile(IssueCode code, const Words& words) {
    Issue issue;
    issue.place = {"file"};
    Keep(std::move(issue), code, words);
}

// The issue's text stands behind the message.
void Findings::Keep(Issue issue, IssueCode code, const Words& words) {
    if (issues_.size() >= most_) {
        return;
    }
    const bool last = issues_.size() + 1 == most_;
    issue.code = last ? IssueCode::tooManyFaults : code;
    issue.what = last ? "" : words.what;
    issue.found = last ? std::to_string(kMostFaults - 1) : words.found;
    issue.expected = last ? "no more" : words.expected;
    issue.text =
        MessageOf(issue.code, issue.what, issue.found, issue.expected) + (last ? "" : issue.text);
    issue.where = issue.place.where;
    issue.file = file_.kind;
    issues_.push_back(std::move(issue));
}

// ---------------------------------------------------------------- nodes

NodeTable::NodeTable(const File& file) {
    for (std::size_t i = 0; i < file.chunks.size(); ++i) {
        if (const auto* node = file.chunks[i].As<KTANode>()) {
            Use& use = byName[TextOf(node->nodeName)];
            use.first = use.count++ == 0 ? records.size() : use.first;
            chunks.push_back(i);
            records.push_back(node);
        }
    }
}

std::string_view NodeTable::NameOfNumber(std::int64_t number) const {
    const bool exists = number >= 0 && static_cast<std::uint64_t>(number) < records.size();
    return exists ? NameOf(static_cast<std::size_t>(number)) : std::string_view();
}

std::string_view NodeTable::SubjectOf(const Chunk& chunk) const {
    if (const auto* node = chunk.As<KTANode>()) {
        return TextOf(node->nodeName);
    } else if (const auto* part = chunk.As<KTAMotionPart>()) {
        return TextOf(part->nodeName);
    } else if (const auto* material = chunk.As<KTAMaterial>()) {
        return TextOf(material->materialName);
    } else if (const auto* layer = chunk.As<KTAMaterialLayer>()) {
        return TextOf(layer->textureFileName);
    } else if (const auto* mesh = chunk.As<Mesh>()) {
        return NameOfNumber(mesh->head.nodeNumber);
    } else if (const auto* weights = chunk.As<Weights>()) {
        return NameOfNumber(weights->head.nodeNumber);
    } else if (const auto* limits = chunk.As<KTAJointLimits>()) {
        return NameOfNumber(limits->nodeNumber);
    } else if (const auto* morph = chunk.As<Morph>()) {
        return TextOf(morph->channel.channelName);
    }
    return {};
}

// ---------------------------------------------------------------- all

namespace {

// A file's faults as issues, with the names of those chunks that were read whole.
void AddFaults(const Reading& reading, std::vector<Issue>& issues) {
    if (reading.faults.empty()) {
        return;
    }
    const File none;
    const File& file = reading.file ? *reading.file : none;
    const NodeTable nodes(file);
    for (const Fault& fault : reading.faults) {
        Issue issue;
        static_cast<Fault&>(issue) = fault;
        issue.file = reading.file ? file.kind : kFileKindActor;
        const std::size_t chunk = fault.place.chunk;
        if (fault.place.chunkType != nullptr && chunk < file.chunks.size()) {
            issue.subject = nodes.SubjectOf(file.chunks[chunk]);
        }
        issues.push_back(std::move(issue));
    }
}

void CheckActor(Findings& findings, const NodeTable& nodes) {
    CheckPlaces(findings, nodes);
    CheckMaterials(findings);
    CheckNodes(findings, nodes);
    CheckReferences(findings, nodes);
    CheckMeshes(findings, nodes);
    CheckSkins(findings, nodes);
    CheckRigs(findings, nodes);
}

void CheckFile(const Reading& reading, const Reading* actor, const CheckOptions& options,
               std::vector<Issue>& issues) {
    const std::size_t before = issues.size();
    AddFaults(reading, issues);
    if (reading.file) {
        const File& file = *reading.file;
        Findings findings(file, issues);
        if (file.kind == kFileKindActor) {
            CheckActor(findings, NodeTable(file));
        } else {
            CheckTracks(findings);
            if (actor != nullptr && actor->file && actor->file->kind == kFileKindActor) {
                CheckMotionAgainst(findings, NodeTable(*actor->file),
                                   actor->file->end == actor->file->size);
            }
        }
        CheckStudioRules(findings, options.rules);
    }
    std::stable_sort(issues.begin() + static_cast<std::ptrdiff_t>(before), issues.end(),
                     [](const Issue& a, const Issue& b) { return a.offset < b.offset; });
}

// Whether the issue is told, which settles its severity.
bool Settle(Issue& issue, const CheckOptions& options) {
    const auto chosen = options.severities.find(issue.code);
    if (chosen == options.severities.end()) {
        issue.severity = TypeOf(issue.code).severity;
        return issue.severity != Severity::note || options.notes;
    }
    issue.severity = chosen->second.value_or(Severity::note);
    return chosen->second && (issue.severity != Severity::note || options.notes);
}

}  // namespace

std::vector<Issue> Check(const Reading& actor, const Reading* motion, const CheckOptions& options) {
    std::vector<Issue> issues;
    CheckFile(actor, nullptr, options, issues);
    if (motion != nullptr) {
        const std::size_t first = issues.size();
        CheckFile(*motion, &actor, options, issues);
        for (std::size_t i = first; i < issues.size(); ++i) {
            issues[i].file = kFileKindMotion;
        }
        for (std::size_t i = 0; i < first; ++i) {
            issues[i].file = kFileKindActor;
        }
    }
    std::erase_if(issues, [&](Issue& issue) { return !Settle(issue, options); });
    return issues;
}

std::string IssueLine(const std::string& path, const Issue& issue) {
    const std::string place = issue.where == "file" ? ""
                                                    : "offset " + std::to_string(issue.offset) +
                                                          ": " + issue.where + ": ";
    return path + ": " + place + SeverityName(issue.severity) + ": " +
           (issue.subject.empty() ? "" : InQuotes(issue.subject) + ": ") + issue.text + " [" +
           TypeOf(issue.code).name + "]";
}

}  // namespace kta
