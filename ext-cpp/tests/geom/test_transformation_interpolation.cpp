#include <quillmark/geom/geom_quaternion.h>
#include <quillmark/geom/geom_transformation.h>
#include "geom_test_support.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Geom::Quaternion;
using Geom::Transformation;
using Geom::Vector3;

using geom_test::expect_near;
using geom_test::kPi;

void expect_finite(Transformation const& a) {
  for (int i = 0; i < 16; ++i) EXPECT_TRUE(std::isfinite(a.data()[i])) << "element " << i;
}

Transformation scaled_frame(Vector3 const& s, Vector3 const& origin) {
  return Transformation(Vector3(s.x, 0, 0), Vector3(0, s.y, 0), Vector3(0, 0, s.z), origin);
}

// A right-handed frame with perpendicular axes of the given lengths.
Transformation random_frame(geom_test::Draw& d, Vector3 const& lengths) {
  Quaternion const q = Quaternion(d.normal(), d.normal(), d.normal(), d.normal()).normalize();
  Transformation m(q, Vector3(d.normal(), d.normal(), d.normal()) * 5.0);
  m.scale_axes_self(lengths);
  return m;
}

// Axes of the given lengths, at right angles, right-handed.
void expect_rigid(Transformation const& m, Vector3 const& lengths) {
  expect_near(m.scale(), lengths, 1e-9);
  EXPECT_NEAR(m.x_axis.dot(m.y_axis), 0.0, 1e-9);
  EXPECT_NEAR(m.x_axis.dot(m.z_axis), 0.0, 1e-9);
  EXPECT_NEAR(m.y_axis.dot(m.z_axis), 0.0, 1e-9);
  EXPECT_GT(m.x_axis.cross(m.y_axis).dot(m.z_axis), 0.0);
}

TEST(RotateAxisTo, TurnsTheWholeFrameAndKeepsOrigin) {
  Transformation const a = scaled_frame(Vector3(2, 3, 4), Vector3(1, 2, 3));
  expect_near(
      a.rotate_xaxis_to(Vector3(0, 1, 0)),
      Transformation(Vector3(0, 2, 0), Vector3(-3, 0, 0), Vector3(0, 0, 4), Vector3(1, 2, 3)));
  Transformation const eighth = a.rotate_xaxis_to(Vector3(1, 1, 0));
  double const r2 = std::sqrt(2.0);
  expect_near(eighth, Transformation(Vector3(r2, r2, 0), Vector3(-1.5 * r2, 1.5 * r2, 0),
                                     Vector3(0, 0, 4), Vector3(1, 2, 3)));
  // Already along the direction (cosine above 0.9999995): a bitwise copy; just outside
  // that cone the frame does turn.
  Transformation const same = a.rotate_xaxis_to(Vector3(5, 5e-4, 0));
  for (int i = 0; i < 16; ++i) EXPECT_EQ(same.data()[i], a.data()[i]);
  EXPECT_GT(a.rotate_xaxis_to(Vector3(1, 2e-3, 0)).x_axis.y, 0.0);
  // The origin column is carried over whole, weight included.
  Transformation weighted = a;
  weighted.origin.w = 2.0;
  Transformation const turned = weighted.rotate_zaxis_to(Vector3(1, 0, 0));
  EXPECT_EQ(turned.origin.w, 2.0);
  expect_near(turned.z_axis, Vector3(4, 0, 0));
  // Opposite directions turn about the fallback axis; a zero direction collapses the axes.
  Transformation const id;
  expect_near(id.rotate_xaxis_to(Vector3(-1, 0, 0)),
              Transformation(Vector3(-1, 0, 0), Vector3(0, 1, 0), Vector3(0, 0, -1)));
  expect_near(id.rotate_yaxis_to(Vector3(0, -1, 0)), Transformation::rotatez(kPi));
  expect_near(id.rotate_zaxis_to(Vector3(0, 0, -2)), Transformation::rotatex(kPi));
  Transformation collapsed;
  collapsed.clear();
  collapsed.origin = a.origin;
  expect_near(a.rotate_yaxis_to(Vector3()), collapsed, 0.0);
}

TEST(RotateAxisTo, AxisLandsOnDirectionForRandomFrames) {
  geom_test::Draw rng(51, 0.5, 3.0);
  for (int i = 0; i < 200; ++i) {
    Vector3 const lengths = rng.vec();
    Transformation const a = random_frame(rng, lengths);
    Vector3 const dir(rng.normal(), rng.normal(), rng.normal());
    Transformation const r[3] = {a.rotate_xaxis_to(dir), a.rotate_yaxis_to(dir),
                                 a.rotate_zaxis_to(dir)};
    Vector3 const own[3] = {r[0].x_axis, r[1].y_axis, r[2].z_axis};
    for (int k = 0; k < 3; ++k) {
      expect_near(own[k].normalize(), dir.normalize(), 1e-9);
      expect_rigid(r[k], lengths);
      expect_near(r[k].origin, a.origin, 0.0);
    }
  }
}

