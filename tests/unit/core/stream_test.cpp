#include "core/stream.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <limits>
#include <string>

#include "core/exception.h"

namespace {

using Plinth::Stream;
using Plinth::String;

// All bytes in memory; a read that the rest cannot serve whole fails.
class MemoryStream : public Stream {
  public:
    MemoryStream() = default;
    explicit MemoryStream(std::string content) : bytes(std::move(content)) {}

    size_t Read(void* buffer, size_t size) override {
        if (bytes.size() - position < size) {
            return 0;
        }
        std::memcpy(buffer, bytes.data() + position, size);
        position += size;
        return size;
    }
    size_t Write(const void* buffer, size_t size) override {
        bytes.append(static_cast<const char*>(buffer), size);
        return size;
    }

    std::string bytes;
    size_t position = 0;
};

template <class Value>
std::string Written(Value value) {
    MemoryStream stream;
    Stream& result = stream << value;
    EXPECT_EQ(&result, &stream);
    return stream.bytes;
}

template <class Value>
Value ReadFrom(const std::string& bytes, Value before) {
    MemoryStream stream(bytes);
    Stream& result = stream >> before;
    EXPECT_EQ(&result, &stream);
    return before;
}

std::string Bytes(std::initializer_list<int> values) {
    std::string bytes;
    for (int value : values) {
        bytes += static_cast<char>(value);
    }
    return bytes;
}

// ---------------------------------------------------------------- the base class

TEST(Stream, BaseTransfersNothingAndAnswersOne) {
    Stream stream;
    int value = 7;
    EXPECT_EQ(stream.Read(&value, sizeof(value)), 1u);
    EXPECT_EQ(stream.Write(&value, sizeof(value)), 1u);
    EXPECT_EQ(value, 7);
    bool flag = true;
    double real = 1.5;
    long number = -3;
    stream >> value >> flag >> real >> number;
    EXPECT_EQ(value, 7);
    EXPECT_TRUE(flag);
    EXPECT_EQ(real, 1.5);
    EXPECT_EQ(number, -3);
    long largest = std::numeric_limits<long>::max();
    unsigned long largestUnsigned = std::numeric_limits<unsigned long>::max();
    stream >> largest >> largestUnsigned;
    EXPECT_EQ(largest, std::numeric_limits<long>::max());
    EXPECT_EQ(largestUnsigned, std::numeric_limits<unsigned long>::max());
    String text("abc");
    stream >> text;
    EXPECT_STREQ(text.Text(), "abc");
}

// ---------------------------------------------------------------- writing

TEST(StreamWrite, Texts) {
    EXPECT_EQ(Written("abc"), std::string("abc\0", 4));
    EXPECT_EQ(Written(""), std::string(1, '\0'));
    EXPECT_EQ(Written(static_cast<const char*>(nullptr)), std::string(1, '\0'));
    MemoryStream stream;
    stream << String("abc") << String("") << String();
    EXPECT_EQ(stream.bytes, std::string("abc\0\0\0", 6));
}

TEST(StreamWrite, AStringWithoutDataIsOneNul) {
    String lost("abc");
    lost.Assign(nullptr);
    MemoryStream stream;
    stream << lost;
    EXPECT_EQ(stream.bytes, std::string(1, '\0'));
}

TEST(StreamWrite, AStringGoesWhole) {
    String text;
    text.Assign("a\0b", 3);
    MemoryStream stream;
    stream << text;
    EXPECT_EQ(stream.bytes, std::string("a\0b\0", 4));
}

TEST(StreamWrite, Numbers) {
    EXPECT_EQ(Written(1.0), Bytes({0, 0, 0, 0, 0, 0, 0xf0, 0x3f}));
    EXPECT_EQ(Written(1.0f), Bytes({0, 0, 0x80, 0x3f}));
    EXPECT_EQ(Written(-2), Bytes({0xfe, 0xff, 0xff, 0xff}));
    EXPECT_EQ(Written(0x80000001u), Bytes({1, 0, 0, 0x80}));
    EXPECT_EQ(Written(static_cast<short>(-2)), Bytes({0xfe, 0xff}));
    EXPECT_EQ(Written(static_cast<unsigned short>(0x8001)), Bytes({1, 0x80}));
    EXPECT_EQ(Written('a'), "a");
    EXPECT_EQ(Written(static_cast<unsigned char>(0xff)), Bytes({0xff}));
    EXPECT_EQ(Written(true), Bytes({1}));
    EXPECT_EQ(Written(false), Bytes({0}));
}

TEST(StreamWrite, LongHasFourBytesEverywhere) {
    EXPECT_EQ(Written(-2L), Bytes({0xfe, 0xff, 0xff, 0xff}));
    EXPECT_EQ(Written(0x80000001UL), Bytes({1, 0, 0, 0x80}));
    EXPECT_EQ(Written(std::numeric_limits<long>::max()),
              Bytes({0xff, 0xff, 0xff, sizeof(long) == 4 ? 0x7f : 0xff}));
}

TEST(StreamWrite, ValuesFollowEachOtherWithoutPadding) {
    MemoryStream stream;
    stream << 'x' << 1 << static_cast<short>(2) << true << "y";
    EXPECT_EQ(stream.bytes, Bytes({'x', 1, 0, 0, 0, 2, 0, 1, 'y', 0}));
}

// ---------------------------------------------------------------- reading

TEST(StreamRead, Numbers) {
    EXPECT_EQ(ReadFrom(Bytes({0, 0, 0, 0, 0, 0, 0xf0, 0x3f}), 0.0), 1.0);
    EXPECT_EQ(ReadFrom(Bytes({0, 0, 0x80, 0x3f}), 0.0f), 1.0f);
    EXPECT_EQ(ReadFrom(Bytes({0xfe, 0xff, 0xff, 0xff}), 0), -2);
    EXPECT_EQ(ReadFrom(Bytes({1, 0, 0, 0x80}), 0u), 0x80000001u);
    EXPECT_EQ(ReadFrom(Bytes({0xfe, 0xff}), static_cast<short>(0)), -2);
    EXPECT_EQ(ReadFrom(Bytes({1, 0x80}), static_cast<unsigned short>(0)), 0x8001);
    EXPECT_EQ(ReadFrom("a", 'x'), 'a');
    EXPECT_EQ(ReadFrom(Bytes({0xff}), static_cast<unsigned char>(0)), 0xff);
    EXPECT_EQ(ReadFrom(Bytes({1}), false), true);
    EXPECT_EQ(ReadFrom(Bytes({0}), true), false);
    EXPECT_EQ(ReadFrom(Bytes({0x80}), false), true);
}

TEST(StreamRead, LongHasFourBytesEverywhere) {
    EXPECT_EQ(ReadFrom(Bytes({0xfe, 0xff, 0xff, 0xff, 9}), 0L), -2L);
    EXPECT_EQ(ReadFrom(Bytes({1, 0, 0, 0x80, 9}), 0UL), 0x80000001UL);
    EXPECT_EQ(ReadFrom(Bytes({5, 0, 0, 0}), std::numeric_limits<long>::max()), 5L);
    EXPECT_EQ(ReadFrom(Bytes({5, 0, 0, 0}), std::numeric_limits<unsigned long>::max()), 5UL);
}

TEST(StreamRead, ValuesThatAreNotThereStay) {
    const std::string none;
    EXPECT_EQ(ReadFrom(none, 1.5), 1.5);
    EXPECT_EQ(ReadFrom(none, 1.5f), 1.5f);
    EXPECT_EQ(ReadFrom(none, -7), -7);
    EXPECT_EQ(ReadFrom(none, 7u), 7u);
    EXPECT_EQ(ReadFrom(none, std::numeric_limits<long>::max()), std::numeric_limits<long>::max());
    EXPECT_EQ(ReadFrom(none, std::numeric_limits<unsigned long>::max()),
              std::numeric_limits<unsigned long>::max());
    EXPECT_EQ(ReadFrom(none, static_cast<short>(7)), 7);
    EXPECT_EQ(ReadFrom(none, static_cast<unsigned short>(7)), 7);
    EXPECT_EQ(ReadFrom(none, 'x'), 'x');
    EXPECT_EQ(ReadFrom(none, static_cast<unsigned char>(7)), 7);
    EXPECT_EQ(ReadFrom(none, true), true);
    EXPECT_EQ(ReadFrom(std::string("abc"), 7), 7);
}

// A truth value may hold any byte before it is read.
TEST(StreamRead, IntoATruthValueThatHoldsNone) {
    alignas(bool) unsigned char storage = 0xbe;
    bool& flag = *reinterpret_cast<bool*>(&storage);
    MemoryStream stream(Bytes({0}));
    stream >> flag;
    EXPECT_EQ(storage, 0);
}

TEST(StreamRead, StringUpToTheNul) {
    MemoryStream stream(std::string("abc\0\0de\0", 8));
    String first;
    String second("kept");
    String third("c");
    stream >> first >> second >> third;
    EXPECT_STREQ(first.Data(), "abc");
    EXPECT_STREQ(second.Data(), "kept");
    EXPECT_STREQ(third.Data(), "cde");
    EXPECT_EQ(stream.position, 8u);
}

TEST(StreamRead, WhatWasWrittenComesBack) {
    MemoryStream stream;
    stream << String("halden") << -1.25 << 3.5f << -4 << 5u << -6L << 7UL << static_cast<short>(-8)
           << static_cast<unsigned short>(9) << 'c' << static_cast<unsigned char>(200) << true;
    String text;
    double f64 = 0;
    float f32 = 0;
    int i32 = 0;
    unsigned u32 = 0;
    long signedLong = 0;
    unsigned long unsignedLong = 0;
    short i16 = 0;
    unsigned short u16 = 0;
    char character = 0;
    unsigned char u8 = 0;
    bool flag = false;
    stream >> text >> f64 >> f32 >> i32 >> u32 >> signedLong >> unsignedLong >> i16 >> u16 >>
        character >> u8 >> flag;
    EXPECT_STREQ(text.Data(), "halden");
    EXPECT_EQ(f64, -1.25);
    EXPECT_EQ(f32, 3.5f);
    EXPECT_EQ(i32, -4);
    EXPECT_EQ(u32, 5u);
    EXPECT_EQ(signedLong, -6);
    EXPECT_EQ(unsignedLong, 7u);
    EXPECT_EQ(i16, -8);
    EXPECT_EQ(u16, 9);
    EXPECT_EQ(character, 'c');
    EXPECT_EQ(u8, 200);
    EXPECT_TRUE(flag);
    EXPECT_EQ(stream.position, stream.bytes.size());
}

// ---------------------------------------------------------------- the failed string read

const char kDescription[] =
    "String cannot be read from stream, something went wrong while reading.\nMight be because "
    "we're reading past the end of the stream or something...";

TEST(StreamReadFailure, ThrowsWithWhatWasReadAppended) {
    MemoryStream stream("xy");
    String text("a");
    try {
        stream >> text;
        FAIL() << "nothing was thrown";
    } catch (const Plinth::Exception& exception) {
        EXPECT_STREQ(exception.Description(), kDescription);
        EXPECT_STREQ(exception.FunctionName(), "Stream::operator>>(String &text)()");
    }
    EXPECT_STREQ(text.Data(), "axy");
    EXPECT_EQ(text.Length(), 3);
}

TEST(StreamReadFailure, FunctionTextCanBeReplaced) {
    const char* const former = Plinth::streamReadFunction;
    Plinth::streamReadFunction = "elsewhere";
    MemoryStream stream;
    String text;
    try {
        stream >> text;
        ADD_FAILURE() << "nothing was thrown";
    } catch (const Plinth::Exception& exception) {
        EXPECT_STREQ(exception.FunctionName(), "elsewhere");
    }
    Plinth::streamReadFunction = former;
    EXPECT_EQ(text.Data(), nullptr);
}

}  // namespace
