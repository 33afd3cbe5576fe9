# Builds the library inside another project, whose CMakeLists.txt checks for side effects.
. "$(dirname "$0")/support.sh"

# commands BUILD: prints the compile commands of the library without paths that differ.
commands() {
  grep '"command": .*TQFoundationObjects\.dir' "$1/compile_commands.json" |
    sed "s|[^ ]*/prebuilt\.sh ||; s|\"command\": \"[^ ]*ccache |\"command\": \"|; s| -Werror||
         s|-I[^ ]*/include |-IINCLUDE |; s|-o [^ ]*/Modules/|-o Modules/|" | LC_ALL=C sort
}

# setting NAME: prints the value of a variable of the outer build.
setting() { sed -n "s/^$1:[A-Z]*=//p" "$TQ_BUILD/CMakeCache.txt"; }

for by in add_subdirectory FetchContent; do
  say "$by"
  parent="$TQ_WORK/$by"
  quietly "$CMAKE" -S "$tests/subproject" -B "$parent" -G Ninja -DBY=$by \
    -DLIBRARY_SOURCE="$TQ_SOURCE" -DCMAKE_CXX_COMPILER="$CXX" \
    -DCMAKE_BUILD_TYPE="$(setting CMAKE_BUILD_TYPE)" -DCMAKE_CXX_FLAGS="$(setting CMAKE_CXX_FLAGS)" \
    -DCMAKE_CXX_COMPILER_LAUNCHER="sh;$tests/prebuilt.sh" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
  (cd "$parent" && ctest -N) | grep -q '^Total Tests: 0$' || fail "the parent has tests of the library"
  commands "$TQ_BUILD" >"$TQ_WORK/commands.txt"
  [ -s "$TQ_WORK/commands.txt" ] || fail "no compile commands found"
  commands "$parent" | diff "$TQ_WORK/commands.txt" - || fail "the compile commands differ"
  quietly "$CMAKE" --build "$parent"
  "$parent/consumer"
  quietly "$CMAKE" --install "$parent" --prefix "$TQ_WORK/$by-installed"
  [ ! -e "$TQ_WORK/$by-installed" ] || fail "the parent installs the library"
done
