#include "core/string.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "wrapped_calls.h"

namespace {

using Plinth::String;

std::string TextOf(const String& text) {
    return text.Data() != nullptr ? std::string(text.Data(), text.Length()) : "(null)";
}

// Checks the rules that every string with storage keeps.
void ExpectSound(const String& text) {
    if (text.Data() != nullptr) {
        EXPECT_LE(text.Length(), text.MaxLength());
        EXPECT_EQ(text.Data()[text.Length()], '\0');
    }
}

void ExpectNull(const String& text) {
    EXPECT_EQ(text.Data(), nullptr);
    EXPECT_EQ(text.Length(), 0);
    EXPECT_EQ(text.MaxLength(), 0);
}

// ---------------------------------------------------------------- construction

TEST(StringConstruction, DefaultHasNullData) {
    const String text;
    ExpectNull(text);
    EXPECT_STREQ(text.Text(), "");
}

TEST(StringConstruction, EmptyTextHasStorage) {
    const String text("");
    ASSERT_NE(text.Data(), nullptr);
    EXPECT_EQ(text.Length(), 0);
    EXPECT_EQ(text.MaxLength(), 0);
    EXPECT_EQ(text.Data()[0], '\0');
}

TEST(StringConstruction, TextHasExactCapacity) {
    const String text("halden");
    EXPECT_EQ(TextOf(text), "halden");
    EXPECT_EQ(text.Length(), 6);
    EXPECT_EQ(text.MaxLength(), 6);
    ExpectSound(text);
}

TEST(StringConstruction, NullTextGivesNullData) {
    ExpectNull(String(static_cast<const char*>(nullptr)));
}

TEST(StringConstruction, OneCharacter) {
    const String text('x');
    EXPECT_EQ(TextOf(text), "x");
    EXPECT_EQ(text.MaxLength(), 1);
    ExpectSound(text);
}

TEST(StringConstruction, CopyHasOwnStorageOfExactCapacity) {
    String source("abc");
    source.Resize(3, 20);
    String copy(source);
    EXPECT_EQ(TextOf(copy), "abc");
    EXPECT_EQ(copy.MaxLength(), 3);
    copy.CharAddress(0)[0] = 'X';
    EXPECT_EQ(TextOf(source), "abc");
}

TEST(StringConstruction, CopyOfNullDataHasNullData) {
    ExpectNull(String(String()));
    String lost("abc");
    lost.Assign(nullptr);
    ExpectNull(String(lost));
}

TEST(StringConstruction, CopyKeepsInnerNul) {
    String source;
    source.Assign("a\0b", 3);
    const String copy(source);
    EXPECT_EQ(TextOf(copy), std::string("a\0b", 3));
}

TEST(StringConstruction, TwoPieces) {
    const String line("Exporting mesh", 9, "\n", 1);
    EXPECT_EQ(TextOf(line), "Exporting\n");
    EXPECT_EQ(line.MaxLength(), 10);
    ExpectSound(line);
    EXPECT_EQ(TextOf(String(nullptr, 5, "ab", 2)), "ab");
    EXPECT_EQ(TextOf(String("ab", 2, nullptr, 5)), "ab");
    EXPECT_EQ(TextOf(String("ab", -1, "cd", 0)), "");
}

// ---------------------------------------------------------------- storage

TEST(StringResize, GrowsToExactlyWhatIsAsked) {
    String text("abc");
    text.Resize(5);
    EXPECT_EQ(text.Length(), 5);
    EXPECT_EQ(text.MaxLength(), 5);
    EXPECT_EQ(std::string(text.Data(), 3), "abc");
    ExpectSound(text);
}

TEST(StringResize, ExtraGoesIntoTheCapacity) {
    String text("abc");
    text.Resize(4, 10);
    EXPECT_EQ(text.Length(), 4);
    EXPECT_EQ(text.MaxLength(), 14);
    ExpectSound(text);
}

TEST(StringResize, WithinCapacityOnlyTheLengthChanges) {
    String text("abcdef");
    const char* const storage = text.Data();
    text.Resize(2);
    EXPECT_EQ(text.Data(), storage);
    EXPECT_EQ(text.MaxLength(), 6);
    EXPECT_EQ(TextOf(text), "ab");
    const long before = ReallocationCount();
    text.Resize(2, 4);
    EXPECT_EQ(text.MaxLength(), 6);
    EXPECT_EQ(ReallocationCount(), before);
    text.Resize(2, 5);
    EXPECT_EQ(text.MaxLength(), 7);
    ExpectSound(text);
}

TEST(StringResize, GivesStorageToAStringWithout) {
    String text;
    text.Resize(0);
    ASSERT_NE(text.Data(), nullptr);
    EXPECT_EQ(TextOf(text), "");
    text.Resize(-3, -8);
    EXPECT_EQ(text.Length(), 0);
    ExpectSound(text);
}

TEST(StringClear, KeepsOrFreesStorage) {
    String text("abc");
    text.Clear(true);
    ASSERT_NE(text.Data(), nullptr);
    EXPECT_EQ(text.Length(), 0);
    EXPECT_EQ(text.MaxLength(), 3);
    EXPECT_EQ(text.Data()[0], '\0');
    text.Clear(false);
    ExpectNull(text);
    text.Clear(true);
    text.Clear(false);
    ExpectNull(text);
}

TEST(StringAccess, CharactersByIndex) {
    String text("abc");
    EXPECT_EQ(text.CharAt(1), 'b');
    *text.CharAddress(1) = 'B';
    EXPECT_EQ(TextOf(text), "aBc");
    const String& constant = text;
    EXPECT_EQ(constant.CharAddress(2), text.Data() + 2);
    const String empty;
    EXPECT_EQ(empty.CharAt(0), '\0');
    EXPECT_EQ(empty.CharAddress(0), nullptr);
}

// ---------------------------------------------------------------- assignment

TEST(StringAssign, ReplacesTextAndStorage) {
    String text("a long text");
    text.Assign("abcdef", 3);
    EXPECT_EQ(TextOf(text), "abc");
    EXPECT_EQ(text.MaxLength(), 3);
    text.Assign("defg");
    EXPECT_EQ(TextOf(text), "defg");
    EXPECT_EQ(text.MaxLength(), 4);
    text.Assign("x", -1);
    EXPECT_EQ(TextOf(text), "");
    ExpectSound(text);
}

TEST(StringAssign, NullLeavesLengthAndCapacity) {
    String text("abc");
    text.Assign(nullptr, 2);
    EXPECT_EQ(text.Data(), nullptr);
    EXPECT_EQ(text.Length(), 3);
    EXPECT_EQ(text.MaxLength(), 3);
}

TEST(StringAssign, OwnTextAndPartOfIt) {
    String text("abcdef");
    text.Assign(text.Data() + 2, 3);
    EXPECT_EQ(TextOf(text), "cde");
    text.Assign(text.Data());
    EXPECT_EQ(TextOf(text), "cde");
    String& same = text;
    text = same;
    EXPECT_EQ(TextOf(text), "cde");
    text = text.Data() + 1;
    EXPECT_EQ(TextOf(text), "de");
}

TEST(StringAssign, Operators) {
    String text("abc");
    text = String("defgh");
    EXPECT_EQ(TextOf(text), "defgh");
    text = "ij";
    EXPECT_EQ(TextOf(text), "ij");
    text = String();
    ExpectNull(text);
}

// ---------------------------------------------------------------- concatenation

TEST(StringAppend, GrowsExactly) {
    String text("abc");
    text.Append("defg", 2);
    EXPECT_EQ(TextOf(text), "abcde");
    EXPECT_EQ(text.MaxLength(), 5);
    text.Append("fg");
    EXPECT_EQ(text.MaxLength(), 7);
    text.Append(String("h"));
    EXPECT_EQ(TextOf(text), "abcdefgh");
    text.Append('i');
    EXPECT_EQ(TextOf(text), "abcdefghi");
    EXPECT_EQ(text.MaxLength(), 9);
    ExpectSound(text);
}

TEST(StringAppend, UsesCapacityThatIsThere) {
    String text("abcdef");
    text.Resize(2);
    text.Append("xyz", 3);
    EXPECT_EQ(TextOf(text), "abxyz");
    EXPECT_EQ(text.MaxLength(), 6);
    text.Append('!');
    EXPECT_EQ(TextOf(text), "abxyz!");
    EXPECT_EQ(text.MaxLength(), 6);
    ExpectSound(text);
}

TEST(StringAppend, OneByOneReallocatesEachTime) {
    String text;
    const long before = ReallocationCount();
    for (int i = 0; i < 100; ++i) {
        text.Append('a');
        EXPECT_EQ(text.MaxLength(), i + 1);
    }
    EXPECT_EQ(ReallocationCount() - before, 100);
    EXPECT_EQ(TextOf(text), std::string(100, 'a'));
}

TEST(StringAppend, ItselfAndAPartOfItself) {
    String text("abc");
    text.Append(text);
    EXPECT_EQ(TextOf(text), "abcabc");
    text.Append(text.Data() + 1, 2);
    EXPECT_EQ(TextOf(text), "abcabcbc");
    text.Append(text.Data());
    EXPECT_EQ(TextOf(text), "abcabcbcabcabcbc");
    text.Append(text.Data() + text.Length());
    EXPECT_EQ(TextOf(text), "abcabcbcabcabcbc");
    ExpectSound(text);
}

TEST(StringAppend, OwnTextBehindTheLength) {
    String text("abcdef");
    text.Resize(2);
    text.Append(text.Data() + 3, 3);
    EXPECT_EQ(TextOf(text), "abdef");
    EXPECT_EQ(text.MaxLength(), 6);
    ExpectSound(text);
}

TEST(StringAppend, ItselfManyTimesThroughMovingStorage) {
    String text("0123456789");
    std::string expected("0123456789");
    for (int i = 0; i < 14; ++i) {
        text.Append(text.Data(), text.Length());
        expected += expected;
    }
    EXPECT_EQ(TextOf(text), expected);
}

TEST(StringAppend, ToAndFromStringsWithoutData) {
    String text;
    text.Append("ab");
    EXPECT_EQ(TextOf(text), "ab");
    text.Append(String());
    text.Append(static_cast<const char*>(nullptr));
    text.Append(nullptr, 3);
    text.Append("x", -1);
    EXPECT_EQ(TextOf(text), "ab");
    String lost("abc");
    lost.Assign(nullptr);
    lost.Append("de");
    EXPECT_EQ(TextOf(lost), "de");
    ExpectSound(lost);
}

TEST(StringConcatenation, LeavesTheLeftOperand) {
    const String left("ab");
    EXPECT_EQ(TextOf(left + String("cd")), "abcd");
    EXPECT_EQ(TextOf(left + "cd"), "abcd");
    EXPECT_EQ(TextOf(left + 'c'), "abc");
    EXPECT_EQ(TextOf(left + left), "abab");
    EXPECT_EQ(TextOf(left), "ab");
    EXPECT_EQ(TextOf(String() + "cd"), "cd");
    EXPECT_EQ(TextOf(left + String()), "ab");
}

// ---------------------------------------------------------------- formatting

TEST(StringFormat, ShortTextHasCapacity2048) {
    String text("former");
    text.Format("Wire Color %d", 7);
    EXPECT_EQ(TextOf(text), "Wire Color 7");
    EXPECT_EQ(text.MaxLength(), 2048);
    ExpectSound(text);
    text.Format("%s", "");
    EXPECT_EQ(TextOf(text), "");
    EXPECT_EQ(text.MaxLength(), 2048);
}

TEST(StringFormat, KeepsALargerCapacity) {
    String text;
    text.Resize(5000);
    text.Format("%d", 1);
    EXPECT_EQ(text.MaxLength(), 5000);
}

TEST(StringFormat, LongTextIsWhole) {
    for (int length : {2047, 2048, 2049, 10000}) {
        const std::string expected(length, 'x');
        String text;
        text.Format("%s", expected.c_str());
        EXPECT_EQ(TextOf(text), expected) << length;
        ExpectSound(text);
    }
}

TEST(StringFormat, OwnTextAsArgument) {
    String text("abc");
    text.Format("<%s|%s>", text.Data(), text.Data());
    EXPECT_EQ(TextOf(text), "<abc|abc>");
    text.FormatAdd("[%s]", text.Data());
    EXPECT_EQ(TextOf(text), "<abc|abc>[<abc|abc>]");
}

TEST(StringFormatAdd, AppendsAndGrowsExactly) {
    String text("abc");
    text.FormatAdd("%d-%s", 12, "x");
    EXPECT_EQ(TextOf(text), "abc12-x");
    EXPECT_EQ(text.MaxLength(), 7);
    ExpectSound(text);
    String empty;
    empty.FormatAdd("%.2f", 1.5);
    EXPECT_EQ(TextOf(empty), "1.50");
}

TEST(StringFormatAdd, KeepsCapacityThatIsThere) {
    String text;
    text.Format("%s", "abc");
    text.FormatAdd("%s", "def");
    EXPECT_EQ(TextOf(text), "abcdef");
    EXPECT_EQ(text.MaxLength(), 2048);
    const std::string longText(5000, 'y');
    text.FormatAdd("%s", longText.c_str());
    EXPECT_EQ(TextOf(text), "abcdef" + longText);
    EXPECT_EQ(text.MaxLength(), 5006);
}

// ---------------------------------------------------------------- comparison

TEST(StringEquality, CaseSensitive) {
    EXPECT_TRUE(String("abc") == String("abc"));
    EXPECT_FALSE(String("abc") == String("abC"));
    EXPECT_FALSE(String("abc") == String("abcd"));
    EXPECT_TRUE(String("abc") != String("abd"));
    EXPECT_TRUE(String("abc") == "abc");
    EXPECT_TRUE(String("abc") != "ab");
    EXPECT_TRUE(String() == String(""));
    EXPECT_TRUE(String() == "");
    EXPECT_TRUE(String("") == static_cast<const char*>(nullptr));
}

TEST(StringEquality, SeesBehindAnInnerNul) {
    String a;
    String b;
    a.Assign("x\0a", 3);
    b.Assign("x\0b", 3);
    EXPECT_FALSE(a == b);
    EXPECT_FALSE(a == "x");
}

TEST(StringEquality, IgnoringCase) {
    EXPECT_TRUE(String("Footsteps").EqualsNoCase("fOOTSTEPS"));
    EXPECT_FALSE(String("Footsteps").EqualsNoCase("Footstep"));
    EXPECT_FALSE(String("a").EqualsNoCase("b"));
    EXPECT_TRUE(String().EqualsNoCase(""));
}

TEST(StringCompare, ThreeWayByUnsignedBytes) {
    EXPECT_EQ(String("abc").Compare("abd"), -1);
    EXPECT_EQ(String("abd").Compare("abc"), 1);
    EXPECT_EQ(String("abc").Compare("abc"), 0);
    EXPECT_EQ(String("ab").Compare("abc"), -1);
    EXPECT_EQ(String("abc").Compare("ab"), 1);
    EXPECT_EQ(String("a\x80").Compare("a\x7f"), 1);
    EXPECT_EQ(String("\xff").Compare("a"), 1);
    EXPECT_EQ(String().Compare(""), 0);
    EXPECT_EQ(String().Compare("a"), -1);
}

// ---------------------------------------------------------------- search and removal

TEST(StringFind, FirstOccurrence) {
    const String text("one two one");
    EXPECT_EQ(text.Find("one"), 0);
    EXPECT_EQ(text.Find("two"), 4);
    EXPECT_EQ(text.Find("ne t"), 1);
    EXPECT_EQ(text.Find("three"), -1);
    EXPECT_EQ(text.Find(""), 0);
    EXPECT_EQ(String("").Find(""), 0);
    EXPECT_EQ(String().Find(""), 0);
    EXPECT_EQ(String().Find("a"), -1);
    EXPECT_EQ(text.Find(nullptr), 0);
}

TEST(StringFind, KeywordInLowerCasedText) {
    const String property("Bone = TRUE\r\nCollisionMesh");
    EXPECT_EQ(property.Lowered().Find("collisionmesh"), 13);
    EXPECT_EQ(TextOf(property), "Bone = TRUE\r\nCollisionMesh");
}

TEST(StringRemoveFirst, ClosesTheGap) {
    String text("one two one");
    EXPECT_TRUE(text.RemoveFirst("one"));
    EXPECT_EQ(TextOf(text), " two one");
    EXPECT_TRUE(text.RemoveFirst("one"));
    EXPECT_EQ(TextOf(text), " two ");
    EXPECT_FALSE(text.RemoveFirst("one"));
    EXPECT_FALSE(text.RemoveFirst(""));
    EXPECT_EQ(TextOf(text), " two ");
    EXPECT_EQ(text.MaxLength(), 11);
    EXPECT_TRUE(text.RemoveFirst(text.Data()));
    EXPECT_EQ(TextOf(text), "");
    ExpectSound(text);
    EXPECT_FALSE(String().RemoveFirst("a"));
}

TEST(StringRemoveAll, UntilNoOccurrenceRemains) {
    String text("aabbab-ab");
    EXPECT_TRUE(text.RemoveAll("ab"));
    EXPECT_EQ(TextOf(text), "-");
    EXPECT_FALSE(text.RemoveAll("ab"));
    EXPECT_FALSE(text.RemoveAll(""));
    EXPECT_FALSE(text.RemoveAll(nullptr));
    EXPECT_FALSE(String().RemoveAll("ab"));
    ExpectSound(text);
}

TEST(StringRemoveAll, OwnTextAsSubText) {
    String text("abXabYab");
    EXPECT_TRUE(text.RemoveAll(text.Data() + 6));
    EXPECT_EQ(TextOf(text), "XY");
}

TEST(StringRemoveAll, KeepsWhatStandsBehindAnInnerNul) {
    String text;
    text.Assign("xax\0x", 5);
    EXPECT_TRUE(text.RemoveAll("x"));
    EXPECT_EQ(TextOf(text), std::string("a\0x", 3));
    ExpectSound(text);
}

TEST(StringRemoveAll, SameAsRemovingTheFirstAgainAndAgain) {
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        std::string expected;
        std::string subText;
        for (unsigned i = random() % 24; i > 0; --i) {
            expected += random() % 2 == 0 ? 'a' : 'b';
        }
        for (unsigned i = random() % 4; i > 0; --i) {
            subText += random() % 2 == 0 ? 'a' : 'b';
        }
        String text(expected.c_str());
        bool removed = false;
        for (size_t at; !subText.empty() && (at = expected.find(subText)) != std::string::npos;) {
            expected.erase(at, subText.size());
            removed = true;
        }
        EXPECT_EQ(text.RemoveAll(subText.c_str()), removed);
        EXPECT_EQ(TextOf(text), expected) << subText;
        ExpectSound(text);
    }
}

