// Quaternion conversions, frame interpolation, inv_sqrt, the 2-D segment test and the turned
// planar box, each beside a peer (Eigen, glm) or a plain scalar floor, in the same run.
// Every benchmark walks a fixed table of 1024 random inputs so that nothing folds to a
// constant; the rates are per call.

#include <benchmark/benchmark.h>

#include <Eigen/Geometry>
#include <glm/gtc/quaternion.hpp>

#include <algorithm>
#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include <quillmark/geom/geom_aligned_bounding_box2.h>
#include <quillmark/geom/geom_quaternion.h>
#include <quillmark/geom/geom_queries.h>
#include <quillmark/geom/geom_transformation.h>

namespace {

using Geom::AlignedBoundingBox2;
using Geom::Quaternion;
using Geom::Transformation;
using Geom::Vector2;
using Geom::Vector3;

constexpr std::size_t kTable = 1024;
constexpr double kPi = 3.14159265358979323846;

// Calls call(i) once per iteration for i cycling through the table, keeping each result.
template <typename Call>
void each_input(benchmark::State& state, Call call) {
  std::size_t i = 0;
  for (auto _ : state) {
    auto result = call(i);
    benchmark::DoNotOptimize(result);
    i = (i + 1) % kTable;
  }
  state.SetItemsProcessed(state.iterations());
}

std::vector<Quaternion> unit_quaternions() {
  std::mt19937_64 rng(1);
  std::normal_distribution<double> n(0.0, 1.0);
  std::vector<Quaternion> out;
  for (std::size_t i = 0; i < kTable; ++i) {
    out.push_back(Quaternion(n(rng), n(rng), n(rng), n(rng)).normalize());
  }
  return out;
}

std::vector<Transformation> rotations() {
  std::vector<Transformation> out;
  for (Quaternion const& q : unit_quaternions()) {
    out.emplace_back(q, Vector3(1, 2, 3));
  }
  return out;
}

// Quaternion from a rotation matrix

void QuaternionFromTransformation_Geom(benchmark::State& state) {
  std::vector<Transformation> const in = rotations();
  each_input(state, [&](std::size_t i) { return Quaternion(in[i]); });
}
BENCHMARK(QuaternionFromTransformation_Geom);

void QuaternionFromTransformation_Eigen(benchmark::State& state) {
  std::vector<Eigen::Matrix4d> in;
  for (Transformation const& t : rotations())
    in.emplace_back(Eigen::Map<const Eigen::Matrix4d>(t.data()));
  each_input(state, [&](std::size_t i) {
    return Eigen::Quaterniond(Eigen::Matrix3d(in[i].topLeftCorner<3, 3>()));
  });
}
BENCHMARK(QuaternionFromTransformation_Eigen);

void QuaternionFromTransformation_glm(benchmark::State& state) {
  std::vector<glm::dmat4> in;
  for (Transformation const& t : rotations()) {
    glm::dmat4 m;
    std::copy(t.data(), t.data() + 16, &m[0][0]);
    in.push_back(m);
  }
  each_input(state, [&](std::size_t i) { return glm::quat_cast(in[i]); });
}
BENCHMARK(QuaternionFromTransformation_glm);

// Rotation matrix (with translation) from a quaternion

void TransformationFromQuaternion_Geom(benchmark::State& state) {
  std::vector<Quaternion> const in = unit_quaternions();
  Vector3 const position(1, 2, 3);
  each_input(state, [&](std::size_t i) { return Transformation(in[i], position); });
}
BENCHMARK(TransformationFromQuaternion_Geom);

void TransformationFromQuaternion_Eigen(benchmark::State& state) {
  std::vector<Eigen::Quaterniond> in;
  for (Quaternion const& q : unit_quaternions()) in.emplace_back(q.w, q.x, q.y, q.z);
  Eigen::Vector3d const position(1, 2, 3);
  each_input(state, [&](std::size_t i) {
    // The same 16 doubles as ours: rotation block, translation, last row (0, 0, 0, 1).
    Eigen::Matrix4d m;
    m.topLeftCorner<3, 3>() = in[i].toRotationMatrix();
    m.topRightCorner<3, 1>() = position;
    m.row(3) << 0, 0, 0, 1;
    return m;
  });
}
BENCHMARK(TransformationFromQuaternion_Eigen);

void TransformationFromQuaternion_glm(benchmark::State& state) {
  std::vector<glm::dquat> in;
  for (Quaternion const& q : unit_quaternions()) in.emplace_back(q.w, q.x, q.y, q.z);
  glm::dvec3 const position(1, 2, 3);
  each_input(state, [&](std::size_t i) {
    glm::dmat4 m = glm::mat4_cast(in[i]);
    m[3] = glm::dvec4(position, 1.0);
    return m;
  });
}
BENCHMARK(TransformationFromQuaternion_glm);

// Frame interpolation

std::vector<Transformation> scaled_frames(std::uint64_t seed) {
  std::mt19937_64 rng(seed);
  std::uniform_real_distribution<double> len(0.5, 3.0);
  std::vector<Transformation> out = rotations();
  std::shuffle(out.begin(), out.end(), rng);
  for (Transformation& t : out) {
    double const xy = len(rng);
    t.scale_axes_self(Vector3(xy, xy, len(rng)));
  }
  return out;
}

void UniformTransition_Geom(benchmark::State& state) {
  std::vector<Transformation> const a = scaled_frames(2);
  std::vector<Transformation> const b = scaled_frames(3);
  each_input(state, [&](std::size_t i) { return a[i].uniform_transition_to(b[i], 0.3); });
}
BENCHMARK(UniformTransition_Geom);

// The same algorithm on bare doubles, written the obvious way and inlined: a textbook
// cofactor inverse, Rodrigues rotations with std::sin and std::cos, the same guards. The
// floor for our row; the setup checks that it computes the same frames (within 1e-9).
namespace plain {

struct V {
  double x, y, z;
};
inline V operator+(V a, V b) { return {a.x + b.x, a.y + b.y, a.z + b.z}; }
inline V operator-(V a, V b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
inline V operator*(V a, double s) { return {a.x * s, a.y * s, a.z * s}; }
inline double dot(V a, V b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
inline V cross(V a, V b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
inline double length(V a) { return std::sqrt(dot(a, a)); }
inline V sized(V a, double len) { return dot(a, a) > 1e-12 ? a * (len / length(a)) : a; }
inline V rotate(V v, V k, double angle) {
  double const s = std::sin(angle);
  double const c = std::cos(angle);
  return v * c + cross(k, v) * s + k * (dot(k, v) * (1.0 - c));
}
inline double clamp1(double c) { return std::min(std::max(c, -1.0), 1.0); }
inline V column(double const* m, int c) { return {m[4 * c], m[4 * c + 1], m[4 * c + 2]}; }

// The upper 3x3 block of the 4x4 inverse: cofactors over 3x3 minors, det by the first column.
inline void inverse3(double const* m, V rows[3]) {
  auto at = [m](int r, int c) { return m[4 * c + r]; };
  auto cofactor = [&at](int r, int c) {
    int rr[3], cc[3];
    for (int i = 0, a = 0, b = 0; i < 4; ++i) {
      if (i != r) rr[a++] = i;
      if (i != c) cc[b++] = i;
    }
    double const d =
        at(rr[0], cc[0]) *
            (at(rr[1], cc[1]) * at(rr[2], cc[2]) - at(rr[1], cc[2]) * at(rr[2], cc[1])) -
        at(rr[0], cc[1]) *
            (at(rr[1], cc[0]) * at(rr[2], cc[2]) - at(rr[1], cc[2]) * at(rr[2], cc[0])) +
        at(rr[0], cc[2]) *
            (at(rr[1], cc[0]) * at(rr[2], cc[1]) - at(rr[1], cc[1]) * at(rr[2], cc[0]));
    return ((r + c) % 2 == 0) ? d : -d;
  };
  double det = 0.0;
  for (int r = 0; r < 4; ++r) det += at(r, 0) * cofactor(r, 0);
  double const g = std::abs(det) > 1e-6 ? 1.0 / det : 0.0;
  for (int r = 0; r < 3; ++r)  // inverse (r, c) = cofactor (c, r) / det
    rows[r] = {cofactor(0, r) * g, cofactor(1, r) * g, cofactor(2, r) * g};
}

inline void transition(double const* a, double const* b, double t, double* out) {
  V inv[3];
  inverse3(b, inv);
  double const ka = std::abs(a[15]) > 1e-6 ? 1.0 / a[15] : 1.0;
  double const kb = std::abs(b[15]) > 1e-6 ? 1.0 / b[15] : 1.0;
  V const sa{length(column(a, 0)) * ka, length(column(a, 1)) * ka, length(column(a, 2)) * ka};
  V const sb{length(column(b, 0)) * kb, length(column(b, 1)) * kb, length(column(b, 2)) * kb};
  V const oa = std::abs(a[15]) > 1e-6 ? column(a, 3) * (1.0 / a[15]) : column(a, 3);
  V const ob = std::abs(b[15]) > 1e-6 ? column(b, 3) * (1.0 / b[15]) : column(b, 3);
  V const xa = column(a, 0);
  V const za = std::abs(sa.z) > 1e-6 ? column(a, 2) * (1.0 / sa.z) : column(a, 2);
  V const zb = std::abs(sb.z) > 1e-6 ? column(b, 2) * (1.0 / sb.z) : column(b, 2);
  double const d = dot(za, zb);
  V const k = sized(std::abs(d) < 0.9999995 ? cross(za, zb) : xa, 1.0);
  double const theta = std::acos(clamp1(d));
  V const swung = rotate(xa, k, theta);
  double const rx = dot(inv[0], swung) / sb.x;
  double const ry = dot(inv[1], swung) / sb.y;
  double const len = std::sqrt(rx * rx + ry * ry);
  double phi = len > 1e-6 ? std::acos(clamp1(rx / len)) : 0.0;
  if (ry < 0.0) phi = -phi;
  V const zt = rotate(za, k, theta * t);
  V const xt = rotate(rotate(xa, k, theta * t), zt, -(phi * t));
  V const yt = cross(zt, xt);
  V const st = sa + (sb - sa) * t;
  V const o = oa + (ob - oa) * t;
  V const cols[4] = {sized(xt, st.x), sized(yt, st.y), sized(zt, st.z), o};
  for (int c = 0; c < 4; ++c) {
    out[4 * c] = cols[c].x;
    out[4 * c + 1] = cols[c].y;
    out[4 * c + 2] = cols[c].z;
    out[4 * c + 3] = c == 3 ? 1.0 : 0.0;
  }
}

}  // namespace plain

void UniformTransition_PlainFloor(benchmark::State& state) {
  std::vector<Transformation> const a = scaled_frames(2);
  std::vector<Transformation> const b = scaled_frames(3);
  for (std::size_t i = 0; i < kTable; ++i) {
    Transformation floor;
    plain::transition(a[i].data(), b[i].data(), 0.3, floor.data());
    Transformation const ours = a[i].uniform_transition_to(b[i], 0.3);
    for (int e = 0; e < 16; ++e) {
      if (!(std::abs(floor.data()[e] - ours.data()[e]) <= 1e-9)) {
        state.SkipWithError("the floor computes other frames than uniform_transition_to");
        return;
      }
    }
  }
  each_input(state, [&](std::size_t i) {
    Transformation r;
    plain::transition(a[i].data(), b[i].data(), 0.3, r.data());
    return r;
  });
}
BENCHMARK(UniformTransition_PlainFloor);

// The usual alternative: decompose both frames into rotation, scale and translation once
// per call, slerp the rotations, lerp the rest, and compose. A different algorithm with
// the same job, so a peer rather than a floor.
void UniformTransition_EigenSlerp(benchmark::State& state) {
  struct Frame {
    Eigen::Matrix3d linear;
    Eigen::Vector3d origin;
  };
  std::vector<Frame> a;
  std::vector<Frame> b;
  for (auto* pair : {&a, &b}) {
    for (Transformation const& t : scaled_frames(pair == &a ? 2 : 3)) {
      Eigen::Map<const Eigen::Matrix4d> m(t.data());
      pair->push_back(Frame{m.topLeftCorner<3, 3>(), m.topRightCorner<3, 1>()});
    }
  }
  each_input(state, [&](std::size_t i) {
    double const t = 0.3;
    Eigen::Vector3d const sa = a[i].linear.colwise().norm();
    Eigen::Vector3d const sb = b[i].linear.colwise().norm();
    Eigen::Quaterniond const qa(Eigen::Matrix3d(a[i].linear * sa.cwiseInverse().asDiagonal()));
    Eigen::Quaterniond const qb(Eigen::Matrix3d(b[i].linear * sb.cwiseInverse().asDiagonal()));
    Eigen::Matrix4d m = Eigen::Matrix4d::Identity();
    m.topLeftCorner<3, 3>() =
        qa.slerp(t, qb).toRotationMatrix() * (sa + (sb - sa) * t).asDiagonal();
    m.topRightCorner<3, 1>() = a[i].origin + (b[i].origin - a[i].origin) * t;
    return m;
  });
}
BENCHMARK(UniformTransition_EigenSlerp);

// inv_sqrt

template <typename T>
std::vector<T> positive_inputs() {
  std::mt19937_64 rng(4);
  std::uniform_real_distribution<double> exponent(-20.0, 20.0);
  std::vector<T> out;
  for (std::size_t i = 0; i < kTable; ++i)
    out.push_back(static_cast<T>(std::pow(10.0, exponent(rng))));
  return out;
}

// The largest relative error against a double-precision 1/√x over a log-uniform sweep of
// 100000 inputs from 1e-30 to 1e30, reported as a counter beside the speed.
template <typename T, typename F>
double max_relative_error(F f) {
  double worst = 0.0;
  for (int i = 0; i <= 100000; ++i) {
    double const x = std::pow(10.0, -30.0 + 60.0 * i / 100000.0);
    T const xt = static_cast<T>(x);
    double const exact = 1.0 / std::sqrt(static_cast<double>(xt));
    worst = std::max(worst, std::fabs(static_cast<double>(f(xt)) - exact) / exact);
  }
  return worst;
}

template <typename T, typename F>
void run_inv_sqrt(benchmark::State& state, F f) {
  std::vector<T> const in = positive_inputs<T>();
  each_input(state, [&](std::size_t i) { return f(in[i]); });
  state.counters["max_rel_err"] = max_relative_error<T>(f);
}

void InvSqrt_double_Geom(benchmark::State& state) {
  run_inv_sqrt<double>(state, [](double x) { return Geom::inv_sqrt(x); });
}
BENCHMARK(InvSqrt_double_Geom);

void InvSqrt_double_StdSqrt(benchmark::State& state) {
  run_inv_sqrt<double>(state, [](double x) { return 1.0 / std::sqrt(x); });
}
BENCHMARK(InvSqrt_double_StdSqrt);

void InvSqrt_float_Geom(benchmark::State& state) {
  run_inv_sqrt<float>(state, [](float x) { return Geom::inv_sqrt(x); });
}
BENCHMARK(InvSqrt_float_Geom);

void InvSqrt_float_StdSqrt(benchmark::State& state) {
  run_inv_sqrt<float>(state, [](float x) { return 1.0f / std::sqrt(x); });
}
BENCHMARK(InvSqrt_float_StdSqrt);

// 2-D segment intersection

struct SegmentPair {
  Vector2 a, b, c, d;
};

std::vector<SegmentPair> segment_pairs() {
  std::mt19937_64 rng(5);
  std::uniform_real_distribution<double> coord(-5.0, 5.0);
  std::vector<SegmentPair> out;
  for (std::size_t i = 0; i < kTable; ++i) {
    out.push_back({Vector2(coord(rng), coord(rng)), Vector2(coord(rng), coord(rng)),
                   Vector2(coord(rng), coord(rng)), Vector2(coord(rng), coord(rng))});
  }
  return out;
}

void SegmentSegment_Geom(benchmark::State& state) {
  std::vector<SegmentPair> const in = segment_pairs();
  each_input(state, [&](std::size_t i) {
    Vector2 out;
    bool const hit = Geom::intersect_segment_segment(in[i].a, in[i].b, in[i].c, in[i].d, out);
    return std::make_pair(hit, out);
  });
}
BENCHMARK(SegmentSegment_Geom);

// The same formula on bare doubles, inlined into the loop: the floor for our row.
void SegmentSegment_ScalarFloor(benchmark::State& state) {
  std::vector<SegmentPair> const in = segment_pairs();
  each_input(state, [&](std::size_t i) {
    SegmentPair const& p = in[i];
    double ox = 0.0, oy = 0.0;
    double const rx = p.b.x - p.a.x, ry = p.b.y - p.a.y;
    double const sx = p.d.x - p.c.x, sy = p.d.y - p.c.y;
    double const qx = p.a.x - p.c.x, qy = p.a.y - p.c.y;
    double const den = rx * sy - ry * sx;
    bool hit = false;
    if (std::fabs(den) >= 1e-6) {
      double const inv = 1.0 / den;
      double const t = (sx * qy - sy * qx) * inv;
      double const u = inv * (rx * qy - ry * qx);
      if (t >= 0.0 && t <= 1.0 && u >= 0.0 && u <= 1.0) {
        ox = p.a.x + rx * t;
        oy = p.a.y + t * ry;
        hit = true;
      }
    }
    return std::make_pair(hit, Vector2(ox, oy));
  });
}
BENCHMARK(SegmentSegment_ScalarFloor);

// Turned planar boxes

std::vector<AlignedBoundingBox2> turned_boxes(std::uint64_t seed) {
  std::mt19937_64 rng(seed);
  std::uniform_real_distribution<double> coord(-4.0, 4.0);
  std::uniform_real_distribution<double> angle(-kPi, kPi);
  std::vector<AlignedBoundingBox2> out;
  for (std::size_t i = 0; i < kTable; ++i) {
    AlignedBoundingBox2 b(angle(rng));
    b.add(Vector2(coord(rng), coord(rng))).add(Vector2(coord(rng), coord(rng)));
    out.push_back(b);
  }
  return out;
}

void BoxIntersects_Geom(benchmark::State& state) {
  std::vector<AlignedBoundingBox2> const a = turned_boxes(6);
  std::vector<AlignedBoundingBox2> const b = turned_boxes(7);
  each_input(state, [&](std::size_t i) { return a[i].intersects(b[i]); });
}
BENCHMARK(BoxIntersects_Geom);

// The common alternative for two oriented rectangles: project both onto the four side
// directions and look for a gap (separating axes). Also exact for proper boxes, and the
// usual choice in collision code, so it is the peer here.
void BoxIntersects_SeparatingAxes(benchmark::State& state) {
  std::vector<AlignedBoundingBox2> const a = turned_boxes(6);
  std::vector<AlignedBoundingBox2> const b = turned_boxes(7);
  each_input(state, [&](std::size_t i) {
    AlignedBoundingBox2 const& p = a[i];
    AlignedBoundingBox2 const& q = b[i];
    Vector2 pc[4], qc[4];
    for (unsigned long k = 0; k < 4; ++k) {
      pc[k] = p.corner(k);
      qc[k] = q.corner(k);
    }
    bool hit = true;
    for (Vector2 const& axis : {p.x_axis, p.y_axis, q.x_axis, q.y_axis}) {
      double plo = axis.dot(pc[0]), phi = plo, qlo = axis.dot(qc[0]), qhi = qlo;
      for (int k = 1; k < 4; ++k) {
        plo = std::min(plo, axis.dot(pc[k]));
        phi = std::max(phi, axis.dot(pc[k]));
        qlo = std::min(qlo, axis.dot(qc[k]));
        qhi = std::max(qhi, axis.dot(qc[k]));
      }
      if (phi <= qlo || qhi <= plo) {
        hit = false;
        break;
      }
    }
    return hit;
  });
}
BENCHMARK(BoxIntersects_SeparatingAxes);

}  // namespace