TEST(Interpolation, QuarterAndHalfTurns) {
  Transformation const id;
  Transformation const quarter = Transformation::rotatez(kPi / 2);
  // A half turn about x swings about the frame's own x axis.
  Transformation const flip = Transformation::rotatex(kPi);
  Transformation const half_flip(Vector3(1, 0, 0), Vector3(0, 0, 1), Vector3(0, -1, 0));
  for (auto interpolate :
       {&Transformation::uniform_transition_to, &Transformation::uniform_normal_transition_to}) {
    expect_near((id.*interpolate)(quarter, 0.0), id);
    expect_near((id.*interpolate)(quarter, 0.5), Transformation::rotatez(kPi / 4));
    expect_near((id.*interpolate)(quarter, 1.0), quarter);
    expect_near((id.*interpolate)(quarter, 2.0), Transformation::rotatez(kPi));
    expect_near((id.*interpolate)(quarter, -1.0), Transformation::rotatez(-kPi / 2));
    expect_near((quarter.*interpolate)(id, 0.5), Transformation::rotatez(kPi / 4));  // signed twist
    expect_near((id.*interpolate)(flip, 0.5), half_flip);
    expect_near((id.*interpolate)(flip, 1.0), flip);
    // An exact half twist about z reads as +π (r.y is exactly 0), so halfway is −90°.
    Transformation const half_z(Vector3(-1, 0, 0), Vector3(0, -1, 0), Vector3(0, 0, 1));
    expect_near((id.*interpolate)(half_z, 0.5).x_axis, Vector3(0, -1, 0));
    // Mirrored input comes out right-handed.
    Transformation const mirrored(Vector3(1, 0, 0), Vector3(0, -1, 0), Vector3(0, 0, 1));
    expect_near((mirrored.*interpolate)(mirrored, 0.0), id);
  }
}

TEST(Interpolation, NearlyParallelAndOppositeZAxes) {
  Transformation const id;
  // z axes whose cosine is exactly 0.9999995 count as parallel: the swing pivots about A's
  // x axis instead of z_A × z_B, so z does not land on B's z.
  double const c = 0.9999995;
  double const s = std::sqrt(1.0 - c * c);
  Transformation const tilted(Vector3(c, 0, -s), Vector3(0, 1, 0), Vector3(s, 0, c));
  Transformation const m = id.uniform_normal_transition_to(tilted, 1.0);
  EXPECT_NEAR(m.z_axis.y, -s, 1e-9);
  EXPECT_NEAR(m.z_axis.x, 0.0, 1e-15);
  // Opposite z axes whose dot product rounds below −1 must still give a half swing.
  Transformation long_flip = Transformation::rotatex(kPi);
  long_flip.z_axis.z = -1.000001;
  expect_finite(id.uniform_normal_transition_to(long_flip, 0.5));
  expect_near(id.uniform_normal_transition_to(long_flip, 0.5).z_axis, Vector3(0, -1, 0), 1e-9);
}

TEST(Interpolation, LengthsWeightsAndOrigins) {
  Transformation const id;
  Transformation const b = scaled_frame(Vector3(2, 3, 4), Vector3(10, 0, -4));
  expect_near(id.uniform_transition_to(b, 0.5),
              scaled_frame(Vector3(1.5, 2, 2.5), Vector3(5, 0, -2)));
  // The normal form sets no lengths; the origins are still interpolated.
  Transformation const normal = id.uniform_normal_transition_to(b, 0.5);
  expect_near(normal.origin, Vector3(5, 0, -2));
  EXPECT_NEAR(normal.z_axis.length(), 1.0, 1e-12);
  // A weight of 2 divides lengths and origin; the result always has weight 1.
  Transformation weighted = scaled_frame(Vector3(2, 2, 2), Vector3(4, 4, 4));
  weighted.origin.w = 2.0;
  expect_near(weighted.uniform_transition_to(id, 0.0), Transformation(Vector3(2, 2, 2)));
  expect_near(id.uniform_transition_to(weighted, 1.0), Transformation(Vector3(2, 2, 2)));
  // The normal form ignores weights: the stored origins are interpolated.
  EXPECT_EQ(weighted.uniform_normal_transition_to(id, 0.0).origin.x, 4.0);
  EXPECT_EQ(weighted.uniform_normal_transition_to(id, 0.0).origin.w, 1.0);
  // Axes' w never reach the result.
  Transformation projective;
  projective.x_axis.w = 0.5;
  projective.z_axis.w = -1.0;
  expect_near(projective.uniform_transition_to(id, 0.0), id);
  expect_near(projective.uniform_normal_transition_to(id, 0.0), id);
  // A singular target gives finite frames, and no twist is read from it.
  Transformation const a = scaled_frame(Vector3(2, 3, 4), Vector3(1, 2, 3));
  Transformation zero;
  zero.clear();
  for (double t : {0.0, 0.5, 1.0}) expect_finite(a.uniform_transition_to(zero, t));
  expect_near(a.uniform_transition_to(zero, 0.0), a);
}

TEST(Interpolation, EndpointsAndRigidInbetweensForRandomFrames) {
  // Within [0, 1] the interpolated lengths stay positive, so the frame keeps its handedness.
  geom_test::Draw rng(61, 0.5, 3.0);
  for (int i = 0; i < 200; ++i) {
    double const ab = rng(), bb = rng();
    Vector3 const sa(ab, ab, rng());
    Vector3 const sb(bb, bb, rng());
    Transformation const a = random_frame(rng, sa);
    Transformation const b = random_frame(rng, sb);
    expect_near(a.uniform_transition_to(b, 0.0), a, 1e-9);
    expect_near(a.uniform_transition_to(b, 1.0), b, 1e-9);
    double const t = rng(0.0, 1.0);
    Transformation const m = a.uniform_transition_to(b, t);
    expect_rigid(m, sa.transition_to(sb, t));
    expect_near(m.origin, Vector3(a.origin).transition_to(b.origin, t), 1e-9);

    Transformation const ua = random_frame(rng, Vector3(1.0));
    Transformation const ub = random_frame(rng, Vector3(1.0));
    expect_near(ua.uniform_normal_transition_to(ub, 0.0), ua, 1e-9);
    expect_near(ua.uniform_normal_transition_to(ub, 1.0), ub, 1e-9);
    // For unit frames both forms agree everywhere.
    expect_near(ua.uniform_normal_transition_to(ub, t), ua.uniform_transition_to(ub, t), 1e-9);
  }
}

}  // namespace
