// Scenes of one kind and any size, for measurements and for tests of how cost grows.
#pragma once

#include <string>
#include <vector>

#include "host/scene/scene.h"

namespace bench {

struct Workload {
    const char* name;
    const char* unit;  // what `count` counts
    maxhost::scene::Scene (*make)(int count);
    bool isSampled;  // the motion; otherwise keys are copied
    int size;        // of the smallest scene that is measured; twice and four times as much follow
};

// Each isolates one thing that a scene may have much of.
const std::vector<Workload>& Workloads();
const Workload& WorkloadNamed(const std::string& name);

// ------------------------------------------------ their scenes

// Siblings, or each below the one before; without objects and without motion.
maxhost::scene::Scene WideTree(int nodes);
maxhost::scene::Scene DeepTree(int nodes);
// Nodes with a small mesh and a material of its own each.
maxhost::scene::Scene ManyMaterials(int materials);
// A bumpy grid, smooth, with two sets of texture coordinates: two triangles a cell.
maxhost::scene::Scene GridMesh(int triangles);
// Bones, each two below one other, that move and turn by curves with so many keys, one a frame.
maxhost::scene::Scene MovingRig(int bones, int frames);
// So many vertices that each follow 8 of 64 bones.
maxhost::scene::Scene SkinnedMesh(int vertices);
// A mesh with morph targets of so many points each.
maxhost::scene::Scene MorphTargets(int channels, int points);

}  // namespace bench
