#include "host/assimp/import.h"

#include <assimp/config.h>
#include <assimp/postprocess.h>
#include <assimp/scene.h>

#include <algorithm>
#include <assimp/Importer.hpp>
#include <assimp/ProgressHandler.hpp>
#include <cmath>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <limits>
#include <set>
#include <sstream>
#include <string_view>
#include <utility>

#include "host/assimp/embedded_textures.h"
#include "host/assimp/maths.h"
#include "host/assimp/mesh/material.h"
#include "host/assimp/mesh/mesh.h"
#include "host/assimp/mesh/pose.h"
#include "host/assimp/mesh/skin.h"
#include "host/assimp/motion/animation.h"
#include "host/assimp/motion/clips.h"
#include "host/assimp/process/reader_process.h"
#include "host/assimp/process/scene_blob.h"
#include "host/assimp/source_file.h"
#include "host/assimp/text.h"
#include "host/assimp/texture_search.h"
#include "host/assimp/tree/roles.h"
#include "host/assimp/tree/tree.h"
#include "host/assimp/warnings.h"

namespace maxhost::import {
namespace {

// ---------------------------------------------------------------- messages

// One line of printable ASCII out of what Assimp says.
std::string ErrorLine(const std::string& text) {
    constexpr std::size_t kLongest = 300;
    std::string line;
    for (const char c : text) {
        const bool isBlank = c == ' ' || c == '\t' || c == '\r' || c == '\n';
        if (isBlank && !line.empty() && line.back() != ' ') {
            line += ' ';
        } else if (!isBlank) {
            line += c > ' ' && c < 0x7f ? c : '?';
        }
    }
    line.resize(std::min(line.size(), kLongest));
    line.erase(line.find_last_not_of(' ') + 1);
    return line;
}

[[noreturn]] void Refuse(const std::string& assimpsWords) {
    if (assimpsWords.find("No suitable reader found") != std::string::npos) {
        throw ImportError("not a scene file of a known format");
    }
    if (assimpsWords.find("std::bad_alloc") != std::string::npos) {
        throw ImportError(kNoMemory);
    }
    const std::string reason = ErrorLine(assimpsWords);
    throw ImportError("cannot be read: " + (reason.empty() ? "no reason is given" : reason));
}

// ---------------------------------------------------------------- triangles

bool IsPolygon(const aiFace& face) {
    return face.mNumIndices > 3 && face.mIndices;
}

// Makes a mesh safe to triangulate: a polygon with a vertex number out of range becomes a triangle
// with one, which the conversion leaves out and counts, and the mesh says whether it has polygons.
void PrepareToTriangulate(aiMesh& mesh) {
    bool hasPolygons = false;
    const unsigned vertices = mesh.mVertices ? mesh.mNumVertices : 0;
    for (unsigned i = 0; mesh.mFaces && i < mesh.mNumFaces; ++i) {
        aiFace& face = mesh.mFaces[i];
        if (!IsPolygon(face)) {
            continue;
        }
        if (*std::max_element(face.mIndices, face.mIndices + face.mNumIndices) < vertices) {
            hasPolygons = true;
        } else {
            face.mNumIndices = 3;
            face.mIndices[0] = std::numeric_limits<unsigned>::max();
        }
    }
    const unsigned others = mesh.mPrimitiveTypes & ~static_cast<unsigned>(aiPrimitiveType_POLYGON);
    mesh.mPrimitiveTypes = hasPolygons ? others | aiPrimitiveType_POLYGON
                           : others    ? others
                                       : static_cast<unsigned>(aiPrimitiveType_TRIANGLE);
}

// ---------------------------------------------------------------- reading

void Configure(Assimp::Importer& importer) {
    importer.SetPropertyBool(AI_CONFIG_IMPORT_NO_SKELETON_MESHES, true);
    // The tree is folded after the import: folded by the importer, a pivot's offset would move the
    // node's children too.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, true);
    importer.SetPropertyBool(AI_CONFIG_IMPORT_COLLADA_USE_COLLADA_NAMES, true);
}

// ---------------------------------------------------------------- progress

using ReportShare = std::function<void(double share)>;

// Where the parts of an import end: Assimp reads the file and makes its scene of it, cuts polygons,
// and the conversion follows.
constexpr double kRead = 0.3;
constexpr double kMade = 0.4;
constexpr double kCut = 0.5;
constexpr double kConverted = 0.95;

// `share` of the part that goes from `begin` to `end`.
double ShareOf(double share, double begin, double end) {
    return begin + std::clamp(share, 0.0, 1.0) * (end - begin);
}

// Passes on each percentage once, and none below the last.
class Percentages {
  public:
    explicit Percentages(const ReportPercent& report) : report_(report) {}

