// What a spinner is on every system: its value, the edit that shows it, and whom it tells.
#pragma once

#include <custcont.h>

#include <string>

#include "host/sdk/spinner_value.h"

namespace maxhost {

// Made with its window. Lives until the window is destroyed and every GetISpinner is released;
// without the window it still holds its value.
class SpinnerControl : public ISpinnerControl {
  public:
    void AddReference() { ++references_; }
    void Release();
    // Gives up the window's reference.
    void OnWindowDestroyed();
    // A text that was typed into the edit becomes the value, and the dialog is told of a change.
    void TakeTypedText();

    HWND GetHwnd() override { return window_; }
    void Enable(BOOL onOff) override { EnableWindow(window_, onOff); }
    void Disable() override { EnableWindow(window_, FALSE); }
    BOOL IsEnabled() override { return IsWindowEnabled(window_); }

    float GetFVal() override;
    int GetIVal() override;
    void SetAutoScale(BOOL onOff) override { value_.SetAutoScale(onOff != FALSE); }
    void SetScale(float scale) override;
    void SetValue(float value, int notify) override { SetNumber(value, notify); }
    void SetValue(int value, int notify) override { SetNumber(value, notify); }
    void SetLimits(int lowest, int highest, int limitCurValue) override;
    void SetLimits(float lowest, float highest, int limitCurValue) override;
    void LinkToEdit(HWND edit, EditSpinnerType type) override;
    void SetIndeterminate(BOOL onOff) override;
    BOOL IsIndeterminate() override { return isIndeterminate_; }
    void SetResetValue(float value) override { value_.SetResetValue(value); }
    void SetResetValue(int value) override { value_.SetResetValue(value); }

  protected:
    explicit SpinnerControl(HWND window) : window_(window) {}
    ~SpinnerControl() override = default;

    HWND Window() const { return window_; }  // null once it is destroyed
    SpinnerValue& Value() { return value_; }
    void StepAndNotify(int steps);
    // Shows the value and tells the dialog of a change.
    void Changed(bool hasChanged);
    void Notify(UINT message, BOOL flag);

  private:
    // Has the edit call TakeTypedText of that window's spinner when it is left; null: of none.
    virtual void SetLinkedSpinner(HWND edit, HWND spinner) = 0;
    virtual bool IsDragging() const { return false; }

    void SetNumber(double value, int notify);
    void SetLimitsAndShow(double lowest, double highest, int limitCurValue);
    void ShowValue();

    HWND window_;
    HWND edit_ = nullptr;
    SpinnerValue value_;
    std::string shown_;  // what the edit holds unless somebody typed
    int references_ = 1;
    BOOL isIndeterminate_ = FALSE;
};

}  // namespace maxhost
