#include "host/win32/controls.h"

#include <vector>

namespace win32 {
namespace {

struct ControlClass {
    std::string name;
    ControlMaker make;
};

// Never destroyed: other libraries register while the process starts.
std::vector<ControlClass>& Classes() {
    static auto* const classes = new std::vector<ControlClass>{
        {"Button", MakeWindow<ButtonControl>},  {"Edit", MakeWindow<EditControl>},
        {"Static", MakeWindow<WindowObject>},   {"ListBox", MakeWindow<WindowObject>},
        {"ComboBox", MakeWindow<WindowObject>}, {"ScrollBar", MakeWindow<WindowObject>}};
    return *classes;
}

}  // namespace

void RegisterControlClass(const std::string& name, ControlMaker make) {
    Classes().push_back({name, make});
}

std::unique_ptr<WindowObject> MakeControl(const std::string& className, WindowObject* dialog) {
    for (const ControlClass& known : Classes()) {
        if (_stricmp(known.name.c_str(), className.c_str()) == 0) {
            return known.make(dialog);
        }
    }
    return nullptr;
}

LRESULT EditControl::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    const LRESULT result = WindowObject::OnMessage(message, wParam, lParam);
    switch (message) {
        case WM_SETFOCUS:
            SendCommand(*this, EN_SETFOCUS);
            break;
        case WM_KILLFOCUS:
            SendCommand(*this, EN_KILLFOCUS);
            break;
        case WM_SETTEXT:
            SendCommand(*this, EN_UPDATE);
            SendCommand(*this, EN_CHANGE);
            break;
        default:
            break;
    }
    return result;
}

LRESULT ButtonControl::OnMessage(UINT message, WPARAM wParam, LPARAM lParam) {
    switch (message) {
        case BM_GETCHECK:
            return isChecked_ ? BST_CHECKED : BST_UNCHECKED;
        case BM_SETCHECK:
            isChecked_ = IsCheckBox() && wParam != BST_UNCHECKED;
            return 0;
        case BM_CLICK:
            Click();
            return 0;
        default:
            return WindowObject::OnMessage(message, wParam, lParam);
    }
}

void ButtonControl::Click() {
    if (!isEnabled || Type() == BS_GROUPBOX) {
        return;
    }
    if (Type() == BS_AUTOCHECKBOX) {
        isChecked_ = !isChecked_;
    }
    SendCommand(*this, BN_CLICKED);
}

}  // namespace win32
