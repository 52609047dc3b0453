// The x86-64 kernels. Each function carries the instruction set it may use as a target
// attribute, so one generic x86-64 build holds all three paths and the dispatcher picks one
// at run time. The lanes do the reference arithmetic: every product and sum of the scalar
// code, operands in the same order, no fused multiply-add (the library builds with
// -ffp-contract=off, and no target here enables FMA in any case).
#include <quillmark/geom/detail/simd_dispatch.h>

#if defined(__x86_64__)

// g++ 12's AVX-512 intrinsics start from _mm512_undefined_pd(), written as a variable
// initialised from itself, which -Wuninitialized then reports in every caller. The warning
// is about the header, not this code.
#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif
#include <immintrin.h>

#include <cmath>
#include <cstdint>
#include <cstring>

#include <quillmark/geom/geom_bounding_box3.h>
#include <quillmark/geom/geom_transformation.h>

#define QM_SSE2 __attribute__((target("sse2")))
#define QM_AVX2 __attribute__((target("avx2")))
#define QM_AVX512 __attribute__((target("avx2,avx512f")))

namespace Geom {
namespace detail {

namespace {

// A Vector3 array is an array of doubles (its header asserts the layout). A cast rather
// than &p->x: an empty batch may pass a null pointer.
double const* doubles(Vector3 const* p) noexcept { return reinterpret_cast<double const*>(p); }
double* doubles(Vector3* p) noexcept { return reinterpret_cast<double*>(p); }

// Boxes: the min/max selects of BoundingBox3::add, several points per step. Each lane keeps
// its own running minimum and maximum of one axis; at the end the lanes are folded with the
// same select. Numbers come out the same whatever the order, except for the sign of a zero:
// +0 and -0 compare equal, so the sequential loop keeps whichever zero reached the box first.
// settle_zeros puts that one back.

// BoundingBox3::add's select on one axis: the running minimum and maximum.
void fold(double& lo, double& hi, double v) noexcept {
  lo = lo > v ? v : lo;
  hi = v > hi ? v : hi;
}

// lo and hi hold the lanes' minima and maxima laid out as `points` points (x, y, z each);
// folds them, in that order, into box.
void fold_lanes(double* box, double const* lo, double const* hi, int points) noexcept {
  for (int e = 0; e < 3; ++e) {
    box[e] = lo[e];
    box[3 + e] = hi[e];
  }
  for (int p = 1; p < points; ++p) {
    for (int e = 0; e < 3; ++e) {
      double const l = lo[3 * p + e];
      double const h = hi[3 * p + e];
      box[e] = box[e] > l ? l : box[e];
      box[3 + e] = h > box[3 + e] ? h : box[3 + e];
    }
  }
}

// A zero result takes the sign of the first zero in [start, in[0], ..., in[n - 1]].
void settle_zeros(double* box, double const* start, Vector3 const* in, std::size_t n) noexcept {
  double const* p = doubles(in);
  for (int e = 0; e < 6; ++e) {
    if (box[e] != 0.0 || start[e] == 0.0) {
      if (box[e] == 0.0) box[e] = start[e];
      continue;
    }
    int const axis = e % 3;
    for (std::size_t i = 0; i < n; ++i) {
      if (p[3 * i + axis] == 0.0) {
        box[e] = p[3 * i + axis];
        break;
      }
    }
  }
}

// Transforms and rotations of point arrays. kTranslate adds the origin column, kScale then
// multiplies by the factor: transform_vector (both), transform_vector2 (translation only),
// rotate_vector (neither).
template <bool kTranslate, bool kScale>
void points_tail(double const* m, double factor, Vector3 const* in, Vector3* out,
                 std::size_t n) noexcept {
  if (kScale) {
    transform_points_reference(m, factor, in, out, n);
  } else if (kTranslate) {
    transform_points2_reference(m, in, out, n);
  } else {
    rotate_points_reference(m, in, out, n);
  }
}

// ---- SSE2 ----

// Column by column with A's columns held as register pairs: g++ left to itself broadcasts
// all 16 elements of B up front and spills them.
QM_SSE2 void product_sse2(double const* pa, double const* pb, double* pr) noexcept {
  __m128d const a0l = _mm_loadu_pd(pa + 0), a0h = _mm_loadu_pd(pa + 2);
  __m128d const a1l = _mm_loadu_pd(pa + 4), a1h = _mm_loadu_pd(pa + 6);
  __m128d const a2l = _mm_loadu_pd(pa + 8), a2h = _mm_loadu_pd(pa + 10);
  __m128d const a3l = _mm_loadu_pd(pa + 12), a3h = _mm_loadu_pd(pa + 14);
  for (int c = 0; c < 4; ++c) {
    __m128d const b0 = _mm_set1_pd(pb[4 * c + 0]);
    __m128d const b1 = _mm_set1_pd(pb[4 * c + 1]);
    __m128d const b2 = _mm_set1_pd(pb[4 * c + 2]);
    __m128d const b3 = _mm_set1_pd(pb[4 * c + 3]);
    __m128d const lo = _mm_add_pd(
        _mm_add_pd(_mm_add_pd(_mm_mul_pd(a0l, b0), _mm_mul_pd(a1l, b1)), _mm_mul_pd(a2l, b2)),
        _mm_mul_pd(a3l, b3));
    __m128d const hi = _mm_add_pd(
        _mm_add_pd(_mm_add_pd(_mm_mul_pd(a0h, b0), _mm_mul_pd(a1h, b1)), _mm_mul_pd(a2h, b2)),
        _mm_mul_pd(a3h, b3));
    _mm_storeu_pd(pr + 4 * c, lo);
    _mm_storeu_pd(pr + 4 * c + 2, hi);
  }
}

// Two points per step: three registers hold (x0 y0) (z0 x1) (y1 z1), and the accumulators
// keep that pattern.
QM_SSE2 void add_points_sse2(double* box, Vector3 const* in, std::size_t n) noexcept {
  double const start[6] = {box[0], box[1], box[2], box[3], box[4], box[5]};
  std::size_t const blocks = n / 2;
  if (blocks == 0) {
    add_points_reference(box, in, n);
    return;
  }
  __m128d lo0 = _mm_setr_pd(box[0], box[1]);
  __m128d lo1 = _mm_setr_pd(box[2], box[0]);
  __m128d lo2 = _mm_setr_pd(box[1], box[2]);
  __m128d hi0 = _mm_setr_pd(box[3], box[4]);
  __m128d hi1 = _mm_setr_pd(box[5], box[3]);
  __m128d hi2 = _mm_setr_pd(box[4], box[5]);
  double const* p = doubles(in);
  for (std::size_t b = 0; b < blocks; ++b, p += 6) {
    __m128d const r0 = _mm_loadu_pd(p);
    __m128d const r1 = _mm_loadu_pd(p + 2);
    __m128d const r2 = _mm_loadu_pd(p + 4);
    // min(a, b) is a < b ? a : b, so min(p, lo) is the select lo > p ? p : lo.
    lo0 = _mm_min_pd(r0, lo0);
    lo1 = _mm_min_pd(r1, lo1);
    lo2 = _mm_min_pd(r2, lo2);
    hi0 = _mm_max_pd(r0, hi0);
    hi1 = _mm_max_pd(r1, hi1);
    hi2 = _mm_max_pd(r2, hi2);
  }
  double lo[6];
  double hi[6];
  _mm_storeu_pd(lo, lo0);
  _mm_storeu_pd(lo + 2, lo1);
  _mm_storeu_pd(lo + 4, lo2);
  _mm_storeu_pd(hi, hi0);
  _mm_storeu_pd(hi + 2, hi1);
  _mm_storeu_pd(hi + 4, hi2);
  fold_lanes(box, lo, hi, 2);
  for (std::size_t i = 2 * blocks; i < n; ++i) {
    double const* q = doubles(in + i);
    for (int e = 0; e < 3; ++e) fold(box[e], box[3 + e], q[e]);
  }
  settle_zeros(box, start, in, n);
}

// ---- AVX2 ----

// Result rows as vectors over the result's four columns. Column c's minor keeps the rows
// other than c; its p-th kept row, for c = 0..3, is (1 0 0 0), (2 2 1 1) or (3 3 3 2), so
// one permutation of an input column lines up, for all four cofactors at once, the element
// that the scalar code reads for position p. Every lane then runs the reference's products
// and sums in the reference's order.
constexpr int kKeptRow0 = 0x01;  // lanes (1, 0, 0, 0)
constexpr int kKeptRow1 = 0x5A;  // lanes (2, 2, 1, 1)
constexpr int kKeptRow2 = 0xBF;  // lanes (3, 3, 3, 2)

QM_AVX2 void kept_rows(__m256d column, __m256d* out) noexcept {
  out[0] = _mm256_permute4x64_pd(column, kKeptRow0);
  out[1] = _mm256_permute4x64_pd(column, kKeptRow1);
  out[2] = _mm256_permute4x64_pd(column, kKeptRow2);
}

QM_AVX2 void inverse_avx2(double const* m, double* out) noexcept {
  __m256d k0[3];
  __m256d k1[3];
  __m256d k2[3];
  __m256d k3[3];
  kept_rows(_mm256_loadu_pd(m), k0);
  kept_rows(_mm256_loadu_pd(m + 4), k1);
  kept_rows(_mm256_loadu_pd(m + 8), k2);
  kept_rows(_mm256_loadu_pd(m + 12), k3);

  __m256d row[4];
  for (int t = 0; t < 6; ++t) {
    int const i = MINOR_ORDER[t][0];
    int const j = MINOR_ORDER[t][1];
    int const k = MINOR_ORDER[t][2];
    __m256d const p23 = _mm256_mul_pd(k2[j], k3[k]);  // M(j, 2) M(k, 3)
    __m256d const p01 = _mm256_mul_pd(k0[i], k1[j]);  // M(i, 0) M(j, 1)
    __m256d const term[4] = {_mm256_mul_pd(k1[i], p23), _mm256_mul_pd(k0[i], p23),
                             _mm256_mul_pd(k3[k], p01), _mm256_mul_pd(k2[k], p01)};
    for (int r = 0; r < 4; ++r) {
      if (t == 0) {
        row[r] = term[r];
      } else if (MINOR_NEGATIVE[t]) {
        row[r] = _mm256_sub_pd(row[r], term[r]);
      } else {
        row[r] = _mm256_add_pd(row[r], term[r]);
      }
    }
  }
  // The cofactor signs (-1)^(r + c). Row 0 takes its sign now, for the determinant; the
  // other rows take it with the scale, as one factor: s = +-1 makes (x s) g and x (s g)
  // the same double for every x, NaN and infinity included.
  __m256d const even = _mm256_setr_pd(1.0, -1.0, 1.0, -1.0);
  __m256d const odd = _mm256_setr_pd(-1.0, 1.0, -1.0, 1.0);
  row[0] = _mm256_mul_pd(row[0], even);

  // The expansion along M's first column: ((m0 a0 + m1 a4) + m2 a8) + m3 a12, where row 0
  // holds a0, a4, a8, a12. Summed in registers, in that order.
  __m256d const terms = _mm256_mul_pd(_mm256_loadu_pd(m), row[0]);
  __m128d const t01 = _mm256_castpd256_pd128(terms);
  __m128d const t23 = _mm256_extractf128_pd(terms, 1);
  __m128d sum = _mm_add_sd(t01, _mm_unpackhi_pd(t01, t01));
  sum = _mm_add_sd(sum, t23);
  sum = _mm_add_sd(sum, _mm_unpackhi_pd(t23, t23));
  double const det = _mm_cvtsd_f64(sum);
  double const scale = std::abs(det) > LENGTH_EPSILON ? 1.0 / det : 0.0;
  __m256d const g = _mm256_set1_pd(scale);
  __m256d const g_odd = _mm256_mul_pd(odd, g);
  __m256d const g_even = _mm256_mul_pd(even, g);
  row[0] = _mm256_mul_pd(row[0], g);
  row[1] = _mm256_mul_pd(row[1], g_odd);
  row[2] = _mm256_mul_pd(row[2], g_even);
  row[3] = _mm256_mul_pd(row[3], g_odd);

  // Rows to columns.
  __m256d const t0 = _mm256_unpacklo_pd(row[0], row[1]);
  __m256d const t1 = _mm256_unpackhi_pd(row[0], row[1]);
  __m256d const t2 = _mm256_unpacklo_pd(row[2], row[3]);
  __m256d const t3 = _mm256_unpackhi_pd(row[2], row[3]);
  _mm256_storeu_pd(out, _mm256_permute2f128_pd(t0, t2, 0x20));
  _mm256_storeu_pd(out + 4, _mm256_permute2f128_pd(t1, t3, 0x20));
  _mm256_storeu_pd(out + 8, _mm256_permute2f128_pd(t0, t2, 0x31));
  _mm256_storeu_pd(out + 12, _mm256_permute2f128_pd(t1, t3, 0x31));
}

QM_AVX2 void product_avx2(double const* a, double const* b, double* out) noexcept {
  __m256d const a0 = _mm256_loadu_pd(a);
  __m256d const a1 = _mm256_loadu_pd(a + 4);
  __m256d const a2 = _mm256_loadu_pd(a + 8);
  __m256d const a3 = _mm256_loadu_pd(a + 12);
  for (int c = 0; c < 4; ++c) {
    __m256d const s = _mm256_add_pd(_mm256_mul_pd(a0, _mm256_broadcast_sd(b + 4 * c)),
                                    _mm256_mul_pd(a1, _mm256_broadcast_sd(b + 4 * c + 1)));
    __m256d const u = _mm256_add_pd(s, _mm256_mul_pd(a2, _mm256_broadcast_sd(b + 4 * c + 2)));
    _mm256_storeu_pd(out + 4 * c,
                     _mm256_add_pd(u, _mm256_mul_pd(a3, _mm256_broadcast_sd(b + 4 * c + 3))));
  }
}

// Four points per step, one register per point: lanes x y z and a spare lane that repeats
// z's arithmetic (so it raises no floating-point exception that z does not). The four
// results are then packed into the three registers of the output.
template <bool kTranslate, bool kScale>
QM_AVX2 void points_avx2(double const* m, double factor, Vector3 const* in, Vector3* out,
                         std::size_t n) noexcept {
  __m256d const cx = _mm256_setr_pd(m[0], m[1], m[2], m[2]);
  __m256d const cy = _mm256_setr_pd(m[4], m[5], m[6], m[6]);
  __m256d const cz = _mm256_setr_pd(m[8], m[9], m[10], m[10]);
  __m256d const co = _mm256_setr_pd(m[12], m[13], m[14], m[14]);
  __m256d const f = _mm256_set1_pd(factor);
  double const* src = doubles(in);
  double* dst = doubles(out);
  std::size_t const blocks = n / 4;
  for (std::size_t b = 0; b < blocks; ++b, src += 12, dst += 12) {
    __m256d r[4];
    for (int p = 0; p < 4; ++p) {
      __m256d v = _mm256_add_pd(_mm256_mul_pd(cx, _mm256_broadcast_sd(src + 3 * p)),
                                _mm256_mul_pd(cy, _mm256_broadcast_sd(src + 3 * p + 1)));
      v = _mm256_add_pd(v, _mm256_mul_pd(cz, _mm256_broadcast_sd(src + 3 * p + 2)));
      if (kTranslate) v = _mm256_add_pd(v, co);
      if (kScale) v = _mm256_mul_pd(v, f);
      r[p] = v;
    }
    // (x0 y0 z0 x1) (y1 z1 x2 y2) (z2 x3 y3 z3); all loads of the step came first, so out
    // may be in.
    __m256d const o0 = _mm256_blend_pd(r[0], _mm256_permute4x64_pd(r[1], 0x00), 0x8);
    __m256d const o1 = _mm256_blend_pd(_mm256_permute4x64_pd(r[1], 0xF9),
                                       _mm256_permute2f128_pd(r[2], r[2], 0x00), 0xC);
    __m256d const o2 =
        _mm256_blend_pd(_mm256_permute4x64_pd(r[3], 0x90), _mm256_permute4x64_pd(r[2], 0xAA), 0x1);
    _mm256_storeu_pd(dst, o0);
    _mm256_storeu_pd(dst + 4, o1);
    _mm256_storeu_pd(dst + 8, o2);
  }
  points_tail<kTranslate, kScale>(m, factor, in + 4 * blocks, out + 4 * blocks, n - 4 * blocks);
}

QM_AVX2 void transform_points_avx2(double const* m, double factor, Vector3 const* in, Vector3* out,
                                   std::size_t n) noexcept {
  points_avx2<true, true>(m, factor, in, out, n);
}
QM_AVX2 void transform_points2_avx2(double const* m, Vector3 const* in, Vector3* out,
                                    std::size_t n) noexcept {
  points_avx2<true, false>(m, 1.0, in, out, n);
}
QM_AVX2 void rotate_points_avx2(double const* m, Vector3 const* in, Vector3* out,
                                std::size_t n) noexcept {
  points_avx2<false, false>(m, 1.0, in, out, n);
}

// Lane-wise minima and maxima of blocks of 12 doubles, from lo and hi on. A function of its
// own: inlined into its caller, g++ 12 kept one accumulator on the stack.
__attribute__((noinline)) QM_AVX2 void min_max_avx2(double const* lo_in, double const* hi_in,
                                                    double const* p, std::size_t blocks,
                                                    double* lo_out, double* hi_out) noexcept {
  __m256d lo[3];
  __m256d hi[3];
  for (int k = 0; k < 3; ++k) {
    lo[k] = _mm256_loadu_pd(lo_in + 4 * k);
    hi[k] = _mm256_loadu_pd(hi_in + 4 * k);
  }
  for (std::size_t b = 0; b < blocks; ++b, p += 12) {
    for (int k = 0; k < 3; ++k) {
      __m256d const r = _mm256_loadu_pd(p + 4 * k);
      lo[k] = _mm256_min_pd(r, lo[k]);
      hi[k] = _mm256_max_pd(r, hi[k]);
    }
  }
  for (int k = 0; k < 3; ++k) {
    _mm256_storeu_pd(lo_out + 4 * k, lo[k]);
    _mm256_storeu_pd(hi_out + 4 * k, hi[k]);
  }
}

// Four points per step in three registers: (x0 y0 z0 x1) (y1 z1 x2 y2) (z2 x3 y3 z3).
QM_AVX2 void add_points_avx2(double* box, Vector3 const* in, std::size_t n) noexcept {
  std::size_t const blocks = n / 4;
  if (blocks == 0) {
    add_points_sse2(box, in, n);
    return;
  }
  double const start[6] = {box[0], box[1], box[2], box[3], box[4], box[5]};
  // Lane l of register k holds axis (4k + l) % 3.
  double const min12[12] = {box[0], box[1], box[2], box[0], box[1], box[2],
                            box[0], box[1], box[2], box[0], box[1], box[2]};
  double const max12[12] = {box[3], box[4], box[5], box[3], box[4], box[5],
                            box[3], box[4], box[5], box[3], box[4], box[5]};
  double los[12];
  double his[12];
  min_max_avx2(min12, max12, doubles(in), blocks, los, his);
  fold_lanes(box, los, his, 4);
  for (std::size_t i = 4 * blocks; i < n; ++i) {
    double const* q = doubles(in + i);
    for (int e = 0; e < 3; ++e) fold(box[e], box[3 + e], q[e]);
  }
  settle_zeros(box, start, in, n);
}

// ---- AVX-512 ----

// The AVX2 inverse with two result rows per register: rows 0 and 1 share their two-column
// products (M(j, 2) M(k, 3)), as do rows 2 and 3 (M(i, 0) M(j, 1)), so each product is
// formed once for both halves and every triple product and sum runs eight lanes wide.
QM_AVX512 void inverse_avx512(double const* m, double* out) noexcept {
  __m256d const c0 = _mm256_loadu_pd(m);
  __m256d const c1 = _mm256_loadu_pd(m + 4);
  __m256d const c2 = _mm256_loadu_pd(m + 8);
  __m256d const c3 = _mm256_loadu_pd(m + 12);
  // Halves (low | high): the first factors of rows 0 | 1 and of rows 2 | 3, and each
  // column in both halves for the two-column products.
  __m512d const f01 = _mm512_insertf64x4(_mm512_castpd256_pd512(c1), c0, 1);
  __m512d const f23 = _mm512_insertf64x4(_mm512_castpd256_pd512(c3), c2, 1);
  __m512d const d0 = _mm512_broadcast_f64x4(c0);
  __m512d const d1 = _mm512_broadcast_f64x4(c1);
  __m512d const d2 = _mm512_broadcast_f64x4(c2);
  __m512d const d3 = _mm512_broadcast_f64x4(c3);
  __m512d k01[3];
  __m512d k23[3];
  __m512d k0[3];
  __m512d k1[3];
  __m512d k2[3];
  __m512d k3[3];
  // _mm512_permutex_pd permutes within each half with the same pattern as kept_rows.
  k01[0] = _mm512_permutex_pd(f01, kKeptRow0);
  k01[1] = _mm512_permutex_pd(f01, kKeptRow1);
  k01[2] = _mm512_permutex_pd(f01, kKeptRow2);
  k23[0] = _mm512_permutex_pd(f23, kKeptRow0);
  k23[1] = _mm512_permutex_pd(f23, kKeptRow1);
  k23[2] = _mm512_permutex_pd(f23, kKeptRow2);
  k0[0] = _mm512_permutex_pd(d0, kKeptRow0);
  k0[1] = _mm512_permutex_pd(d0, kKeptRow1);
  k0[2] = _mm512_permutex_pd(d0, kKeptRow2);
  k1[0] = _mm512_permutex_pd(d1, kKeptRow0);
  k1[1] = _mm512_permutex_pd(d1, kKeptRow1);
  k1[2] = _mm512_permutex_pd(d1, kKeptRow2);
  k2[0] = _mm512_permutex_pd(d2, kKeptRow0);
  k2[1] = _mm512_permutex_pd(d2, kKeptRow1);
  k2[2] = _mm512_permutex_pd(d2, kKeptRow2);
  k3[0] = _mm512_permutex_pd(d3, kKeptRow0);
  k3[1] = _mm512_permutex_pd(d3, kKeptRow1);
  k3[2] = _mm512_permutex_pd(d3, kKeptRow2);

  __m512d rows01 = _mm512_setzero_pd();
  __m512d rows23 = _mm512_setzero_pd();
  for (int t = 0; t < 6; ++t) {
    int const i = MINOR_ORDER[t][0];
    int const j = MINOR_ORDER[t][1];
    int const k = MINOR_ORDER[t][2];
    __m512d const p23 = _mm512_mul_pd(k2[j], k3[k]);
    __m512d const p01 = _mm512_mul_pd(k0[i], k1[j]);
    __m512d const term01 = _mm512_mul_pd(k01[i], p23);
    __m512d const term23 = _mm512_mul_pd(k23[k], p01);
    if (t == 0) {
      rows01 = term01;
      rows23 = term23;
    } else if (MINOR_NEGATIVE[t]) {
      rows01 = _mm512_sub_pd(rows01, term01);
      rows23 = _mm512_sub_pd(rows23, term23);
    } else {
      rows01 = _mm512_add_pd(rows01, term01);
      rows23 = _mm512_add_pd(rows23, term23);
    }
  }
  // Signs and scale as in the AVX2 inverse: row 0 signed first, for the determinant.
  __m512d const signs = _mm512_setr_pd(1.0, -1.0, 1.0, -1.0, -1.0, 1.0, -1.0, 1.0);
  rows01 = _mm512_mask_mul_pd(rows01, 0x0F, rows01, signs);
  __m256d const row0 = _mm512_castpd512_pd256(rows01);
  __m256d const terms = _mm256_mul_pd(c0, row0);
  __m128d const t01 = _mm256_castpd256_pd128(terms);
  __m128d const t23 = _mm256_extractf128_pd(terms, 1);
  __m128d sum = _mm_add_sd(t01, _mm_unpackhi_pd(t01, t01));
  sum = _mm_add_sd(sum, t23);
  sum = _mm_add_sd(sum, _mm_unpackhi_pd(t23, t23));
  double const det = _mm_cvtsd_f64(sum);
  __m512d const g = _mm512_set1_pd(std::abs(det) > LENGTH_EPSILON ? 1.0 / det : 0.0);
  __m512d const g_signed = _mm512_mul_pd(signs, g);
  rows01 = _mm512_mul_pd(rows01, _mm512_mask_blend_pd(0xF0, g, g_signed));
  rows23 = _mm512_mul_pd(rows23, g_signed);

  // Rows to columns: column c is (row0[c], row1[c], row2[c], row3[c]).
  __m512i const cols01 = _mm512_setr_epi64(0, 4, 8, 12, 1, 5, 9, 13);
  __m512i const cols23 = _mm512_setr_epi64(2, 6, 10, 14, 3, 7, 11, 15);
  _mm512_storeu_pd(out, _mm512_permutex2var_pd(rows01, cols01, rows23));
  _mm512_storeu_pd(out + 8, _mm512_permutex2var_pd(rows01, cols23, rows23));
}

// Two columns of the product per register: A's columns in both halves, B's two columns
// loaded as one register and each element broadcast within its half.
QM_AVX512 void product_avx512(double const* a, double const* b, double* out) noexcept {
  __m512d const a0 = _mm512_broadcast_f64x4(_mm256_loadu_pd(a));
  __m512d const a1 = _mm512_broadcast_f64x4(_mm256_loadu_pd(a + 4));
  __m512d const a2 = _mm512_broadcast_f64x4(_mm256_loadu_pd(a + 8));
  __m512d const a3 = _mm512_broadcast_f64x4(_mm256_loadu_pd(a + 12));
  for (int h = 0; h < 2; ++h) {
    __m512d const bc = _mm512_loadu_pd(b + 8 * h);
    __m512d const s = _mm512_add_pd(_mm512_mul_pd(a0, _mm512_permutex_pd(bc, 0x00)),
                                    _mm512_mul_pd(a1, _mm512_permutex_pd(bc, 0x55)));
    __m512d const u = _mm512_add_pd(s, _mm512_mul_pd(a2, _mm512_permutex_pd(bc, 0xAA)));
    _mm512_storeu_pd(out + 8 * h,
                     _mm512_add_pd(u, _mm512_mul_pd(a3, _mm512_permutex_pd(bc, 0xFF))));
  }
}

// Eight points per step, 24 doubles in three registers of eight lanes. Output register k
// holds doubles 8k..8k+7: lane l is component (8k + l) % 3 of point (8k + l) / 3. A
// two-register permutation of a window of the input lines up, per lane, that point's x, y
// or z; the coefficients are laid out in the same component pattern.
struct Avx512PointLayout {
  std::int64_t window[3];  // first double of each output register's 16-double window
  std::int64_t pick[3][3][8];  // [register][x, y, z][lane]: index into the window
  std::int64_t row[3][8];  // [register][lane]: the component, 0 to 2
};

constexpr Avx512PointLayout avx512_point_layout() {
  Avx512PointLayout layout{};
  for (int k = 0; k < 3; ++k) {
    // From the first point that reaches into register k, but never past the step's 24
    // doubles: the last register's window is doubles 8 to 23.
    int const first = 3 * ((8 * k) / 3);
    layout.window[k] = first < 8 ? first : 8;
    for (int l = 0; l < 8; ++l) {
      int const g = 8 * k + l;
      layout.row[k][l] = g % 3;
      for (int c = 0; c < 3; ++c) layout.pick[k][c][l] = 3 * (g / 3) + c - layout.window[k];
    }
  }
  return layout;
}

constexpr Avx512PointLayout kAvx512Points = avx512_point_layout();

// Up to this many points the AVX-512 loops run; beyond, the arrays outgrow the caches and
// the AVX2 loops, bound by memory like them, measured faster here (10^6 points: 1.02 ms
// against 1.39 ms; in cache the AVX-512 loop is up to twice as fast).
constexpr std::size_t kAvx512MaxPoints = std::size_t(1) << 18;

template <bool kTranslate, bool kScale>
QM_AVX512 void points_avx512(double const* m, double factor, Vector3 const* in, Vector3* out,
                             std::size_t n) noexcept {
  __m512d coefficient[3][4];  // [register][x, y, z axis, origin]
  __m512i pick[3][3];
  for (int k = 0; k < 3; ++k) {
    __m512i const rows = _mm512_loadu_si512(kAvx512Points.row[k]);
    for (int c = 0; c < 4; ++c) {
      coefficient[k][c] =
          _mm512_permutexvar_pd(rows, _mm512_broadcast_f64x4(_mm256_loadu_pd(m + 4 * c)));
    }
    for (int c = 0; c < 3; ++c) pick[k][c] = _mm512_loadu_si512(kAvx512Points.pick[k][c]);
  }
  if (n > kAvx512MaxPoints) {
    points_avx2<kTranslate, kScale>(m, factor, in, out, n);
    return;
  }
  // A few points first through the AVX2 loop, so that the 64-byte stores start on a cache
  // line: every step then writes three whole lines (a store across two lines halved the
  // speed of a loop bound by memory). 24-byte points reach every 8-byte offset in 8 steps.
  std::size_t lead = 0;
  while (lead < 8 && lead < n &&
         (reinterpret_cast<std::uintptr_t>(doubles(out + lead)) % 64) != 0) {
    ++lead;
  }
  if (lead == 8) lead = 0;  // not even 8-byte aligned: leave it
  points_avx2<kTranslate, kScale>(m, factor, in, out, lead);
  in += lead;
  out += lead;
  n -= lead;
  __m512d const f = _mm512_set1_pd(factor);
  double const* src = doubles(in);
  double* dst = doubles(out);
  std::size_t const blocks = n / 8;
  for (std::size_t b = 0; b < blocks; ++b, src += 24, dst += 24) {
    // The step's three registers, once each; the middle window (doubles 6 to 21) is cut
    // from them, not loaded again.
    __m512d const r0 = _mm512_loadu_pd(src);
    __m512d const r1 = _mm512_loadu_pd(src + 8);
    __m512d const r2 = _mm512_loadu_pd(src + 16);
    __m512d const window[3][2] = {{r0, r1},
                                  {_mm512_castsi512_pd(_mm512_alignr_epi64(
                                       _mm512_castpd_si512(r1), _mm512_castpd_si512(r0), 6)),
                                   _mm512_castsi512_pd(_mm512_alignr_epi64(
                                       _mm512_castpd_si512(r2), _mm512_castpd_si512(r1), 6))},
                                  {r1, r2}};
    __m512d r[3];
    for (int k = 0; k < 3; ++k) {
      __m512d const x = _mm512_permutex2var_pd(window[k][0], pick[k][0], window[k][1]);
      __m512d const y = _mm512_permutex2var_pd(window[k][0], pick[k][1], window[k][1]);
      __m512d const z = _mm512_permutex2var_pd(window[k][0], pick[k][2], window[k][1]);
      __m512d v =
          _mm512_add_pd(_mm512_mul_pd(coefficient[k][0], x), _mm512_mul_pd(coefficient[k][1], y));
      v = _mm512_add_pd(v, _mm512_mul_pd(coefficient[k][2], z));
      if (kTranslate) v = _mm512_add_pd(v, coefficient[k][3]);
      if (kScale) v = _mm512_mul_pd(v, f);
      r[k] = v;
    }
    // All loads of the step came first, so out may be in.
    _mm512_storeu_pd(dst, r[0]);
    _mm512_storeu_pd(dst + 8, r[1]);
    _mm512_storeu_pd(dst + 16, r[2]);
  }
  points_avx2<kTranslate, kScale>(m, factor, in + 8 * blocks, out + 8 * blocks, n - 8 * blocks);
}

QM_AVX512 void transform_points_avx512(double const* m, double factor, Vector3 const* in,
                                       Vector3* out, std::size_t n) noexcept {
  points_avx512<true, true>(m, factor, in, out, n);
}
QM_AVX512 void transform_points2_avx512(double const* m, Vector3 const* in, Vector3* out,
                                        std::size_t n) noexcept {
  points_avx512<true, false>(m, 1.0, in, out, n);
}
QM_AVX512 void rotate_points_avx512(double const* m, Vector3 const* in, Vector3* out,
                                    std::size_t n) noexcept {
  points_avx512<false, false>(m, 1.0, in, out, n);
}

// Eight points per step in three registers; lane l of register k holds axis (8k + l) % 3.
QM_AVX512 void add_points_avx512(double* box, Vector3 const* in, std::size_t n) noexcept {
  std::size_t const blocks = n / 8;
  if (blocks == 0 || n > kAvx512MaxPoints) {
    add_points_avx2(box, in, n);
    return;
  }
  double const start[6] = {box[0], box[1], box[2], box[3], box[4], box[5]};
  double const min4[4] = {box[0], box[1], box[2], box[2]};
  double const max4[4] = {box[3], box[4], box[5], box[5]};
  __m512d lo[3];
  __m512d hi[3];
  for (int k = 0; k < 3; ++k) {
    __m512i const rows = _mm512_loadu_si512(kAvx512Points.row[k]);
    lo[k] = _mm512_permutexvar_pd(rows, _mm512_broadcast_f64x4(_mm256_loadu_pd(min4)));
    hi[k] = _mm512_permutexvar_pd(rows, _mm512_broadcast_f64x4(_mm256_loadu_pd(max4)));
  }
  double const* p = doubles(in);
  for (std::size_t b = 0; b < blocks; ++b, p += 24) {
    for (int k = 0; k < 3; ++k) {
      __m512d const r = _mm512_loadu_pd(p + 8 * k);
      lo[k] = _mm512_min_pd(r, lo[k]);
      hi[k] = _mm512_max_pd(r, hi[k]);
    }
  }
  double los[24];
  double his[24];
  for (int k = 0; k < 3; ++k) {
    _mm512_storeu_pd(los + 8 * k, lo[k]);
    _mm512_storeu_pd(his + 8 * k, hi[k]);
  }
  fold_lanes(box, los, his, 8);
  for (std::size_t i = 8 * blocks; i < n; ++i) {
    double const* q = doubles(in + i);
    for (int e = 0; e < 3; ++e) fold(box[e], box[3 + e], q[e]);
  }
  settle_zeros(box, start, in, n);
}

}  // namespace

GeomKernels const SSE2_KERNELS = {inverse_reference,          product_sse2,
                                  transform_points_reference, transform_points2_reference,
                                  rotate_points_reference,    add_points_sse2};

GeomKernels const AVX2_KERNELS = {inverse_avx2,           product_avx2,       transform_points_avx2,
                                  transform_points2_avx2, rotate_points_avx2, add_points_avx2};

GeomKernels const AVX512_KERNELS = {inverse_avx512,          product_avx512,
                                    transform_points_avx512, transform_points2_avx512,
                                    rotate_points_avx512,    add_points_avx512};

}  // namespace detail
}  // namespace Geom

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic pop
#endif

#endif
