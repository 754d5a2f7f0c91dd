// What is different in the bodies of two chunks that are counterparts: field by field, and item by
// item where a chunk holds many.
#pragma once

#include <cstring>

#include "kta/diff/references.h"
#include "kta/dump.h"
#include "kta/fields.h"

namespace kta {

// What bodies are compared by: `a` and `b` are what the numbers in the two files stand for.
struct Comparison {
    const References& a;
    const References& b;
    Tolerance tolerance;
};

// 0 where the field's elements are equal: the largest deviation of reals, and 1 for everything else
// that is not the same.
double DeviationOf(const Field& field, const void* a, const void* b, const Tolerance& tolerance);
double DeviationOf(std::span<const float> a, std::span<const float> b, const Tolerance& tolerance);

// How far the rotations of a field that is a quaternion are turned apart, 0 to 180; none for other
// fields and for what is no rotation.
std::optional<double> DegreesBetween(const Field& field, const void* a, const void* b);

// "[0.5,1.0]".
std::string ListText(std::span<const float> values);

// The items that differ in a field, and the one that does most.
template <typename Value>
struct Differing {
    std::size_t count = 0;
    double deviation = 0;
    std::size_t at = 0;  // position in the first file
    Value a{}, b{};

    // Passes over a deviation of 0.
    void Note(double itsDeviation, std::size_t position, const Value& itsA, const Value& itsB) {
        count += itsDeviation != 0 ? 1 : 0;
        if (itsDeviation > deviation) {
            deviation = itsDeviation;
            at = position;
            a = itsA;
            b = itsB;
        }
    }

    // As a change, where there are any: `form` has the field's name and the rest that is known.
    // `placeOf` gives the labels of the item at a position, `textOf` the JSON of a value.
    template <typename PlaceOf, typename TextOf>
    void Append(FieldChange form, PlaceOf placeOf, TextOf textOf,
                std::vector<FieldChange>& changes) const {
        if (count > 0) {
            form.count = count;
            form.place = placeOf(at);
            form.a = textOf(a);
            form.b = textOf(b);
            changes.push_back(std::move(form));
        }
    }
};

// Pairs of records of one kind that a chunk has many of.
template <typename Record>
class RecordPairs {
  public:
    void Compare(const Record& a, const Record& b, std::size_t position,
                 const Tolerance& tolerance) {
        ++compared_;
        if (std::memcmp(&a, &b, sizeof(Record)) == 0) {
            return;
        }
        for (std::size_t i = 0; i < fields_.size(); ++i) {
            differing_[i].Note(DeviationOf(fields_[i], &a, &b, tolerance), position, a, b);
        }
    }

    std::size_t Compared() const { return compared_; }

    // A change for each field that differs.
    template <typename PlaceOf>
    void Append(FieldChange form, PlaceOf placeOf, std::vector<FieldChange>& changes) const {
        form.compared = compared_;
        for (std::size_t i = 0; i < fields_.size(); ++i) {
            const Field& field = fields_[i];
            form.field = field.name;
            form.deviation.reset();
            form.degrees.reset();
            if (field.type == FieldType::f32) {
                form.deviation = differing_[i].deviation;
                form.degrees = DegreesBetween(field, &differing_[i].a, &differing_[i].b);
            }
            differing_[i].Append(
                form, placeOf, [&](const Record& record) { return ValueText(field, &record); },
                changes);
        }
    }

  private:
    std::span<const Field> fields_ = FieldsOf<Record>();
    std::vector<Differing<Record>> differing_ = std::vector<Differing<Record>>(fields_.size());
    std::size_t compared_ = 0;
};

// Items that only one of the files has.
void AppendSurplus(FieldChange form, std::size_t added, std::size_t removed,
                   std::vector<FieldChange>& changes);

// ---------------------------------------------------------------- bodies

void CompareMeshes(const Mesh& a, const Mesh& b, const Comparison& by,
                   std::vector<FieldChange>& changes);
void CompareTracks(const Chunk& a, const Chunk& b, const Comparison& by,
                   std::vector<FieldChange>& changes);
void CompareWeights(const Weights& a, const Weights& b, const Comparison& by,
                    std::vector<FieldChange>& changes);
void CompareMorphs(const Morph& a, const Morph& b, const Comparison& by,
                   std::vector<FieldChange>& changes);

}  // namespace kta
