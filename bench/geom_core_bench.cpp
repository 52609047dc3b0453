// Geometry core beside Eigen and glm: the same operation on the same values, one binary.
// The point loops also run memcpy and a plain copy loop over the same bytes: those are the
// floor a bandwidth-bound transform can reach. They run from 10^3 to 10^7 points, so that
// the data sits in L1/L2, L2, L3 and memory in turn (bench/plot_scaling.py draws them).
// Rows of ours are labelled with the vector path they ran; rows ending in /sse2, /avx2 or
// /avx512 force that path (and are skipped on a machine without it).
#include <benchmark/benchmark.h>

#include <Eigen/Dense>
#include <Eigen/Geometry>
#include <glm/glm.hpp>
#include <glm/gtx/rotate_vector.hpp>

#include <cstring>
#include <random>
#include <vector>

#include <quillmark/geom/detail/simd_dispatch.h>
#include <quillmark/geom/geom_bounding_box3.h>
#include <quillmark/geom/geom_transformation.h>
#include <quillmark/geom/geom_vector3.h>

namespace {

using Geom::BoundingBox3;
using Geom::Transformation;
using Geom::Vector3;
using Geom::detail::SimdPath;

constexpr std::size_t kPoints = 1000000;
constexpr int64_t kScaleMin = 1000;  // the point loops' sizes: 10^3 .. 10^7
constexpr int64_t kScaleMax = 10000000;
constexpr std::size_t kSmall = 1024;  // vectors per iteration of the per-vector benchmarks

// A rotation, a non-uniform scale and a translation: every element non-trivial.
Transformation sample_transformation(double seed) {
  Transformation t = Transformation::rotate(Vector3(1.0, 2.0, 2.0) * (1.0 / 3.0), 0.3 + seed);
  t.scale_axes_self(Vector3(1.5, 0.75, 2.0 + seed));
  t.origin = Geom::Vector4(3.0, -1.0, 2.0 + seed, 1.0);
  return t;
}

Eigen::Matrix4d to_eigen(Transformation const& t) { return Eigen::Matrix4d(t.data()); }

glm::dmat4 to_glm(Transformation const& t) {
  glm::dmat4 m;
  for (int c = 0; c < 4; ++c) {
    for (int r = 0; r < 4; ++r) m[c][r] = t.data()[4 * c + r];  // both column-major
  }
  return m;
}

// n points, the same first points for every n.
std::vector<Vector3> random_points(std::size_t n) {
  std::mt19937 rng(1);
  std::uniform_real_distribution<double> d(-100.0, 100.0);
  std::vector<Vector3> v(n);
  for (Vector3& p : v) p = Vector3(d(rng), d(rng), d(rng));
  return v;
}

std::vector<Vector3> const& sample_points() {
  static std::vector<Vector3> const pts = random_points(kPoints);
  return pts;
}

template <class T>
std::vector<T> points_as(std::vector<Vector3> const& in) {
  std::vector<T> out(in.size());
  std::memcpy(static_cast<void*>(out.data()), in.data(), in.size() * sizeof(Vector3));
  return out;
}

template <class T>
std::vector<T> points_as() {
  return points_as<T>(sample_points());
}

// Runs a row with a vector path forced (-1: the one chosen at run time), labelled with the
// path it ran; a path this machine lacks is skipped.
template <class Body>
void on_path(benchmark::State& state, int path, Body body) {
  if (path >= 0) {
    if (!Geom::detail::simd_path_supported(static_cast<SimdPath>(path))) {
      state.SkipWithError("this machine lacks the path");
      return;
    }
    Geom::detail::force_simd_path(static_cast<SimdPath>(path));
  }
  state.SetLabel(Geom::detail::simd_path_name(Geom::detail::simd_path()));
  body();
  Geom::detail::reset_simd_path();
}

void set_point_counters(benchmark::State& state, std::size_t n) {
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * n));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * n * 2 * sizeof(Vector3)));
}

// Products and inverse: inputs escape every iteration so nothing is hoisted.