TEST(StringRemoveChars, BytesOfEachValueUpToAnInnerNul) {
    String text;
    text.Assign("\xff-\x80-\0-", 6);
    EXPECT_TRUE(text.RemoveChars("\x80-\xff"));
    EXPECT_EQ(TextOf(text), std::string("\0-", 2));
    ExpectSound(text);
}

TEST(StringRemoveChars, EachCharacterOfTheSet) {
    String text("a-b+c--d");
    EXPECT_TRUE(text.RemoveChars("+-"));
    EXPECT_EQ(TextOf(text), "abcd");
    EXPECT_FALSE(text.RemoveChars("+-"));
    EXPECT_TRUE(text.RemoveChars("d-"));
    EXPECT_EQ(TextOf(text), "abc");
    EXPECT_FALSE(text.RemoveChars(""));
    EXPECT_FALSE(text.RemoveChars(nullptr));
    EXPECT_TRUE(text.RemoveChars(text.Data()));
    EXPECT_EQ(TextOf(text), "");
    EXPECT_FALSE(String().RemoveChars("a"));
}

// ---------------------------------------------------------------- case and trimming

TEST(StringCase, InPlaceAndCopies) {
    String text("Bip01 Foot_L");
    EXPECT_EQ(TextOf(text.Uppered()), "BIP01 FOOT_L");
    EXPECT_EQ(TextOf(text.Lowered()), "bip01 foot_l");
    EXPECT_EQ(TextOf(text), "Bip01 Foot_L");
    EXPECT_EQ(&text.ToUpper(), &text);
    EXPECT_EQ(TextOf(text), "BIP01 FOOT_L");
    EXPECT_EQ(&text.ToLower(), &text);
    EXPECT_EQ(TextOf(text), "bip01 foot_l");
    String empty;
    empty.ToUpper();
    empty.ToLower();
    ExpectNull(empty);
    ExpectNull(empty.Uppered());
}

