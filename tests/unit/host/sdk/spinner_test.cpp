#include "host/sdk/controls/spinner_control.h"

#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <string>
#include <utility>
#include <vector>

namespace maxhost {
namespace {

// As the options dialog sets its spinner up.
SpinnerValue Threshold() {
    SpinnerValue value;
    value.SetLimits(0.0f, 0.9999f, true);
    value.SetScale(0.0001f);
    value.Set(0.075f);
    return value;
}

TEST(SpinnerValue, ShowsAsManyDecimalsAsTheScaleHas) {
    SpinnerValue value;
    value.Set(1.23456789);
    const std::vector<std::pair<float, std::string>> texts = {
        {1.0f, "1"},         {0.5f, "1.2"}, {0.1f, "1.2"},       {0.25f, "1.23"},
        {0.0001f, "1.2346"}, {10.0f, "1"},  {1e-6f, "1.234568"}, {1e-9f, "1.234568"},
        {0.0003f, "1.2346"}, {2.5f, "1.2"},
    };
    for (const auto& [scale, text] : texts) {
        value.SetScale(scale);
        EXPECT_EQ(value.Text(), text) << scale;
    }
}

TEST(SpinnerValue, LeavesOutZerosAtTheEnd) {
    SpinnerValue value = Threshold();
    EXPECT_EQ(value.Text(), "0.075");
    value.Set(0.5);
    EXPECT_EQ(value.Text(), "0.5");
    value.Set(0.0);
    EXPECT_EQ(value.Text(), "0");
    SpinnerValue free;
    free.SetScale(0.1f);
    free.Set(-0.01);
    EXPECT_EQ(free.Text(), "0") << "no minus before nothing";
    free.Set(100.0);
    EXPECT_EQ(free.Text(), "100");
    free.Set(FLT_MAX);
    EXPECT_EQ(free.Text(), "340282346638528859811704183484516925440");
}

TEST(SpinnerValue, ShowingDoesNotRoundTheValue) {
    SpinnerValue value = Threshold();
    value.Set(0.12345678f);
    EXPECT_EQ(value.Text(), "0.1235");
    EXPECT_EQ(value.AsFloat(), 0.12345678f);
}

TEST(SpinnerValue, StaysWithinItsLimits) {
    SpinnerValue value = Threshold();
    EXPECT_TRUE(value.Set(1.0));
    EXPECT_EQ(value.AsFloat(), 0.9999f);
    EXPECT_FALSE(value.Set(2.0));
    EXPECT_FALSE(value.Step(1));
    EXPECT_TRUE(value.SetText("-3"));
    EXPECT_EQ(value.AsFloat(), 0.0f);
    EXPECT_TRUE(value.Set(std::numeric_limits<double>::infinity()));
    EXPECT_EQ(value.AsFloat(), 0.9999f);
    EXPECT_FALSE(value.Set(std::nan("")));
    value.SetLimits(0.5, 0.25, true);
    EXPECT_EQ(value.AsFloat(), 0.9999f) << "limits the wrong way round are none";
    value.SetLimits(0.0, 0.25, false);
    EXPECT_EQ(value.AsFloat(), 0.9999f);
    value.SetLimits(0.0, 0.25, true);
    EXPECT_EQ(value.AsFloat(), 0.25f);
}

TEST(SpinnerValue, TakesTheNumberThatATextBeginsWith) {
    const std::vector<std::pair<std::string, float>> texts = {
        {"0.25", 0.25f},   {" .5", 0.5f},   {"+0.1", 0.1f},  {"0.3x", 0.3f},
        {"1e-2", 0.01f},   {"0,9", 0.0f},   {"abc", 0.075f}, {"", 0.075f},
        {"  ", 0.075f},    {"nan", 0.075f}, {"inf", 0.075f}, {"1e999", 0.075f},
        {"0.075", 0.075f}, {"-0.5", 0.0f},  {"7", 0.9999f},  {"+", 0.075f},
    };
    for (const auto& [text, expected] : texts) {
        SpinnerValue value = Threshold();
        EXPECT_EQ(value.SetText(text), expected != 0.075f) << text;
        EXPECT_EQ(value.AsFloat(), expected) << text;
    }
}

TEST(SpinnerValue, StepsGoOverTheNumbersThatItShows) {
    SpinnerValue value = Threshold();
    EXPECT_TRUE(value.Step(1));
    EXPECT_EQ(value.AsFloat(), 0.0751f);
    value.Step(-51);
    EXPECT_EQ(value.AsFloat(), 0.07f);
    value.Set(0.12345678f);
    value.Step(1);
    EXPECT_EQ(value.AsFloat(), 0.1236f);
    for (int i = 0; i < 1000; ++i) {
        value.Step(1);
    }
    EXPECT_EQ(value.AsFloat(), 0.2236f);
    SpinnerValue fine;
    fine.SetScale(1e-9f);
    fine.Step(1);
    EXPECT_EQ(fine.AsFloat(), 1e-9f) << "steps too small to be shown are still taken";
}

TEST(SpinnerValue, ScaleIsAFiniteNumberAboveZero) {
    SpinnerValue value = Threshold();
    for (const float scale : {0.0f, -1.0f, NAN, INFINITY}) {
        value.SetScale(scale);
        EXPECT_EQ(value.Text(), "0.075");
    }
}

}  // namespace
}  // namespace maxhost
