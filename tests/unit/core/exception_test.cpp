#include "core/exception.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

namespace {

using Plinth::Exception;

TEST(Exception, DefaultHasEmptyTexts) {
    const Exception exception;
    EXPECT_STREQ(exception.Description(), "");
    EXPECT_STREQ(exception.FunctionName(), "");
}

TEST(Exception, DescriptionAlone) {
    const Exception exception("it broke");
    EXPECT_STREQ(exception.Description(), "it broke");
    EXPECT_STREQ(exception.FunctionName(), "");
}

TEST(Exception, OwnsCopiesOfItsTexts) {
    char description[] = "it broke";
    char function[] = "Breaker::Break()";
    const Exception exception(description, function);
    description[0] = '#';
    function[0] = '#';
    EXPECT_STREQ(exception.Description(), "it broke");
    EXPECT_STREQ(exception.FunctionName(), "Breaker::Break()");
}

TEST(Exception, NullTextsAreEmpty) {
    const Exception exception(nullptr, nullptr);
    EXPECT_STREQ(exception.Description(), "");
    EXPECT_STREQ(exception.FunctionName(), "");
}

TEST(Exception, CopyDuplicatesBothTexts) {
    const Exception first("it broke", "Break()");
    {
        auto copy = std::make_unique<Exception>(first);
        EXPECT_STREQ(copy->Description(), "it broke");
        EXPECT_STREQ(copy->FunctionName(), "Break()");
        EXPECT_NE(copy->Description(), first.Description());
        EXPECT_NE(copy->FunctionName(), first.FunctionName());
    }
    EXPECT_STREQ(first.Description(), "it broke");
    EXPECT_STREQ(first.FunctionName(), "Break()");
}

TEST(Exception, Assignment) {
    const Exception first("it broke", "Break()");
    Exception second("other");
    second = first;
    EXPECT_STREQ(second.Description(), "it broke");
    EXPECT_STREQ(second.FunctionName(), "Break()");
    const Exception& same = second;
    second = same;
    EXPECT_STREQ(second.Description(), "it broke");
}

TEST(Exception, LongTextsAreWhole) {
    const std::string text(20000, 'x');
    const Exception exception(text.c_str(), text.c_str());
    EXPECT_EQ(exception.Description(), text);
    EXPECT_EQ(exception.FunctionName(), text);
}

TEST(Exception, ThrownAndCaughtByBase) {
    class Derived : public Exception {
      public:
        Derived() : Exception("own", "text") {}
        const char* Description() const override { return "replaced"; }
    };
    try {
        throw Derived();
    } catch (const Exception& exception) {
        EXPECT_STREQ(exception.Description(), "replaced");
        EXPECT_STREQ(exception.FunctionName(), "text");
        return;
    }
    FAIL() << "nothing was caught";
}

}  // namespace