TEST(StringTrim, BothEnds) {
    String crosses("xxx");
    crosses.Trim('x');
    EXPECT_EQ(TextOf(crosses), "");
    ExpectSound(crosses);
    String blanks("  a  ");
    blanks.Trim(' ');
    EXPECT_EQ(TextOf(blanks), "a");
    ExpectSound(blanks);
    String inner(" a b ");
    inner.Trim(' ');
    EXPECT_EQ(TextOf(inner), "a b");
    inner.Trim('x');
    EXPECT_EQ(TextOf(inner), "a b");
    String none;
    none.Trim(' ');
    ExpectNull(none);
}

TEST(StringTrim, LeftOnly) {
    String text("  a  ");
    text.TrimLeft(' ');
    EXPECT_EQ(TextOf(text), "a  ");
    ExpectSound(text);
    String crosses("xx");
    crosses.TrimLeft('x');
    EXPECT_EQ(TextOf(crosses), "");
    String none;
    none.TrimLeft('x');
    ExpectNull(none);
}

// ---------------------------------------------------------------- words

TEST(StringWords, CountsRunsBetweenSeparators) {
    EXPECT_EQ(String("  a\tb\nc  ").CountWords(), 3);
    EXPECT_EQ(String("").CountWords(), 0);
    EXPECT_EQ(String().CountWords(), 0);
    EXPECT_EQ(String(" \n\t ").CountWords(), 0);
    EXPECT_EQ(String("one").CountWords(), 1);
    EXPECT_EQ(String("a\rb").CountWords(), 1);
}

