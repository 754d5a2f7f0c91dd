// Whether a GLB file shows what the actor file and the motion file that it was made of hold: every
// vertex of every mesh in the world, at times on and between the keys, and the turns of the nodes.
// Shares no code with the toolkit: the files are read and posed by the sources beside this one, the
// GLB by the words of glTF.
//
// A moving node that is mirrored or sheared cannot be held by the motion file's records alone; it,
// and what hangs from it, is named in the figures and looked at where nothing moves only, at tick
// 0.
//
// Exit status: 0 equal within 0.1 degrees and 0.1% of the scene's bounding diagonal, and a line of
// figures; 1 not, and a line; 2 bad usage.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <map>
#include <set>

#include "tests/corpus/actor_file.h"
#include "tests/corpus/file_bytes.h"
#include "tests/corpus/gltf_file.h"
#include "tests/corpus/matrices.h"
#include "tests/corpus/motion_file.h"

namespace {

using namespace corpus;

constexpr double kMostDegrees = 0.1;
constexpr double kMostDistance = 0.001;  // of the bounding diagonal
constexpr int kMostTimes = 60;

// From 3ds Max's axes, z up, to glTF's.
Vector InGltf(const Vector& v) {
    return {v.x, v.z, -v.y};
}
Vector FromFile(const float (&v)[3]) {
    return {v[0], v[2], v[1]};
}

class Scene {
  public:
    Scene(Actor actor, std::vector<MotionPart> parts)
        : actor_(std::move(actor)), parts_(std::move(parts)) {
        for (std::size_t i = 0; i < actor_.nodes.size(); ++i) {
            inverses_.push_back(InverseWorldOf(actor_.nodes[i]));
            atTickZero_.push_back(IsFlat(inverses_[i]) ? Matrix() * 0.0 : Inverse(inverses_[i]));
        }
        FindParents();
        FindParts();
    }

    const Actor& TheActor() const { return actor_; }
    bool Moves(std::size_t node) const { return partOf_[node] != nullptr; }
    // Whether the records hold it: at tick 0 they give its matrix again.
    bool IsHeld(std::size_t node) const { return isHeld_[node]; }

    std::vector<double> Times() const {
        std::set<double> times;
        for (const MotionPart& part : parts_) {
            for (const Tracks* tracks : {&part.position, &part.rotation, &part.scale}) {
                if (tracks->sampled) {
                    times.insert(tracks->sampled->times.begin(), tracks->sampled->times.end());
                }
                if (tracks->keyframed) {
                    AddBetween(*tracks->keyframed, times);
                }
            }
        }
        std::vector<double> all(times.begin(), times.end());
        std::vector<double> some;
        const std::size_t step = all.size() / kMostTimes + 1;
        for (std::size_t i = 0; i < all.size(); i += step) {
            some.push_back(all[i]);
        }
        return some;
    }
    double FirstTime() const {
        double first = 0;
        for (const MotionPart& part : parts_) {
            for (const Tracks* tracks : {&part.position, &part.rotation, &part.scale}) {
                if (tracks->sampled && !tracks->sampled->times.empty()) {
                    first = std::min<double>(first, tracks->sampled->times.front());
                }
                for (int i = 0; tracks->keyframed && i < 3; ++i) {
                    if (!tracks->keyframed->axes[i].empty()) {
                        first = std::min<double>(first, tracks->keyframed->axes[i].front().time);
                    }
                }
            }
        }
        return first;
    }

    std::vector<Matrix> Worlds(double seconds) const {
        std::vector<Matrix> worlds(actor_.nodes.size());
        std::vector<bool> isThere(worlds.size());
        for (std::size_t i = 0; i < worlds.size(); ++i) {
            Place(i, seconds, worlds, isThere);
        }
        return worlds;
    }

    Vector Shown(const ActorMesh& mesh, const ActorVertex& vertex,
                 const std::vector<Matrix>& worlds) const {
        const Vector position = FromFile(vertex.position);
        const auto node = static_cast<std::size_t>(mesh.node);
        if (mesh.weights.empty()) {
            return worlds[node] * position;
        }
        const ActorWeights& weights = mesh.weights.at(static_cast<std::size_t>(vertex.original));
        Vector sum;
        double all = 0;
        for (const auto& [bone, weight] : weights) {
            if (bone >= 0 && weight > 0) {
                const auto i = static_cast<std::size_t>(bone);
                sum += worlds[i] * (inverses_[i] * position) * static_cast<double>(weight);
                all += weight;
            }
        }
        return all > 0 ? sum * (1 / all) : worlds[node] * (inverses_[node] * position);
    }

