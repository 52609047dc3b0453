#!/usr/bin/env bash
# Sets up a fresh machine, builds the bundle and runs the demo twice: a Ruby process with
# the host stand-in asks Quillmark to focus the host's main window, first on our simulated
# desktop (examples/demo.rb), then among real AppKit windows (GNUstep's) on a virtual X
# display that this script starts and stops (examples/demo_gnustep.rb), with screenshots
# of that display before and after.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
"$root/scripts/setup.sh" gnustep
# shellcheck source=xvfb.sh
. "$root/scripts/xvfb.sh"

# QUILLMARK_RUBY=/path/to/bin/ruby runs the demo in that interpreter instead of `ruby`.
ruby="${QUILLMARK_RUBY:-ruby}"

build="$root/build/demo"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DQUILLMARK_BUILD_TESTS=OFF \
  -DRUBY_EXECUTABLE="$(command -v "$ruby")" >/dev/null
cmake --build "$build" -j"$(nproc)" --target bin_Quillmark >/dev/null
echo "=== On the simulated desktop"
echo
QUILLMARK_DESKTOP_LIB="$(find "$build" -name 'libquillmark_desktop.so' | head -n 1)" \
  "$ruby" -I "$build/lib" "$root/examples/demo.rb"

build="$root/build/demo-gnustep"
cmake -S "$root" -B "$build" -DCMAKE_BUILD_TYPE=Release -DQUILLMARK_BUILD_TESTS=OFF \
  -DQUILLMARK_DESKTOP=gnustep -DRUBY_EXECUTABLE="$(command -v "$ruby")" >/dev/null
cmake --build "$build" -j"$(nproc)" --target bin_Quillmark >/dev/null
start_xvfb
shots="$build/screenshots"
rm -rf "$shots"
echo "=== Among GNUstep's AppKit windows on the virtual display $DISPLAY"
echo
# GNUstep reports the X errors of a display without a window manager on stderr; they are
# kept in a log rather than shown.
QUILLMARK_DESKTOP_LIB="$(find "$build" -name 'libquillmark_desktop_gnustep.so' | head -n 1)" \
  "$ruby" -I "$build/lib" "$root/examples/demo_gnustep.rb" "$shots" 2>"$build/gnustep.log" |
  grep -v '^Screenshot ' || { cat "$build/gnustep.log" >&2; exit 1; }
for name in before after; do
  pnmtopng "$shots/$name.ppm" >"$shots/$name.png"
  rm "$shots/$name.ppm"
  echo "Screenshot $name: $shots/$name.png"
done
