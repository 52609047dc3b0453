#include <quillmark/geom/geom_aligned_bounding_box2.h>

#include <cmath>
#include <stdexcept>

#include <quillmark/geom/geom_queries.h>

namespace Geom {

AlignedBoundingBox2::AlignedBoundingBox2(double angle) noexcept : min(MAX_VALUE), max(MIN_VALUE) {
  // The same angle feeds sin and cos, so the compiler fuses them into one sincos call.
  double const s = std::sin(angle);
  double const c = std::cos(angle);
  x_axis = Vector2(c, s);
  y_axis = Vector2(-s, c);
  inv_det = 1.0 / (s * s + c * c);
}

AlignedBoundingBox2& AlignedBoundingBox2::local_add(Vector2 const& l) noexcept {
  if (min.x > l.x) min.x = l.x;
  if (min.y > l.y) min.y = l.y;
  if (l.x > max.x) max.x = l.x;
  if (l.y > max.y) max.y = l.y;
  return *this;
}

AlignedBoundingBox2& AlignedBoundingBox2::add(AlignedBoundingBox2 const& other_) noexcept {
  AlignedBoundingBox2 const other = other_;  // other may be this box, which changes below
  for (unsigned long k = 0; k < 4; ++k) {
    add(other.to_world(other.local_corner(k)));
  }
  return *this;
}

Vector2 AlignedBoundingBox2::local_corner(unsigned long index) const noexcept {
  switch (index) {
    case 0:
      return min;
    case 1:
      return Vector2(max.x, min.y);
    case 2:
      return max;
    default:
      return Vector2(min.x, max.y);
  }
}

Vector2 AlignedBoundingBox2::corner(unsigned long index) const {
  if (index > 3) {
    throw std::out_of_range("Expected index between 0 and 3.");
  }
  return to_world(local_corner(index));
}

AlignedBoundingBox2& AlignedBoundingBox2::scale_self(double s) noexcept {
  // Computed from min alone, so an inverted box keeps its inversion for s > 0.
  Vector2 const c = (min + max) * 0.5;
  Vector2 const h = (min - c) * s;
  min = c + h;
  max = c - h;
  return *this;
}

AlignedBoundingBox2& AlignedBoundingBox2::pad_self(double d) noexcept {
  min -= Vector2(d);
  max += Vector2(d);
  return *this;
}

AlignedBoundingBox2& AlignedBoundingBox2::local_shift_self(Vector2 const& v_) noexcept {
  Vector2 const v = v_;  // v may be this box's own min
  min += v;
  max += v;
  return *this;
}

void AlignedBoundingBox2::clear() noexcept {
  min.set_all(MAX_VALUE);
  max.set_all(MIN_VALUE);
}

bool AlignedBoundingBox2::contains(Vector2 const& p) const noexcept {
  Vector2 const l = to_local(p);
  return min.x < l.x && l.x < max.x && min.y < l.y && l.y < max.y;
}

bool AlignedBoundingBox2::contains(AlignedBoundingBox2 const& other) const noexcept {
  for (unsigned long k = 0; k < 4; ++k) {
    if (!contains(other.to_world(other.local_corner(k)))) {
      return false;
    }
  }
  return true;
}

bool AlignedBoundingBox2::intersects(AlignedBoundingBox2 const& other) const noexcept {
  Vector2 a[4];
  Vector2 b[4];
  for (unsigned long k = 0; k < 4; ++k) {
    a[k] = to_world(local_corner(k));
    b[k] = other.to_world(other.local_corner(k));
  }
  for (unsigned long k = 0; k < 4; ++k) {
    if (contains(b[k]) || other.contains(a[k])) {
      return true;
    }
  }
  // No corner inside either box: they can still cross like a plus sign.
  Vector2 unused;
  for (unsigned long k = 0; k < 4; ++k) {
    for (unsigned long j = 0; j < 4; ++j) {
      if (intersect_segment_segment(a[k], a[(k + 1) % 4], b[j], b[(j + 1) % 4], unused)) {
        return true;
      }
    }
  }
  return false;
}

}  // namespace Geom