    void Show(double share) {
        const int percent = static_cast<int>(100 * share);
        if (percent > percent_) {
            percent_ = percent;
            report_(percent);
        }
    }

  private:
    const ReportPercent& report_;
    int percent_ = 0;
};

// What Assimp itself tells of reading is its beginning and its end.
class CuttingProgress : public Assimp::ProgressHandler {
  public:
    explicit CuttingProgress(ReportShare report) : report_(std::move(report)) {}

    bool Update(float) override { return true; }
    void UpdatePostProcess(int step, int steps) override {
        report_(ShareOf(steps > 0 ? static_cast<double>(step) / steps : 0, kMade, kCut));
    }

  private:
    const ReportShare report_;
};

// ---------------------------------------------------------------- kinds of objects

constexpr std::uint32_t kGeometry = 0x10;
constexpr std::uint32_t kCamera = 0x20;
constexpr std::uint32_t kLight = 0x30;
constexpr scene::ClassId kBone = {0x28bf6e8d, 0x2ecca840};
constexpr scene::ClassId kFreeCamera = {0x1001, 0};
constexpr scene::ClassId kOmniLight = {0x1011, 0};
constexpr scene::ClassId kDirectionalLight = {0x1013, 0};
constexpr scene::ClassId kFreeSpot = {0x1014, 0};

scene::ClassId ClassOf(aiLightSourceType type) {
    return type == aiLightSource_SPOT          ? kFreeSpot
           : type == aiLightSource_DIRECTIONAL ? kDirectionalLight
                                               : kOmniLight;
}

// ---------------------------------------------------------------- units

// The unit, in metres, that the scene's is where the file says no more.
double OwnUnit(SourceFormat format) {
    return format == SourceFormat::fbx ? 0.01 : 1;
}

// The unit, in metres, of all files of the format; 0: files differ, or the reader does not tell.
double FormatsUnit(SourceFormat format) {
    return format == SourceFormat::gltf ? 1 : format == SourceFormat::fbx ? 0.01 : 0;
}

// ---------------------------------------------------------------- the up axis

std::string HowTurned(const SourceTree& tree) {
    return UpAxisOf(tree.fileTurn) == "z" ? "not turned" : "turned to z";
}

const char* WhoSaysUp(UpSource source) {
    switch (source) {
        case UpSource::file:
            return "as the file says";
        case UpSource::format:
            return "as in all files of the format";
        case UpSource::reader:
            return "as the format's reader knows";
        case UpSource::choice:
            return "by --up";
        default:
            return "assumed, the file does not say (--up does)";
    }
}

std::string DescribeUp(const SourceTree& tree) {
    return UpAxisOf(tree.fileTurn) + ", " + WhoSaysUp(tree.upSource) + ", " + HowTurned(tree);
}

// ---------------------------------------------------------------- names

// The name to show for the node. Collada's importer makes one up where the file gives an id alone.
std::string NameOf(const aiNode& node, SourceFormat format, ImportWarnings& warnings) {
    aiString id;
    const bool hasIdAlone = format == SourceFormat::collada &&
                            std::string_view(node.mName.C_Str()).starts_with("$Collada") &&
                            node.mMetaData && node.mMetaData->Get("Collada_id", id);
    bool recoded = false;
    const std::string name = TextOf(hasIdAlone ? id : node.mName, &recoded);
    warnings.AddOf(LossCode::nameRecoded, "node", Quoted(name), recoded ? 1 : 0);
    return name;
}

// The file's name, for a root that no artist named.
std::string NameAfterFile(const std::string& path, ImportWarnings& warnings) {
    bool recoded = false;
    const std::string name = ToUtf8(std::filesystem::path(path).stem().string(), &recoded);
    warnings.Add(LossCode::rootWithoutName, "node " + Quoted(name));
    warnings.AddOf(LossCode::nameRecoded, "node", Quoted(name), recoded ? 1 : 0);
    return name;
}

// 3ds Max has no nodes without a name, and the exported files tell the hierarchy by names.
void NameTheUnnamed(std::vector<scene::Node>& nodes, ImportWarnings& warnings) {
    std::set<std::string> used;
    for (const scene::Node& node : nodes) {
        used.insert(node.name);
    }
    int number = 0;
    for (std::size_t i = 0; i < nodes.size(); ++i) {
        scene::Node& node = nodes[i];
        warnings.SetNode(static_cast<int>(i));
        while (node.name.empty()) {
            const std::string digits = std::to_string(++number);
            std::string name =
                "Node" + std::string(3 - std::min<std::size_t>(digits.size(), 3), '0') + digits;
            if (used.insert(name).second) {
                warnings.Add(LossCode::nodeWithoutName, "node " + Quoted(name));
                node.name = std::move(name);
            }
        }
    }
}

// ---------------------------------------------------------------- the scene

class Converter {
  public:
    Converter(const aiScene& source, const std::string& path, const ImportChoices& choices,
              const std::function<void(double)>& report)
        : source_(source),
          path_(path),
          choices_(choices),
          report_(report),
          format_(FormatOf(source)),
          tree_(FlattenTree(source, path, choices.up)),
          clip_(ChooseClip()),
          pose_(tree_, format_, LocalsAtStart(tree_, clip_.channels), clip_.animation),
          bones_(source, tree_, pose_, warnings_),
          meshes_({source, tree_, format_, pose_, bones_, warnings_,
                   [this](double share) { ReportMesh(share); }}),
          textures_(source, format_, path),
          search_(path),
          materials_(source, format_, textures_, search_, result_.scene, warnings_) {}

