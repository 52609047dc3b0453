#ifndef QUILLMARK_GEOM_BOUNDING_BOX3_H
#define QUILLMARK_GEOM_BOUNDING_BOX3_H

#include <cstddef>
#include <cstring>
#include <type_traits>

#include <quillmark/geom/geom_vector3.h>

namespace Geom {

/// An axis-aligned box: min and max hold the smallest and largest coordinate on each axis.
/// The empty box holds the opposite extremes (min = 1e15, max = -1e15) so that the first
/// point added becomes both corners. min <= max is not enforced: the two-corner constructor
/// and intersect store what they are given or compute. Point, box and ray tests are strict:
/// a point on a face is not inside, boxes that only touch do not intersect.
struct BoundingBox3 {
  Vector3 min;
  Vector3 max;

  /// The extremes the empty box starts from: max holds MIN_VALUE and min MAX_VALUE.
  static constexpr double MIN_VALUE = -1e15;
  static constexpr double MAX_VALUE = 1e15;

  /// The empty box.
  constexpr BoundingBox3() noexcept : min(MAX_VALUE), max(MIN_VALUE) {}
  /// The corners exactly as passed, not reordered.
  constexpr BoundingBox3(Vector3 const& min_, Vector3 const& max_) noexcept
      : min(min_), max(max_) {}
  /// Copies both corners.
  BoundingBox3(BoundingBox3 const&) noexcept = default;
  BoundingBox3& operator=(BoundingBox3 const&) noexcept = default;

  /// Takes p's coordinate wherever it lies below min or above max (a NaN coordinate never).
  BoundingBox3& add(Vector3 const& p) noexcept {
    // x and y side by side in one vector register (min/max instructions, no branches), z
    // alone: a loop over many points runs at about half the instructions of six scalar
    // selects. Each lane is the select written for z.
    typedef double Pair __attribute__((vector_size(16)));
    Pair lo;
    Pair hi;
    Pair q;
    std::memcpy(&lo, &min.x, sizeof lo);
    std::memcpy(&hi, &max.x, sizeof hi);
    std::memcpy(&q, &p.x, sizeof q);
    lo = lo > q ? q : lo;
    hi = q > hi ? q : hi;
    std::memcpy(&min.x, &lo, sizeof lo);
    std::memcpy(&max.x, &hi, sizeof hi);
    min.z = min.z > p.z ? p.z : min.z;
    max.z = p.z > max.z ? p.z : max.z;
    return *this;
  }
  /// add(points[i]) for i = 0 .. n-1 in turn, with the same result bit for bit (a zero
  /// corner keeps the sign of the first zero that reached it), several points at a time.
  BoundingBox3& add(Vector3 const* points, std::size_t n) noexcept;
  /// Grows to cover b as well; adding the empty box changes nothing.
  BoundingBox3& add(BoundingBox3 const& b) noexcept;
  /// Lowers min by lo and raises max by hi per axis; lo never raises min, hi never lowers max.
  BoundingBox3& add(Vector3 const& lo, Vector3 const& hi) noexcept;
  /// Scales about the centre (min + max) / 2, in place or as a copy: s below 1 shrinks, a
  /// negative s leaves min > max. Computed from min alone: an inverted box stays inverted
  /// for s > 0.
  BoundingBox3& scale_self(double s) noexcept;
  BoundingBox3 scale(double s) const noexcept { return BoundingBox3(*this).scale_self(s); }
  /// Moves every face outward by d (inward for a negative d, which can invert the box).
  BoundingBox3& pad_self(double d) noexcept {
    min -= Vector3(d);
    max += Vector3(d);
    return *this;
  }
  /// Makes the box empty.
  void clear() noexcept { *this = BoundingBox3(); }

  /// Strictly inside on every axis: a point on a face, and any point of an empty box, is not.
  bool contains(Vector3 const& p) const noexcept;
  /// Whether the boxes overlap with positive extent on every axis; boxes that only touch do
  /// not, nor does an empty box with any box inside ±1e15.
  bool intersects(BoundingBox3 const& b) const noexcept;
  /// Positive extent on every axis and strictly inside b; a flat or empty box is never within.
  bool within(BoundingBox3 const& b) const noexcept;
  /// The overlap of the two boxes into out; boxes that are apart give min > max on some axis.
  void intersect(BoundingBox3 const& b, BoundingBox3& out) const noexcept;
  /// Corner 0 to 7: bit 0 picks x, bit 1 y, bit 2 z, each from max when set, min when clear.
  /// Throws std::out_of_range for an index above 7.
  Vector3 corner(unsigned long index) const;
  /// Whether the half-line origin + t direction, t > 0, passes through the interior; an
  /// origin strictly inside always hits. A ray through an edge or corner only, or running in
  /// a face's plane, misses; the direction need not be unit, and the faces of an axis along
  /// which its component is 1e-6 or less (absolute) are not tested.
  bool intersects_ray(Vector3 const& origin, Vector3 const& direction) const noexcept;
  /// As above after turning the direction toward the box's centre by at most max_angle
  /// radians. A unit direction within 90° of the centre is turned at most onto it; one that
  /// points away from the centre (more than 90°) is turned by max_angle, up to π, and can
  /// swing past the centre. Pass a unit direction, as the angle to the centre is misjudged
  /// for other lengths. Always false for a box with min > max on any axis; an origin at the
  /// centre, or a direction straight at or away from it, gets the plain test.
  bool intersects_ray(Vector3 const& origin, Vector3 const& direction,
                      double max_angle) const noexcept;
};

static_assert(sizeof(BoundingBox3) == 6 * sizeof(double), "BoundingBox3 must be six doubles");
static_assert(std::is_standard_layout<BoundingBox3>::value &&
                  offsetof(BoundingBox3, max) == 3 * sizeof(double),
              "BoundingBox3 must be laid out as min then max");
static_assert(std::is_trivially_copyable<BoundingBox3>::value,
              "BoundingBox3 must copy as raw bytes");

}  // namespace Geom

#endif
