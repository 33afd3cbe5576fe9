# prefix.sh absolute|relocated: installs the library and uses it: "absolute" with the commands of
# README.md, "relocated" after it was moved.
. "$(dirname "$0")/support.sh"

installed="$TQ_WORK/installed"
if [ "$1" = relocated ]; then
  quietly "$CMAKE" --install "$TQ_BUILD" --prefix "$TQ_WORK/first"
  mv "$TQ_WORK/first" "$installed"
  serves "$installed"
else
  say "commands of README.md"
  mkdir "$TQ_WORK/build"
  ln -s "$TQ_BUILD" "$TQ_WORK/build/release"
  cp -R "$tests/consumer" "$TQ_WORK/app"
  awk '/^```sh$/ { shown = "" } { shown = shown $0 "\n" } /^```$/ && shown ~ /--install/ { printf "%s", shown; exit }' \
    "$TQ_SOURCE/README.md" | grep -v '^```' | sed "s,/opt/tq,$installed,g" >"$TQ_WORK/commands.sh"
  [ -s "$TQ_WORK/commands.sh" ] || fail "README.md has no commands"
  (cd "$TQ_WORK" && quietly sh -eux commands.sh)
  runs_with "$installed" "$TQ_WORK/app/build/app"
  runs_with "$installed" "$TQ_WORK/app/app"
fi

say "sample of README.md"
sed -n '/^```cmake$/,/^```$/p' "$TQ_SOURCE/README.md" | grep -v '^```' >"$TQ_WORK/shown.txt"
tail -n 3 "$tests/consumer/CMakeLists.txt" | diff "$TQ_WORK/shown.txt" - || fail "differs from consumer/CMakeLists.txt"

say "no installed file contains a build path"
! grep -rlF -e "$TQ_SOURCE" -e "$TQ_BUILD" -e "$TQ_WORK" "$installed" || fail "build paths in the files above"

if [ -e "$TQ_BUILD/Tools/tqdoc/tqdoc" ]; then
  say "tqdoc"
  runs_with "$installed" "$installed/bin/tqdoc" --help >/dev/null
fi