    ImportedScene Convert() {
        const std::vector<Role> roles =
            FindRoles(source_, tree_, format_, bones_.AreBones(), warnings_);
        for (std::size_t i = 0; i < tree_.nodes.size(); ++i) {
            workOfAll_ += WorkOf(i);
        }
        for (std::size_t i = 0; i < tree_.nodes.size(); ++i) {
            warnings_.SetNode(static_cast<int>(i));
            result_.scene.nodes.push_back(NodeOf(i, roles[i]));
            workDone_ += WorkOf(i);
            report_(workDone_ / workOfAll_);
        }
        NameTheUnnamed(result_.scene.nodes, warnings_);
        result_.coloredMeshes = meshes_.ColoredMeshes();
        AnimateNodes(clip_.channels, tree_, frames_, result_.scene.time, result_.scene.nodes,
                     warnings_);
        warnings_.SetNode(scene::kNone);
        materials_.WarnOfUnused();
        materials_.WarnOfMissingTextures();
        WarnOfFile();
        for (ImportWarnings::Line& line : warnings_.Lines()) {
            result_.warnings.push_back(std::move(line.text));
            result_.codes.push_back(line.code);
        }
        result_.losses = warnings_.Losses();
        result_.textures = textures_.Take();
        result_.textureFiles = search_.Files();
        result_.files.assign(search_.Asked().begin(), search_.Asked().end());
        // Readers that keep it in a float have 0.01 as 0.0099999998.
        result_.unit = tree_.unit > 0 ? std::stod(NumberText(tree_.unit, 7)) : FormatsUnit(format_);
        result_.unitSource = tree_.unit > 0     ? "as the file says"
                             : result_.unit > 0 ? "as in all files of the format"
                                                : "";
        result_.upAxis = DescribeUp(tree_);
        return std::move(result_);
    }

  private:
    // Of a node, in faces.
    double WorkOf(std::size_t index) const {
        const aiNode& node = *tree_.nodes[index].node;
        double work = 1;
        for (unsigned i = 0; i < node.mNumMeshes; ++i) {
            work += node.mMeshes[i] < source_.mNumMeshes
                        ? source_.mMeshes[node.mMeshes[i]]->mNumFaces
                        : 0;
        }
        return work;
    }
    // Of the mesh of the node that comes next.
    void ReportMesh(double share) {
        report_((workDone_ + share * WorkOf(result_.scene.nodes.size())) / workOfAll_);
    }

    struct Clip {
        const aiAnimation* animation = nullptr;  // null: none
        Channels channels;
    };

    // Lists the file's clips, sets the scene's time and reads the clip that is imported.
    Clip ChooseClip() {
        result_.animations = ClipsOf(source_, format_, warnings_);
        std::vector<std::string> names;
        for (const AnimationClip& clip : result_.animations) {
            names.push_back(clip.name);
        }
        const std::size_t chosen = choices_.clip ? *choices_.clip
                                   : choices_.animation
                                       ? FindAnimation(*choices_.animation, names).value_or(0)
                                       : 0;
        const bool hasClip = chosen < names.size();
        scene::Time& time = result_.scene.time;
        time = TimeOf(source_, format_, hasClip ? &result_.animations[chosen] : nullptr,
                      choices_.frameRate, warnings_);
        if (!hasClip) {
            return {};
        }
        Clip clip{
            source_.mAnimations[chosen],
            ReadChannels(source_, chosen, format_, path_,
                         static_cast<double>(time.frameRate) * time.ticksPerFrame, warnings_)};
        warnings_.Add(LossCode::otherAnimations, "", choices_.clip ? 0 : names.size() - 1);
        return clip;
    }

