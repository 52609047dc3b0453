#ifndef QUILLMARK_GEOM_QUERIES_H
#define QUILLMARK_GEOM_QUERIES_H

// Intersections, barycentric coordinates, closest points and circle sampling. None of
// these allocates or raises: degenerate input is reported through the result, and output
// parameters are written only on the paths that say so (false, code 0 and code 2 leave
// them untouched).

#include "geom_vector2.h"
#include "geom_vector3.h"
#include "geom_vector4.h"

namespace Geom {

/// Approximate 1/√x from a bit-level estimate and one Newton step; relative error below
/// 0.18 % for positive finite x. The argument is not checked.
double inv_sqrt(double x);
/// Single-precision twin of inv_sqrt(double); every step is carried out in float.
float inv_sqrt(float x);

/// Whether segment ab meets segment cd, end points included; the meeting point goes to
/// out. Parallel and collinear segments (|r ⊥ s| < 1e-6) never meet here.
bool intersect_segment_segment(const Vector2& a, const Vector2& b, const Vector2& c,
                               const Vector2& d, Vector2& out);

// Result codes of intersect_segment_plane.
inline constexpr int SEGMENT_PLANE_NONE = 0;      ///< no intersection; out untouched
inline constexpr int SEGMENT_PLANE_POINT = 1;     ///< one point, written to out
inline constexpr int SEGMENT_PLANE_IN_PLANE = 2;  ///< the segment lies in the plane; out untouched

/// Segment p0-p1 against the plane through plane_point with normal plane_normal (any
/// non-zero length). Returns one of the SEGMENT_PLANE_ codes.
int intersect_segment_plane(const Vector3& p0, const Vector3& p1, const Vector3& plane_point,
                            const Vector3& plane_normal, Vector3& out);

/// Ray origin + t·direction, t ≥ 0 and unbounded, against a plane. A ray within 1e-6 of
/// parallel (|direction · normal| ≤ 1e-6) misses; a plane behind the origin misses.
bool intersect_ray_plane(const Vector3& origin, const Vector3& direction,
                         const Vector3& plane_point, const Vector3& plane_normal, Vector3& out);

/// Barycentric weights (u, v, w) of p's projection on the plane of triangle abc, for a, b
/// and c, and p's signed height h above that plane along (b − a) × (c − a) normalised,
/// written as out = (u, v, w, h). A degenerate triangle gives u = 1, v = w = 0.
void triplet_convert_point_to_uvwh(const Vector3& p, const Vector3& a, const Vector3& b,
                                   const Vector3& c, Vector4& out);

/// Whether p projects strictly inside triangle abc; its height is ignored. Edges, corners
/// and every point of a degenerate triangle are outside.
bool point_inside_triplet(const Vector3& p, const Vector3& a, const Vector3& b,
                          const Vector3& c);

/// Closest points of the infinite lines p0 + s·u and q0 + t·v. For (nearly) parallel lines
/// out_p is p0. u and v must be non-zero.
void cpa_line_line(const Vector3& p0, const Vector3& u, const Vector3& q0, const Vector3& v,
                   Vector3& out_p, Vector3& out_q);

/// Cotangent of the angle between a and b; 0.0 for parallel, anti-parallel or zero vectors.
double cotan(const Vector3& a, const Vector3& b);

/// Writes count points evenly spaced on the circle of the given radius around the origin
/// in the plane z = 0, the first at start_angle (radians from +x toward +y). out must hold
/// count points; nothing is written for count 0.
void points_on_circle(unsigned long count, double radius, double start_angle, Vector3* out);

/// Writes count + 1 points from start_angle to end_angle inclusive on the circle of the
/// given radius around the origin in the plane z = 0. out must hold count + 1 points.
void points_on_arc(unsigned long count, double radius, double start_angle, double end_angle,
                   Vector3* out);

}  // namespace Geom

#endif
