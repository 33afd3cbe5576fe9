#!/bin/sh
# compilers.sh [NAME...]: tries the rows of the table below, by default all: consumers of the release
# build, and whole builds of the library with the quick tests, by other compilers, standards and C++
# libraries.
set -eu
cd "$(dirname "$0")/.."
work="$PWD/build/compilers"
tests="$PWD/Modules/TQFoundation/Tests/packaging"
lib="$work/installed/lib/$(c++ -print-multiarch)"
mkdir -p "$work"

say() { printf '== %s\n' "$*"; }

# consumer NAME COMPILER FLAGS...: a program with all headers and an instance of each template, as a
# user compiles it with warnings, and one that is linked and run.
consumer() {
  name="$1"; compiler="$2"; shift 2
  flags="$(PKG_CONFIG_PATH="$lib/pkgconfig" pkg-config --cflags --libs TQFoundation)"
  # shellcheck disable=SC2086  # a list of words
  "$compiler" "$@" -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror -fsyntax-only \
    "$tests/layouts.cpp" $flags -Wno-unused-command-line-argument -Wno-unused-const-variable &&
  "$compiler" "$@" -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror \
    "$tests/consumer/main.cpp" -o "$work/$name" $flags -Wl,-rpath,"$lib" &&
  "$work/$name"
}

# A program with debug containers does not link with a library without; the message names the reason.
refused() {
  ! consumer "$@" 2>"$work/refused.txt" &&
  grep -q 'undefined reference.*libraryHasDebugContainers' "$work/refused.txt"
}

# googletest COMPILER FLAGS...: builds the tests' framework, which has containers in its interface.
googletest() {
  compiler="$1"; shift
  cmake -S /usr/src/googletest -B "$work/googletest" -G Ninja -DCMAKE_BUILD_TYPE=Release \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$*" -DCMAKE_INSTALL_PREFIX="$work/gtest" \
    >/dev/null &&
  cmake --build "$work/googletest" --target install >/dev/null
}

# whole NAME COMPILER FLAGS...: builds the library and its tests, and runs the quick ones. libc++ 19 has
# std::jthread, which tests use, behind a flag. The packaged fmt is built for libstdc++.
whole() {
  name="$1"; compiler="$2"; shift 2
  prefix=""
  case "$*" in *libc++* | *_GLIBCXX_DEBUG*)
    rm -rf "$work/gtest" "$work/googletest"
    googletest "$compiler" "$@" || return 1
    prefix="$work/gtest" ;;
  esac
  cmake -S . -B "$work/$name" -G Ninja -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_FLAGS_RELEASE=-O1 \
    -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$*" -DCMAKE_PREFIX_PATH="$prefix" \
    -DTQ_BUILD_TOOLS=OFF >/dev/null &&
  cmake --build "$work/$name" &&
  ctest --test-dir "$work/$name" -j "$(nproc)" -L quick --output-on-failure
}

cmake --install build/release --prefix "$work/installed" >/dev/null
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
consumer gcc12-20          g++-12     -std=c++20
consumer gcc12-23          g++-12     -std=c++23 -D_GLIBCXX_ASSERTIONS
consumer clang16-20        clang++-16 -std=c++20
consumer clang16-23        clang++-16 -std=c++2b
consumer clang19-20        clang++-19 -std=c++20
consumer clang19-23        clang++-19 -std=c++23
refused  refused           g++-12     -std=c++20 -D_GLIBCXX_DEBUG
whole    clang16           clang++-16
whole    clang19           clang++-19
whole    libc++            clang++-19 -stdlib=libc++ -fexperimental-library -DFMT_HEADER_ONLY
whole    debug-containers  g++-12     -D_GLIBCXX_DEBUG
END
echo "$passed passed, $failed failed"
[ "$failed" = 0 ]
