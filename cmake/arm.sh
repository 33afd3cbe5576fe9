#!/bin/sh
# arm.sh PACKAGE...: builds the library for 64-bit ARM, with clang, and runs the quick tests under
# qemu's user emulation. The packages, libraries that the build needs, are unpacked from Debian's arm64
# archive; nothing is installed on this machine.
set -eu
cd "$(dirname "$0")/.."
work="$PWD/build/arm"
root="$work/root"
if [ ! -e "$root.complete" ]; then
  rm -rf "$root"
  mkdir -p "$work"
  cmake/new-root.sh "$root" --variant=extract --architectures=arm64 \
    --include="libc6-dev $(printf '%s ' libstdc++-12-dev "$@")"
  # Links to absolute paths would lead to this machine's files.
  find "$root/usr/lib" "$root/lib/" -lname '/*' | while read -r link; do
    ln -snfr "$root$(readlink "$link")" "$link"
  done
  touch "$root.complete"
fi

triplet=aarch64-linux-gnu
export PKG_CONFIG_SYSROOT_DIR="$root" PKG_CONFIG_PATH=
export PKG_CONFIG_LIBDIR="$root/usr/lib/$triplet/pkgconfig:$root/usr/share/pkgconfig"
cmake -S . -B "$work/build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE="-O1 -DNDEBUG" \
  -DCMAKE_SYSTEM_NAME=Linux -DCMAKE_SYSTEM_PROCESSOR=aarch64 -DCMAKE_LIBRARY_ARCHITECTURE=$triplet \
  -DCMAKE_CXX_COMPILER=clang++-16 -DCMAKE_CXX_COMPILER_TARGET=$triplet -DCMAKE_SYSROOT="$root" \
  -DCMAKE_FIND_ROOT_PATH="$root" -DCMAKE_FIND_ROOT_PATH_MODE_PROGRAM=NEVER \
  -DCMAKE_FIND_ROOT_PATH_MODE_LIBRARY=ONLY -DCMAKE_FIND_ROOT_PATH_MODE_INCLUDE=ONLY \
  -DCMAKE_FIND_ROOT_PATH_MODE_PACKAGE=ONLY \
  -DCMAKE_CROSSCOMPILING_EMULATOR="qemu-aarch64-static;-L;$root" -DTQ_BUILD_TOOLS=OFF \
  -DTQ_CHECK_HEADERS=OFF -DTQ_UNITE_FOLDERS=ALL >/dev/null
cmake --build "$work/build"

# Left out:
unrelated='rooms|heavy_headers|documentation|samples$|callbacks\.entry_points|mistakes\.'  # to the processor
tools='debugging\.|serialisation\.python|platform\.rfc3986'  # gdb and python cannot run the program in the emulator
# These start the test program again, which the kernel cannot without the emulator.
again='.*\.(OperationQueue|RunLoop|Timer|Concurrency)DeathTest\.|.*\.TQLazyVar\.StopsWithout'
again="$again|.*\.Locks\.MisuseStops|.*\.PerformanceTimer\.(StopsWithout|MultipliesAnd)"
# qemu does not report to a process that a program could not be started.
starting='.*\.ExternalTool\.ReportsWhyItDidNotEnd|samples\.Background'
ctest --test-dir "$work/build" -j "$(nproc)" -L quick --output-on-failure \
  -E "^($unrelated|$tools|$again|$starting)"
