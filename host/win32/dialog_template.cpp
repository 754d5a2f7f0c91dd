#include "host/win32/dialog_template.h"

#include <array>

#include "host/win32/cursor.h"
#include "host/win32/text.h"

namespace win32 {
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

class Reader {
  public:
    explicit Reader(std::span<const std::byte> bytes) : cursor_(bytes) {}

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
    return Reader(bytes).Read();
}

}  // namespace win32
