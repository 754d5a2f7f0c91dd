// A spinner without its looks: its value, the edit that shows it, and the dialog that is told.
#pragma once

#include <custcont.h>

#include <cfloat>
#include <string>

namespace maxhost {

// The number behind a spinner: its limits, its steps, and the text that the linked edit shows.
class SpinnerValue {
  public:
    // The size of one step; anything but a finite number above 0 is ignored.
    void SetScale(float scale);
    // Ignored unless lowest <= highest. Without `limitValue` the value stays where it is until it
    // is set again.
    void SetLimits(double lowest, double highest, bool limitValue);

    // Each says whether the value changed. Values are brought within the limits; NaN is ignored.
    bool Set(double value);
    bool Step(int steps);                   // onto the multiples of what the text can show
    bool SetText(const std::string& text);  // typed: the number it begins with, if there is one

    float AsFloat() const { return static_cast<float>(value_); }
    double AsDouble() const { return value_; }
    // With as many decimals as the scale has (at most 6), zeros at their end left out.
    std::string Text() const;

  private:
    int Decimals() const;

    double value_ = 0.0;
    double lowest_ = -FLT_MAX;
    double highest_ = FLT_MAX;
    float scale_ = 1.0f;
};

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

    float GetFVal() override;
    void SetScale(float scale) override;
    void SetValue(float value, int notify) override { SetNumber(value, notify); }
    void SetValue(int value, int notify) override { SetNumber(value, notify); }
    void SetLimits(int lowest, int highest, int limitCurValue) override;
    void SetLimits(float lowest, float highest, int limitCurValue) override;
    void LinkToEdit(HWND edit, EditSpinnerType type) override;

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
};

}  // namespace maxhost
