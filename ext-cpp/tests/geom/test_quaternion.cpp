#include <quillmark/geom/geom_quaternion.h>
#include "geom_test_support.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using Geom::Quaternion;
using Geom::Transformation;
using Geom::Vector3;

using geom_test::expect_near;
using geom_test::kPi;

void expect_near(Quaternion const& a, Quaternion const& b, double tol = 1e-12) {
  EXPECT_NEAR(a.w, b.w, tol);
  EXPECT_NEAR(a.x, b.x, tol);
  EXPECT_NEAR(a.y, b.y, tol);
  EXPECT_NEAR(a.z, b.z, tol);
}

Quaternion random_unit(geom_test::Draw& d) {
  return Quaternion(d.normal(), d.normal(), d.normal(), d.normal()).normalize();
}

TEST(Quaternion, ProductComposesFirstOperandFirst) {
  expect_near(Quaternion(1, 2, 3, 4) * Quaternion(5, 6, 7, 8), Quaternion(-60, 20, 14, 32), 0.0);
  expect_near(Quaternion(5, 6, 7, 8) * Quaternion(1, 2, 3, 4), Quaternion(-60, 12, 30, 24), 0.0);
  geom_test::Draw rng(31, 0.0, 1.0);
  for (int i = 0; i < 100; ++i) {
    Quaternion const a = random_unit(rng);
    Quaternion const b = random_unit(rng);
    expect_near(Transformation(a * b, Vector3()),
                Transformation(b, Vector3()) * Transformation(a, Vector3()), 1e-12);
    // Identity is neutral on both sides; the conjugate undoes a unit rotation.
    expect_near(a * Quaternion(), a, 0.0);
    expect_near(Quaternion() * a, a, 0.0);
    expect_near(a * a.inverse(), Quaternion(), 1e-15);
  }
}

TEST(Quaternion, AxisAngleMatchesRotationBuilder) {
  Quaternion const q(Vector3::Z_AXIS, kPi / 2);
  expect_near(q, Quaternion(std::sqrt(0.5), 0, 0, std::sqrt(0.5)), 1e-15);
  Transformation const m(q, Vector3(1, 2, 3));
  expect_near(
      m, Transformation(Vector3(0, 1, 0), Vector3(-1, 0, 0), Vector3(0, 0, 1), Vector3(1, 2, 3)));
  expect_near(Quaternion(m), q);
  // The quaternion path and the Rodrigues builder are independent formulas for the same rotation.
  geom_test::Draw d(41, -2 * kPi, 2 * kPi);
  for (int i = 0; i < 100; ++i) {
    Vector3 const axis = Vector3(d.normal(), d.normal(), d.normal()).normalize();
    double const a = d();
    expect_near(Transformation(Quaternion(axis, a), Vector3()), Transformation::rotate(axis, a),
                1e-14);
  }
  // A non-unit quaternion is not normalised into the matrix: (0, 2, 0, 0) gives
  // 1 − 2·(2·2) = −7 on the y and z diagonal. A non-unit axis passes into the vector part.
  Transformation const m2(Quaternion(0, 2, 0, 0), Vector3());
  EXPECT_EQ(m2.x_axis.x, 1.0);
  EXPECT_EQ(m2.y_axis.y, -7.0);
  EXPECT_EQ(m2.z_axis.z, -7.0);
  expect_near(Quaternion(Vector3(0, 0, 2), kPi), Quaternion(0, 0, 0, 2));
}

TEST(Quaternion, ConversionPicksTheLargestDiagonal) {
  // A third of a turn about (1, 1, 1): a cyclic permutation with trace exactly 0 and three
  // equal diagonal elements, so the largest-diagonal branch with ties resolved to x; the
  // all-zero block takes the same branch.
  expect_near(Quaternion(Transformation(Vector3(0, 1, 0), Vector3(0, 0, 1), Vector3(1, 0, 0))),
              Quaternion(0.5, 0.5, 0.5, 0.5), 0.0);
  Transformation zero;
  zero.clear();
  expect_near(Quaternion(zero), Quaternion(0, 0.5, 0, 0), 0.0);
  // Half turn about (0, 1, 1)/√2: diagonal (−1, 0, 0), y and z tied.
  Transformation const half_yz(Vector3(-1, 0, 0), Vector3(0, 0, 1), Vector3(0, 1, 0));
  expect_near(Quaternion(half_yz), Quaternion(0, 0, std::sqrt(0.5), std::sqrt(0.5)), 1e-15);
  // Translation and the w row play no part.
  Transformation shifted(Vector3(-1, 0, 0), Vector3(0, -1, 0), Vector3(0, 0, 1));
  shifted.origin = Geom::Vector4(5, 6, 7, 3);
  shifted.x_axis.w = 9;
  expect_near(Quaternion(shifted), Quaternion(0, 0, 0, 1), 0.0);
}

TEST(Quaternion, RoundTripThroughTransformationForEveryBranch) {
  geom_test::Draw rng(43, 2.2, kPi);
  int branch_hits[4] = {0, 0, 0, 0};
  for (int i = 0; i < 400; ++i) {
    Quaternion q = random_unit(rng);
    if (i % 2 == 1) {
      // Turns above 120 degrees about an axis dominated by one coordinate make the trace
      // negative and that coordinate's diagonal the largest.
      Vector3 axis = Vector3(rng.normal(), rng.normal(), rng.normal()) * 0.2;
      (i % 3 == 0 ? axis.x : i % 3 == 1 ? axis.y : axis.z) += 1.0;
      q = Quaternion(axis.normalize(), rng());
    }
    Transformation const m(q, Vector3(1, 2, 3));
    double const* e = m.data();
    ++branch_hits[e[0] + e[5] + e[10] > 0.0       ? 3
                  : e[0] >= e[5] && e[0] >= e[10] ? 0
                                                  : (e[5] >= e[10] ? 1 : 2)];
    // q and −q are the same rotation.
    Quaternion const back(m);
    expect_near(
        back,
        q.scale(back.w * q.w + back.x * q.x + back.y * q.y + back.z * q.z < 0.0 ? -1.0 : 1.0));
  }
  for (int hits : branch_hits) EXPECT_GT(hits, 20);
}

TEST(Quaternion, NormaliseZeroesTinyAndConjugateDoesNotDivide) {
  // A squared length of exactly 1e-12 is still "zero".
  expect_near(Quaternion(1e-7, 0, 0, 0).normalize(), Quaternion(0, 0, 0, 0), 0.0);
  expect_near(Quaternion(0, 1e-6, 0, 0).normalize(), Quaternion(0, 0, 0, 0), 0.0);
  expect_near(Quaternion(0, 2e-6, 0, 0).normalize(), Quaternion(0, 1, 0, 0));
  expect_near(Quaternion(0, 3, 0, 4).normalize(), Quaternion(0, 0.6, 0, 0.8));
  Quaternion q(2, 0, 0, 0);
  expect_near(q.inverse(), Quaternion(2, 0, 0, 0), 0.0);
  expect_near(Quaternion(1, 2, 3, 4).inverse(), Quaternion(1, -2, -3, -4), 0.0);
  EXPECT_NEAR(Quaternion(1, 2, 3, 4).length(), std::sqrt(30.0), 1e-12);
  q.normalize_self();
  expect_near(q, Quaternion(), 0.0);
  expect_near(Quaternion(1, 2, 3, 4) + Quaternion(1, 1, 1, 1) - Quaternion(0, 0, 0, 2),
              Quaternion(2, 3, 4, 3), 0.0);
}

}  // namespace
