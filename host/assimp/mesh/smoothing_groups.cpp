#include "host/assimp/mesh/smoothing_groups.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <span>
#include <tuple>

namespace maxhost::import {
namespace {

using scene::Vec3;

constexpr double kCloseEnough = 0.999848;     // the cosine of a hair less than 1 degree
constexpr double kOneDirection = 0.99999848;  // of 0.1 degrees
constexpr Vec3 kNoNormal = {0, 0, 0};

double Dot(const Vec3& a, const Vec3& b) {
    return double{a[0]} * b[0] + double{a[1]} * b[1] + double{a[2]} * b[2];
}

// Rounded as the SDK's points are.
Vec3 Product(const Vec3& a, const Vec3& b, const Vec3& c) {
    const Vec3 u{b[0] - a[0], b[1] - a[1], b[2] - a[2]};
    const Vec3 w{c[0] - b[0], c[1] - b[1], c[2] - b[2]};
    return {static_cast<float>(double{u[1]} * w[2] - double{u[2]} * w[1]),
            static_cast<float>(double{u[2]} * w[0] - double{u[0]} * w[2]),
            static_cast<float>(double{u[0]} * w[1] - double{u[1]} * w[0])};
}

double NormOf(const Vec3& vector) {
    return std::sqrt(Dot(vector, vector));
}

// Whether `vector`, of that length, points where the normal does that a corner states.
bool PointsTo(const Vec3& stated, const Vec3& vector, double length) {
    return stated == kNoNormal ||
           (length > 0 && std::isfinite(length) && Dot(stated, vector) >= kCloseEnough * length);
}

bool IsOne(const Vec3& a, const Vec3& b) {
    return a == kNoNormal || b == kNoNormal || Dot(a, b) >= kOneDirection;
}

// Disjoint sets of faces (Tarjan and van Leeuwen, 1984: linking by index, path halving). The root
// of a set is its first face.
class FaceSets {
  public:
    explicit FaceSets(std::size_t faces) : parents_(faces) {
        std::iota(parents_.begin(), parents_.end(), std::uint32_t{0});
    }

    std::uint32_t RootOf(std::uint32_t face) {
        while (parents_[face] != face) {
            parents_[face] = parents_[parents_[face]];
            face = parents_[face];
        }
        return face;
    }

    void Unite(std::uint32_t a, std::uint32_t b) {
        const auto [first, second] = std::minmax({RootOf(a), RootOf(b)});
        parents_[second] = first;
    }

  private:
    std::vector<std::uint32_t> parents_;
};

// Lists of numbers by a key from 0 to `keys` - 1, made in linear time. Each list is ascending.
class ListsByKey {
  public:
    // `keyOf(i)` is the key of number i, `keys` that of none.
    template <class KeyOf>
    ListsByKey(std::size_t keys, std::size_t numbers, KeyOf keyOf) : ends_(keys + 1) {
        for (std::size_t i = 0; i < numbers; ++i) {
            ++ends_[keyOf(i)];
        }
        std::exclusive_scan(ends_.begin(), ends_.end(), ends_.begin(), std::size_t{0});
        numbers_.resize(ends_.back());
        for (std::size_t i = 0; i < numbers; ++i) {
            if (const std::size_t key = keyOf(i); key < keys) {
                numbers_[ends_[key]++] = static_cast<std::uint32_t>(i);
            }
        }
    }

    std::span<const std::uint32_t> Of(std::size_t key) const {
        const std::size_t begin = key > 0 ? ends_[key - 1] : 0;
        return std::span(numbers_).subspan(begin, ends_[key] - begin);
    }

  private:
    std::vector<std::size_t> ends_;
    std::vector<std::uint32_t> numbers_;
};

// One side of an edge: a face with its corners at the edge's ends, the lower vertex and the higher.
struct Side {
    std::uint32_t high;  // vertex
    std::uint32_t face;
    std::uint16_t material;
    std::uint8_t lowCorner, highCorner;
};

class SmoothingGroups {
  public:
    SmoothingGroups(scene::Mesh& mesh, const std::vector<Vec3>& normals,
                    const std::vector<scene::Face>& sources)
        : mesh_(mesh),
          normals_(normals),
          sources_(sources),
          sets_(mesh.faces.size()),
          corners_(mesh.vertices.size(), 3 * mesh.faces.size(),
                   [&mesh](std::size_t corner) { return mesh.faces[corner / 3].v[corner % 3]; }) {
        products_.reserve(mesh.faces.size());
        for (const scene::Face& face : mesh.faces) {
            products_.push_back(Product(mesh.vertices[face.v[0]], mesh.vertices[face.v[1]],
                                        mesh.vertices[face.v[2]]));
        }
    }

