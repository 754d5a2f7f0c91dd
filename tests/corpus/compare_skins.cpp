// Whether the vertices of skinned meshes, deformed by what an actor file and its motion file say,
// stand where the model's do, in world space: at the clip's start, at its end, and at frames and
// halfway between two in between, of sampled tracks at some of their keys. Shares no code with the
// importer's conversion, the exporter or the toolkit.
//
// The files say where a vertex stands at tick 0 and which bones move it from there. Where its bones
// do not agree on that place, since the model was bound in another pose, no such file can say how
// it moves: those vertices are counted, and the figures name how far they are off.
//
// Exit status: 0 all others equal within a given share of the model's bounding diagonal, and a line
// of figures; 1 not, and a line; 2 bad usage.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <assimp/Importer.hpp>

#include "host/assimp/import.h"
#include "tests/corpus/actor_file.h"
#include "tests/corpus/matrices.h"
#include "tests/corpus/model_nodes.h"
#include "tests/corpus/model_skin.h"
#include "tests/corpus/model_triangles.h"
#include "tests/corpus/motion_file.h"
#include "tests/corpus/rebuilt_scene.h"

namespace {

using namespace corpus;

constexpr double kAgreement = 1e-5;  // of the bounding diagonal, among the bones of a vertex
constexpr std::size_t kTimes = 8;

// ---------------------------------------------------------------- the comparison

class Comparison {
  public:
    Comparison(const aiScene& scene, const Actor& actor, std::vector<MotionPart> parts,
               unsigned clip, int frameRate)
        : scene_(scene),
          frameRate_(frameRate),
          view_(ViewOf(scene)),
          model_(scene, MatchNodes(scene, actor.nodes.size()), clip),
          actor_(InOrderOf(model_, actor)),
          rebuilt_(actor_, std::move(parts), model_.Nodes()),
          skin_(scene, clip),
          diagonal_(model_.BoundingDiagonal()) {}

    void Run() {
        const std::vector<MeshNode> nodes = NodesWithTriangles(scene_);
        ExpectEqual("the number of meshes", actor_.meshes.size(), nodes.size());
        for (std::size_t i = 0; i < nodes.size(); ++i) {
            const bool isSkinned = IsSkinned(*nodes[i].node);
            ExpectEqual("mesh " + std::to_string(i) + ": whether it has weights",
                        !actor_.meshes[i].weights.empty(), isSkinned);
            if (isSkinned) {
                CompareMesh(nodes[i], actor_.meshes[i]);
                ++meshes_;
            }
        }
    }

    double Worst() const { return worst_; }

    void Print() const {
        if (meshes_ == 0) {
            std::cout << "no skins\n";
            return;
        }
        char figures[200];
        std::snprintf(figures, sizeof figures,
                      "%zu skins, %zu corners: %.2g of the diagonal; %zu whose bones do not agree: "
                      "%.2g\n",
                      meshes_, corners_, worst_, apart_, worstApart_);
        std::cout << figures;
    }

  private:
    bool IsSkinned(const aiNode& node) const {
        return std::any_of(node.mMeshes, node.mMeshes + node.mNumMeshes, [this](unsigned mesh) {
            const aiMesh& piece = *scene_.mMeshes[mesh];
            return std::any_of(piece.mBones, piece.mBones + piece.mNumBones,
                               [](const aiBone* bone) { return bone->mNumWeights > 0; });
        });
    }

    void CompareMesh(const MeshNode& node, const ActorMesh& mesh) {
        const auto groups = TrianglesOf(scene_, *node.node);
        ExpectEqual("the number of sub-meshes", mesh.subMeshes.size(), groups.size());
        skin_.MoveTo(0);
        std::unordered_map<const aiMesh*, std::vector<double>> disagreement;
        for (const auto& [material, triangles] : groups) {
            for (const Triangle& triangle : triangles) {
                if (disagreement.count(triangle.piece) == 0) {
                    disagreement[triangle.piece] = skin_.Disagreement(*node.node, *triangle.piece);
                }
            }
        }
        for (const double seconds : Times()) {
            ComparePose(node, mesh, groups, disagreement, seconds);
        }
    }

    // Between sampled keys the file does not say where things are. Of keyframed tracks the frames
    // and what is halfway between them count.
    std::vector<double> Times() const {
        const std::vector<float>* sampled = nullptr;
        for (const MotionPart& part : rebuilt_.Parts()) {
            for (const Tracks* tracks : {&part.position, &part.rotation, &part.scale}) {
                sampled = tracks->sampled ? &tracks->sampled->times : sampled;
            }
        }
        const double end = model_.TheClip().Seconds();
        std::vector<double> times{0};
        for (std::size_t i = 1; i <= kTimes && end > 0; ++i) {
            const double even = end * static_cast<double>(i) / kTimes;
            const double onFrames = std::round(even * 2 * frameRate_) / (2 * frameRate_);
            times.push_back(sampled       ? sampled->at((sampled->size() - 1) * i / kTimes)
                            : i == kTimes ? end
                                          : onFrames);
        }
        return times;
    }

