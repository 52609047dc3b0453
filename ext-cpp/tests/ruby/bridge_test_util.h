#ifndef QUILLMARK_TESTS_RUBY_BRIDGE_TEST_UTIL_H
#define QUILLMARK_TESTS_RUBY_BRIDGE_TEST_UTIL_H

// Small helpers for the conversion tests: values cross into Ruby code through global
// variables, which also keeps them marked while the test holds them.

#include <string>

#include "embedded_ruby.h"

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

/// What the interpreter itself raises, as "Class: message", when `method` is called on the
/// value of `receiver` from Ruby code. Where a conversion passes the interpreter's own error
/// through, tests compare with this: the wording differs between versions (2.2 to 3.4),
/// while the library's own messages are compared literally.
inline std::string interpreter_error(const char* receiver, const char* method) {
  return raised(("(" + std::string(receiver) + ")." + method).c_str());
}

/// What rb_num2dbl raises for the value of `ruby_code`, in this interpreter's words.
inline std::string float_conversion_error(const char* ruby_code) {
  VALUE value = eval(ruby_code);
  return raised_by([&] { rb_num2dbl(value); });
}

/// The raw bytes of a Ruby String.
inline std::string bytes_of(VALUE string) {
  return std::string(RSTRING_PTR(string), static_cast<size_t>(RSTRING_LEN(string)));
}

}  // namespace qmtest

#endif
