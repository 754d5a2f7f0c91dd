// Dialog templates of compiled resources, in both of their forms (DLGTEMPLATE and DLGTEMPLATEEX).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace win32 {

// In dialog units; a control's counts from the dialog's corner.
struct TemplateRect {
    int x = 0, y = 0, width = 0, height = 0;
};

struct ControlTemplate {
    std::string className;  // of a standard class as Windows writes it: "Button", "Edit", ...
    int id = 0;
    std::string text;  // UTF-8; empty where the template gives a resource's number
    std::uint32_t style = 0;
    TemplateRect rect;
};

struct DialogTemplate {
    std::string title;  // UTF-8
    std::uint32_t style = 0;
    TemplateRect rect;
    std::string font;
    int fontSize = 0;  // points; 0: the template names no font
    std::vector<ControlTemplate> controls;
};

// Null optional: the bytes end too early, or name a class by a number that stands for none.
// Nothing is read behind their end.
std::optional<DialogTemplate> ReadDialogTemplate(std::span<const std::byte> bytes);

}  // namespace win32
