# Sourced by the packaging tests. Variables: TQ_SOURCE and TQ_BUILD, the source and the build tree;
# TQ_SERIES, the series of the library; TQ_WORK, a folder for this test alone; TQ_LIBDIR, the folder
# of the library below a prefix; CXX and CMAKE.
set -eu
tests="$TQ_SOURCE/Modules/TQFoundation/Tests/packaging"
rm -rf "$TQ_WORK"
mkdir -p "$TQ_WORK"

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
say() { printf '== %s\n' "$*"; }

# quietly COMMAND...: shows the output only if the command fails.
quietly() {
  "$@" >"$TQ_WORK/log" 2>&1 || { cat "$TQ_WORK/log" >&2; fail "$@"; }
}

# runs_with PREFIX PROGRAM ARGUMENTS...: checks that the library is the one below PREFIX; runs it.
runs_with() {
  loaded="$(ldd "$2" | sed -n 's/.*libTQFoundation\.so\.[0-9.]* => \(.*\) (.*/\1/p')"
  [ "$(readlink -f "$loaded")" = "$(readlink -f "$1/$TQ_LIBDIR/libTQFoundation.so.$TQ_SERIES")" ] ||
    fail "$2 loads the library $loaded"
  shift
  "$@"
}

# serves PREFIX: builds and runs a consumer with find_package and with pkg-config.
serves() {
  say "find_package in $1"
  rm -rf "$TQ_WORK/consumer"
  quietly "$CMAKE" -S "$tests/consumer" -B "$TQ_WORK/consumer" -G Ninja \
    -DCMAKE_CXX_COMPILER="$CXX" -DCMAKE_PREFIX_PATH="$1"
  grep -qF "TQFoundation_DIR:PATH=$1/$TQ_LIBDIR/cmake/TQFoundation" "$TQ_WORK/consumer/CMakeCache.txt" ||
    fail "the consumer found another package"
  quietly "$CMAKE" --build "$TQ_WORK/consumer"
  runs_with "$1" "$TQ_WORK/consumer/app"

  say "pkg-config in $1"
  flags="$(PKG_CONFIG_PATH="$1/$TQ_LIBDIR/pkgconfig" pkg-config --cflags --libs TQFoundation)"
  # shellcheck disable=SC2086  # a list of words
  quietly "$CXX" -std=c++20 "$tests/consumer/main.cpp" -o "$TQ_WORK/by-pkg-config" $flags
  (export LD_LIBRARY_PATH="$1/$TQ_LIBDIR"; runs_with "$1" "$TQ_WORK/by-pkg-config")
}
