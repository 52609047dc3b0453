#!/usr/bin/env bash
# Sets up a fresh machine, then builds everything from scratch and runs every test, three
# times: a normal build, AddressSanitizer + UndefinedBehaviorSanitizer, ThreadSanitizer;
# then the desktop over GNUstep's AppKit on a virtual X display, plain and with ASan+UBSan;
# then a short burst of each fuzz target (clang, see scripts/fuzz.sh).
# Any failure stops the run with a non-zero exit.
#
#   scripts/test.sh [normal|asan|tsan|gnustep|gnustep-asan|fuzz]...
#                   (default: all six, in that order)
#
# QUILLMARK_RUBY=/path/to/bin/ruby builds and tests for that interpreter instead of the
# `ruby` on the path (it must be built with --enable-shared).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/setup.sh"
# shellcheck source=xvfb.sh
. "$root/scripts/xvfb.sh"

jobs="$(nproc)"
passes=("$@")
[ ${#passes[@]} -gt 0 ] || passes=(normal asan tsan gnustep gnustep-asan fuzz)

run_pass() {
  local name="$1" sanitize="$2" labels="$3" targets="${4:-}" desktop="${5:-simulation}"
  local build="$root/build/test-$name"
  echo "== $name: configure and build (${build#$root/})"
  rm -rf "$build"
  mkdir -p "$build"
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=RelWithDebInfo -DQUILLMARK_WERROR=ON \
    -DQUILLMARK_SANITIZE="$sanitize" -DQUILLMARK_DESKTOP="$desktop" \
    ${QUILLMARK_RUBY:+-DRUBY_EXECUTABLE="$QUILLMARK_RUBY"} \
    >"$build/configure.log" 2>&1 ||
    { cat "$build/configure.log"; return 1; }
  cmake --build "$build" -j"$jobs" ${targets:+--target $targets}
  echo "== $name: tests"
  ctest --test-dir "$build" --output-on-failure -j"$jobs" ${labels:+-L "$labels"}
}

for pass in "${passes[@]}"; do
  case "$pass" in
    normal) run_pass normal "" "" ;;
    asan) run_pass asan "address,undefined" "" ;;
    # The threaded code and the plain C++ around it; the interpreter itself is not built
    # for ThreadSanitizer, so the Ruby-facing tests run in the other two passes.
    tsan) run_pass tsan "thread" "tsan" "utils_tests geom_tests extension_tests" ;;
    # Real AppKit windows (GNUstep) on an Xvfb this script starts and stops; the bundle and
    # the tests of that configuration only (the rest is the same code as in the passes above).
    gnustep | gnustep-asan)
      "$root/scripts/setup.sh" gnustep
      [ -n "${XVFB_PID:-}" ] || start_xvfb
      sanitize=""
      [ "$pass" = gnustep ] || sanitize="address,undefined"
      run_pass "$pass" "$sanitize" "gnustep" "bin_Quillmark gnustep_tests" gnustep ;;
    # Seconds per target: a smoke test of the targets and of the newest code, not a search.
    fuzz) rm -rf "$root/build/fuzz"; "$root/scripts/fuzz.sh" --runs 20000 --time 10 ;;
    *) echo "test.sh: unknown pass '$pass'" >&2; exit 2 ;;
  esac
done
echo "== all passes green: ${passes[*]}"
