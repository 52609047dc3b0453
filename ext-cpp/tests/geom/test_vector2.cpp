#include <quillmark/geom/geom_vector2.h>
#include <quillmark/geom/geom_vector3.h>
#include "geom_test_support.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Geom::Vector2;
using geom_test::kPi;

TEST(Vector2, DivisionAndLengthGuards) {
  // 5 / 3 and 5 · (1 / 3) differ in the last bit; the division is defined as the latter.
  Vector2 const q = Vector2(5.0, 10.0) / 3.0;
  EXPECT_EQ(q.x, 5.0 * (1.0 / 3.0));
  EXPECT_EQ(q.y, 10.0 * (1.0 / 3.0));
  Vector2 c(1.0, 2.0);
  c /= Vector2(2.0, 0.0);
  EXPECT_EQ(c.x, 0.5);
  EXPECT_TRUE(std::isinf(c.y));
  // A squared length of 1e-12 (and zero) is at the guard: left as it is.
  for (double const x : {0.0, 1e-6}) {
    EXPECT_EQ(Vector2(x, 0.0).normalize().x, x);
    EXPECT_EQ(Vector2(x, 0.0).set_length(5.0).x, x);
  }
  Vector2 small(2e-6, 0.0);
  EXPECT_DOUBLE_EQ(small.normalize().x, 1.0);
  EXPECT_DOUBLE_EQ(small.set_length(5.0).x, 5.0);
  Vector2 v(3.0, 4.0);
  EXPECT_DOUBLE_EQ(v.normalize().y, 0.8);
  v.set_length(2.0);
  EXPECT_DOUBLE_EQ(v.x, 1.2);
  EXPECT_DOUBLE_EQ(v.y, 1.6);
}

TEST(Vector2, RotateAndAngles) {
  EXPECT_EQ(Vector2::X_AXIS.perp(Vector2::Y_AXIS), 1.0);
  EXPECT_EQ(Vector2::Y_AXIS.perp(Vector2::X_AXIS), -1.0);
  Vector2 const r = Vector2(0.0, -3.0).rotate(kPi / 2);
  EXPECT_NEAR(r.x, 3.0, 1e-15);
  EXPECT_NEAR(r.y, 0.0, 1e-15);
  // Below the 1e-6 length guard the vector stays put; just above it, it turns.
  EXPECT_EQ(Vector2(1e-7, 0.0).rotate(1.0).y, 0.0);
  EXPECT_NEAR(Vector2(2e-6, 0.0).rotate(kPi / 2).y, 2e-6, 1e-18);
  EXPECT_DOUBLE_EQ(Vector2(1.0, 0.0).angle_between(Vector2(0.0, -1.0)), kPi / 2);
  EXPECT_DOUBLE_EQ(Vector2(1.0, 0.0).angle_between(Vector2::ORIGIN), kPi / 2);
  geom_test::Draw coord(7, -10.0, 10.0);
  for (int i = 0; i < 2000; ++i) {
    Vector2 const v = coord.vec2();
    double const a = coord(-3.0, 3.0);
    Vector2 const t = v.rotate(a);
    EXPECT_NEAR(t.length(), v.length(), 1e-12 * v.length());
    // The unsigned angle recovers |a|, and perp tells its sense.
    EXPECT_NEAR(v.angle_between(t), std::fabs(a), 1e-7);
    EXPECT_EQ(v.perp(t) > 0.0, a > 0.0) << "angle " << a;
    // The unit vectors' dot product often rounds to 1 + 2^-52 (or below -1): the clamp must
    // turn that into 0 and pi, never NaN.
    ASSERT_NEAR(v.angle_between(v), 0.0, 1e-7) << v.x << " " << v.y;
    ASSERT_NEAR(v.angle_between(Vector2(-v.x, -v.y)), kPi, 1e-7) << v.x << " " << v.y;
  }
}

TEST(Vector2, ParallelTo) {
  EXPECT_TRUE(Vector2(1.0, 1.0).parallel_to(Vector2(-2.0, -2.0)));
  EXPECT_TRUE(Vector2(1.0, 1.0).parallel_to(Vector2(3.0, 3.0)));
  EXPECT_TRUE(Vector2::ORIGIN.parallel_to(Vector2::ORIGIN));
  EXPECT_FALSE(Vector2::ORIGIN.parallel_to(Vector2(0.0, 1.0)));
  EXPECT_FALSE(Vector2(1.0, 0.0).parallel_to(Vector2(1.0, 1e-5)));
  EXPECT_FALSE(Vector2(1.0, 0.0).parallel_to(Vector2(-1.0, 1e-5)));
  EXPECT_TRUE(Vector2(1.0, 0.0).parallel_to(Vector2(-1.0, 1e-7)));
  EXPECT_FALSE(Vector2(1.0, 0.0).parallel_to(Vector2(0.0, 1.0)));  // one matching component
}

// The 2-D form is the 3-D one in the plane z = 0, to the bit; t is not clamped.
TEST(Vector2, TransitionToMatchesTheThreeDimensionalForm) {
  geom_test::Draw coord(20261123, -1e3, 1e3);
  for (int i = 0; i < 500; ++i) {
    Vector2 const a = coord.vec2(), b = coord.vec2();
    double const t = i == 0 ? 0.0 : coord(-1.0, 2.0);
    Vector2 const r = a.transition_to(b, t);
    Geom::Vector3 const r3 =
        Geom::Vector3(a.x, a.y, 0.0).transition_to(Geom::Vector3(b.x, b.y, 0.0), t);
    ASSERT_EQ(r.x, r3.x);
    ASSERT_EQ(r.y, r3.y);
    ASSERT_NEAR(r.x, a.x * (1.0 - t) + b.x * t, 1e-9 * (1.0 + std::fabs(t)));
  }
}

}  // namespace
