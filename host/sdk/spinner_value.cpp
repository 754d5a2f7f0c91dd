#include "host/sdk/spinner_value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <climits>
#include <cmath>
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

}  // namespace

void SpinnerValue::SetType(EditSpinnerType type) {
    isInteger_ = type == EDITTYPE_INT || type == EDITTYPE_POS_INT || type == EDITTYPE_TIME;
    isPositive_ =
        type == EDITTYPE_POS_INT || type == EDITTYPE_POS_FLOAT || type == EDITTYPE_POS_UNIVERSE;
}

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
    value = Limited(isInteger_ ? std::trunc(value) : value);
    if (!isInteger_) {
        value = static_cast<float>(value);
    }
    return std::exchange(value_, value) != value;
}

bool SpinnerValue::Step(int steps) {
    const double step = StepSize();
    const double target = value_ + steps * step;
    const double unit = std::pow(10.0, Decimals());
    const bool isFinerThanText = step * unit < 0.5;
    return Set(isFinerThanText ? target : std::round(target * unit) / unit);
}

bool SpinnerValue::SetText(const std::string& text) {
    const std::optional<double> number = LeadingNumber(text);
    return number && Set(*number);
}

bool SpinnerValue::Reset() {
    return reset_ && Set(*reset_);
}

int SpinnerValue::AsInt() const {
    return static_cast<int>(
        std::clamp(value_, static_cast<double>(INT_MIN), static_cast<double>(INT_MAX)));
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

double SpinnerValue::Limited(double value) const {
    const double lowest = isPositive_ ? std::max(lowest_, 0.0) : lowest_;
    return std::min(std::max(value, lowest), highest_);
}

double SpinnerValue::StepSize() const {
    double step = scale_;
    if (isAutoScaled_ && value_ != 0.0) {
        step = std::max(step, std::pow(10.0, std::floor(std::log10(std::fabs(value_))) - 2.0));
    }
    return isInteger_ ? std::max(1.0, std::round(step)) : step;
}

int SpinnerValue::Decimals() const {
    if (isInteger_) {
        return 0;
    }
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

}  // namespace maxhost
