// The window class "SpinnerControl": two arrows, one above the other. A click on one, or an arrow
// key, changes the value by a step; holding the button repeats; dragging up or down changes it by a
// step a pixel, and a right click meanwhile takes that back; a right click otherwise resets.
#pragma once

#include <windows.h>

#include "host/sdk/spinner_control.h"

namespace maxhost {

void RegisterSpinner(HINSTANCE instance);

class SpinnerWindow final : public SpinnerControl {
  public:
    // Null for a window of another class; the caller owns a reference of what it gets.
    static SpinnerWindow* Get(HWND window);

    void SetKeyBrackets(BOOL onOff) override;

  private:
    enum class Part { none, up, down };

    explicit SpinnerWindow(HWND window) : SpinnerControl(window) {}

    static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam);
    friend void RegisterSpinner(HINSTANCE instance);

    LRESULT Handle(UINT message, WPARAM wParam, LPARAM lParam);
    // Of mouse and keyboard; false: none of these.
    bool HandleInput(UINT message, WPARAM wParam, LPARAM lParam);
    void Paint(HDC context) const;
    RECT RectOf(Part part) const;
    Part PartAt(int y) const;

    void OnButtonDown(int y);
    void OnMouseMove(int y);
    void OnRepeat();
    void EndPress(bool isCancelled);
    void OnRightButton();
    void OnKey(WPARAM key);

    void SetLinkedSpinner(HWND edit, HWND spinner) override;
    bool IsDragging() const override { return isDragging_; }

    BOOL hasBrackets_ = FALSE;

    // While the button is down: `pressed_` is the arrow under it, none in a drag.
    bool isPressed_ = false;
    bool isDragging_ = false;
    Part pressed_ = Part::none;
    int pressY_ = 0;
    double pressValue_ = 0.0;
};

}  // namespace maxhost
