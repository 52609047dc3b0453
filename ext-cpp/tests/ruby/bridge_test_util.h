#ifndef QUILLMARK_TESTS_RUBY_BRIDGE_TEST_UTIL_H
#define QUILLMARK_TESTS_RUBY_BRIDGE_TEST_UTIL_H

// Small helpers for the conversion tests: values cross into Ruby code through global
// variables, which also keeps them marked while the test holds them.

#include <cstdint>
#include <string>
#include <type_traits>

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

/// qmtest::raised_by, with the stack cleared for AddressSanitizer as soon as a raise lands:
/// before anything (the exception's message, a collection under GC.stress) can run a
/// frame over the stale poison.
template <class F>
std::string raises(F&& f) {
  using Callable = std::remove_reference_t<F>;
  auto trampoline = [](VALUE data) -> VALUE {
    (*reinterpret_cast<Callable*>(data))();
    return Qnil;
  };
  int state = 0;
  rb_protect(trampoline, reinterpret_cast<VALUE>(&f), &state);
  if (state != 0) forget_abandoned_frames();
  return take_exception(state);
}

/// The raw bytes of a Ruby String.
inline std::string bytes_of(VALUE string) {
  return std::string(RSTRING_PTR(string), static_cast<size_t>(RSTRING_LEN(string)));
}

}  // namespace qmtest

#endif
