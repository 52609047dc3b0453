// Every vector path against the single-value loop, bit for bit, with each path forced in
// turn; and the forcing itself (environment variable, fallback, report).
#include <quillmark/geom/detail/simd_dispatch.h>

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include <quillmark/geom/geom_bounding_box3.h>
#include <quillmark/geom/geom_transformation.h>

namespace {

using Geom::BoundingBox3;
using Geom::Transformation;
using Geom::Vector3;
using Geom::detail::SimdPath;

#if defined(__x86_64__)
constexpr SimdPath kPaths[] = {SimdPath::sse2, SimdPath::avx2, SimdPath::avx512};
#else
constexpr SimdPath kPaths[] = {SimdPath::scalar};
#endif

// Each test below runs once per path, with that path forced; a path this machine cannot run
// is skipped, saying so. Afterwards the choice is made afresh (from QUILLMARK_SIMD, as the
// process started).
class SimdPathTest : public ::testing::TestWithParam<SimdPath> {
 protected:
  void SetUp() override {
    if (!Geom::detail::simd_path_supported(GetParam())) {
      GTEST_SKIP() << "this machine cannot run the " << Geom::detail::simd_path_name(GetParam())
                   << " path";
    }
    ASSERT_EQ(Geom::detail::force_simd_path(GetParam()), GetParam());
  }
  void TearDown() override { Geom::detail::reset_simd_path(); }
};

// Mostly ordinary values, with the ones that break careless vector code mixed in: NaN of
// either sign, infinities, zeros of either sign, huge values whose products overflow,
// subnormals.
double awkward(std::mt19937_64& rng) {
  double const specials[] = {std::numeric_limits<double>::quiet_NaN(),
                             -std::numeric_limits<double>::quiet_NaN(),
                             std::numeric_limits<double>::infinity(),
                             -std::numeric_limits<double>::infinity(),
                             0.0,
                             -0.0,
                             1e300,
                             -3e307,
                             4.9e-324,
                             1.0};
  std::uint64_t const pick = rng() % 40;
  if (pick < sizeof specials / sizeof specials[0]) return specials[pick];
  return std::uniform_real_distribution<double>(-1e3, 1e3)(rng);
}

Vector3 awkward_vector(std::mt19937_64& rng) {
  double const x = awkward(rng);
  double const y = awkward(rng);
  return Vector3(x, y, awkward(rng));
}

// Equal bits, except that any NaN matches any NaN. When both operands of a + or * are NaN,
// x86 returns the first one, and a compiler may swap the operands of those commutative
// operations; the source therefore fixes that a result is NaN, but not its sign or payload.
bool same_bits(double const* a, double const* b, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    if (std::isnan(a[i]) && std::isnan(b[i])) continue;
    if (std::memcmp(a + i, b + i, sizeof(double)) != 0) return false;
  }
  return true;
}

// The first n points of each.
bool same_bits(std::vector<Vector3> const& a, std::vector<Vector3> const& b, std::size_t n) {
  return n == 0 || same_bits(&a[0].x, &b[0].x, 3 * n);
}

// A transformation of ordinary values, with a few awkward elements on some draws and an
// unusable weight (the points then collapse to zeros, or NaN) on others.
Transformation sample(std::mt19937_64& rng, int draw) {
  double m[16];
  for (double& e : m) e = std::uniform_real_distribution<double>(-4.0, 4.0)(rng);
  if (draw % 3 == 1) {
    for (int k = 0; k < 3; ++k) m[rng() % 16] = awkward(rng);
  }
  if (draw % 5 == 2) m[15] = 0.0;
  return Transformation(m);
}

struct PointBatch {
  char const* name;
  std::function<void(Transformation const&, Vector3 const*, Vector3*, std::size_t)> batch;
  std::function<Vector3(Transformation const&, Vector3 const&)> single;
};

