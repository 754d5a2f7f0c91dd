#include "scene/weights.h"

#include <CS/phyexp.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "host/sdk/host.h"

namespace {

using Calls = std::vector<std::string>;

// Physique's interfaces, which write down what is asked of them.

class Vertex : public IPhyRigidVertex {
  public:
    int GetVertexType() override { return RIGID_NON_BLENDED_TYPE; }
    INode* GetNode() override { return nullptr; }
};

class Context : public IPhyContextExport {
  public:
    explicit Context(Calls& calls) : calls_(calls) {}

    void ConvertToRigid(BOOL convert) override {
        calls_.push_back("rigid " + std::to_string(convert));
    }
    void AllowBlending(BOOL allow) override {
        calls_.push_back("blending " + std::to_string(allow));
    }
    IPhyVertexExport* GetVertexInterface(int i) override {
        calls_.push_back("vertex " + std::to_string(i));
        return &vertex_;
    }
    void ReleaseVertexInterface(IPhyVertexExport*) override { calls_.push_back("release vertex"); }

  private:
    Calls& calls_;
    Vertex vertex_;
};

class Export : public IPhysiqueExport {
  public:
    Export(Calls& calls, bool hasContext) : calls_(calls), context_(calls), has_(hasContext) {}

    IPhyContextExport* GetContextInterface(INode*) override {
        calls_.push_back("context");
        return has_ ? &context_ : nullptr;
    }
    void ReleaseContextInterface(IPhyContextExport*) override {
        calls_.push_back("release context");
    }

  private:
    Calls& calls_;
    Context context_;
    bool has_;
};

class RecordingPhysique : public Modifier {
  public:
    RecordingPhysique(Calls& calls, bool hasContext) : calls_(calls), export_(calls, hasContext) {}

    using Animatable::GetInterface;
    void* GetInterface(ULONG id) override {
        calls_.push_back("interface");
        return id == I_PHYINTERFACE ? static_cast<IPhysiqueExport*>(&export_) : nullptr;
    }
    void ReleaseInterface(ULONG, void*) override { calls_.push_back("release interface"); }

  private:
    Calls& calls_;
    Export export_;
};

class PhysiqueReaderTest : public testing::Test {
  protected:
    void SetUp() override {
        maxhost::scene::Scene scene;
        scene.nodes.emplace_back().name = "a";
        maxhost::Host::Instance().OpenScene(std::move(scene));
    }
    void TearDown() override { maxhost::Host::Instance().CloseScene(); }

    std::unique_ptr<WeightReader> ReaderOf(RecordingPhysique& physique) {
        return std::unique_ptr<WeightReader>(
            MakeWeightReader(maxhost::Host::Instance().Nodes()[0], {&physique, nullptr}));
    }

    Calls calls_;
};

TEST_F(PhysiqueReaderTest, AsksForRigidVerticesWithBlendingAndGivesAllBackInOrder) {
    RecordingPhysique physique(calls_, true);
    std::unique_ptr<WeightReader> reader = ReaderOf(physique);
    EXPECT_TRUE(reader->BeginWeights());
    VertexWeights weights;
    EXPECT_EQ(reader->Gather(0, weights), kRigidVertex);
    EXPECT_EQ(reader->Gather(1, weights), kRigidVertex);
    reader.reset();
    EXPECT_EQ(calls_,
              (Calls{"interface", "context", "rigid 1", "blending 1", "vertex 0", "release vertex",
                     "vertex 1", "release vertex", "release context", "release interface"}));
}

TEST_F(PhysiqueReaderTest, WithoutContextGivesBackTheInterfaceAlone) {
    RecordingPhysique physique(calls_, false);
    std::unique_ptr<WeightReader> reader = ReaderOf(physique);
    EXPECT_FALSE(reader->BeginBones());
    EXPECT_FALSE(reader->BeginWeights());
    EXPECT_TRUE(reader->MayWriteChunk());
    reader.reset();
    EXPECT_EQ(calls_, (Calls{"interface", "context", "release interface"}));
}

}  // namespace
