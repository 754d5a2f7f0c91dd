// What the numbers in two files stand for, and which of their chunks belong together.
#pragma once

#include <unordered_map>

#include "kta/diff/diff.h"

namespace kta {

// The nodes or the materials of a file by number.
class Numbered {
  public:
    // The same for those of both files that are counterparts, and for a number that nothing has.
    std::int64_t IdOf(std::int64_t number) const;
    // The name as JSON; null for -1, and the number itself where nothing has it.
    std::string NameOf(std::int64_t number) const;
    // Of the first one of that name; -1 where there is none.
    std::int64_t NumberOf(std::string_view name) const;

  private:
    friend class SharedIds;
    struct Entry {
        std::int64_t id = 0;
        std::string_view name;  // in the file's chunk
    };
    std::vector<Entry> entries_;
    std::unordered_map<std::string_view, std::int64_t> numbers_;  // of the first of each name
};

struct References {
    Numbered nodes;
    Numbered materials;
};

// What both files' numbers stand for; the files must outlive it.
std::pair<References, References> BindReferences(const File& a, const File& b);

// By what an item is matched: items with the same first key are counterparts, of the others those
// with the same second one, and so on, in their order each time.
using Keys = std::vector<std::string>;

constexpr std::size_t kNoCounterpart = static_cast<std::size_t>(-1);

struct Match {
    std::vector<std::size_t> counterparts;  // for each of a's; kNoCounterpart where there is none
    std::vector<std::size_t> added;         // those of b's that are left
};

// All items of both have the same number of keys.
Match MatchByKeys(const std::vector<Keys>& a, const std::vector<Keys>& b);

// A chunk and what it is about.
struct Subject {
    const Chunk* chunk = nullptr;
    ChunkPlace place;
    std::vector<Label> identity;
    std::size_t ordinal = 1;  // among those with the same identity
    // What it hangs from: order is that of the subjects with the same owner.
    std::string owner;
    // Of a layer: whether its number is that of the material before it.
    bool followsOwner = true;
};

// Those of one kind, in file order.
struct Subjects {
    std::vector<Subject> list;
    std::vector<Keys> keys;
};

// For each entry of kChunkTypes the chunks of that kind.
std::vector<Subjects> SubjectsOf(const File& file, const References& references);

}  // namespace kta
