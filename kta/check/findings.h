// What the sources of the check share: where they put what they find, and what a file's chunks
// refer to one another by.
#pragma once

#include <string_view>
#include <unordered_map>

#include "kta/check.h"

namespace kta {

// The places of a message.
struct Words {
    std::string what;
    std::string found;
    std::string expected;
};

// A name as messages show it.
std::string InQuotes(std::string_view name);

// Takes what is found in one file, kMostFaults at most, the last of which says so. Severities are
// settled later.
class Findings {
  public:
    Findings(const File& file, std::vector<Issue>& issues)
        : file_(file), issues_(issues), most_(issues.size() + kMostFaults) {}

    const File& TheFile() const { return file_; }
    // Whether all of the file was read, so that what is not there is missing.
    bool IsWhole() const { return file_.end == file_.size; }

    // Of a chunk's body, from the start of the file.
    std::uint64_t BodyOffset(std::size_t chunk) const {
        return file_.chunks[chunk].offset + sizeof(KTAChunkHeader);
    }

    // At a chunk of the file, `at` bytes into its body.
    void AddInBody(IssueCode code, std::size_t chunk, std::uint64_t at, const Words& words,
                   std::string_view subject = {});
    // At a chunk's header.
    void AddAtChunk(IssueCode code, std::size_t chunk, const Words& words,
                    std::string_view subject = {});
    // At an offset of the file, in a chunk, for `count` items alike of the `group`.
    void Add(IssueCode code, std::size_t chunk, std::uint64_t offset, const Words& words,
             std::string_view subject, std::uint64_t count, const char* group);
    // Of the file as a whole, `chunk` being where it could be mended.
    void AddOfFile(IssueCode code, const Words& words);

  private:
    void Keep(Issue issue, IssueCode code, const Words& words);

    const File& file_;
    std::vector<Issue>& issues_;
    std::size_t most_;
};

// Items of a chunk that are wrong alike; one issue tells of them.
class Alike {
  public:
    Alike(IssueCode code, const char* group) : code_(code), group_(group) {}

    // `find` is called for the first one's words only.
    template <typename Find>
    void Note(std::uint64_t offset, Find find) {
        if (count_++ == 0) {
            offset_ = offset;
            words_ = find();
        }
    }

    void Report(Findings& findings, std::size_t chunk, std::string_view subject) const {
        if (count_ > 0) {
            findings.Add(code_, chunk, offset_, words_, subject, count_, group_);
        }
    }

  private:
    IssueCode code_;
    const char* group_;
    Words words_;
    std::uint64_t offset_ = 0;
    std::uint64_t count_ = 0;
};

// The nodes of an actor file, in file order: a node's number is its position.
struct NodeTable {
    struct Use {
        std::size_t first = 0;  // number of the first node of the name
        std::size_t count = 0;
    };
    std::vector<std::size_t> chunks;  // of each node, as positions in File::chunks
    std::vector<const KTANode*> records;
    std::unordered_map<std::string_view, Use> byName;

    explicit NodeTable(const File& file);

    std::string_view NameOf(std::size_t number) const { return TextOf(records[number]->nodeName); }
    // Empty for a number that no node has.
    std::string_view NameOfNumber(std::int64_t number) const;
    // The name of what the chunk is of: its node, material, texture or channel; may be empty.
    std::string_view SubjectOf(const Chunk& chunk) const;
};

// The checks, one or two for each subject.
void CheckPlaces(Findings& findings, const NodeTable& nodes);
void CheckMaterials(Findings& findings);
void CheckNodes(Findings& findings, const NodeTable& nodes);
void CheckReferences(Findings& findings, const NodeTable& nodes);
void CheckMeshes(Findings& findings, const NodeTable& nodes);
void CheckSkins(Findings& findings, const NodeTable& nodes);
void CheckRigs(Findings& findings, const NodeTable& nodes);
void CheckTracks(Findings& findings);
void CheckMotionAgainst(Findings& findings, const NodeTable& nodes, bool allNodes);
void CheckStudioRules(Findings& findings, const StudioRules& rules);

// Whether a quaternion is of length 1, but for rounding.
bool IsUnit(std::span<const float> quaternion);
// The numbers as "(1, 0, 0.5)".
std::string Listed(std::span<const float> numbers);

}  // namespace kta
