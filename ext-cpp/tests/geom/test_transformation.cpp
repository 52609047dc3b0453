#include <quillmark/geom/geom_transformation.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstring>

#include "geom_test_support.h"

namespace {

using Geom::Transformation;
using Geom::Vector3;
using Geom::Vector4;
using geom_test::down;
using geom_test::expect_near;
using geom_test::kPi;
using geom_test::up;

void expect_elements(Transformation const& t, std::initializer_list<double> m) {
  int k = 0;
  for (double e : m) EXPECT_EQ(t.data()[k++], e) << "element " << k - 1;
}

Transformation with_weight(Transformation t, double w) {
  t.origin.w = w;
  return t;
}

bool same_bits(Transformation const& a, Transformation const& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

Transformation random_matrix(geom_test::Draw& d, bool projective) {
  double m[16];
  for (double& e : m) e = d(-2.0, 2.0);
  if (!projective) {
    m[3] = m[7] = m[11] = 0.0;
    m[15] = 1.0;
  }
  return Transformation(m);
}

TEST(Transformation, StorageIsColumnMajor) {
  expect_elements(Transformation(), {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1});
  EXPECT_TRUE(same_bits(Transformation::IDENTITY, Transformation()));
  double m[16];
  float f[16];
  for (int k = 0; k < 16; ++k) m[k] = f[k] = static_cast<float>(k + 0.1);
  EXPECT_TRUE(same_bits(Transformation(m), Transformation(f)));
  EXPECT_EQ(0, std::memcmp(Transformation(m).data(), m, sizeof m));
  // Columns are images of the unit directions; elements 12..14 translate.
  Transformation const a(Vector3(1, 2, 3), Vector3(4, 5, 6), Vector3(7, 8, 9), Vector3(10, 11, 12));
  expect_elements(a, {1, 2, 3, 0, 4, 5, 6, 0, 7, 8, 9, 0, 10, 11, 12, 1});
  expect_near(a.transform_vector(Vector3::Y_AXIS), Vector3(14, 16, 18));
  expect_near(a.rotate_vector(Vector3::Z_AXIS), Vector3(7, 8, 9));
  expect_elements(Transformation(Vector3(1, 2, 3)),
                  {1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 1, 2, 3, 1});
  Transformation c = a;
  c.clear();
  expect_elements(c, {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0});
}

TEST(Transformation, FrameFromNormal) {
  Vector3 const o(5, 6, 7);
  struct Case {
    Vector3 normal, x, y;
  } const cases[] = {{{0, 0, 1}, {1, 0, 0}, {0, 1, 0}},
                     {{0, 0, -1}, {-1, 0, 0}, {0, 1, 0}},
                     {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}},
                     {{0, 1, 0}, {-1, 0, 0}, {0, 0, 1}},
                     {{0.6, 0, 0.8}, {0, 1, 0}, {-0.8, 0, 0.6}}};
  for (Case const& c : cases)
    expect_near(Transformation(o, c.normal), Transformation(c.x, c.y, c.normal, o));
  // The branch reads the normal as passed: |n.z| = 0.9999995 picks (n.z, 0, -n.x).
  double const c = Geom::PARALLEL_COSINE;
  EXPECT_NEAR(Transformation(o, Vector3(0, 1e-3, c)).x_axis.x, 1.0, 1e-6);
  EXPECT_NEAR(Transformation(o, Vector3(0, 1e-3, -c)).x_axis.x, -1.0, 1e-6);
  EXPECT_NEAR(Transformation(o, Vector3(0, 1e-3, down(c))).x_axis.x, -1.0, 1e-6);
  // A long normal takes the second branch even though its direction is far from z.
  EXPECT_NEAR(Transformation(o, Vector3(3, 0, 1)).x_axis.z, -3.0 / std::sqrt(10.0), 1e-15);
  EXPECT_NEAR(Transformation(o, Vector3(3, 0, 1)).z_axis.length(), 1.0, 1e-15);
}

// Right-handed: each builder agrees with Vector3::rotate, whose sense is pinned on its own.
TEST(Transformation, RotationBuildersAreRightHanded) {
  expect_near(
      Transformation(Vector3(1, 0, 0), Vector3::Z_AXIS, kPi / 2),
      Transformation(Vector3(0, 1, 0), Vector3(-1, 0, 0), Vector3(0, 0, 1), Vector3(0, -1, 0)));
  geom_test::Draw d(11, -4.0, 4.0);
  for (int i = 0; i < 100; ++i) {
    double const a = d();
    expect_near(Transformation::rotate(Vector3::X_AXIS, a), Transformation::rotatex(a), 1e-15);
    expect_near(Transformation::rotate(Vector3::Y_AXIS, a), Transformation::rotatey(a), 1e-15);
    expect_near(Transformation::rotate(Vector3::Z_AXIS, a), Transformation::rotatez(a), 1e-15);
    Vector3 const axis = d.vec().normalize();
    Vector3 const v = d.vec();
    Transformation const r = Transformation::rotate(axis, a);
    expect_near(r.rotate_vector(v), v.rotate(axis, a));
    expect_near(r.transform_vector(v), r.rotate_vector(v), 0.0);
    // About a point: that point goes to the coordinate origin.
    Transformation const about(v, axis, a);
    expect_near(about.transform_vector(v), Vector3());
    expect_near(about, r * Transformation(v.reverse()));
  }
  // The axis is not normalised: a length-2 axis scales what lies along it.
  expect_near(Transformation::rotate(Vector3(0, 0, 2), kPi / 2).rotate_vector(Vector3::Z_AXIS),
              Vector3(0, 0, 4));
}

TEST(Transformation, ProductsSumInIncreasingKAndApplyRightOperandFirst) {
  expect_near((Transformation::rotatez(kPi / 2) * Transformation(Vector3(1, 0, 0))).origin,
              Vector3(0, 1, 0));
  geom_test::Draw rng(1, -5.0, 5.0);
  for (int i = 0; i < 200; ++i) {
    Transformation const a = random_matrix(rng, true);
    Transformation const b = random_matrix(rng, true);
    double ref[16];  // element (r, c) summed over k in increasing order
    for (int c = 0; c < 4; ++c) {
      for (int r = 0; r < 4; ++r) {
        double s = a.data()[r] * b.data()[4 * c];
        for (int k = 1; k < 4; ++k) s += a.data()[4 * k + r] * b.data()[4 * c + k];
        ref[4 * c + r] = s;
      }
    }
    EXPECT_TRUE(same_bits(a * b, Transformation(ref)));
    Vector4 const v = a * b.origin;
    EXPECT_EQ(0, std::memcmp(&v, ref + 12, sizeof v));
    Transformation const fa = random_matrix(rng, false);
    Transformation const fb = random_matrix(rng, false);
    Vector3 const p = rng.vec();
    expect_near((fa * fb).transform_vector(p), fa.transform_vector(fb.transform_vector(p)), 1e-11);
  }
}

TEST(Transformation, WeightDividesPoints) {
  Transformation const t = with_weight(Transformation(Vector3(4, 4, 4)), 2.0);
  EXPECT_EQ(t.determinant(), 0.5);
  expect_near(t.transform_vector(Vector3()), Vector3(2, 2, 2), 0.0);
  expect_near(t.normal_origin(), Vector3(2, 2, 2), 0.0);
  expect_near(t.transform_vector2(Vector3(1, 1, 1)), Vector3(5, 5, 5), 0.0);
  // The axes' w play no part in point or direction application.
  Transformation u = t;
  u.x_axis.w = u.y_axis.w = u.z_axis.w = 7.0;
  expect_near(u.transform_vector(Vector3(1, 2, 3)), t.transform_vector(Vector3(1, 2, 3)), 0.0);
  expect_near(u.rotate_vector(Vector3(1, 2, 3)), Vector3(1, 2, 3), 0.0);

  // |w| = 1e-6 is unusable (points collapse to zero, origin undivided); just above divides.
  double const e = Geom::LENGTH_EPSILON;
  for (double w : {0.0, e, -e}) {
    Transformation const z = with_weight(t, w);
    EXPECT_EQ(z.determinant(), 0.0);
    expect_near(z.transform_vector(Vector3(3, 2, 1)), Vector3(), 0.0);
    expect_near(z.transform_vector2(Vector3(3, 2, 1)), Vector3(7, 6, 5), 0.0);
    expect_near(z.normal_origin(), Vector3(4, 4, 4), 0.0);
  }
  Transformation const a = with_weight(t, up(e));
  EXPECT_EQ(a.determinant(), 1.0 / up(e));
  EXPECT_EQ(a.normal_origin().x, 4.0 * (1.0 / up(e)));
  EXPECT_EQ(with_weight(t, -up(e)).transform_vector(Vector3()).y, 4.0 * (1.0 / -up(e)));
  Vector3 const v(1, 2, 3);
  expect_near(a.transform_vector(v, 1.0), a.transform_vector2(v), 0.0);
  expect_near(a.transform_vector(v, a.determinant()), a.transform_vector(v), 0.0);
}

TEST(Transformation, InverseIsTheFull4x4Inverse) {
  // Rotation, non-uniform scale and translation; odd draws also get a small w row and a
  // weight in [0.5, 2]. All comfortably invertible.
  geom_test::Draw d(9, -1.0, 1.0);
  auto s = [&d] { return d(0.5, 2.0); };
  for (int i = 0; i < 300; ++i) {
    bool const projective = i % 2 == 1;
    Transformation a =
        Transformation::rotate((d.vec() + Vector3::Z_AXIS * 2.0).normalize(), 3.0 * d());
    a.scale_axes_self(Vector3(s(), s(), s()));
    Vector3 const o = d.vec() * 5.0;
    a.origin = Vector4(o.x, o.y, o.z, projective ? s() : 1.0);
    if (projective) a.x_axis.w = 0.1 * d(), a.y_axis.w = 0.1 * d(), a.z_axis.w = 0.1 * d();
    expect_near(a * a.inverse(), Transformation(), 1e-12);
    expect_near(a.inverse() * a, Transformation(), 1e-12);
  }
  Transformation mirror(Vector3(3, 4, 5));
  mirror.x_axis.x = -1.0;
  expect_near(
      mirror.inverse(),
      Transformation(Vector3(-1, 0, 0), Vector3(0, 1, 0), Vector3(0, 0, 1), Vector3(3, -4, -5)),
      0.0);
}

TEST(Transformation, InverseOfSingularIsZero) {
  auto expect_zero = [](Transformation const& t) {
    for (int k = 0; k < 16; ++k) EXPECT_EQ(t.data()[k], 0.0) << "element " << k;
  };
  expect_zero(Transformation(Vector3(1, 2, 3), Vector3(1, 2, 3), Vector3(0, 0, 1)).inverse());
  expect_zero(Transformation().scale_axes(Vector3(0.005, 0.005, 0.005)).inverse());
  expect_near(Transformation().scale_axes(Vector3(0.02, 0.02, 0.02)).inverse(),
              Transformation().scale_axes(Vector3(50, 50, 50)), 1e-9);
  // The threshold is on the 4x4 determinant, strictly: det = 1e-6 exactly is singular.
  double const e = Geom::LENGTH_EPSILON;
  Transformation d;
  d.x_axis.x = e;
  expect_zero(d.inverse());
  d.x_axis.x = up(e);
  EXPECT_EQ(d.inverse().x_axis.x, 1.0 / up(e));
  d.x_axis.x = -up(e);
  EXPECT_EQ(d.inverse().x_axis.x, 1.0 / -up(e));
  expect_zero(with_weight(Transformation(), e).inverse());  // the weight takes part too
  // The w row is inverted, not ignored: a projective map with zero weight is invertible.
  Transformation p;
  p.z_axis.w = 1.0;
  p.origin = Vector4(0, 0, 1, 0);
  expect_near(p.inverse() * p, Transformation(), 0.0);
}

TEST(Transformation, AxisLengths) {
  Transformation t(Vector3(2, 0, 0), Vector3(0, 3, 0), Vector3(0, 0, 4), Vector3(4, 4, 4));
  expect_near(with_weight(t, 2.0).scale(), Vector3(1, 1.5, 2), 0.0);
  expect_near(with_weight(t, 0.0).scale(), Vector3(2, 3, 4), 0.0);
  expect_near(with_weight(t, Geom::LENGTH_EPSILON).scale(), Vector3(2, 3, 4), 0.0);
  EXPECT_EQ(with_weight(t, up(Geom::LENGTH_EPSILON)).scale().x, 2.0 * (1.0 / up(1e-6)));

  Transformation s = with_weight(t, 2.0);
  s.x_axis.w = 0.25;
  s.scale(Vector3(1, 1, -1));
  expect_elements(s, {1, 0, 0, 0.25, 0, 1, 0, 0, 0, 0, -1, 0, 2, 2, 2, 1});
  Transformation z = with_weight(t, 1e-7);
  z.y_axis.clear();
  z.scale(Vector3(5, 5, 5));
  expect_elements(z, {5, 0, 0, 0, 0, 0, 0, 0, 0, 0, 5, 0, 4, 4, 4, 1});
}

TEST(Transformation, NormalizeCopyMatchesInPlace) {
  geom_test::Draw rng(4, 0.0, 1.0);
  for (int i = 0; i < 100; ++i) {
    Transformation t = random_matrix(rng, true);
    if (i % 3 == 0) t.y_axis = Vector4(0, 0, 0, 0.5);  // a zero axis stays zero
    if (i % 5 == 0) t.origin.w = Geom::LENGTH_EPSILON;
    Transformation const copy = t.normalize();
    t.normalize_self();
    EXPECT_TRUE(same_bits(copy, t));
    EXPECT_EQ(t.x_axis.w, 0.0);
    EXPECT_EQ(t.y_axis.w, 0.0);
    EXPECT_EQ(t.origin.w, 1.0);
    EXPECT_NEAR(t.z_axis.length(), 1.0, 1e-15);
    if (i % 3 == 0) {
      EXPECT_EQ(t.y_axis.length(), 0.0);
    }
  }
  Transformation w(Vector3(2, 0, 0), Vector3(0, 3, 0), Vector3(0, 0, 4), Vector3(4, 4, 4));
  expect_near(with_weight(w, 2.0).normalize().origin, Vector3(2, 2, 2), 0.0);
  expect_near(with_weight(w, 1e-6).normalize().origin, Vector3(4, 4, 4), 0.0);
}

TEST(Transformation, ScaleAxesAndWeight) {
  Transformation const t(Vector4(1, 0, 0, 0.5), Vector4(0, 1, 0, 0.25), Vector4(0, 0, 1, 0.125),
                         Vector4(4, 4, 4, 2));
  Transformation in_place = t;
  in_place.scale_axes_self(Vector3(2, 3, 4));
  expect_elements(in_place, {2, 0, 0, 0.5, 0, 3, 0, 0.25, 0, 0, 4, 0.125, 4, 4, 4, 2});
  expect_elements(t.scale_axes(Vector3(2, 3, 4)), {2, 0, 0, 0, 0, 3, 0, 0, 0, 0, 4, 0, 4, 4, 4, 1});
  // An argument that is one of the object's own columns is read whole before any write.
  Transformation const f(Vector3(3, 4, 0), Vector3(0, 3, 0), Vector3(0, 0, 4), Vector3(1, 2, 5));
  Transformation a = f;
  a.scale_axes_self(a.x_axis);
  expect_elements(a, {9, 12, 0, 0, 0, 12, 0, 0, 0, 0, 0, 0, 1, 2, 5, 1});
  a = f;
  a.scale(a.x_axis);
  expect_near(a,
              Transformation(Vector3(1.8, 2.4, 0), Vector3(0, 4, 0), Vector3(), Vector3(1, 2, 5)));

  Transformation e = with_weight(t, 0.5);
  e.extract_w_factor();
  expect_elements(e, {2, 0, 0, 0.5, 0, 2, 0, 0.25, 0, 0, 2, 0.125, 8, 8, 8, 1});
  for (double w : {0.0, Geom::LENGTH_EPSILON, -Geom::LENGTH_EPSILON}) {
    Transformation n = with_weight(t, w);
    n.extract_w_factor();
    EXPECT_TRUE(same_bits(n, with_weight(t, w)));
  }
  // With zero axes' w, dividing out the weight keeps every mapped point.
  geom_test::Draw d(6, -3.0, 3.0);
  for (int i = 0; i < 100; ++i) {
    Transformation b = with_weight(random_matrix(d, false), d());
    Vector3 const p = d.vec();
    Vector3 const before = b.transform_vector(p);
    b.extract_w_factor();
    expect_near(b.transform_vector(p), before, 1e-9 * (1.0 + before.length()));
    expect_near(b.transform_vector2(p), b.transform_vector(p), 0.0);
  }
}

}  // namespace
