#!/usr/bin/env bash
# Static checks: clang-tidy over ext-cpp/source (.clang-tidy: every finding is an error) and
# clang-format over every C++ file of the project (.clang-format: any difference fails).
#
#   scripts/lint.sh          check
#   scripts/lint.sh --fix    rewrite the files clang-format would change
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
cd "$root"
"$root/scripts/setup.sh" lint

mapfile -t sources < <(git ls-files '*.c' '*.cpp' '*.h' '*.m' | grep -E '^(ext-cpp|bench|fuzz|examples)/')
if [ "${1:-}" = "--fix" ]; then
  clang-format -i "${sources[@]}"
  exit 0
fi

echo "== lint: clang-format (${#sources[@]} files)"
clang-format --dry-run --Werror "${sources[@]}"

echo "== lint: clang-tidy (ext-cpp/source)"
build="$root/build/lint"
mkdir -p "$build"
cmake -S "$root" -B "$build" -DQUILLMARK_BUILD_TESTS=OFF -DCMAKE_EXPORT_COMPILE_COMMANDS=ON \
  ${QUILLMARK_RUBY:+-DRUBY_EXECUTABLE="$QUILLMARK_RUBY"} >"$build.log" 2>&1 ||
  { cat "$build.log"; exit 1; }
# run-clang-tidy answers non-zero when any file has a finding (all are errors here).
run-clang-tidy -p "$build" -quiet -j "$(nproc)" "$root/ext-cpp/source/" >"$build/tidy.log" 2>&1 ||
  { grep -E '(warning|error):' "$build/tidy.log" | grep -v 'warnings generated' | sort -u; \
    echo "clang-tidy: findings above (full log: ${build#$root/}/tidy.log)"; exit 1; }
echo "== lint: clean"
