// What is different in the weights of two skins and in the points of two morph channels.
#include "kta/diff/bodies.h"

namespace kta {
namespace {

// ---------------------------------------------------------------- weights

// A weight whose bone has the same number in both files.
struct Influence {
    std::int64_t bone = 0;  // as Numbered::IdOf
    std::int16_t number = 0;
    float weight = 0;
};

using Influences = std::vector<Influence>;

// Of the vertex whose weights begin at `first`.
void ReadInfluences(const Weights& weights, std::size_t first, std::size_t count,
                    const Numbered& nodes, Influences& influences) {
    influences.clear();
    for (std::size_t i = first; i < first + count; ++i) {
        const KTAWeight& weight = weights.weights[i];
        influences.push_back({nodes.IdOf(weight.bone), weight.bone, weight.weight});
    }
}

bool SameBones(const Influences& a, const Influences& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                      [](const Influence& x, const Influence& y) { return x.bone == y.bone; });
}

void SortByBone(Influences& influences) {
    std::stable_sort(influences.begin(), influences.end(),
                     [](const Influence& x, const Influence& y) { return x.bone < y.bone; });
}

// A bone's weight at a vertex, 0 where the file does not have the bone there.
struct BoneWeight {
    std::string bone;  // JSON of its name
    float weight = 0;
};

class WeightComparer {
  public:
    WeightComparer(const Weights& a, const Weights& b, const Comparison& by)
        : a_(a), b_(b), by_(by) {}

    void Compare(std::vector<FieldChange>& changes) {
        const std::size_t vertices = std::min(a_.weightCounts.size(), b_.weightCounts.size());
        std::size_t firstA = 0;
        std::size_t firstB = 0;
        for (std::size_t vertex = 0; vertex < vertices; ++vertex) {
            ReadInfluences(a_, firstA, a_.weightCounts[vertex], by_.a.nodes, influencesA_);
            ReadInfluences(b_, firstB, b_.weightCounts[vertex], by_.b.nodes, influencesB_);
            CompareVertex(vertex);
            firstA += a_.weightCounts[vertex];
            firstB += b_.weightCounts[vertex];
        }
        Append(vertices, changes);
    }

  private:
    void CompareVertex(std::size_t vertex) {
        const bool sameOrder = SameBones(influencesA_, influencesB_);
        if (!sameOrder) {
            SortByBone(influencesA_);
            SortByBone(influencesB_);
            moved_ += SameBones(influencesA_, influencesB_) ? 1 : 0;
        }
        BoneWeight worstA;
        BoneWeight worstB;
        double deviation = 0;
        auto a = influencesA_.begin();
        auto b = influencesB_.begin();
        while (a != influencesA_.end() || b != influencesB_.end()) {
            const bool takesA = b == influencesB_.end() ||
                                (a != influencesA_.end() && (sameOrder || a->bone <= b->bone));
            const bool takesB = a == influencesA_.end() ||
                                (b != influencesB_.end() && (sameOrder || b->bone <= a->bone));
            const float weightA = takesA ? a->weight : 0;
            const float weightB = takesB ? b->weight : 0;
            const double its = DeviationOf(weightA, weightB, by_.tolerance);
            if (its > deviation) {
                deviation = its;
                worstA = {takesA ? by_.a.nodes.NameOf(a->number) : by_.b.nodes.NameOf(b->number),
                          weightA};
                worstB = {worstA.bone, weightB};
            }
            a += takesA ? 1 : 0;
            b += takesB ? 1 : 0;
        }
        differing_.Note(deviation, vertex, worstA, worstB);
    }

    void Append(std::size_t vertices, std::vector<FieldChange>& changes) const {
        FieldChange form;
        form.item = "vertex";
        AppendSurplus(form, b_.weightCounts.size() - vertices, a_.weightCounts.size() - vertices,
                      changes);
        form.field = "weights";
        form.compared = vertices;
        form.deviation = differing_.deviation;
        const auto placeOf = [&](std::size_t vertex) -> std::vector<Label> {
            return {{"vertex", std::to_string(vertex)}, {"bone", differing_.a.bone}};
        };
        differing_.Append(
            form, placeOf, [](const BoneWeight& bone) { return NumberText(bone.weight); }, changes);
        if (moved_ > 0) {
            form.change = Change::moved;
            form.deviation.reset();
            form.count = moved_;
            changes.push_back(form);
        }
    }

    const Weights& a_;
    const Weights& b_;
    const Comparison& by_;
    Influences influencesA_, influencesB_;  // of the vertex that is compared
    Differing<BoneWeight> differing_;
    std::size_t moved_ = 0;
};

std::size_t Unrecorded(const Weights& weights) {
    return weights.vertexCount - weights.weightCounts.size();
}

}  // namespace

void CompareWeights(const Weights& a, const Weights& b, const Comparison& by,
                    std::vector<FieldChange>& changes) {
    if (Unrecorded(a) != Unrecorded(b)) {
        FieldChange change;
        change.field = "verticesWithoutRecord";
        change.a = std::to_string(Unrecorded(a));
        change.b = std::to_string(Unrecorded(b));
        changes.push_back(std::move(change));
    }
    WeightComparer(a, b, by).Compare(changes);
}

// ---------------------------------------------------------------- morphs

void CompareMorphs(const Morph& a, const Morph& b, const Comparison& by,
                   std::vector<FieldChange>& changes) {
    const std::size_t points = std::min(a.points.size(), b.points.size());
    FieldChange form;
    form.item = "point";
    AppendSurplus(form, b.points.size() - points, a.points.size() - points, changes);
    Differing<std::array<float, 3>> differing;
    for (std::size_t i = 0; i < points; ++i) {
        const std::array<float, 3> itsA = MorphPosition(a, i);
        const std::array<float, 3> itsB = MorphPosition(b, i);
        differing.Note(DeviationOf(itsA, itsB, by.tolerance), i, itsA, itsB);
    }
    form.field = "position";
    form.compared = points;
    form.deviation = differing.deviation;
    const auto placeOf = [](std::size_t point) -> std::vector<Label> {
        return {{"point", std::to_string(point)}};
    };
    differing.Append(form, placeOf, ListText, changes);
}

}  // namespace kta
