// The window class "SpinnerControl": two arrows, one above the other. A click on one, or an arrow
// key, changes the value by a step; holding the button repeats; dragging up or down changes it by a
// step a pixel, and a right click meanwhile takes that back; a right click otherwise resets.
#pragma once

#include <custcont.h>
#include <windows.h>

#include <string>

#include "host/sdk/spinner_value.h"

namespace maxhost {

void RegisterSpinner(HINSTANCE instance);

// Made with its window. Lives until the window is destroyed and every GetISpinner is released;
// without the window it still holds its value.
class SpinnerWindow final : public ISpinnerControl {
  public:
    // Null for a window of another class; the caller owns a reference of what it gets.
    static SpinnerWindow* Get(HWND window);
    void Release();

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
    void SetKeyBrackets(BOOL onOff) override;

  private:
    enum class Part { none, up, down };

    explicit SpinnerWindow(HWND window) : window_(window) {}

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    friend void RegisterSpinner(HINSTANCE instance);

    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    void OnDestroyed();
    void Paint(HDC context) const;
    RECT RectOf(Part part) const;
    Part PartAt(int y) const;

    void OnButtonDown(int y);
    void OnMouseMove(int y);
    void OnRepeat();
    void EndPress(bool isCancelled);
    void OnRightButton();
    void OnKey(WPARAM key);

    void SetNumber(double value, int notify);
    void SetLimitsAndShow(double lowest, double highest, int limitCurValue);
    void StepAndNotify(int steps);
    void TakeTypedText();
    void ShowValue();
    void Changed(bool hasChanged);  // shows the value and tells the dialog of a change
    void Notify(UINT message, BOOL flag);

    HWND window_;
    HWND edit_ = nullptr;
    SpinnerValue value_;
    std::string shown_;  // what the edit holds unless somebody typed
    int references_ = 1;
    BOOL isIndeterminate_ = FALSE;
    BOOL hasBrackets_ = FALSE;

    // While the button is down: `pressed_` is the arrow under it, none in a drag.
    bool isPressed_ = false;
    bool isDragging_ = false;
    Part pressed_ = Part::none;
    int pressY_ = 0;
    double pressValue_ = 0.0;
};

}  // namespace maxhost
