#include <point3.h>

#include <cmath>

namespace {

double Dot(const Point3& a, const Point3& b) {
    return double{a.x} * b.x + double{a.y} * b.y + double{a.z} * b.z;
}

}  // namespace

float Point3::operator%(const Point3& b) const {
    return static_cast<float>(Dot(*this, b));
}

Point3 Point3::operator^(const Point3& b) const {
    return Point3(double{y} * b.z - double{z} * b.y, double{z} * b.x - double{x} * b.z,
                  double{x} * b.y - double{y} * b.x);
}

int Point3::Equals(const Point3& b, float epsilon) const {
    return std::fabs(x - b.x) <= epsilon && std::fabs(y - b.y) <= epsilon &&
           std::fabs(z - b.z) <= epsilon;
}

float Point3::Length() const {
    return static_cast<float>(std::sqrt(Dot(*this, *this)));
}

float Point3::LengthSquared() const {
    return static_cast<float>(Dot(*this, *this));
}

Point3 Point3::Normalize() const {
    const double length = std::sqrt(Dot(*this, *this));
    if (!(length > 0) || !std::isfinite(length))
        return *this;
    return Point3(x / length, y / length, z / length);
}
