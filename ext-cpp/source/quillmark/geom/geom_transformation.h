#ifndef QUILLMARK_GEOM_TRANSFORMATION_H
#define QUILLMARK_GEOM_TRANSFORMATION_H

#include <cmath>
#include <cstddef>
#include <type_traits>

#include <quillmark/geom/geom_tolerances.h>
#include <quillmark/geom/geom_vector3.h>
#include <quillmark/geom/geom_vector4.h>

namespace Geom {

struct Quaternion;

namespace detail {
/// The 4x4 product a b of two 16-double arrays into out, through the vector kernels.
void transformation_product(double const* a, double const* b, double* out) noexcept;
}  // namespace detail

/// A 4x4 transformation in double precision, stored as 16 doubles column-major: element
/// m[4c + r] is row r of column c, and the columns are x_axis, y_axis, z_axis, origin (the
/// order in which the host passes its 16-element arrays). A point p maps to M (p, 1):
/// R p + t, where R's columns are the axes' xyz and t is the origin's xyz. m[15], the
/// origin's w, is the homogeneous weight; the axes' w (m[3], m[7], m[11]) take part only in
/// the two products and the inverse. Rotations are right-handed, angles in radians.
struct Transformation {
  Vector4 x_axis;
  Vector4 y_axis;
  Vector4 z_axis;
  Vector4 origin;

  /// The identity. Initialised at compile time, so it is usable from any other initialiser.
  static const Transformation IDENTITY;

  /// The identity.
  constexpr Transformation() noexcept
      : x_axis(1.0, 0.0, 0.0, 0.0),
        y_axis(0.0, 1.0, 0.0, 0.0),
        z_axis(0.0, 0.0, 1.0, 0.0),
        origin(0.0, 0.0, 0.0, 1.0) {}
  /// A translation to origin.
  constexpr explicit Transformation(Vector3 const& origin_) noexcept
      : x_axis(1.0, 0.0, 0.0, 0.0),
        y_axis(0.0, 1.0, 0.0, 0.0),
        z_axis(0.0, 0.0, 1.0, 0.0),
        origin(origin_.x, origin_.y, origin_.z, 1.0) {}
  /// A frame at origin whose z axis is the normal, set to unit length. The x axis is
  /// (-n.y, n.x, 0) unless |n.z| >= 0.9999995, then (n.z, 0, -n.x), read from the normal as
  /// passed (so a non-unit normal can change the branch) and set to unit length; y = z x x.
  /// A zero normal gives three zero axes.
  Transformation(Vector3 const& origin_, Vector3 const& normal) noexcept;
  /// Axes (x, 0), (y, 0), (z, 0), used as passed; origin (0, 0, 0, 1).
  constexpr Transformation(Vector3 const& x, Vector3 const& y, Vector3 const& z) noexcept
      : x_axis(x.x, x.y, x.z, 0.0),
        y_axis(y.x, y.y, y.z, 0.0),
        z_axis(z.x, z.y, z.z, 0.0),
        origin(0.0, 0.0, 0.0, 1.0) {}
  /// Axes (x, 0), (y, 0), (z, 0), used as passed; origin (origin, 1).
  constexpr Transformation(Vector3 const& x, Vector3 const& y, Vector3 const& z,
                           Vector3 const& origin_) noexcept
      : x_axis(x.x, x.y, x.z, 0.0),
        y_axis(y.x, y.y, y.z, 0.0),
        z_axis(z.x, z.y, z.z, 0.0),
        origin(origin_.x, origin_.y, origin_.z, 1.0) {}
  /// The four columns as given, w included.
  constexpr Transformation(Vector4 const& x, Vector4 const& y, Vector4 const& z,
                           Vector4 const& origin_) noexcept
      : x_axis(x), y_axis(y), z_axis(z), origin(origin_) {}
  /// 16 values in column-major order (m[0..3] the x axis ... m[12..15] the origin).
  constexpr explicit Transformation(double const* m) noexcept
      : x_axis(m), y_axis(m + 4), z_axis(m + 8), origin(m + 12) {}
  /// 16 values in column-major order, widened to double.
  constexpr explicit Transformation(float const* m) noexcept
      : x_axis(m), y_axis(m + 4), z_axis(m + 8), origin(m + 12) {}
  /// The rotation R by angle about axis (through the coordinate origin, axis used as
  /// passed), preceded by a shift of point to the coordinate origin: maps p to R (p - point).
  /// A non-unit axis gives axes that are not unit length; a zero axis, a pure shift by -point.
  Transformation(Vector3 const& point, Vector3 const& axis, double angle) noexcept;
  /// Copies all 16 elements.
  Transformation(Transformation const&) noexcept = default;
  Transformation& operator=(Transformation const&) noexcept = default;