    template <typename Groups, typename Disagreements>
    void ComparePose(const MeshNode& node, const ActorMesh& mesh, const Groups& groups,
                     const Disagreements& disagreement, double seconds) {
        skin_.MoveTo(seconds);
        const std::vector<Matrix> bones = BoneMatrices(seconds);
        std::unordered_map<const aiMesh*, std::vector<Vector>> positions;
        for (std::size_t group = 0; group < groups.size(); ++group) {
            const ActorSubMesh& subMesh = mesh.subMeshes[group];
            ExpectEqual("the number of triangles", subMesh.faces.size(),
                        groups[group].second.size());
            for (std::size_t i = 0; i < subMesh.faces.size(); ++i) {
                const Triangle& triangle = groups[group].second[i];
                std::vector<Vector>& places = positions[triangle.piece];
                if (places.empty()) {
                    places = skin_.Positions(*node.node, *triangle.piece);
                }
                for (unsigned k = 0; k < 3; ++k) {
                    const unsigned index = triangle.face->mIndices[CornerOf(node, k)];
                    const Vector expected = view_.InFile(places[index]);
                    const Vector found =
                        Deformed(mesh, subMesh.vertices[subMesh.faces[i][k]], bones);
                    Take((found - expected).Length() / diagonal_,
                         disagreement.at(triangle.piece)[index]);
                }
            }
        }
    }

    void Take(double error, double disagreement) {
        ++corners_;
        if (disagreement > kAgreement * diagonal_) {
            ++apart_;
            worstApart_ = std::max(worstApart_, error);
        } else if (!(error <= worst_)) {
            worst_ = error;
        }
    }

    // From where a vertex stands at tick 0 to where the bone brings it, in the file's axes.
    std::vector<Matrix> BoneMatrices(double seconds) const {
        const std::vector<Matrix> worlds = rebuilt_.Worlds(seconds);
        std::vector<Matrix> matrices;
        for (std::size_t i = 0; i < worlds.size(); ++i) {
            matrices.push_back(Exchanged(worlds[i]) * actor_.nodes[i].inverseWorld);
        }
        return matrices;
    }

    static Matrix Exchanged(const Matrix& m) {
        static constexpr unsigned kOrder[4] = {0, 2, 1, 3};
        Matrix result;
        for (unsigned row = 0; row < 3; ++row) {
            for (unsigned column = 0; column < 4; ++column) {
                result[row][column] = m[kOrder[row]][kOrder[column]];
            }
        }
        return result;
    }

    static Vector Deformed(const ActorMesh& mesh, const ActorVertex& vertex,
                           const std::vector<Matrix>& bones) {
        const Vector position(vertex.position[0], vertex.position[1], vertex.position[2]);
        Vector sum;
        double weights = 0;
        for (const auto& [bone, weight] :
             mesh.weights.at(static_cast<std::size_t>(vertex.original))) {
            sum +=
                (bones.at(static_cast<std::size_t>(bone)) * position) * static_cast<double>(weight);
            weights += weight;
        }
        return weights != 0 ? sum / weights
                            : bones.at(static_cast<std::size_t>(mesh.node)) * position;
    }

    const aiScene& scene_;
    const int frameRate_;
    const View view_;
    const ModelPoses model_;
    const Actor actor_;
    const RebuiltScene rebuilt_;
    ModelSkin skin_;
    const double diagonal_;
    std::size_t meshes_ = 0, corners_ = 0, apart_ = 0;
    double worst_ = 0, worstApart_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 7) {
        std::cerr << "usage: compare_skins MODEL ACTOR MOTION CLIP FRAME_RATE MOST_ERROR\n";
        return 2;
    }
    try {
        Assimp::Importer importer;
        const Actor actor = ReadActor(argv[2]);
        Comparison comparison(maxhost::import::LoadScene(importer, argv[1]), actor,
                              ReadMotion(argv[3]), static_cast<unsigned>(std::stoul(argv[4])),
                              std::stoi(argv[5]));
        comparison.Run();
        comparison.Print();
        return comparison.Worst() <= std::stod(argv[6]) ? 0 : 1;
    } catch (const std::exception& failure) {
        std::cout << failure.what() << '\n';
        return 1;
    }
}
