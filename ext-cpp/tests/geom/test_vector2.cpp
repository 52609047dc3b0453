#include "geom_vector2.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace {

using Geom::Vector2;

constexpr double kPi = 3.14159265358979323846;
constexpr double kTol = 1e-12;

void expect_near(Vector2 const& actual, Vector2 const& expected, double tol = kTol) {
  EXPECT_NEAR(actual.x, expected.x, tol);
  EXPECT_NEAR(actual.y, expected.y, tol);
}

TEST(Vector2, DivisionUsesOneReciprocal) {
  // Dividing by 3 and multiplying by the rounded reciprocal differ in the last bit for
  // some inputs; the scalar division is defined as the latter.
  Vector2 const v(5.0, 10.0);
  Vector2 const q = v / 3.0;
  EXPECT_EQ(q.x, 5.0 * (1.0 / 3.0));
  EXPECT_EQ(q.y, 10.0 * (1.0 / 3.0));
  Vector2 w = v;
  w /= 3.0;
  EXPECT_EQ(w.x, q.x);
  EXPECT_EQ(w.y, q.y);

  Vector2 c(1.0, 2.0);
  c /= Vector2(2.0, 0.0);
  EXPECT_EQ(c.x, 0.5);
  EXPECT_EQ(c.y, std::numeric_limits<double>::infinity());
}

TEST(Vector2, LengthGuards) {
  Vector2 zero;
  EXPECT_EQ(zero.normalize().x, 0.0);
  EXPECT_EQ(zero.set_length(2.0).y, 0.0);

  // 1e-6 has a squared length of 1e-12: at the guard, so it must not be touched.
  Vector2 tiny(1e-6, 0.0);
  EXPECT_EQ(tiny.normalize().x, 1e-6);
  EXPECT_EQ(tiny.set_length(5.0).x, 1e-6);
  Vector2 small(2e-6, 0.0);
  EXPECT_DOUBLE_EQ(small.normalize().x, 1.0);
  EXPECT_DOUBLE_EQ(small.set_length(5.0).x, 5.0);

  Vector2 v(3.0, 4.0);
  expect_near(v.normalize(), Vector2(0.6, 0.8));
  expect_near(v.set_length(2.0), Vector2(1.2, 1.6));
  expect_near(Vector2(0.0, 2.0).set_length(-1.0), Vector2(0.0, -1.0));
}

TEST(Vector2, PerpSignFollowsOrientation) {
  EXPECT_EQ(Vector2::X_AXIS.perp(Vector2::Y_AXIS), 1.0);
  EXPECT_EQ(Vector2::Y_AXIS.perp(Vector2::X_AXIS), -1.0);
  EXPECT_EQ(Vector2(2.0, 3.0).perp(Vector2(-4.0, -6.0)), 0.0);
  EXPECT_EQ(Vector2(2.0, 3.0).dot(Vector2(-4.0, 5.0)), 7.0);
}

TEST(Vector2, RotateKeepsLengthAndTurnsCounterClockwise) {
  expect_near(Vector2(2.0, 0.0).rotate(kPi / 2), Vector2(0.0, 2.0));
  expect_near(Vector2(0.0, -3.0).rotate(kPi / 2), Vector2(3.0, 0.0));

  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> coord(-10.0, 10.0);
  std::uniform_real_distribution<double> turn(-3.0, 3.0);
  for (int i = 0; i < 200; ++i) {
    Vector2 const v(coord(rng), coord(rng));
    double const a = turn(rng);
    Vector2 const r = v.rotate(a);
    EXPECT_NEAR(r.length(), v.length(), 1e-12 * v.length() + 1e-14);
    // The unsigned angle recovers |a|, and perp tells its sense.
    EXPECT_NEAR(v.angle_between(r), std::fabs(a), 1e-7);
    EXPECT_EQ(v.perp(r) > 0.0, std::sin(a) > 0.0) << "angle " << a;
  }
}

TEST(Vector2, RotateLeavesShortVectors) {
  Vector2 const tiny(1e-7, 0.0);
  Vector2 const r = tiny.rotate(1.0);
  EXPECT_EQ(r.x, 1e-7);
  EXPECT_EQ(r.y, 0.0);
  // Just above the length guard the vector does turn.
  Vector2 const small = Vector2(2e-6, 0.0).rotate(kPi / 2);
  EXPECT_NEAR(small.y, 2e-6, 1e-18);
}

TEST(Vector2, AngleBetween) {
  EXPECT_DOUBLE_EQ(Vector2(1.0, 0.0).angle_between(Vector2(0.0, -1.0)), kPi / 2);
  EXPECT_DOUBLE_EQ(Vector2(1.0, 0.0).angle_between(Vector2::ORIGIN), kPi / 2);
  EXPECT_DOUBLE_EQ(Vector2(1.0, 1.0).angle_between(Vector2(-3.0, -3.0)), kPi);
  // Nearly equal unit vectors whose dot product rounds above 1 must not give NaN.
  Vector2 const a(0.6, 0.8);
  EXPECT_FALSE(std::isnan(a.angle_between(Vector2(0.6 * 7, 0.8 * 7))));
  EXPECT_EQ(Vector2(1.0, 0.0).angle_between(Vector2(5.0, 0.0)), 0.0);
}

TEST(Vector2, ParallelTo) {
  EXPECT_TRUE(Vector2(1.0, 1.0).parallel_to(Vector2(-2.0, -2.0)));
  EXPECT_TRUE(Vector2(1.0, 1.0).parallel_to(Vector2(3.0, 3.0)));
  EXPECT_TRUE(Vector2::ORIGIN.parallel_to(Vector2::ORIGIN));
  EXPECT_FALSE(Vector2::ORIGIN.parallel_to(Vector2(0.0, 1.0)));
  EXPECT_FALSE(Vector2(1.0, 0.0).parallel_to(Vector2(1.0, 1e-5)));
  EXPECT_FALSE(Vector2(1.0, 0.0).parallel_to(Vector2(-1.0, 1e-5)));
  EXPECT_TRUE(Vector2(1.0, 0.0).parallel_to(Vector2(-1.0, 1e-7)));
  // Only one component matching is not enough.
  EXPECT_FALSE(Vector2(1.0, 0.0).parallel_to(Vector2(0.0, 1.0)));
  EXPECT_FALSE(Vector2(0.0, 1.0).parallel_to(Vector2(1.0, 0.0)));
}

TEST(Vector2, TransitionExtrapolates) {
  Vector2 const a(1.0, -2.0);
  Vector2 const b(3.0, 2.0);
  expect_near(a.transition_to(b, 0.5), Vector2(2.0, 0.0));
  expect_near(a.transition_to(b, 2.0), Vector2(5.0, 6.0));
  expect_near(a.transition_to(b, -1.0), Vector2(-1.0, -6.0));
  expect_near(a.product(b), Vector2(3.0, -4.0));
  expect_near(a.reverse() - b * 2.0 + 0.5 * b, Vector2(-5.5, -1.0));
}

}  // namespace
