#include "kta/preview/preview.h"

#include <memory>
#include <optional>
#include <set>

#include "kta/command/command.h"
#include "kta/command/preview_options.h"
#include "kta/preview/page.h"
#include "kta/text.h"
#include "kta/texture_files.h"

namespace kta::command {
namespace {

// What was read of the files. Of a faulty one, the chunks before the fault are shown.
struct Files {
    Reading actor;
    std::optional<Reading> motion;
    Status status = kDone;
};

// Complains of what is wrong; whether there is an actor, and a motion where one is asked for.
bool ReadAll(const PreviewOptions& options, Files& files) {
    files.actor = ReadPart(options.actor, kFileKindActor, files.status);
    if (!options.motion.empty()) {
        files.motion = ReadPart(options.motion, kFileKindMotion, files.status);
    }
    return files.actor.file && (!files.motion || files.motion->file);
}

// Complains of those that cannot be shown, which is no failure.
ActorTextures TexturesOf(const PreviewOptions& options, const File& actor) {
    ActorTextures textures;
    if (!options.withTextures) {
        return textures;
    }
    TextureFinder finder = FinderFor(options.actor, options.textureFolders);
    textures = LoadTextures(actor, finder);
    for (const std::string& fault : textures.faults) {
        Complain(fault);
    }
    if (!textures.notFound.empty()) {
        Complain(NameOf(options.actor) + ": " + Counted(textures.notFound.size(), "texture") +
                 " not found (" + finder.WhereItLooks() + "): " + Joined(textures.notFound));
    }
    return textures;
}

std::optional<std::pair<double, double>> TimesOf(const Files& files, const NodeTree& nodes) {
    return files.motion ? std::optional(std::pair(nodes.FirstTime(), nodes.LastTime()))
                        : std::nullopt;
}

// The file that the pictures make; what there is to show is told in `preview`.
std::vector<std::uint8_t> Drawn(const PreviewModel& model, const PreviewPlan& plan,
                                PreviewForm form, Preview& preview) {
    if (plan.shots.size() == 1 && form == PreviewForm::kPicture && plan.sheet.Places() == 1) {
        PngWriter file(plan.width, plan.height);
        const auto append = [&file, next = std::size_t{0}](const Picture& picture,
                                                           int end) mutable {
            const auto ready =
                static_cast<std::size_t>(picture.width) * static_cast<std::size_t>(end);
            file.Append(std::span(picture.pixels).subspan(next, ready - next));
            next = ready;
        };
        const PreviewShot& shot = plan.shots.front().shot;
        preview =
            DrawPreview(model, {plan.width, plan.height, shot.direction, shot.seconds}, append);
        return preview.picture ? file.Finish() : std::vector<std::uint8_t>();
    }
    std::vector<PreviewShot> shots;
    for (const PlannedShot& planned : plan.shots) {
        shots.push_back(planned.shot);
    }
    if (form == PreviewForm::kAnimation) {
        AnimatedPngWriter file(plan.delay);
        preview = DrawSeries(model, shots, plan.width, plan.height,
                             [&file](const Picture& picture) { file.Append(picture); });
        return file.Finish();
    }
    Sheet sheet(plan.sheet, plan.width, plan.height);
    std::size_t next = 0;
    preview = DrawSeries(model, shots, plan.width, plan.height, [&](Picture picture) {
        WriteLine(picture, plan.shots[next++].label);
        sheet.Add(picture);
    });
    return EncodePng(sheet.Whole());
}

// What is wrong with the channels of --morph; empty where the actor has them all.
std::string FaultOfMorphs(const PreviewOptions& options, const File& actor) {
    std::set<std::string> channels;
    for (const Chunk& chunk : actor.chunks) {
        if (const auto* const morph = chunk.As<Morph>()) {
            channels.emplace(TextOf(morph->channel.channelName));
        }
    }
    for (const auto& [name, weight] : MorphWeights(options)) {
        if (!channels.contains(name)) {
            const std::string nearest = NearestWord(name, {channels.begin(), channels.end()});
            return "--morph: " + NameOf(options.actor) + " has no channel \"" + name + '"' +
                   (nearest.empty() ? "" : "; did you mean \"" + nearest + "\"?");
        }
    }
    return "";
}

Status DrawPictures(const PreviewOptions& options, const Files& files) {
    const File& actor = *files.actor.file;
    if (const std::string fault = FaultOfMorphs(options, actor); !fault.empty()) {
        Complain(fault);
        return kUnusable;
    }
    const ActorTextures textures = TexturesOf(options, actor);
    const PreviewModel model(
        actor, files.motion ? &*files.motion->file : nullptr,
        {options.withCollision, options.withBones, &textures, MorphWeights(options)});
    const auto [plan, refusal] = PlanPreview(options, TimesOf(files, model.Nodes()));
    if (!plan) {
        Complain(refusal);
        return kUnusable;
    }
    Preview preview;
    const std::vector<std::uint8_t> bytes = Drawn(model, *plan, FormOf(options), preview);
    if (!preview.picture) {
        Complain(NameOf(options.actor) + ": " +
                 (preview.triangles == 0
                      ? "no triangle to show"
                      : "nothing shows of " + Counted(preview.triangles, "triangle") +
                            ", without area or seen from the edge") +
                 ", nothing written");
        return kUnusable;
    }
    return WriteOutput(options.output, bytes) ? files.status : kUnusable;
}

// The file's name without directories.
std::string TitleOf(const std::string& path) {
    const std::u8string name = std::filesystem::path(path).filename().u8string();
    return path == "-" ? "Actor" : std::string(name.begin(), name.end());
}

Status WritePage(const PreviewOptions& options, const Files& files) {
    PageSource source;
    source.actor = &files.actor;
    source.motion = files.motion ? &*files.motion : nullptr;
    source.title = TitleOf(options.actor);
    source.actorName = NameOf(options.actor);
    source.motionName = NameOf(options.motion);
    source.withCollision = options.withCollision;
    TextureFinder finder = FinderFor(options.actor, options.textureFolders);
    if (options.withTextures) {
        source.findTexture = [&finder](std::string_view name) { return finder.Find(name); };
    }
    std::vector<std::string> warnings;
    const std::string page = EncodePage(source, warnings);
    for (const std::string& warning : warnings) {
        Complain(source.actorName + ": " + warning);
    }
    const auto* const bytes = reinterpret_cast<const std::uint8_t*>(page.data());
    return WriteOutput(options.output, {bytes, page.size()}) ? files.status : kUnusable;
}

// A page has no use for what pictures alone have.
Status Run(const PreviewOptions& options, std::span<CLI::Option* const> pictureOptions) {
    const bool isPage = FormOf(options) == PreviewForm::kPage;
    for (const CLI::Option* const option : pictureOptions) {
        if (isPage && option->count() > 0) {
            Complain(option->get_name() + " is for pictures, not for pages");
            return kUnusable;
        }
    }
    Files files;
    if (!ReadAll(options, files)) {
        return std::max(files.status, kFaultyFile);
    }
    return isPage ? WritePage(options, files) : DrawPictures(options, files);
}

}  // namespace

Command AddPreview(CLI::App& kta) {
    const auto options = std::make_shared<PreviewOptions>();
    CLI::App* const preview = kta.add_subcommand(
        "preview",
        "Pictures of an actor, still or animated, at rest and in motion, and pages that show both\n"
        "in a browser: its meshes in their materials' diffuse colours and textures.");
    const std::vector<CLI::Option*> pictureOptions = DescribePreview(*preview, *options);
    return {preview, [options, pictureOptions] { return Run(*options, pictureOptions); }};
}

}  // namespace kta::command