  private:
    static void AddBetween(const KeyframedTrack& track, std::set<double>& times) {
        for (const std::vector<CurveKey>& keys : track.axes) {
            for (std::size_t i = 0; i < keys.size(); ++i) {
                times.insert(keys[i].time);
                for (int k = 1; k < 4 && i + 1 < keys.size(); ++k) {
                    times.insert(keys[i].time + (keys[i + 1].time - keys[i].time) * k / 4.0);
                }
            }
        }
    }

    // Of several nodes of one name, the one upon which a node's local transform gives its place.
    void FindParents() {
        std::map<std::string, std::vector<int>> byName;
        for (std::size_t i = 0; i < actor_.nodes.size(); ++i) {
            byName[actor_.nodes[i].name].push_back(static_cast<int>(i));
        }
        for (std::size_t i = 0; i < actor_.nodes.size(); ++i) {
            const ActorNode& node = actor_.nodes[i];
            int parent = -1;
            double least = 1e300;
            const Vector local(node.translation[0], node.translation[2], node.translation[1]);
            for (const int candidate :
                 node.parentName.empty() ? std::vector<int>() : byName[node.parentName]) {
                const Vector place = atTickZero_[static_cast<std::size_t>(candidate)] * local;
                const double off = (place - Column(atTickZero_[i], 3)).Length();
                if (off < least * 0.999) {
                    least = off;
                    parent = candidate;
                }
            }
            parents_.push_back(parent);
        }
    }

    void FindParts() {
        partOf_.assign(actor_.nodes.size(), nullptr);
        isHeld_.assign(actor_.nodes.size(), true);
        for (const MotionPart& part : parts_) {
            const auto fits = [&](std::size_t i) {
                const ActorNode& node = actor_.nodes[i];
                const Vector place(node.translation[0], node.translation[2], node.translation[1]);
                return !partOf_[i] && node.name == part.name && place == part.rest.translation;
            };
            std::size_t at = 0;
            while (at < actor_.nodes.size() && !fits(at)) {
                ++at;
            }
            if (at == actor_.nodes.size()) {
                continue;  // of no node
            }
            partOf_[at] = &part;
            const int parent = parents_[at];
            const Matrix above =
                parent < 0 ? Matrix() : atTickZero_[static_cast<std::size_t>(parent)];
            const Matrix found = above * part.At(0).ToMatrix();
            double size = 0, off = 0;
            for (unsigned row = 0; row < 3; ++row) {
                for (unsigned column = 0; column < 4; ++column) {
                    size = std::max(size, std::abs(atTickZero_[at][row][column]));
                    off =
                        std::max(off, std::abs(atTickZero_[at][row][column] - found[row][column]));
                }
            }
            isHeld_[at] = off <= 1e-3 * size;
        }
    }

    void Place(std::size_t i, double seconds, std::vector<Matrix>& worlds,
               std::vector<bool>& isThere) const {
        if (isThere[i]) {
            return;
        }
        isThere[i] = true;
        const int parent = parents_[i];
        Matrix above, aboveAtZero;
        if (parent >= 0) {
            Place(static_cast<std::size_t>(parent), seconds, worlds, isThere);
            above = worlds[static_cast<std::size_t>(parent)];
            aboveAtZero = inverses_[static_cast<std::size_t>(parent)];
        }
        worlds[i] = above * (partOf_[i] && isHeld_[i] ? partOf_[i]->At(seconds).ToMatrix()
                                                      : aboveAtZero * atTickZero_[i]);
    }

    Actor actor_;
    std::vector<MotionPart> parts_;
    std::vector<Matrix> inverses_, atTickZero_;
    std::vector<int> parents_;
    std::vector<const MotionPart*> partOf_;
    std::vector<bool> isHeld_;
};

struct Worst {
    double distance = 0, degrees = 0;
    std::string where, turned;
};

class Comparison {
  public:
    Comparison(const Scene& scene, const Gltf& gltf) : scene_(scene), gltf_(gltf) {
        Vector least, greatest;
        bool any = false;
        const std::vector<Matrix> worlds = scene.Worlds(0);
        ForEachVertex(worlds, worlds, [&](const Vector& v, const Vector&, const std::string&) {
            for (unsigned i = 0; i < 3; ++i) {
                least[i] = any ? std::min(least[i], v[i]) : v[i];
                greatest[i] = any ? std::max(greatest[i], v[i]) : v[i];
            }
            any = true;
        });
        diagonal_ = (greatest - least).Length();
        if (gltf.nodes.size() < scene.TheActor().nodes.size()) {
            Differ("the GLB has " + std::to_string(gltf.nodes.size()) + " nodes");
        }
    }

