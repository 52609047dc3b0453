#!/usr/bin/env bash
# Builds the benchmarks with the project's release flags and runs them beside their peers.
#
#   scripts/bench.sh [--native] [geom|utils|ruby|entities]... [-- benchmark flags]
#
# --native adds -march=native (ours keeps -ffp-contract=off) in a separate build folder.
# Without names, every benchmark binary runs. Results: bench/README.md.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/setup.sh" bench

flags=""
suffix=""
names=()
extra=()
while [ $# -gt 0 ]; do
  case "$1" in
    --native) flags="-march=native"; suffix="-native" ;;
    --) shift; extra=("$@"); break ;;
    *) names+=("$1") ;;
  esac
  shift
done
[ ${#names[@]} -gt 0 ] || names=(geom utils ruby entities)

build="$root/build/bench$suffix"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DQUILLMARK_BUILD_BENCH=ON \
  -DQUILLMARK_BUILD_TESTS=OFF -DCMAKE_CXX_FLAGS="$flags" >/dev/null
for name in "${names[@]}"; do
  cmake --build "$build" -j"$(nproc)" --target "bench_$name" >/dev/null
  echo "== bench_$name ($(uname -m), $(nproc) cores, flags: release ${flags})"
  "$build/bench/bench_$name" "${extra[@]}"
done
