#ifndef QUILLMARK_GEOM_VECTOR3_H
#define QUILLMARK_GEOM_VECTOR3_H

#include <cmath>
#include <cstddef>
#include <type_traits>

#include <quillmark/geom/geom_tolerances.h>

namespace Geom {

/// Three doubles laid out exactly as double[3]: a point or a direction alike, the operation
/// chosen decides the reading. Lengths are in the caller's units, angles in radians.
/// Three-term sums (length_squared, dot) are formed as (x-term + y-term) + z-term.
struct Vector3 {
  double x;
  double y;
  double z;

  /// (0, 0, 0) and the three unit axes, constant-initialised.
  static const Vector3 ORIGIN;
  static const Vector3 X_AXIS;
  static const Vector3 Y_AXIS;
  static const Vector3 Z_AXIS;

  /// (0, 0, 0).
  constexpr Vector3() noexcept : x(0.0), y(0.0), z(0.0) {}
  /// (s, s, s).
  constexpr explicit Vector3(double s) noexcept : x(s), y(s), z(s) {}
  /// (x, y, z).
  constexpr Vector3(double x_, double y_, double z_) noexcept : x(x_), y(y_), z(z_) {}
  /// (p[0], p[1], p[2]); p must point at three values. The float form widens to double.
  constexpr explicit Vector3(double const* p) noexcept : x(p[0]), y(p[1]), z(p[2]) {}
  constexpr explicit Vector3(float const* p) noexcept : x(p[0]), y(p[1]), z(p[2]) {}
  /// Copies the three doubles.
  Vector3(Vector3 const&) noexcept = default;
  Vector3& operator=(Vector3 const&) noexcept = default;

  /// x² + y² + z², in squared caller units.
  double length_squared() const noexcept { return (x * x + y * y) + z * z; }
  /// The Euclidean length, in the caller's units.
  double length() const noexcept { return std::sqrt(length_squared()); }

  /// Rescales to length len; a vector of squared length <= 1e-12 is left as it is.
  /// A negative len reverses the direction.
  Vector3& set_length(double len) noexcept;
  /// The unit vector in this direction; a vector of squared length <= 1e-12 comes back unchanged.
  Vector3 normalize() const noexcept;

  /// Multiplies every component by s, in place.
  Vector3& scale_self(double s) noexcept {
    x *= s;
    y *= s;
    z *= s;
    return *this;
  }
  /// Flips the sign of every component: in place, or as a copy.
  Vector3& reverse_self() noexcept {
    x = -x;
    y = -y;
    z = -z;
    return *this;
  }
  Vector3 reverse() const noexcept { return Vector3(-x, -y, -z); }
  /// Sets (0, 0, 0), or (s, s, s).
  void clear() noexcept { x = y = z = 0.0; }
  void set_all(double s) noexcept { x = y = z = s; }

  /// The dot product.
  double dot(Vector3 const& v) const noexcept { return (x * v.x + y * v.y) + z * v.z; }
  /// The right-handed cross product this × v; (0, 0, 0) for parallel or zero operands.
  Vector3 cross(Vector3 const& v) const noexcept {
    return Vector3(y * v.z - z * v.y, z * v.x - x * v.z, x * v.y - y * v.x);
  }
  /// The component-wise product (x·v.x, y·v.y, z·v.z): in place, or as a copy.
  Vector3& product_self(Vector3 const& v) noexcept {
    x *= v.x;
    y *= v.y;
    z *= v.z;
    return *this;
  }
  Vector3 product(Vector3 const& v) const noexcept { return Vector3(*this).product_self(v); }
  /// Linear interpolation c + (v.c - c) * t per component; t is not clamped.
  Vector3 transition_to(Vector3 const& v, double t) const noexcept {
    return Vector3(x + (v.x - x) * t, y + (v.y - y) * t, z + (v.z - z) * t);
  }

