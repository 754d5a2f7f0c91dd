// Warnings of what an import changed or left out, gathered so that a thousand like cases make a few
// lines.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace maxhost::import {

class ImportWarnings {
  public:
    // `count` cases of `what` ("points and lines left out") at `subject` ("mesh 'Box'"). An empty
    // subject stands for the file as a whole.
    void Add(const std::string& what, const std::string& subject, std::size_t count = 1);

    // The same for what many subjects of one kind ("mesh") have in common: one line for them all.
    // `name` stands as it is in the line.
    void AddOf(const std::string& what, const std::string& kind, const std::string& name,
               std::size_t count = 1);

    // In the order of the first cases of each `what`. Of Add(): "mesh 'Box': points and lines left
    // out (17)", without a count where it is 1; what happens at more than kMaxSubjects subjects
    // ends with one line for the rest: "12 others: points and lines left out (90)". Of AddOf():
    // "node 'Box': renamed", or "12 nodes ('Box', 'Tube', 'Lid', ...): renamed" with at most
    // kMaxNames names, with the count of all cases where it is not 1 a subject.
    std::vector<std::string> Lines() const;

    static constexpr std::size_t kMaxSubjects = 8;
    static constexpr std::size_t kMaxNames = 3;

  private:
    struct Entry {
        std::string what;
        std::string kind;  // empty: a line a subject
        std::vector<std::pair<std::string, std::size_t>> subjects;
        std::size_t others = 0;
        std::size_t countOfOthers = 0;
    };

    void AddTo(Entry& entry, const std::string& subject, std::size_t count, std::size_t most);
    Entry& EntryOf(const std::string& what, const std::string& kind);
    static std::string LineOf(const Entry& entry);

    std::vector<Entry> entries_;
    std::map<std::pair<std::string, std::string>, std::size_t> byWhat_;
};

}  // namespace maxhost::import
