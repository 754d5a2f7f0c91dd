// Classes of controls, by the names that dialog templates give.
#pragma once

#include <memory>
#include <string>

#include "host/win32/window.h"

namespace win32 {

using ControlMaker = std::unique_ptr<WindowObject> (*)(WindowObject* dialog);

template <class Window>
std::unique_ptr<WindowObject> MakeWindow(WindowObject* dialog) {
    return std::make_unique<Window>(dialog);
}

// Makes the class known to dialogs that are made afterwards. Names are equal whatever their case.
void RegisterControlClass(const std::string& name, ControlMaker make);

// Null for a class that is neither registered nor one of Windows' own.
std::unique_ptr<WindowObject> MakeControl(const std::string& className, WindowObject* dialog);

// Tells its dialog of the focus and of changed text.
class EditControl : public WindowObject {
  public:
    using WindowObject::WindowObject;
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    bool TakesTyping() const override { return true; }
};

// A push button, check box or group box, by its style.
class ButtonControl : public WindowObject {
  public:
    using WindowObject::WindowObject;
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;

    bool IsDefault() const { return Type() == BS_DEFPUSHBUTTON; }

  private:
    DWORD Type() const { return style & BS_TYPEMASK; }
    bool IsCheckBox() const { return Type() == BS_CHECKBOX || Type() == BS_AUTOCHECKBOX; }
    void Click();

    bool isChecked_ = false;
};

}  // namespace win32
