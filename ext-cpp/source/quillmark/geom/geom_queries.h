#ifndef QUILLMARK_GEOM_QUERIES_H
#define QUILLMARK_GEOM_QUERIES_H

// Intersections, barycentric coordinates, closest points and circle sampling. None of
// these allocates or raises: degenerate input is reported through the result, and output
// parameters are written only on the paths that say so (false, code 0 and code 2 leave
// them untouched).

#include <cmath>

#include <quillmark/geom/geom_tolerances.h>
#include <quillmark/geom/geom_vector2.h>
#include <quillmark/geom/geom_vector3.h>
#include <quillmark/geom/geom_vector4.h>

namespace Geom {

/// Approximate 1/√x from a bit-level estimate and one Newton step; relative error below
/// 0.18 % for positive normal x (at least 2.2e-308, or 1.2e-38 for the float form). The
/// bit estimate assumes a normal exponent: subnormal x give a far worse value (-86 % at
/// 1e-310, -100 % at the smallest). The argument is not checked: zero, negative, infinite
/// or NaN x give no meaningful value, but always a defined one (no undefined behaviour).
double inv_sqrt(double x);
/// Single-precision twin of inv_sqrt(double); every step is carried out in float.
float inv_sqrt(float x);

/// Whether segment ab meets segment cd, end points included; the meeting point goes to
/// out, which is left untouched on false. Parallel and collinear segments never meet here:
/// |(b − a) ⊥ (d − c)| < 1e-6, an absolute threshold, so very short segments never meet.
/// Defined here so that it inlines into the inner loops of box and polygon tests.
inline bool intersect_segment_segment(const Vector2& a, const Vector2& b, const Vector2& c,
                                      const Vector2& d, Vector2& out) {
  Vector2 const r = b - a;
  Vector2 const s = d - c;
  Vector2 const q = a - c;
  double const den = r.perp(s);
  // Parallel segments (|den| < 1e-6) and parameters outside [0, 1] in one test, without
  // short cuts, so unpredictable input costs one branch instead of three. A parallel pair
  // divides by den + 1 instead (never near zero; its parameters go unused), so no division
  // by zero is ever carried out and no floating-point exception raised; any other den gets
  // + 0.0, which leaves it exact. Not 1.0 / (parallel ? 1.0 : den): a compiler may turn
  // that into parallel ? 1.0 : 1.0 / den and divide by the zero it was meant to avoid.
  // Every comparison with a NaN is false, so a NaN parameter is not rejected.
  bool const parallel = std::fabs(den) < LENGTH_EPSILON;
  double const inv = 1.0 / (den + (parallel ? 1.0 : 0.0));
  double const t = s.perp(q) * inv;
  double const u = inv * r.perp(q);
  // NOLINTNEXTLINE(readability-implicit-bool-conversion): | on bools, so no short cut
  if (parallel | (t < 0.0) | (t > 1.0) | (u < 0.0) | (u > 1.0)) {
    return false;
  }
  out = a + Vector2(r.x * t, t * r.y);
  return true;
}

// Result codes of intersect_segment_plane.
inline constexpr int SEGMENT_PLANE_NONE = 0;  ///< no intersection; out untouched
inline constexpr int SEGMENT_PLANE_POINT = 1;  ///< one point, written to out
inline constexpr int SEGMENT_PLANE_IN_PLANE = 2;  ///< the segment lies in the plane; out untouched

/// Segment p0-p1 against the plane through plane_point with normal plane_normal (any
/// non-zero length). Returns one of the SEGMENT_PLANE_ codes: POINT (p0 + t (p1 − p0), t in
/// [0, 1], written to out) when the segment crosses; for a segment parallel to the plane
/// (|(p1 − p0) · plane_normal| < 1e-6) IN_PLANE when p0 lies exactly in it, else NONE.
int intersect_segment_plane(const Vector3& p0, const Vector3& p1, const Vector3& plane_point,
                            const Vector3& plane_normal, Vector3& out);

/// Ray origin + t·direction, t ≥ 0 and unbounded, against a plane. A ray within 1e-6 of
/// parallel (|direction · normal| ≤ 1e-6) misses; a plane behind the origin misses, one
/// through it hits at the origin. The direction need not be unit; out is written on true only.
bool intersect_ray_plane(const Vector3& origin, const Vector3& direction,
                         const Vector3& plane_point, const Vector3& plane_normal, Vector3& out);

/// Barycentric weights (u, v, w) of p's projection on the plane of triangle abc, for a, b
/// and c, and p's signed height h above that plane along (b − a) × (c − a) normalised,
/// written as out = (u, v, w, h) with u = 1 − v − w. A degenerate triangle (determinant
/// of its edge dot products at or below 1e-6) gives u = 1, v = w = 0, h still computed.
void triplet_convert_point_to_uvwh(const Vector3& p, const Vector3& a, const Vector3& b,
                                   const Vector3& c, Vector4& out);

/// Whether p projects strictly inside triangle abc; its height is ignored. Edges, corners
/// and every point of a degenerate triangle are outside.
bool point_inside_triplet(const Vector3& p, const Vector3& a, const Vector3& b, const Vector3& c);

/// Closest points of the infinite lines p0 + s·u and q0 + t·v, written to out_p and out_q.
/// For (nearly) parallel lines, (u·u)(v·v) − (u·v)² < 1e-6 (absolute, so short directions
/// count too), out_p is p0 and out_q its nearest point on the second line; a zero u takes
/// that branch too. v must be non-zero: a zero v gives NaN in out_q.
void cpa_line_line(const Vector3& p0, const Vector3& u, const Vector3& q0, const Vector3& v,
                   Vector3& out_p, Vector3& out_q);

/// Cotangent of the angle between a and b; 0.0 for parallel, anti-parallel or zero vectors
/// (|a × b|² < 1e-12, an absolute threshold).
double cotan(const Vector3& a, const Vector3& b);

/// Writes count points evenly spaced on the circle of the given radius around the origin
/// in the plane z = 0, the first at start_angle (radians from +x toward +y). out must hold
/// count points; nothing is written for count 0. The angle advances by repeated addition
/// of 2π / count.
void points_on_circle(unsigned long count, double radius, double start_angle, Vector3* out);

/// Writes count + 1 points from start_angle to end_angle inclusive on the circle of the
/// given radius around the origin in the plane z = 0, evenly spaced; the last lies at
/// end_angle up to the rounding of the accumulated steps. out must hold count + 1 points;
/// count 0 writes the single point at start_angle, raising no floating-point flag. The
/// largest count, ULONG_MAX, writes nothing: no array holds count + 1 points.
void points_on_arc(unsigned long count, double radius, double start_angle, double end_angle,
                   Vector3* out);

}  // namespace Geom

#endif
