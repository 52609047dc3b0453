#!/usr/bin/env bash
# Sets up a fresh machine, then builds everything from scratch and runs every test, four
# times: a normal build (g++), AddressSanitizer + UndefinedBehaviorSanitizer,
# ThreadSanitizer, and clang++ with libc++; then the static checks (clang-tidy,
# clang-format) and a short burst of each fuzz target (clang, see scripts/fuzz.sh).
# Any failure stops the run with a non-zero exit.
#
#   scripts/test.sh [normal|asan|tsan|clang|lint|fuzz]...   (default: all, in that order)
#
# QUILLMARK_RUBY=/path/to/bin/ruby builds and tests for that interpreter instead of the
# `ruby` on the path (it must be built with --enable-shared).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
jobs="$(nproc)"
passes=("$@")
[ ${#passes[@]} -gt 0 ] || passes=(normal asan tsan clang lint fuzz)
extras=()
for pass in "${passes[@]}"; do
  case "$pass" in clang) extras+=(clang) ;; lint) extras+=(lint) ;; fuzz) extras+=(fuzz) ;; esac
done
"$root/scripts/setup.sh" ${extras[@]+"${extras[@]}"}

run_pass() {
  local name="$1" sanitize="$2" labels="$3" targets="${4:-}"
  shift 4
  local build="$root/build/test-$name"
  echo "== $name: configure and build (${build#$root/})"
  rm -rf "$build"
  mkdir -p "$build"
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILLMARK_WERROR=ON \
    -DQUILLMARK_SANITIZE="$sanitize" ${QUILLMARK_RUBY:+-DRUBY_EXECUTABLE="$QUILLMARK_RUBY"} \
    "$@" >"$build/configure.log" 2>&1 ||
    { cat "$build/configure.log"; return 1; }
  cmake --build "$build" -j"$jobs" ${targets:+--target $targets}
  echo "== $name: tests"
  ctest --test-dir "$build" --output-on-failure -j"$jobs" ${labels:+-L "$labels"}
}

for pass in "${passes[@]}"; do
  case "$pass" in
    normal) run_pass normal "" "" "" ;;
    asan) run_pass asan "address,undefined" "" "" ;;
    # The threaded code and the plain C++ around it; the interpreter itself is not built
    # for ThreadSanitizer, so the Ruby-facing tests run in the other two passes.
    tsan) run_pass tsan "thread" "tsan" "utils_tests geom_tests extension_tests" ;;
    # The host's platform builds with clang and libc++. GoogleTest is built from Debian's
    # sources for libc++ (its packaged binaries are for libstdc++), and DWARF 4 keeps the
    # debug information readable by the valgrind leak check.
    clang)
      gtest="$("$root/scripts/gtest-libcxx.sh")"
      flags="-stdlib=libc++ -gdwarf-4"
      run_pass clang "" "" "" -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
        -DCMAKE_PREFIX_PATH="$gtest" \
        -DCMAKE_C_FLAGS=-gdwarf-4 -DCMAKE_CXX_FLAGS="$flags" \
        -DCMAKE_EXE_LINKER_FLAGS=-stdlib=libc++ -DCMAKE_SHARED_LINKER_FLAGS=-stdlib=libc++ \
        -DCMAKE_MODULE_LINKER_FLAGS=-stdlib=libc++ ;;
    lint) "$root/scripts/lint.sh" ;;
    # Seconds per target: a smoke test of the targets and of the newest code, not a search.
    fuzz) rm -rf "$root/build/fuzz"; "$root/scripts/fuzz.sh" --runs 20000 --time 10 ;;
    *) echo "test.sh: unknown pass '$pass'" >&2; exit 2 ;;
  esac
done
echo "== all passes green: ${passes[*]}"
