#ifndef QUILLMARK_GEOM_QUATERNION_H
#define QUILLMARK_GEOM_QUATERNION_H

#include <type_traits>

#include <quillmark/geom/geom_transformation.h>
#include <quillmark/geom/geom_vector3.h>

namespace Geom {

/// A rotation quaternion (w, x, y, z), scalar first. The unit quaternion
/// (cos(θ/2), sin(θ/2) k) is the right-handed rotation by θ radians about the unit axis k,
/// the same sense as Transformation::rotate. Nothing keeps it at unit length except
/// normalize and normalize_self.
struct Quaternion {
  double w;
  double x;
  double y;
  double z;

  /// For an axis index i (0 = x, 1 = y, 2 = z), the next axis in cyclic order.
  static constexpr int QIndex[3] = {1, 2, 0};

  /// The identity rotation (1, 0, 0, 0).
  constexpr Quaternion() noexcept : w(1.0), x(0.0), y(0.0), z(0.0) {}
  /// (w, x, y, z), scalar first, used as given.
  constexpr Quaternion(double w_, double x_, double y_, double z_) noexcept
      : w(w_), x(x_), y(y_), z(z_) {}
  /// (cos(angle/2), sin(angle/2) axis): rotation by angle (radians) about axis, the axis
  /// used as passed (not normalised), so only a unit axis gives a unit quaternion.
  Quaternion(Vector3 const& axis, double angle) noexcept;
  /// The rotation of m's 3×3 block; origin and w row are ignored. The block is assumed to
  /// be a pure rotation: one that carries scale gives a quaternion that is not unit length,
  /// and the result is not normalised. An all-zero block gives (0, 0.5, 0, 0).
  explicit Quaternion(Transformation const& m) noexcept;
  /// Copies the four doubles.
  Quaternion(Quaternion const&) noexcept = default;
  Quaternion& operator=(Quaternion const&) noexcept = default;

  /// All four components multiplied by k: in place, or as a copy.
  Quaternion& scale_self(double k) noexcept {
    w *= k;
    x *= k;
    y *= k;
    z *= k;
    return *this;
  }
  Quaternion scale(double k) const noexcept { return Quaternion(*this).scale_self(k); }
  /// Unit length, in place or as a copy; a quaternion whose squared length is at or below
  /// 1e-12 becomes (0, 0, 0, 0), not the identity.
  Quaternion& normalize_self() noexcept;
  Quaternion normalize() const noexcept { return Quaternion(*this).normalize_self(); }
  /// The conjugate (w, −x, −y, −z): the inverse of a unit quaternion only.
  Quaternion inverse() const noexcept { return Quaternion(w, -x, -y, -z); }
  /// √(w² + x² + y² + z²).
  double length() const noexcept;
};

static_assert(sizeof(Quaternion) == 4 * sizeof(double), "Quaternion must be exactly four doubles");
static_assert(std::is_trivially_copyable<Quaternion>::value, "Quaternion must copy as raw bytes");

/// Component-wise sum and difference.
inline Quaternion operator+(Quaternion const& a, Quaternion const& b) noexcept {
  return Quaternion(a.w + b.w, a.x + b.x, a.y + b.y, a.z + b.z);
}
inline Quaternion operator-(Quaternion const& a, Quaternion const& b) noexcept {
  return Quaternion(a.w - b.w, a.x - b.x, a.y - b.y, a.z - b.z);
}

/// The composition "a, then b": the Hamilton product b·a. The rotation matrix of a * b is
/// matrix(b) · matrix(a).
Quaternion operator*(Quaternion const& a, Quaternion const& b) noexcept;

}  // namespace Geom

#endif
