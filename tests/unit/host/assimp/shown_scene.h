// An imported scene as 3ds Max shows it: transforms, keys, normals, and how far its poses are from
// those of the Assimp scene that it was made from.
#pragma once

#include <assimp/scene.h>

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "host/assimp/import.h"
#include "host/scene/scene.h"

std::vector<std::string> NamesOf(const maxhost::scene::Scene& scene);

// The node must have one.
const maxhost::scene::Mesh& MeshOf(const maxhost::scene::Node& node);

// The local matrix of a node of a converted scene, at tick 0 where it has keys.
maxhost::scene::Matrix MatrixOf(const maxhost::scene::Node& node);

// At any tick.
maxhost::scene::Matrix MatrixAt(const maxhost::scene::Node& node, int tick);

// ---------------------------------------------------------------- keys

// The keys of axis x, y or z; empty where it is constant.
using AxisKeys = std::vector<maxhost::scene::Key>;
const AxisKeys& PositionKeysOf(const maxhost::scene::Node& node, int axis);
const AxisKeys& RotationKeysOf(const maxhost::scene::Node& node, int axis);
const maxhost::scene::BezierScale& ScaleOf(const maxhost::scene::Node& node);

std::vector<int> TimesOf(const AxisKeys& keys);
std::vector<float> ValuesOf(const AxisKeys& keys);
// Rounded to a thousandth of a degree.
std::vector<double> DegreesOf(const AxisKeys& keys);

bool IsConstant(const maxhost::scene::Node& node);

// ---------------------------------------------------------------- normals

using CornerNormals = std::array<maxhost::scene::Vec3, 3>;

// Of each face's corners: what the SDK's mesh, filled with this one, has built at the vertex for
// the face's smoothing groups, or the face's own normal where that is nothing. They are looked up
// as a plug-in does that takes the first normal of a vertex with a group of the face.
std::vector<CornerNormals> ShownNormals(const maxhost::scene::Mesh& description);

// ---------------------------------------------------------------- poses

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
