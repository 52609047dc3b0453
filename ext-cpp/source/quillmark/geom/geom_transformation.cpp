#include <quillmark/geom/geom_transformation.h>

#include <algorithm>
#include <cmath>

#include <quillmark/geom/detail/simd_dispatch.h>
#include <quillmark/geom/geom_quaternion.h>

namespace Geom {

// Constant-initialised: the constructor is constexpr, so the identity sits in read-only
// data and no start-up code has to run before it can be read.
const Transformation Transformation::IDENTITY = Transformation();

namespace {

// The rotation matrix of the quaternion (w, x, y, z), used as passed (not normalised),
// written into the xyz of the three axis columns; their w become 0.
void set_rotation_from_quaternion(Transformation& t, double w, double x, double y,
                                  double z) noexcept {
  double const x2 = x * 2.0;
  double const y2 = y * 2.0;
  double const z2 = z * 2.0;
  double const xx = x * x2;
  double const yy = y * y2;
  double const zz = z * z2;
  double const xy = x2 * y;
  double const xz = x2 * z;
  double const yz = y2 * z;
  double const wx = x2 * w;
  double const wy = y2 * w;
  double const wz = z2 * w;
  t.x_axis = Vector4(1.0 - yy - zz, xy + wz, xz - wy, 0.0);
  t.y_axis = Vector4(xy - wz, 1.0 - xx - zz, yz + wx, 0.0);
  t.z_axis = Vector4(xz + wy, yz - wx, 1.0 - xx - yy, 0.0);
}

}  // namespace

Transformation::Transformation(Vector3 const& origin_, Vector3 const& normal) noexcept
    : x_axis(),
      y_axis(),
      z_axis(normal.x, normal.y, normal.z, 0.0),
      origin(origin_.x, origin_.y, origin_.z, 1.0) {
  z_axis.set_length(1.0);
  // Z_AXIS x n is a usable first axis unless the normal lies (nearly) along z, where
  // Y_AXIS x n takes over.
  if (std::abs(normal.z) < PARALLEL_COSINE) {
    x_axis = Vector3(-normal.y, normal.x, 0.0);
  } else {
    x_axis = Vector3(normal.z, 0.0, -normal.x);
  }
  x_axis.set_length(1.0);
  y_axis = z_axis.cross(x_axis);
  y_axis.set_length(1.0);
}

Transformation::Transformation(Vector3 const& point, Vector3 const& axis, double angle) noexcept
    : x_axis(), y_axis(), z_axis(), origin() {
  double const half = angle * 0.5;
  double const sh = std::sin(half);
  double const ch = std::cos(half);
  set_rotation_from_quaternion(*this, ch, sh * axis.x, sh * axis.y, sh * axis.z);
  // With the translation still zero and the weight 1, transform_vector gives R (-point).
  origin.w = 1.0;
  origin = transform_vector(point.reverse());
}

Transformation Transformation::rotate(Vector3 const& axis, double angle) noexcept {
  double const s = std::sin(angle);
  double const c = std::cos(angle);
  double const u = 1.0 - c;
  double const x = axis.x;
  double const y = axis.y;
  double const z = axis.z;
  return Transformation(Vector4(x * x * u + c, x * y * u + z * s, x * z * u - y * s, 0.0),
                        Vector4(x * y * u - z * s, y * y * u + c, y * z * u + x * s, 0.0),
                        Vector4(x * z * u + y * s, y * z * u - x * s, z * z * u + c, 0.0),
                        Vector4(0.0, 0.0, 0.0, 1.0));
}

Transformation Transformation::rotatex(double angle) noexcept {
  double const s = std::sin(angle);
  double const c = std::cos(angle);
  return Transformation(Vector4(1.0, 0.0, 0.0, 0.0), Vector4(0.0, c, s, 0.0),
                        Vector4(0.0, -s, c, 0.0), Vector4(0.0, 0.0, 0.0, 1.0));
}

Transformation Transformation::rotatey(double angle) noexcept {
  double const s = std::sin(angle);
  double const c = std::cos(angle);
  return Transformation(Vector4(c, 0.0, -s, 0.0), Vector4(0.0, 1.0, 0.0, 0.0),
                        Vector4(s, 0.0, c, 0.0), Vector4(0.0, 0.0, 0.0, 1.0));
}

Transformation Transformation::rotatez(double angle) noexcept {
  double const s = std::sin(angle);
  double const c = std::cos(angle);
  return Transformation(Vector4(c, s, 0.0, 0.0), Vector4(-s, c, 0.0, 0.0),
                        Vector4(0.0, 0.0, 1.0, 0.0), Vector4(0.0, 0.0, 0.0, 1.0));
}

Vector3 Transformation::normal_origin() const noexcept {
  if (std::abs(origin.w) > LENGTH_EPSILON) return Vector3(origin) * (1.0 / origin.w);
  return origin;
}

Transformation Transformation::inverse() const noexcept {
  // The arithmetic (adjugate, expansion, threshold) lives with the vector kernels; every
  // path gives the bits of detail::inverse_reference.
  Transformation r;
  detail::simd_kernels().inverse(data(), r.data());
  return r;
}

void detail::transformation_product(double const* a, double const* b, double* out) noexcept {
  detail::simd_kernels().product(a, b, out);
}

void Transformation::transform_vectors(Vector3 const* in, Vector3* out,
                                       std::size_t n) const noexcept {
  detail::simd_kernels().transform_points(data(), determinant(), in, out, n);
}

void Transformation::transform_vectors(Vector3 const* in, Vector3* out, std::size_t n,
                                       double factor) const noexcept {
  detail::simd_kernels().transform_points(data(), factor, in, out, n);
}

void Transformation::transform_vectors2(Vector3 const* in, Vector3* out,
                                        std::size_t n) const noexcept {
  detail::simd_kernels().transform_points2(data(), in, out, n);
}

void Transformation::rotate_vectors(Vector3 const* in, Vector3* out, std::size_t n) const noexcept {
  detail::simd_kernels().rotate_points(data(), in, out, n);
}

Vector3 Transformation::scale() const noexcept {
  // Unlike the homogeneous factor, an unusable weight divides by 1, not by 0.
  double const k = std::abs(origin.w) > LENGTH_EPSILON ? 1.0 / origin.w : 1.0;
  return Vector3(x_axis.length() * k, y_axis.length() * k, z_axis.length() * k);
}

// s is copied before any axis changes: it may be one of this transformation's own columns.
Transformation& Transformation::scale(Vector3 const& s) noexcept {
  Vector3 const lengths = s;
  x_axis.set_length(lengths.x);
  y_axis.set_length(lengths.y);
  z_axis.set_length(lengths.z);
  if (std::abs(origin.w) > LENGTH_EPSILON) origin.scale_self(1.0 / origin.w);
  origin.w = 1.0;
  return *this;
}

Transformation& Transformation::normalize_self() noexcept {
  x_axis.set_length(1.0);
  y_axis.set_length(1.0);
  z_axis.set_length(1.0);
  if (std::abs(origin.w) > LENGTH_EPSILON) origin.scale_self(1.0 / origin.w);
  x_axis.w = 0.0;
  y_axis.w = 0.0;
  z_axis.w = 0.0;
  origin.w = 1.0;
  return *this;
}

Transformation Transformation::normalize() const noexcept {
  Vector3 o = origin;
  if (std::abs(origin.w) > LENGTH_EPSILON) o.scale_self(1.0 / origin.w);
  return Transformation(x_axis.normalize(), y_axis.normalize(), z_axis.normalize(), o);
}

Transformation& Transformation::scale_axes_self(Vector3 const& s) noexcept {
  Vector3 const factors = s;  // s may be one of the axes
  x_axis.scale_self(factors.x);
  y_axis.scale_self(factors.y);
  z_axis.scale_self(factors.z);
  return *this;
}

Transformation Transformation::scale_axes(Vector3 const& s) const noexcept {
  // Through Vector3: the new axes' w are 0, not the old ones scaled.
  return Transformation(Vector3(x_axis) * s.x, Vector3(y_axis) * s.y, Vector3(z_axis) * s.z,
                        Vector3(origin));
}

void Transformation::extract_w_factor() noexcept {
  if (!(std::abs(origin.w) > LENGTH_EPSILON)) return;
  double const g = 1.0 / origin.w;
  x_axis.scale_self(g);
  y_axis.scale_self(g);
  z_axis.scale_self(g);
  origin.scale_self(g);
  origin.w = 1.0;
}

// Quaternion rotation, axis alignment and interpolation.

Transformation::Transformation(Quaternion const& q, Vector3 position) noexcept
    : x_axis(), y_axis(), z_axis(), origin(position.x, position.y, position.z, 1.0) {
  set_rotation_from_quaternion(*this, q.w, q.x, q.y, q.z);
}

namespace {

double clamp_unit(double c) noexcept { return std::min(std::max(c, -1.0), 1.0); }

// Turns the whole frame a so that its column `own` points along direction, pivoting about
// `fallback` when the direction is opposite. F and G are frames sharing the pivot k, so
// G · F⁻¹ carries own onto direction and leaves k fixed; for perpendicular own and k that
// is the rotation about k.
Transformation rotate_axis_to(Transformation const& a, Vector3 own, Vector3 const& fallback,
                              Vector3 direction) noexcept {
  own.set_length(1.0);
  direction.set_length(1.0);
  double const d = own.dot(direction);
  if (d > PARALLEL_COSINE) {
    return a;
  }
  Vector3 k = d < -PARALLEL_COSINE ? fallback : own.cross(direction);
  k.set_length(1.0);
  Vector3 u = k.cross(own);
  u.set_length(1.0);
  Vector3 v = k.cross(direction);
  v.set_length(1.0);
  Transformation const f(own, u, k);
  Transformation const g(direction, v, k);
  Transformation m = (g * f.inverse()) * a;
  m.origin = a.origin;
  return m;
}

// The pivot of the swing from z_a to z_b: their cross product, or x_a when the two z axes
// are (anti)parallel and the cross product has no usable direction.
Vector3 swing_pivot(Vector3 const& x_a, Vector3 const& z_a, Vector3 const& z_b, double d) noexcept {
  Vector3 k = std::abs(d) < PARALLEL_COSINE ? z_a.cross(z_b) : x_a;
  k.set_length(1.0);
  return k;
}

// The fraction t of the swing (theta about k) and of the twist (phi about the moving z):
// writes the interpolated x and z axes; y follows as z × x.
void swing_and_twist(Vector3 const& x_a, Vector3 const& z_a, Vector3 const& k, double theta,
                     double phi, double t, Vector3& x_t, Vector3& z_t) noexcept {
  z_t = z_a.rotate(k, theta * t);
  x_t = x_a.rotate(k, theta * t).rotate(z_t, -(phi * t));
}

}  // namespace

Transformation Transformation::rotate_xaxis_to(Vector3 const& direction) const noexcept {
  return rotate_axis_to(*this, x_axis, y_axis, direction);
}

Transformation Transformation::rotate_yaxis_to(Vector3 const& direction) const noexcept {
  return rotate_axis_to(*this, y_axis, z_axis, direction);
}

Transformation Transformation::rotate_zaxis_to(Vector3 const& direction) const noexcept {
  return rotate_axis_to(*this, z_axis, x_axis, direction);
}

Transformation Transformation::uniform_transition_to(Transformation const& other,
                                                     double t) const noexcept {
  Transformation const b_inv = other.inverse();
  Vector3 const s_a = scale();
  Vector3 const s_b = other.scale();
  Vector3 const o_a = normal_origin();
  Vector3 const o_b = other.normal_origin();
  Vector3 z_a = z_axis;
  if (std::abs(s_a.z) > LENGTH_EPSILON) z_a.scale_self(1.0 / s_a.z);
  Vector3 z_b = other.z_axis;
  if (std::abs(s_b.z) > LENGTH_EPSILON) z_b.scale_self(1.0 / s_b.z);

  double const d = z_a.dot(z_b);
  Vector3 const k = swing_pivot(x_axis, z_a, z_b, d);
  double const theta = std::acos(clamp_unit(d));

  // The twist: where A's x axis lands after the full swing, read in B's frame with B's axis
  // lengths divided out, measured from B's x axis about B's z axis.
  Vector3 r = b_inv.rotate_vector(Vector3(x_axis).rotate(k, theta));
  r.x = r.x / s_b.x;
  r.y = r.y / s_b.y;
  double const len = std::sqrt(r.x * r.x + r.y * r.y);
  // A NaN length (0/0 from a zero axis of B) fails the test too: no twist then.
  double phi = len > LENGTH_EPSILON ? std::acos(clamp_unit(r.x / len)) : 0.0;
  if (r.y < 0.0) phi = -phi;

  Vector3 x_t;
  Vector3 z_t;
  swing_and_twist(x_axis, z_a, k, theta, phi, t, x_t, z_t);
  Vector3 y_t = z_t.cross(x_t);
  Vector3 const s_t = s_a.transition_to(s_b, t);
  x_t.set_length(s_t.x);
  y_t.set_length(s_t.y);
  z_t.set_length(s_t.z);
  return Transformation(x_t, y_t, z_t, o_a.transition_to(o_b, t));
}

Transformation Transformation::uniform_normal_transition_to(Transformation const& other,
                                                            double t) const noexcept {
  Transformation const b_inv = other.inverse();
  double const d = z_axis.dot(other.z_axis);
  Vector3 const k = swing_pivot(x_axis, z_axis, other.z_axis, d);
  double const theta = std::acos(clamp_unit(d));

  // Unit frames assumed: r.x is already the cosine of the twist.
  Vector3 const r = b_inv.rotate_vector(Vector3(x_axis).rotate(k, theta));
  double phi = std::acos(clamp_unit(r.x));
  if (r.y < 0.0) phi = -phi;

  Vector3 x_t;
  Vector3 z_t;
  swing_and_twist(x_axis, z_axis, k, theta, phi, t, x_t, z_t);
  return Transformation(x_t, z_t.cross(x_t), z_t, Vector3(origin).transition_to(other.origin, t));
}

}  // namespace Geom
