#ifndef QUILLMARK_FUZZ_FUZZ_INPUT_H
#define QUILLMARK_FUZZ_FUZZ_INPUT_H

// Reads typed values off the fuzzer's byte stream. Once the bytes run out every read
// answers zero, so a target never has to check the length itself.

#include <cfloat>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qmfuzz {

class Input {
 public:
  Input(std::uint8_t const* data, std::size_t size) : data_(data), size_(size) {}

  bool empty() const { return size_ == 0; }

  std::uint8_t byte() {
    if (size_ == 0) return 0;
    --size_;
    return *data_++;
  }

  std::uint32_t u32() {
    std::uint32_t value = 0;
    take(&value, sizeof value);
    return value;
  }

  // Raw bit patterns reach every double, but a mutator rarely stumbles on the few that
  // matter most; a tag byte picks those directly half of the time.
  double real() {
    std::uint8_t const tag = byte();
    if (tag < 128) {
      double value = 0.0;
      take(&value, sizeof value);
      return value;
    }
    static double const special[] = {
        0.0,           -0.0,     1.0,      -1.0,      0.5,    2.0,          1e-6,
        -1e-6,         1e-12,    1e-7,     1e-3,      0.005,  0.9999995,    3.141592653589793,
        1e15,          -1e15,    1e300,    -1e300,    1e-300, DBL_TRUE_MIN, DBL_MIN,
        DBL_MAX,       -DBL_MAX, HUGE_VAL, -HUGE_VAL, NAN,    -NAN,         4294967296.0,
        -2147483649.0, 255.0,    256.0,    1e-5};
    constexpr std::size_t count = sizeof special / sizeof special[0];
    return special[(tag - 128) % count];
  }

 private:
  void take(void* out, std::size_t n) {
    std::size_t const have = n < size_ ? n : size_;
    std::memcpy(out, data_, have);
    data_ += have;
    size_ -= have;
  }

  std::uint8_t const* data_;
  std::size_t size_;
};

// A broken invariant is a finding: say which, then abort so the fuzzer keeps the input.
[[noreturn]] inline void fail(char const* what, char const* file, int line) {
  std::fprintf(stderr, "fuzz invariant broken: %s (%s:%d)\n", what, file, line);
  std::abort();
}

}  // namespace qmfuzz

#define QM_FUZZ_CHECK(condition) \
  ((condition) ? static_cast<void>(0) : qmfuzz::fail(#condition, __FILE__, __LINE__))

#endif
