#!/usr/bin/env bash
# Builds the libFuzzer targets under fuzz/ with clang (AddressSanitizer + UBSan) and runs
# each for a fixed number of executions over a seed corpus generated into the build folder.
# A finding (crash, sanitizer report, broken invariant) makes the run exit non-zero
# and leaves the input as build/fuzz/findings/<target>/crash-*.
#
#   scripts/fuzz.sh [--runs N] [--time S] [target...]   (default: 100000 runs, every target)
#   --time S also stops each target after S seconds, whichever limit comes first.
#   targets: geom_fuzz containers_fuzz strings_fuzz
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/setup.sh" fuzz

runs=100000
seconds=0
targets=()
while [ $# -gt 0 ]; do
  case "$1" in
    --runs) runs="$2"; shift 2 ;;
    --runs=*) runs="${1#--runs=}"; shift ;;
    --time) seconds="$2"; shift 2 ;;
    --time=*) seconds="${1#--time=}"; shift ;;
    -h|--help) sed -n '2,9p' "$0"; exit 0 ;;
    -*) echo "fuzz.sh: unknown option '$1'" >&2; exit 2 ;;
    *) targets+=("$1"); shift ;;
  esac
done
[ ${#targets[@]} -gt 0 ] || targets=(geom_fuzz containers_fuzz strings_fuzz)

build="$root/build/fuzz"
mkdir -p "$build"
echo "== fuzz: configure and build (${build#$root/})"
CC=clang CXX=clang++ cmake -S "$root/fuzz" -B "$build" \
  ${QUILLMARK_RUBY:+-DRUBY_EXECUTABLE="$QUILLMARK_RUBY"} >"$build/configure.log" 2>&1 ||
  { cat "$build/configure.log"; exit 1; }
cmake --build "$build" -j"$(nproc)" --target "${targets[@]}"

# A few seeds per target, the same on every machine: pseudo-random bytes from fixed seeds
# (perl is part of every Debian system) and, for the geometry, runs of the tag bytes that
# pick the special doubles.
seed_corpus() {
  local target="$1" dir="$2"
  mkdir -p "$dir"
  local n
  for n in 1 2 3 4 5 6 7 8; do
    perl -e 'srand($ARGV[0]); print map { chr(int(rand(256))) } 1 .. $ARGV[1]' \
      "$n" "$((n * 48))" >"$dir/random-$n"
  done
  if [ "$target" = geom_fuzz ]; then
    for n in 0 1 2 3; do
      perl -e 'print chr($ARGV[0]), map { chr(128 + ($_ * 7 + $ARGV[0]) % 128) } 1 .. 240' \
        "$n" >"$dir/special-$n"
    done
  fi
}

status=0
for target in "${targets[@]}"; do
  corpus="$build/corpus/$target"
  findings="$build/findings/$target"
  [ -d "$corpus" ] || seed_corpus "$target" "$corpus"
  mkdir -p "$findings"
  log="$build/$target.log"
  echo "== fuzz: $target, $runs runs (log: ${log#$root/})"
  if (cd "$findings" && "$build/$target" -runs="$runs" -max_total_time="$seconds" -max_len=4096 -print_final_stats=1 \
        "$corpus" >"$log" 2>&1); then
    grep -E '^Done|stat::number_of_executed_units' "$log" | head -2
  else
    echo "fuzz.sh: $target found a problem:" >&2
    grep -E 'runtime error|invariant broken|ERROR|SUMMARY' "$log" | head -10 >&2
    ls "$findings" >&2
    status=1
  fi
done
exit $status
