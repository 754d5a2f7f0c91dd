// Reading of exported files, for the comparisons with the models: on its own, without the toolkit.
#pragma once

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <type_traits>

namespace corpus {

// Names a difference and ends the comparison.
struct Difference : std::runtime_error {
    using std::runtime_error::runtime_error;
};

[[noreturn]] inline void Differ(const std::string& what) {
    throw Difference(what);
}

template <typename T>
void ExpectEqual(const std::string& what, const T& found, const T& expected) {
    if (!(found == expected)) {
        if constexpr (std::is_arithmetic_v<T>) {
            Differ(what + " is " + std::to_string(found) + ", expected " +
                   std::to_string(expected));
        } else {
            Differ(what + " is \"" + found + "\", expected \"" + expected + "\"");
        }
    }
}

class Bytes {
  public:
    explicit Bytes(const std::string& path) : path_(path) {
        std::ifstream stream(path, std::ios::binary);
        text_.assign(std::istreambuf_iterator<char>(stream), {});
    }

    template <typename T>
    T Take() {
        T value;
        Need(sizeof value);
        std::memcpy(&value, text_.data() + at_, sizeof value);
        at_ += sizeof value;
        return value;
    }
    std::string TakeName(std::size_t size) {
        Need(size);
        const std::string name(text_.data() + at_, strnlen(text_.data() + at_, size));
        at_ += size;
        return name;
    }
    void Skip(std::size_t count) {
        Need(count);
        at_ += count;
    }
    bool AtEnd() const { return at_ == text_.size(); }

  private:
    void Need(std::size_t count) const {
        if (text_.size() - at_ < count) {
            Differ(path_ + " ends at " + std::to_string(text_.size()));
        }
    }

    std::string path_, text_;
    std::size_t at_ = 0;
};

}  // namespace corpus
