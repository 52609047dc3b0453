#include <quillmark/geom/geom_vector3.h>

#include <algorithm>
#include <cmath>

namespace Geom {

namespace {

// Raised to at least -1 first, then lowered to at most 1: acos of a dot product of two
// unit vectors must not see 1 + 1 ulp.
double clamp_cosine(double c) noexcept { return std::min(std::max(c, -1.0), 1.0); }

// Steps shared by rotate_to and rotate_and_scale_to once both lengths are usable: the
// fraction t of the turn from v's direction to target's, applied to v itself.
Vector3 turn_toward(Vector3 const& v, Vector3 const& target, double la, double lb,
                    double t) noexcept {
  Vector3 const a = v * (1.0 / la);
  Vector3 const b = target * (1.0 / lb);
  double const c = clamp_cosine(a.dot(b));
  if (c < -PARALLEL_COSINE) {
    // Opposite directions: every perpendicular axis is as good as another, so take one
    // that is well defined, a x Z_AXIS unless a lies (nearly) along z, then a x X_AXIS.
    Vector3 const k =
        std::abs(a.z) < PARALLEL_COSINE ? Vector3(a.y, -a.x, 0.0) : Vector3(0.0, a.z, -a.y);
    return v.rotate(k.normalize(), t * PI);
  }
  if (c >= PARALLEL_COSINE) return v;
  return v.rotate(a.cross(b).normalize(), std::acos(c) * t);
}

}  // namespace

Vector3& Vector3::set_length(double len) noexcept {
  if (length_squared() > SQUARED_LENGTH_EPSILON) scale_self(len / length());
  return *this;
}

Vector3 Vector3::normalize() const noexcept {
  if (length_squared() > SQUARED_LENGTH_EPSILON) return *this * (1.0 / length());
  return *this;
}

Vector3 Vector3::rotate(Vector3 const& axis, double angle) const noexcept {
  // Rodrigues: v c + (k x v) s + k (k.v)(1 - c). The same angle feeds sin and cos, so
  // the compiler fuses them into one sincos call.
  double const s = std::sin(angle);
  double const c = std::cos(angle);
  double const d = axis.dot(*this);
  return (*this * c + axis.cross(*this) * s) + axis * d * (1.0 - c);
}

Vector3 Vector3::rotate_to(Vector3 const& target, double t) const noexcept {
  double const la = length();
  double const lb = target.length();
  // Written as "not greater" so that a NaN length also returns the object unchanged.
  if (!(la > LENGTH_EPSILON) || !(lb > LENGTH_EPSILON)) return *this;
  return turn_toward(*this, target, la, lb, t);
}

Vector3 Vector3::rotate_and_scale_to(Vector3 const& target, double t) const noexcept {
  double const la = length();
  double const lb = target.length();
  Vector3 r = *this;
  if (la > LENGTH_EPSILON && lb > LENGTH_EPSILON) r = turn_toward(*this, target, la, lb, t);
  r.set_length((lb - la) * t + la);
  return r;
}

double Vector3::angle_between(Vector3 const& v) const noexcept {
  return std::acos(clamp_cosine(normalize().dot(v.normalize())));
}

double Vector3::angle_between(Vector3 const& v, Vector3 const& normal) const noexcept {
  // An orthonormal basis (u, w) of the plane perpendicular to the normal; u comes from
  // Z_AXIS x n unless n lies (nearly) along z, where that product vanishes.
  Vector3 const n = normal.normalize();
  Vector3 const u =
      (std::abs(n.z) < PARALLEL_COSINE ? Vector3(-n.y, n.x, 0.0) : Vector3(n.z, 0.0, -n.x))
          .normalize();
  Vector3 const w = n.cross(u).normalize();

  double const pa = dot(u);
  double const qa = dot(w);
  double const la = std::sqrt(pa * pa + qa * qa);
  if (la < LENGTH_EPSILON) return 0.0;
  double const pb = v.dot(u);
  double const qb = v.dot(w);
  double const lb = std::sqrt(pb * pb + qb * qb);
  if (lb < LENGTH_EPSILON) return 0.0;

  double theta_a = std::acos(clamp_cosine(pa / la));
  if (qa < 0.0) theta_a = -theta_a;
  double theta_b = std::acos(clamp_cosine(pb / lb));
  if (qb < 0.0) theta_b = -theta_b;

  double d = theta_b - theta_a;
  if (d > PI) {
    d -= 2.0 * PI;
  } else if (d < -PI) {
    d += 2.0 * PI;
  }
  return d;
}

bool Vector3::parallel_to(Vector3 const& v) const noexcept {
  Vector3 const a = normalize();
  Vector3 const b = v.normalize();
  if (std::abs(a.x - b.x) < LENGTH_EPSILON && std::abs(a.y - b.y) < LENGTH_EPSILON &&
      std::abs(a.z - b.z) < LENGTH_EPSILON) {
    return true;
  }
  return std::abs(a.x + b.x) < LENGTH_EPSILON && std::abs(a.y + b.y) < LENGTH_EPSILON &&
         std::abs(a.z + b.z) < LENGTH_EPSILON;
}

}  // namespace Geom
