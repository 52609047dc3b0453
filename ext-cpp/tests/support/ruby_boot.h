#ifndef QUILLMARK_TESTS_SUPPORT_RUBY_BOOT_H
#define QUILLMARK_TESTS_SUPPORT_RUBY_BOOT_H

// Start-up steps shared by every program that embeds the interpreter to drive the library
// (the test harness, the benchmarks, the fuzz targets). The caller runs ruby_sysinit,
// RUBY_INIT_STACK and ruby_init itself, in its outermost frame: the interpreter takes that
// frame as the base of the stack it scans for live objects.

#include <cstring>
#include <string>
#include <type_traits>

#include <quillmark/ruby/ruby_handles.h>
#include <quillmark/ruby/ruby_lib.h>

#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QMBOOT_ASAN 1
#endif
#endif
#if defined(__SANITIZE_ADDRESS__) || defined(QMBOOT_ASAN)
#define QMBOOT_ASAN 1
#include <pthread.h>
#include <sanitizer/asan_interface.h>
#endif

namespace qmboot {

/// Processes options as `ruby --disable-gems -e ""` would: sets the load path and loads the
/// core methods written in Ruby (GC.compact, GC.stress= and others), which ruby_init alone
/// leaves out. Without gems: their NameError#message decorations walk Ruby frames that an
/// exception raised from C under rb_protect does not have. The empty script is never run.
inline void process_options(const char* program_name) {
  char program[64] = {};
  std::strncpy(program, program_name, sizeof program - 1);
  char no_gems[] = "--disable-gems";
  char execute[] = "-e";
  char script[] = "";
  char* options[] = {program, no_gems, execute, script};
  ruby_options(4, options);
}

/// Requires the host stand-in from its folder; answers rb_protect's state (0: loaded).
inline int load_host(const char* host_ruby_dir) {
  std::string const code =
      std::string("$LOAD_PATH.unshift('") + host_ruby_dir + "'); require 'sketchup'";
  int state = 0;
  rb_eval_string_protect(code.c_str(), &state);
  return state;
}

/// Runs f() under rb_protect; answers the state (0: it returned). No C++ object with a
/// destructor may be live inside f across a call that can raise.
template <class F>
int protect(F&& f) {
  using Callable = std::remove_reference_t<F>;
  int state = 0;
  rb_protect(
      [](VALUE data) -> VALUE {
        (*reinterpret_cast<Callable*>(data))();
        return Qnil;
      },
      reinterpret_cast<VALUE>(&f), &state);
  return state;
}

/// Fills the handle cache under rb_protect; answers the state (0: filled).
inline int fill_cache() {
  return protect([] { RU::init_ruby(); });
}

/// Call where a raise was caught. A raise is a longjmp that AddressSanitizer is not told
/// about: the instrumented frames it skipped never ran their epilogues, so their redzones
/// stay poisoned, and frames built there later trip over them. Everything below the caller
/// is dead, so it is cleared.
inline void unpoison_below_here() {
#if defined(QMBOOT_ASAN)
  pthread_attr_t attributes;
  if (pthread_getattr_np(pthread_self(), &attributes) != 0) return;
  void* lowest = nullptr;
  std::size_t size = 0;
  pthread_attr_getstack(&attributes, &lowest, &size);
  pthread_attr_destroy(&attributes);
  char here;
  char* const low = static_cast<char*>(lowest);
  if (low != nullptr && low < &here) __asan_unpoison_memory_region(low, &here - low);
#endif
}

}  // namespace qmboot

#endif
