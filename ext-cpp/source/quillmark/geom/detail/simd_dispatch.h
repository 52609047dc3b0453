#ifndef QUILLMARK_GEOM_DETAIL_SIMD_DISPATCH_H
#define QUILLMARK_GEOM_DETAIL_SIMD_DISPATCH_H

// Run-time choice of the vector kernels behind the transformation's inverse and the batch
// forms (transform_vectors, rotate_vectors, BoundingBox3::add of an array). Every path
// gives the same bits: a lane performs exactly the scalar operations, in the scalar order,
// with no fused multiply-add, so the choice changes only the speed.
//
// The path is chosen once, on first use, from what the processor and the operating system
// report (CPUID, and XGETBV for the register state the system saves), unless the
// environment variable QUILLMARK_SIMD names one: sse2, avx2 or avx512 (on other processors
// only "scalar" exists). A path the machine lacks is never run: the request falls back to
// the widest supported path below it, and simd_path() reports the one in use. No code runs
// at load time; the choice is one atomic, so any thread may make the first call.

#include <cstddef>

#include <quillmark/geom/geom_vector3.h>

namespace Geom {
namespace detail {

enum class SimdPath : int {
  scalar = 0,  // plain C++: the only path off x86-64
  sse2 = 1,  // the x86-64 baseline, always present there
  avx2 = 2,  // AVX and AVX2, with the upper halves of the registers saved by the system
  avx512 = 3,  // AVX-512F, with the opmask and all 32 registers saved by the system
};

/// "scalar", "sse2", "avx2" or "avx512".
char const* simd_path_name(SimdPath path) noexcept;
/// Whether this machine can run the path.
bool simd_path_supported(SimdPath path) noexcept;
/// The widest path this machine can run.
SimdPath simd_best_path() noexcept;
/// The path in use, chosen on the first call (from QUILLMARK_SIMD or simd_best_path()).
SimdPath simd_path() noexcept;
/// For tests and benchmarks: use path from now on, or the widest supported path below it,
/// and answer the path actually in use. Not meant to race with running kernels' callers:
/// each call picks up whichever path is current when it starts.
SimdPath force_simd_path(SimdPath path) noexcept;
/// Forgets the choice: the next use reads QUILLMARK_SIMD and the machine again.
void reset_simd_path() noexcept;

/// One path's kernels. Transformations are the 16 doubles in storage order, boxes the six
/// doubles min then max. Point arrays may be the same array (out == in) but must not
/// otherwise overlap.
struct GeomKernels {
  /// The adjugate-based 4x4 inverse, as Transformation::inverse documents it.
  void (*inverse)(double const* m, double* out) noexcept;
  /// The full 4x4 product a b, element (r, c) summed over k in increasing order.
  void (*product)(double const* a, double const* b, double* out) noexcept;
  /// out[i] = (R in[i] + t) factor.
  void (*transform_points)(double const* m, double factor, Vector3 const* in, Vector3* out,
                           std::size_t n) noexcept;
  /// out[i] = R in[i] + t.
  void (*transform_points2)(double const* m, Vector3 const* in, Vector3* out,
                            std::size_t n) noexcept;
  /// out[i] = R in[i].
  void (*rotate_points)(double const* m, Vector3 const* in, Vector3* out, std::size_t n) noexcept;
  /// BoundingBox3::add of each point in turn.
  void (*add_points)(double* box, Vector3 const* in, std::size_t n) noexcept;
};

// The six row orders of a 3x3 minor, as positions among its rows, in the order a cofactor
// sums its triple products; the odd permutations are subtracted.
inline constexpr int MINOR_ORDER[6][3] = {{0, 1, 2}, {0, 2, 1}, {1, 0, 2},
                                          {1, 2, 0}, {2, 0, 1}, {2, 1, 0}};
inline constexpr bool MINOR_NEGATIVE[6] = {false, true, true, false, false, true};

// The reference kernels, which define the bits: the single-value operations in a loop.
void inverse_reference(double const* m, double* out) noexcept;
void product_reference(double const* a, double const* b, double* out) noexcept;
void transform_points_reference(double const* m, double factor, Vector3 const* in, Vector3* out,
                                std::size_t n) noexcept;
void transform_points2_reference(double const* m, Vector3 const* in, Vector3* out,
                                 std::size_t n) noexcept;
void rotate_points_reference(double const* m, Vector3 const* in, Vector3* out,
                             std::size_t n) noexcept;
void add_points_reference(double* box, Vector3 const* in, std::size_t n) noexcept;

// The tables, one per path and source file, constant-initialised.
extern GeomKernels const SCALAR_KERNELS;
#if defined(__x86_64__)
extern GeomKernels const SSE2_KERNELS;
extern GeomKernels const AVX2_KERNELS;
extern GeomKernels const AVX512_KERNELS;
#endif

/// The kernels of the path in use.
GeomKernels const& simd_kernels() noexcept;
/// The kernels of a given path (or of the widest supported path below it), whatever path
/// is in use: lets a test or the fuzz target compare paths without switching globally.
GeomKernels const& simd_kernels(SimdPath path) noexcept;

}  // namespace detail
}  // namespace Geom

#endif