std::vector<PointBatch> const& point_batches() {
  static std::vector<PointBatch> const batches = {
      {"transform_vectors",
       [](Transformation const& t, Vector3 const* in, Vector3* out, std::size_t n) {
         t.transform_vectors(in, out, n);
       },
       [](Transformation const& t, Vector3 const& v) { return t.transform_vector(v); }},
      {"transform_vectors with a factor",
       [](Transformation const& t, Vector3 const* in, Vector3* out, std::size_t n) {
         t.transform_vectors(in, out, n, -0.375);
       },
       [](Transformation const& t, Vector3 const& v) { return t.transform_vector(v, -0.375); }},
      {"transform_vectors2",
       [](Transformation const& t, Vector3 const* in, Vector3* out, std::size_t n) {
         t.transform_vectors2(in, out, n);
       },
       [](Transformation const& t, Vector3 const& v) { return t.transform_vector2(v); }},
      {"rotate_vectors",
       [](Transformation const& t, Vector3 const* in, Vector3* out, std::size_t n) {
         t.rotate_vectors(in, out, n);
       },
       [](Transformation const& t, Vector3 const& v) { return t.rotate_vector(v); }},
  };
  return batches;
}

// Every size up to 17 (all the remainders of 2, 4 and 8 points per step, and none) and a
// few longer runs.
std::vector<std::size_t> sizes() {
  std::vector<std::size_t> n;
  for (std::size_t i = 0; i <= 17; ++i) n.push_back(i);
  for (std::size_t i : {31, 64, 257}) n.push_back(i);
  return n;
}

TEST_P(SimdPathTest, PointBatchesMatchTheSingleValueLoop) {
  Vector3 const guard(1234.5, -6.0, 7e77);  // written after the last point: must survive
  std::mt19937_64 rng(20);
  for (int draw = 0; draw < 20; ++draw) {
    Transformation const t = sample(rng, draw);
    for (std::size_t n : sizes()) {
      std::vector<Vector3> in(n);
      for (Vector3& v : in) v = awkward_vector(rng);
      for (PointBatch const& b : point_batches()) {
        SCOPED_TRACE(std::string(b.name) + ", " + std::to_string(n) + " points, draw " +
                     std::to_string(draw));
        std::vector<Vector3> expected(n);
        for (std::size_t i = 0; i < n; ++i) expected[i] = b.single(t, in[i]);
        std::vector<Vector3> out(n + 1, guard);
        b.batch(t, in.data(), out.data(), n);
        EXPECT_TRUE(same_bits(out, expected, n));
        EXPECT_EQ(0, std::memcmp(&out[n], &guard, sizeof guard));
        std::vector<Vector3> in_place = in;
        b.batch(t, in_place.data(), in_place.data(), n);
        EXPECT_TRUE(same_bits(in_place, expected, n));
      }
    }
  }
}

TEST_P(SimdPathTest, BoxBatchMatchesAddingOneByOne) {
  double const nan = std::numeric_limits<double>::quiet_NaN();
  // Starting boxes: empty, ordinary, zero corners of either sign, a NaN corner.
  BoundingBox3 const starts[] = {BoundingBox3(),
                                 BoundingBox3(Vector3(-1, -2, -3), Vector3(1, 2, 3)),
                                 BoundingBox3(Vector3(0.0, -0.0, 0.0), Vector3(-0.0, 0.0, 5)),
                                 BoundingBox3(Vector3(nan, 0, 0), Vector3(1, -nan, 1))};
  std::mt19937_64 rng(7);
  for (BoundingBox3 const& start : starts) {
    for (std::size_t n : sizes()) {
      for (int draw = 0; draw < 8; ++draw) {
        // Odd draws put the points on one side of the x = 0 and y = 0 planes, with zeros
        // of either sign here and there: only the first zero to arrive may set min.x or
        // max.y, wherever it sits in the array.
        std::vector<Vector3> in(n);
        for (Vector3& v : in) {
          v = awkward_vector(rng);
          if (draw % 2 == 1) {
            double const zero = (rng() % 2 == 0) ? 0.0 : -0.0;
            v.x = (rng() % 4 == 0) ? zero : std::abs(v.x);
            v.y = (rng() % 4 == 0) ? zero : -std::abs(v.y);
          }
        }
        BoundingBox3 expected = start;
        for (Vector3 const& v : in) expected.add(v);
        BoundingBox3 got = start;
        got.add(in.data(), n);
        EXPECT_EQ(0, std::memcmp(&got, &expected, sizeof got)) << n << " points, draw " << draw;
      }
    }
  }
}

