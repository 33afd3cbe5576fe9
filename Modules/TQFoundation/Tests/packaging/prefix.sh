# prefix.sh absolute|relocated: the library is installed, moved as a whole if it is to be, and used.
. "$(dirname "$0")/support.sh"

installed="$TQ_WORK/installed"
quietly "$CMAKE" --install "$TQ_BUILD" --prefix "$installed"
if [ "$1" = relocated ]; then
  mv "$installed" "$TQ_WORK/moved"
  installed="$TQ_WORK/moved"
fi
serves "$installed"

say "versions that do not fit are refused"
for version in 0.0 0.2 1.0; do
  ! configure_consumer "$installed" -DWANTED=$version >/dev/null 2>&1 || fail "took it for $version"
done

say "no file knows where it was made or put"
! grep -rlF -e "$TQ_SOURCE" -e "$TQ_BUILD" -e "$TQ_WORK" "$installed" || fail "these files know"

if [ -e "$TQ_BUILD/Tools/tqdoc/tqdoc" ]; then
  say "tqdoc"
  runs_with "$installed" "$installed/bin/tqdoc" --help >/dev/null
fi
