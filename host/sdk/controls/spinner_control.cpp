#include "host/sdk/controls/spinner_control.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <utility>

namespace maxhost {
namespace {

constexpr int kMostDecimals = 6;

// The number that a text begins with, behind blanks and a sign.
std::optional<double> LeadingNumber(const std::string& text) {
    std::size_t begin = text.find_first_not_of(" \t\r\n");
    if (begin == std::string::npos) {
        return std::nullopt;
    }
    if (text[begin] == '+') {
        ++begin;
    }
    double number = 0.0;
    const auto [end, error] =
        std::from_chars(text.data() + begin, text.data() + text.size(), number);
    if (error != std::errc() || !std::isfinite(number)) {
        return std::nullopt;
    }
    return number;
}

std::string TextOf(HWND edit) {
    std::string text(static_cast<std::size_t>(GetWindowTextLengthA(edit)) + 1, '\0');
    text.resize(
        static_cast<std::size_t>(GetWindowTextA(edit, text.data(), static_cast<int>(text.size()))));
    return text;
}

}  // namespace

// ---------------------------------------------------------------- the value

void SpinnerValue::SetScale(float scale) {
    if (std::isfinite(scale) && scale > 0.0f) {
        scale_ = scale;
    }
}

void SpinnerValue::SetLimits(double lowest, double highest, bool limitValue) {
    if (!(lowest <= highest)) {
        return;
    }
    lowest_ = lowest;
    highest_ = highest;
    if (limitValue) {
        Set(value_);
    }
}

bool SpinnerValue::Set(double value) {
    if (std::isnan(value)) {
        return false;
    }
    value = static_cast<float>(std::min(std::max(value, lowest_), highest_));
    return std::exchange(value_, value) != value;
}

bool SpinnerValue::Step(int steps) {
    const double target = value_ + steps * double{scale_};
    const double unit = std::pow(10.0, Decimals());
    const bool isFinerThanText = scale_ * unit < 0.5;
    return Set(isFinerThanText ? target : std::round(target * unit) / unit);
}

bool SpinnerValue::SetText(const std::string& text) {
    const std::optional<double> number = LeadingNumber(text);
    return number && Set(*number);
}

std::string SpinnerValue::Text() const {
    std::array<char, 512> buffer;  // the greatest float has 39 digits before its point
    const auto [end, error] = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value_,
                                            std::chars_format::fixed, Decimals());
    std::string text(buffer.data(), end);
    if (text.find('.') != std::string::npos) {
        text.erase(text.find_last_not_of('0') + 1);
        if (text.back() == '.') {
            text.pop_back();
        }
    }
    return text == "-0" ? "0" : text;
}

int SpinnerValue::Decimals() const {
    // The scale is a float, whose nearest decimal fraction is meant.
    double digits = scale_;
    int decimals = 0;
    while (decimals < kMostDecimals &&
           std::fabs(digits - std::round(digits)) > 1e-5 * std::fabs(digits)) {
        digits *= 10.0;
        ++decimals;
    }
    return decimals;
}

// ---------------------------------------------------------------- the control

void SpinnerControl::Release() {
    if (--references_ == 0) {
        delete this;
    }
}

void SpinnerControl::OnWindowDestroyed() {
    LinkToEdit(nullptr, EDITTYPE_FLOAT);
    window_ = nullptr;
    Release();
}

float SpinnerControl::GetFVal() {
    TakeTypedText();
    return value_.AsFloat();
}

void SpinnerControl::SetScale(float scale) {
    value_.SetScale(scale);
    ShowValue();
}

void SpinnerControl::SetNumber(double value, int notify) {
    const bool hasChanged = value_.Set(value);
    Changed(hasChanged && notify);
}

void SpinnerControl::SetLimits(int lowest, int highest, int limitCurValue) {
    SetLimitsAndShow(lowest, highest, limitCurValue);
}

void SpinnerControl::SetLimits(float lowest, float highest, int limitCurValue) {
    SetLimitsAndShow(lowest, highest, limitCurValue);
}

void SpinnerControl::SetLimitsAndShow(double lowest, double highest, int limitCurValue) {
    value_.SetLimits(lowest, highest, limitCurValue != FALSE);
    ShowValue();
}

void SpinnerControl::LinkToEdit(HWND edit, EditSpinnerType) {
    if (edit_ != nullptr) {
        SetLinkedSpinner(edit_, nullptr);
    }
    edit_ = edit;
    if (edit_ != nullptr) {
        SetLinkedSpinner(edit_, window_);
        ShowValue();
    }
}

void SpinnerControl::StepAndNotify(int steps) {
    TakeTypedText();
    Changed(value_.Step(steps));
}

void SpinnerControl::TakeTypedText() {
    if (!IsWindow(edit_)) {
        return;
    }
    const std::string text = TextOf(edit_);
    if (text != shown_) {
        Changed(value_.SetText(text));
    }
}

void SpinnerControl::ShowValue() {
    if (edit_ == nullptr) {
        return;
    }
    shown_ = value_.Text();
    if (TextOf(edit_) != shown_) {
        SetWindowTextA(edit_, shown_.c_str());
    }
}

void SpinnerControl::Changed(bool hasChanged) {
    ShowValue();
    if (hasChanged) {
        Notify(CC_SPINNER_CHANGE, IsDragging() ? TRUE : FALSE);
    }
}

void SpinnerControl::Notify(UINT message, BOOL flag) {
    if (window_ == nullptr) {
        return;
    }
    SendMessageA(GetParent(window_), message, MAKEWPARAM(GetDlgCtrlID(window_), flag),
                 reinterpret_cast<LPARAM>(static_cast<ISpinnerControl*>(this)));
}

}  // namespace maxhost

void ReleaseISpinner(ISpinnerControl* spinner) {
    if (spinner != nullptr) {
        static_cast<maxhost::SpinnerControl*>(spinner)->Release();
    }
}