void Product_Geom(benchmark::State& state) {
  state.SetLabel(Geom::detail::simd_path_name(Geom::detail::simd_path()));
  Transformation a = sample_transformation(0.1);
  Transformation b = sample_transformation(0.2);
  for (auto _ : state) {
    benchmark::DoNotOptimize(a);
    benchmark::DoNotOptimize(b);
    Transformation c = a * b;
    benchmark::DoNotOptimize(c);
  }
}
// The product kernels behind an indirect call, as a dispatched operator* would run them.
void Product_GeomKernel(benchmark::State& state, int path) {
  on_path(state, path, [&state] {
    Transformation a = sample_transformation(0.1);
    Transformation b = sample_transformation(0.2);
    for (auto _ : state) {
      benchmark::DoNotOptimize(a);
      benchmark::DoNotOptimize(b);
      Transformation c;
      Geom::detail::simd_kernels().product(a.data(), b.data(), c.data());
      benchmark::DoNotOptimize(c);
    }
  });
}
void Product_Eigen(benchmark::State& state) {
  Eigen::Matrix4d a = to_eigen(sample_transformation(0.1));
  Eigen::Matrix4d b = to_eigen(sample_transformation(0.2));
  for (auto _ : state) {
    benchmark::DoNotOptimize(a);
    benchmark::DoNotOptimize(b);
    Eigen::Matrix4d c = a * b;
    benchmark::DoNotOptimize(c);
  }
}
void Product_glm(benchmark::State& state) {
  glm::dmat4 a = to_glm(sample_transformation(0.1));
  glm::dmat4 b = to_glm(sample_transformation(0.2));
  for (auto _ : state) {
    benchmark::DoNotOptimize(a);
    benchmark::DoNotOptimize(b);
    glm::dmat4 c = a * b;
    benchmark::DoNotOptimize(c);
  }
}

void Inverse_Geom(benchmark::State& state, int path) {
  on_path(state, path, [&state] {
    Transformation a = sample_transformation(0.1);
    for (auto _ : state) {
      benchmark::DoNotOptimize(a);
      Transformation c = a.inverse();
      benchmark::DoNotOptimize(c);
    }
  });
}
void Inverse_Eigen(benchmark::State& state) {
  Eigen::Matrix4d a = to_eigen(sample_transformation(0.1));
  for (auto _ : state) {
    benchmark::DoNotOptimize(a);
    Eigen::Matrix4d c = a.inverse();
    benchmark::DoNotOptimize(c);
  }
}
void Inverse_glm(benchmark::State& state) {
  glm::dmat4 a = to_glm(sample_transformation(0.1));
  for (auto _ : state) {
    benchmark::DoNotOptimize(a);
    glm::dmat4 c = glm::inverse(a);
    benchmark::DoNotOptimize(c);
  }
}