  /// Rotation by angle (radians) about an axis through the origin, right-handed: positive
  /// turns counter-clockwise seen from the axis tip. The axis is used as passed: pass a unit
  /// vector for a pure rotation (a zero axis gives this scaled by cos(angle)).
  Vector3 rotate(Vector3 const& axis, double angle) const noexcept;
  /// The fraction t of the rotation that turns this direction onto target's, keeping this
  /// length. t outside [0, 1] turns away from or past the target on the same great circle.
  /// Unchanged when either length is <= 1e-6 (or NaN) or the cosine between the two is at
  /// or above 0.9999995. Opposite directions turn about this × Z_AXIS (this × X_AXIS when
  /// this lies nearly along z).
  Vector3 rotate_to(Vector3 const& target, double t) const noexcept;
  /// As rotate_to, with the length interpolated linearly from this length to target's. A
  /// vector of squared length <= 1e-12 stays as it is; a target of length <= 1e-6 only
  /// rescales this.
  Vector3 rotate_and_scale_to(Vector3 const& target, double t) const noexcept;
  /// Unsigned angle in radians, in [0, pi]; a zero operand gives pi/2.
  double angle_between(Vector3 const& v) const noexcept;
  /// Angle in [-pi, pi] from this to v, both projected onto the plane perpendicular to
  /// normal, positive counter-clockwise about normal; 0 when either projection is < 1e-6 long
  /// (so also for a zero normal). The normal need not be unit length.
  double angle_between(Vector3 const& v, Vector3 const& normal) const noexcept;
  /// Same or opposite direction, within 1e-6 on every unit component. Two zero vectors are
  /// parallel, a zero vector and one longer than 1e-6 are not; vectors of squared length
  /// <= 1e-12 are not normalised and are compared as they are.
  bool parallel_to(Vector3 const& v) const noexcept;

  /// Scales every component by s.
  Vector3& operator*=(double s) noexcept { return scale_self(s); }
  /// Multiplies by the reciprocal, formed once; s = 0 gives IEEE infinities or NaN.
  Vector3& operator/=(double s) noexcept { return scale_self(1.0 / s); }
  /// The component-wise product.
  Vector3& operator*=(Vector3 const& v) noexcept { return product_self(v); }
  /// True division per component: a zero component gives an IEEE infinity or NaN.
  Vector3& operator/=(Vector3 const& v) noexcept {
    x /= v.x;
    y /= v.y;
    z /= v.z;
    return *this;
  }
  /// Component-wise sum and difference.
  Vector3& operator+=(Vector3 const& v) noexcept {
    x += v.x;
    y += v.y;
    z += v.z;
    return *this;
  }
  Vector3& operator-=(Vector3 const& v) noexcept {
    x -= v.x;
    y -= v.y;
    z -= v.z;
    return *this;
  }
};

inline constexpr Vector3 Vector3::ORIGIN{0.0, 0.0, 0.0};
inline constexpr Vector3 Vector3::X_AXIS{1.0, 0.0, 0.0};
inline constexpr Vector3 Vector3::Y_AXIS{0.0, 1.0, 0.0};
inline constexpr Vector3 Vector3::Z_AXIS{0.0, 0.0, 1.0};

static_assert(sizeof(Vector3) == 3 * sizeof(double), "Vector3 must be exactly three doubles");
static_assert(std::is_standard_layout<Vector3>::value, "Vector3 must be laid out as double[3]");
static_assert(std::is_trivially_copyable<Vector3>::value, "Vector3 must copy as raw bytes");
static_assert(offsetof(Vector3, y) == sizeof(double) && offsetof(Vector3, z) == 2 * sizeof(double),
              "Vector3 must be laid out as double[3]");

/// v scaled by s, from either side.
inline Vector3 operator*(Vector3 v, double s) noexcept { return v.scale_self(s); }
inline Vector3 operator*(double s, Vector3 v) noexcept { return v.scale_self(s); }
/// Multiplies by the reciprocal, formed once; s = 0 gives IEEE infinities or NaN.
inline Vector3 operator/(Vector3 v, double s) noexcept { return v.scale_self(1.0 / s); }
/// Component-wise sum and difference.
inline Vector3 operator+(Vector3 a, Vector3 const& b) noexcept { return a += b; }
inline Vector3 operator-(Vector3 a, Vector3 const& b) noexcept { return a -= b; }

}  // namespace Geom

#endif
