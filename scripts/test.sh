#!/usr/bin/env bash
# Sets up a fresh machine, then builds everything from scratch and runs every test, four
# times: a normal build (g++), AddressSanitizer + UndefinedBehaviorSanitizer,
# ThreadSanitizer, and clang++ with libc++; then the desktop over GNUstep's AppKit on a
# virtual X display, plain and with ASan+UBSan; then the static checks (clang-tidy,
# clang-format) and a short burst of each fuzz target (clang, see scripts/fuzz.sh).
# Any failure stops the run with a non-zero exit.
#
#   scripts/test.sh [normal|asan|tsan|clang|gnustep|gnustep-asan|lint|fuzz]...
#                   (default: all eight, in that order)
#
# QUILLMARK_RUBY=/path/to/bin/ruby builds and tests for that interpreter instead of the
# `ruby` on the path (it must be built with --enable-shared).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
jobs="$(nproc)"
passes=("$@")
[ ${#passes[@]} -gt 0 ] || passes=(normal asan tsan clang gnustep gnustep-asan lint fuzz)
extras=()
for pass in "${passes[@]}"; do
  case "$pass" in
    clang | lint | fuzz) extras+=("$pass") ;;
    gnustep | gnustep-asan) extras+=(gnustep) ;;
  esac
done
"$root/scripts/setup.sh" ${extras[@]+"${extras[@]}"}
# shellcheck source=xvfb.sh
. "$root/scripts/xvfb.sh"

# run_pass NAME SANITIZE LABELS TARGETS DESKTOP [cmake arguments...]
run_pass() {
  local name="$1" sanitize="$2" labels="$3" targets="$4" desktop="$5"
  shift 5
  local build="$root/build/test-$name"
  echo "== $name: configure and build (${build#$root/})"
  rm -rf "$build"
  mkdir -p "$build"
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILLMARK_WERROR=ON \
    -DQUILLMARK_SANITIZE="$sanitize" -DQUILLMARK_DESKTOP="$desktop" \
    ${QUILLMARK_RUBY:+-DRUBY_EXECUTABLE="$QUILLMARK_RUBY"} \
    "$@" >"$build/configure.log" 2>&1 ||
    { cat "$build/configure.log"; return 1; }
  cmake --build "$build" -j"$jobs" ${targets:+--target $targets}
  echo "== $name: tests"
  ctest --test-dir "$build" --output-on-failure -j"$jobs" ${labels:+-L "$labels"}
}

for pass in "${passes[@]}"; do
  case "$pass" in
    normal) run_pass normal "" "" "" simulation ;;
    asan) run_pass asan "address,undefined" "" "" simulation ;;
    # The threaded code and the plain C++ around it; the interpreter itself is not built
    # for ThreadSanitizer, so the Ruby-facing tests run in the other two passes.
    tsan) run_pass tsan "thread" "tsan" "utils_tests geom_tests extension_tests" simulation ;;
    # The host's platform builds with clang and libc++. GoogleTest is built from Debian's
    # sources for libc++ (its packaged binaries are for libstdc++), and DWARF 4 keeps the
    # debug information readable by the valgrind leak check.
    clang)
      gtest="$("$root/scripts/gtest-libcxx.sh")"
      run_pass clang "" "" "" simulation -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
        -DCMAKE_PREFIX_PATH="$gtest" \
        -DCMAKE_C_FLAGS=-gdwarf-4 -DCMAKE_CXX_FLAGS="-stdlib=libc++ -gdwarf-4" \
        -DCMAKE_EXE_LINKER_FLAGS=-stdlib=libc++ -DCMAKE_SHARED_LINKER_FLAGS=-stdlib=libc++ \
        -DCMAKE_MODULE_LINKER_FLAGS=-stdlib=libc++ ;;
    # Real AppKit windows (GNUstep) on an Xvfb this script starts and stops; the bundle and
    # the tests of that configuration only (the rest is the same code as in the passes above).
    gnustep | gnustep-asan)
      [ -n "${XVFB_PID:-}" ] || start_xvfb
      sanitize=""
      [ "$pass" = gnustep ] || sanitize="address,undefined"
      run_pass "$pass" "$sanitize" "gnustep" "bin_Quillmark gnustep_tests" gnustep ;;
    lint) "$root/scripts/lint.sh" ;;
    # Seconds per target: a smoke test of the targets and of the newest code, not a search.
    fuzz) rm -rf "$root/build/fuzz"; "$root/scripts/fuzz.sh" --runs 20000 --time 10 ;;
    *) echo "test.sh: unknown pass '$pass'" >&2; exit 2 ;;
  esac
done
echo "== all passes green: ${passes[*]}"