  /// Rotation by angle about axis through the coordinate origin. The axis is used as passed:
  /// a non-unit axis gives a matrix that is not a pure rotation (a zero axis, a uniform
  /// scale by cos(angle)).
  static Transformation rotate(Vector3 const& axis, double angle) noexcept;
  /// Rotation by angle (radians) about the x, y or z axis through the coordinate origin,
  /// right-handed: rotatez(pi/2) turns the x direction onto y.
  static Transformation rotatex(double angle) noexcept;
  static Transformation rotatey(double angle) noexcept;
  static Transformation rotatez(double angle) noexcept;

  /// The 16 elements in storage order.
  double* data() noexcept { return &x_axis.x; }
  double const* data() const noexcept { return &x_axis.x; }

  /// The homogeneous factor f: 1/m[15] when |m[15]| > 1e-6, else 0. Not the 4x4 determinant.
  double determinant() const noexcept {
    return std::abs(origin.w) > LENGTH_EPSILON ? 1.0 / origin.w : 0.0;
  }
  /// (R v + t) f with f = determinant(): a point transform that divides by the weight, and
  /// gives (0, 0, 0) when the weight is unusable.
  Vector3 transform_vector(Vector3 const& v) const noexcept {
    return transform_vector(v, determinant());
  }
  /// (R v + t) factor: the caller's factor in place of the weight's.
  Vector3 transform_vector(Vector3 const& v, double factor) const noexcept {
    return transform_vector2(v) * factor;
  }
  /// R v + t, with no weight applied.
  Vector3 transform_vector2(Vector3 const& v) const noexcept {
    return Vector3(((x_axis.x * v.x + y_axis.x * v.y) + z_axis.x * v.z) + origin.x,
                   ((x_axis.y * v.x + y_axis.y * v.y) + z_axis.y * v.z) + origin.y,
                   ((x_axis.z * v.x + y_axis.z * v.y) + z_axis.z * v.z) + origin.z);
  }
  /// R v: a direction transform, no translation and no weight.
  Vector3 rotate_vector(Vector3 const& v) const noexcept {
    return Vector3((x_axis.x * v.x + y_axis.x * v.y) + z_axis.x * v.z,
                   (x_axis.y * v.x + y_axis.y * v.y) + z_axis.y * v.z,
                   (x_axis.z * v.x + y_axis.z * v.y) + z_axis.z * v.z);
  }
  /// The same operations on n points at once: out[i] = transform_vector(in[i]) (the weight's
  /// factor, or the caller's), transform_vector2(in[i]) or rotate_vector(in[i]), bit for bit
  /// as that loop gives them, on every processor. out may be in itself; otherwise the two
  /// ranges must not overlap. Several points go through the vector unit at a time, with
  /// the widest instructions the processor has.
  void transform_vectors(Vector3 const* in, Vector3* out, std::size_t n) const noexcept;
  void transform_vectors(Vector3 const* in, Vector3* out, std::size_t n,
                         double factor) const noexcept;
  void transform_vectors2(Vector3 const* in, Vector3* out, std::size_t n) const noexcept;
  void rotate_vectors(Vector3 const* in, Vector3* out, std::size_t n) const noexcept;
  /// The origin's xyz divided by the weight, or undivided when |m[15]| <= 1e-6.
  Vector3 normal_origin() const noexcept;
  /// All 16 elements 0.
  void clear() noexcept {
    x_axis.clear();
    y_axis.clear();
    z_axis.clear();
    origin.clear();
  }

  /// The full 4x4 inverse (axes' w and weight included), or all 16 elements zero when the
  /// 4x4 determinant is at or below 1e-6 in absolute value. The threshold is absolute: a
  /// uniform scale by 0.005 counts as singular.
  Transformation inverse() const noexcept;
  /// The three axis lengths divided by the weight (undivided when |m[15]| <= 1e-6).
  Vector3 scale() const noexcept;
  /// Sets the axis lengths to s (a negative component reverses that axis; an axis of squared
  /// length <= 1e-12 stays as it is; the axes' w are untouched), divides the origin by a
  /// weight whose absolute value is above 1e-6, and sets the weight to 1 in either case.
  Transformation& scale(Vector3 const& s) noexcept;
  /// Unit axes with w 0, origin divided by a weight whose absolute value is above 1e-6, and
  /// weight 1: in place, or as a copy. An axis of squared length <= 1e-12 stays as it is.
  Transformation& normalize_self() noexcept;
  Transformation normalize() const noexcept;
  /// Multiplies each axis's xyz by one component of s; w, origin and weight untouched.
  Transformation& scale_axes_self(Vector3 const& s) noexcept;
  /// A new transformation with axes scaled by s, axes' w 0, weight 1, and the origin's xyz
  /// copied without dividing by the old weight.
  Transformation scale_axes(Vector3 const& s) const noexcept;
  /// Divides the xyz of all four columns by a usable weight and sets it to 1; does nothing
  /// when |m[15]| <= 1e-6. The axes' w are not touched.
  void extract_w_factor() noexcept;

