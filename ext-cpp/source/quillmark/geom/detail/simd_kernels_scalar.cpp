// The reference kernels: the single-value operations in a plain loop, and the inverse as
// the arithmetic fixes it. Every other path must give these bits. Off x86-64 they are the
// only path; on x86-64 the SSE2 path borrows those that it cannot do better.
#include <quillmark/geom/detail/simd_dispatch.h>

#include <cmath>
#include <cstring>

#include <quillmark/geom/geom_bounding_box3.h>
#include <quillmark/geom/geom_transformation.h>

namespace Geom {
namespace detail {

namespace {

// Two doubles processed together (scalar code where the target has no vector unit).
// Lane-wise + - * round exactly as the scalar operations do.
typedef double Lanes __attribute__((vector_size(16)));

}  // namespace

void inverse_reference(double const* m, double* out) noexcept {
  auto at = [m](int row, int col) { return m[4 * col + row]; };

  // The adjugate: result element (r, c) is the cofactor of M at row c, column r, the
  // determinant of a 3x3 minor written out as six signed triple products, one element from
  // each of the minor's columns. For r = 0 and 1 the minor keeps columns 2 and 3, and each
  // triple product is M(i, 1 or 0) * (M(j, 2) M(k, 3)); for r = 2 and 3 it keeps columns 0
  // and 1, and each is M(k, 3 or 2) * (M(i, 0) M(j, 1)). Grouped that way the two-column
  // products are formed once and two cofactors advance side by side, with exactly the
  // roundings of the scalar expression.
  Lanes p23[4][4];  // both lanes M(i, 2) M(j, 3)
  Lanes p01[4][4];  // both lanes M(i, 0) M(j, 1)
  Lanes col10[4];
  Lanes col32[4];
  for (int i = 0; i < 4; ++i) {
    for (int j = 0; j < 4; ++j) {
      double const q23 = at(i, 2) * at(j, 3);
      double const q01 = at(i, 0) * at(j, 1);
      p23[i][j] = Lanes{q23, q23};
      p01[i][j] = Lanes{q01, q01};
    }
    col10[i] = Lanes{at(i, 1), at(i, 0)};
    col32[i] = Lanes{at(i, 3), at(i, 2)};
  }

  double a[16];
  for (int c = 0; c < 4; ++c) {
    int rows[3];
    for (int i = 0, n = 0; i < 4; ++i) {
      if (i != c) rows[n++] = i;
    }
    Lanes lo = {0.0, 0.0};  // result elements (0, c) and (1, c)
    Lanes hi = {0.0, 0.0};  // result elements (2, c) and (3, c)
    for (int t = 0; t < 6; ++t) {
      int const i = rows[MINOR_ORDER[t][0]];
      int const j = rows[MINOR_ORDER[t][1]];
      int const k = rows[MINOR_ORDER[t][2]];
      Lanes const tl = col10[i] * p23[j][k];
      Lanes const th = col32[k] * p01[i][j];
      if (t == 0) {
        lo = tl;
        hi = th;
      } else if (MINOR_NEGATIVE[t]) {
        lo -= tl;
        hi -= th;
      } else {
        lo += tl;
        hi += th;
      }
    }
    // The cofactor sign (-1)^(r + c): negation is exact, so applying it last changes nothing.
    double const s = (c % 2 == 0) ? 1.0 : -1.0;
    lo *= Lanes{s, -s};
    hi *= Lanes{s, -s};
    a[4 * c] = lo[0];
    a[4 * c + 1] = lo[1];
    a[4 * c + 2] = hi[0];
    a[4 * c + 3] = hi[1];
  }

  // Expansion along M's first column, w included.
  double const det = ((m[0] * a[0] + m[1] * a[4]) + m[2] * a[8]) + m[3] * a[12];
  // An absolute threshold, so a near-singular matrix inverts to zeros rather than to huge
  // values; the comparison must stay strict so that |det| = 1e-6 is singular too.
  double const g = std::abs(det) > LENGTH_EPSILON ? 1.0 / det : 0.0;
  for (int e = 0; e < 16; ++e) out[e] = a[e] * g;
}

void product_reference(double const* a, double const* b, double* out) noexcept {
  Transformation const ta(a);
  Transformation const tb(b);
  Transformation const r(ta * tb.x_axis, ta * tb.y_axis, ta * tb.z_axis, ta * tb.origin);
  for (int e = 0; e < 16; ++e) out[e] = r.data()[e];
}

void transform_points_reference(double const* m, double factor, Vector3 const* in, Vector3* out,
                                std::size_t n) noexcept {
  Transformation const t(m);
  for (std::size_t i = 0; i < n; ++i) out[i] = t.transform_vector(in[i], factor);
}

void transform_points2_reference(double const* m, Vector3 const* in, Vector3* out,
                                 std::size_t n) noexcept {
  Transformation const t(m);
  for (std::size_t i = 0; i < n; ++i) out[i] = t.transform_vector2(in[i]);
}

void rotate_points_reference(double const* m, Vector3 const* in, Vector3* out,
                             std::size_t n) noexcept {
  Transformation const t(m);
  for (std::size_t i = 0; i < n; ++i) out[i] = t.rotate_vector(in[i]);
}

void add_points_reference(double* box, Vector3 const* in, std::size_t n) noexcept {
  BoundingBox3 b(Vector3(box), Vector3(box + 3));
  for (std::size_t i = 0; i < n; ++i) b.add(in[i]);
  std::memcpy(box, &b, sizeof b);
}

GeomKernels const SCALAR_KERNELS = {inverse_reference,          product_reference,
                                    transform_points_reference, transform_points2_reference,
                                    rotate_points_reference,    add_points_reference};

}  // namespace detail
}  // namespace Geom
