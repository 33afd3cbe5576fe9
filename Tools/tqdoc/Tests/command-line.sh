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

# Values that are no names or numbers, and two outputs in one place.
# misused COMMAND REASON WORD...: the words are an error of the command line.
misused() {
  command="$1" reason="$2"; shift 2
  ends 2 "tqdoc: $reason\nTry 'tqdoc $command --help' for more information.\n" "$command" "$@"
}
misused hit '--png: is empty' "$data/face.svg" 1 2 --png ''
misused diff '--html: is empty' "$data/face.svg" "$data/face.svg" --html ''
misused diff '--git: is empty' --git ''
misused import '--output: is empty' "$data/face.svg" -o ''
misused hit "area: 'nan' is not a number" "$data/face.svg" nan 1
misused render "--width: '1.5' is not a whole number from 0 to 8192" "$data/face.svg" -o a.png --width 1.5
misused show "unknown option '-x.svg' (write ./-x.svg for a file)" -x.svg
ln -s a "$work/b"
for words in "--png $work/a --html $work/./a" "--png $work/a --html $work/b" "--json --png -" \
  "--png - --html -" "--png /dev/stdout --html -"; do
  # shellcheck disable=SC2086  # words
  ! "$tqdoc" diff "$data/face.svg" "$data/face-changed.svg" $words 2>"$work/errors" || fail "$words"
  grep -q ': would be written twice$' "$work/errors" || fail "$words: $(cat "$work/errors")"
done
ends 2 'tqdoc: standard output: would be written twice\n' hit "$data/face.svg" 1 2 --json --png -
for output in - /dev/stdout; do
  ends 0 '' hit "$data/face.svg" 1 2 --png "$output"
  head -c 4 "$work/out" | grep -q PNG || fail "text and a picture on standard output"
done

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

# Standard input and output; drawings compressed by another program; several drawings.
gzip -c <"$data/paint.svg" >"$work/paint.svgz"
cp "$data/paint.svg" "$work/named.svg"
gzip "$work/named.svg"
mkdir "$work/pictures"
unsupported='unsupported: textLength 1'
ends 0 '' render - -o - <"$data/face.svg"
cmp "$work/out" "$work/picture.png" || fail "the picture from standard input differs"
ends 0 '' import - <"$data/face.svg"
"$tqdoc" diff - "$data/face.svg" <"$work/out" || fail "the archive on standard output differs"
ends 1 "tqdoc: $work/paint.svgz: $unsupported\n" diff /dev/null "$work/paint.svgz"
ends 0 "tqdoc: $work/paint.svgz: $unsupported\n" render "$work/paint.svgz" "$data/face.svg" -o "$work/pictures"
cmp "$work/pictures/face.png" "$work/picture.png" || fail "the picture in a folder differs"
ends 0 '' check --json "$work" "$work/named.svg.gz"
grep -q '"drawings":2,.*"unsupported":{"textLength":2}' "$work/out" || fail "check --json: $(cat "$work/out")"
ends 0 "tqdoc: $work/paint.svgz: $unsupported\n" hit --json "$work/paint.svgz" 16 16
grep -q '^.{"path":"root.*"bounds":.' "$work/out" || fail "hit --json: $(cat "$work/out")"
ends 0 '' show --json "$data/face.svg"
grep -q '"shapes":7,.*"kind":"group","name":"face","bounds":\[22,32,56,28\],' "$work/out" || fail "show --json: $(cat "$work/out")"

# Pictures that would replace drawings, or each other.
mkdir "$work/other"
cp "$data/face.svg" "$work/other"
cp "$data/face.svg" "$work/own.svg"
ends 2 "tqdoc: $work/./own.svg: is the drawing; not replaced by a picture of it\n" render "$work/own.svg" -o "$work/./own.svg"
ends 2 "tqdoc: $work/pictures/face.png: would be the picture of two drawings\n" render "$data/face.svg" "$work/other/face.svg" -o "$work/pictures"
cmp "$work/own.svg" "$data/face.svg" || fail "a drawing was replaced"

