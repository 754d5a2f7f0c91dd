#include "kta/cursor.h"

#include <charconv>
#include <cmath>

namespace kta {

Cursor::Cursor(std::span<const std::uint8_t> bytes, std::vector<Fault>& faults)
    : bytes_(bytes), faults_(faults) {
}

Cursor Cursor::Fork(std::vector<Fault>& faults) const {
    Cursor fork(bytes_, faults);
    fork.offset_ = offset_;
    fork.place_ = place_;
    fork.stopped_ = stopped_;
    return fork;
}

void Cursor::Report(std::uint64_t offset, Finding finding, std::uint64_t count,
                    const std::string& suffix) {
    if (stopped_) {
        return;
    }
    if (faults_.size() + 1 == kMostFaults) {
        finding = {IssueCode::tooManyFaults, "", std::to_string(faults_.size()), "no more"};
        stopped_ = true;
    }
    Fault fault{.offset = offset,
                .where = place_.where,
                .text = MessageOf(finding.code, finding.what, finding.found, finding.expected),
                .code = finding.code,
                .place = place_,
                .what = std::move(finding.what),
                .found = std::move(finding.found),
                .expected = std::move(finding.expected),
                .count = count};
    fault.text += stopped_ ? "" : suffix;
    faults_.push_back(std::move(fault));
}

void Cursor::Stop(std::uint64_t offset, Finding finding) {
    Report(offset, std::move(finding));
    stopped_ = true;
}

void Cursor::Stop(Fault fault, const std::string& suffix) {
    if (!stopped_) {
        fault.text += suffix;
        faults_.push_back(std::move(fault));
    }
    stopped_ = true;
}

bool Cursor::StopShort(std::uint64_t size, std::string_view what) {
    if (!stopped_) {
        Stop(offset_, Found(IssueCode::cutOff, std::string(what), static_cast<std::int64_t>(Left()),
                            std::to_string(size)));
    }
    return false;
}

Finding Found(IssueCode code, std::string what, std::int64_t value, std::string expected) {
    return {code, std::move(what), std::to_string(value), std::move(expected)};
}

Finding FoundLetter(std::string what, char value, std::string_view letters) {
    std::string list(1, letters[0]);
    for (std::size_t i = 1; i < letters.size(); ++i) {
        list += (i + 1 < letters.size() ? ", " : " or ") + std::string(1, letters[i]);
    }
    const auto byte = static_cast<unsigned char>(value);
    return {IssueCode::letterValue, std::move(what), "byte " + std::to_string(int{byte}), list};
}

std::string Digits(float value) {
    std::array<char, 32> digits{};
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr;
    return {digits.data(), end};
}

void Repeated::Report(Cursor& cursor, const char* joint) const {
    if (count_ > 0) {
        const std::string others = std::to_string(count_ - 1) + " more of the " + group_;
        cursor.Report(offset_, first_, count_, count_ == 1 ? "" : joint + others);
    }
}

Finding FoundNotFinite(std::string what, std::span<const float> values) {
    const auto first =
        std::find_if(values.begin(), values.end(), [](float v) { return !std::isfinite(v); });
    return {IssueCode::numberNotFinite, std::move(what), Digits(*first), "a finite number"};
}

}  // namespace kta
