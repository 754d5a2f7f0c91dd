// Whether an actor file and its motion file hold the poses of the model that they were exported
// from, in world space, for every node: what a clip of Assimp's shows at a time against what a
// reader rebuilds. Sampled tracks are looked at on their grid, keyframed ones at every frame and
// halfway between. Shares no code with the importer's conversion, the exporter or the toolkit.
//
// A node that is mirrored or sheared cannot be held by the file's records: it is named in the
// figures, not compared, and what hangs below it is compared as if it were right.
//
// Exit status: 0 equal within 0.1 degrees and 0.1% of the scene's bounding diagonal, and a line of
// figures; 1 not, and a line; 2 bad usage.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <iostream>
#include <set>
#include <string>
#include <vector>

#include <assimp/Importer.hpp>

#include "host/assimp/import.h"
#include "tests/corpus/actor_file.h"
#include "tests/corpus/matrices.h"
#include "tests/corpus/model_nodes.h"
#include "tests/corpus/motion_file.h"
#include "tests/corpus/rebuilt_scene.h"

namespace {

using namespace corpus;

constexpr double kMostDegrees = 0.1;
constexpr double kMostDistance = 0.001;  // of the bounding diagonal
constexpr double kMostShear = 1e-3;      // cosine between two axes of a node
constexpr int kTicksPerSecond = 4800;

// ---------------------------------------------------------------- matrices

// Whether translation, rotation and scales say all of it.
bool CanBeHeld(const Matrix& local) {
    double shear = 0;
    for (unsigned i = 0; i < 3; ++i) {
        const Vector a = Column(local, i), b = Column(local, (i + 1) % 3);
        const double lengths = a.Length() * b.Length();
        shear = std::max(shear, lengths > 0 ? std::abs(a * b) / lengths : 0);
    }
    return local.Determinant() >= 0 && shear <= kMostShear;
}

// ---------------------------------------------------------------- the comparison

struct Worst {
    double error = 0;
    std::string node;
    double seconds = 0;

    void Take(double found, const std::string& name, double time) {
        if (!(found <= error)) {
            *this = {found, name, time};
        }
    }
};

struct Settings {
    unsigned clip = 0;
    int frameRate = 30;

    int TicksPerFrame() const { return kTicksPerSecond / frameRate; }
    int TicksPerSecond() const { return TicksPerFrame() * frameRate; }
};

class Comparison {
  public:
    Comparison(const aiScene& scene, const Actor& actor, std::vector<MotionPart> parts,
               const Settings& settings)
        : settings_(settings),
          model_(scene, MatchNodes(scene, actor.nodes.size()), settings.clip),
          rebuilt_(InOrderOf(model_, actor), std::move(parts), model_.Nodes()),
          diagonal_(model_.BoundingDiagonal()) {
        FindFrames(scene);
    }

    void Run() {
        if (!model_.TheClip().Exists()) {
            Differ("the model has no clip " + std::to_string(settings_.clip));
        }
        for (const double seconds : Times()) {
            ComparePoses(seconds);
            ++times_;
        }
    }

    bool Passed() const { return angle_.error <= kMostDegrees && distance_.error <= kMostDistance; }

    void Print() const {
        char figures[120];
        std::snprintf(figures, sizeof figures,
                      "%zu nodes, %zu moving, %zu times: ", model_.Nodes().size(),
                      rebuilt_.Parts().size(), times_);
        std::cout << figures;
        PrintWorst("degrees", angle_);
        std::cout << ", ";
        PrintWorst("of the diagonal", distance_);
        for (const std::string& name : notHeld_) {
            std::cout << ", cannot hold \"" << name << '"';
        }
        std::cout << '\n';
    }

  private:
    static void PrintWorst(const char* unit, const Worst& worst) {
        char figures[80];
        std::snprintf(figures, sizeof figures, "%.2g %s", worst.error, unit);
        std::cout << figures;
        if (worst.error > 0) {
            std::snprintf(figures, sizeof figures, "\" at %.4g s", worst.seconds);
            std::cout << " (\"" << worst.node << figures << ')';
        }
    }

    // A node's own axes are the model's, exchanged and turned over like the world's, or like a
    // camera's: the frame that takes its vertices to the model's, a matrix of zeros and signs.
    static bool Snap(Matrix& frame) {
        std::array<int, 3> used{};
        for (unsigned row = 0; row < 3; ++row) {
            for (unsigned column = 0; column < 3; ++column) {
                const double exact = std::round(frame[row][column]);
                if (std::abs(frame[row][column] - exact) > 2e-3 || std::abs(exact) > 1) {
                    return false;
                }
                frame[row][column] = exact;
                used[column] += exact != 0 ? 1 : 0;
            }
            frame[row][3] = 0;
        }
        frame.d1 = frame.d2 = frame.d3 = 0;
        frame.d4 = 1;
        return used == std::array<int, 3>{1, 1, 1};
    }

