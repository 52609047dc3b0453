#include <quillmark/geom/geom_vector4.h>

#include <gtest/gtest.h>

namespace {

using Geom::Vector3;
using Geom::Vector4;

void expect_same(Vector4 const& a, Vector4 const& b) {
  EXPECT_EQ(a.x, b.x);
  EXPECT_EQ(a.y, b.y);
  EXPECT_EQ(a.z, b.z);
  EXPECT_EQ(a.w, b.w);
}

// The binary operators include w; the compound scalar ones and the members inherited from
// Vector3 leave it alone.
TEST(Vector4, OperatorsAndWhereWTakesPart) {
  EXPECT_EQ(Vector4(2.0).w, 0.0);
  Vector4 const a(1.0, 2.0, 3.0, 4.0);
  Vector4 const b(8.0, 4.0, 2.0, 1.0);
  expect_same(a * 2.0, Vector4(2.0, 4.0, 6.0, 8.0));
  expect_same(2.0 * a, Vector4(2.0, 4.0, 6.0, 8.0));
  expect_same(Vector4(3.0, 6.0, 7.0, 9.0) / 3.0,
              Vector4(3.0 * (1.0 / 3.0), 6.0 * (1.0 / 3.0), 7.0 * (1.0 / 3.0), 9.0 * (1.0 / 3.0)));
  expect_same(a + b, Vector4(9.0, 6.0, 5.0, 5.0));
  expect_same(a - b, Vector4(-7.0, -2.0, 1.0, 3.0));
  Vector4 m = a;
  m *= 2.0;
  expect_same(m, Vector4(2.0, 4.0, 6.0, 4.0));
  m /= 4.0;
  expect_same(m, Vector4(0.5, 1.0, 1.5, 4.0));
  Vector4 p = a;
  p *= b;
  expect_same(p, Vector4(8.0, 8.0, 6.0, 4.0));
  p /= b;
  expect_same(p, a);
  p += b;
  p -= a;
  expect_same(p, b);
  p.clear();
  expect_same(p, Vector4());

  Vector4 u(3.0, 4.0, 0.0, 100.0);
  EXPECT_EQ(u.length(), 5.0);
  u.set_length(10.0);
  expect_same(u, Vector4(6.0, 8.0, 0.0, 100.0));
  EXPECT_EQ(u.dot(Vector4(1.0, 1.0, 1.0, 1000.0)), 14.0);
  u.scale_self(0.5).reverse_self();
  expect_same(u, Vector4(-3.0, -4.0, 0.0, 100.0));
  u = Vector3(7.0, 8.0, 9.0);
  expect_same(u, Vector4(7.0, 8.0, 9.0, 100.0));
}

}  // namespace
