#include "kta/glb.h"

#include <memory>

#include "kta/command/command.h"
#include "kta/preview/texture.h"
#include "kta/text.h"

namespace kta::command {
namespace {

struct GlbCommandOptions {
    std::string actor;
    std::string motion;
    std::string output;
    std::vector<std::string> textureFolders;
    GlbOptions glb;
};

bool HasNodes(const File& actor) {
    return std::any_of(actor.chunks.begin(), actor.chunks.end(),
                       [](const Chunk& chunk) { return chunk.As<KTANode>() != nullptr; });
}

// Of faulty files, what stands before the fault is shown.
Status WriteGlb(GlbCommandOptions& options) {
    Status status = kDone;
    const Reading actor = ReadPart(options.actor, kFileKindActor, status);
    const std::optional<Reading> motion =
        options.motion.empty() ? std::nullopt
                               : std::optional(ReadPart(options.motion, kFileKindMotion, status));
    if (!actor.file || (motion && !motion->file)) {
        return status;
    }
    if (!HasNodes(*actor.file)) {
        Complain(NameOf(options.actor) + ": no node to show, nothing written");
        return kUnusable;
    }
    TextureFinder finder = FinderFor(options.actor, options.textureFolders);
    options.glb.findTexture = [&finder](std::string_view name) { return finder.Find(name); };
    options.glb.convertToPng = ImageFileAsPng;
    options.glb.directory = std::filesystem::path(options.output).parent_path();
    std::vector<std::string> warnings;
    const std::vector<std::uint8_t> bytes =
        EncodeGlb(*actor.file, motion ? &*motion->file : nullptr, options.glb, warnings);
    for (const std::string& warning : warnings) {
        Complain(NameOf(options.actor) + ": " + warning);
    }
    return WriteOutput(options.output, bytes) ? status : kUnusable;
}

std::string CheckName(const std::string& path) {
    return EndsWithIgnoringCase(path, ".glb")
               ? ""
               : "\"" + path + "\" is no GLB file, expected a name that ends in .glb";
}

}  // namespace

Command AddGlb(CLI::App& kta) {
    const auto options = std::make_shared<GlbCommandOptions>();
    CLI::App* glb = kta.add_subcommand(
        "glb",
        "The actor and its motion as glTF 2.0 (.glb), which viewers and browsers show: hierarchy,\n"
        "meshes, materials, textures, skins, morph targets and animation.");
    glb->add_option("ACTOR", options->actor, "Actor file")->required();
    glb->add_option("MOTION", options->motion, "Motion file; without it nothing moves");
    glb->add_option("-o,--output", options->output, "The file to write, named *.glb")
        ->type_name("FILE")
        ->required()
        ->check(CheckName);
    glb->add_option("--texture-dir", options->textureFolders,
                    "Folder to look for textures in, with its subfolders, when they do not stand "
                    "beside the actor file (repeatable)")
        ->type_name("DIR")
        ->allow_extra_args(false)
        ->check(CLI::ExistingDirectory);
    glb->add_flag("--embed-textures", options->glb.embedTextures,
                  "Put textures into the file; BMP and TGA images become PNG");
    glb->add_option("--max-influences", options->glb.mostInfluences,
                    "Bones of a vertex, those with the greatest weights, which are then made to\n"
                    "sum to 1")
        ->type_name("N")
        ->capture_default_str()
        ->check(CLI::Range(1, 255));
    glb->add_flag("--collision", options->glb.withCollision, "With collision meshes");
    return {glb, [options] { return WriteGlb(*options); }};
}

}  // namespace kta::command
