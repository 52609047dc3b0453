#include <quillmark/geom/geom_queries.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include <quillmark/geom/geom_tolerances.h>

namespace Geom {

namespace {

// Magic constants of the bit-level estimate: subtracting half the exponent from them
// approximates the exponent of 1/√x, and the mantissa bits were tuned for the smallest
// worst-case error after one Newton step.
constexpr std::int64_t INV_SQRT_MAGIC_64 = 0x5FE6EC85E7DE30DA;
constexpr std::int32_t INV_SQRT_MAGIC_32 = 0x5F375A86;

// Tolerance on the squared sine term of cotan: at or below it the vectors count as
// parallel (or one is zero) and the cotangent is reported as 0.
constexpr double COTAN_SQUARED_SINE_EPSILON = SQUARED_LENGTH_EPSILON;

constexpr double TWO_PI = 6.283185307179586;

}  // namespace

namespace {

// One estimate-and-refine for both precisions: the bit pattern shifted right arithmetically
// (a signed shift, as the magic constants assume) is subtracted from the magic constant,
// then one Newton step runs entirely in Real. The subtraction wraps in unsigned arithmetic:
// for a negative x (sign bit set) it would overflow the signed type, which is undefined.
template <typename Real, typename Bits>
Real refined_inv_sqrt(Real x, Bits magic) noexcept {
  static_assert(sizeof(Real) == sizeof(Bits), "the bit pattern must cover the value exactly");
  using Unsigned = std::make_unsigned_t<Bits>;
  Bits i;
  std::memcpy(&i, &x, sizeof i);
  Unsigned const bits = static_cast<Unsigned>(magic) - static_cast<Unsigned>(i >> 1);
  Real y0;
  std::memcpy(&y0, &bits, sizeof y0);
  return (((x * Real(-0.5)) * y0) * y0 + Real(1.5)) * y0;
}

}  // namespace

double inv_sqrt(double x) { return refined_inv_sqrt(x, INV_SQRT_MAGIC_64); }

float inv_sqrt(float x) { return refined_inv_sqrt(x, INV_SQRT_MAGIC_32); }

int intersect_segment_plane(const Vector3& p0, const Vector3& p1, const Vector3& plane_point,
                            const Vector3& plane_normal, Vector3& out) {
  Vector3 const d = p1 - p0;
  Vector3 const w = p0 - plane_point;
  double const den = d.dot(plane_normal);
  double const num = w.dot(plane_normal);
  if (std::fabs(den) < LENGTH_EPSILON) {
    // Parallel: only a start point exactly on the plane puts the whole segment in it.
    return num == 0.0 ? SEGMENT_PLANE_IN_PLANE : SEGMENT_PLANE_NONE;
  }
  double const t = -num / den;
  if (t < 0.0 || t > 1.0) {
    return SEGMENT_PLANE_NONE;
  }
  out = p0 + Vector3(d.x * t, d.y * t, t * d.z);
  return SEGMENT_PLANE_POINT;
}

bool intersect_ray_plane(const Vector3& origin, const Vector3& direction,
                         const Vector3& plane_point, const Vector3& plane_normal, Vector3& out) {
  double const den = direction.dot(plane_normal);
  if (std::fabs(den) <= LENGTH_EPSILON) {
    return false;
  }
  double const t = (plane_point - origin).dot(plane_normal) / den;
  if (t < 0.0) {
    return false;
  }
  out = origin + Vector3(direction.x * t, direction.y * t, t * direction.z);
  return true;
}

void triplet_convert_point_to_uvwh(const Vector3& p, const Vector3& a, const Vector3& b,
                                   const Vector3& c, Vector4& out) {
  Vector3 const ap = p - a;
  Vector3 const ab = b - a;
  Vector3 const ac = c - a;
  double const d00 = ab.length_squared();
  double const d01 = ab.dot(ac);
  double const d11 = ac.length_squared();
  double const den = d00 * d11 - d01 * d01;
  // A degenerate triangle gets inv = 0, which pins v = w = 0 and u = 1 below.
  double const inv = std::fabs(den) > LENGTH_EPSILON ? 1.0 / den : 0.0;
  Vector3 const n = ab.cross(ac).normalize();
  double const h = ap.dot(n);
  out.w = h;
  Vector3 const pp = ap - n * h;
  double const d20 = ab.dot(pp);
  double const d21 = ac.dot(pp);
  double const v = inv * (d20 * d11 - d21 * d01);
  double const w = inv * (d21 * d00 - d20 * d01);
  out.x = (1.0 - v) - w;
  out.y = v;
  out.z = w;
}

bool point_inside_triplet(const Vector3& p, const Vector3& a, const Vector3& b, const Vector3& c) {
  Vector4 uvwh;
  triplet_convert_point_to_uvwh(p, a, b, c, uvwh);
  return uvwh.x > 0.0 && uvwh.y > 0.0 && uvwh.z > 0.0;
}

void cpa_line_line(const Vector3& p0, const Vector3& u, const Vector3& q0, const Vector3& v,
                   Vector3& out_p, Vector3& out_q) {
  Vector3 const w0 = p0 - q0;
  double const a = u.dot(u);
  double const b = u.dot(v);
  double const c = v.dot(v);
  double const d = u.dot(w0);
  double const e = v.dot(w0);
  double const den = a * c - b * b;
  double s;
  double t;
  if (den < LENGTH_EPSILON) {
    // Parallel lines: every point of the first line has a closest partner; take p0 and
    // divide by the larger denominator for the better-conditioned quotient.
    s = 0.0;
    t = b > c ? d / b : e / c;
  } else {
    s = (b * e - c * d) / den;
    t = (a * e - b * d) / den;
  }
  out_p = p0 + u * s;
  out_q = q0 + v * t;
}

double cotan(const Vector3& a, const Vector3& b) {
  double const dot = a.dot(b);
  // (b·b)(a·a) − (a·b)² is |a × b|², the squared sine term, without forming the cross.
  double const s = b.dot(b) * a.dot(a) - dot * dot;
  if (s < COTAN_SQUARED_SINE_EPSILON) {
    return 0.0;
  }
  return dot / std::sqrt(s);
}

namespace {

// The angle advances by repeated addition (not start + i·step), so the last point of an
// arc sits at the end angle only up to the rounding of the accumulated sum.
void write_points(unsigned long n, double radius, double angle, double step, Vector3* out) {
  for (unsigned long i = 0; i < n; ++i) {
    out[i] = Vector3(radius * std::cos(angle), radius * std::sin(angle), 0.0);
    angle += step;
  }
}

}  // namespace

void points_on_circle(unsigned long count, double radius, double start_angle, Vector3* out) {
  if (count == 0) {
    return;
  }
  write_points(count, radius, start_angle, TWO_PI / static_cast<double>(count), out);
}

void points_on_arc(unsigned long count, double radius, double start_angle, double end_angle,
                   Vector3* out) {
  // No array holds count + 1 points for the largest count, where count + 1 would wrap to 0.
  if (count == std::numeric_limits<unsigned long>::max()) return;
  // Count 0 has no step: dividing by 0 would raise a floating-point flag (trapped by some
  // callers) for a value that is never used.
  double const step = count == 0 ? 0.0 : (end_angle - start_angle) / static_cast<double>(count);
  write_points(count + 1, radius, start_angle, step, out);
}

}  // namespace Geom
