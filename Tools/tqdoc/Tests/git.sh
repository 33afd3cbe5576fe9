# git.sh README: git diff with the driver of the README shows every drawing, also after one that
# cannot be read; diff --git compares what git lists.
set -eu
. "$(dirname "$0")/support.sh"
needs git
export HOME="$work" GIT_CONFIG_NOSYSTEM=1 PATH="$(dirname "$tqdoc"):$PATH"
git init -q "$work/repository"
cd "$work/repository"
git config user.name a
git config user.email a@localhost
eval "$(grep '^git config diff.tqdoc.command' "$1")"
echo '*.svg diff=tqdoc' >.gitattributes
mkdir icons
cp "$data/face.svg" a.svg
cp "$data/face.svg" icons/c.svg
cp "$data/face.svg" old.svg
echo '<svg' >b.svg
git add .
git commit -qm one
cp "$data/face-changed.svg" a.svg
cp "$data/face-changed.svg" icons/c.svg
echo '<svg><' >b.svg
git mv old.svg renamed.svg
sed -i s/eeeeee/eeeeef/ renamed.svg
cp "$data/paint.svg" new.svg
git add .
git commit -qm two

git --no-pager diff HEAD~ HEAD >"$work/shown" 2>&1 || fail "git diff ends: $(cat "$work/shown")"
for name in a.svg b.svg icons/c.svg new.svg; do
  grep -qx "$name" "$work/shown" || fail "git diff does not show $name: $(cat "$work/shown")"
done
[ "$(grep -c 'nose' "$work/shown")" = 4 ] || fail "git diff does not show the changes"
grep -q '^tqdoc: .*b.svg:' "$work/shown" || fail "no reason for the unreadable drawing"

# lists COMMAND...: prints the drawings that it names.
lists() {
  ended=0
  "$@" >"$work/out" 2>"$work/errors" || ended=$?
  [ "$ended" = 2 ] || fail "exit status $ended with an unreadable drawing: $*"
  grep -q 'b.svg:1:' "$work/errors" || fail "no reason: $*"
  grep '\.svg$' "$work/out" | paste -sd ,
}
all='a.svg,icons/c.svg,new.svg,old.svg -> renamed.svg'
cd icons
[ "$(lists "$tqdoc" diff --git HEAD~..HEAD)" = "$all" ] || fail "diff --git: $(cat "$work/out")"
cp "$data/shapes.svg" c.svg
[ "$(lists "$tqdoc" diff --git HEAD~ --html "$work/page.html")" = "$all" ] ||
  fail "diff --git of the working tree: $(cat "$work/out")"
grep -q "new: <bdi>$work/repository/icons/c.svg</bdi>, 48" "$work/page.html" ||
  fail "the page does not show the file in the working tree"
grep -q 'Changes of 5 drawings' "$work/page.html" || fail "the page has other drawings"
for range in nowhere --output=x; do
  ! "$tqdoc" diff "--git=$range" 2>"$work/errors" || fail "no error for $range"
  [ "$(wc -l <"$work/errors")" = 1 ] || fail "no reason for $range"
done
[ "$(ls)" = c.svg ] || fail "an option of git was taken"