TEST(StringWords, ExtractsByNumber) {
    const String text("  first\tsecond\n third  ");
    EXPECT_EQ(TextOf(text.ExtractWord(0)), "first");
    EXPECT_EQ(TextOf(text.ExtractWord(1)), "second");
    EXPECT_EQ(TextOf(text.ExtractWord(2)), "third");
    EXPECT_STREQ(text.ExtractWord(3).Text(), "");
    EXPECT_STREQ(text.ExtractWord(-1).Text(), "");
    EXPECT_STREQ(String().ExtractWord(0).Text(), "");
    EXPECT_EQ(TextOf(String("end").ExtractWord(0)), "end");
}

// ---------------------------------------------------------------- conversion

TEST(StringConversion, ToFloat) {
    EXPECT_EQ(String("1.5").ToFloat(), 1.5f);
    EXPECT_EQ(String("-2e3abc").ToFloat(), -2000.0f);
    EXPECT_EQ(String("0.1").ToFloat(), 0.1f);
    EXPECT_EQ(String("abc").ToFloat(), 0.0f);
    EXPECT_EQ(String().ToFloat(), 0.0f);
}

TEST(StringConversion, ToInt) {
    EXPECT_EQ(String(" 42x").ToInt(), 42);
    EXPECT_EQ(String("-7").ToInt(), -7);
    EXPECT_EQ(String("2.9").ToInt(), 2);
    EXPECT_EQ(String("x").ToInt(), 0);
    EXPECT_EQ(String().ToInt(), 0);
}

