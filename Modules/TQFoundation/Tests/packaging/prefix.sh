# prefix.sh absolute|relocated: installs the library, moves it for "relocated", and uses it.
. "$(dirname "$0")/support.sh"

installed="$TQ_WORK/installed"
quietly "$CMAKE" --install "$TQ_BUILD" --prefix "$installed"
if [ "$1" = relocated ]; then
  mv "$installed" "$TQ_WORK/moved"
  installed="$TQ_WORK/moved"
fi
serves "$installed"

say "sample of README.md"
sed -n '/^```cmake$/,/^```$/p' "$TQ_SOURCE/README.md" | grep -v '^```' >"$TQ_WORK/shown.txt"
tail -n 3 "$tests/consumer/CMakeLists.txt" | diff "$TQ_WORK/shown.txt" - || fail "differs from consumer/CMakeLists.txt"

say "no installed file contains a build path"
! grep -rlF -e "$TQ_SOURCE" -e "$TQ_BUILD" -e "$TQ_WORK" "$installed" || fail "build paths in the files above"

if [ -e "$TQ_BUILD/Tools/tqdoc/tqdoc" ]; then
  say "tqdoc"
  runs_with "$installed" "$installed/bin/tqdoc" --help >/dev/null
fi
