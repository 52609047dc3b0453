#include <quillmark/geom/geom_bounding_box3.h>

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "geom_test_support.h"

namespace {

using Geom::BoundingBox3;
using Geom::Vector3;
using geom_test::expect_same;
using geom_test::up;

void expect_box(BoundingBox3 const& b, Vector3 const& lo, Vector3 const& hi) {
  expect_same(b.min, lo);
  expect_same(b.max, hi);
}

BoundingBox3 const kUnit(Vector3(0, 0, 0), Vector3(1, 1, 1));

TEST(BoundingBox3, EmptyBoxAndGrowth) {
  BoundingBox3 b;
  EXPECT_FALSE(b.contains(Vector3()) || b.intersects(kUnit) || kUnit.intersects(b) ||
               b.within(kUnit));
  b.add(Vector3(1, 2, 3));
  expect_box(b, Vector3(1, 2, 3), Vector3(1, 2, 3));
  b.add(Vector3(-1, 5, 3)).add(Vector3(0, 0, 4));
  expect_box(b, Vector3(-1, 0, 3), Vector3(1, 5, 4));
  BoundingBox3 c = b;
  c.add(BoundingBox3());
  expect_box(c, b.min, b.max);
  c.add(BoundingBox3(Vector3(0, -1, 3.5), Vector3(2, 1, 3.5)));
  expect_box(c, Vector3(-1, -1, 3), Vector3(2, 5, 4));
  // lo only lowers min and hi only raises max; they are not sorted.
  c.add(Vector3(9, -9, 9), Vector3(-9, 9, -9));
  expect_box(c, Vector3(-1, -9, 3), Vector3(2, 9, 4));
  c.clear();
  expect_box(c, Vector3(1e15), Vector3(-1e15));
  // Its own corners as lo and hi: both read before either is written.
  c.add(c.max, c.min);
  expect_box(c, Vector3(-1e15), Vector3(1e15));
  // Scale and pad.
  BoundingBox3 const two(Vector3(0.0), Vector3(2.0));
  expect_box(two.scale(2.0), Vector3(-1.0), Vector3(3.0));
  expect_box(two.scale(0.5), Vector3(0.5), Vector3(1.5));
  expect_box(two, Vector3(0.0), Vector3(2.0));
  expect_box(BoundingBox3(Vector3(2, 0, 0), Vector3(0, 4, 0)).scale_self(2.0), Vector3(3, -2, 0),
             Vector3(-1, 6, 0));
  expect_box(BoundingBox3(kUnit).pad_self(0.5), Vector3(-0.5), Vector3(1.5));
  expect_box(BoundingBox3(kUnit).pad_self(-0.25), Vector3(0.25), Vector3(0.75));
}

TEST(BoundingBox3, AddedPointsAreCovered) {
  geom_test::Draw d(8, -100.0, 100.0);
  BoundingBox3 b;
  Vector3 pts[500];
  for (Vector3& p : pts) b.add(p = d.vec());
  Vector3 const centre = (b.min + b.max) * 0.5;
  // Every point is covered (nudged inward), and every face holds exactly one: the tightest box.
  int on_face[6] = {};
  for (Vector3 const& p : pts) {
    EXPECT_TRUE(b.contains(p.transition_to(centre, 1e-9)));
    on_face[0] += p.x == b.min.x;
    on_face[1] += p.y == b.min.y;
    on_face[2] += p.z == b.min.z;
    on_face[3] += p.x == b.max.x;
    on_face[4] += p.y == b.max.y;
    on_face[5] += p.z == b.max.z;
  }
  for (int n : on_face) EXPECT_EQ(n, 1);
  BoundingBox3 whole;
  whole.add(BoundingBox3(b.min, centre)).add(BoundingBox3(centre, b.max));
  expect_box(whole, b.min, b.max);
}

TEST(BoundingBox3, StrictQueriesAndCorners) {
  // Each of the six faces, on its own: a point on it is outside, a box flush with it is
  // not within, a box touching it from outside does not intersect.
  BoundingBox3 const around(Vector3(-1.0), Vector3(2.0));
  EXPECT_TRUE(kUnit.contains(Vector3(0.5, 0.5, 0.5)));
  auto at = [](Vector3& v, int axis) -> double& {
    return axis == 0 ? v.x : (axis == 1 ? v.y : v.z);
  };
  for (int face = 0; face < 6; ++face) {
    int const axis = face % 3;
    bool const low = face < 3;
    Vector3 p(0.5, 0.5, 0.5);
    at(p, axis) = low ? 0.0 : 1.0;
    EXPECT_FALSE(kUnit.contains(p)) << "face " << face;
    BoundingBox3 flush = around;
    at(low ? flush.min : flush.max, axis) = low ? 0.0 : 1.0;
    EXPECT_FALSE(kUnit.within(flush)) << "face " << face;
    BoundingBox3 flat = kUnit;
    at(low ? flat.max : flat.min, axis) = low ? 0.0 : 1.0;
    EXPECT_FALSE(flat.within(around)) << "face " << face;
    BoundingBox3 touching = kUnit;
    at(touching.min, axis) += low ? -1.0 : 1.0;
    at(touching.max, axis) += low ? -1.0 : 1.0;
    EXPECT_FALSE(kUnit.intersects(touching)) << "face " << face;
  }
  EXPECT_TRUE(kUnit.intersects(BoundingBox3(Vector3(0.5, 0.5, 0.5), Vector3(3, 3, 3))));
  EXPECT_TRUE(kUnit.within(around));
  EXPECT_FALSE(kUnit.within(kUnit));

  BoundingBox3 out;
  kUnit.intersect(BoundingBox3(Vector3(2, 2, 2), Vector3(3, 3, 3)), out);
  expect_box(out, Vector3(2, 2, 2), Vector3(1, 1, 1));
  EXPECT_FALSE(out.contains(Vector3(1.5, 1.5, 1.5)));
  EXPECT_FALSE(out.within(BoundingBox3(Vector3(-9.0), Vector3(9.0))));
  BoundingBox3 self = kUnit;
  self.intersect(BoundingBox3(Vector3(0.5, -1, 0.25), Vector3(2, 0.75, 3)), self);
  expect_box(self, Vector3(0.5, 0, 0.25), Vector3(1, 0.75, 1));

  BoundingBox3 const b(Vector3(1, 2, 3), Vector3(4, 5, 6));
  for (unsigned long i = 0; i < 8; ++i) {
    expect_same(b.corner(i),
                Vector3((i & 1) ? 4.0 : 1.0, (i & 2) ? 5.0 : 2.0, (i & 4) ? 6.0 : 3.0));
  }
  for (unsigned long i : {8ul, 100ul, ~0ul}) {
    try {
      b.corner(i);
      ADD_FAILURE() << "corner(" << i << ") did not throw";
    } catch (std::out_of_range const& e) {
      EXPECT_EQ(std::string(e.what()), "Expected index between 0 and 7.");
    }
  }
}

TEST(BoundingBox3, RayThroughInterior) {
  Vector3 const x(1, 0, 0);
  EXPECT_TRUE(kUnit.intersects_ray(Vector3(-1, 0.5, 0.5), x));
  EXPECT_TRUE(kUnit.intersects_ray(Vector3(2, 0.5, 0.5), x.reverse()));
  EXPECT_FALSE(kUnit.intersects_ray(Vector3(-1, 0.5, 0.5), x.reverse()));
  EXPECT_FALSE(kUnit.intersects_ray(Vector3(-1, 0, 0.5), x));  // along a face
  EXPECT_TRUE(kUnit.intersects_ray(Vector3(0.5, -1, 0.5), Vector3(0, 3, 0)));
  EXPECT_TRUE(kUnit.intersects_ray(Vector3(0.5, 0.5, 7), Vector3(0.01, 0, -1)));
  EXPECT_FALSE(kUnit.intersects_ray(Vector3(0.5, 0.5, 7), Vector3(0.2, 0, -1)));
  // Through an edge only: the face tests see no strictly inner point.
  EXPECT_FALSE(kUnit.intersects_ray(Vector3(-1, -1, 0.5), Vector3(1, 1, 0)));
  EXPECT_TRUE(kUnit.intersects_ray(Vector3(-1, -0.9, 0.5), Vector3(1, 1, 0)));
  for (Vector3 const& d : {x, Vector3(0, -1, 0), Vector3(0, 0, 2), Vector3(1, 1, 1)}) {
    EXPECT_TRUE(kUnit.intersects_ray(Vector3(0.5, 0.5, 0.5), d));
  }
  // A direction component of 1e-6 counts as zero, just above does not.
  double const e = Geom::LENGTH_EPSILON;
  EXPECT_FALSE(kUnit.intersects_ray(Vector3(-1, 0.5, 0.5), Vector3(e, 0, 0)));
  EXPECT_TRUE(kUnit.intersects_ray(Vector3(-1, 0.5, 0.5), Vector3(up(e), 0, 0)));
  EXPECT_TRUE(kUnit.intersects_ray(Vector3(2, 0.5, 0.5), Vector3(-up(e), 0, 0)));
  // Starting on a face and leaving: t = 0 does not count.
  EXPECT_FALSE(kUnit.intersects_ray(Vector3(0, 0.5, 0.5), x.reverse()));
  EXPECT_FALSE(BoundingBox3().intersects_ray(Vector3(), x));
}

TEST(BoundingBox3, RayTurnedTowardCentre) {
  Vector3 const o(-1, 2, 0.5);
  Vector3 const x(1, 0, 0);
  EXPECT_FALSE(kUnit.intersects_ray(o, x));
  EXPECT_TRUE(kUnit.intersects_ray(o, x, 0.5));
  EXPECT_FALSE(kUnit.intersects_ray(o, x, 0.01));
  // Turned by exactly the angle given: the box starts atan(1/2) = 0.4636 rad away.
  EXPECT_FALSE(kUnit.intersects_ray(o, x, 0.45));
  EXPECT_TRUE(kUnit.intersects_ray(o, x, 0.48));
  EXPECT_FALSE(kUnit.intersects_ray(o, x, 0.0));
  // The turn never goes past the centre: a huge limit stops at the centre's direction.
  EXPECT_TRUE(kUnit.intersects_ray(o, x, 100.0));
  // Pointing away (about 146 degrees off): a limit near that angle turns it back, but any
  // obtuse angle counts as pi, so a limit of 3 rad is not cut at 146 degrees and overshoots.
  EXPECT_FALSE(kUnit.intersects_ray(o, Vector3(-1, 0.2, 0), 1.0));
  EXPECT_TRUE(kUnit.intersects_ray(o, Vector3(-1, 0.2, 0), 2.55));
  EXPECT_FALSE(kUnit.intersects_ray(o, Vector3(-1, 0.2, 0), 3.0));
  // Straight at or away from the centre, and from the centre: the plain test decides.
  EXPECT_TRUE(kUnit.intersects_ray(Vector3(-1, 0.5, 0.5), x, 0.3));
  EXPECT_FALSE(kUnit.intersects_ray(Vector3(-1, 0.5, 0.5), x.reverse(), 0.3));
  EXPECT_TRUE(kUnit.intersects_ray(Vector3(0.5, 0.5, 0.5), x, 0.3));
  // Origin 1e-6 from the centre of a tiny box, on a face, aiming along it: a squared
  // distance of exactly 1e-12 still turns the ray (toward +x, into the box); the plain test
  // alone would miss.
  BoundingBox3 const tiny(Vector3(0.0), Vector3(2e-6));
  Vector3 const on_face(0.0, 1e-6, 1e-6);
  ASSERT_EQ(((tiny.min + tiny.max) * 0.5 - on_face).length_squared(), 1e-12);
  EXPECT_FALSE(tiny.intersects_ray(on_face, Vector3::Y_AXIS));
  EXPECT_TRUE(tiny.intersects_ray(on_face, Vector3::Y_AXIS, 0.5));
  // Empty or inverted boxes never hit under the angular test.
  EXPECT_FALSE(BoundingBox3().intersects_ray(Vector3(), x, 3.0));
  EXPECT_FALSE(BoundingBox3(Vector3(0, 0, 1), Vector3(1, 1, 0)).intersects_ray(o, x, 0.5));
  EXPECT_FALSE(BoundingBox3(Vector3(0, 1, 0), Vector3(1, 0, 1)).intersects_ray(o, x, 0.5));
}

TEST(BoundingBox3, TurningTowardTheCentreKeepsEveryHit) {
  // From outside, a ray that already passes through the interior, at most a right angle
  // away from the centre, still hits after any turn toward the centre: the turned ray lies
  // between it and the centre's direction, and the box is convex.
  geom_test::Draw coord(4711, -3.0, 4.0);
  int hits = 0;
  for (int i = 0; i < 20000 && hits < 1000; ++i) {
    Vector3 const o = coord.vec();
    if (BoundingBox3(Vector3(-0.01), Vector3(1.01)).contains(o)) continue;
    Vector3 const target = coord.vec() * 0.2 + Vector3(0.5);
    // Half unit, which turns by the true angle; half long, whose cosine can come out past 1.
    Vector3 const d = (target - o).normalize() * (i % 2 == 0 ? 1.0 : coord(1.0, 50.0));
    if (!kUnit.intersects_ray(o, d) || d.dot(Vector3(0.5) - o) < 0.0) continue;
    ++hits;
    double const max_angle = coord(0.0, 3.0);
    ASSERT_TRUE(kUnit.intersects_ray(o, d, max_angle))
        << "origin " << o.x << " " << o.y << " " << o.z << " direction " << d.x << " " << d.y << " "
        << d.z << " limit " << max_angle;
  }
  EXPECT_GE(hits, 1000);
}

}  // namespace