    void WarnOfFile() {
        warnings_.Add(LossCode::nodeOutsideScene, "", tree_.nodesOutside);
        if (!choices_.convertsUnit && tree_.unit > 0 &&
            std::abs(tree_.unit - OwnUnit(format_)) > 1e-6 * tree_.unit) {
            warnings_.Add({LossCode::unitKept,
                           "the file's unit is " + NumberText(tree_.unit) + " m and its up axis " +
                               UpAxisOf(tree_.fileTurn) + ", " + HowTurned(tree_) +
                               "; lengths are left in that unit (--scale changes them)"},
                          "");
        }
        if (choices_.up && tree_.upSource != UpSource::choice) {
            warnings_.Add(
                {LossCode::upAxisKnown, "--up has no effect: the up axis is " + DescribeUp(tree_)},
                "");
        }
    }

    // The node's matrix at tick 0 in the turned scene, with the frames of its and its parent's
    // views.
    Matrix4 LocalOf(std::size_t index, const Role& role) {
        const SourceNode& source = tree_.nodes[index];
        NodeFrame frame;
        if (source.parent != scene::kNone) {
            const Matrix4& above = frames_[static_cast<std::size_t>(source.parent)].after;
            frame.before = above == Matrix4() ? above : Matrix4(above).Inverse();
        }
        frame.after = ViewFrame(source, ShownBeside(source, role), tree_.turn, format_, warnings_);
        frames_.push_back(frame);
        return frame.before * tree_.turn.Conjugate(pose_.LocalOf(index)) * frame.after;
    }

    scene::Node NodeOf(std::size_t index, const Role& role) {
        const SourceNode& source = tree_.nodes[index];
        scene::Node node;
        const bool isUnnamedRoot =
            source.node == source_.mRootNode && IsImportersName(source.node->mName.C_Str(), path_);
        node.name = isUnnamedRoot ? NameAfterFile(path_, warnings_)
                                  : NameOf(*source.node, format_, warnings_);
        node.parent = source.parent;
        const std::string subject = "node " + Quoted(node.name);
        std::size_t notFinite = source.notFinite;
        node.transform = scene::Transform{
            {}, {}, scene::MatrixTransform{RowMatrix(LocalOf(index, role), notFinite)}};
        warnings_.Add(LossCode::numberNotFinite, subject, notFinite);
        if (const aiMetadata* metadata = source.node->mMetaData) {
            bool recoded = false;
            node.userProperties = UserPropertiesOf(*metadata, &recoded);
            warnings_.AddOf(LossCode::userPropertiesRecoded, "node", Quoted(node.name),
                            recoded ? 1 : 0);
            bool isShown = true;
            node.hidden =
                format_ == SourceFormat::fbx && metadata->Get("Show", isShown) && !isShown;
        }
        SetObject(node, source, role, subject);
        return node;
    }

    // A node has one object. A mesh comes first: it may be the mesh of a bone.
    void SetObject(scene::Node& node, const SourceNode& source, const Role& role,
                   const std::string& subject) {
        const bool hasMesh = source.node->mNumMeshes > 0;
        if (hasMesh) {
            NodeMesh mesh = meshes_.Of(result_.scene.nodes.size());
            node.object = scene::Object{std::nullopt, std::nullopt, std::nullopt, mesh.mesh};
            node.modifiers = std::move(mesh.modifiers);
            node.material = materials_.For(mesh.materials, node.name);
        }
        const Role shown = ShownBeside(source, role);
        if (role.isBone) {
            node.object = node.object.value_or(scene::Object{kGeometry, {}, {}, nullptr});
            node.object->classId = kBone;
        } else if (shown.camera) {
            node.object = scene::Object{kCamera, kFreeCamera, std::nullopt, nullptr};
        } else if (shown.light) {
            node.object = scene::Object{kLight, ClassOf(shown.light->mType), std::nullopt, nullptr};
        }
        const std::size_t others = (role.camera != shown.camera) + (role.light != shown.light);
        warnings_.Add(LossCode::secondObject, subject, others);
    }