// Point loops over state.range(0) contiguous points (24 bytes in, 24 out each):
// out[i] = op(in[i]).
template <class Point, class Op>
void point_loop(benchmark::State& state, std::vector<Point> const& in, Op op) {
  std::size_t const n = in.size();
  // A copy, not out(n): Eigen's vectors do not initialise themselves, and an output first
  // touched inside the timed loop put its page faults into the first iteration (about
  // 0.1 s for 24 MB on this VM), the only one a 10^6-point row of Eigen then got.
  std::vector<Point> out(in);
  for (auto _ : state) {
    for (std::size_t i = 0; i < n; ++i) out[i] = op(in[i]);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  set_point_counters(state, n);
}

std::size_t points_in(benchmark::State const& state) {
  return static_cast<std::size_t>(state.range(0));
}

void TransformPoints_Geom(benchmark::State& state) {
  Transformation const t = sample_transformation(0.1);
  point_loop(state, random_points(points_in(state)),
             [&t](Vector3 const& p) { return t.transform_vector(p); });
}
// The batch form; batch(t, in, out, n) is the call.
template <class Batch>
void batch_loop(benchmark::State& state, int path, Batch batch) {
  on_path(state, path, [&] {
    Transformation const t = sample_transformation(0.1);
    std::vector<Vector3> const in = random_points(points_in(state));
    std::vector<Vector3> out(in.size());
    for (auto _ : state) {
      batch(t, in.data(), out.data(), in.size());
      benchmark::DoNotOptimize(out.data());
      benchmark::ClobberMemory();
    }
    set_point_counters(state, in.size());
  });
}
void TransformPoints_GeomBatch(benchmark::State& state, int path) {
  batch_loop(state, path,
             [](Transformation const& t, Vector3 const* in, Vector3* out, std::size_t n) {
               t.transform_vectors(in, out, n);
             });
}
void TransformPoints_Eigen(benchmark::State& state) {
  Eigen::Affine3d const t(to_eigen(sample_transformation(0.1)));
  point_loop(state, points_as<Eigen::Vector3d>(random_points(points_in(state))),
             [&t](Eigen::Vector3d const& p) -> Eigen::Vector3d { return t * p; });
}
void TransformPoints_glm(benchmark::State& state) {
  glm::dmat4 const t = to_glm(sample_transformation(0.1));
  point_loop(state, points_as<glm::dvec3>(random_points(points_in(state))),
             [&t](glm::dvec3 const& p) { return glm::dvec3(t * glm::dvec4(p, 1.0)); });
}

void RotatePoints_Geom(benchmark::State& state) {
  Transformation const t = sample_transformation(0.1);
  point_loop(state, random_points(points_in(state)),
             [&t](Vector3 const& p) { return t.rotate_vector(p); });
}
void RotatePoints_GeomBatch(benchmark::State& state, int path) {
  batch_loop(state, path,
             [](Transformation const& t, Vector3 const* in, Vector3* out, std::size_t n) {
               t.rotate_vectors(in, out, n);
             });
}
void RotatePoints_Eigen(benchmark::State& state) {
  Eigen::Matrix3d const r = to_eigen(sample_transformation(0.1)).topLeftCorner<3, 3>();
  point_loop(state, points_as<Eigen::Vector3d>(random_points(points_in(state))),
             [&r](Eigen::Vector3d const& p) -> Eigen::Vector3d { return r * p; });
}
void RotatePoints_glm(benchmark::State& state) {
  glm::dmat3 const r(to_glm(sample_transformation(0.1)));
  point_loop(state, points_as<glm::dvec3>(random_points(points_in(state))),
             [&r](glm::dvec3 const& p) { return r * p; });
}

void CopyPoints_memcpy(benchmark::State& state) {
  std::vector<Vector3> const in = random_points(points_in(state));
  std::vector<Vector3> out(in.size());
  for (auto _ : state) {
    std::memcpy(static_cast<void*>(out.data()), in.data(), in.size() * sizeof(Vector3));
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  set_point_counters(state, in.size());
}

// Kept a loop: without the attribute g++ recognises the pattern and calls memcpy, whose
// cache-bypassing stores are not what a transform loop's stores do.
__attribute__((optimize("no-tree-loop-distribute-patterns"))) void copy_loop(
    double* __restrict dst, double const* __restrict src, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) dst[i] = src[i];
}

void CopyPoints_loop(benchmark::State& state) {
  std::vector<Vector3> const in = random_points(points_in(state));
  std::vector<Vector3> out(in.size());
  for (auto _ : state) {
    copy_loop(&out[0].x, &in[0].x, 3 * in.size());
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  set_point_counters(state, in.size());
}

// Per-vector operations over 1024 vectors: out[i] = op(in[i], i).
template <class Point, class Op>
void small_loop(benchmark::State& state, std::vector<Point> in, Op op) {
  in.resize(kSmall);
  std::vector<Point> out(kSmall);
  for (auto _ : state) {
    for (std::size_t i = 0; i < kSmall; ++i) out[i] = op(in[i], i);
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kSmall));
}

void Normalize_Geom(benchmark::State& state) {
  small_loop(state, sample_points(), [](Vector3 const& v, std::size_t) { return v.normalize(); });
}
void Normalize_Eigen(benchmark::State& state) {
  small_loop(
      state, points_as<Eigen::Vector3d>(),
      [](Eigen::Vector3d const& v, std::size_t) -> Eigen::Vector3d { return v.normalized(); });
}
void Normalize_glm(benchmark::State& state) {
  small_loop(state, points_as<glm::dvec3>(),
             [](glm::dvec3 const& v, std::size_t) { return glm::normalize(v); });
}

// Rotation about a unit axis by an angle that changes per vector (sin and cos each time).
void RotateAxisAngle_Geom(benchmark::State& state) {
  Vector3 const axis = Vector3(1.0, 2.0, 2.0) * (1.0 / 3.0);
  small_loop(state, sample_points(), [&axis](Vector3 const& v, std::size_t i) {
    return v.rotate(axis, 0.001 * double(i));
  });
}
void RotateAxisAngle_Eigen(benchmark::State& state) {
  Eigen::Vector3d const axis = Eigen::Vector3d(1.0, 2.0, 2.0) * (1.0 / 3.0);
  small_loop(state, points_as<Eigen::Vector3d>(),
             [&axis](Eigen::Vector3d const& v, std::size_t i) -> Eigen::Vector3d {
               return Eigen::AngleAxisd(0.001 * double(i), axis) * v;
             });
}
void RotateAxisAngle_glm(benchmark::State& state) {
  glm::dvec3 const axis = glm::dvec3(1.0, 2.0, 2.0) * (1.0 / 3.0);
  small_loop(state, points_as<glm::dvec3>(), [&axis](glm::dvec3 const& v, std::size_t i) {
    return glm::rotate(v, 0.001 * double(i), axis);
  });
}

// Box growth over 1,000,000 points.

void BoxAdd_Geom(benchmark::State& state) {
  std::vector<Vector3> const& in = sample_points();
  for (auto _ : state) {
    BoundingBox3 b;
    for (Vector3 const& p : in) b.add(p);
    benchmark::DoNotOptimize(b);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kPoints));
}
void BoxAdd_GeomBatch(benchmark::State& state, int path) {
  on_path(state, path, [&state] {
    std::vector<Vector3> const& in = sample_points();
    for (auto _ : state) {
      BoundingBox3 b;
      b.add(in.data(), in.size());
      benchmark::DoNotOptimize(b);
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kPoints));
  });
}
void BoxAdd_Eigen(benchmark::State& state) {
  std::vector<Eigen::Vector3d> const in = points_as<Eigen::Vector3d>();
  for (auto _ : state) {
    Eigen::AlignedBox3d b;
    for (Eigen::Vector3d const& p : in) b.extend(p);
    benchmark::DoNotOptimize(b);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kPoints));
}
void BoxAdd_glm(benchmark::State& state) {
  std::vector<glm::dvec3> const in = points_as<glm::dvec3>();
  for (auto _ : state) {
    glm::dvec3 lo(1e15);
    glm::dvec3 hi(-1e15);
    for (glm::dvec3 const& p : in) {
      lo = glm::min(lo, p);
      hi = glm::max(hi, p);
    }
    benchmark::DoNotOptimize(lo);
    benchmark::DoNotOptimize(hi);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kPoints));
}

