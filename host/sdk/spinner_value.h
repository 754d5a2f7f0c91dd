// The number behind a spinner: its limits, its steps, and the text that the linked edit shows.
// What a spinner looks like and whom it tells is the control's business.
#pragma once

#include <custcont.h>

#include <cfloat>
#include <optional>
#include <string>

namespace maxhost {

class SpinnerValue {
  public:
    // Integers for the INT and TIME types; the POS types never go below 0.
    void SetType(EditSpinnerType type);
    // The size of one step; anything but a finite number above 0 is ignored.
    void SetScale(float scale);
    // With it a step is at least a hundredth of the value's power of ten: 1 at 100 to 999.
    void SetAutoScale(bool on) { isAutoScaled_ = on; }
    // Ignored unless lowest <= highest. Without `limitValue` the value stays where it is until it
    // is set again.
    void SetLimits(double lowest, double highest, bool limitValue);
    void SetResetValue(double value) { reset_ = value; }

    // Each says whether the value changed. Values are brought within the limits; NaN is ignored.
    bool Set(double value);
    bool Step(int steps);                   // onto the multiples of what the text can show
    bool SetText(const std::string& text);  // typed: the number it begins with, if there is one
    bool Reset();                           // to the reset value, if there is one

    float AsFloat() const { return static_cast<float>(value_); }
    double AsDouble() const { return value_; }
    int AsInt() const;  // towards 0, within an int's range
    // With as many decimals as the scale has (at most 6), zeros at their end left out.
    std::string Text() const;

  private:
    double Limited(double value) const;
    double StepSize() const;
    int Decimals() const;

    double value_ = 0.0;
    double lowest_ = -FLT_MAX;
    double highest_ = FLT_MAX;
    float scale_ = 1.0f;
    std::optional<double> reset_;
    bool isInteger_ = false;
    bool isPositive_ = false;
    bool isAutoScaled_ = false;
};

}  // namespace maxhost
