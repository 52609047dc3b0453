#ifndef QUILLMARK_GEOM_VECTOR2_H
#define QUILLMARK_GEOM_VECTOR2_H

#include <type_traits>

namespace Geom {

/// A point or a direction in the plane, in double precision. Laid out exactly as two
/// doubles (x, y). Angles are radians, positive counter-clockwise (x toward y).
struct Vector2 {
  double x;
  double y;

  /// (0, 0).
  constexpr Vector2() noexcept : x(0.0), y(0.0) {}
  /// (s, s).
  constexpr explicit Vector2(double s) noexcept : x(s), y(s) {}
  /// (x, y).
  constexpr Vector2(double x_, double y_) noexcept : x(x_), y(y_) {}
  /// (p[0], p[1]); p must point at two values.
  constexpr explicit Vector2(double const* p) noexcept : x(p[0]), y(p[1]) {}

  /// (0, 0) and the two unit axes, constant-initialised.
  static const Vector2 ORIGIN;
  static const Vector2 X_AXIS;
  static const Vector2 Y_AXIS;

  /// x² + y², in squared caller units.
  double length_squared() const noexcept { return x * x + y * y; }
  /// The Euclidean length, in the caller's units.
  double length() const noexcept;
  /// Re-lengthens to len; a vector of squared length at or below 1e-12 stays unchanged.
  /// A negative len reverses the direction.
  Vector2& set_length(double len) noexcept;
  /// Unit copy; a vector of squared length at or below 1e-12 comes back unchanged.
  Vector2 normalize() const noexcept;

  /// Multiplies both components by s, in place.
  Vector2& scale_self(double s) noexcept;
  /// Flips the sign of both components: in place, or as a copy.
  Vector2& reverse_self() noexcept;
  Vector2 reverse() const noexcept { return Vector2(*this).reverse_self(); }
  /// Sets (0, 0), or (s, s).
  void clear() noexcept { x = y = 0.0; }
  void set_all(double s) noexcept { x = y = s; }

  /// The dot product.
  double dot(Vector2 const& v) const noexcept { return x * v.x + y * v.y; }
  /// z of the 3-D cross product: positive when v lies counter-clockwise of this vector, 0
  /// for parallel or zero operands.
  double perp(Vector2 const& v) const noexcept { return x * v.y - y * v.x; }
  /// The component-wise product (x·v.x, y·v.y): in place, or as a copy.
  Vector2& product_self(Vector2 const& v) noexcept;
  Vector2 product(Vector2 const& v) const noexcept { return Vector2(*this).product_self(v); }
  /// this + (v - this)·t per component; t is not clamped.
  Vector2 transition_to(Vector2 const& v, double t) const noexcept;

  /// Turned counter-clockwise by angle (radians) about the origin, length kept; a vector
  /// shorter than 1e-6 comes back unchanged.
  Vector2 rotate(double angle) const noexcept;
  /// Unsigned angle in radians, in [0, π] (the sign is perp's); a zero operand gives π/2.
  double angle_between(Vector2 const& v) const noexcept;
  /// Same or opposite direction, within 1e-6 per unit component. Two zero vectors are
  /// parallel, a zero vector and one longer than 1e-6 are not; vectors of squared length
  /// <= 1e-12 are not normalised and are compared as they are.
  bool parallel_to(Vector2 const& v) const noexcept;

  /// *= s scales both components by s; /= s multiplies them by the reciprocal, formed once
  /// (s = 0 gives IEEE infinities or NaN).
  Vector2& operator*=(double s) noexcept { return scale_self(s); }
  Vector2& operator/=(double s) noexcept;
  /// Component-wise product and true division (a zero component gives an infinity or NaN).
  Vector2& operator*=(Vector2 const& v) noexcept { return product_self(v); }
  Vector2& operator/=(Vector2 const& v) noexcept;
  /// Component-wise sum and difference.
  Vector2& operator+=(Vector2 const& v) noexcept;
  Vector2& operator-=(Vector2 const& v) noexcept;
};

inline constexpr Vector2 Vector2::ORIGIN{0.0, 0.0};
inline constexpr Vector2 Vector2::X_AXIS{1.0, 0.0};
inline constexpr Vector2 Vector2::Y_AXIS{0.0, 1.0};

static_assert(sizeof(Vector2) == 2 * sizeof(double), "Vector2 must be exactly two doubles");
static_assert(std::is_standard_layout<Vector2>::value, "Vector2 must be laid out as double[2]");
static_assert(std::is_trivially_copyable<Vector2>::value, "Vector2 must copy as raw bytes");

inline Vector2& Vector2::scale_self(double s) noexcept {
  x *= s;
  y *= s;
  return *this;
}

inline Vector2& Vector2::reverse_self() noexcept {
  x = -x;
  y = -y;
  return *this;
}

inline Vector2& Vector2::product_self(Vector2 const& v) noexcept {
  x *= v.x;
  y *= v.y;
  return *this;
}

// One reciprocal, two multiplications: the same rounding as operator/(v, s).
inline Vector2& Vector2::operator/=(double s) noexcept { return scale_self(1.0 / s); }

inline Vector2& Vector2::operator/=(Vector2 const& v) noexcept {
  x /= v.x;
  y /= v.y;
  return *this;
}

inline Vector2& Vector2::operator+=(Vector2 const& v) noexcept {
  x += v.x;
  y += v.y;
  return *this;
}

inline Vector2& Vector2::operator-=(Vector2 const& v) noexcept {
  x -= v.x;
  y -= v.y;
  return *this;
}

/// v scaled by s, from either side; v / s multiplies by the reciprocal, formed once.
inline Vector2 operator*(Vector2 v, double s) noexcept { return v.scale_self(s); }
inline Vector2 operator*(double s, Vector2 v) noexcept { return v.scale_self(s); }
inline Vector2 operator/(Vector2 v, double s) noexcept { return v /= s; }
/// Component-wise sum and difference.
inline Vector2 operator+(Vector2 a, Vector2 const& b) noexcept { return a += b; }
inline Vector2 operator-(Vector2 a, Vector2 const& b) noexcept { return a -= b; }

}  // namespace Geom

#endif
