#include "host/app/run_report.h"

#include <algorithm>
#include <set>
#include <system_error>

#include "host/app/dry_run.h"
#include "host/app/json_parts.h"
#include "host/app/scene_contents.h"
#include "host/app/scene_report.h"
#include "host/app/texture_record.h"

namespace maxhost::app {
namespace {

namespace fs = std::filesystem;

FileReport ReportOf(const fs::path& place, const ExportFiles& files,
                    const std::set<fs::path>& textures) {
    const bool isTexture = textures.contains(place);
    FileReport report{place,
                      isTexture                                      ? "texture"
                      : place == TextureRecordOf(files.ExportFile()) ? "texture record"
                      : place == files.Log()                         ? "log"
                      : place == files.Preview()                     ? "preview"
                                                                     : "converter",
                      0,
                      {}};
    std::error_code ignored;
    const std::uintmax_t size = fs::file_size(files.At(place), ignored);
    report.bytes = ignored ? 0 : size;
    for (const OutputFile& file : files.Files()) {
        if (file.path == place) {
            report.kind = kta::KindName(file.kind);
            if (file.reading.file) {
                report.chunks = kta::Summarize(*file.reading.file).chunks;
            }
        }
    }
    return report;
}

Json JsonOf(const FileReport& file) {
    Json json = {{"path", Text(file.path.string())}, {"kind", file.kind}, {"bytes", file.bytes}};
    AddEscaped(json, "path", file.path.string());
    if (file.kind == kta::KindName(kFileKindActor) || file.kind == kta::KindName(kFileKindMotion)) {
        json["chunks"] = ChunksOf(file.chunks);
    }
    return json;
}

void AddExport(const ExportReport& exported, Json& json) {
    Json& files = json["files"] = Json::array();
    for (const FileReport& file : exported.files) {
        files.push_back(JsonOf(file));
    }
    json["nodes"] = {{"inScene", exported.outcome.nodes.size()},
                     {"exported", exported.nodesExported}};
    Json& notExported = json["notExported"] = Json::array();
    for (const NodeToExport& node : exported.notExported) {
        const scene::LossKind& why = WhyNotExported(node);
        notExported.push_back({{"name", Text(node.name)}, {"code", why.code}, {"why", why.text}});
    }
    if (!exported.outcome.preview.empty()) {
        Json& preview = json["preview"] = {{"path", Text(exported.outcome.preview.string())},
                                           {"problems", Json::array()}};
        AddEscaped(preview, "path", exported.outcome.preview.string());
        for (const std::string& problem : exported.outcome.previewProblems) {
            preview["problems"].push_back(Text(problem));
        }
    }
    json["meshesWithLostColors"] = exported.outcome.coloredMeshes;
    if (!exported.outcome.upAxis.empty()) {
        json["upAxis"] = Text(exported.outcome.upAxis);
    }
    if (exported.outcome.unit) {
        json["unit"] = JsonOf(*exported.outcome.unit);
    }
    json["options"] = OptionsOf(exported.outcome.inForce);
}

// Cameras, lights, skins and morphers by the positions of their nodes.
void AddObjects(const scene::Scene& scene, Json& json) {
    for (const char* const member : {"cameras", "lights", "skins", "morphers"}) {
        json[member] = Json::array();
    }
    for (std::size_t i = 0; i < scene.nodes.size(); ++i) {
        const scene::Node& node = scene.nodes[i];
        if (std::string_view(KindOf(node)) == "camera") {
            json["cameras"].push_back({{"node", i}, {"name", Text(node.name)}});
        } else if (const char* const kind = KindOfLight(node)) {
            json["lights"].push_back({{"node", i}, {"name", Text(node.name)}, {"kind", kind}});
        }
    }
    for (const ListedSkin& skin : SkinsOf(scene)) {
        json["skins"].push_back({{"node", skin.node},
                                 {"name", Text(scene.nodes[skin.node].name)},
                                 {"bones", skin.bones},
                                 {"vertices", skin.vertices}});
    }
    for (const ListedMorpher& morpher : MorphersOf(scene)) {
        Json channels = Json::array();
        for (const std::string& name : morpher.channels) {
            channels.push_back(Text(name));
        }
        json["morphers"].push_back({{"node", morpher.node},
                                    {"name", Text(scene.nodes[morpher.node].name)},
                                    {"channels", std::move(channels)}});
    }
}

void AddList(const LoadedScene& listed, Json& json) {
    const scene::Scene& scene = listed.scene;
    Json& nodes = json["nodes"] = Json::array();
    for (const ListedNode& place : NodesInOrder(scene)) {
        const scene::Node& node = scene.nodes[place.index];
        nodes.push_back({{"index", place.index},
                         {"name", Text(node.name)},
                         {"parent", node.parent == scene::kNone ? Json() : Json(node.parent)},
                         {"depth", place.depth},
                         {"kind", KindOf(node)}});
    }
    Json& materials = json["materials"] = Json::array();
    for (const auto& material : scene.materials) {
        materials.push_back({{"name", Text(material->name)},
                             {"kind", KindOf(material->kind)},
                             {"textures", Json::array()}});
    }
    for (const ListedTexture& texture : TexturesOf(listed)) {
        Json entry = {{"slot", texture.slot},
                      {"name", Text(texture.name)},
                      {"standing", NameOf(texture.standing)}};
        if (!texture.file.empty()) {
            entry["file"] = Text(texture.file);
        }
        materials.at(texture.material)["textures"].push_back(std::move(entry));
    }
    Json& animations = json["animations"] = Json::array();
    for (const Animation& animation : listed.animations) {
        animations.push_back({{"name", Text(animation.name)},
                              {"seconds", animation.seconds},
                              {"frames", FramesOf(animation, scene)}});
    }
    AddObjects(scene, json);
    if (listed.unit) {
        json["upAxis"] = Text(listed.upAxis);
        json["unit"] = JsonOf(*listed.unit);
    }
}

void AddNotices(const std::vector<Notice>& notices, int status, Json& json) {
    Json messages = Json::array(), warnings = Json::array();
    for (const Notice& notice : notices) {
        if (notice.warning) {
            warnings.push_back({{"code", notice.warning->code}, {"text", Text(notice.text)}});
        } else {
            messages.push_back(Text(notice.text));
        }
    }
    if (status != 0) {
        json["error"] = messages.empty() ? Json() : messages.front();
    }
    json["messages"] = std::move(messages);
    json["warnings"] = std::move(warnings);
}

void AddWhatWasMade(const RunReport& report, Json& json) {
    if (report.dryRun) {
        json["dryRun"] = true;
        json["wouldWrite"] = report.dryRun->WouldWrite();
        json["losses"] = report.dryRun->Losses();
    }
    if (report.savedScene) {
        json["savedScene"] = Text(*report.savedScene);
    }
    if (report.savedPreset) {
        json["savedPreset"] = Text(*report.savedPreset);
    }
    if (report.listed) {
        AddList(*report.listed, json);
    }
    if (report.exported) {
        AddExport(*report.exported, json);
    }
    if (!report.origins.is_null()) {
        json["optionOrigins"] = report.origins;
    }
    if (!report.exports.empty()) {
        json["exports"] = report.exports;
    }
}

// What was found wrong, and what it took.
void AddFigures(const RunReport& report, Json& json) {
    if (!report.issues.empty()) {
        json["issues"] = IssuesOf(report.issues);
    }
    if (report.calls) {
        for (const auto& [name, count] : NamedCounts(*report.calls)) {
            json["calls"][name] = count;
        }
    }
    json["seconds"] = {{"reading", report.readingSeconds},
                       {"exporting", report.exportingSeconds},
                       {"checking", report.checkingSeconds},
                       {"all", report.sinceStart.Seconds()}};
}

}  // namespace

Json JsonOf(const SceneUnit& unit) {
    return {{"metres", unit.metres == 0 ? Json() : Json(unit.metres)},
            {"convertedTo", unit.convertedTo ? Json(*unit.convertedTo) : Json()},
            {"text", Describe(unit)}};
}

ExportReport ReportOf(const ExportFiles& files, ExportOutcome outcome) {
    ExportReport report;
    const std::set<fs::path> textures(outcome.textures.begin(), outcome.textures.end());
    for (const fs::path& place : files.Placed()) {
        report.files.push_back(ReportOf(place, files, textures));
    }
    if (files.HasOwnLog()) {
        report.files.push_back(ReportOf(files.Log(), files, textures));
    }
    std::ranges::sort(report.files, {}, &FileReport::path);
    if (files.IsInPlace()) {
        report.nodesExported = NodesExported(files.Files());
        for (const NodeToExport* const node : NodesNotExported(files.Files(), outcome.nodes)) {
            report.notExported.push_back(*node);
        }
    } else {
        outcome.preview.clear();
    }
    report.outcome = std::move(outcome);
    return report;
}

Json ObjectOf(const RunReport& report, int status, const std::vector<Notice>& notices) {
    Json json = {{"program", "hdo-export"}, {"version", HDO_VERSION}};
    if (report.batch) {
        json["status"] = status;
        AddNotices(notices, status, json);
        json.update(*report.batch);
        json["seconds"] = report.sinceStart.Seconds();
        return json;
    }
    json["scene"] = Text(report.scene);
    AddEscaped(json, "scene", report.scene);
    json["status"] = status;
    for (const std::string& file : report.inputs) {
        json["inputs"].push_back(Text(file));
    }
    AddEscaped(json, "inputs", report.inputs);
    AddNotices(notices, status, json);
    AddWhatWasMade(report, json);
    AddFigures(report, json);
    return json;
}

std::string JsonOf(const RunReport& report, int status, const std::vector<Notice>& notices) {
    return ObjectOf(report, status, notices).dump(2);
}

}  // namespace maxhost::app
