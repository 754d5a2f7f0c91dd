// What a check tells as JSON, with its schema, and the table of codes as a page.
#pragma once

#include <cstddef>
#include <ostream>
#include <string>
#include <vector>

#include "kta/check.h"

namespace kta {

// A file that could not be read.
struct UnreadableFile {
    std::string path;
    std::string error;
};

// Two files of one export, or one of them.
struct CheckedFiles {
    std::string actor;  // paths; empty where there is none
    std::string motion;
    std::vector<UnreadableFile> unreadable{};
    std::vector<Issue> issues{};  // notes included
};

// The path of the file that the issue is of.
const std::string& PathOf(const CheckedFiles& files, const Issue& issue);

struct IssueCounts {
    std::size_t errors = 0;
    std::size_t warnings = 0;
    std::size_t notes = 0;

    void Add(const IssueCounts& other);
};
IssueCounts CountIssues(const std::vector<Issue>& issues);

struct ReportOptions {
    bool notes = false;         // show them too
    std::size_t maxIssues = 0;  // of each pair of files; 0: all
};

// Those that are shown.
std::vector<const Issue*> ShownIssues(const CheckedFiles& files, const ReportOptions& options);

// One JSON object, as CheckSchema() describes it. Texts of the files are shown as in dumps.
void WriteCheckJson(const std::vector<CheckedFiles>& checks, const ReportOptions& options,
                    std::ostream& out);

// A JSON Schema (draft 2020-12).
void WriteCheckSchema(std::ostream& out);

// The table of codes as lines of three fields, or as the page docs/kta-check.md.
void WriteCodes(std::ostream& out);
void WriteCodesPage(std::ostream& out);

}  // namespace kta
