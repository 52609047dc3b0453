#!/usr/bin/env bash
# Builds the whole test suite with gcc's --coverage at -O0, runs it, and summarises line and
# branch coverage per folder of ext-cpp/source/ and of the stand-ins in ext-cpp/platform/.
# The valgrind leak check and the collector-stress runs repeat the same code paths many times
# over, so they are left out (-LE "leak|gc"). So is the package test: its consumer is a
# project of its own, built without --coverage, and cannot link the instrumented libraries.
#
#   scripts/coverage.sh [--no-build]
#
# Reports in build/coverage/report/: index.html (per file, line by line), summary.txt,
# summary.json. --no-build reuses the counters of the last run.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/setup.sh" coverage

build="$root/build/coverage"
report="$build/report"
if [ "${1:-}" != "--no-build" ]; then
  rm -rf "$build"
  mkdir -p "$build"
  cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_C_FLAGS="--coverage -O0" -DCMAKE_CXX_FLAGS="--coverage -O0" \
    -DCMAKE_EXE_LINKER_FLAGS="--coverage" -DCMAKE_SHARED_LINKER_FLAGS="--coverage" \
    -DCMAKE_MODULE_LINKER_FLAGS="--coverage" >"$build/configure.log" 2>&1 ||
    { cat "$build/configure.log"; exit 1; }
  cmake --build "$build" -j"$(nproc)"
  find "$build" -name '*.gcda' -delete
  ctest --test-dir "$build" --output-on-failure -j"$(nproc)" -LE "leak|gc" \
    -E '^(extension_load|package_consumer)$'
  # gcov registers every instrumented object from a constructor of its own, so the load
  # test's count of start-up code is skipped here, as it is for the sanitized builds.
  echo "== extension_load (start-up code count skipped: instrumented build)"
  QUILLMARK_BUNDLE_DIR="$build/lib" QUILLMARK_SANITIZE=coverage \
    QUILLMARK_DESKTOP_LIB="$build/ext-cpp/platform/desktop/libquillmark_desktop.so" \
    ruby "$root/ext-cpp/tests/extension/test_load.rb"
fi

rm -rf "$report"
mkdir -p "$report"
# Branches that only exist for exception unwinding, and ones gcc proves unreachable, are
# compiler bookkeeping rather than decisions in our code.
common=(--root "$root" --object-directory "$build" --exclude-directories "$build/CMakeFiles"
        --exclude-throw-branches
        --exclude-unreachable-branches --filter "$root/ext-cpp/source/"
        --filter "$root/ext-cpp/platform/")
gcovr "${common[@]}" --json "$report/coverage.json" \
  --html-details "$report/index.html" --txt "$report/files.txt" \
  --json-summary-pretty --json-summary "$report/summary.json" >/dev/null

# Per folder: the file totals of summary.json added up by the folder they live in.
python3 - "$report/summary.json" <<'PY' | tee "$report/summary.txt"
import json, sys
folders = {}
for f in json.load(open(sys.argv[1]))["files"]:
    parts = f["filename"].split("/")
    depth = 4 if parts[:3] == ["ext-cpp", "source", "quillmark"] else 3
    key = "/".join(parts[:depth]) if parts[:2] in (["ext-cpp", "source"], ["ext-cpp", "platform"]) else parts[0]
    t = folders.setdefault(key, [0, 0, 0, 0])
    t[0] += f["line_covered"]; t[1] += f["line_total"]
    t[2] += f["branch_covered"]; t[3] += f["branch_total"]
def pct(a, b):
    return f"{100.0 * a / b:5.1f}%" if b else "    -"
print(f"{'folder':32} {'lines':>15} {'':>6} {'branches':>15} {'':>6}")
total = [0, 0, 0, 0]
for key in sorted(folders):
    t = folders[key]
    total = [a + b for a, b in zip(total, t)]
    print(f"{key:32} {t[0]:>7}/{t[1]:<7} {pct(t[0], t[1])} {t[2]:>7}/{t[3]:<7} {pct(t[2], t[3])}")
print(f"{'total':32} {total[0]:>7}/{total[1]:<7} {pct(total[0], total[1])} {total[2]:>7}/{total[3]:<7} {pct(total[2], total[3])}")
PY
echo "coverage: per file in ${report#$root/}/files.txt, line by line in ${report#$root/}/index.html"
