#include <quillmark/geom/geom_color.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace {

using Geom::Color;

void expect_rgba(Color const& c, int r, int g, int b, int a) {
  EXPECT_EQ(c.r, r);
  EXPECT_EQ(c.g, g);
  EXPECT_EQ(c.b, b);
  EXPECT_EQ(c.a, a);
}

TEST(Color, TransitionTruncatesTowardThisColour) {
  Color const from(10, 20, 30, 40);
  Color const to(110, 20, 0, 255);
  expect_rgba(from.transition_to(to, 0.5), 60, 20, 15, 147);
  expect_rgba(from.transition_to(to, 0.0), 10, 20, 30, 40);
  expect_rgba(from.transition_to(to, 1.0), 110, 20, 0, 255);
  expect_rgba(Color(0, 255, 0, 0).transition_to(Color(255, 0, 0, 0), 0.5), 127, 128, 0, 0);
  expect_rgba(Color(0, 0, 0, 0).transition_to(Color(3, 0, 0, 0), 0.99), 2, 0, 0, 0);
  expect_rgba(Color(3, 0, 0, 0).transition_to(Color(0, 0, 0, 0), 0.99), 1, 0, 0, 0);
  // Outside [0, 1] the channel wraps. Steps beyond 32 bits and NaN are defined too (UBSan
  // checks the conversions).
  expect_rgba(Color(200, 0, 0, 0).transition_to(Color(100, 0, 0, 0), 3.0), 156, 0, 0, 0);
  expect_rgba(Color(10, 0, 0, 0).transition_to(Color(20, 0, 0, 0), -2.0), 246, 0, 0, 0);
  Color const far = Color(0, 255, 7, 7).transition_to(Color(255, 0, 7, 8), 1e300);
  EXPECT_EQ(far.r, 255);  // c + (2^31 - 1), low byte
  EXPECT_EQ(far.g, 255);  // c - 2^31, whose low byte is 0
  EXPECT_EQ(far.b, 7);  // d = 0: no step
  expect_rgba(Color(1, 2, 3, 4).transition_to(Color(9, 9, 9, 9), std::nan("")), 1, 2, 3, 4);
  EXPECT_EQ(Color(0, 0, 0, 0)
                .transition_to(Color(1, 0, 0, 0), -std::numeric_limits<double>::infinity())
                .r,
            0);
}

TEST(Color, TransitionStaysBetweenTheEndsForTInUnitRange) {
  std::mt19937 rng(3);
  std::uniform_int_distribution<int> byte(0, 255);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  for (int i = 0; i < 2000; ++i) {
    Color const a(byte(rng), byte(rng), byte(rng), byte(rng));
    Color const b(byte(rng), byte(rng), byte(rng), byte(rng));
    double const t = unit(rng);
    Color const c = a.transition_to(b, t);
    int const ca[4] = {a.r, a.g, a.b, a.a}, cb[4] = {b.r, b.g, b.b, b.a},
              cc[4] = {c.r, c.g, c.b, c.a};
    for (int k = 0; k < 4; ++k) {
      EXPECT_GE(cc[k], std::min(ca[k], cb[k]));
      EXPECT_LE(cc[k], std::max(ca[k], cb[k]));
      // Truncation: never further from this colour than the exact step.
      EXPECT_LE(std::abs(cc[k] - ca[k]), std::abs((cb[k] - ca[k]) * t) + 1e-9);
    }
  }
}

}  // namespace
