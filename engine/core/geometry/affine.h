/// Affine maps in double precision.
#pragma once

#include <array>
#include <cmath>

namespace nemra::core {

using Vec3 = std::array<double, 3>;

inline Vec3 operator+(const Vec3& a, const Vec3& b) { return {a[0] + b[0], a[1] + b[1], a[2] + b[2]}; }
inline Vec3 operator-(const Vec3& a, const Vec3& b) { return {a[0] - b[0], a[1] - b[1], a[2] - b[2]}; }
inline Vec3 operator*(const Vec3& a, double s) { return {a[0] * s, a[1] * s, a[2] * s}; }
inline double dot(const Vec3& a, const Vec3& b) { return a[0] * b[0] + a[1] * b[1] + a[2] * b[2]; }
inline Vec3 cross(const Vec3& a, const Vec3& b) {
    return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}
inline double length(const Vec3& a) { return std::sqrt(dot(a, a)); }
inline Vec3 normalized(const Vec3& a) {
    const double l = length(a);
    return l > 0.0 ? a * (1.0 / l) : a;
}
inline bool isFinite(const Vec3& a) { return std::isfinite(a[0]) && std::isfinite(a[1]) && std::isfinite(a[2]); }

/// x -> linear x + shift; rows.
struct Affine {
    std::array<Vec3, 3> linear{Vec3{1, 0, 0}, Vec3{0, 1, 0}, Vec3{0, 0, 1}};
    Vec3 shift{};

    Vec3 vector(const Vec3& v) const { return {dot(linear[0], v), dot(linear[1], v), dot(linear[2], v)}; }
    Vec3 point(const Vec3& p) const { return vector(p) + shift; }
    /// Applies the transposed linear part; of the inverse map it carries normals forward.
    Vec3 transposed(const Vec3& v) const { return linear[0] * v[0] + linear[1] * v[1] + linear[2] * v[2]; }
    double determinant() const { return dot(linear[0], cross(linear[1], linear[2])); }

    /// The determinant must not be 0.
    Affine inverse() const {
        const double f = 1.0 / determinant();
        const Vec3 c0 = cross(linear[1], linear[2]) * f;  // columns of the inverse
        const Vec3 c1 = cross(linear[2], linear[0]) * f;
        const Vec3 c2 = cross(linear[0], linear[1]) * f;
        Affine r;
        for (int i = 0; i < 3; ++i) r.linear[i] = {c0[i], c1[i], c2[i]};
        r.shift = r.vector(shift) * -1.0;
        return r;
    }

    /// The factor by which all lengths grow; 0 if it differs between directions.
    double evenScale() const {
        const double s = length(linear[0]);
        const bool even =
            std::abs(length(linear[1]) - s) < 1.0e-9 * s && std::abs(length(linear[2]) - s) < 1.0e-9 * s &&
            std::abs(dot(linear[0], linear[1])) + std::abs(dot(linear[1], linear[2])) + std::abs(dot(linear[2], linear[0])) <
                1.0e-9 * s * s;
        return even ? s : 0.0;
    }

    Affine scaled(double s) const {  // first scale by s, then this
        Affine r = *this;
        for (Vec3& row : r.linear) row = row * s;
        return r;
    }
};

}  // namespace nemra::core
