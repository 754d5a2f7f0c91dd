// Reading compiled resources in the .res form: a sequence of entries, each a header (sizes, type,
// name, language), its data, and padding to 4 bytes. Broken input is never read past its end;
// reading stops at the first entry that does not fit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>

namespace win32 {

constexpr std::uint16_t kDialogType = 5;
constexpr std::uint16_t kStringTableType = 6;

// The data of the first resource with this numeric type and name; null optional: none.
std::optional<std::span<const std::byte>> FindResource(std::span<const std::byte> resources,
                                                       std::uint16_t type, std::uint16_t name);

// Text `id` of the string table as UTF-8; empty where there is none (the form itself does not tell
// an empty text from a missing one).
std::string FindString(std::span<const std::byte> resources, std::uint32_t id);

}  // namespace win32
