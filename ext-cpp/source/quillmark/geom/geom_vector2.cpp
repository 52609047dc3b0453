#include <quillmark/geom/geom_vector2.h>

#include <algorithm>
#include <cmath>

#include <quillmark/geom/geom_tolerances.h>

namespace Geom {

double Vector2::length() const noexcept { return std::sqrt(length_squared()); }

Vector2& Vector2::set_length(double len) noexcept {
  if (length_squared() > SQUARED_LENGTH_EPSILON) {
    scale_self(len / length());
  }
  return *this;
}

Vector2 Vector2::normalize() const noexcept {
  Vector2 r(*this);
  if (length_squared() > SQUARED_LENGTH_EPSILON) {
    r.scale_self(1.0 / length());
  }
  return r;
}

Vector2 Vector2::transition_to(Vector2 const& v, double t) const noexcept {
  return Vector2(x + (v.x - x) * t, y + (v.y - y) * t);
}

Vector2 Vector2::rotate(double angle) const noexcept {
  if (length() < LENGTH_EPSILON) {
    return *this;
  }
  double const s = std::sin(angle);
  double const c = std::cos(angle);
  // x c + (-y) s is x c - y s to the bit; written as a difference, g++ 12 turns the pair
  // into one vfmaddsub for FMA targets despite -ffp-contract=off.
  return Vector2(x * c + (-y) * s, x * s + y * c);
}

double Vector2::angle_between(Vector2 const& v) const noexcept {
  double const c = normalize().dot(v.normalize());
  return std::acos(std::min(std::max(c, -1.0), 1.0));
}

bool Vector2::parallel_to(Vector2 const& v) const noexcept {
  Vector2 const a = normalize();
  Vector2 const b = v.normalize();
  if (std::fabs(a.x - b.x) < LENGTH_EPSILON && std::fabs(a.y - b.y) < LENGTH_EPSILON) {
    return true;
  }
  return std::fabs(a.x + b.x) < LENGTH_EPSILON && std::fabs(a.y + b.y) < LENGTH_EPSILON;
}

}  // namespace Geom
