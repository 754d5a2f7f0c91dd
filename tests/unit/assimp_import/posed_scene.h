// What an animated Assimp scene shows at a time, worked out the straightforward way, beside what
// the imported scene shows.
#pragma once

#include <assimp/scene.h>

#include <cstddef>
#include <string>
#include <vector>

#include "host/assimp/import.h"
#include "host/assimp/tree/tree.h"

// Of a node's pose in the world.
struct PoseError {
    double degrees = 0;
    double distance = 0;  // in parts of the scene's bounding diagonal
    std::string where;    // the node and the tick of the worst angle
    double diagonal = 0;

    void Add(const PoseError& other);
};

// The worst over all nodes, at every frame of the animation range and halfway between. `clip` is
// what `imported` was made with.
PoseError WorstPose(const aiScene& source, const std::string& path, std::size_t clip,
                    const maxhost::import::ImportedScene& imported);