TEST(StringConversion, ToBool) {
    EXPECT_TRUE(String("1").ToBool());
    EXPECT_TRUE(String("TRUE").ToBool());
    EXPECT_TRUE(String("true").ToBool());
    EXPECT_TRUE(String("TrUe").ToBool());
    for (const char* text : {"yes", "2", "0", "", "x", "01", "true ", "tru", "fals", "11"}) {
        EXPECT_FALSE(String(text).ToBool()) << text;
    }
    EXPECT_FALSE(String().ToBool());
    String withNul;
    withNul.Assign("true\0", 5);
    EXPECT_FALSE(withNul.ToBool());
}

TEST(StringConversion, IsValidFloat) {
    for (const char* text : {"", "-1.5", "+1.5", "1e5", "123", "1.2.3", "e.", "-"}) {
        EXPECT_TRUE(String(text).IsValidFloat()) << text;
    }
    for (const char* text : {"1e-5", "1+", "1.5 ", "1,5", "E5", "0x1", "--1"}) {
        EXPECT_FALSE(String(text).IsValidFloat()) << text;
    }
    EXPECT_TRUE(String().IsValidFloat());
    String withNul;
    withNul.Assign(
        "1\0"
        "2",
        3);
    EXPECT_FALSE(withNul.IsValidFloat());
}

