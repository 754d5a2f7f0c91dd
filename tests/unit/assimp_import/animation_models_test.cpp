// Every installed model of the animated formats shows at each time what Assimp's keys say.
#include <gtest/gtest.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <filesystem>

#include "host/assimp/import.h"
#include "host/scene/check.h"
#include "tests/unit/assimp_import/moving_node.h"
#include "tests/unit/assimp_import/posed_scene.h"
#include "tests/unit/assimp_import/temporary_files.h"

using maxhost::import::ConvertScene;
using maxhost::import::ImportError;
using maxhost::import::ImportWithAssimp;

namespace fs = std::filesystem;

namespace {

struct Folder {
    std::string name;
    std::size_t clips;  // at least
};

void PrintTo(const Folder& folder, std::ostream* out) {
    *out << folder.name;
}

class AnimatedModels : public testing::TestWithParam<Folder> {};

}  // namespace

TEST_P(AnimatedModels, KeepTheirPoses) {
    std::vector<std::string> files;
    for (const auto& entry :
         fs::recursive_directory_iterator(fs::path(HDO_ASSIMP_MODELS) / GetParam().name)) {
        files.push_back(entry.path().string());
    }
    std::sort(files.begin(), files.end());
    std::size_t clips = 0;
    PoseError worstOfAll;
    for (const std::string& path : files) {
        Assimp::Importer importer;
        const aiScene* source = nullptr;
        try {
            source = &maxhost::import::LoadScene(importer, path);
        } catch (const ImportError&) {
            continue;
        }
        for (unsigned clip = 0; clip < source->mNumAnimations; ++clip) {
            SCOPED_TRACE(path + " clip " + std::to_string(clip));
            const auto imported = ConvertScene(*source, path, {std::to_string(clip), {}});
            EXPECT_NO_THROW(maxhost::scene::Check(imported.scene));
            const PoseError worst = WorstPose(*source, path, clip, imported);
            EXPECT_LE(worst.degrees, 0.1) << worst.where;
            EXPECT_LE(worst.distance, 0.001);
            worstOfAll.Add(worst);
            ++clips;
        }
    }
    RecordProperty("degrees", std::to_string(worstOfAll.degrees));
    RecordProperty("distance", std::to_string(worstOfAll.distance));
    EXPECT_GE(clips, GetParam().clips);
}

INSTANTIATE_TEST_SUITE_P(Installed, AnimatedModels,
                         testing::Values(Folder{"FBX", 2}, Folder{"ASE", 7}, Folder{"3DS", 4},
                                         Folder{"Collada", 2}, Folder{"BVH", 3}, Folder{"LWS", 8},
                                         Folder{"X", 3}, Folder{"CSM", 1}, Folder{"MDL", 50},
                                         Folder{"SMD", 3}),
                         [](const auto& folder) {
                             return (folder.param.name[0] == '3' ? "Studio" : "") +
                                    folder.param.name;
                         });

// ---------------------------------------------------------------- texts

TEST(AnimatedFiles, BvhMovesItsRoot) {
    const TemporaryFiles files;
    const auto imported = ImportWithAssimp(files.Write("walk.bvh", R"(HIERARCHY
ROOT Hips
{
	OFFSET 0 0 0
	CHANNELS 6 Xposition Yposition Zposition Zrotation Xrotation Yrotation
	JOINT Chest
	{
		OFFSET 1 5 2
		CHANNELS 3 Zrotation Xrotation Yrotation
		End Site
		{
			OFFSET 0 4 0
		}
	}
}
MOTION
Frames: 3
Frame Time: 0.04
0 0 0 0 0 0 0 0 0
1 2 3 0 0 0 0 0 30
2 4 6 0 0 0 0 0 60
)"));
    const auto& nodes = imported.scene.nodes;
    EXPECT_EQ(TimesOf(PositionKeysOf(nodes[0], 0)), (std::vector<int>{0, 192, 384}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 0)), (std::vector<float>{0, 1, 2}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 1)), (std::vector<float>{0, -3, -6}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 2)), (std::vector<float>{0, 2, 4}));
    EXPECT_TRUE(RotationKeysOf(nodes[0], 0).empty());
    EXPECT_EQ(DegreesOf(RotationKeysOf(nodes[1], 2)), (std::vector<double>{0, 30, 60}));
    EXPECT_EQ(imported.warnings, std::vector<std::string>{});
}

TEST(AnimatedFiles, ColladaMovesANodeInItsOwnUnit) {
    const TemporaryFiles files;
    const auto imported = ImportWithAssimp(files.Write("a.dae", R"(<?xml version="1.0"?>
<COLLADA xmlns="http://www.collada.org/2005/11/COLLADASchema" version="1.4.1">
 <asset><unit meter="0.0254" name="inch"/><up_axis>Y_UP</up_axis></asset>
 <library_animations><animation id="move">
  <source id="t"><float_array id="ta" count="2">0 1.5</float_array><technique_common>
   <accessor source="#ta" count="2"><param name="TIME" type="float"/></accessor>
  </technique_common></source>
  <source id="v"><float_array id="va" count="6">1 2 3 4 5 6</float_array><technique_common>
   <accessor source="#va" count="2" stride="3"><param name="X" type="float"/>
    <param name="Y" type="float"/><param name="Z" type="float"/></accessor>
  </technique_common></source>
  <sampler id="s"><input semantic="INPUT" source="#t"/><input semantic="OUTPUT" source="#v"/>
  </sampler>
  <channel source="#s" target="a-id/place"/>
 </animation></library_animations>
 <library_visual_scenes><visual_scene id="scene" name="MaxScene">
  <node id="a-id" name="A"><translate sid="place">1 2 3</translate></node>
 </visual_scene></library_visual_scenes>
 <scene><instance_visual_scene url="#scene"/></scene>
</COLLADA>)"));
    ASSERT_EQ(imported.animations.size(), 1u);
    const auto& nodes = imported.scene.nodes;
    EXPECT_EQ(TimesOf(PositionKeysOf(nodes[0], 0)), (std::vector<int>{0, 7200}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 0)), (std::vector<float>{1, 4}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 1)), (std::vector<float>{-3, -6}));
    EXPECT_EQ(ValuesOf(PositionKeysOf(nodes[0], 2)), (std::vector<float>{2, 5}));
    EXPECT_EQ(imported.scene.time.end, 7200);
}
