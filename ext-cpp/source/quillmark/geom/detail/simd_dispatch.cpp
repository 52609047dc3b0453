#include <quillmark/geom/detail/simd_dispatch.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

#if defined(__x86_64__)
#include <cpuid.h>
#endif

namespace Geom {
namespace detail {

namespace {

// -1 until the first use. A plain atomic int is constant-initialised: nothing runs at load.
std::atomic<int> active_path{-1};

#if defined(__x86_64__)

// XCR0: which register state the operating system saves on a context switch. A processor
// with AVX under a system that does not save the upper halves must not use them.
unsigned long long read_xcr0() noexcept {
  unsigned int lo = 0;
  unsigned int hi = 0;
  __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
  return (static_cast<unsigned long long>(hi) << 32) | lo;
}

SimdPath detect() noexcept {
  unsigned int a = 0;
  unsigned int b = 0;
  unsigned int c = 0;
  unsigned int d = 0;
  if (__get_cpuid(1, &a, &b, &c, &d) == 0) return SimdPath::sse2;
  bool const osxsave = (c & bit_OSXSAVE) != 0;
  bool const avx = (c & bit_AVX) != 0;
  if (!osxsave || !avx) return SimdPath::sse2;
  unsigned long long const xcr0 = read_xcr0();
  // Bits 1 and 2: SSE and AVX state; 5 to 7: opmask, upper halves of zmm0-15, zmm16-31.
  // (macOS enables the AVX-512 state only once a thread uses it, so there the bits read as
  // clear and the AVX2 path runs: slower, never wrong.)
  bool const ymm_saved = (xcr0 & 0x6U) == 0x6U;
  bool const zmm_saved = (xcr0 & 0xE6U) == 0xE6U;
  if (!ymm_saved || __get_cpuid_max(0, nullptr) < 7) return SimdPath::sse2;
  __cpuid_count(7, 0, a, b, c, d);
  bool const avx2 = (b & bit_AVX2) != 0;
  bool const avx512f = (b & bit_AVX512F) != 0;
  if (avx2 && avx512f && zmm_saved) return SimdPath::avx512;
  return avx2 ? SimdPath::avx2 : SimdPath::sse2;
}

#else

SimdPath detect() noexcept { return SimdPath::scalar; }

#endif

// The CPU does not change while the process runs; -1 until first asked.
std::atomic<int> best_path{-1};

// The widest supported path not above the one asked for (on x86-64, SSE2 at the least).
SimdPath supported_at_most(SimdPath path) noexcept {
  SimdPath const best = simd_best_path();
  if (static_cast<int>(path) >= static_cast<int>(best)) return best;
#if defined(__x86_64__)
  if (path == SimdPath::scalar) return SimdPath::sse2;
#endif
  return path;
}

SimdPath from_environment() noexcept {
  char const* const value = std::getenv("QUILLMARK_SIMD");
  if (value != nullptr) {
    for (int p = static_cast<int>(SimdPath::scalar); p <= static_cast<int>(SimdPath::avx512); ++p) {
      SimdPath const path = static_cast<SimdPath>(p);
      if (std::strcmp(value, simd_path_name(path)) == 0) return supported_at_most(path);
    }
  }
  return simd_best_path();
}

}  // namespace

char const* simd_path_name(SimdPath path) noexcept {
  switch (path) {
    case SimdPath::scalar:
      return "scalar";
    case SimdPath::sse2:
      return "sse2";
    case SimdPath::avx2:
      return "avx2";
    case SimdPath::avx512:
      return "avx512";
  }
  return "scalar";
}

SimdPath simd_best_path() noexcept {
  int best = best_path.load(std::memory_order_relaxed);
  if (best < 0) {
    best = static_cast<int>(detect());
    best_path.store(best, std::memory_order_relaxed);
  }
  return static_cast<SimdPath>(best);
}

bool simd_path_supported(SimdPath path) noexcept {
#if defined(__x86_64__)
  if (path == SimdPath::scalar) return false;
#else
  if (path != SimdPath::scalar) return false;
#endif
  return static_cast<int>(path) <= static_cast<int>(simd_best_path());
}

SimdPath simd_path() noexcept {
  int path = active_path.load(std::memory_order_acquire);
  if (path < 0) {
    // Two first callers may both get here; they compute the same answer.
    path = static_cast<int>(from_environment());
    active_path.store(path, std::memory_order_release);
  }
  return static_cast<SimdPath>(path);
}

SimdPath force_simd_path(SimdPath path) noexcept {
  SimdPath const used = supported_at_most(path);
  active_path.store(static_cast<int>(used), std::memory_order_release);
  return used;
}

void reset_simd_path() noexcept { active_path.store(-1, std::memory_order_release); }

GeomKernels const& simd_kernels(SimdPath path) noexcept {
#if defined(__x86_64__)
  SimdPath const used = supported_at_most(path);
  if (used == SimdPath::avx512) return AVX512_KERNELS;
  if (used == SimdPath::avx2) return AVX2_KERNELS;
  return SSE2_KERNELS;
#else
  (void)path;
  return SCALAR_KERNELS;
#endif
}

GeomKernels const& simd_kernels() noexcept { return simd_kernels(simd_path()); }

}  // namespace detail
}  // namespace Geom
