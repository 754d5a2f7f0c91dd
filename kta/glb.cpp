#include "kta/glb.h"

#include "kta/deform.h"
#include "kta/gltf/animation.h"
#include "kta/gltf/materials.h"
#include "kta/gltf/meshes.h"
#include "kta/whole_file.h"

namespace kta {
namespace {

using gltf::Document;
using gltf::Json;

void Append(std::vector<std::string>& lines, std::vector<std::string> more) {
    lines.insert(lines.end(), more.begin(), more.end());
}

// A mesh hangs from its node, each further one of the same node from a child of it, since a node of
// glTF has one mesh. A skinned mesh, whose positions are in the world, stands beside all nodes; so
// does one without node.
void PlaceMeshes(const gltf::Meshes& meshes, std::vector<std::size_t>& roots, Document& document) {
    for (const gltf::PlacedMesh& mesh : meshes.Placed()) {
        if (!mesh.skin && mesh.node != kNoNode) {
            if (!document.At("nodes", mesh.node).contains("mesh")) {
                document.At("nodes", mesh.node)["mesh"] = mesh.number;
                continue;
            }
            const std::size_t child =
                document.Add("nodes", {{"name", mesh.name + " mesh"}, {"mesh", mesh.number}});
            document.At("nodes", mesh.node)["children"].push_back(child);
            continue;
        }
        Json node = {{"name", mesh.skin ? mesh.name + " skin" : mesh.name}, {"mesh", mesh.number}};
        if (mesh.skin) {
            node["skin"] = *mesh.skin;
        }
        roots.push_back(document.Add("nodes", std::move(node)));
    }
}

// Returns the members that stand before the document's lists.
Json MakeDocument(const File& actor, const File* motion, const GlbOptions& options,
                  Document& document, std::vector<std::string>& warnings) {
    const NodeTree tree(actor, motion);
    const std::vector<gltf::NodePlace> places = gltf::PlaceNodes(tree);
    gltf::Materials materials(actor, options, document);
    gltf::Meshes meshes(tree, places, options, materials, document);
    for (const ActorMesh& mesh : MeshesOf(actor)) {
        if (options.withCollision || mesh.mesh->head.isCollision == 0) {
            meshes.Add(mesh);
        }
    }
    std::vector<std::size_t> roots = gltf::AddNodes(tree, places, meshes.Skins(), document);
    PlaceMeshes(meshes, roots, document);
    Append(warnings, meshes.Warnings());
    Append(warnings, materials.Warnings());
    Append(warnings, gltf::AddAnimation(tree, places, document));
    Json head = {{"asset", {{"version", "2.0"}, {"generator", "kta"}}}};
    if (!roots.empty()) {
        document.Add("scenes", {{"nodes", roots}});
        head["scene"] = 0;
    }
    return head;
}

}  // namespace

std::vector<std::uint8_t> EncodeGlb(const File& actor, const File* motion,
                                    const GlbOptions& options, std::vector<std::string>& warnings) {
    Document document;
    Json head = MakeDocument(actor, motion, options, document, warnings);
    std::vector<std::uint8_t> file;
    document.Encode(std::move(head), [&file](std::span<const std::uint8_t> bytes) {
        file.insert(file.end(), bytes.begin(), bytes.end());
    });
    return file;
}

std::vector<std::string> WriteGlb(const std::filesystem::path& file, const File& actor,
                                  const File* motion) {
    std::vector<std::string> warnings;
    Document document;
    Json head = MakeDocument(actor, motion, {}, document, warnings);
    ReplaceWholeFile(file, [&](std::ostream& out) {
        document.Encode(std::move(head), [&out](std::span<const std::uint8_t> bytes) {
            out.write(reinterpret_cast<const char*>(bytes.data()),
                      static_cast<std::streamsize>(bytes.size()));
        });
    });
    return warnings;
}

}  // namespace kta
