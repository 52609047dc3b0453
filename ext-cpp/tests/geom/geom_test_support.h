#ifndef QUILLMARK_TESTS_GEOM_TEST_SUPPORT_H
#define QUILLMARK_TESTS_GEOM_TEST_SUPPORT_H

// Helpers shared by the geometry tests: neighbouring doubles for boundary checks, and
// component-wise comparisons of vectors.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include <quillmark/geom/geom_transformation.h>
#include <quillmark/geom/geom_vector2.h>
#include <quillmark/geom/geom_vector3.h>

namespace geom_test {

constexpr double kPi = 3.14159265358979323846;

/// The next double above / below v: probes either side of a tolerance line.
inline double up(double v) { return std::nextafter(v, std::numeric_limits<double>::infinity()); }
inline double down(double v) { return std::nextafter(v, -std::numeric_limits<double>::infinity()); }

inline void expect_near(Geom::Vector3 const& a, Geom::Vector3 const& b, double tol = 1e-12) {
  EXPECT_NEAR(a.x, b.x, tol);
  EXPECT_NEAR(a.y, b.y, tol);
  EXPECT_NEAR(a.z, b.z, tol);
}

inline void expect_near(Geom::Transformation const& a, Geom::Transformation const& b,
                        double tol = 1e-12) {
  for (int k = 0; k < 16; ++k) EXPECT_NEAR(a.data()[k], b.data()[k], tol) << "element " << k;
}

/// Bit-for-bit equality up to the sign of zero.
inline void expect_same(Geom::Vector3 const& a, Geom::Vector3 const& b) {
  EXPECT_EQ(a.x, b.x);
  EXPECT_EQ(a.y, b.y);
  EXPECT_EQ(a.z, b.z);
}

/// Seeded draws for the property tests: d() is uniform over the range given at construction,
/// d(lo, hi) over another; vectors take their components in order.
class Draw {
 public:
  Draw(unsigned long seed, double lo, double hi) : rng_(seed), lo_(lo), hi_(hi) {}
  double operator()() { return (*this)(lo_, hi_); }
  double operator()(double lo, double hi) {
    return std::uniform_real_distribution<double>(lo, hi)(rng_);
  }
  double normal() { return std::normal_distribution<double>(0.0, 1.0)(rng_); }
  Geom::Vector2 vec2() {
    double const x = (*this)();
    return Geom::Vector2(x, (*this)());
  }
  Geom::Vector3 vec() {
    double const x = (*this)(), y = (*this)();
    return Geom::Vector3(x, y, (*this)());
  }

 private:
  std::mt19937_64 rng_;
  double lo_, hi_;
};

}  // namespace geom_test

#endif