TEST(StringConversion, IsValidInt) {
    for (const char* text : {"", "0", "-15", "+15", "+"}) {
        EXPECT_TRUE(String(text).IsValidInt()) << text;
    }
    for (const char* text : {"1.5", "1e5", "1-", " 1", "a"}) {
        EXPECT_FALSE(String(text).IsValidInt()) << text;
    }
    EXPECT_TRUE(String().IsValidInt());
}

// ---------------------------------------------------------------- hashing and scrambling

TEST(StringCRC32, PublishedCheckValues) {
    EXPECT_EQ(String("123456789").CalcCRC32(), 0xcbf43926u);
    EXPECT_EQ(String("The quick brown fox jumps over the lazy dog").CalcCRC32(), 0x414fa339u);
    EXPECT_EQ(String("a").CalcCRC32(), 0xe8b7be43u);
    EXPECT_EQ(String("\xff\xff\xff\xff").CalcCRC32(), 0xffffffffu);
    EXPECT_EQ(String("").CalcCRC32(), 0u);
    EXPECT_EQ(String().CalcCRC32(), 0u);
}

TEST(StringCRC32, StopsAtTheNul) {
    String text;
    text.Assign("a\0b", 3);
    EXPECT_EQ(text.CalcCRC32(), 0xe8b7be43u);
}

