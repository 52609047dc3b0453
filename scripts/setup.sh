#!/usr/bin/env bash
# Installs what a fresh Debian 12 lacks to build and test Quillmark: compiler, CMake,
# Ruby 3.1 with its headers, GoogleTest, and the tools the tests call (nm, readelf,
# valgrind for the leak check of the Ruby bridge, clang for the host platform's configuration).
# Extra package sets: `setup.sh bench` adds the benchmark peers (and matplotlib for
# bench/plot_scaling.py), `setup.sh fuzz` clang,
# `setup.sh clang` clang with libc++ (and GoogleTest's sources), `setup.sh lint` clang-tidy
# and clang-format, `setup.sh coverage` gcovr, `setup.sh gnustep` GNUstep's AppKit with
# Objective-C, a virtual X server and netpbm (the desktop over real windows, its demo and its
# screenshots).
# Installs only what is missing; safe to run again.
set -euo pipefail

# clang and LLVM's lipo: the configuration check for the host's platform drives them.
packages=(g++ make cmake binutils pkg-config ruby ruby-dev libgtest-dev libgmock-dev valgrind clang llvm)
for extra in "$@"; do
  case "$extra" in
    bench) packages+=(libbenchmark-dev libeigen3-dev libglm-dev libtbb-dev libthread-pool-dev
                      python3-matplotlib) ;;
    fuzz) packages+=(clang libclang-rt-14-dev) ;;
    clang) packages+=(clang libc++-dev libc++abi-dev googletest) ;;
    lint) packages+=(clang clang-tidy clang-format) ;;
    coverage) packages+=(gcovr) ;;
    gnustep) packages+=(gobjc libgnustep-gui-dev gnustep-back0.29-cairo xvfb libx11-dev
                        libxfixes-dev netpbm) ;;
    *) echo "setup.sh: unknown package set '$extra'" >&2; exit 2 ;;
  esac
done

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
sudo=""
[ "$(id -u)" -eq 0 ] || sudo="sudo"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -qq
$sudo apt-get install -y -qq --no-install-recommends "${missing[@]}" >/dev/null