    bool Find() {
        UniteFaces();
        MakePatches();
        if (!GiveGroups() || !MakesNormals()) {
            return false;
        }
        for (std::size_t i = 0; i < mesh_.faces.size(); ++i) {
            mesh_.faces[i].smoothing =
                patchOf_[i] < patches_.size() ? patches_[patchOf_[i]].mask : 0;
        }
        return true;
    }

  private:
    struct Patch {
        std::uint32_t faces = 0;
        bool isFlat = true;  // every face states its own normal, so that it needs no group
        std::uint32_t mask = 0;
    };

    const Vec3& Stated(std::size_t face, std::size_t corner) const {
        return normals_[sources_[face].v[corner]];
    }

    bool StatesNormals(std::size_t face) const {
        return Stated(face, 0) != kNoNormal || Stated(face, 1) != kNoNormal ||
               Stated(face, 2) != kNoNormal;
    }

    bool StatesItsOwn(std::size_t face) const {
        const double length = NormOf(products_[face]);
        return PointsTo(Stated(face, 0), products_[face], length) &&
               PointsTo(Stated(face, 1), products_[face], length) &&
               PointsTo(Stated(face, 2), products_[face], length);
    }

    template <class Visit>
    void ForEachSide(std::uint32_t corner, Visit visit) const;
    void UniteFaces();
    void UniteSides(std::span<const Side> sides);
    void MakePatches();
    bool GiveGroups();
    void GiveGroup(Patch& patch, std::span<const std::uint32_t> faces);
    bool MakesNormals();
    bool MakesNormalsAt(std::span<const std::uint32_t> corners);

