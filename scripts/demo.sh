#!/usr/bin/env bash
# Sets up a fresh machine, builds the bundle and runs the demo: a Ruby process with the host
# stand-in and a simulated desktop asks Quillmark to focus the host's main window.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/setup.sh"

build="$root/build/demo"
# QUILLMARK_RUBY=/path/to/bin/ruby runs the demo in that interpreter instead of `ruby`.
ruby="${QUILLMARK_RUBY:-ruby}"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DQUILLMARK_BUILD_TESTS=OFF \
  -DRUBY_EXECUTABLE="$(command -v "$ruby")" >/dev/null
cmake --build "$build" -j"$(nproc)" --target bin_Quillmark >/dev/null
QUILLMARK_DESKTOP_LIB="$(find "$build" -name 'libquillmark_desktop.so' | head -n 1)" \
  "$ruby" -I "$build/lib" "$root/examples/demo.rb"
