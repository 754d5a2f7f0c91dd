// Reading compiled resources in the .res form: a sequence of entries, each a header (sizes, type,
// name, language), its data, and padding to 4 bytes. Broken input is never read past its end;
// reading stops at the first entry that does not fit. Texts are UTF-16 there and are given as
// UTF-8; a surrogate without its partner becomes U+FFFD.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace win32 {

constexpr std::uint16_t kDialogType = 5;
constexpr std::uint16_t kStringTableType = 6;

// The data of the first resource with this numeric type and name; null optional: none.
std::optional<std::span<const std::byte>> FindResource(std::span<const std::byte> resources,
                                                       std::uint16_t type, std::uint16_t name);

// Text `id` of the string table; empty where there is none (the form itself does not tell
// an empty text from a missing one).
std::string FindString(std::span<const std::byte> resources, std::uint32_t id);

// ---------------------------------------------------------------- dialog templates

// In dialog units; a control's counts from the dialog's corner.
struct TemplateRect {
    int x = 0, y = 0, width = 0, height = 0;
};

struct ControlTemplate {
    std::string className;  // of a standard class as Windows writes it: "Button", "Edit", ...
    int id = 0;
    std::string text;  // empty where the template gives a resource's number
    std::uint32_t style = 0;
    TemplateRect rect;
};

struct DialogTemplate {
    std::string title;
    std::uint32_t style = 0;
    TemplateRect rect;
    std::string font;
    int fontSize = 0;  // points; 0: the template names no font
    std::vector<ControlTemplate> controls;
};

// In both forms of templates, DLGTEMPLATE and DLGTEMPLATEEX.
// Null optional: the bytes end too early, or name a class by a number that stands for none.
// Nothing is read behind their end.
std::optional<DialogTemplate> ReadDialogTemplate(std::span<const std::byte> bytes);

}  // namespace win32
