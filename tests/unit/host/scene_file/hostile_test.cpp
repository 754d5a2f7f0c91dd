// Damaged and hostile texts: refused or read, never anything else.
#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <memory>
#include <random>
#include <sstream>
#include <string>

#include "host/scene_file/scene_description.h"
#include "tests/support/every_field.h"

using maxhost::scene::Scene;
using maxhost::scene::SceneError;
using maxhost::scene_file::ReadSceneDescriptionFromText;
using maxhost::scene_file::WriteSceneDescription;

namespace {

// Reads from a heap block of exactly this size, so that a sanitizer sees a byte too far. Returns
// the message, or nothing when the text was read.
std::string MessageOf(std::string_view text) {
    const std::unique_ptr<char[]> block(new char[text.size()]);
    text.copy(block.get(), text.size());
    try {
        ReadSceneDescriptionFromText({block.get(), text.size()});
        return "";
    } catch (const SceneError& fault) {
        return fault.what();
    }
}

TEST(Damage, EveryPrefixIsRefusedInOneLine) {
    const std::string_view whole = kEveryField;
    ASSERT_EQ(MessageOf(whole), "");
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const std::string message = MessageOf(whole.substr(0, size));
        ASSERT_EQ(message.substr(0, 5), "line ") << size;
        ASSERT_EQ(message.find('\n'), std::string::npos) << size;
    }
}

// A damaged text that is still read gives a scene that holds to the rules: it can be written and
// read back.
void ExpectSound(const std::string& text) {
    Scene scene;
    try {
        scene = ReadSceneDescriptionFromText(text);
    } catch (const SceneError& fault) {
        const std::string message = fault.what();
        EXPECT_EQ(message.find('\n'), std::string::npos) << message;
        EXPECT_LT(message.size(), 2000u) << message;
        return;
    }
    std::ostringstream out;
    WriteSceneDescription(scene, out);
    EXPECT_EQ(Difference(ReadSceneDescriptionFromText(out.str()), scene), "") << text;
}

TEST(Damage, ChangedBytes) {
    std::mt19937 random(1);
    for (int round = 0; round < 1000; ++round) {
        std::string text(kEveryField);
        for (int count = 1 + round % 3; count > 0; --count) {
            text[random() % text.size()] = static_cast<char>(random());
        }
        ExpectSound(text);
    }
}

// Changes that keep the text JSON get further: numbers and words exchanged for others.
TEST(Damage, ChangedTokens) {
    const std::string pieces[] = {"-1",   "0",    "1",     "1e39", "2147483647", "4294967296",
                                  "null", "true", "[]",    "{}",   "\"\"",       "\"arm\"",
                                  "-0",   "0.5",  "1e-46", "[[]]", "65536",      "99"};
    std::mt19937 random(2);
    for (int round = 0; round < 1000; ++round) {
        std::string text(kEveryField);
        std::size_t at = random() % text.size();
        at = text.find_first_of("0123456789", at);
        if (at == std::string::npos) {
            continue;
        }
        const std::size_t end = text.find_first_not_of("0123456789.", at);
        text.replace(at, end - at, pieces[random() % std::size(pieces)]);
        ExpectSound(text);
    }
}

TEST(Damage, RemovedAndDoubledPieces) {
    std::mt19937 random(3);
    for (int round = 0; round < 700; ++round) {
        std::string text(kEveryField);
        const std::size_t at = random() % text.size();
        const std::string piece = text.substr(at, random() % 40);
        round % 2 ? text.erase(at, piece.size()) : text.insert(at, piece);
        ExpectSound(text);
    }
}

TEST(Attack, DeepNestingIsRefused) {
    for (const char* opening : {"[", "{\"a\":", "{\"maxscene\": [", "[[{\"class\":"}) {
        std::string text;
        while (text.size() < 10'000'000) {
            text += opening;
        }
        const std::string message = MessageOf(text);
        EXPECT_NE(message.find("more than 320 levels deep"), std::string::npos) << message;
    }
}

std::string Nested(const std::string& opening, const std::string& core, const std::string& closing,
                   int levels) {
    std::string text;
    for (int i = 0; i < levels; ++i) {
        text += opening;
    }
    text += core;
    for (int i = 0; i < levels; ++i) {
        text += closing;
    }
    return text;
}

