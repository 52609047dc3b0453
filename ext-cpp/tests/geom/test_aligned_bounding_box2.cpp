#include <quillmark/geom/geom_aligned_bounding_box2.h>
#include "geom_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

namespace {

using Geom::AlignedBoundingBox2;
using Geom::Vector2;
using geom_test::kPi;

void expect_near(Vector2 const& actual, Vector2 const& expected, double tol = 1e-12) {
  EXPECT_NEAR(actual.x, expected.x, tol);
  EXPECT_NEAR(actual.y, expected.y, tol);
}

AlignedBoundingBox2 box(double angle, std::initializer_list<Vector2> points) {
  AlignedBoundingBox2 b(angle);
  for (Vector2 const& p : points) b.add(p);
  return b;
}

void expect_corners(AlignedBoundingBox2 const& b, std::initializer_list<Vector2> corners) {
  unsigned long k = 0;
  for (Vector2 const& c : corners) expect_near(b.corner(k++), c);
}

TEST(AlignedBoundingBox2, CornersCentreAndStrictContainment) {
  AlignedBoundingBox2 const b = box(0.0, {{0, 0}, {2, 1}});
  expect_corners(b, {{0, 0}, {2, 0}, {2, 1}, {0, 1}});
  expect_near(b.center(), Vector2(1, 0.5));
  EXPECT_TRUE(b.contains(Vector2(1, 0.5)));
  // On each of the four sides, and beyond them.
  for (Vector2 const& p : {Vector2(2, 0.5), Vector2(0, 0.5), Vector2(1, 1), Vector2(1, 0),
                           Vector2(3, 0.5), Vector2(1, -0.5)}) {
    EXPECT_FALSE(b.contains(p)) << p.x << "," << p.y;
  }
  try {
    b.corner(4);
    FAIL() << "corner(4) did not throw";
  } catch (std::out_of_range const& e) {
    EXPECT_EQ(std::string(e.what()), "Expected index between 0 and 3.");
  }
  EXPECT_THROW(b.corner(static_cast<unsigned long>(-1)), std::out_of_range);
}

TEST(AlignedBoundingBox2, QuarterTurnFrame) {
  AlignedBoundingBox2 b = box(kPi / 2, {{0, 0}, {2, 1}});
  expect_near(b.min, Vector2(0, -2));
  expect_near(b.max, Vector2(1, 0));
  expect_corners(b, {{2, 0}, {2, 1}, {0, 1}, {0, 0}});
  AlignedBoundingBox2 const moved = b.translate(Vector2(1, 0));
  AlignedBoundingBox2 const shifted = b.local_shift(Vector2(1, 0));
  for (unsigned long k = 0; k < 4; ++k) {
    expect_near(moved.corner(k), b.corner(k) + Vector2(1, 0));
    expect_near(shifted.corner(k), b.corner(k) + Vector2(0, 1));
  }
  b.translate_self(Vector2(1, 0));
  expect_near(b.corner(0), Vector2(3, 0));
  b.local_shift_self(Vector2(1, 0));
  expect_near(b.corner(0), Vector2(3, 1));
  // Arguments that are the box's own corners are read before the box changes.
  AlignedBoundingBox2 self = b;
  self.local_shift_self(self.min);
  for (unsigned long k = 0; k < 4; ++k) expect_near(self.corner(k), b.local_shift(b.min).corner(k));
  AlignedBoundingBox2 grown = box(0.0, {{0, 0}, {2, 1}}).scale(-1.0);
  grown.add(grown);
  expect_near(grown.min, Vector2(0, 0));
  expect_near(grown.max, Vector2(2, 1));
}

TEST(AlignedBoundingBox2, ScalePadAndClear) {
  AlignedBoundingBox2 b(0.7);
  b.local_add(Vector2(0, 0)).local_add(Vector2(2, 2));
  expect_near(b.scale(2.0).min, Vector2(-1, -1));
  expect_near(b.scale(2.0).max, Vector2(3, 3));
  AlignedBoundingBox2 const padded = std::as_const(b).pad_self(1.0);
  expect_near(padded.min, Vector2(-1, -1));
  expect_near(padded.max, Vector2(3, 3));
  expect_near(b.min, Vector2(0, 0));  // the const overload left it alone
  b.pad_self(-0.5);
  expect_near(b.max, Vector2(1.5, 1.5));

  Vector2 const x_axis = b.x_axis;
  b.clear();
  EXPECT_EQ(b.min.x, AlignedBoundingBox2::MAX_VALUE);
  EXPECT_EQ(b.max.y, AlignedBoundingBox2::MIN_VALUE);
  EXPECT_EQ(b.x_axis.x, x_axis.x);
  EXPECT_FALSE(b.contains(Vector2(0, 0)));
  b.add(Vector2(3, -4));  // the first point after clearing becomes both corners
  expect_near(b.corner(0), Vector2(3, -4));
  expect_near(b.corner(2), Vector2(3, -4));
}

TEST(AlignedBoundingBox2, AddedPointsAndBoxesEndUpInside) {
  geom_test::Draw coord(21, -50.0, 50.0);
  for (int i = 0; i < 100; ++i) {
    AlignedBoundingBox2 b(coord(-kPi, kPi));
    Vector2 pts[6];
    double lo = 1e300;
    for (Vector2& p : pts) {
      p = coord.vec2();
      expect_near(b.to_world(b.to_local(p)), p, 1e-12);
      b.add(p);
      lo = std::min(lo, b.to_local(p).x);
    }
    EXPECT_EQ(lo, b.min.x);  // tight: the side passes through an added point
    AlignedBoundingBox2 outer(coord(-kPi, kPi));
    outer.add(b);
    AlignedBoundingBox2 const grown = std::as_const(b).pad_self(1e-9);
    AlignedBoundingBox2 const outer_grown = std::as_const(outer).pad_self(1e-9);
    EXPECT_TRUE(grown.contains(b.center()));
    EXPECT_TRUE(outer_grown.contains(b));
    for (Vector2 const& p : pts) EXPECT_TRUE(grown.contains(p) && outer_grown.contains(p));
  }
}

TEST(AlignedBoundingBox2, ContainsBoxNeedsEveryCorner) {
  AlignedBoundingBox2 const outer = box(0.0, {{0, 0}, {4, 4}});
  AlignedBoundingBox2 const diamond = box(kPi / 4, {{2, 1.5}, {2.5, 2}, {2, 2.5}, {1.5, 2}});
  EXPECT_TRUE(outer.contains(diamond));
  EXPECT_FALSE(diamond.contains(outer));
  EXPECT_TRUE(outer.contains(box(0.0, {{1, 1}, {3, 3}})));
  // One corner out is enough to fail, whichever corner it is.
  EXPECT_FALSE(outer.contains(box(0.0, {{1, 1}, {3, 5}})));
  EXPECT_FALSE(outer.contains(box(0.0, {{-1, 1}, {3, 3}})));
  AlignedBoundingBox2 const big_diamond = box(kPi / 4, {{2, -0.5}, {4.5, 2}, {2, 4.5}, {-0.5, 2}});
  EXPECT_FALSE(outer.contains(big_diamond));
  EXPECT_FALSE(outer.contains(outer));  // touching its sides: not contained
}

TEST(AlignedBoundingBox2, ApartTouchingAndEmpty) {
  AlignedBoundingBox2 const a = box(0.0, {{0, 0}, {1, 1}});
  EXPECT_FALSE(a.intersects(box(0.0, {{1 + 1e-9, 0}, {2, 1}})));
  EXPECT_FALSE(a.intersects(box(0.3, {{5, 5}, {6, 7}})));
  // Sharing a side: the perpendicular edges meet at their end points, which counts.
  EXPECT_TRUE(a.intersects(box(0.0, {{1, 0}, {2, 1}})));
  // The empty box contains nothing and meets no box within 9e14 of the origin, at any
  // angle; turned by 45 degrees its side passes (7.1e14, 7.1e14), so a box out at 9e14 on
  // both axes crosses it.
  EXPECT_FALSE(AlignedBoundingBox2(0.4).contains(Vector2(0, 0)));
  geom_test::Draw coord(5, -9e14, 9e14);
  int drawn = 0;
  for (int i = 0; i < 2000; ++i) {
    AlignedBoundingBox2 const empty(coord(-kPi, kPi));
    AlignedBoundingBox2 const b = box(coord(-kPi, kPi), {coord.vec2(), coord.vec2()});
    double reach = 0.0;
    for (unsigned long k = 0; k < 4; ++k) reach = std::max(reach, b.corner(k).length());
    if (reach >= 9e14) continue;
    ++drawn;
    ASSERT_FALSE(b.intersects(empty) || empty.intersects(b)) << i;
  }
  EXPECT_GT(drawn, 300);
  AlignedBoundingBox2 const far_out = box(0.0, {{6e14, 6e14}, {9e14, 9e14}});
  EXPECT_FALSE(far_out.intersects(AlignedBoundingBox2(0.0)));
  EXPECT_TRUE(far_out.intersects(AlignedBoundingBox2(kPi / 4)));
}

TEST(AlignedBoundingBox2, IntersectsAgreesWithSeparatingAxes) {
  // Independent reference: two convex quadrilaterals overlap unless one of their four edge
  // directions separates them; gap is the smallest overlap over those axes (negative: apart).
  auto gap = [](AlignedBoundingBox2 const& a, AlignedBoundingBox2 const& b) {
    double least = 1e300;
    for (Vector2 const& axis : {a.x_axis, a.y_axis, b.x_axis, b.y_axis}) {
      double a_lo = 1e300, a_hi = -1e300, b_lo = 1e300, b_hi = -1e300;
      for (unsigned long k = 0; k < 4; ++k) {
        double const pa = axis.dot(a.corner(k)), pb = axis.dot(b.corner(k));
        a_lo = std::min(a_lo, pa), a_hi = std::max(a_hi, pa);
        b_lo = std::min(b_lo, pb), b_hi = std::max(b_hi, pb);
      }
      least = std::min(least, std::min(a_hi, b_hi) - std::max(a_lo, b_lo));
    }
    return least;
  };
  geom_test::Draw coord(17, -4.0, 4.0);
  int counts[2] = {0, 0};
  for (int i = 0; i < 3000; ++i) {
    AlignedBoundingBox2 const a = box(coord(-kPi, kPi), {coord.vec2(), coord.vec2()});
    AlignedBoundingBox2 const b = box(coord(-kPi, kPi), {coord.vec2(), coord.vec2()});
    // Slivers and near-touching pairs sit on the documented tolerance edge: skip them.
    double const g = gap(a, b);
    if (std::min({a.max.x - a.min.x, a.max.y - a.min.y, b.max.x - b.min.x, b.max.y - b.min.y}) <
            0.05 ||
        std::fabs(g) < 1e-6) {
      continue;
    }
    ++counts[g > 0.0];
    EXPECT_EQ(a.intersects(b), g > 0.0) << i;
    EXPECT_EQ(b.intersects(a), g > 0.0) << i;
  }
  EXPECT_GT(counts[0], 300);
  EXPECT_GT(counts[1], 300);
}

}  // namespace