  // Quaternion rotation, axis alignment and interpolation.

  /// Axes from the rotation matrix of q, used as passed (a non-unit q gives axes that are
  /// not unit length); origin (position, 1). Needs geom_quaternion.h to call.
  Transformation(Quaternion const& q, Vector3 position) noexcept;

  /// This frame turned as a whole so that its x axis points along direction; axis lengths,
  /// origin and weight kept. Unchanged when the x axis already points that way (cosine
  /// above 0.9999995); an opposite direction (below -0.9999995) is reached by a half turn
  /// about the y axis when the axes are perpendicular. The direction need not be unit; a zero
  /// direction or a zero own axis gives three zero axes (w included) with this origin.
  Transformation rotate_xaxis_to(Vector3 const& direction) const noexcept;
  /// As rotate_xaxis_to for the y axis; an opposite direction turns about the z axis.
  Transformation rotate_yaxis_to(Vector3 const& direction) const noexcept;
  /// As rotate_xaxis_to for the z axis; an opposite direction turns about the x axis.
  Transformation rotate_zaxis_to(Vector3 const& direction) const noexcept;

  /// The frame between this (t = 0) and other (t = 1): the z axis swings toward other's
  /// about one pivot, the frame twists about the moving z axis, and axis lengths (divided
  /// by the weights) and origins are interpolated linearly. t is not clamped. The result
  /// is right-handed (y = z × x) with axes' w 0 and weight 1, even for mirrored inputs. The
  /// twist assumes other's x and y axes of equal length; a singular other gives no twist.
  Transformation uniform_transition_to(Transformation const& other, double t) const noexcept;
  /// The same swing and twist for frames used as stored: no length or weight handling, so
  /// it reproduces other at t = 1 only for unit, right-handed frames. Origins are
  /// interpolated undivided; a singular other makes the full twist a quarter turn.
  Transformation uniform_normal_transition_to(Transformation const& other, double t) const noexcept;
};

static_assert(sizeof(Transformation) == 16 * sizeof(double),
              "Transformation must be exactly 16 doubles");
static_assert(std::is_trivially_copyable<Transformation>::value,
              "Transformation must copy as raw bytes");

/// The full 4x4 product A v, summed over A's columns in order.
inline Vector4 operator*(Transformation const& a, Vector4 const& v) noexcept {
  return Vector4(((a.x_axis.x * v.x + a.y_axis.x * v.y) + a.z_axis.x * v.z) + a.origin.x * v.w,
                 ((a.x_axis.y * v.x + a.y_axis.y * v.y) + a.z_axis.y * v.z) + a.origin.y * v.w,
                 ((a.x_axis.z * v.x + a.y_axis.z * v.y) + a.z_axis.z * v.z) + a.origin.z * v.w,
                 ((a.x_axis.w * v.x + a.y_axis.w * v.y) + a.z_axis.w * v.z) + a.origin.w * v.w);
}

/// The full 4x4 product A B (B applied first), the w row included; element (r, c) is
/// summed over k = 0..3 in increasing order, ((a0 b0 + a1 b1) + a2 b2) + a3 b3, so every
/// build gives the same bits. The result is built as a new value and can never alias an
/// operand.
inline Transformation operator*(Transformation const& a, Transformation const& b) noexcept {
#if defined(__x86_64__) && !defined(__AVX__)
  // Generic x86-64: the product kernel of the vector path chosen at run time (one column
  // per AVX register where the processor has them), out of line; the same bits as below.
  Transformation r;
  detail::transformation_product(a.data(), b.data(), r.data());
  return r;
#else
  // Built for AVX or later (the compiler's own 256-bit code is the fastest measured there)
  // and elsewhere: column c of the product is A times column c of B.
  return Transformation(a * b.x_axis, a * b.y_axis, a * b.z_axis, a * b.origin);
#endif
}

}  // namespace Geom

#endif