    void Compare(double seconds, double shown) {
        const std::vector<Matrix> expected = scene_.Worlds(seconds);
        const std::vector<Matrix> found = gltf_.Worlds(shown);
        for (std::size_t i = 0; i < expected.size(); ++i) {
            // An exchange of axes on both sides of the matrix.
            Matrix inGltf;
            for (unsigned column = 0; column < 3; ++column) {
                Vector axis;
                axis[column] = 1;
                const Vector moved = InGltf(expected[i] * MaxOf(axis) - Column(expected[i], 3));
                for (unsigned row = 0; row < 3; ++row) {
                    inGltf[row][column] = moved[row];
                }
            }
            if (IsFlat(inGltf) || IsFlat(found[i])) {
                continue;
            }
            const double degrees = DegreesBetween(inGltf, found[i]);
            if (degrees > worst_.degrees) {
                worst_.degrees = degrees;
                worst_.turned = scene_.TheActor().nodes[i].name;
            }
        }
        ForEachVertex(expected, found,
                      [&](const Vector& e, const Vector& f, const std::string& name) {
                          const double distance = (e - f).Length() / diagonal_;
                          if (!(distance <= worst_.distance)) {
                              worst_.distance = distance;
                              worst_.where = name + " at " + std::to_string(seconds);
                          }
                      });
        ++times_;
    }

    bool Print() const {
        std::printf("%zu nodes, %zu vertices, %d times: %.2g degrees", gltf_.nodes.size(),
                    vertices_, times_, worst_.degrees);
        if (worst_.degrees > 0) {
            std::printf(" (\"%s\")", worst_.turned.c_str());
        }
        std::printf(", %.2g of the diagonal", worst_.distance);
        if (worst_.distance > 0) {
            std::printf(" (\"%s\")", worst_.where.c_str());
        }
        std::printf("\n");
        return worst_.degrees <= kMostDegrees && worst_.distance <= kMostDistance;
    }

  private:
    static Vector MaxOf(const Vector& v) { return {v.x, -v.z, v.y}; }

    const GltfNode& NodeOf(std::size_t mesh) const {
        const auto node = std::find_if(gltf_.nodes.begin(), gltf_.nodes.end(),
                                       [mesh](const GltfNode& n) { return n.mesh == mesh; });
        if (node == gltf_.nodes.end()) {
            Differ("mesh " + std::to_string(mesh) + " has no node");
        }
        return *node;
    }

    template <typename Visit>
    void ForEachVertex(const std::vector<Matrix>& expected, const std::vector<Matrix>& found,
                       Visit visit) {
        std::size_t number = 0;
        vertices_ = 0;
        for (const ActorMesh& mesh : scene_.TheActor().meshes) {
            if (mesh.isCollision) {
                continue;
            }
            const std::vector<GltfPrimitive>& primitives = gltf_.meshes.at(number);
            const GltfNode& node = NodeOf(number++);
            std::size_t at = 0;
            for (const ActorSubMesh& subMesh : mesh.subMeshes) {
                if (subMesh.faces.empty()) {
                    continue;
                }
                const GltfPrimitive& primitive = primitives.at(at++);
                ExpectEqual("the number of triangles", primitive.triangles.size(),
                            subMesh.faces.size());
                ExpectEqual("the number of vertices", primitive.positions.size(),
                            subMesh.vertices.size());
                for (std::size_t i = 0; i < subMesh.vertices.size(); ++i) {
                    const Vector e = InGltf(scene_.Shown(mesh, subMesh.vertices[i], expected));
                    const Vector f =
                        &expected == &found ? e : gltf_.Shown(node, primitive, i, found);
                    visit(e, f, node.name);
                    ++vertices_;
                }
            }
        }
        ExpectEqual("the number of meshes", gltf_.meshes.size(), number);
    }

    const Scene& scene_;
    const Gltf& gltf_;
    double diagonal_ = 0;
    std::size_t vertices_ = 0;
    int times_ = 0;
    Worst worst_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::cerr << "usage: compare_glb ACTOR MOTION GLB\n";
        return 2;
    }
    try {
        const Scene scene(ReadActor(argv[1]), ReadMotion(argv[2]));
        const Gltf gltf = ReadGltf(argv[3]);
        Comparison comparison(scene, gltf);
        const double first = scene.FirstTime();
        std::vector<double> times = scene.Times();
        times.push_back(0);
        for (std::size_t i = 0; i < scene.TheActor().nodes.size(); ++i) {
            if (!scene.IsHeld(i)) {
                std::printf("cannot hold \"%s\", ", scene.TheActor().nodes[i].name.c_str());
                times = {0};
            }
        }
        for (const double seconds : times) {
            comparison.Compare(seconds, seconds - first);
        }
        return comparison.Print() ? 0 : 1;
    } catch (const std::exception& failure) {
        std::cout << failure.what() << '\n';
        return 1;
    }
}
