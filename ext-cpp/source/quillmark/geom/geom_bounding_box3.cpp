#include <quillmark/geom/geom_bounding_box3.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include <quillmark/geom/detail/simd_dispatch.h>
#include <quillmark/geom/geom_transformation.h>

namespace Geom {

namespace {

double component(Vector3 const& v, int axis) noexcept {
  return axis == 0 ? v.x : (axis == 1 ? v.y : v.z);
}

}  // namespace

BoundingBox3& BoundingBox3::add(Vector3 const& lo_, Vector3 const& hi_) noexcept {
  // Copies first: hi may be this box's own min, which the first three lines can lower.
  Vector3 const lo = lo_;
  Vector3 const hi = hi_;
  if (lo.x < min.x) min.x = lo.x;
  if (lo.y < min.y) min.y = lo.y;
  if (lo.z < min.z) min.z = lo.z;
  if (hi.x > max.x) max.x = hi.x;
  if (hi.y > max.y) max.y = hi.y;
  if (hi.z > max.z) max.z = hi.z;
  return *this;
}

BoundingBox3& BoundingBox3::add(Vector3 const* points, std::size_t n) noexcept {
  double box[6];
  std::memcpy(box, this, sizeof box);
  detail::simd_kernels().add_points(box, points, n);
  std::memcpy(static_cast<void*>(this), box, sizeof box);
  return *this;
}

BoundingBox3& BoundingBox3::add(BoundingBox3 const& b) noexcept { return add(b.min, b.max); }

BoundingBox3& BoundingBox3::scale_self(double s) noexcept {
  Vector3 const c = (min + max) * 0.5;
  Vector3 const h = (min - c) * s;
  min = c + h;
  max = c - h;
  return *this;
}

bool BoundingBox3::contains(Vector3 const& p) const noexcept {
  return min.x < p.x && p.x < max.x && min.y < p.y && p.y < max.y && min.z < p.z && p.z < max.z;
}

bool BoundingBox3::intersects(BoundingBox3 const& b) const noexcept {
  return b.max.x > min.x && max.x > b.min.x && b.max.y > min.y && max.y > b.min.y &&
         b.max.z > min.z && max.z > b.min.z;
}

bool BoundingBox3::within(BoundingBox3 const& b) const noexcept {
  return max.x > min.x && min.x > b.min.x && b.max.x > max.x &&  //
         max.y > min.y && min.y > b.min.y && b.max.y > max.y &&  //
         max.z > min.z && min.z > b.min.z && b.max.z > max.z;
}

void BoundingBox3::intersect(BoundingBox3 const& b, BoundingBox3& out) const noexcept {
  // Built in locals first: out may be this box or b.
  Vector3 const lo(std::max(min.x, b.min.x), std::max(min.y, b.min.y), std::max(min.z, b.min.z));
  Vector3 const hi(std::min(max.x, b.max.x), std::min(max.y, b.max.y), std::min(max.z, b.max.z));
  out.min = lo;
  out.max = hi;
}

Vector3 BoundingBox3::corner(unsigned long index) const {
  if (index > 7) throw std::out_of_range("Expected index between 0 and 7.");
  return Vector3((index & 1u) != 0 ? max.x : min.x, (index & 2u) != 0 ? max.y : min.y,
                 (index & 4u) != 0 ? max.z : min.z);
}

bool BoundingBox3::intersects_ray(Vector3 const& origin, Vector3 const& direction) const noexcept {
  if (contains(origin)) return true;
  Vector3 const dmin = min - origin;
  Vector3 const dmax = max - origin;
  for (int axis = 0; axis < 3; ++axis) {
    double const d = component(direction, axis);
    // A direction (nearly) parallel to these faces would divide by ~0; such a ray can
    // still enter through the faces of the other axes.
    if (!(std::abs(d) > LENGTH_EPSILON)) continue;
    int const u = (axis + 1) % 3;
    int const v = (axis + 2) % 3;
    for (double const face : {component(dmin, axis), component(dmax, axis)}) {
      double const t = face / d;
      if (!(t > 0.0)) continue;
      Vector3 const p(origin.x + direction.x * t, origin.y + direction.y * t,
                      origin.z + direction.z * t);
      double const pu = component(p, u);
      double const pv = component(p, v);
      if (component(min, u) < pu && pu < component(max, u) && component(min, v) < pv &&
          pv < component(max, v)) {
        return true;
      }
    }
  }
  return false;
}

bool BoundingBox3::intersects_ray(Vector3 const& origin, Vector3 const& direction,
                                  double max_angle) const noexcept {
  if (min.x > max.x || min.y > max.y || min.z > max.z) return false;
  Vector3 const w = (min + max) * 0.5 - origin;
  if (w.length_squared() < SQUARED_LENGTH_EPSILON) return intersects_ray(origin, direction);
  // The turn is about direction x w, which is positive toward the centre; when the ray
  // already points at (or away from) the centre there is no such axis.
  Vector3 k = direction.cross(w);
  if (k.length_squared() < SQUARED_LENGTH_EPSILON) return intersects_ray(origin, direction);
  k.scale_self(1.0 / k.length());
  // A cosine only for a unit direction: a longer one can push x past 1, hence the guards.
  double const x = w.dot(direction) * (1.0 / w.length());
  double const alpha = std::min(x < 0.0 ? PI : (x > 1.0 ? 0.0 : std::acos(x)), max_angle);
  Vector3 const turned = Transformation::rotate(k, alpha).rotate_vector(direction);
  return intersects_ray(origin, turned);
}

}  // namespace Geom
