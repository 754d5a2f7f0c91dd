// A dialog on the screen, as its controls' places and as a picture.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

namespace support {

struct ControlOnScreen {
    HWND window;
    int id;
    std::string className;  // lower case
    std::string text;
    RECT rect;  // in the dialog's client area
    bool isGroup;
    bool isTabStop;  // and enabled
};

// The visible dialog of this thread with that title; null: there is none.
HWND FindDialog(const std::string& title);

// In the template's order, which is that of the tab key.
std::vector<ControlOnScreen> ControlsOf(HWND dialog);

// How wide and high a control must be at least to show its text (and box) whole.
SIZE RoomFor(const ControlOnScreen& control);

// The size of the dialog's client area for a template of that many dialog units.
SIZE FromDialogUnits(HWND dialog, int width, int height);

// Writes the dialog, frame included, as it stands on the screen: a BMP file of 24 bits a pixel.
// Throws std::runtime_error.
void SavePicture(HWND dialog, const std::string& file);

}  // namespace support