// Ray against box (no peer has the same strict face test): 1024 rays from outside the box,
// about half of them hitting. max_angle < 0 runs the plain test.
void box_rays(benchmark::State& state, double max_angle) {
  BoundingBox3 const box(Vector3(-10.0, -10.0, -10.0), Vector3(10.0, 10.0, 10.0));
  std::vector<Vector3> const& pts = sample_points();
  std::size_t hits = 0;
  for (auto _ : state) {
    for (std::size_t i = 0; i < kSmall; ++i) {
      Vector3 const origin = pts[i] * 0.5 + Vector3(20.0, 0.0, 0.0);
      hits += max_angle < 0.0 ? box.intersects_ray(origin, pts[i + kSmall])
                              : box.intersects_ray(origin, pts[i + kSmall], max_angle);
    }
    benchmark::DoNotOptimize(hits);
  }
  state.SetItemsProcessed(static_cast<int64_t>(state.iterations() * kSmall));
}
void BoxRay_Geom(benchmark::State& state) { box_rays(state, -1.0); }
void BoxRayAngle_Geom(benchmark::State& state) { box_rays(state, 0.1); }

}  // namespace

// The vector paths, as BENCHMARK_CAPTURE arguments: each forced, and (QM_ON_PATHS) the one
// chosen at run time, -1.
#define QM_FORCED_PATHS(func, ...)                                             \
  BENCHMARK_CAPTURE(func, sse2, static_cast<int>(SimdPath::sse2)) __VA_ARGS__; \
  BENCHMARK_CAPTURE(func, avx2, static_cast<int>(SimdPath::avx2)) __VA_ARGS__; \
  BENCHMARK_CAPTURE(func, avx512, static_cast<int>(SimdPath::avx512)) __VA_ARGS__
