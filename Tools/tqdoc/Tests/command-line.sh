# command-line.sh VERSION MEMORY: messages and exit status for invalid command lines and for output
# that cannot be written. MEMORY is a limit in kilobytes.
set -eu
. "$(dirname "$0")/support.sh"

# ends STATUS ERRORS WORD...: runs tqdoc; checks its exit status and standard error.
ends() {
  code="$1" errors="$2" ended=0; shift 2
  "$tqdoc" "$@" >"$work/out" 2>"$work/errors" || ended=$?
  [ "$ended" = "$code" ] || fail "exit status $ended, not $code: $*"
  printf "$errors" | diff - "$work/errors" || fail "$*"
}

ends 0 '' --version
grep -qx "tqdoc $1" "$work/out" || fail "the version is not $1"
ends 0 '' --help-all
grep -q -- '--no-gzip' "$work/out" || fail "--help-all is incomplete"
ends 2 'tqdoc: A subcommand is required\nTry '\''tqdoc --help'\'' for more information.\n'
ends 2 'tqdoc: unknown command '\''paint'\''\nTry '\''tqdoc --help'\'' for more information.\n' paint "$data/face.svg"
ends 2 'tqdoc: files is required\nTry '\''tqdoc check --help'\'' for more information.\n' check

ends 0 '' options width 7
ends 0 '' options recent 7
ends 2 'tqdoc: value excludes --reset\nTry '\''tqdoc options --help'\'' for more information.\n' options --reset width 8
ends 2 'tqdoc: invalid value '\'''\'' for colours (when diff colours its output: auto, always or never)\n' options colours ''
ln -s "$tqdoc" "$work/alias"
"$work/alias" options width | grep -qx 7 || fail "a link to the program has other preferences"
ends 0 '' options --reset width
"$tqdoc" options | grep -q '^width *0 ' || fail "the width was not reset"
"$tqdoc" options | grep -q '^recent *7 ' || fail "more than the width was reset"
ends 0 '' options --reset
"$tqdoc" options | grep -q '^recent *10 ' || fail "--reset did not reset all options"

# A kilobyte whose shared parts unfold to 2^40 values.
unfolds="$data/unfolds.tqdoc"
for words in "show $unfolds" "check $unfolds" "diff $unfolds $data/face.svg"; do
  ended=0
  # shellcheck disable=SC2086  # words
  (ulimit -v "$2"; ulimit -t 20; exec "$tqdoc" $words) >"$work/out" 2>&1 || ended=$?
  [ "$ended" = 2 ] || fail "exit status $ended: $words"
  grep -qF "$unfolds: The archive refers to its objects too often" "$work/out" || fail "no reason: $words"
done

for words in --help options "show $data/face.svg" "diff $data/face.svg $data/face-changed.svg"; do
  ended=0
  # shellcheck disable=SC2086  # words
  "$tqdoc" $words >/dev/full 2>/dev/null || ended=$?
  [ "$ended" = 2 ] || fail "exit status $ended with a full output: $words"
done

echo before >"$work/picture.png"
ended=0
(trap '' XFSZ; ulimit -f 0; exec "$tqdoc" render "$data/face.svg" -o "$work/picture.png") \
  2>/dev/null || ended=$?
[ "$ended" = 2 ] || fail "exit status $ended with a full disk"
[ "$(cat "$work/picture.png")" = before ] || fail "an existing picture is damaged"
ends 0 '' render "$data/face.svg" -o "$work/picture.png"
"$tqdoc" render "$data/face.svg" -o /dev/stdout | cmp - "$work/picture.png" || fail "the output to a pipe differs"