// The deepest that the text may be nested, where the classes of the form nest at all.
TEST(Attack, DeepestClassesAreRefused) {
    const std::string materials = Nested(R"({"class": "multi", "subMaterials": [)", "", "]}", 159);
    EXPECT_NE(MessageOf(R"({"maxscene": 1, "materials": [)" + materials + "]}")
                  .find("a material at level 65"),
              std::string::npos);
    const std::string maps = Nested(R"({"class": "bitmap", "subMaps": [)", "", "]}", 157);
    EXPECT_NE(MessageOf(R"({"maxscene": 1, "materials": [{"class": "standard", "maps": [{"map": )" +
                        maps + "}]}]}")
                  .find("a map at level 65"),
              std::string::npos);
    const std::string lists =
        Nested(R"({"class": "floatList", "items": [{"controller": )", "1", "}]}", 104);
    EXPECT_NE(MessageOf(R"({"maxscene": 1, "nodes": [{"name": "n", "transform": {"position": )"
                        R"({"class": "positionXYZ", "x": )" +
                        lists + "}}}]}")
                  .find("a list controller at level 65"),
              std::string::npos);
}

// A list that is refused at its first element costs no more than its text.
TEST(Attack, LongListOfWrongElements) {
    std::string text = R"({"maxscene": 1, "nodes": [0)";
    for (int i = 0; i < 4'000'000; ++i) {
        text += ",0";
    }
    EXPECT_EQ(MessageOf(text + "]}"), "/nodes/0: 0, expected a node");
}

std::string SceneWith(const std::string& fields) {
    return R"({"maxscene": 1, )" + fields + "}";
}

// The time for a list of n and of 10n: quadratic work would take up to 100 times as long.
template <class Make>
void ExpectLinear(Make make) {
    const auto seconds = [&make](int n) {
        const std::string text = make(n);
        double best = 1e9;
        for (int round = 0; round < 2; ++round) {
            const std::clock_t start = std::clock();
            MessageOf(text);
            best = std::min(best, double(std::clock() - start) / CLOCKS_PER_SEC);
        }
        return best;
    };
    const double small = seconds(2000);
    const double large = seconds(20000);
    EXPECT_LT(large, 40 * small + 0.02) << small;
}

TEST(Attack, CostStaysLinear) {
    ExpectLinear([](int n) {  // specified normals, all at vertices that exist
        std::string vertices, normals;
        for (int i = 0; i < n; ++i) {
            vertices += (i ? "," : "") + std::string("[0,0,0]");
            normals += (i ? ",\"" : "\"") + std::to_string(i) + "\":[0,0,1]";
        }
        return SceneWith(R"("nodes":[{"name":"n","object":{"class":"mesh","vertices":[)" +
                         vertices + R"(],"normals":{)" + normals + "}}}]");
    });
    ExpectLinear([](int n) {  // unknown fields
        std::string fields;
        for (int i = 0; i < n; ++i) {
            fields += ",\"f" + std::to_string(i) + "\":0";
        }
        return R"({"maxscene":1)" + fields + "}";
    });
    ExpectLinear([](int n) {  // a chain of parents, the last first
        std::string nodes;
        for (int i = 0; i < n; ++i) {
            const std::string parent = i + 1 < n ? std::to_string(i + 1) : "null";
            nodes += (i ? "," : "") + std::string(R"({"name":"","parent":)") + parent + "}";
        }
        return SceneWith(R"("nodes":[)" + nodes + "]");
    });
    ExpectLinear([](int n) {  // wires that name ids, each far away
        std::string nodes;
        for (int i = 0; i < n; ++i) {
            nodes += (i ? "," : "") +
                     std::string(R"({"name":"","transform":{"position":{"class":"positionXYZ",)") +
                     R"("x":{"class":"wire","id":")" + std::to_string(i) +
                     R"(","wires":[{"coController":")" + std::to_string(n - 1 - i) + "\"}]}}}}";
        }
        return SceneWith(R"("nodes":[)" + nodes + "]");
    });
}

}  // namespace
