#ifndef QUILLMARK_TESTS_RUBY_BRIDGE_TEST_UTIL_H
#define QUILLMARK_TESTS_RUBY_BRIDGE_TEST_UTIL_H

// Small helpers for the conversion tests: values cross into Ruby code through global
// variables, which also keeps them marked while the test holds them.

#include <cstdint>
#include <string>

#include "embedded_ruby.h"

#if defined(__SANITIZE_ADDRESS__)
#include <sanitizer/asan_interface.h>
#endif

namespace qmtest {

/// Binds `value` to the Ruby global `name` ("$x") and answers it.
inline VALUE let(const char* name, VALUE value) {
  rb_gv_set(name, value);
  return value;
}

/// Whether Ruby code evaluates to something truthy; a raise fails the test.
inline bool truthy(const char* ruby_code) { return RTEST(eval(ruby_code)); }

/// How many rounds a property loop runs: `normal`, or a tenth (at least 5) under GC.stress,
/// where every allocation collects and the point is the collector's timing, not more values.
inline int rounds(int normal) {
  static const bool stress = RTEST(eval("GC.stress"));
  return stress ? (normal / 10 > 5 ? normal / 10 : 5) : normal;
}

/// A raise inside the interpreter longjmps past our instrumented frames without
/// AddressSanitizer seeing it (the interpreter is not instrumented), so their redzones stay
/// poisoned below the landing frame and a later, deeper frame trips over them. Clears the
/// shadow of the stack below the caller.
[[gnu::noinline]] inline void forget_abandoned_frames() {
#if defined(__SANITIZE_ADDRESS__)
  constexpr std::uintptr_t SPAN = 512 * 1024;
  char here = 0;
  auto top = reinterpret_cast<std::uintptr_t>(&here);
  __asan_unpoison_memory_region(reinterpret_cast<void*>(top - SPAN), SPAN);
#endif
}

/// qmtest::raised_by, leaving the stack clean for AddressSanitizer after a raise.
template <class F>
std::string raises(F&& f) {
  std::string error = raised_by(static_cast<F&&>(f));
  if (!error.empty()) forget_abandoned_frames();
  return error;
}

/// The raw bytes of a Ruby String.
inline std::string bytes_of(VALUE string) {
  return std::string(RSTRING_PTR(string), static_cast<size_t>(RSTRING_LEN(string)));
}

}  // namespace qmtest

#endif
