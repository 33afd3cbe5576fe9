# prefix.sh absolute|relocated: the library is installed, moved as a whole if it is to be, and used.
. "$(dirname "$0")/support.sh"

installed="$TQ_WORK/installed"
quietly "$CMAKE" --install "$TQ_BUILD" --prefix "$installed"
if [ "$1" = relocated ]; then
  mv "$installed" "$TQ_WORK/moved"
  installed="$TQ_WORK/moved"
fi
serves "$installed"

say "README.md shows how"
sed -n '/^```cmake$/,/^```$/p' "$TQ_SOURCE/README.md" | grep -v '^```' >"$TQ_WORK/shown.txt"
tail -n 3 "$tests/consumer/CMakeLists.txt" | diff "$TQ_WORK/shown.txt" - || fail "not as it was done"

say "no file knows where it was made or put"
! grep -rlF -e "$TQ_SOURCE" -e "$TQ_BUILD" -e "$TQ_WORK" "$installed" || fail "these files know"

if [ -e "$TQ_BUILD/Tools/tqdoc/tqdoc" ]; then
  say "tqdoc"
  runs_with "$installed" "$installed/bin/tqdoc" --help >/dev/null
fi
