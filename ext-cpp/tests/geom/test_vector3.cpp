#include <quillmark/geom/geom_vector3.h>

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "geom_test_support.h"

namespace {

using Geom::Vector3;
using geom_test::down;
using geom_test::expect_near;
using geom_test::expect_same;
using geom_test::kPi;
using geom_test::up;

// A vector of length exactly 1.0 (as computed) whose x component is c, so that its
// cosine with X_AXIS as the rotation code computes it is exactly c.
Vector3 unit_at_cosine(double c) {
  double y = std::sqrt(1.0 - c * c);
  for (int i = 0; i < 64 && Vector3(c, y, 0.0).length() != 1.0; ++i) y = down(y);
  EXPECT_EQ(Vector3(c, y, 0.0).length(), 1.0);
  return Vector3(c, y, 0.0);
}

TEST(Vector3, DivisionAndLengthThresholds) {
  // 7 / 3 and 7 * (1 / 3) differ in the last bit: the reciprocal form is the contract.
  Vector3 const v(1.0, 2.0, 7.0);
  expect_same(v / 3.0, v * (1.0 / 3.0));
  Vector3 w = v;
  w /= 3.0;
  expect_same(w, v * (1.0 / 3.0));
  EXPECT_NE((v / 3.0).z, 7.0 / 3.0);
  Vector3 c(1.0, 2.0, 3.0);
  c /= Vector3(1.0, 2.0, 0.0);
  expect_same(c, Vector3(1.0, 1.0, std::numeric_limits<double>::infinity()));

  // The largest x whose square is still at or below the zero-length threshold: such a
  // vector is neither normalised nor re-lengthened; the next double is.
  double z = 1e-6;
  while (z * z > Geom::SQUARED_LENGTH_EPSILON) z = down(z);
  while (up(z) * up(z) <= Geom::SQUARED_LENGTH_EPSILON) z = up(z);
  expect_same(Vector3(z, 0.0, 0.0).normalize(), Vector3(z, 0.0, 0.0));
  EXPECT_NEAR(Vector3(up(z), 0.0, 0.0).normalize().x, 1.0, 1e-15);
  EXPECT_EQ(Vector3(z, 0.0, 0.0).set_length(5.0).x, z);
  EXPECT_NEAR(Vector3(0.0, up(z), 0.0).set_length(5.0).y, 5.0, 1e-15);
  expect_same(Vector3().normalize(), Vector3());
  Vector3 cleared(1.0, 2.0, 3.0);
  cleared.set_all(-2.0);
  expect_near(cleared.normalize(), Vector3(-1.0) * (1.0 / std::sqrt(3.0)));
  cleared.clear();
  expect_same(cleared, Vector3());
  expect_near(Vector3(3.0, 4.0, 0.0).normalize(), Vector3(0.6, 0.8, 0.0));
  expect_near(Vector3(0.0, 0.0, 2.0).set_length(-5.0), Vector3(0.0, 0.0, -5.0));
}

TEST(Vector3, RotateFollowsRightHandRuleAndKeepsLength) {
  expect_near(Vector3::X_AXIS.rotate(Vector3::Z_AXIS, kPi / 2), Vector3::Y_AXIS);
  expect_near(Vector3::Y_AXIS.rotate(Vector3::X_AXIS, kPi / 2), Vector3::Z_AXIS);
  expect_near(Vector3::Z_AXIS.rotate(Vector3::Y_AXIS, kPi / 2), Vector3::X_AXIS);
  geom_test::Draw d(42, -3.0, 3.0);
  for (int i = 0; i < 200; ++i) {
    Vector3 const v = d.vec();
    Vector3 const axis = d.vec().normalize();
    double const angle = d();
    Vector3 const r = v.rotate(axis, angle);
    EXPECT_NEAR(r.length(), v.length(), 1e-12);
    EXPECT_NEAR(r.dot(axis), v.dot(axis), 1e-12);  // the component along the axis stays
    // Turning by the angle between v and its image, within the plane, is the rotation.
    Vector3 const vp = v - axis * v.dot(axis);
    Vector3 const rp = r - axis * r.dot(axis);
    EXPECT_NEAR(vp.angle_between(rp, axis), std::remainder(angle, 2 * kPi), 1e-9);
    // Parallel vectors whose normalised dot rounds past ±1 still give 0 and pi, not NaN.
    EXPECT_NEAR(v.angle_between(v * 3.7), 0.0, 1e-7);
    EXPECT_NEAR(v.angle_between(v * -0.3), kPi, 1e-7);
  }
}

TEST(Vector3, RotateToTurnsFractionOfTheWay) {
  Vector3 const a(2.0, 0.0, 0.0);
  Vector3 const b(0.0, 5.0, 0.0);
  expect_near(a.rotate_to(b, 0.5), Vector3(std::sqrt(2.0), std::sqrt(2.0), 0.0));
  expect_near(a.rotate_to(b, 1.0), Vector3(0.0, 2.0, 0.0));
  expect_near(a.rotate_to(b, -1.0), Vector3(0.0, -2.0, 0.0));
  expect_near(a.rotate_and_scale_to(b, 0.5), Vector3(3.5, 3.5, 0.0) * (1.0 / std::sqrt(2.0)));
  expect_near(a.rotate_and_scale_to(b, 1.0), b);
  // Opposite directions: the axis is a x Z_AXIS, or a x X_AXIS for a along z.
  expect_near(Vector3::X_AXIS.rotate_to(Vector3(-1.0, 0.0, 0.0), 0.5), Vector3::Z_AXIS);
  expect_near(Vector3::Z_AXIS.rotate_to(Vector3(0.0, 0.0, -1.0), 0.5), Vector3::X_AXIS);
  expect_near(Vector3::Y_AXIS.rotate_to(Vector3(0.0, -3.0, 0.0), 1.0), Vector3(0.0, -1.0, 0.0));

  // Lengths: at 1e-6 either way nothing turns, just above it does. A zero-length target
  // only rescales; a zero-length object stays as it is.
  double const l = 1e-6;
  Vector3 const tiny(l, 0.0, 0.0);
  expect_same(tiny.rotate_to(Vector3::Y_AXIS, 1.0), tiny);
  expect_same(Vector3::Y_AXIS.rotate_to(tiny, 1.0), Vector3::Y_AXIS);
  EXPECT_GT(Vector3(up(l), 0.0, 0.0).rotate_to(Vector3::Y_AXIS, 1.0).y, 0.0);
  EXPECT_LT(Vector3::Y_AXIS.rotate_to(Vector3(up(l), 0.0, 0.0), 1.0).y, 1e-9);
  expect_near(Vector3(0.0, 2.0, 0.0).rotate_and_scale_to(Vector3(), 0.5), Vector3(0.0, 1.0, 0.0));
  expect_same(Vector3().rotate_and_scale_to(Vector3(0.0, 2.0, 0.0), 0.5), Vector3());
}

TEST(Vector3, RotateToDirectionThresholds) {
  double const c = Geom::PARALLEL_COSINE;
  Vector3 const a = Vector3::X_AXIS * 2.0;
  // At the same-direction line the object comes back untouched; just below it turns.
  expect_same(a.rotate_to(unit_at_cosine(c), 0.5), a);
  EXPECT_GT(a.rotate_to(unit_at_cosine(down(c)), 0.5).y, 0.0);
  expect_same(a.rotate_and_scale_to(unit_at_cosine(c) * 4.0, 0.5), Vector3(3.0, 0.0, 0.0));
  // At -c the directions still count as distinct: the turn is about a x b (the z axis),
  // heading through +y. Just past it they are opposite and the turn is about -y, toward +z.
  EXPECT_NEAR(Vector3::X_AXIS.rotate_to(unit_at_cosine(-c), 0.5).y, 1.0, 1e-6);
  expect_near(Vector3::X_AXIS.rotate_to(unit_at_cosine(down(-c)), 0.5), Vector3::Z_AXIS);
  // Reversing a unit vector whose z is exactly c turns about a x X_AXIS = (0, c, -y), which
  // carries it through the x axis; with z just below c the axis is a x Z_AXIS, the x axis
  // itself, and the turn stays in the yz plane.
  Vector3 const u = unit_at_cosine(c);
  Vector3 const zc(0.0, u.y, u.x);
  EXPECT_NEAR(std::abs(zc.rotate_to(zc.reverse(), 0.5).x), 1.0, 1e-9);
  Vector3 const v = unit_at_cosine(down(c));
  Vector3 const zb(0.0, v.y, v.x);
  Vector3 const tb = zb.rotate_to(zb.reverse(), 0.5);
  EXPECT_NEAR(tb.x, 0.0, 1e-12);
  EXPECT_NEAR(std::abs(tb.y), 1.0, 1e-6);
}

TEST(Vector3, Angles) {
  Vector3 const n = Vector3::Z_AXIS;
  double const a = 170.0 * kPi / 180.0;
  Vector3 const from(std::cos(-a), std::sin(-a), 0.0), to(std::cos(a), std::sin(a), 0.0);
  // A projection of exactly 1e-6 counts; one just shorter does not.
  double const l = Geom::LENGTH_EPSILON;
  struct Case {
    Vector3 a, b, normal;
    double angle;
  } const cases[] = {
      {Vector3::X_AXIS, Vector3::Y_AXIS, n, kPi / 2},
      {Vector3::Y_AXIS, Vector3::X_AXIS, n, -kPi / 2},
      {Vector3::X_AXIS, {-1, 0, 0}, n, kPi},
      {{1, 0, 5}, {0, 2, -7}, n, kPi / 2},
      {{0, 0, -3}, Vector3::X_AXIS, n, 0.0},
      {Vector3::X_AXIS, {0, 0, 3}, n, 0.0},
      {from, to, n, -20.0 * kPi / 180.0},  // from -170 to +170 degrees is -20, not +340
      {to, from, n, 20.0 * kPi / 180.0},
      {Vector3::X_AXIS, Vector3::Y_AXIS, n.reverse(), -kPi / 2},
      {{l, 0, 5}, Vector3::Y_AXIS, n, kPi / 2},
      {{down(l), 0, 5}, Vector3::Y_AXIS, n, 0.0},
      {Vector3::Y_AXIS, {l, 0, 5}, n, -kPi / 2},
      {Vector3::Y_AXIS, {down(l), 0, 5}, n, 0.0},
  };
  for (Case const& c : cases)
    EXPECT_NEAR(c.a.angle_between(c.b, c.normal), c.angle, 1e-12) << c.a.x << " " << c.b.x;
  EXPECT_NEAR(Vector3::X_AXIS.angle_between(Vector3::Y_AXIS), kPi / 2, 1e-12);
  EXPECT_EQ(Vector3::X_AXIS.angle_between(Vector3()), std::acos(0.0));
  EXPECT_NEAR(Vector3(1.0, 0.0, 0.0).angle_between(Vector3(-3.0, 0.0, 0.0)), kPi, 1e-12);
}

TEST(Vector3, Parallel) {
  EXPECT_TRUE(Vector3(1.0, 0.0, 0.0).parallel_to(Vector3(-2.0, 0.0, 0.0)));
  EXPECT_TRUE(Vector3(1.0, 2.0, 3.0).parallel_to(Vector3(2.0, 4.0, 6.0)));
  EXPECT_TRUE(Vector3().parallel_to(Vector3()));
  EXPECT_FALSE(Vector3(1.0, 0.0, 0.0).parallel_to(Vector3(1.0, 1e-5, 0.0)));
  // Vectors too short to normalise are compared as they are: 1e-6 apart is not parallel.
  double const l = Geom::LENGTH_EPSILON;
  ASSERT_LE(l * l, Geom::SQUARED_LENGTH_EPSILON);
  Vector3 const axes[] = {Vector3::X_AXIS, Vector3::Y_AXIS, Vector3::Z_AXIS};
  for (int k = 0; k < 3; ++k) {
    EXPECT_FALSE(axes[k].parallel_to(axes[(k + 1) % 3]));
    EXPECT_FALSE(Vector3().parallel_to(axes[k]));
    EXPECT_FALSE(Vector3().parallel_to(axes[k] * l));
    EXPECT_FALSE(Vector3().parallel_to(axes[k] * -l));
    EXPECT_TRUE(Vector3().parallel_to(axes[k] * down(l)));
    EXPECT_TRUE(Vector3().parallel_to(axes[k] * -down(l)));
  }
}

}  // namespace
