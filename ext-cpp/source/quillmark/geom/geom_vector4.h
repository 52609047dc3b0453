#ifndef QUILLMARK_GEOM_VECTOR4_H
#define QUILLMARK_GEOM_VECTOR4_H

#include <type_traits>

#include <quillmark/geom/geom_vector3.h>

namespace Geom {

/// A Vector3 followed by a fourth double w: four consecutive doubles x, y, z, w, the column
/// type of Transformation. The inherited named members (length, dot, set_length, ...) see
/// x, y, z only and leave w alone. Note the scalar operators: v * s and v / s scale w too,
/// v *= s and v /= s do not.
struct Vector4 : Vector3 {
  double w;

  /// (0, 0, 0, 0).
  constexpr Vector4() noexcept : Vector3(), w(0.0) {}
  /// (s, s, s, 0): w is not s.
  constexpr explicit Vector4(double s) noexcept : Vector3(s), w(0.0) {}
  /// (x, y, z, w).
  constexpr Vector4(double x_, double y_, double z_, double w_) noexcept
      : Vector3(x_, y_, z_), w(w_) {}
  /// (p[0], p[1], p[2], p[3]); p must point at four values. The float form widens to double.
  constexpr explicit Vector4(double const* p) noexcept : Vector3(p), w(p[3]) {}
  constexpr explicit Vector4(float const* p) noexcept : Vector3(p), w(p[3]) {}
  /// Copies all four doubles.
  Vector4(Vector4 const&) noexcept = default;
  Vector4& operator=(Vector4 const&) noexcept = default;
  /// Copies x, y, z; w keeps its value.
  Vector4& operator=(Vector3 const& v) noexcept {
    Vector3::operator=(v);
    return *this;
  }

  /// Sets all four components, w included, to 0.
  void clear() noexcept { x = y = z = w = 0.0; }

  /// Scales x, y, z by s; w is left unchanged (unlike v * s).
  Vector4& operator*=(double s) noexcept {
    scale_self(s);
    return *this;
  }
  /// x, y, z only (unlike v / s), multiplied by the reciprocal formed once; s = 0 gives IEEE
  /// infinities or NaN.
  Vector4& operator/=(double s) noexcept { return *this *= 1.0 / s; }
  /// Component-wise product, all four components.
  Vector4& operator*=(Vector4 const& v) noexcept {
    product_self(v);
    w *= v.w;
    return *this;
  }
  /// Component-wise true division, all four; a zero component gives an infinity or NaN.
  Vector4& operator/=(Vector4 const& v) noexcept {
    Vector3::operator/=(v);
    w /= v.w;
    return *this;
  }
  /// Component-wise sum and difference, all four components.
  Vector4& operator+=(Vector4 const& v) noexcept {
    Vector3::operator+=(v);
    w += v.w;
    return *this;
  }
  Vector4& operator-=(Vector4 const& v) noexcept {
    Vector3::operator-=(v);
    w -= v.w;
    return *this;
  }
};

static_assert(sizeof(Vector4) == 4 * sizeof(double), "Vector4 must be exactly four doubles");
static_assert(std::is_trivially_copyable<Vector4>::value, "Vector4 must copy as raw bytes");

/// All four components, w included, scaled by s (from either side).
inline Vector4 operator*(Vector4 v, double s) noexcept {
  v.scale_self(s);
  v.w *= s;
  return v;
}
inline Vector4 operator*(double s, Vector4 v) noexcept { return v * s; }
/// All four components, multiplied by the reciprocal formed once; s = 0 gives infinities or NaN.
inline Vector4 operator/(Vector4 v, double s) noexcept { return v * (1.0 / s); }
/// Component-wise sum and difference, all four components.
inline Vector4 operator+(Vector4 a, Vector4 const& b) noexcept { return a += b; }
inline Vector4 operator-(Vector4 a, Vector4 const& b) noexcept { return a -= b; }

}  // namespace Geom

#endif
