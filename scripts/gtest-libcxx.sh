#!/usr/bin/env bash
# Builds GoogleTest from Debian's sources (/usr/src/googletest) with clang++ and libc++, once,
# into build/gtest-libcxx, and prints the install prefix to pass as CMAKE_PREFIX_PATH.
# Debian's own GoogleTest binaries are built for libstdc++ and cannot link with libc++ code.
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
out="$root/build/gtest-libcxx"
# DWARF 4: the valgrind leak check reads the test binaries this links into.
flags="-stdlib=libc++ -gdwarf-4"
if [ "$(cat "$out/flags" 2>/dev/null)" != "$flags" ] ||
   [ ! -f "$out/install/lib/cmake/GTest/GTestConfig.cmake" ]; then
  rm -rf "$out"
  mkdir -p "$out"
  cmake -S /usr/src/googletest -B "$out/build" -DCMAKE_BUILD_TYPE=RelWithDebInfo \
    -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_CXX_FLAGS="$flags" -DCMAKE_EXE_LINKER_FLAGS=-stdlib=libc++ \
    -DCMAKE_INSTALL_PREFIX="$out/install" >"$out.log" 2>&1 ||
    { cat "$out.log" >&2; exit 1; }
  cmake --build "$out/build" -j"$(nproc)" >>"$out.log" 2>&1 || { cat "$out.log" >&2; exit 1; }
  cmake --install "$out/build" >>"$out.log" 2>&1
  echo "$flags" >"$out/flags"
fi
echo "$out/install"
