# The library built inside another project, whose CMakeLists.txt looks for what leaks into it.
. "$(dirname "$0")/support.sh"

# commands BUILD: how the library's files are compiled, with the places taken out that differ.
commands() {
  grep '"command": .*TQFoundationObjects\.dir' "$1/compile_commands.json" |
    sed "s|[^ ]*/prebuilt\.sh ||; s|\"command\": \"[^ ]*ccache |\"command\": \"|; s| -Werror||
         s|-I[^ ]*/include |-IINCLUDE |; s|-o [^ ]*/Modules/|-o Modules/|" | LC_ALL=C sort
}

# setting NAME: what the outer build has it set to.
setting() { sed -n "s/^$1:[A-Z]*=//p" "$TQ_BUILD/CMakeCache.txt"; }

for by in add_subdirectory FetchContent; do
  say "$by"
  parent="$TQ_WORK/$by"
  quietly "$CMAKE" -S "$tests/subproject" -B "$parent" -G Ninja -DBY=$by \
    -DLIBRARY_SOURCE="$TQ_SOURCE" -DCMAKE_CXX_COMPILER="$CXX" \
    -DCMAKE_BUILD_TYPE="$(setting CMAKE_BUILD_TYPE)" -DCMAKE_CXX_FLAGS="$(setting CMAKE_CXX_FLAGS)" \
    -DCMAKE_CXX_COMPILER_LAUNCHER="sh;$tests/prebuilt.sh" -DCMAKE_EXPORT_COMPILE_COMMANDS=ON
  (cd "$parent" && ctest -N) | grep -q '^Total Tests: 0$' || fail "tests of the library's are here"
  commands "$TQ_BUILD" >"$TQ_WORK/commands.txt"
  [ -s "$TQ_WORK/commands.txt" ] || fail "the library is compiled by no command"
  commands "$parent" | diff "$TQ_WORK/commands.txt" - || fail "the library is compiled differently"
  quietly "$CMAKE" --build "$parent"
  "$parent/consumer"
  quietly "$CMAKE" --install "$parent" --prefix "$TQ_WORK/$by-installed"
  [ ! -e "$TQ_WORK/$by-installed" ] || fail "the parent installs the library"
done
