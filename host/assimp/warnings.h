// Warnings of what an import changed or left out, gathered so that a thousand like cases make a few
// lines.
#pragma once

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/scene/losses.h"
#include "host/scene/scene.h"

namespace maxhost::import {

using scene::LossCode;

// What happened: a kind of loss with its text, or with one of its own where cases differ.
struct LossText {
    LossText(LossCode kind) : code(kind), text(scene::KindOf(kind).text) {}
    LossText(LossCode kind, std::string ownText) : code(kind), text(std::move(ownText)) {}

    LossCode code;
    std::string text;
};

class ImportWarnings {
  public:
    // `count` cases of `what` ("points and lines left out") at `subject` ("mesh 'Box'"). An empty
    // subject stands for the file as a whole.
    void Add(const LossText& what, const std::string& subject, std::size_t count = 1);

    // The same for what many subjects of one kind ("mesh") have in common: one line for them all.
    // `name` stands as it is in the line.
    void AddOf(const LossText& what, const std::string& kind, const std::string& name,
               std::size_t count = 1);

    // The scene's node that what is added from here on is about; kNone, as at first: none.
    void SetNode(int node) { node_ = node; }

    struct Line {
        LossCode code;
        std::string text;
    };

    // In the order of the first cases of each `what`. Of Add(): "mesh 'Box': points and lines left
    // out (17)", without a count where it is 1; what happens at more than kMaxSubjects subjects
    // ends with one line for the rest: "12 others: points and lines left out (90)". Of AddOf():
    // "node 'Box': renamed", or "12 nodes ('Box', 'Tube', 'Lid', ...): renamed" with at most
    // kMaxNames names, with the count of all cases where it is not 1 a subject.
    std::vector<Line> Lines() const;

    // Every case, in the order of the calls.
    const std::vector<scene::Loss>& Losses() const { return losses_; }

    static constexpr std::size_t kMaxSubjects = 8;
    static constexpr std::size_t kMaxNames = 3;

  private:
    struct Entry {
        LossText what;
        std::string kind;  // empty: a line a subject
        std::vector<std::pair<std::string, std::size_t>> subjects;
        std::size_t others = 0;
        std::size_t countOfOthers = 0;
    };

    void AddTo(Entry& entry, const std::string& subject, std::size_t count, std::size_t most);
    Entry& EntryOf(const LossText& what, const std::string& kind);
    static std::string LineOf(const Entry& entry);

    std::vector<Entry> entries_;
    std::map<std::pair<std::string, std::string>, std::size_t> byWhat_;
    std::vector<scene::Loss> losses_;
    int node_ = scene::kNone;
};

}  // namespace maxhost::import
