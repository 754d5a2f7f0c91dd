#include "host/assimp/warnings.h"

#include <algorithm>

namespace maxhost::import {
namespace {

std::string Counted(const std::string& what, std::size_t count) {
    return count == 1 ? what : what + " (" + std::to_string(count) + ")";
}

std::string Plural(const std::string& kind) {
    return kind + (kind.ends_with("sh") ? "es" : "s");
}

}  // namespace

ImportWarnings::Entry& ImportWarnings::EntryOf(const LossText& what, const std::string& kind) {
    const auto [found, isNew] = byWhat_.try_emplace({what.text, kind}, entries_.size());
    if (isNew) {
        entries_.push_back({what, kind, {}, 0, 0});
    }
    return entries_[found->second];
}

void ImportWarnings::AddTo(Entry& entry, const std::string& subject, std::size_t count,
                           std::size_t most) {
    if (entry.subjects.size() < most) {
        entry.subjects.emplace_back(subject, count);
    } else {
        ++entry.others;
        entry.countOfOthers += count;
    }
}

void ImportWarnings::Add(const LossText& what, const std::string& subject, std::size_t count) {
    if (count > 0) {
        losses_.push_back({what.code, what.text, subject, node_, count});
        AddTo(EntryOf(what, ""), subject, count, kMaxSubjects);
    }
}

void ImportWarnings::AddOf(const LossText& what, const std::string& kind, const std::string& name,
                           std::size_t count) {
    if (count > 0) {
        losses_.push_back({what.code, what.text, kind + " " + name, node_, count});
        AddTo(EntryOf(what, kind), name, count, kMaxNames);
    }
}

std::string ImportWarnings::LineOf(const Entry& entry) {
    const std::size_t subjects = entry.subjects.size() + entry.others;
    std::size_t count = entry.countOfOthers;
    std::string names;
    for (const auto& [name, cases] : entry.subjects) {
        names += (names.empty() ? "" : ", ") + name;
        count += cases;
    }
    if (subjects == 1) {
        return entry.kind + " " + names + ": " + Counted(entry.what.text, count);
    }
    return std::to_string(subjects) + " " + Plural(entry.kind) + " (" + names +
           (entry.others > 0 ? ", ...): " : "): ") +
           Counted(entry.what.text, count == subjects ? 1 : count);
}

std::vector<ImportWarnings::Line> ImportWarnings::Lines() const {
    std::vector<Line> lines;
    for (const Entry& entry : entries_) {
        if (!entry.kind.empty()) {
            lines.push_back({entry.what.code, LineOf(entry)});
            continue;
        }
        for (const auto& [subject, count] : entry.subjects) {
            lines.push_back({entry.what.code, (subject.empty() ? "" : subject + ": ") +
                                                  Counted(entry.what.text, count)});
        }
        if (entry.others > 0) {
            lines.push_back({entry.what.code, std::to_string(entry.others) +
                                                  (entry.others == 1 ? " other: " : " others: ") +
                                                  Counted(entry.what.text, entry.countOfOthers)});
        }
    }
    return lines;
}

}  // namespace maxhost::import
