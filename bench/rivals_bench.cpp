// Parts of an export beside what does the same or less: packaged libraries, and plain loops.
#include <MorpherApi.h>
#include <benchmark/benchmark.h>
#include <decomp.h>
#include <iskin.h>
#include <meshoptimizer.h>
#include <modstack.h>
#include <simdjson.h>

#include <Eigen/Eigenvalues>
#include <Eigen/Geometry>
#include <nlohmann/json.hpp>
#include <random>
#include <sstream>

#include "bench/passes.h"
#include "bench/workloads.h"
#include "host/scene_file/scene_description.h"
#include "scene/decompose.h"
#include "scene/node.h"
#include "scene/sub_mesh.h"

namespace bench {
namespace {

// ---------------------------------------------------------------- corners

constexpr int kCells = 354, kPairs = 2;

// A corner as both see it: what has to be equal, and the position.
struct GridCorner {
    KTAVertex vertex;
    float uvs[2 * kPairs];
};

// Of a smooth grid: each vertex is that of six triangles.
std::vector<GridCorner> GridCorners() {
    std::vector<GridCorner> points, corners;
    for (int i = 0; i < (kCells + 1) * (kCells + 1); ++i) {
        const auto x = static_cast<float>(i % (kCells + 1)),
                   y = static_cast<float>(i / (kCells + 1));
        points.push_back({{i, {x, std::sin(x), y}, {std::cos(x), 1, 0}}, {x, y, -x, y}});
    }
    for (int row = 0; row < kCells; ++row) {
        for (int column = 0; column < kCells; ++column) {
            const int a = row * (kCells + 1) + column, b = a + kCells + 1;
            for (const int i : {a, a + 1, b, a + 1, b + 1, b}) {
                corners.push_back(points[static_cast<std::size_t>(i)]);
            }
        }
    }
    return corners;
}

void MatchAndWriteCorners(benchmark::State& state) {
    const std::vector<GridCorner> corners = GridCorners();
    const int faces = static_cast<int>(corners.size() / 3);
    const support::TemporaryDirectory folder;
    for (auto _ : state) {
        SubMeshList list;
        list.Reserve(faces, kPairs, (kCells + 1) * (kCells + 1));
        for (int i = 0; i < faces; ++i) {
            CornerVertex added[3];
            for (int k = 0; k < 3; ++k) {
                const GridCorner& corner = corners[static_cast<std::size_t>(3 * i + k)];
                added[k].record = corner.vertex;
                added[k].uvs = corner.uvs;
            }
            list.AddFace(1, added);
        }
        list.NumberVertices();
        for (int i = 0; i < faces; ++i) {
            int indices[3];
            list.IndexFace(i, indices);
        }
        KTAWriter writer;
        writer.Open(folder.PathOf("corners").c_str());
        for (int i = 0; i < list[0].numVertices; ++i) {
            writer.WriteRaw(&list.VertexOf(list[0], i), sizeof(GridCorner));
        }
        writer.WriteRaw(list.FacesOf(list[0]), static_cast<std::size_t>(faces) * 12);
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int>(corners.size()));
}

void RemapCorners(benchmark::State& state) {
    const std::vector<GridCorner> corners = GridCorners();
    std::vector<unsigned> remap(corners.size());
    for (auto _ : state) {
        benchmark::DoNotOptimize(meshopt_generateVertexRemap(remap.data(), nullptr, corners.size(),
                                                             corners.data(), corners.size(),
                                                             sizeof(GridCorner)));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int>(corners.size()));
}

// ---------------------------------------------------------------- decomposition

// Turned, stretched along turned axes and moved, half of them mirrored.
std::vector<Matrix3> Transforms() {
    std::mt19937 random(1);
    const auto row = [&] {
        const auto number = [&] { return static_cast<float>(random() % 2001) / 1000 - 1; };
        return Point3(number(), number(), number());
    };
    std::vector<Matrix3> matrices;
    for (int i = 0; i < 4096; ++i) {
        matrices.emplace_back(row(), row(), row(), row());
    }
    return matrices;
}

void DecomposeHere(benchmark::State& state) {
    const std::vector<Matrix3> matrices = Transforms();
    for (auto _ : state) {
        for (const Matrix3& matrix : matrices) {
            AffineParts parts;
            DecomposeTransform(matrix, parts);
            benchmark::DoNotOptimize(parts);
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int>(matrices.size()));
}

// The polar decomposition by a singular value decomposition, and the axes of the stretch.
void DecomposeInEigen(benchmark::State& state) {
    std::vector<Eigen::Affine3d> transforms;
    for (const Matrix3& matrix : Transforms()) {
        Eigen::Affine3d& transform = transforms.emplace_back(Eigen::Affine3d::Identity());
        for (int row = 0; row < 4; ++row) {
            const Point3 values = matrix.GetRow(row);
            transform.matrix().block<3, 1>(0, row) = Eigen::Vector3d(values.x, values.y, values.z);
        }
    }
    for (auto _ : state) {
        for (const Eigen::Affine3d& transform : transforms) {
            Eigen::Matrix3d rotation, scaling;
            transform.computeRotationScaling(&rotation, &scaling);
            const Eigen::SelfAdjointEigenSolver<Eigen::Matrix3d> axes(scaling);
            const Eigen::Quaterniond q(rotation);
            benchmark::DoNotOptimize(q);
            benchmark::DoNotOptimize(axes.eigenvalues());
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int>(transforms.size()));
}

// ---------------------------------------------------------------- motion

constexpr int kBones = 500, kFrames = 500;

void WriteSampledMotion(benchmark::State& state) {
    maxhost::Host::Instance().KeepOneTransformANode(true);
    maxhost::Host::Instance().OpenScene(MovingRig(kBones, kFrames));
    const support::TemporaryDirectory folder;
    for (auto _ : state) {
        RunPass(true, OptionsFor(true), folder.PathOf("motion"));
    }
    state.SetItemsProcessed(state.iterations() * kBones * kFrames);
    maxhost::Host::Instance().CloseScene();
}

void EvaluateAndDecompose(benchmark::State& state) {
    maxhost::Host::Instance().KeepOneTransformANode(true);
    maxhost::Host::Instance().OpenScene(MovingRig(kBones, kFrames));
    const int step = GetTicksPerFrame();
    for (auto _ : state) {
        for (int frame = 0; frame < kFrames; ++frame) {
            for (INode* const node : maxhost::Host::Instance().Nodes()) {
                AffineParts parts;
                DecomposeTransform(
                    node->GetNodeTM(frame * step) * Inverse(node->GetParentTM(frame * step)),
                    parts);
                benchmark::DoNotOptimize(parts);
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * kBones * kFrames);
    maxhost::Host::Instance().CloseScene();
}

void CopyKeys(benchmark::State& state) {
    constexpr int kNodes = 200, kKeys = 1000, kAxes = 6;
    maxhost::Host::Instance().OpenScene(MovingRig(kNodes, kKeys));
    const support::TemporaryDirectory folder;
    for (auto _ : state) {
        RunPass(true, OptionsFor(false), folder.PathOf("motion"));
    }
    state.SetItemsProcessed(state.iterations() * kNodes * kKeys * kAxes);
    maxhost::Host::Instance().CloseScene();
}

// ---------------------------------------------------------------- skins and morphs

constexpr int kVertices = 500000;

Modifier* OnlyModifier(INode* node) {
    return static_cast<IDerivedObject*>(node->GetObjectRef())->GetModifier(0);
}

void WriteSkin(benchmark::State& state) {
    maxhost::Host::Instance().OpenScene(SkinnedMesh(kVertices));
    const support::TemporaryDirectory folder;
    for (auto _ : state) {
        ExportPassHolder pass;
        ResetExportState(pass, maxhost::Host::Instance().GetInterface(), OptionsFor(false));
        pass->writer.Open(folder.PathOf("skin").c_str());
        g_motionPass = 0;
        OpenSkinOf(*pass.Get(), maxhost::Host::Instance().Nodes().back());
        ExportOpenSkins(*pass.Get());
    }
    state.SetItemsProcessed(state.iterations() * kVertices);
    maxhost::Host::Instance().CloseScene();
}

void CopyWeights(benchmark::State& state) {
    maxhost::Host::Instance().OpenScene(SkinnedMesh(kVertices));
    INode* const node = maxhost::Host::Instance().Nodes().back();
    const support::TemporaryDirectory folder;
    for (auto _ : state) {
        auto* const skin = static_cast<ISkin*>(OnlyModifier(node)->GetInterface(I_SKIN));
        ISkinContextData* const context = skin->GetContextInterface(node);
        KTAWriter writer;
        writer.Open(folder.PathOf("skin").c_str());
        for (int vertex = 0; vertex < context->GetNumPoints(); ++vertex) {
            const int count = context->GetNumAssignedBones(vertex);
            writer.WriteRecord(static_cast<unsigned char>(count));
            for (int i = 0; i < count; ++i) {
                KTAWeight record = ZeroedRecord<KTAWeight>();
                record.bone = static_cast<short>(context->GetAssignedBone(vertex, i));
                record.weight = context->GetBoneWeight(vertex, i);
                writer.WriteRecord(record);
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * kVertices);
    maxhost::Host::Instance().CloseScene();
}

constexpr int kChannels = 50, kPoints = 100000;

void WriteMorphs(benchmark::State& state) {
    maxhost::Host::Instance().OpenScene(MorphTargets(kChannels, kPoints));
    const support::TemporaryDirectory folder;
    for (auto _ : state) {
        ExportPassHolder pass;
        ResetExportState(pass, maxhost::Host::Instance().GetInterface(), OptionsFor(false));
        pass->writer.Open(folder.PathOf("morphs").c_str());
        ExportMorphTargets(*pass.Get(), maxhost::Host::Instance().Nodes()[0]);
    }
    state.SetItemsProcessed(state.iterations() * kChannels * kPoints);
    maxhost::Host::Instance().CloseScene();
}

// Packs as if the range were known, and writes as many bytes.
void PackPoints(benchmark::State& state) {
    maxhost::Host::Instance().OpenScene(MorphTargets(kChannels, kPoints));
    MaxMorphModifier morpher(OnlyModifier(maxhost::Host::Instance().Nodes()[0]));
    const support::TemporaryDirectory folder;
    for (auto _ : state) {
        KTAWriter writer;
        writer.Open(folder.PathOf("morphs").c_str());
        for (int channel = 0; channel < kChannels; ++channel) {
            const MaxMorphChannel source = morpher.GetMorphChannel(channel);
            for (int i = 0; i < kPoints; ++i) {
                const Point3 point = source.GetMorphPoint(i);
                const KTAMorphPoint packed = {{static_cast<unsigned short>(point.x * 600.0f),
                                               static_cast<unsigned short>(point.z * 600.0f),
                                               static_cast<unsigned short>(point.y * 600.0f)}};
                writer.WriteRecord(packed);
                const char zeros[3] = {0, 0, 0};
                writer.WriteRecord(zeros);
                writer.WriteRecord(i);
            }
        }
    }
    state.SetItemsProcessed(state.iterations() * kChannels * kPoints);
    maxhost::Host::Instance().CloseScene();
}

// ---------------------------------------------------------------- scene descriptions

// About 100 MB.
const std::string& SceneText() {
    static const std::string text = [] {
        std::ostringstream out;
        maxhost::scene_file::WriteSceneDescription(GridMesh(860000), out);
        return out.str();
    }();
    return text;
}

template <class Read>
void ReadText(benchmark::State& state, Read read) {
    const std::string& text = SceneText();
    for (auto _ : state) {
        read(text);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void ReadScene(benchmark::State& state) {
    ReadText(state, [](const std::string& text) {
        benchmark::DoNotOptimize(maxhost::scene_file::ReadSceneDescriptionFromText(text));
    });
}

void ParseWithNlohmann(benchmark::State& state) {
    ReadText(state, [](const std::string& text) {
        benchmark::DoNotOptimize(nlohmann::json::parse(text));
    });
}

void ParseWithSimdjson(benchmark::State& state) {
    ReadText(state, [](const std::string& text) {
        simdjson::dom::parser parser;
        const simdjson::dom::element parsed = parser.parse(text);
        benchmark::DoNotOptimize(parsed.is_object());
    });
}

}  // namespace

void RegisterRivals() {
    const std::pair<const char*, void (*)(benchmark::State&)> parts[] = {
        {"corners/ours", MatchAndWriteCorners},
        {"corners/meshoptimizer", RemapCorners},
        {"decomposition/ours", DecomposeHere},
        {"decomposition/Eigen", DecomposeInEigen},
        {"sampled motion/ours", WriteSampledMotion},
        {"sampled motion/plain", EvaluateAndDecompose},
        {"keyframed motion/ours", CopyKeys},
        {"skin/ours", WriteSkin},
        {"skin/plain", CopyWeights},
        {"morphs/ours", WriteMorphs},
        {"morphs/plain", PackPoints},
        {"scene description/ours", ReadScene},
        {"scene description/nlohmann", ParseWithNlohmann},
        {"scene description/simdjson", ParseWithSimdjson}};
    for (const auto& [name, run] : parts) {
        benchmark::RegisterBenchmark(name, run)->Unit(benchmark::kMillisecond);
    }
}

}  // namespace bench
