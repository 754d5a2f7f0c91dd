// Morph channels out of the targets that Assimp gives for the pieces of a node's mesh.
#pragma once

#include <assimp/mesh.h>

#include <cstddef>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/assimp/tree/tree.h"
#include "host/scene/scene.h"

namespace maxhost::import {

// The shapes of a piece.
class PieceMorph {
  public:
    // `weights` are the targets' at tick 0. Keeps a reference to the piece.
    PieceMorph(const aiMesh& piece, std::vector<double> weights, SourceFormat format);

    std::size_t Targets() const { return weights_.size(); }

    // Where the vertex is in the piece's space: without any target, in a target's shape alone, and
    // at tick 0. Numbers that are not finite count as 0 in all of them, and are counted in the
    // first two.
    aiVector3t<double> RestAt(unsigned vertex, std::size_t& notFinite) const;
    aiVector3t<double> TargetAt(std::size_t target, unsigned vertex, std::size_t& notFinite) const;
    aiVector3t<double> PositionAt(unsigned vertex) const;

    // At tick 0, of any length. The piece must have normals.
    aiVector3t<double> NormalAt(unsigned vertex) const;

  private:
    const aiMesh& piece_;
    std::vector<double> weights_;
    bool holdsChanges_;  // the targets hold what is to be added, not where it leads
};

// The channels of a node's mesh. Pieces have one in common where their targets have one name; those
// of one name within a piece are told apart by their order, so that targets without a name go by
// their number.
class MorphChannels {
  public:
    // The position of the channel of each target of the piece.
    std::vector<std::size_t> ChannelsOf(const aiMesh& piece);

    // Takes the next point of the channel. A channel's missing points are those of `rest`.
    void Add(std::size_t channel, const scene::Vec3& point, const std::vector<scene::Vec3>& rest);

    // All channels with as many points as `rest` has. Those without a name get one.
    std::vector<scene::MorphChannel> Finish(const std::vector<scene::Vec3>& rest);

    bool AreNone() const { return channels_.empty(); }

  private:
    std::vector<scene::MorphChannel> channels_;
    std::map<std::pair<std::string, std::size_t>, std::size_t> byName_;
};

}  // namespace maxhost::import
