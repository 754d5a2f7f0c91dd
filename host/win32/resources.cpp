#include "host/win32/resources.h"

#include <utf8.h>
#include <windows.h>

#include <algorithm>
#include <array>
#include <iterator>

#include "host/win32/module.h"
#include "host/win32/window.h"

namespace win32 {
namespace {

using Bytes = std::span<const std::byte>;

// Reads little-endian fields. Once a read does not fit, every later one fails too and gives 0 or
// nothing.
class Cursor {
  public:
    explicit Cursor(std::span<const std::byte> bytes) : bytes_(bytes) {}

    bool Ok() const { return ok_; }
    std::size_t Left() const { return bytes_.size() - position_; }

    std::uint16_t U16() {
        const std::span<const std::byte> b = Take(2);
        return ok_ ? static_cast<std::uint16_t>(At(b, 0) | At(b, 1) << 8) : std::uint16_t{0};
    }
    std::uint32_t U32() {
        const std::uint32_t low = U16();
        return low | static_cast<std::uint32_t>(U16()) << 16;
    }
    std::int16_t I16() { return static_cast<std::int16_t>(U16()); }

    std::span<const std::byte> Take(std::size_t size) {
        if (!ok_ || size > Left()) {
            ok_ = false;
            return {};
        }
        const std::span<const std::byte> taken = bytes_.subspan(position_, size);
        position_ += size;
        return taken;
    }
    // The units up to a 0, which is read too.
    std::u16string Text() {
        std::u16string text;
        for (char16_t unit = U16(); unit != 0; unit = U16()) {
            text += unit;
        }
        return text;
    }
    // The last padding of the bytes may be missing.
    void AlignTo4() { Take(std::min((4 - position_ % 4) % 4, Left())); }

  private:
    static unsigned At(std::span<const std::byte> bytes, std::size_t i) {
        return std::to_integer<unsigned>(bytes[i]);
    }

    std::span<const std::byte> bytes_;
    std::size_t position_ = 0;
    bool ok_ = true;
};

bool IsHighSurrogate(char32_t unit) {
    return unit >= 0xd800 && unit < 0xdc00;
}
bool IsLowSurrogate(char32_t unit) {
    return unit >= 0xdc00 && unit < 0xe000;
}

std::string Utf8FromUtf16(std::u16string_view text) {
    constexpr char32_t kReplacement = 0xfffd;
    std::string out;
    for (std::size_t i = 0; i < text.size(); ++i) {
        char32_t point = text[i];
        if (IsHighSurrogate(point) && i + 1 < text.size() && IsLowSurrogate(text[i + 1])) {
            point = 0x10000 + ((point - 0xd800) << 10) + (text[++i] - 0xdc00);
        } else if (IsHighSurrogate(point) || IsLowSurrogate(point)) {
            point = kReplacement;
        }
        utf8::append(point, std::back_inserter(out));
    }
    return out;
}

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

// ---------------------------------------------------------------- dialog templates

namespace {

constexpr std::uint32_t kSetFont = 0x40;  // DS_SETFONT

constexpr std::uint16_t kFirstClassAtom = 0x80;
constexpr std::array<const char*, 6> kClassesByAtom = {"Button",  "Edit",      "Static",
                                                       "ListBox", "ScrollBar", "ComboBox"};

// A name in a template: none, a text, or a number.
struct Name {
    std::string text;
    std::optional<std::uint16_t> number;
};

Name ReadName(Cursor& cursor) {
    const char16_t first = cursor.U16();
    if (first == 0xffff) {
        return {{}, cursor.U16()};
    }
    if (first == 0) {
        return {};
    }
    return {Utf8FromUtf16(first + cursor.Text()), std::nullopt};
}

TemplateRect ReadRect(Cursor& cursor) {
    TemplateRect rect;
    rect.x = cursor.I16();
    rect.y = cursor.I16();
    rect.width = cursor.I16();
    rect.height = cursor.I16();
    return rect;
}

// Empty for a number that stands for no class.
std::string ClassName(const Name& name) {
    if (!name.number) {
        return name.text;
    }
    const std::size_t index = static_cast<std::size_t>(*name.number) - kFirstClassAtom;
    return index < kClassesByAtom.size() ? kClassesByAtom[index] : std::string();
}

class TemplateReader {
  public:
    explicit TemplateReader(std::span<const std::byte> bytes) : cursor_(bytes) {}

    std::optional<DialogTemplate> Read() {
        DialogTemplate dialog;
        const std::uint16_t controls = ReadHead(dialog);
        for (std::uint16_t i = 0; i < controls && cursor_.Ok(); ++i) {
            dialog.controls.push_back(ReadControl());
            if (dialog.controls.back().className.empty()) {
                return std::nullopt;
            }
        }
        return cursor_.Ok() ? std::optional(std::move(dialog)) : std::nullopt;
    }

  private:
    // Returns the number of controls.
    std::uint16_t ReadHead(DialogTemplate& dialog) {
        // The newer form begins where the older one has its style: with 1 and 0xffff.
        const std::uint32_t first = cursor_.U32();
        isExtended_ = first == 0xffff0001;
        if (isExtended_) {
            cursor_.U32();  // help
            cursor_.U32();  // extended style
            dialog.style = cursor_.U32();
        } else {
            dialog.style = first;
            cursor_.U32();  // extended style
        }
        const std::uint16_t controls = cursor_.U16();
        dialog.rect = ReadRect(cursor_);
        ReadName(cursor_);  // menu
        ReadName(cursor_);  // the dialog's own window class
        dialog.title = ReadName(cursor_).text;
        if (dialog.style & kSetFont) {
            dialog.fontSize = cursor_.U16();
            if (isExtended_) {
                cursor_.U32();  // weight, italic, character set
            }
            dialog.font = Utf8FromUtf16(cursor_.Text());
        }
        return controls;
    }

    ControlTemplate ReadControl() {
        cursor_.AlignTo4();
        ControlTemplate control;
        if (isExtended_) {
            cursor_.U32();  // help
            cursor_.U32();  // extended style
            control.style = cursor_.U32();
        } else {
            control.style = cursor_.U32();
            cursor_.U32();  // extended style
        }
        control.rect = ReadRect(cursor_);
        control.id = isExtended_ ? static_cast<int>(cursor_.U32()) : cursor_.U16();
        control.className = ClassName(ReadName(cursor_));
        control.text = ReadName(cursor_).text;
        SkipCreationData();
        return control;
    }

    // Its size counts the size's own word in the older form.
    void SkipCreationData() {
        const std::size_t size = cursor_.U16();
        cursor_.Take(isExtended_ || size < 2 ? size : size - 2);
    }

    Cursor cursor_;
    bool isExtended_ = false;
};

}  // namespace

std::optional<DialogTemplate> ReadDialogTemplate(std::span<const std::byte> bytes) {
    return TemplateReader(bytes).Read();
}

}  // namespace win32

extern "C" int WINAPI LoadStringA(HINSTANCE instance, UINT id, LPSTR buffer, int size) {
    return win32::CopyText(win32::FindString(win32::ResourcesOf(instance), id), buffer, size);
}