TEST(StringScramble, XorWithTheRepeatedKey) {
    String text("abcde");
    text.Scramble("12");
    const char expected[] = {'a' ^ '1', 'b' ^ '2', 'c' ^ '1', 'd' ^ '2', 'e' ^ '1'};
    EXPECT_EQ(TextOf(text), std::string(expected, 5));
    text.Unscramble("12");
    EXPECT_EQ(TextOf(text), "abcde");
}

TEST(StringScramble, Copies) {
    const String text("secret");
    const String scrambled = text.Scrambled("key");
    EXPECT_EQ(scrambled.Length(), 6);
    EXPECT_NE(TextOf(scrambled), "secret");
    EXPECT_EQ(TextOf(scrambled.Unscrambled("key")), "secret");
    EXPECT_EQ(TextOf(text), "secret");
}

TEST(StringScramble, EmptyKeyChangesNothing) {
    String text("abc");
    text.Scramble("");
    text.Unscramble(String());
    EXPECT_EQ(TextOf(text), "abc");
    EXPECT_EQ(TextOf(text.Scrambled("")), "abc");
    String none;
    none.Scramble("key");
    ExpectNull(none);
    text.Scramble(text);
    EXPECT_EQ(TextOf(text), std::string(3, '\0'));
}

// A string that lost its data keeps its length, which nothing may trust.
TEST(StringWithoutData, EveryReadSeesTheEmptyText) {
    String lost("12345");
    lost.Assign(nullptr);
    ASSERT_EQ(lost.Length(), 5);
    EXPECT_TRUE(lost == "");
    EXPECT_TRUE(lost == String());
    EXPECT_TRUE(lost.EqualsNoCase(""));
    EXPECT_EQ(lost.Compare(""), 0);
    EXPECT_EQ(lost.Find("1"), -1);
    EXPECT_FALSE(lost.RemoveFirst("1"));
    EXPECT_FALSE(lost.RemoveAll("1"));
    EXPECT_FALSE(lost.RemoveChars("1"));
    lost.ToUpper();
    lost.Trim('1');
    EXPECT_EQ(lost.CountWords(), 0);
    EXPECT_STREQ(lost.ExtractWord(0).Text(), "");
    EXPECT_EQ(lost.ToFloat(), 0.0f);
    EXPECT_EQ(lost.ToInt(), 0);
    EXPECT_FALSE(lost.ToBool());
    EXPECT_TRUE(lost.IsValidFloat());
    EXPECT_TRUE(lost.IsValidInt());
    EXPECT_EQ(lost.CalcCRC32(), 0u);
    lost.Scramble("1");
    EXPECT_EQ(TextOf(lost + "x"), "x");
    EXPECT_EQ(TextOf(String("abc").Scrambled(lost)), "abc");
    lost.Clear(true);
    EXPECT_EQ(lost.Length(), 0);
}

