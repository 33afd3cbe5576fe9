#!/bin/sh
# compilers.sh [NAME...]: tries the rows of the table below, by default all: programs that use the
# release build, and whole builds of the library with the quick tests, by other compilers, standards
# and C++ libraries.
set -eu
cd "$(dirname "$0")/.."
work="$PWD/build/compilers"
tests="$PWD/Modules/TQFoundation/Tests/packaging"
multiarch="$(c++ -print-multiarch)"
mkdir -p "$work"

say() { printf '== %s\n' "$*"; }

# installed BUILD: installs that build's library and headers, if it is not installed yet, and sets lib.
installed() {
  prefix="$work/installed/$(basename "$1")"
  lib="$prefix/lib/$multiarch"
  [ ! -e "$lib/pkgconfig" ] || return 0
  cmake --install "$1" --prefix "$prefix" --component Runtime >/dev/null &&
  cmake --install "$1" --prefix "$prefix" --component Development >/dev/null
}

# release: builds and installs the library as users get it.
release() {
  [ -e "$work/installed/release" ] && lib="$work/installed/release/lib/$multiarch" && return 0
  cmake --preset release >/dev/null && cmake --build --preset release --target TQFoundation &&
  installed "$PWD/build/release"
}

# compile NAME COMPILER FLAGS...: a program with all headers and an instance of each template, as a
# user compiles it with warnings, and one that is linked and run.
compile() {
  name="$1"; compiler="$2"; shift 2
  flags="$(PKG_CONFIG_PATH="$lib/pkgconfig" pkg-config --cflags --libs TQFoundation)"
  # shellcheck disable=SC2086  # a list of words
  "$compiler" "$@" -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -fsyntax-only \
    "$tests/layouts.cpp" $flags -Wno-unused-command-line-argument -Wno-unused-const-variable &&
  "$compiler" "$@" -O2 -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror \
    "$tests/consumer/main.cpp" -o "$work/$name" $flags -Wl,-rpath,"$lib" &&
  "$work/$name"
}

consumer() { release && compile "$@"; }

# refused NAME COMPILER FLAGS...: a program with another C++ library than that of libTQFoundation.so
# does not link. The linker names what the program uses.
unlinkable() {
  ! compile "$@" 2>"$work/$1.txt" && grep -q "undefined reference.*libraryUses$1" "$work/$1.txt"
}
refused() { release && unlinkable "$@"; }
refusedByDebug() { installed "$work/debug-containers" && unlinkable "$@"; }

# googletest PREFIX COMPILER FLAGS...: builds the tests' framework, which has containers in its
# interface.
googletest() {
  prefix="$1"; compiler="$2"; shift 2
  cmake -S /usr/src/googletest -B "$prefix-build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$*" -DCMAKE_INSTALL_PREFIX="$prefix" \
    >/dev/null &&
  cmake --build "$prefix-build" --target install >/dev/null
}

# whole NAME COMPILER FLAGS...: builds the library and its tests, and runs the quick ones that depend
# on the compiler. libc++ 19 has std::jthread, which tests use, behind a flag. The packaged fmt is
# built for libstdc++; the gdb printers know its plain containers only. Without __SSE2__ the R-tree is
# compiled as for other processors.
whole() {
  name="$1"; compiler="$2"; shift 2
  gtest=""
  left_out="rooms|heavy_headers|documentation.*|callbacks\.entry_points|samples"
  case "$*" in *libc++* | *_GLIBCXX_DEBUG*)
    gtest="$work/$name-gtest"
    left_out="$left_out|debugging\.printers"
    googletest "$gtest" "$compiler" "$@" || return 1 ;;
  esac
  cmake -S . -B "$work/$name" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE= \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$*" -DCMAKE_PREFIX_PATH="$gtest" \
    -DTQ_BUILD_TOOLS=OFF -DTQ_CHECK_HEADERS=OFF -DTQ_UNITE_FOLDERS=ALL >/dev/null &&
  cmake --build "$work/$name" &&
  ctest --test-dir "$work/$name" -j "$(nproc)" -L quick --output-on-failure \
    -E "^($left_out)\$"
}

rm -rf "$work/installed"
asked=" $* "
passed=0
failed=0
while read -r kind name compiler flags; do
  case "$asked" in "  " | *" $name "*) ;; *) continue ;; esac
  say "$name: $kind, $compiler $flags"
  # shellcheck disable=SC2086  # a list of words
  if "$kind" "$name" "$compiler" $flags </dev/null; then passed=$((passed + 1))
  else
    failed=$((failed + 1))
    say "FAILED: $name"
  fi
done <<'END'
consumer       gcc12-20          g++-12     -std=c++20
consumer       gcc12-23          g++-12     -std=c++23 -D_GLIBCXX_ASSERTIONS
consumer       clang16-20        clang++-16 -std=c++20
consumer       clang16-23        clang++-16 -std=c++2b
consumer       clang19-20        clang++-19 -std=c++20
consumer       clang19-23        clang++-19 -std=c++23
refused        DebugLibstdcxx    g++-12     -std=c++20 -D_GLIBCXX_DEBUG
refused        Libcxx            clang++-19 -std=c++20 -stdlib=libc++
whole          clang16           clang++-16 -O1
whole          clang19           clang++-19 -O1
whole          libcxx            clang++-19 -stdlib=libc++ -fexperimental-library -DFMT_HEADER_ONLY
whole          debug-containers  g++-12     -D_GLIBCXX_DEBUG -U__SSE2__
refusedByDebug PlainLibstdcxx    g++-12     -std=c++20
END
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