#define QM_ON_PATHS(func, ...)                         \
  BENCHMARK_CAPTURE(func, dispatched, -1) __VA_ARGS__; \
  QM_FORCED_PATHS(func, __VA_ARGS__)

BENCHMARK(Product_Geom);
QM_ON_PATHS(Product_GeomKernel, ->Unit(benchmark::kNanosecond));
BENCHMARK(Product_Eigen);
BENCHMARK(Product_glm);
QM_ON_PATHS(Inverse_Geom, ->Unit(benchmark::kNanosecond));
BENCHMARK(Inverse_Eigen);
BENCHMARK(Inverse_glm);
// The scaling curves: every size for ours (per point and batch), the peers and the floors.
#define QM_SCALING ->RangeMultiplier(10)->Range(kScaleMin, kScaleMax)->Unit(benchmark::kMicrosecond)
BENCHMARK(TransformPoints_Geom) QM_SCALING;
BENCHMARK_CAPTURE(TransformPoints_GeomBatch, dispatched, -1) QM_SCALING;
BENCHMARK(TransformPoints_Eigen) QM_SCALING;
BENCHMARK(TransformPoints_glm) QM_SCALING;
BENCHMARK(RotatePoints_Geom) QM_SCALING;
BENCHMARK_CAPTURE(RotatePoints_GeomBatch, dispatched, -1) QM_SCALING;
BENCHMARK(RotatePoints_Eigen) QM_SCALING;
BENCHMARK(RotatePoints_glm) QM_SCALING;
BENCHMARK(CopyPoints_memcpy) QM_SCALING;
BENCHMARK(CopyPoints_loop) QM_SCALING;
// Each path of the batch forms, forced, over the same sizes.
QM_FORCED_PATHS(TransformPoints_GeomBatch, QM_SCALING);
QM_FORCED_PATHS(RotatePoints_GeomBatch, QM_SCALING);
BENCHMARK(Normalize_Geom)->Unit(benchmark::kMicrosecond);
BENCHMARK(Normalize_Eigen)->Unit(benchmark::kMicrosecond);
BENCHMARK(Normalize_glm)->Unit(benchmark::kMicrosecond);
BENCHMARK(RotateAxisAngle_Geom)->Unit(benchmark::kMicrosecond);
BENCHMARK(RotateAxisAngle_Eigen)->Unit(benchmark::kMicrosecond);
BENCHMARK(RotateAxisAngle_glm)->Unit(benchmark::kMicrosecond);
BENCHMARK(BoxAdd_Geom)->Unit(benchmark::kMillisecond);
QM_ON_PATHS(BoxAdd_GeomBatch, ->Unit(benchmark::kMillisecond));
BENCHMARK(BoxAdd_Eigen)->Unit(benchmark::kMillisecond);
BENCHMARK(BoxAdd_glm)->Unit(benchmark::kMillisecond);
BENCHMARK(BoxRay_Geom)->Unit(benchmark::kMicrosecond);
BENCHMARK(BoxRayAngle_Geom)->Unit(benchmark::kMicrosecond);
