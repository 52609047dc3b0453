#ifndef QUILLMARK_TESTS_SUPPORT_RUBY_BOOT_H
#define QUILLMARK_TESTS_SUPPORT_RUBY_BOOT_H

// Start-up steps shared by every program that embeds the interpreter to drive the library
// (the test harness, the benchmarks, the fuzz targets). The caller runs ruby_sysinit,
// RUBY_INIT_STACK and ruby_init itself, in its outermost frame: the interpreter takes that
// frame as the base of the stack it scans for live objects.

#include <cstring>
#include <string>

#include <quillmark/ruby/ruby_handles.h>
#include <quillmark/ruby/ruby_lib.h>

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

/// Fills the handle cache under rb_protect; answers the state (0: filled).
inline int fill_cache() {
  int state = 0;
  rb_protect(
      [](VALUE) -> VALUE {
        RU::init_ruby();
        return Qnil;
      },
      Qnil, &state);
  return state;
}

}  // namespace qmboot

#endif
