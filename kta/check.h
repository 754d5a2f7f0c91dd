// Checks KTA files: every rule that a reader may rely on, how the chunks of a file and the two
// files of an export refer to one another, and the rules of a studio. kta/issues.h has the table of
// what there is to tell; docs/kta-check.md shows it as a page.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "kta/reader.h"

namespace kta {

// One thing wrong with a file, or worth knowing of it. Of a chunk's items that are wrong alike one
// issue tells, with their `count`; of a file as a whole `where` is "file" and `offset` 0.
struct Issue : Fault {
    Severity severity = Severity::error;
    KTAFileKind file = kFileKindActor;
    std::string subject{};  // the name of the node, material or texture; its bytes, may be empty
};

// Limits and names that a studio asks of its files. Empty: none.
struct StudioRules {
    std::map<IssueCode, std::uint64_t> budgets;  // the most allowed, by ruleNodes to ruleFileSize
    std::map<IssueCode, std::string> patterns;   // regular expressions (ECMAScript) that whole
                                                 // names match, by ruleNodeName and the others
};

// Why a studio's rules are refused, in one line without the file's name.
class RulesError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

// Whether Check() can use the text as a pattern.
bool IsPattern(const std::string& text);

struct CheckOptions {
    bool notes = false;  // tell notes as well
    // In place of the table's; without a value the code is not told.
    std::map<IssueCode, std::optional<Severity>> severities{};
    StudioRules rules{};
};

// Adds the rules and severities of a JSON text to the options; docs/kta.md describes it. Throws
// RulesError where the text is no JSON or holds what no rule has; the options are then as they
// were.
void AddRules(const std::string& text, CheckOptions& options);

// What is wrong with one file of either kind (`motion` null), or with an actor and a motion file of
// one export. Faults of the readings come first into account: what cannot be told of a file that is
// read in part is not told. A reading without a file, whose bytes could not be had, has no issues.
// The actor file's issues stand before the motion file's, each file's by their offsets. Takes time
// and memory in proportion to the files' sizes. Throws std::bad_alloc, and std::regex_error where a
// pattern of the rules is none.
std::vector<Issue> Check(const Reading& actor, const Reading* motion = nullptr,
                         const CheckOptions& options = {});

// "FILE: offset N: WHERE: SEVERITY: TEXT [CODE]", the subject's name in quotes before the text;
// without a line end.
std::string IssueLine(const std::string& path, const Issue& issue);

}  // namespace kta
