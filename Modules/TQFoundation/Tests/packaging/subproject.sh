# Builds the library inside another project, whose CMakeLists.txt checks for side effects.
. "$(dirname "$0")/support.sh"

for by in add_subdirectory FetchContent; do
  say "$by"
  parent="$TQ_WORK/$by"
  configure_alike "$tests/subproject" "$parent" -DBY=$by -DLIBRARY_SOURCE="$TQ_SOURCE"
  (cd "$parent" && ctest -N) | grep -q '^Total Tests: 0$' || fail "the parent has tests of the library"
  quietly "$CMAKE" --build "$parent"
  "$parent/consumer"
  quietly "$CMAKE" --install "$parent" --prefix "$TQ_WORK/$by-installed"
  [ ! -e "$TQ_WORK/$by-installed" ] || fail "the parent installs the library"
done