TEST_P(SimdPathTest, InverseAndProductMatchTheReferenceBitwise) {
  Geom::detail::GeomKernels const& k = Geom::detail::simd_kernels(GetParam());
  std::mt19937_64 rng(3);
  for (int draw = 0; draw < 2000; ++draw) {
    double a[16];
    double b[16];
    for (int e = 0; e < 16; ++e) {
      // Mostly ordinary matrices (whose inverses exercise the full arithmetic), some
      // with awkward elements, some singular by a zero row.
      a[e] = draw % 4 == 0 ? awkward(rng) : std::uniform_real_distribution<double>(-3, 3)(rng);
      b[e] = awkward(rng);
    }
    if (draw % 7 == 0) a[1] = a[5] = a[9] = a[13] = 0.0;
    double expected[16];
    Geom::detail::inverse_reference(a, expected);
    Transformation const inv = Transformation(a).inverse();
    EXPECT_TRUE(same_bits(inv.data(), expected, 16)) << "inverse, draw " << draw;
    Geom::detail::product_reference(a, b, expected);
    double product[16];
    k.product(a, b, product);
    EXPECT_TRUE(same_bits(product, expected, 16)) << "product, draw " << draw;
    Transformation const inline_product = Transformation(a) * Transformation(b);
    EXPECT_TRUE(same_bits(inline_product.data(), expected, 16)) << "operator*, draw " << draw;
  }
}

TEST(SimdPaths, ForcingFallsBackToWhatTheMachineHasAndSaysSo) {
  using Geom::detail::simd_path;
  using Geom::detail::simd_path_supported;
  SimdPath const best = Geom::detail::simd_best_path();
  EXPECT_TRUE(simd_path_supported(best));
#if defined(__x86_64__)
  // The compiler's own reading of the processor and the system, as a second opinion.
  EXPECT_EQ(best, __builtin_cpu_supports("avx512f") ? SimdPath::avx512
                  : __builtin_cpu_supports("avx2")  ? SimdPath::avx2
                                                    : SimdPath::sse2);
#endif
  for (SimdPath path : kPaths) {
    SimdPath const used = Geom::detail::force_simd_path(path);
    EXPECT_EQ(used, simd_path());
    // The request when the machine has it, else the widest path it has below the request.
    EXPECT_EQ(used, simd_path_supported(path) ? path : best);
    EXPECT_TRUE(simd_path_supported(used));
  }

  // The environment is read when the choice is made afresh; a name it does not know leaves
  // the machine's best. Restored at the end for the tests that follow.
  char const* const before = std::getenv("QUILLMARK_SIMD");
  std::string const saved = before != nullptr ? before : "";
  for (SimdPath path : kPaths) {
    ::setenv("QUILLMARK_SIMD", Geom::detail::simd_path_name(path), 1);
    Geom::detail::reset_simd_path();
    EXPECT_EQ(simd_path(), simd_path_supported(path) ? path : best)
        << Geom::detail::simd_path_name(path);
  }
  ::setenv("QUILLMARK_SIMD", "mmx", 1);
  Geom::detail::reset_simd_path();
  EXPECT_EQ(simd_path(), best);
  if (before != nullptr) {
    ::setenv("QUILLMARK_SIMD", saved.c_str(), 1);
  } else {
    ::unsetenv("QUILLMARK_SIMD");
  }
  Geom::detail::reset_simd_path();
}

// The choice is made lazily by whichever thread comes first; several at once must agree
// (and the thread sanitizer pass sees no race in it).
TEST(SimdPaths, FirstUseFromSeveralThreadsAgrees) {
  Geom::detail::reset_simd_path();
  Transformation const t = Transformation::rotatez(0.5) * Transformation(Vector3(1, 2, 3));
  SimdPath seen[4];
  Transformation inverses[4];
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      inverses[i] = t.inverse();
      seen[i] = Geom::detail::simd_path();
    });
  }
  for (std::thread& th : threads) th.join();
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(seen[i], Geom::detail::simd_path());
    EXPECT_EQ(0, std::memcmp(&inverses[i], &inverses[0], sizeof inverses[0]));
  }
}

INSTANTIATE_TEST_SUITE_P(Paths, SimdPathTest, ::testing::ValuesIn(kPaths),
                         [](::testing::TestParamInfo<SimdPath> const& info) {
                           return std::string(Geom::detail::simd_path_name(info.param));
                         });

}  // namespace
