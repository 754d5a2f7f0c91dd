#include "host/scene/scene_check_parts.h"

namespace maxhost::scene {

void ObjectCheck::Check(const Object& object) {
    if (object.parameter0) {
        place_.Finite({"parameter0"}, *object.parameter0);
    }
    if (object.mesh) {
        if (seen_.insert(object.mesh.get()).second) {
            CheckMesh(*object.mesh);
        }
        return;
    }
    if (!object.superClassId) {
        place_.Refuse({"superClassId"}, "nothing", "a super class id");
    }
    if (!object.classId) {
        place_.Refuse({"classId"}, "nothing", "a class id");
    }
}

void ObjectCheck::CheckMesh(const Mesh& mesh) const {
    place_.Finite("vertices", mesh.vertices);
    for (std::size_t i = 0; i < mesh.faces.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            place_.Position({"faces", i, k}, mesh.faces[i].v[k], mesh.vertices.size(), "vertices");
        }
    }
    for (const auto& [number, channel] : mesh.channels) {
        if (number < 1 || number > kMostMapChannel) {
            const std::string name = std::to_string(number);
            place_.Refuse({"channels", std::string_view(name)}, "map channel " + name,
                          "a map channel from 1 to " + std::to_string(kMostMapChannel));
        }
        const Place::Down down(place_, {"channels", number});
        CheckChannel(channel, mesh.faces.size());
    }
    for (const auto& [vertex, normal] : mesh.normals) {
        place_.Position({"normals", vertex}, vertex, mesh.vertices.size(), "vertices");
        const Place::Down down(place_, {"normals"});
        for (std::size_t i = 0; i < 3; ++i) {
            place_.Finite({vertex, i}, normal[i]);
        }
    }
}

void ObjectCheck::CheckChannel(const MapChannel& channel, std::size_t faces) const {
    place_.Finite("vertices", channel.vertices);
    const std::size_t expected = channel.vertices.empty() ? 0 : faces;
    if (channel.faces.size() != expected) {
        place_.Refuse({"faces"}, std::to_string(channel.faces.size()) + " map faces",
                      channel.vertices.empty()
                          ? "none in a channel without vertices"
                          : std::to_string(expected) + ", one for each face of the mesh");
    }
    for (std::size_t i = 0; i < channel.faces.size(); ++i) {
        for (std::size_t k = 0; k < 3; ++k) {
            place_.Position({"faces", i, k}, channel.faces[i][k], channel.vertices.size(),
                            "vertices of the channel");
        }
    }
}

namespace {

void CheckKind(const Skin& skin, std::size_t nodes, const Place& place) {
    for (std::size_t i = 0; i < skin.bones.size(); ++i) {
        place.Position({"bones", i}, skin.bones[i], nodes, "nodes");
    }
    for (std::size_t i = 0; i < skin.weights.size(); ++i) {
        for (std::size_t k = 0; k < skin.weights[i].size(); ++k) {
            const SkinWeight& weight = skin.weights[i][k];
            if (weight.slot >= 0) {
                place.Position({"weights", i, k, 0}, weight.slot, skin.bones.size(), "bones");
            }
            place.Finite({"weights", i, k, 1}, weight.weight);
        }
    }
}

void CheckKind(const Physique& physique, std::size_t nodes, const Place& place) {
    for (std::size_t i = 0; i < physique.vertices.size(); ++i) {
        if (const auto* rigid = std::get_if<PhysiqueRigid>(&physique.vertices[i])) {
            place.Position({"vertices", i, "rigid"}, rigid->node, nodes, "nodes");
        } else if (const auto* blended = std::get_if<PhysiqueBlended>(&physique.vertices[i])) {
            for (std::size_t k = 0; k < blended->nodes.size(); ++k) {
                const auto& [node, weight] = blended->nodes[k];
                place.Position({"vertices", i, "blended", k, 0}, node, nodes, "nodes");
                place.Finite({"vertices", i, "blended", k, 1}, weight);
            }
        }
    }
}

}  // namespace

void ObjectCheck::Check(const Modifier& modifier, std::size_t nodes) const {
    if (const auto* skin = std::get_if<Skin>(&modifier.kind)) {
        CheckKind(*skin, nodes, place_);
    } else if (const auto* physique = std::get_if<Physique>(&modifier.kind)) {
        CheckKind(*physique, nodes, place_);
    } else if (const auto* morpher = std::get_if<Morpher>(&modifier.kind)) {
        for (std::size_t i = 0; i < morpher->channels.size(); ++i) {
            const Place::Down down(place_, {"channels", i});
            place_.Text("name", morpher->channels[i].name);
            place_.Finite("points", morpher->channels[i].points);
        }
    }
}

}  // namespace maxhost::scene
