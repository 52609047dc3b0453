#include <quillmark/geom/geom_quaternion.h>

#include <cmath>

#include <quillmark/geom/geom_tolerances.h>

namespace Geom {

Quaternion::Quaternion(Vector3 const& axis, double angle) noexcept {
  double const half = angle * 0.5;
  double const s = std::sin(half);
  w = std::cos(half);
  x = s * axis.x;
  y = s * axis.y;
  z = s * axis.z;
}

namespace {

// The conversion for a trace at or below zero, with i the index of the largest diagonal
// element. Instantiated per i so that every index below is a constant and the components
// stay in registers; the arithmetic is the same for all three.
template <int I>
Quaternion from_largest_diagonal(double const* e) noexcept {
  constexpr int J = Quaternion::QIndex[I];
  constexpr int K = Quaternion::QIndex[J];
  // R(r, c) is element e[4c + r]: row r of column c.
  auto r = [e](int row, int col) { return e[4 * col + row]; };
  double const s = std::sqrt(((r(I, I) + 1.0) - r(J, J)) - r(K, K));
  double const g = 0.5 / s;
  double v[3];
  v[I] = 0.5 * s;
  v[J] = (r(J, I) + r(I, J)) * g;
  v[K] = (r(K, I) + r(I, K)) * g;
  return Quaternion((r(K, J) - r(J, K)) * g, v[0], v[1], v[2]);
}

}  // namespace

Quaternion::Quaternion(Transformation const& m) noexcept {
  double const* e = m.data();
  double const trace = (e[0] + e[5]) + e[10];
  if (trace > 0.0) {
    double const s = std::sqrt(trace + 1.0);
    double const g = 0.5 / s;
    w = 0.5 * s;
    x = (e[6] - e[9]) * g;
    y = (e[8] - e[2]) * g;
    z = (e[1] - e[4]) * g;
    return;
  }
  // Trace at or below zero: w may be tiny, so divide by the largest vector component
  // instead, found from the largest diagonal element (ties keep the lower index).
  int i = e[5] > e[0] ? 1 : 0;
  if (e[10] > e[5 * i]) i = 2;
  *this = i == 0 ? from_largest_diagonal<0>(e)
                 : (i == 1 ? from_largest_diagonal<1>(e) : from_largest_diagonal<2>(e));
}

double Quaternion::length() const noexcept { return std::sqrt(((w * w + x * x) + y * y) + z * z); }

Quaternion& Quaternion::normalize_self() noexcept {
  double const n2 = ((w * w + x * x) + y * y) + z * z;
  // Zeroed rather than left alone: a near-zero quaternion has no direction to keep.
  double const g = n2 > SQUARED_LENGTH_EPSILON ? 1.0 / std::sqrt(n2) : 0.0;
  return scale_self(g);
}

Quaternion operator*(Quaternion const& a, Quaternion const& b) noexcept {
  return Quaternion(((a.w * b.w - a.x * b.x) - a.y * b.y) - a.z * b.z,
                    ((a.w * b.x + a.x * b.w) - a.y * b.z) + a.z * b.y,
                    ((a.w * b.y + a.y * b.w) + a.x * b.z) - a.z * b.x,
                    ((a.w * b.z + a.z * b.w) + a.y * b.x) - a.x * b.y);
}

}  // namespace Geom
