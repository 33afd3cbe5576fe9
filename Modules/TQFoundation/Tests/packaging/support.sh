# What the packaging tests share; each sources it. They are told TQ_SOURCE and TQ_BUILD, the source
# and the build tree; TQ_SERIES, the library's; TQ_WORK, a folder of their own; TQ_LIBDIR, where in a
# prefix the library lies; CXX and CMAKE.
set -eu
tests="$TQ_SOURCE/Modules/TQFoundation/Tests/packaging"
rm -rf "$TQ_WORK"
mkdir -p "$TQ_WORK"

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
say() { printf '== %s\n' "$*"; }

# quietly COMMAND...: what it prints is shown only when it fails.
quietly() {
  "$@" >"$TQ_WORK/log" 2>&1 || { cat "$TQ_WORK/log" >&2; fail "$@"; }
}

# runs_with PREFIX PROGRAM ARGUMENTS...: it runs, with the library below PREFIX and no other.
runs_with() {
  loaded="$(ldd "$2" | sed -n 's/.*libTQFoundation\.so\.[0-9.]* => \(.*\) (.*/\1/p')"
  [ "$(readlink -f "$loaded")" = "$(readlink -f "$1/$TQ_LIBDIR/libTQFoundation.so.$TQ_SERIES")" ] ||
    fail "$2 finds its library at: $loaded"
  shift
  "$@"
}

# serves PREFIX: a consumer finds the package by find_package and by pkg-config, builds and runs.
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
