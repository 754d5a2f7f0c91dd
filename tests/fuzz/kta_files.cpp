// Any bytes as a KTA file: they are read, checked, shown and compared without a crash or a leak,
// and a file is equal to itself.
#include <cstdint>
#include <cstdlib>
#include <ostream>
#include <span>
#include <streambuf>

#include "kta/check.h"
#include "kta/diff/diff.h"
#include "kta/dump.h"
#include "kta/info.h"
#include "kta/reader.h"

namespace {

// Takes what is written and keeps nothing.
class Nowhere : public std::streambuf {
  protected:
    int_type overflow(int_type c) override { return traits_type::not_eof(c); }
    std::streamsize xsputn(const char*, std::streamsize count) override { return count; }
};

void Require(bool condition) {
    if (!condition) {
        std::abort();
    }
}

// The file with its chunks in another order: the last third first.
kta::File Turned(kta::File file) {
    const auto middle = file.chunks.end() - static_cast<std::ptrdiff_t>(file.chunks.size() / 3);
    std::rotate(file.chunks.begin(), middle, file.chunks.end());
    return file;
}

void Compare(const kta::File& file, std::ostream& out) {
    Require(!kta::Compare(file, file, {}).Different(true));
    const kta::File turned = Turned(file);
    const kta::Diff there = kta::Compare(file, turned, {.absolute = 0.5});
    const kta::Diff back = kta::Compare(turned, file, {.absolute = 0.5});
    Require(there.Count(kta::Change::added) == back.Count(kta::Change::removed));
    Require(there.Count(kta::Change::removed) == back.Count(kta::Change::added));
    kta::WriteDiff(there, {.nameA = "a", .nameB = "b"}, out);
    kta::WriteDiffJson(back, file.kind, {.nameA = "a", .nameB = "b"}, out);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const kta::Reading reading = kta::Read(std::span(data, size));
    Nowhere nowhere;
    std::ostream out(&nowhere);
    kta::FaultLines("f", reading);
    for (const kta::Issue& issue : kta::Check(reading, nullptr, {.notes = true})) {
        kta::IssueLine("f", issue);
    }
    kta::DumpJson("f", reading, out);
    kta::WriteInfoJson("f", reading, out);
    if (reading.file) {
        kta::DumpText("f", *reading.file, out);
        kta::WriteInfo("f", *reading.file, out);
        Compare(*reading.file, out);
    }
    return 0;
}
