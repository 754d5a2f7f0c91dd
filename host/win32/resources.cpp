#include "host/win32/resources.h"

#include <windows.h>

#include "host/win32/cursor.h"
#include "host/win32/module.h"
#include "host/win32/text.h"
#include "host/win32/window.h"

namespace win32 {
namespace {

using Bytes = std::span<const std::byte>;

// A type or name is either 0xffff and a number, or a NUL-terminated text; nullopt for a text.
std::optional<std::uint16_t> ReadId(Cursor& cursor) {
    const std::uint16_t first = cursor.U16();
    if (first == 0xffff) {
        return cursor.U16();
    }
    for (std::uint16_t unit = first; unit != 0 && cursor.Ok();) {
        unit = cursor.U16();
    }
    return std::nullopt;
}

struct Entry {
    std::optional<std::uint16_t> type, name;
    Bytes data;
};

// Both sizes together are what the entry's fields before the data take.
constexpr std::size_t kSizeFields = 8;

std::optional<Entry> ReadEntry(Cursor& cursor) {
    const std::uint32_t dataSize = cursor.U32();
    const std::uint32_t headerSize = cursor.U32();
    if (!cursor.Ok() || headerSize < kSizeFields) {
        return std::nullopt;
    }
    Cursor header(cursor.Take(headerSize - kSizeFields));
    Entry entry;
    entry.type = ReadId(header);
    entry.name = ReadId(header);
    entry.data = cursor.Take(dataSize);
    if (!header.Ok() || !cursor.Ok()) {
        return std::nullopt;
    }
    cursor.AlignTo4();
    return entry;
}

}  // namespace

std::optional<Bytes> FindResource(Bytes resources, std::uint16_t type, std::uint16_t name) {
    Cursor cursor(resources);
    while (cursor.Left() > 0) {
        const std::optional<Entry> entry = ReadEntry(cursor);
        if (!entry) {
            return std::nullopt;
        }
        if (entry->type == type && entry->name == name) {
            return entry->data;
        }
    }
    return std::nullopt;
}

std::string FindString(Bytes resources, std::uint32_t id) {
    // The table is cut into blocks of 16 counted texts; block n is the resource named n + 1.
    if (id > 0xffff) {
        return {};
    }
    const auto block = static_cast<std::uint16_t>(id / 16 + 1);
    const std::optional<Bytes> data = FindResource(resources, kStringTableType, block);
    if (!data) {
        return {};
    }
    Cursor cursor(*data);
    for (std::uint32_t skipped = 0; skipped < id % 16; ++skipped) {
        cursor.Take(std::size_t{cursor.U16()} * 2);
    }
    const std::size_t length = cursor.U16();
    Cursor units(cursor.Take(length * 2));
    if (!cursor.Ok()) {
        return {};
    }
    std::u16string text;
    for (std::size_t i = 0; i < length; ++i) {
        text += static_cast<char16_t>(units.U16());
    }
    return Utf8FromUtf16(text);
}

}  // namespace win32

extern "C" int WINAPI LoadStringA(HINSTANCE instance, UINT id, LPSTR buffer, int size) {
    return win32::CopyText(win32::FindString(win32::ResourcesOf(instance), id), buffer, size);
}
