// Evaluation gives the same bits in every build and on every system.
#include <cstdint>
#include <cstring>

#include "tests/unit/host/sdk/support.h"

namespace scene = maxhost::scene;

using SameBitsTest = SceneTest;

// FNV-1a over the bytes of floats.
class Checksum {
  public:
    void Add(float value) {
        std::uint32_t bits;
        std::memcpy(&bits, &value, sizeof(bits));
        for (int shift = 0; shift < 32; shift += 8) {
            hash_ = (hash_ ^ (bits >> shift & 0xff)) * 0x100000001b3;
        }
    }
    void Add(const Matrix3& matrix) {
        for (int row = 0; row < 4; ++row) {
            const Point3 values = matrix.GetRow(row);
            Add(values.x);
            Add(values.y);
            Add(values.z);
        }
    }
    std::uint64_t Hash() const { return hash_; }

  private:
    std::uint64_t hash_ = 0xcbf29ce484222325;
};

// Keys at 0 and 4800 with handles of all lengths, from one value to another.
scene::FloatController Curve(int variant, float from, float to) {
    scene::Key first, last;
    first.value = from;
    first.outType = last.inType = scene::Tangent::custom;
    first.outTangent = static_cast<float>(variant % 5 - 2) * 0.001f;
    first.outLength = static_cast<float>(variant % 11) * 0.1f;
    last.time = 4800;
    last.value = to;
    last.inTangent = static_cast<float>(variant % 7 - 3) * 0.001f;
    last.inLength = static_cast<float>(variant % 10 + 1) * 0.1f;
    return Keyed({first, last});
}

// The expected number was computed by this very test: on Linux with g++ 12, optimised and with
// sanitizers, and on Windows with mingw-w64's g++ 12, with one result. It changes only where
// evaluation changes.
TEST_F(SameBitsTest, AnimatedHierarchy) {
    scene::Scene description;
    for (int i = 0; i < 200; ++i) {
        scene::Node node = MakeNode("n", i % 10 == 0 ? scene::kNone : i - 1);
        const float f = static_cast<float>(i);
        node.transform =
            Prs(Axes(Curve(i, -f, f), Curve(i + 1, 1, 2), Constant(0.1f)),
                Axes(Curve(i + 2, -3, 4), Curve(i + 3, 0, kQuarterTurn), Constant(kQuarterTurn)),
                Axes(Curve(i + 4, 0.5f, 1.5f), Constant(1), {}));
        description.nodes.push_back(node);
    }
    Open(std::move(description));
    Checksum checksum;
    for (int time = 0; time <= 4800; time += 96) {
        for (INode* node : maxhost::Host::Instance().Nodes()) {
            checksum.Add(node->GetNodeTM(time));
        }
    }
    EXPECT_EQ(checksum.Hash(), 0x3d14383b8ad0de17u);
}
