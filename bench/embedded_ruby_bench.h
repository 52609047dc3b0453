#ifndef QUILLMARK_BENCH_EMBEDDED_RUBY_BENCH_H
#define QUILLMARK_BENCH_EMBEDDED_RUBY_BENCH_H

// main() for benchmark binaries that call into the interpreter: starts it, loads the host
// stand-in (QUILLMARK_HOST_RUBY_DIR, set by the target), fills the handle cache and runs the
// registered benchmarks on the interpreter's thread.

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>

#include "ruby_boot.h"

namespace qmbench {

/// Evaluates Ruby code; a raise ends the process, since a benchmark without its fixture
/// measures nothing.
inline VALUE eval_or_die(const char* code) {
  int state = 0;
  VALUE result = rb_eval_string_protect(code, &state);
  if (state != 0) {
    std::fprintf(stderr, "benchmark fixture `%s` raised\n", code);
    std::exit(2);
  }
  return result;
}

/// Call from main and return its result. Everything Ruby runs inside this frame, which is
/// why the interpreter's stack base is taken here.
inline int run_in_ruby(int argc, char** argv, const char* program_name) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

  ruby_sysinit(&argc, &argv);
  RUBY_INIT_STACK;
  ruby_init();
  qmboot::process_options(program_name);
  if (qmboot::load_host(QUILLMARK_HOST_RUBY_DIR) != 0) {
    std::fprintf(stderr, "%s: loading the host stand-in failed\n", program_name);
    return 2;
  }
  if (qmboot::fill_cache() != 0) {
    std::fprintf(stderr, "%s: filling the handle cache failed\n", program_name);
    return 2;
  }

  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  ruby_cleanup(0);
  return 0;
}

}  // namespace qmbench

#endif
