#ifndef QUILLMARK_GEOM_ALIGNED_BOUNDING_BOX2_H
#define QUILLMARK_GEOM_ALIGNED_BOUNDING_BOX2_H

#include <quillmark/geom/geom_vector2.h>

namespace Geom {

/// A planar bounding rectangle whose sides follow a frame turned by a fixed angle about the
/// world origin. Points are added in world coordinates and measured in the box's own
/// ("local") frame; min and max are local, corners and centre come back in world
/// coordinates. The frame is fixed at construction; only min and max change afterwards.
///
/// Corners run counter-clockwise in the local frame: 0 (min.x, min.y), 1 (max.x, min.y),
/// 2 (max.x, max.y), 3 (min.x, max.y); edge k runs from corner k to corner (k + 1) mod 4.
/// The empty box has min = (MAX_VALUE, MAX_VALUE) and max = (MIN_VALUE, MIN_VALUE), so the
/// first point added becomes both.
struct AlignedBoundingBox2 {
  Vector2 x_axis;  ///< (cos θ, sin θ) in world coordinates
  Vector2 y_axis;  ///< (−sin θ, cos θ): counter-clockwise of x_axis
  Vector2 min;
  Vector2 max;
  double inv_det;  ///< 1 / (sin²θ + cos²θ): 1 up to rounding, kept for the exact inverse map

  /// The extremes the empty box starts from: max holds MIN_VALUE and min MAX_VALUE.
  static constexpr double MIN_VALUE = -1e15;
  static constexpr double MAX_VALUE = 1e15;

  /// The empty box in the frame turned counter-clockwise by angle (radians). Copies and
  /// assignment take all five fields, the frame included.
  explicit AlignedBoundingBox2(double angle) noexcept;

  /// World point to local coordinates (Cramer's rule on the 2×2 frame).
  Vector2 to_local(Vector2 const& p) const noexcept {
    return Vector2((y_axis.y * p.x - y_axis.x * p.y) * inv_det,
                   (x_axis.x * p.y - x_axis.y * p.x) * inv_det);
  }
  /// Local point to world coordinates.
  Vector2 to_world(Vector2 const& l) const noexcept {
    return Vector2(y_axis.x * l.y + x_axis.x * l.x, y_axis.y * l.y + x_axis.y * l.x);
  }

  /// Grows to cover the world point p (a NaN coordinate is never taken).
  AlignedBoundingBox2& add(Vector2 const& p) noexcept { return local_add(to_local(p)); }
  /// Grows to cover the point l given in local coordinates.
  AlignedBoundingBox2& local_add(Vector2 const& l) noexcept;
  /// Adds the other box's four world corners; its angle may differ from this one.
  AlignedBoundingBox2& add(AlignedBoundingBox2 const& other) noexcept;

  /// World position of corner index (0 to 3). Throws std::out_of_range above 3.
  Vector2 corner(unsigned long index) const;
  /// World position of the local centre (min + max) / 2; the world origin for the empty box.
  Vector2 center() const noexcept { return to_world((min + max) * 0.5); }

  /// Scales about the centre in the local frame, in place or as a copy; s below 1 shrinks, a
  /// negative s leaves min > max. Computed from min alone: an inverted box stays inverted for
  /// s > 0.
  AlignedBoundingBox2& scale_self(double s) noexcept;
  AlignedBoundingBox2 scale(double s) const noexcept {
    return AlignedBoundingBox2(*this).scale_self(s);
  }
  /// Grows by d on every side (a negative d shrinks, and can invert the box).
  AlignedBoundingBox2& pad_self(double d) noexcept;
  /// A padded copy: the const overload of the same name leaves this box alone.
  AlignedBoundingBox2 pad_self(double d) const noexcept {
    return AlignedBoundingBox2(*this).pad_self(d);
  }
  /// Moves the box by the world offset v, in place or as a copy.
  AlignedBoundingBox2& translate_self(Vector2 const& v) noexcept {
    return local_shift_self(to_local(v));
  }
  AlignedBoundingBox2 translate(Vector2 const& v) const noexcept {
    return AlignedBoundingBox2(*this).translate_self(v);
  }
  /// Moves the box by v given in local coordinates, in place or as a copy.
  AlignedBoundingBox2& local_shift_self(Vector2 const& v) noexcept;
  AlignedBoundingBox2 local_shift(Vector2 const& v) const noexcept {
    return AlignedBoundingBox2(*this).local_shift_self(v);
  }
  /// Back to the empty box; the frame stays.
  void clear() noexcept;

  /// Whether the world point p lies strictly inside: a point on a side is not contained, and
  /// the empty box contains nothing.
  bool contains(Vector2 const& p) const noexcept;
  /// All four world corners of other strictly inside; false when this box is empty.
  bool contains(AlignedBoundingBox2 const& other) const noexcept;
  /// Whether the rectangles overlap, for any two angles: a corner of one inside the other,
  /// or two edges crossing. Boxes that only touch along a side may come out as apart. An
  /// empty box is the square of half-side 1e15 turned by its angle, so its sides pass as
  /// close as 1e15 to the origin: it intersects no box whose corners all lie within 9e14 of
  /// the origin (a distance, not each coordinate: (9e14, 9e14) is 1.27e15 away).
  bool intersects(AlignedBoundingBox2 const& other) const noexcept;

 private:
  Vector2 local_corner(unsigned long index) const noexcept;
};

}  // namespace Geom

#endif
