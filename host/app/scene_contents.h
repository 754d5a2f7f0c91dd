// What a scene has beside its nodes: what --list shows of it.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "host/app/loaded_scene.h"

namespace maxhost::app {

// omni, spot, directional or other; null: the node is no light.
const char* KindOfLight(const scene::Node& node);

struct ListedSkin {
    std::size_t node = 0;  // in the scene
    std::size_t bones = 0;
    std::size_t vertices = 0;
};

struct ListedMorpher {
    std::size_t node = 0;
    std::vector<std::string> channels;  // their names
};

enum class TextureStanding { inside, found, missing, unknown };
// inside (the model's file holds it), found, missing, or unknown: nobody looked for it.
const char* NameOf(TextureStanding standing);

struct ListedTexture {
    std::size_t material = 0;  // in the scene; a material within it counts for it
    std::string slot;          // "diffuse", of a standard material; else its number
    std::string name;          // as the map has it
    TextureStanding standing = TextureStanding::unknown;
    std::string file;  // absolute, of one that was found
};

std::vector<ListedSkin> SkinsOf(const scene::Scene& scene);
std::vector<ListedMorpher> MorphersOf(const scene::Scene& scene);
// In the order of the materials and of their slots.
std::vector<ListedTexture> TexturesOf(const LoadedScene& loaded);

// A clip's length at the scene's frame rate.
double FramesOf(const Animation& animation, const scene::Scene& scene);

// As in "cm, as the file says, converted to m".
std::string Describe(const SceneUnit& unit);

// The lines of --list for all that, fields separated by tabs and names escaped. In this order:
//   camera, node's position, name
//   light, node's position, omni|spot|directional|other, name
//   skin, node's position, bones, vertices, name
//   morph, node's position, number of the channel, name of the channel
//   texture, material's position, slot, inside|found|missing|unknown, name
//   clip, position, seconds, frames, name: the animations once more
//   unit, metres (0: not known), in words
//   up, in words
std::vector<std::string> ListContents(const LoadedScene& loaded);

}  // namespace maxhost::app
