#ifndef QUILLMARK_TESTS_SUPPORT_EMBEDDED_RUBY_H
#define QUILLMARK_TESTS_SUPPORT_EMBEDDED_RUBY_H

// GoogleTest binaries linked with quillmark_test_ruby run inside a real interpreter: its
// main() starts Ruby, loads the host stand-in, fills the handle cache and then runs the
// tests on the interpreter's thread. QM_GC_STRESS=1 sets GC.stress for the whole run;
// QM_GC_COMPACT=1 compacts the heap (and verifies references) after every test, where the
// interpreter can; QM_HOST=none starts bare: no host stand-in, the cache left unfilled.

#include <string>

#include "ruby_boot.h"

namespace qmtest {

/// A symbol interned just before the harness filled the handle cache: any ID greater than it
/// was first interned by the cache itself.
extern ID marker_before_init;
/// False when the run started without the host stand-in (QM_HOST=none).
extern bool host_loaded;

/// Evaluates Ruby code. A raise fails the current test with "Class: message" and gives nil.
VALUE eval(const char* ruby_code);

/// "" if the code ran without raising, otherwise "Class: message" of what it raised.
std::string raised(const char* ruby_code);

/// "Class: message" of the pending exception ($!) after rb_protect reported a non-zero
/// state, and clears it; "" for state 0.
std::string take_exception(int state);

/// Compacts the heap and has the interpreter check every reference into it; false, doing
/// nothing, on an interpreter that cannot compact (before 2.7).
bool compact_and_verify();

/// Runs f() under rb_protect: "" if it returned, "Class: message" if it raised. No C++
/// object with a destructor may be live inside f across a call that can raise.
template <class F>
std::string raised_by(F&& f) {
  return take_exception(qmboot::protect(f));
}

}  // namespace qmtest

#endif
