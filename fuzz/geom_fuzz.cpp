// Arbitrary doubles (NaN, infinities, subnormals, the extremes) through the geometry types
// and free queries. The sanitizers catch undefined behaviour (a double converted to an
// integer out of range, a shift too far, an out-of-bounds write); the checks below hold the
// code to what its headers promise for every input, not only for sensible ones.

#include <cmath>
#include <cstring>
#include <stdexcept>

#include <quillmark/geom/detail/simd_dispatch.h>
#include <quillmark/geom/geom.h>
#include "fuzz_input.h"

using namespace Geom;

namespace {

constexpr double kPi = 3.141592653589793;

bool same_bits(void const* a, void const* b, std::size_t n) { return std::memcmp(a, b, n) == 0; }

// Equal bits, any NaN matching any NaN: with two NaN operands x86 returns the first, and the
// compiler may swap the operands of + and *, so only NaN-ness is fixed for a NaN result.
bool same_numbers(double const* a, double const* b, std::size_t n) {
  for (std::size_t i = 0; i < n; ++i) {
    if (!(std::isnan(a[i]) && std::isnan(b[i])) && !same_bits(a + i, b + i, sizeof(double)))
      return false;
  }
  return true;
}

using detail::SimdPath;
#if defined(__x86_64__)
constexpr SimdPath kPaths[] = {SimdPath::sse2, SimdPath::avx2, SimdPath::avx512};
#else
constexpr SimdPath kPaths[] = {SimdPath::scalar};
#endif

bool equal(Vector3 const& a, Vector3 const& b) { return a.x == b.x && a.y == b.y && a.z == b.z; }

// N doubles off the stream, in order, as a vector type with a pointer constructor.
template <typename Vector, int N>
Vector take(qmfuzz::Input& in) {
  double v[N];
  for (double& e : v) e = in.real();
  return Vector(v);
}
Vector2 vec2(qmfuzz::Input& in) { return take<Vector2, 2>(in); }
Vector3 vec3(qmfuzz::Input& in) { return take<Vector3, 3>(in); }
Vector4 vec4(qmfuzz::Input& in) { return take<Vector4, 4>(in); }

Transformation matrix(qmfuzz::Input& in) {
  Transformation t = take<Transformation, 16>(in);
  // Rows and columns of zeros are the one sure way to a singular 4x4 matrix.
  std::uint8_t const zeros = in.byte();
  for (int k = 0; k < 4; ++k) {
    if (zeros & 0x10) t.data()[4 * (zeros & 3) + k] = 0.0;
    if (zeros & 0x20) t.data()[4 * k + ((zeros >> 2) & 3)] = 0.0;
  }
  return t;
}

// Within [low, high] or NaN: a NaN operand may give a NaN angle, never one out of range.
bool in_range_or_nan(double a, double low, double high) {
  return std::isnan(a) || (a >= low && a <= high);
}

// A zero row or column makes the determinant exactly zero, as long as no product in its
// expansion can overflow (an infinity times that zero is NaN, not zero).
bool singular_by_zeros(Transformation const& t) {
  double const* m = t.data();
  for (int i = 0; i < 16; ++i)
    if (!(std::abs(m[i]) <= 1e60)) return false;
  for (int i = 0; i < 4; ++i) {
    bool column = true, row = true;
    for (int k = 0; k < 4; ++k) {
      column = column && m[4 * i + k] == 0.0;
      row = row && m[4 * k + i] == 0.0;
    }
    if (column || row) return true;
  }
  return false;
}

// A short vector is neither normalised nor re-lengthened: it comes back bit for bit.
// Any other vector whose squared length is a number normalises to unit length.
template <typename Vector>
void check_lengths(Vector const& v, double len) {
  Vector const unit = v.normalize();
  Vector sized = v;
  sized.set_length(len);
  if (v.length_squared() <= SQUARED_LENGTH_EPSILON) {
    QM_FUZZ_CHECK(same_bits(&unit, &v, sizeof v));
    QM_FUZZ_CHECK(same_bits(&sized, &v, sizeof v));
  } else if (std::isfinite(v.length_squared())) {
    QM_FUZZ_CHECK(std::abs(unit.length() - 1.0) < 1e-9);
  }
}

void vectors(qmfuzz::Input& in) {
  Vector3 const a = vec3(in);
  Vector3 const b = vec3(in);
  double const s = in.real();
  check_lengths(a, s);
  QM_FUZZ_CHECK(in_range_or_nan(a.angle_between(b), 0.0, kPi));
  QM_FUZZ_CHECK(in_range_or_nan(a.angle_between(b, vec3(in)), -kPi, kPi));
  if (equal(a, Vector3::ORIGIN) && equal(b, Vector3::ORIGIN)) QM_FUZZ_CHECK(a.parallel_to(b));
  if (equal(a, Vector3::ORIGIN) && b.length_squared() > 1.0 && std::isfinite(b.length_squared()))
    QM_FUZZ_CHECK(!a.parallel_to(b));
  Vector3 r = a.rotate(b, s) + a.rotate_to(b, s) + a.rotate_and_scale_to(b, s);
  r += a.cross(b) - a.transition_to(b, s) + a.product(b) / s;
  r /= b;
  r *= a.dot(b);

  Vector2 const p = vec2(in);
  Vector2 const q = vec2(in);
  check_lengths(p, s);
  QM_FUZZ_CHECK(in_range_or_nan(p.angle_between(q), 0.0, kPi));
  if (p.x == 0.0 && p.y == 0.0 && q.x == 0.0 && q.y == 0.0) QM_FUZZ_CHECK(p.parallel_to(q));
  Vector2 w = p.rotate(s) + p.transition_to(q, s) - p.product(q) / s;
  w /= q;
  w *= p.perp(q) + p.dot(q) + p.length();
  (void)w.reverse();

  Vector4 v4 = vec4(in);
  v4 = (v4 + vec4(in)) * s - v4 / s;
  v4 /= vec4(in);
}

void transformations(qmfuzz::Input& in) {
  Transformation const a = matrix(in);
  Transformation const b = matrix(in);
  Vector3 const v = vec3(in);
  double const t = in.real();
  Transformation const inv = a.inverse();
  if (singular_by_zeros(a))
    for (int i = 0; i < 16; ++i) QM_FUZZ_CHECK(inv.data()[i] == 0.0);
  (void)(a.transform_vector(v) + a.transform_vector2(v) + a.rotate_vector(v) + a.normal_origin() +
         a.scale() + (a * b).transform_vector(v, t) + a * vec4(in));
  Transformation c = a;
  c.scale(vec3(in));
  c = a.normalize();
  c.scale_axes_self(v);
  c = a.scale_axes(v);
  c.extract_w_factor();
  // The interpolations promise a right-handed frame with unit weight whatever comes in.
  Transformation const mid = a.uniform_transition_to(b, t);
  QM_FUZZ_CHECK(mid.origin.w == 1.0 && mid.x_axis.w == 0.0 && mid.y_axis.w == 0.0 &&
                mid.z_axis.w == 0.0);
  (void)a.uniform_normal_transition_to(b, t);
  (void)(a.rotate_xaxis_to(v) * a.rotate_yaxis_to(v) * a.rotate_zaxis_to(v));
  (void)(Transformation::rotate(v, t) * Transformation::rotatex(t) * Transformation::rotatey(t) *
         Transformation::rotatez(t));
  (void)Transformation(v, vec3(in));
  (void)Transformation(v, vec3(in), t);

  Vector4 const qv = vec4(in);
  Quaternion const q(qv.x, qv.y, qv.z, qv.w);
  Quaternion const qn = q.normalize();
  if (((q.w * q.w + q.x * q.x) + q.y * q.y) + q.z * q.z <= SQUARED_LENGTH_EPSILON)
    QM_FUZZ_CHECK(qn.w == 0.0 && qn.x == 0.0 && qn.y == 0.0 && qn.z == 0.0);
  Quaternion const from_matrix(a);
  Quaternion const from_axis(v, t);
  Quaternion const product = (q * from_matrix + from_axis - q.inverse()).scale(t);
  (void)product.length();
  (void)Transformation(product, v);
}

// Every vector path the machine has against the reference kernels, on the same input: the
// inverse and product of arbitrary matrices, the point loops and box growth over up to 19
// points (every tail length of every path).
void paths(qmfuzz::Input& in) {
  Transformation const a = matrix(in);
  Transformation const b = matrix(in);
  double const factor = in.real();
  std::size_t const n = in.byte() % 20;
  Vector3 points[19];
  for (std::size_t i = 0; i < n; ++i) points[i] = vec3(in);
  BoundingBox3 const start(vec3(in), vec3(in));

  double inverse[16];
  double product[16];
  detail::inverse_reference(a.data(), inverse);
  detail::product_reference(a.data(), b.data(), product);
  Vector3 moved[3][19];
  detail::transform_points_reference(a.data(), factor, points, moved[0], n);
  detail::transform_points2_reference(a.data(), points, moved[1], n);
  detail::rotate_points_reference(a.data(), points, moved[2], n);
  BoundingBox3 grown = start;
  for (std::size_t i = 0; i < n; ++i) grown.add(points[i]);

  for (SimdPath path : kPaths) {
    if (!detail::simd_path_supported(path)) continue;
    detail::GeomKernels const& k = detail::simd_kernels(path);
    double m[16];
    k.inverse(a.data(), m);
    QM_FUZZ_CHECK(same_numbers(m, inverse, 16));
    k.product(a.data(), b.data(), m);
    QM_FUZZ_CHECK(same_numbers(m, product, 16));
    Vector3 out[19];
    k.transform_points(a.data(), factor, points, out, n);
    QM_FUZZ_CHECK(same_numbers(&out[0].x, &moved[0][0].x, 3 * n));
    // In place, too.
    std::memcpy(static_cast<void*>(out), points, sizeof points);
    k.transform_points2(a.data(), out, out, n);
    QM_FUZZ_CHECK(same_numbers(&out[0].x, &moved[1][0].x, 3 * n));
    k.rotate_points(a.data(), points, out, n);
    QM_FUZZ_CHECK(same_numbers(&out[0].x, &moved[2][0].x, 3 * n));
    double box[6];
    std::memcpy(box, &start, sizeof box);
    k.add_points(box, points, n);
    QM_FUZZ_CHECK(same_bits(box, &grown, sizeof box));
  }
}

// Corner index k of a box with `corners` corners throws exactly when out of range.
template <typename Box>
void check_corner(Box const& box, unsigned long k, unsigned long corners) {
  try {
    (void)box.corner(k);
    QM_FUZZ_CHECK(k < corners);
  } catch (std::out_of_range const&) {
    QM_FUZZ_CHECK(k >= corners);
  }
}

void boxes(qmfuzz::Input& in) {
  BoundingBox3 box;
  std::uint8_t const points = in.byte() % 6;
  for (std::uint8_t i = 0; i < points; ++i) {
    Vector3 const p = vec3(in);
    box.add(p);
    // The box now reaches p on every axis where p has a number.
    QM_FUZZ_CHECK(std::isnan(p.x) || (box.min.x <= p.x && p.x <= box.max.x));
    QM_FUZZ_CHECK(std::isnan(p.y) || (box.min.y <= p.y && p.y <= box.max.y));
    QM_FUZZ_CHECK(std::isnan(p.z) || (box.min.z <= p.z && p.z <= box.max.z));
  }
  BoundingBox3 other(vec3(in), vec3(in));
  box.add(other);
  box.add(vec3(in), vec3(in));
  BoundingBox3 scaled = box.scale(in.real());
  scaled.pad_self(in.real());
  BoundingBox3 overlap;
  box.intersect(other, overlap);
  (void)(box.contains(vec3(in)) + box.intersects(other) + box.within(other));
  Vector3 const origin = vec3(in);
  Vector3 const direction = vec3(in);
  (void)box.intersects_ray(origin, direction);
  bool const cone_hit = box.intersects_ray(origin, direction, in.real());
  if (box.min.x > box.max.x || box.min.y > box.max.y || box.min.z > box.max.z)
    QM_FUZZ_CHECK(!cone_hit);
  check_corner(box, in.byte() % 10, 8);

  AlignedBoundingBox2 flat(in.real());
  std::uint8_t const corners = in.byte() % 5;
  for (std::uint8_t i = 0; i < corners; ++i) flat.add(vec2(in));
  AlignedBoundingBox2 turned(in.real());
  turned.add(vec2(in));
  flat.add(turned);
  flat.local_add(vec2(in));
  flat = flat.scale(in.real()).pad_self(in.real()).translate(vec2(in)).local_shift(vec2(in));
  (void)(flat.contains(vec2(in)) + flat.contains(turned) + flat.intersects(turned));
  (void)flat.center();
  check_corner(flat, in.byte() % 6, 4);
  flat.clear();
}

void queries(qmfuzz::Input& in) {
  Vector3 const sentinel(12345.0, -678.0, 9.0);
  // Only the paths that say so write their out parameter.
  Vector2 crossing(sentinel.x, sentinel.y);
  Vector2 const a2 = vec2(in);
  Vector2 const b2 = vec2(in);
  Vector2 const c2 = vec2(in);
  if (!intersect_segment_segment(a2, b2, c2, vec2(in), crossing))
    QM_FUZZ_CHECK(crossing.x == sentinel.x && crossing.y == sentinel.y);
  Vector3 out = sentinel;
  Vector3 const p0 = vec3(in);
  Vector3 const p1 = vec3(in);
  Vector3 const plane_point = vec3(in);
  Vector3 const plane_normal = vec3(in);
  int const code = intersect_segment_plane(p0, p1, plane_point, plane_normal, out);
  QM_FUZZ_CHECK(code == SEGMENT_PLANE_NONE || code == SEGMENT_PLANE_POINT ||
                code == SEGMENT_PLANE_IN_PLANE);
  if (code != SEGMENT_PLANE_POINT) QM_FUZZ_CHECK(same_bits(&out, &sentinel, sizeof out));
  out = sentinel;
  if (!intersect_ray_plane(p0, p1, plane_point, plane_normal, out))
    QM_FUZZ_CHECK(same_bits(&out, &sentinel, sizeof out));

  Vector3 const a = vec3(in);
  Vector3 const b = vec3(in);
  Vector3 const c = vec3(in);
  Vector4 uvwh;
  triplet_convert_point_to_uvwh(p0, a, b, c, uvwh);
  (void)point_inside_triplet(p0, a, b, c);
  // A triangle with two equal corners is degenerate for certain.
  if (equal(a, b)) QM_FUZZ_CHECK(!point_inside_triplet(p1, a, b, c));
  Vector3 on_p;
  Vector3 on_q;
  cpa_line_line(p0, a, p1, b, on_p, on_q);
  double const cot = cotan(a, b);
  bool const finite = std::isfinite(a.length_squared()) && std::isfinite(b.length_squared());
  if (finite && (equal(a, Vector3::ORIGIN) || equal(b, Vector3::ORIGIN))) QM_FUZZ_CHECK(cot == 0.0);
  (void)inv_sqrt(in.real());
  double const single = in.real();
  (void)inv_sqrt(
      static_cast<float>(std::isfinite(single) && std::abs(single) < 1e38 ? single : 1.0));

  // The exact counts: AddressSanitizer sees a point written past the end.
  Vector3 circle[17];
  unsigned long const count = in.byte() % 17;
  points_on_circle(count, in.real(), in.real(), circle);
  unsigned long const arc_count = in.byte() % 16;
  points_on_arc(arc_count, in.real(), in.real(), in.real(), circle);

  Color const from(in.byte(), in.byte(), in.byte(), in.byte());
  Color const to(in.byte(), in.byte(), in.byte(), in.byte());
  double const t = in.real();
  (void)from.transition_to(to, t);
  // No step at t = 0 (and none for a NaN t): the colour stays as it is.
  Color const still = from.transition_to(to, std::isnan(t) ? t : 0.0);
  QM_FUZZ_CHECK(still.r == from.r && still.g == from.g && still.b == from.b && still.a == from.a);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  qmfuzz::Input in(data, size);
  void (*const steps[])(qmfuzz::Input&) = {vectors, transformations, boxes, paths, queries};
  while (!in.empty()) steps[in.byte() % 5](in);
  return 0;
}