// Appends, removals and formatting in any order agree with std::string.
TEST(String, AgreesWithAModel) {
    std::mt19937 random(2);
    String text;
    std::string model;
    for (int step = 0; step < 5000; ++step) {
        const std::string piece(random() % 6, static_cast<char>('a' + random() % 3));
        switch (random() % 6) {
            case 0:
                text.Append(piece.c_str());
                model += piece;
                break;
            case 1:
                text.FormatAdd("<%s>", piece.c_str());
                model += "<" + piece + ">";
                break;
            case 2: {
                const size_t at = model.find(piece);
                if (text.RemoveFirst(piece.c_str())) {
                    model.erase(at, piece.size());
                }
                break;
            }
            case 3:
                text.Trim('a');
                model.erase(0, model.find_first_not_of('a'));
                model.erase(model.find_last_not_of('a') + 1);
                break;
            case 4:
                if (model.size() > 40) {
                    text.Resize(10);
                    model.resize(10);
                }
                break;
            default:
                text.Append(text.Text() + text.Length() / 2);
                model += model.substr(model.size() / 2);
                break;
        }
        ASSERT_EQ(std::string(text.Text()), model);
        ASSERT_EQ(text.Find("a"), static_cast<int>(model.find('a')));
        ExpectSound(text);
    }
}

}  // namespace
