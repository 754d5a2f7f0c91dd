// Names, quotations and user-property buffers.
#include "host/assimp/text.h"

#include <assimp/scene.h>
#include <gtest/gtest.h>

#include <algorithm>

using maxhost::import::Quoted;
using maxhost::import::TextOf;
using maxhost::import::UserPropertiesOf;

namespace {

std::string Recoded(const std::string& text) {
    bool recoded = false;
    const std::string result = TextOf(aiString(text), &recoded);
    return (recoded ? "recoded:" : "") + result;
}

}  // namespace

TEST(Text, Utf8StaysAsItIs) {
    EXPECT_EQ(Recoded("Box01"), "Box01");
    EXPECT_EQ(Recoded("\xc3\xbc \xe2\x82\xac \xf0\x9f\x99\x82"),
              "\xc3\xbc \xe2\x82\xac \xf0\x9f\x99\x82");
    EXPECT_EQ(Recoded("\xf4\x8f\xbf\xbf"), "\xf4\x8f\xbf\xbf");
    EXPECT_EQ(Recoded(""), "");
}

TEST(Text, EverythingElseIsLatin1) {
    EXPECT_EQ(Recoded("W\xfcrfel"), "recoded:W\xc3\xbcrfel");
    EXPECT_EQ(Recoded("\xff"), "recoded:\xc3\xbf");
    EXPECT_EQ(Recoded("\x80"), "recoded:\xc2\x80");
    EXPECT_EQ(Recoded("\xe2\x82"), "recoded:\xc3\xa2\xc2\x82");              // cut off
    EXPECT_EQ(Recoded("\xc0\xaf"), "recoded:\xc3\x80\xc2\xaf");              // overlong
    EXPECT_EQ(Recoded("\xed\xa0\x80"), "recoded:\xc3\xad\xc2\xa0\xc2\x80");  // surrogate
    EXPECT_EQ(Recoded("\xf4\x90\x80\x80"), "recoded:\xc3\xb4\xc2\x90\xc2\x80\xc2\x80");
    EXPECT_EQ(Recoded("\xf8\x88\x80\x80\x80"), "recoded:\xc3\xb8\xc2\x88\xc2\x80\xc2\x80\xc2\x80");
    EXPECT_EQ(Recoded("\xe0\x9f\xbf"), "recoded:\xc3\xa0\xc2\x9f\xc2\xbf");
    EXPECT_EQ(Recoded("\xf0\x8f\xbf\xbf"), "recoded:\xc3\xb0\xc2\x8f\xc2\xbf\xc2\xbf");
}

TEST(Text, EndsAtItsFirstNul) {
    aiString text;
    text.Set(std::string("ab\0cd", 5));
    EXPECT_EQ(TextOf(text), "ab");
}

TEST(Text, Quotation) {
    EXPECT_EQ(Quoted("Box 01"), "'Box 01'");
    EXPECT_EQ(Quoted("a\nb\x7f"), "'a\\x0ab\\x7f'");
    EXPECT_EQ(Quoted(std::string(80, 'x')), "'" + std::string(80, 'x') + "'");
    EXPECT_EQ(Quoted(std::string(81, 'x')), "'" + std::string(80, 'x') + "...'");
    // Not in the middle of a character.
    EXPECT_EQ(Quoted(std::string(79, 'x') + "\xc3\xbc"), "'" + std::string(79, 'x') + "...'");
}

TEST(UserProperties, OneLineAKey) {
    aiMetadata metadata;
    metadata.Add("CollisionMesh", true);
    metadata.Add("off", false);
    metadata.Add("count", std::int32_t{-3});
    metadata.Add("big", std::uint64_t{18446744073709551615u});
    metadata.Add("ratio", 0.1f);
    metadata.Add("precise", 0.1);
    metadata.Add("text", aiString("two words"));
    metadata.Add("place", aiVector3D(1, 2.5f, -3));
    EXPECT_EQ(UserPropertiesOf(metadata),
              "CollisionMesh = true\r\noff = false\r\ncount = -3\r\nbig = 18446744073709551615\r\n"
              "ratio = 0.1\r\nprecise = 0.1\r\ntext = two words\r\nplace = [1,2.5,-3]\r\n");
}

TEST(UserProperties, NoneAreAnEmptyBuffer) {
    EXPECT_EQ(UserPropertiesOf(aiMetadata()), "");
}

TEST(UserProperties, ATextStaysOnItsLine) {
    aiMetadata metadata;
    metadata.Add("note", aiString("a\r\nb"));
    EXPECT_EQ(UserPropertiesOf(metadata), "note = a  b\r\n");
}

TEST(UserProperties, NestedOnes) {
    aiMetadata innermost, inner, metadata;
    innermost.Add("z", std::int32_t{3});
    inner.Add("x", std::int32_t{1});
    inner.Add("deep", innermost);
    metadata.Add("outer", inner);
    metadata.Add("last", std::int32_t{4});
    EXPECT_EQ(UserPropertiesOf(metadata), "outer.x = 1\r\nouter.deep.z = 3\r\nlast = 4\r\n");
}

TEST(UserProperties, NestingEndsSomewhere) {
    aiMetadata metadata;
    // Inwards, in place: a copy takes time exponential in the nesting.
    aiMetadata* level = &metadata;
    for (int i = 0; i < 100; ++i) {
        level->Add("n", std::int32_t{i});
        level->Add("level", aiMetadata());
        level = static_cast<aiMetadata*>(level->mValues[1].mData);
    }
    const std::string buffer = UserPropertiesOf(metadata);
    EXPECT_EQ(std::count(buffer.begin(), buffer.end(), '\n'), 16);
    EXPECT_NE(buffer.find(".n = 15\r\n"), std::string::npos);
}

TEST(UserProperties, The3dsMaxTextOfAnFbxFileComesFirstAsItStands) {
    aiMetadata metadata;
    metadata.Add("UserProperties", aiString("CollisionMesh = 1&cr;&lf;b = &quot;x&quot;&cr;&lf;"));
    metadata.Add("UDP3DSMAX", aiString("CollisionMesh = 1&cr;&lf;b = &quot;x&quot;&cr;&lf;"));
    metadata.Add("mine", std::int32_t{5});
    EXPECT_EQ(UserPropertiesOf(metadata), "CollisionMesh = 1\r\nb = \"x\"\r\nmine = 5\r\n");
}

TEST(UserProperties, The3dsMaxTextEndsItsLastLine) {
    aiMetadata metadata;
    metadata.Add("UDP3DSMAX", aiString("collisionmesh"));
    metadata.Add("mine", std::int32_t{5});
    EXPECT_EQ(UserPropertiesOf(metadata), "collisionmesh\r\nmine = 5\r\n");
}

TEST(UserProperties, WhatFormatsKeepForThemselvesIsNone) {
    aiMetadata metadata;
    for (const char* const key : {"IsNull", "RotationActive", "ScalingMax", "RotationMinX",
                                  "TranslationMaxZ", "DefaultAttributeIndex", "InheritType",
                                  "MaxHandle", "currentUVSet", "Collada_id", "Show"}) {
        metadata.Add(key, std::int32_t{1});
    }
    EXPECT_EQ(UserPropertiesOf(metadata), "");
    metadata.Add("RotationSpeed", std::int32_t{1});
    metadata.Add("IsNullX2", std::int32_t{1});
    EXPECT_EQ(UserPropertiesOf(metadata), "RotationSpeed = 1\r\nIsNullX2 = 1\r\n");
}