# Pages of several drawings, and of directories.
ends 2 'tqdoc: old and new is required\nTry '\''tqdoc diff --help'\'' for more information.\n' diff "$data/face.svg"
ends 2 "tqdoc: $data/face.svg: has no newer version\n" diff "$data/face.svg" "$data/face.svg" "$data/face.svg"
ends 2 'tqdoc: --json and --png take one pair of drawings, not 2\n' diff --json "$data/face.svg" /dev/null /dev/null "$data/face.svg"
ends 2 "tqdoc: $work/own.svg: is the drawing; not replaced by a picture of it\n" diff "$work/own.svg" /dev/null --html "$work/own.svg"
cp "$data/face-changed.svg" "$work/other/same.svg"
cp "$data/face-changed.svg" "$work/pictures/same.svg"
cp "$data/face-changed.svg" "$work/pictures/face.svg"
ends 1 '' diff --html "$work/page.html" "$work/other" "$work/pictures"
[ "$(grep -c . "$work/out")" = 7 ] && grep -qx face.svg "$work/out" || fail "directories: $(cat "$work/out")"
grep -q '1 without changes' "$work/page.html" || fail "the page does not tell which drawings are equal"
ends 1 '' diff --html - "$data/face.svg" "$data/face-changed.svg"
head -1 "$work/out" | grep -q '^<!DOCTYPE html>$' || fail "the page on standard output: $(head -3 "$work/out")"

ends 2 'tqdoc: gone.svg: No such file or directory\n' sheet "$data/face.svg" gone.svg -o "$work/sheet.png"
grep -q ': 1 drawing beside its reopened archive$' "$work/out" || fail "sheet: $(cat "$work/out")"

# Names cannot control the terminal, not even by characters beyond ASCII.
escaped="$(printf '\302\233[2J\342\200\256')"
ends 2 'tqdoc: \\u009b[2J\\u202e: No such file or directory\n' show "$escaped"

# Preferences that cannot be written.
printf x >"$work/file"
XDG_CONFIG_HOME="$work/file" "$tqdoc" recent --clear 2>"$work/errors" && fail "recent --clear saved nothing"
[ -s "$work/errors" ] || fail "recent --clear without a reason"

# Patches.
"$tqdoc" diff --json "$data/face.svg" "$data/face-changed.svg" >"$work/changes.json" || true
ends 0 '' patch "$data/face.svg" - -o "$work/patched.tqdoc" <"$work/changes.json"
ends 0 '' diff "$work/patched.tqdoc" "$data/face-changed.svg"
sed 's/id="nose"/& opacity=".5"/' "$data/face.svg" >"$work/other.svg"
echo '[{"kind":"turned"}]' >"$work/unknown.json"
ends 1 "tqdoc: $data/face.svg: record 1: not applied: it is of an unknown kind
tqdoc: 1 of 1 change not applied; nothing is written (--partial writes the others)\n" patch "$data/face.svg" "$work/unknown.json" -o "$work/new.tqdoc"
misfit="tqdoc: $work/other.svg: root.children[4]: not applied: its node is not as it was
tqdoc: $work/other.svg: root.children[4].path: not applied: its node is not as it was
"
ends 1 "${misfit}tqdoc: 2 of 6 changes not applied; nothing is written (--partial writes the others)\n" patch "$work/other.svg" "$work/changes.json" -o "$work/new.tqdoc"
[ ! -e "$work/new.tqdoc" ] || fail "a patch that does not fit wrote a drawing"
ends 1 "$misfit" patch --partial "$work/other.svg" "$work/changes.json" -o "$work/new.tqdoc"
"$tqdoc" diff "$work/other.svg" "$work/new.tqdoc" | wc -l | grep -qx 4 || fail "patch --partial"
ends 2 "tqdoc: $data/face.svg: not the output of tqdoc diff --json\n" patch "$data/face.svg" "$data/face.svg" -o "$work/new.tqdoc"

# Names that cannot be read, and text that is no archive.
ln -s gone "$work/dangling.svg"
ln -s loop.svg "$work/loop.svg"
echo 'hello world, this is no archive' >"$work/text.tqdoc"
ends 2 "tqdoc: $work: Is a directory\n" show "$work"
ends 2 "tqdoc: $work/dangling.svg: No such file or directory\n" show "$work/dangling.svg"
ends 2 "tqdoc: $work/loop.svg: Too many levels of symbolic links\n" show "$work/loop.svg"
ends 2 "tqdoc: $work/text.tqdoc: The data couldn’t be read because it isn’t in the correct format.\n" show "$work/text.tqdoc"

# A pen that a transform makes larger than any picture, at 80,000 round joins.
awk 'BEGIN {
  printf "<svg><path transform=\"scale(1 1e6)\" stroke=\"red\" stroke-linejoin=\"round\" d=\"M9 0"
  for (i = 0; i < 40000; ++i) printf "h9h-9"
  print "\"/></svg>"
}' >"$work/scaled.svg"
(ulimit -v "$2"; ulimit -t 20; exec "$tqdoc" render "$work/scaled.svg" -o "$work/scaled.png") ||
  fail "the stroke takes too much memory or time"