    void FindFrames(const aiScene& scene) {
        const std::vector<Matrix> worlds = model_.Worlds(0);
        std::set<std::string> turned;
        for (unsigned i = 0; i < scene.mNumCameras; ++i) {
            turned.insert(scene.mCameras[i]->mName.C_Str());
        }
        for (unsigned i = 0; i < scene.mNumLights; ++i) {
            turned.insert(scene.mLights[i]->mName.C_Str());
        }
        std::vector<bool> isFound(model_.Nodes().size(), false);
        bool isCommonKnown = false;
        frames_.resize(model_.Nodes().size());
        for (std::size_t i = 0; i < model_.Nodes().size(); ++i) {
            const Matrix& there = rebuilt_.AtTickZero(i);
            if (IsFlat(worlds[i]) || IsFlat(there)) {
                continue;
            }
            Matrix frame = Inverse(worlds[i]) * there;
            const std::string name(model_.Nodes()[i].node->mName.C_Str());
            if (!Snap(frame)) {
                Differ("node " + std::to_string(i) + " (" + name + ") stands elsewhere at tick 0");
            }
            frames_[i] = frame;
            isFound[i] = true;
            if (turned.count(name) == 0) {
                if (isCommonKnown && !(frame == common_)) {
                    Differ("node " + std::to_string(i) + " (" + name + ") is turned");
                }
                common_ = frame;
                isCommonKnown = true;
            }
        }
        for (std::size_t i = 0; i < model_.Nodes().size(); ++i) {
            frames_[i] = isFound[i] ? frames_[i] : common_;
        }
    }

    // Of a file without sampled tracks: every frame, halfway between, and the end.
    std::vector<double> Times() const {
        const auto end =
            static_cast<int>(std::lround(model_.TheClip().Seconds() * settings_.TicksPerSecond()));
        std::vector<double> frames, times;
        for (int tick = 0; tick <= end; tick += settings_.TicksPerFrame()) {
            frames.push_back(static_cast<double>(tick) / settings_.TicksPerSecond());
        }
        const double last = static_cast<double>(end) / settings_.TicksPerSecond();
        const bool isSampled = CheckGrid(frames, last);
        for (std::size_t i = 0; i < frames.size(); ++i) {
            times.push_back(frames[i]);
            if (!isSampled && i + 1 < frames.size()) {
                times.push_back((frames[i] + frames[i + 1]) / 2);
            }
        }
        times.push_back(last);
        return times;
    }

    // Whether there are sampled tracks; all of them must stand at the frames and, once more, at
    // the end.
    bool CheckGrid(std::vector<double> frames, double last) const {
        frames.push_back(last);
        bool isSampled = false;
        for (const MotionPart& part : rebuilt_.Parts()) {
            for (const Tracks* tracks : {&part.position, &part.rotation, &part.scale}) {
                if (!tracks->sampled) {
                    continue;
                }
                isSampled = true;
                const std::string what = "sampled track of \"" + part.name + "\": ";
                const std::vector<float>& times = tracks->sampled->times;
                ExpectEqual(what + "the number of keys", times.size(), frames.size());
                for (std::size_t i = 0; i < frames.size(); ++i) {
                    ExpectEqual(what + "time " + std::to_string(i), times[i],
                                static_cast<float>(frames[i]));
                }
            }
        }
        return isSampled;
    }

    void ComparePoses(double seconds) {
        const std::vector<Matrix> models = model_.Worlds(seconds);
        std::vector<Matrix> worlds;
        for (std::size_t i = 0; i < model_.Nodes().size(); ++i) {
            const int parent = model_.Nodes()[i].parent;
            const auto above = static_cast<std::size_t>(parent);
            const Matrix model = models[i] * frames_[i];
            const Matrix modelAbove = parent < 0 ? Matrix() : models[above] * frames_[above];
            const std::string name(model_.Nodes()[i].node->mName.C_Str());
            if (IsFlat(modelAbove)) {
                worlds.push_back(model);  // nothing shows below a node without extent
                continue;
            }
            if (rebuilt_.PartOf(i) && !CanBeHeld(Inverse(modelAbove) * model)) {
                notHeld_.insert(name);
                worlds.push_back(model);
                continue;
            }
            worlds.push_back((parent < 0 ? Matrix() : worlds[above]) * rebuilt_.Local(i, seconds));
            Compare(worlds[i], model, name, seconds);
        }
    }

    void Compare(const Matrix& found, const Matrix& expected, const std::string& name,
                 double seconds) {
        const double distance = (Column(found, 3) - Column(expected, 3)).Length();
        distance_.Take(diagonal_ > 0 ? distance / diagonal_ : distance, name, seconds);
        if (!IsFlat(found) && !IsFlat(expected)) {
            angle_.Take(DegreesBetween(found, expected), name, seconds);
        }
    }

    const Settings settings_;
    const ModelPoses model_;
    const RebuiltScene rebuilt_;
    const double diagonal_;
    std::vector<Matrix> frames_;  // from a node's axes to the model's
    Matrix common_;
    std::set<std::string> notHeld_;
    std::size_t times_ = 0;
    Worst angle_, distance_;
};

}  // namespace

int main(int argc, char** argv) {
    if (argc != 6) {
        std::cerr << "usage: compare_poses MODEL ACTOR MOTION CLIP FRAME_RATE\n";
        return 2;
    }
    try {
        Assimp::Importer importer;
        const Actor actor = ReadActor(argv[2]);
        Settings settings;
        settings.clip = static_cast<unsigned>(std::stoul(argv[4]));
        settings.frameRate = std::stoi(argv[5]);
        Comparison comparison(maxhost::import::LoadScene(importer, argv[1]), actor,
                              ReadMotion(argv[3]), settings);
        comparison.Run();
        comparison.Print();
        return comparison.Passed() ? 0 : 1;
    } catch (const std::exception& failure) {
        std::cout << failure.what() << '\n';
        return 1;
    }
}