    const aiScene& source_;
    const std::string path_;
    const ImportChoices& choices_;
    const std::function<void(double)>& report_;
    double workDone_ = 0;
    double workOfAll_ = 0;
    const SourceFormat format_;
    const SourceTree tree_;
    ImportWarnings warnings_;
    ImportedScene result_;
    const Clip clip_;
    const StartPose pose_;
    const BoneNodes bones_;
    MeshFactory meshes_;
    EmbeddedTextures textures_;
    TextureSearch search_;
    MaterialFactory materials_;
    std::vector<NodeFrame> frames_;
};

}  // namespace

const aiScene& LoadScene(Assimp::Importer& importer, const std::string& path,
                         const ReportShare& report) {
    Configure(importer);
    const auto size = static_cast<double>(SourceSize(path));
    // Both are the importer's from here on.
    importer.SetProgressHandler(new CuttingProgress(report));
    importer.SetIOHandler(new SourceFiles([report, size](std::uint64_t bytes) {
        report(ShareOf(static_cast<double>(bytes) / size, 0, kRead));
    }));
    if (!importer.ReadFile(path, 0)) {
        Refuse(importer.GetErrorString());
    }
    report(kMade);
    // The importer owns the scene and made it writable; it only hands it out as const.
    aiScene& scene = const_cast<aiScene&>(*importer.GetScene());
    for (unsigned i = 0; i < scene.mNumMeshes; ++i) {
        PrepareToTriangulate(*scene.mMeshes[i]);
    }
    if (!importer.ApplyPostProcessing(aiProcess_Triangulate)) {
        Refuse(importer.GetErrorString());
    }
    return scene;
}

ImportedScene ConvertScene(const aiScene& scene, const std::string& path,
                           const ImportChoices& choices,
                           const std::function<void(double)>& report) {
    return Converter(scene, path, choices, report).Convert();
}

// ImportWithAssimp() in this process, unprotected from what Assimp does on broken files.
static ImportedScene ReadHere(Assimp::Importer& importer, const std::string& path,
                              const ImportChoices& choices, const ReportPercent& report) {
    Percentages percentages(report);
    const ReportShare show = [&](double share) { percentages.Show(share); };
    try {
        const aiScene& scene = LoadScene(importer, path, show);
        ImportedScene imported = ConvertScene(
            scene, path, choices, [&](double share) { show(ShareOf(share, kCut, kConverted)); });
        auto files = dynamic_cast<const SourceFiles&>(*importer.GetIOHandler()).Asked();
        files.insert(imported.files.begin(), imported.files.end());
        imported.files.assign(files.begin(), files.end());
        return imported;
    } catch (const ImportError&) {
        throw;
    } catch (const std::exception& failure) {
        Refuse(failure.what());
    }
}

void ReadAndPut(const std::string& path, const ImportChoices& choices, const ReportPercent& report,
                const PutResult& put) {
    // Both stay until their process ends, which takes no time to free them.
    auto* const importer = new Assimp::Importer;
    const auto* const read = new ImportedScene(ReadHere(*importer, path, choices, report));
    EncodeScene(*read, put);
}

#ifndef _WIN32
ImportedScene ImportWithAssimp(const std::string& given, const ImportChoices& choices,
                               const ReportPercent& report) {
    const std::string path = PathWithoutDots(given);
    CheckSourceFile(path);
    const ReaderLimits limits = LimitsFor(SourceSize(path));
    ImportedScene imported;
    RunInReaderProcess(
        [&](const ReportPercent& reportFromThere, const PutResult& put) {
            ReadAndPut(path, choices, reportFromThere, put);
        },
        limits, report, [&](const GetResult& get) { imported = DecodeScene(get, limits.memory); });
    return imported;
}
#endif

bool AssimpKnows(const std::string& path) {
    const std::string extension = std::filesystem::path(path).extension().string();
    return !extension.empty() && Assimp::Importer().IsExtensionSupported(extension);
}

std::vector<std::string> AssimpExtensions() {
    std::string list;
    Assimp::Importer().GetExtensionList(list);  // "*.3d;*.3ds"
    std::vector<std::string> extensions;
    std::istringstream patterns(list);
    for (std::string pattern; std::getline(patterns, pattern, ';');) {
        extensions.push_back(pattern.substr(1));
    }
    return extensions;
}

}  // namespace maxhost::import
