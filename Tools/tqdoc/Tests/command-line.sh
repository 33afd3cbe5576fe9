# What the command line says when it cannot be understood, or cannot say or write anything.
set -eu
. "$(dirname "$0")/support.sh"

# ends CODE ERRORS WORD...: tqdoc leaves with the code, and this is what it says of errors.
ends() {
  code="$1" errors="$2" ended=0; shift 2
  "$tqdoc" "$@" >"$work/out" 2>"$work/errors" || ended=$?
  [ "$ended" = "$code" ] || fail "exit code $ended, not $code: $*"
  printf "$errors" | diff - "$work/errors" || fail "$*"
}

ends 0 '' --version
grep -qx "tqdoc $1" "$work/out" || fail "another version than $1"
ends 0 '' --help-all
grep -q -- '--no-gzip' "$work/out" || fail "not all help"
ends 2 'tqdoc: A subcommand is required\ntqdoc --help tells more.\n'
ends 2 'tqdoc: there is no paint here\ntqdoc --help tells more.\n' paint "$data/face.svg"
ends 2 'tqdoc: files is required\ntqdoc check --help tells more.\n' check

ends 0 '' options width 7
ends 0 '' options recent 7
ends 2 'tqdoc: value excludes --reset\ntqdoc options --help tells more.\n' options --reset width 8
ends 2 'tqdoc: colours cannot be "" (on the terminal: auto, always or never)\n' options colours ''
ln -s "$tqdoc" "$work/alias"
"$work/alias" options width | grep -qx 7 || fail "another name has other preferences"
ends 0 '' options --reset width
"$tqdoc" options | grep -q '^width *0 ' || fail "the width is not what it was"
"$tqdoc" options | grep -q '^recent *7 ' || fail "more than the width was reset"
ends 0 '' options --reset
"$tqdoc" options | grep -q '^recent *10 ' || fail "not all was reset"

for words in --help options "show $data/face.svg" "diff $data/face.svg $data/face-changed.svg"; do
  ended=0
  # shellcheck disable=SC2086  # words
  "$tqdoc" $words >/dev/full 2>/dev/null || ended=$?
  [ "$ended" = 2 ] || fail "exit code $ended where nothing can be printed: $words"
done

echo before >"$work/picture.png"
ended=0
(trap '' XFSZ; ulimit -f 0; exec "$tqdoc" render "$data/face.svg" -o "$work/picture.png") \
  2>/dev/null || ended=$?
[ "$ended" = 2 ] || fail "exit code $ended where nothing can be written"
[ "$(cat "$work/picture.png")" = before ] || fail "a picture that was there is damaged"
ends 0 '' render "$data/face.svg" -o "$work/picture.png"
"$tqdoc" render "$data/face.svg" -o /dev/stdout | cmp - "$work/picture.png" || fail "not in a pipe"
