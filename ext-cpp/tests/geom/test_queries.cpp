#include <quillmark/geom/geom_queries.h>
#include "geom_test_support.h"

#include <gtest/gtest.h>

#include <cfenv>
#include <cmath>
#include <limits>
#include <utility>

namespace {

using Geom::Vector2;
using Geom::Vector3;
using Geom::Vector4;

using geom_test::expect_near;
using geom_test::kPi;
constexpr double kTol = 1e-12;

void expect_near(Vector4 const& actual, Vector4 const& expected, double tol = kTol) {
  expect_near(static_cast<Vector3 const&>(actual), expected, tol);
  EXPECT_NEAR(actual.w, expected.w, tol);
}

TEST(InvSqrt, ReferenceValuesAndErrorBound) {
  EXPECT_EQ(Geom::inv_sqrt(1.0), 0.9983227945440889);
  EXPECT_EQ(Geom::inv_sqrt(4.0), 0.49916139727204445);
  EXPECT_NEAR(Geom::inv_sqrt(1.0f), 0.99830812f, 1e-7f);
  geom_test::Draw exponent(11, -300.0, 300.0);
  for (int i = 0; i < 5000; ++i) {
    double const x = std::pow(10.0, exponent());
    EXPECT_LT(std::fabs(Geom::inv_sqrt(x) * std::sqrt(x) - 1.0), 0.0018) << x;
    float const xf = std::pow(10.0f, static_cast<float>(exponent(-35.0, 35.0)));
    double const exact_f = 1.0 / std::sqrt(static_cast<double>(xf));
    EXPECT_LT(std::fabs(Geom::inv_sqrt(xf) - exact_f) / exact_f, 0.0018) << xf;
  }
  // The bound ends with the normal range: the smallest normals keep it, subnormals do not.
  double const dmin = std::numeric_limits<double>::min();
  float const fmin = std::numeric_limits<float>::min();
  EXPECT_LT(std::fabs(Geom::inv_sqrt(dmin) * std::sqrt(dmin) - 1.0), 0.0018);
  EXPECT_LT(std::fabs(Geom::inv_sqrt(fmin) * std::sqrt(double{fmin}) - 1.0), 0.0018);
  EXPECT_NEAR(Geom::inv_sqrt(1e-310) * std::sqrt(1e-310), 0.14, 0.01);
  // A negative argument is not checked, but must be defined behaviour (the bit estimate once
  // overflowed a signed subtraction there, which UBSan reports) and is no estimate of 1/√|x|.
  for (double const x :
       {-4.9e-324, -1e-300, -0.25, -1.0, -4.0, -1e300, -std::numeric_limits<double>::max(),
        -std::numeric_limits<double>::infinity()}) {
    EXPECT_FALSE(std::fabs(Geom::inv_sqrt(x) * std::sqrt(-x) - 1.0) < 0.5) << x;
    double const xf = static_cast<double>(static_cast<float>(x));
    float const yf = Geom::inv_sqrt(static_cast<float>(x));
    if (xf != 0.0) {
      EXPECT_FALSE(std::fabs(yf * std::sqrt(-xf) - 1.0) < 0.5) << xf;
    }
  }
  (void)Geom::inv_sqrt(-0.0);
  (void)Geom::inv_sqrt(-0.0f);
}

TEST(SegmentSegment, EndPointsCountParallelNeverDoes) {
  struct Case {
    Vector2 a, b, c, d;
    bool meets;
    Vector2 at;
  } const cases[] = {
      {{0, 0}, {1, 1}, {1, 1}, {2, 0}, true, {1, 1}},  // t = 1, u = 0
      {{0, 0}, {2, 0}, {0, -1}, {0, 0}, true, {0, 0}},  // t = 0, u = 1
      {{0, 0}, {2, 0}, {1, 0}, {3, 0}, false, {}},  // collinear and overlapping
      // r ⊥ s = 8e-7 < 1e-6, although the segments do cross; scaled up to 8e-5 they meet.
      {{-1, 0}, {1, 0}, {-1, -2e-7}, {1, 2e-7}, false, {}},
      {{-10, 0}, {10, 0}, {-10, -2e-6}, {10, 2e-6}, true, {0, 0}},
      // r ⊥ s exactly 1e-6 is not below the threshold: a short cd standing on ab meets it.
      {{0, 0}, {1, 0}, {0.5, 0}, {0.5, 1e-6}, true, {0.5, 0}},
  };
  for (Case const& c : cases) {
    Vector2 out(7.0, 7.0);
    ASSERT_EQ(Geom::intersect_segment_segment(c.a, c.b, c.c, c.d, out), c.meets)
        << c.c.x << "," << c.c.y;
    Vector2 const expected = c.meets ? c.at : Vector2(7.0, 7.0);
    EXPECT_NEAR(out.x, expected.x, kTol);
    EXPECT_NEAR(out.y, expected.y, kTol);
  }
  // Parallel, collinear and zero-length segments divide by nothing: code that runs with
  // floating-point traps enabled must not stop here. (volatile: no constant folding.)
  volatile double zero = 0.0, one = 1.0, two = 2.0;
  Vector2 out;
  std::feclearexcept(FE_ALL_EXCEPT);
  EXPECT_FALSE(Geom::intersect_segment_segment(Vector2(zero, zero), Vector2(two, zero),
                                               Vector2(one, zero), Vector2(two, zero), out));
  EXPECT_FALSE(Geom::intersect_segment_segment(Vector2(one, one), Vector2(one, one),
                                               Vector2(zero, one), Vector2(two, one), out));
  EXPECT_FALSE(std::fetestexcept(FE_DIVBYZERO | FE_INVALID | FE_OVERFLOW));
}

// Which side of line pq the point r lies on, with a margin so that rounding cannot flip it.
int side(Vector2 const& p, Vector2 const& q, Vector2 const& r) {
  double const a = (q - p).perp(r - p);
  return a > 1e-9 ? 1 : (a < -1e-9 ? -1 : 0);
}

TEST(SegmentSegment, AgreesWithOrientationTestAndPointLiesOnBoth) {
  geom_test::Draw coord(3, -5.0, 5.0);
  int hits = 0;
  for (int i = 0; i < 2000; ++i) {
    Vector2 const a = coord.vec2(), b = coord.vec2(), c = coord.vec2(), d = coord.vec2();
    int const s1 = side(a, b, c) * side(a, b, d);
    int const s2 = side(c, d, a) * side(c, d, b);
    if (s1 == 0 || s2 == 0) continue;  // too near a degenerate configuration to judge
    bool const crosses = s1 < 0 && s2 < 0;
    Vector2 out;
    ASSERT_EQ(Geom::intersect_segment_segment(a, b, c, d, out), crosses) << i;
    if (!crosses) continue;
    ++hits;
    for (auto const& seg : {std::make_pair(a, b), std::make_pair(c, d)}) {
      Vector2 const dir = seg.second - seg.first;
      EXPECT_NEAR(dir.perp(out - seg.first) / dir.length(), 0.0, 1e-9);
      double const along = dir.dot(out - seg.first) / dir.length_squared();
      EXPECT_TRUE(along > -1e-12 && along < 1.0 + 1e-12) << along;
    }
  }
  EXPECT_GT(hits, 200);
}

TEST(SegmentAndRayPlane, HitsMissesAndUntouchedOutput) {
  Vector3 const up(0, 0, 1);
  Vector3 const untouched(9, 9, 9);
  // The codes as the numbers they are documented to be: 0 none, 1 a point, 2 in the plane.
  // Any normal length, a plane off the origin, movement along every axis; a segment that
  // reaches the plane only if extended misses; a denominator of exactly 1e-6 is not parallel.
  struct Case {
    Vector3 p0, p1, point, normal;
    int code;
    Vector3 out;
  } const cases[] = {
      {{0, 0, 1}, {0, 0, 0}, {}, up, 1, {0, 0, 0}},
      {{1, 1, -1}, {3, 5, 3}, {5, 5, 1}, {0, 0, 7}, 1, {2, 3, 1}},
      {{0, 0, 0}, {4, 1, 0}, {}, up, 2, untouched},
      {{0, 0, 1}, {4, 1, 1}, {}, up, 0, untouched},
      {{0, 0, 1}, {0, 0, 2}, {}, up, 0, untouched},
      {{0, 0, -2}, {0, 0, -1}, {}, up, 0, untouched},
      {{0, 0, -5e-7}, {0, 0, 5e-7}, {}, up, 1, {0, 0, 0}},
  };
  for (Case const& c : cases) {
    Vector3 out = untouched;
    EXPECT_EQ(Geom::intersect_segment_plane(c.p0, c.p1, c.point, c.normal, out), c.code) << c.p0.z;
    expect_near(out, c.out);
  }
  // A ray from the plane hits at t = 0; t has no upper bound and the direction need not be unit.
  Vector3 out = untouched;
  ASSERT_TRUE(Geom::intersect_ray_plane(Vector3(1, 2, 0), Vector3(1, 1, 1), Vector3(), up, out));
  expect_near(out, Vector3(1, 2, 0));
  ASSERT_TRUE(Geom::intersect_ray_plane(Vector3(0, 0, 100), Vector3(0.5, 0.25, -0.5),
                                        Vector3(3, 3, -100), up, out));
  expect_near(out, Vector3(200, 100, -100), 1e-9);
  out = untouched;
  EXPECT_FALSE(Geom::intersect_ray_plane(Vector3(0, 0, 1), Vector3(0, 0, 1), Vector3(), up, out));
  // |direction · normal| of exactly 1e-6 counts as parallel for the ray (≤, not <).
  EXPECT_FALSE(
      Geom::intersect_ray_plane(Vector3(0, 0, -1), Vector3(1, 0, 1e-6), Vector3(), up, out));
  expect_near(out, untouched, 0.0);
  EXPECT_TRUE(
      Geom::intersect_ray_plane(Vector3(0, 0, -1), Vector3(1, 0, 2e-6), Vector3(), up, out));
}

TEST(Triplet, BarycentricWeightsAndHeight) {
  Vector3 const a(1, 1, 1), b(4, 1, 1), c(1, 3, 1);
  Vector3 const mid = (a + b + c) / 3.0 + Vector3(0, 0, 2);
  Vector4 out;
  // (b − a) × (c − a) points along +z; flipping the winding flips the height's sign.
  struct Case {
    Vector3 p, a, b, c;
    Vector4 uvwh;
  } const cases[] = {
      {b, a, b, c, {0, 1, 0, 0}},
      {mid, a, b, c, {1.0 / 3, 1.0 / 3, 1.0 / 3, 2.0}},
      {mid, a, c, b, {1.0 / 3, 1.0 / 3, 1.0 / 3, -2.0}},
      {{7, -2, -3}, a, b, c, {0.5, 2.0, -1.5, -4.0}},  // a + 2(b − a) − 1.5(c − a), 4 below
      // Collinear corners (zero normal, so h = 0 too).
      {{3, 5, 7}, {}, {1, 0, 0}, {2, 0, 0}, {1, 0, 0, 0}},
  };
  for (Case const& k : cases) {
    Geom::triplet_convert_point_to_uvwh(k.p, k.a, k.b, k.c, out);
    expect_near(out, k.uvwh);
  }
  // A small proper triangle whose den = 1e-12 is within the 1e-6 guard.
  Geom::triplet_convert_point_to_uvwh(Vector3(1e-4, 1e-4, 0), Vector3(), Vector3(1e-3, 0, 0),
                                      Vector3(0, 1e-3, 0), out);
  expect_near(static_cast<Vector3 const&>(out), Vector3(1, 0, 0), 0.0);
}

TEST(Triplet, InsideAgreesWithSignOfAreas) {
  geom_test::Draw coord(5, -3.0, 3.0);
  Vector3 const axis = Vector3(1, 2, 3).normalize();
  int inside = 0, tested = 0;
  for (int i = 0; i < 3000; ++i) {
    Vector3 const a = coord.vec().product(Vector3(1, 1, 0)),
                  b = coord.vec().product(Vector3(1, 1, 0)),
                  c = coord.vec().product(Vector3(1, 1, 0));
    double const area = (b - a).cross(c - a).z;
    if (std::fabs(area) < 0.5) continue;
    // p is lifted off the plane: only its projection counts.
    Vector3 const p = coord.vec();
    double const e0 = (b - a).cross(p - a).z / area;
    double const e1 = (c - b).cross(p - b).z / area;
    double const e2 = (a - c).cross(p - c).z / area;
    bool const clearly_in = e0 > 1e-6 && e1 > 1e-6 && e2 > 1e-6;
    if (!clearly_in && !(e0 < -1e-6 || e1 < -1e-6 || e2 < -1e-6)) continue;
    ++tested;
    inside += clearly_in;
    EXPECT_EQ(Geom::point_inside_triplet(p, a, b, c), clearly_in) << i;
    // Tilted out of the xy plane, the answer stays.
    EXPECT_EQ(Geom::point_inside_triplet(p.rotate(axis, 0.7), a.rotate(axis, 0.7),
                                         b.rotate(axis, 0.7), c.rotate(axis, 0.7)),
              clearly_in)
        << i;
  }
  EXPECT_GT(inside, 100);
  EXPECT_GT(tested - inside, 100);
  // Corners and edge points (also lifted) are outside; they sit exactly on the boundary.
  Vector3 const a(0, 0, 0), b(2, 0, 0), c(0, 2, 0);
  for (Vector3 const& p : {a, b, c, Vector3(1, 0, 0), Vector3(0, 1, 0), Vector3(1, 1, 3)}) {
    EXPECT_FALSE(Geom::point_inside_triplet(p, a, b, c)) << p.x << "," << p.y << "," << p.z;
  }
}

TEST(CpaLineLine, CrossingSkewAndParallel) {
  Vector3 p, q;
  Geom::cpa_line_line(Vector3(-1, 2, 3), Vector3(2, 0, 0), Vector3(0, 5, 3), Vector3(0, -3, 0), p,
                      q);
  expect_near(p, Vector3(0, 2, 3));
  expect_near(q, Vector3(0, 2, 3));
  geom_test::Draw coord(9, -4.0, 4.0);
  for (int i = 0; i < 200; ++i) {
    Vector3 const p0 = coord.vec(), u = coord.vec(), q0 = coord.vec(), v = coord.vec();
    if (u.cross(v).length() < 0.1) continue;
    Geom::cpa_line_line(p0, u, q0, v, p, q);
    // The gap is perpendicular to both lines, and each point lies on its own line.
    EXPECT_NEAR((p - q).dot(u), 0.0, 1e-9);
    EXPECT_NEAR((p - q).dot(v), 0.0, 1e-9);
    EXPECT_NEAR((p - p0).cross(u).length(), 0.0, 1e-9);
    EXPECT_NEAR((q - q0).cross(v).length(), 0.0, 1e-9);
  }
  // Parallel lines, with either direction the longer one and opposite senses.
  Vector3 const p0(1, 2, 3), q0(5, -1, 0);
  for (auto const& dirs : {std::make_pair(Vector3(0, 0, 4), Vector3(0, 0, 1)),
                           std::make_pair(Vector3(0, 0, 1), Vector3(0, 0, -4)),
                           std::make_pair(Vector3(0, 0, -1), Vector3(0, 0, 1))}) {
    Geom::cpa_line_line(p0, dirs.first, q0, dirs.second, p, q);
    expect_near(p, p0);
    expect_near(q, Vector3(5, -1, 3));
  }
}

TEST(Cotan, AnglesAndDegenerates) {
  // Parallel, opposite and zero vectors give 0. |a × b|² = 4e-12 is above the guard: a
  // very sharp angle still has a cotangent.
  struct Case {
    Vector3 a, b;
    double cot, tol;
  } const cases[] = {{{1, 0, 0}, {0, 3, 0}, 0.0, 0.0},
                     {{2, 0, 0}, {1, 1, 0}, 1.0, kTol},
                     {{1, 0, 0}, {-1, 1, 0}, -1.0, kTol},
                     {{0, 0, 1}, {std::sqrt(3.0), 0, 1}, 1.0 / std::sqrt(3.0), kTol},
                     {{1, 2, 3}, {-2, -4, -6}, 0.0, 0.0},
                     {{}, {1, 0, 0}, 0.0, 0.0},
                     {{1, 0, 0}, {1, 2e-6, 0}, 5e5, 50.0}};
  for (Case const& c : cases)
    EXPECT_NEAR(Geom::cotan(c.a, c.b), c.cot, c.tol) << c.b.x << "," << c.b.y;
}

TEST(PointsOnCircle, CircleAndArcFillExactlyTheirPoints) {
  Vector3 pts[6];
  auto reset = [&pts] {
    for (Vector3& p : pts) p = Vector3(42, 42, 42);
  };
  reset();
  Geom::points_on_circle(3, 2.0, kPi / 2, pts);
  expect_near(pts[0], Vector3(0, 2, 0));
  expect_near(pts[1], Vector3(-std::sqrt(3.0), -1, 0));
  expect_near(pts[2], Vector3(std::sqrt(3.0), -1, 0));
  EXPECT_EQ(pts[3].x, 42.0);
  reset();
  Geom::points_on_circle(0, 1.0, 0.0, pts);
  EXPECT_EQ(pts[0].x, 42.0);
  // Both ends included; a clockwise arc has a negative step.
  Geom::points_on_arc(4, 3.0, kPi / 2, -kPi / 2, pts);
  expect_near(pts[0], Vector3(0, 3, 0));
  expect_near(pts[2], Vector3(3, 0, 0));
  expect_near(pts[4], Vector3(0, -3, 0));
  EXPECT_EQ(pts[5].x, 42.0);
  // Count 0: the one point at the start angle, with no step to divide out, so code running
  // with floating-point traps does not stop (start = end would be 0/0, else x/0).
  for (double const end : {0.0, kPi}) {
    reset();
    volatile double start = kPi;
    std::feclearexcept(FE_ALL_EXCEPT);
    Geom::points_on_arc(0, 2.0, start, end, pts);
    EXPECT_FALSE(std::fetestexcept(FE_DIVBYZERO | FE_INVALID)) << end;
    expect_near(pts[0], Vector3(-2, 0, 0));
    EXPECT_EQ(pts[1].x, 42.0);
  }
  // count + 1 points do not exist for the largest count: nothing is written.
  reset();
  Geom::points_on_arc(std::numeric_limits<unsigned long>::max(), 1.0, 0.0, 1.0, pts);
  EXPECT_EQ(pts[0].x, 42.0);
}

}  // namespace