    scene::Mesh& mesh_;
    const std::vector<Vec3>& normals_;
    const std::vector<scene::Face>& sources_;
    std::vector<Vec3> products_;  // of each face: its normal, as long as twice its area
    FaceSets sets_;
    ListsByKey corners_;  // of each vertex, counted through all faces
    std::vector<Patch> patches_;
    std::vector<std::uint32_t> patchOf_;  // of each face; patches_.size() for none
    std::vector<std::uint32_t> usedAt_;   // the groups of the patches at each vertex
};

// The sides that this corner is the lower end of, in their order around the face.
template <class Visit>
void SmoothingGroups::ForEachSide(std::uint32_t corner, Visit visit) const {
    const std::uint32_t number = corner / 3;
    const scene::Face& face = mesh_.faces[number];
    const auto here = static_cast<std::uint8_t>(corner % 3);
    const auto next = static_cast<std::uint8_t>((here + 1) % 3);
    const auto last = static_cast<std::uint8_t>((here + 2) % 3);
    for (const std::uint8_t other : here == 0 ? std::array{next, last} : std::array{last, next}) {
        if (face.v[here] < face.v[other]) {
            visit(Side{face.v[other], number, face.material, here, other});
        }
    }
}

// The few sides of one lower vertex at a time, put into order by their edges.
void SmoothingGroups::UniteFaces() {
    std::vector<Side> sides;
    for (std::size_t vertex = 0; vertex < mesh_.vertices.size(); ++vertex) {
        sides.clear();
        for (const std::uint32_t corner : corners_.Of(vertex)) {
            if (StatesNormals(corner / 3)) {
                ForEachSide(corner, [&sides](const Side& side) { sides.push_back(side); });
            }
        }
        std::sort(sides.begin(), sides.end(), [](const Side& a, const Side& b) {
            return std::tie(a.high, a.material, a.face, a.lowCorner) <
                   std::tie(b.high, b.material, b.face, b.lowCorner);
        });
        for (auto begin = sides.begin(); begin != sides.end();) {
            const auto end = std::find_if(begin, sides.end(), [begin](const Side& side) {
                return side.high != begin->high || side.material != begin->material;
            });
            UniteSides({begin, end});
            begin = end;
        }
    }
}

// Unites the faces at one edge that state the same normals there. Of an edge where more different
// normals meet than any surface has, some faces stay alone.
void SmoothingGroups::UniteSides(std::span<const Side> sides) {
    constexpr std::size_t kMostKinds = 8;
    std::array<const Side*, kMostKinds> kinds{};
    std::size_t count = 0;
    for (const Side& side : sides) {
        const auto end = kinds.begin() + count;
        const auto same = std::find_if(kinds.begin(), end, [&](const Side* kind) {
            return IsOne(Stated(kind->face, kind->lowCorner), Stated(side.face, side.lowCorner)) &&
                   IsOne(Stated(kind->face, kind->highCorner), Stated(side.face, side.highCorner));
        });
        if (same != end) {
            sets_.Unite((*same)->face, side.face);
        } else if (count < kMostKinds) {
            kinds[count++] = &side;
        }
    }
}

void SmoothingGroups::MakePatches() {
    patchOf_.resize(mesh_.faces.size());
    for (std::uint32_t i = 0; i < mesh_.faces.size(); ++i) {
        if (!StatesNormals(i)) {
            continue;
        }
        const std::uint32_t root = sets_.RootOf(i);
        if (root == i) {
            patchOf_[i] = static_cast<std::uint32_t>(patches_.size());
            patches_.emplace_back();
        }
        Patch& patch = patches_[patchOf_[i] = patchOf_[root]];
        ++patch.faces;
        patch.isFlat = patch.isFlat && StatesItsOwn(i);
    }
    for (std::uint32_t i = 0; i < mesh_.faces.size(); ++i) {
        if (!StatesNormals(i)) {
            patchOf_[i] = static_cast<std::uint32_t>(patches_.size());
        }
    }
}

// Patches that cannot do without a group come first. False where groups run out for one of them.
bool SmoothingGroups::GiveGroups() {
    const ListsByKey faces(patches_.size(), patchOf_.size(),
                           [this](std::size_t face) { return patchOf_[face]; });
    usedAt_.assign(mesh_.vertices.size(), 0);
    for (std::size_t i = 0; i < patches_.size(); ++i) {
        if (!patches_[i].isFlat) {
            GiveGroup(patches_[i], faces.Of(i));
            if (patches_[i].mask == 0) {
                return false;
            }
        }
    }
    for (std::size_t i = 0; i < patches_.size(); ++i) {
        if (patches_[i].isFlat && patches_[i].faces > 1) {
            GiveGroup(patches_[i], faces.Of(i));
        }
    }
    return true;
}

// The lowest group that is free at all vertices of the patch; none where there is none.
void SmoothingGroups::GiveGroup(Patch& patch, std::span<const std::uint32_t> faces) {
    std::uint32_t used = 0;
    for (const std::uint32_t face : faces) {
        for (const std::uint32_t vertex : mesh_.faces[face].v) {
            used |= usedAt_[vertex];
        }
    }
    patch.mask = ~used & (used + 1);
    for (const std::uint32_t face : faces) {
        for (const std::uint32_t vertex : mesh_.faces[face].v) {
            usedAt_[vertex] |= patch.mask;
        }
    }
}

// Takes the groups from flat patches that are better off without. False where a patch that needs
// its group gets other normals than it states.
bool SmoothingGroups::MakesNormals() {
    for (std::size_t vertex = 0; vertex < mesh_.vertices.size(); ++vertex) {
        if (!MakesNormalsAt(corners_.Of(vertex))) {
            return false;
        }
    }
    return true;
}

bool SmoothingGroups::MakesNormalsAt(std::span<const std::uint32_t> corners) {
    constexpr std::size_t kGroups = 32;
    std::array<Vec3, kGroups> sums;  // of the groups in `known`
    std::array<double, kGroups> lengths;
    std::uint32_t known = 0, measured = 0;
    const auto patchAt = [&](std::uint32_t corner) {
        const std::uint32_t patch = patchOf_[corner / 3];
        return patch < patches_.size() && patches_[patch].mask != 0 ? &patches_[patch] : nullptr;
    };
    for (const std::uint32_t corner : corners) {
        if (const Patch* const patch = patchAt(corner)) {
            Vec3& sum = sums[static_cast<std::size_t>(std::countr_zero(patch->mask))];
            if ((known & patch->mask) == 0) {
                known |= patch->mask;
                sum = {0, 0, 0};
            }
            for (std::size_t i = 0; i < 3; ++i) {
                sum[i] += products_[corner / 3][i];
            }
        }
    }
    for (const std::uint32_t corner : corners) {
        Patch* const patch = patchAt(corner);
        if (!patch) {
            continue;
        }
        const auto group = static_cast<std::size_t>(std::countr_zero(patch->mask));
        if ((measured & patch->mask) == 0) {
            measured |= patch->mask;
            lengths[group] = NormOf(sums[group]);
        }
        if (!PointsTo(Stated(corner / 3, corner % 3), sums[group], lengths[group])) {
            if (!patch->isFlat) {
                return false;
            }
            patch->mask = 0;
        }
    }
    return true;
}

}  // namespace

bool FindSmoothingGroups(scene::Mesh& mesh, const std::vector<Vec3>& normals,
                         const std::vector<scene::Face>& sources) {
    return SmoothingGroups(mesh, normals, sources).Find();
}

}  // namespace maxhost::import
