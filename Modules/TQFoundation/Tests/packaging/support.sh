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

# runs_with PREFIX PROGRAM ARGUMENTS...: checks that the library is the one below PREFIX, or none if
# that is static; runs the program.
runs_with() {
  loaded="$(ldd "$2" | sed -n 's/.*libTQFoundation\.so\.[0-9.]* => \(.*\) (.*/\1/p')"
  if [ -e "$1/$TQ_LIBDIR/libTQFoundation.a" ]; then expected=""
  else expected="$(readlink -f "$1/$TQ_LIBDIR/libTQFoundation.so.$TQ_SERIES")"; fi
  [ "$(readlink -f "$loaded" || true)" = "$expected" ] || fail "$2 loads the library $loaded"
  shift
  "$@"
}

# setting NAME: prints the value of a variable of the outer build.
setting() { sed -n "s/^$1:[A-Z]*=//p" "$TQ_BUILD/CMakeCache.txt"; }

# commands BUILD: prints the compile commands of the library without paths that differ.
commands() {
  grep '"command": .*TQFoundationObjects\.dir' "$1/compile_commands.json" |
    sed "s|[^ ]*/prebuilt\.sh ||; s|\"command\": \"[^ ]*ccache |\"command\": \"|; s| -Werror||
         s|-I[^ ]*/include |-IINCLUDE |; s|-o [^ ]*/Modules/|-o Modules/|" | LC_ALL=C sort
}

# configure_alike SOURCE BUILD OPTIONS...: configures a project that contains the library. It takes
# the object files of the outer build, after a check that the commands are equal.
configure_alike() {
  source="$1"; build="$2"; shift 2
  quietly "$CMAKE" -S "$source" -B "$build" -G Ninja -DCMAKE_CXX_COMPILER="$CXX" \
    -DCMAKE_BUILD_TYPE="$(setting CMAKE_BUILD_TYPE)" -DCMAKE_CXX_FLAGS="$(setting CMAKE_CXX_FLAGS)" \
    -DCMAKE_CXX_COMPILER_LAUNCHER="sh;$tests/prebuilt.sh" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON "$@"
  commands "$TQ_BUILD" >"$TQ_WORK/commands.txt"
  [ -s "$TQ_WORK/commands.txt" ] || fail "no compile commands found"
  commands "$build" | diff "$TQ_WORK/commands.txt" - || fail "the compile commands differ"
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
