#include "tests/windows/dialog_window.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <stdexcept>

namespace support {
namespace {

struct Search {
    std::string title;
    HWND found = nullptr;
};

std::string TextOf(HWND window) {
    char text[512] = "";
    GetWindowTextA(window, text, sizeof(text));
    return text;
}

std::string ClassOf(HWND window) {
    char name[64] = "";
    GetClassNameA(window, name, sizeof(name));
    std::string lower(name);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return lower;
}

LONG_PTR ButtonType(HWND button) {
    return GetWindowLongPtrA(button, GWL_STYLE) & BS_TYPEMASK;
}

BOOL CALLBACK TakeIfMatching(HWND window, LPARAM context) {
    auto& search = *reinterpret_cast<Search*>(context);
    if (IsWindowVisible(window) && ClassOf(window) == "#32770" && TextOf(window) == search.title) {
        search.found = window;
    }
    return search.found == nullptr;
}

// Lets the windows paint themselves, and what they painted reach the screen.
void RunMessagesFor(DWORD milliseconds) {
    const DWORD start = GetTickCount();
    while (GetTickCount() - start < milliseconds) {
        MSG message;
        while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) {
            DispatchMessageA(&message);
        }
        Sleep(10);
    }
}

struct Pixels {
    int width, height;
    std::vector<unsigned char> bytes;  // rows of 4-byte multiples, bottom up
    BITMAPINFOHEADER header;
};

// The screen's part under the window.
Pixels Grab(HWND window) {
    RECT rect;
    GetWindowRect(window, &rect);
    Pixels pixels{};
    pixels.width = rect.right - rect.left;
    pixels.height = rect.bottom - rect.top;
    pixels.bytes.resize(static_cast<std::size_t>((pixels.width * 3 + 3) / 4 * 4) *
                        static_cast<std::size_t>(pixels.height));
    pixels.header.biSize = sizeof(pixels.header);
    pixels.header.biWidth = pixels.width;
    pixels.header.biHeight = pixels.height;
    pixels.header.biPlanes = 1;
    pixels.header.biBitCount = 24;

    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, pixels.width, pixels.height);
    const HGDIOBJ former = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, pixels.width, pixels.height, screen, rect.left, rect.top, SRCCOPY);
    SelectObject(memory, former);
    BITMAPINFO info{};
    info.bmiHeader = pixels.header;
    const int rows = GetDIBits(screen, bitmap, 0, static_cast<UINT>(pixels.height),
                               pixels.bytes.data(), &info, DIB_RGB_COLORS);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    if (rows != pixels.height) {
        throw std::runtime_error("the screen cannot be read");
    }
    return pixels;
}

}  // namespace

HWND FindDialog(const std::string& title) {
    Search search{title};
    EnumThreadWindows(GetCurrentThreadId(), TakeIfMatching, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

std::vector<ControlOnScreen> ControlsOf(HWND dialog) {
    std::vector<ControlOnScreen> controls;
    for (HWND child = GetWindow(dialog, GW_CHILD); child != nullptr;
         child = GetWindow(child, GW_HWNDNEXT)) {
        ControlOnScreen control{
            child, GetDlgCtrlID(child), ClassOf(child), TextOf(child), {}, false, false};
        GetWindowRect(child, &control.rect);
        MapWindowPoints(nullptr, dialog, reinterpret_cast<POINT*>(&control.rect), 2);
        control.isGroup = control.className == "button" && ButtonType(child) == BS_GROUPBOX;
        control.isTabStop = (GetWindowLongPtrA(child, GWL_STYLE) & WS_TABSTOP) != 0 &&
                            IsWindowEnabled(child) && !control.isGroup;
        controls.push_back(control);
    }
    return controls;
}

SIZE RoomFor(const ControlOnScreen& control) {
    const HDC context = GetDC(control.window);
    const HGDIOBJ former = SelectObject(
        context, reinterpret_cast<HFONT>(SendMessageA(control.window, WM_GETFONT, 0, 0)));
    RECT text{};
    DrawTextA(context, control.text.c_str(), -1, &text, DT_CALCRECT | DT_SINGLELINE);
    SIZE digit;
    GetTextExtentPoint32A(context, "0", 1, &digit);
    SelectObject(context, former);
    ReleaseDC(control.window, context);

    SIZE room = {text.right, text.bottom};
    if (control.className == "button" && !control.isGroup) {
        const bool hasBox = ButtonType(control.window) == BS_AUTOCHECKBOX;
        // The box with its gap; the frame of a push button.
        room.cx += hasBox ? GetSystemMetrics(SM_CXMENUCHECK) + digit.cx / 2
                          : 4 * GetSystemMetrics(SM_CXEDGE);
        room.cy += hasBox ? 0 : 2 * GetSystemMetrics(SM_CYEDGE);
    }
    return room;
}

SIZE FromDialogUnits(HWND dialog, int width, int height) {
    RECT rect = {0, 0, width, height};
    MapDialogRect(dialog, &rect);
    return {rect.right, rect.bottom};
}

void SavePicture(HWND dialog, const std::string& file) {
    SetForegroundWindow(dialog);
    SendMessageA(dialog, WM_NCACTIVATE, TRUE, 0);  // looks active whatever else is on the screen
    RunMessagesFor(300);
    const Pixels pixels = Grab(dialog);
    BITMAPFILEHEADER fileHeader{};
    fileHeader.bfType = 0x4d42;  // "BM"
    fileHeader.bfOffBits = sizeof(fileHeader) + sizeof(pixels.header);
    fileHeader.bfSize = static_cast<DWORD>(fileHeader.bfOffBits + pixels.bytes.size());
    std::ofstream out(file, std::ios::binary);
    out.write(reinterpret_cast<const char*>(&fileHeader), sizeof(fileHeader));
    out.write(reinterpret_cast<const char*>(&pixels.header), sizeof(pixels.header));
    out.write(reinterpret_cast<const char*>(pixels.bytes.data()),
              static_cast<std::streamsize>(pixels.bytes.size()));
    if (!out.flush()) {
        throw std::runtime_error(file + " cannot be written");
    }
}

}  // namespace support
