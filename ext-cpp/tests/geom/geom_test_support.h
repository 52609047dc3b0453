#ifndef QUILLMARK_TESTS_GEOM_TEST_SUPPORT_H
#define QUILLMARK_TESTS_GEOM_TEST_SUPPORT_H

// Helpers shared by the geometry tests: neighbouring doubles for boundary checks, and
// component-wise comparisons of vectors.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include <quillmark/geom/geom_transformation.h>
#include <quillmark/geom/geom_vector3.h>

namespace geom_test {

constexpr double kPi = 3.14159265358979323846;

/// The next double above / below v: probes either side of a tolerance line.
inline double up(double v) { return std::nextafter(v, std::numeric_limits<double>::infinity()); }
inline double down(double v) {
  return std::nextafter(v, -std::numeric_limits<double>::infinity());
}

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

}  // namespace geom_test

#endif
