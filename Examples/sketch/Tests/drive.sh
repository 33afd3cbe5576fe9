#!/bin/sh
# Drives the editor by mouse and keyboard, and compares the drawings that it saves with expected ones.
#
# Usage: xvfb-run -a -s '-screen 0 1280x1024x24 -noreset' sh drive.sh SKETCH TQDOC WORK
# Waits for windows, titles and messages of the editor, for each at most a minute.
set -eu
sketch=$1
tqdoc=$2
work=$3
data=$(cd "$(dirname "$0")" && pwd)
rm -rf "$work"
mkdir -p "$work/config" "$work/drawings"
cp "$data/drawing.svg" "$work/drawings"
drawing="$work/drawings/drawing.tqdoc"
log="$work/log"
: >"$log"
export XDG_CONFIG_HOME="$work/config" XDG_DATA_HOME="$work/data" XDG_CACHE_HOME="$work/cache"
export GSETTINGS_BACKEND=memory NO_AT_BRIDGE=1 GTK_THEME=Adwaita LC_ALL=C.UTF-8
unset JOURNAL_STREAM GTK_MODULES

editor=""
other=""
server=""
trap 'kill -9 $editor $other $server 2>/dev/null || true' EXIT
fail() {
  echo "FAILED: $*" >&2
  tail -n 40 "$log" >&2
  exit 1
}

# await WHAT COMMAND...: repeats the command until it succeeds.
await() {
  what=$1
  shift
  tries=0
  until "$@" >/dev/null 2>&1; do
    tries=$((tries + 1))
    [ "$tries" -lt 600 ] || fail "waited for $what"
    sleep 0.1
  done
}
find_window() { xdotool search --onlyvisible --name "$1"; }
has_title() { [ "$(xdotool getwindowname "$window")" = "$1 - Sketch" ]; }
# Focuses the window with a title. There is no window manager that does it.
focus() {
  await "a window $1" find_window "$1"
  xdotool windowfocus --sync "$(find_window "$1" | head -n 1)"
}

start() {
  "$sketch" "$@" 2>>"$log" &
  editor=$!
  focus " - Sketch$"
  window=$(find_window " - Sketch$")
}

# What the editor has logged since the last action of the user.
mark() { seen=$(wc -l <"$log"); }
logged() { tail -n "+$((seen + 1))" "$log" | grep -q -F -e "$1"; }
logs() { await "the message $1" logged "$1"; }
# saves EXPECTED: waits until the drawing is saved, and compares it.
saves() {
  logs "saved $drawing"
  await "the title of a saved drawing" has_title drawing.tqdoc
  "$tqdoc" diff "$data/$1" "$drawing" || fail "the drawing differs from $1"
}

press() {
  mark
  xdotool key "$1"
}
move() { xdotool mousemove --window "$window" "$(pixel "$1" "$x1" "$x2")" "$(pixel "$2" "$y1" "$y2")"; }
click() { # click X Y: at a point of the drawing
  mark
  move "$1" "$2"
  xdotool click 1
}
drag() { # drag X Y X Y: from a point of the drawing to another one
  mark
  move "$1" "$2"
  xdotool mousedown 1
  move $((($1 + $3) / 2)) $((($2 + $4) / 2))
  move "$3" "$4"
  xdotool mouseup 1
}
# The editor tells where in the drawing two clicks were. From that, pixel() computes the others.
calibrate() {
  for at in 200 400; do
    mark
    xdotool mousemove --window "$window" "$at" "$at" click 1
    logs "pressed at"
  done
  # shellcheck disable=SC2046  # four numbers
  set -- $(sed -n 's/.*pressed at \(.*\), \(.*\): .*/\1 \2/p' "$log" | tail -n 2)
  x1=$1 y1=$2 x2=$3 y2=$4
}
pixel() { awk "BEGIN { printf \"%.0f\", 200 + ($1 - $2) * 200 / ($3 - $2) }"; }

echo "== open a drawing by its path"
mark
start --log
press ctrl+o
focus "^Open a Drawing$"
xdotool type "$work/drawings/drawing.svg"
enter() { # the first key may only close the list of completions
  has_title drawing.svg || { xdotool key Return && sleep 0.5 && has_title drawing.svg; }
}
await "the drawing" enter
focus " - Sketch$"
calibrate

echo "== pick, and drag to the grid: 33 by 12 becomes 30 by 10"
click 40 40
logs "selected 1"
drag 40 40 73 52
logs "Move:"
saves moved.svg

echo "== undo, redo"
press ctrl+z
logs "Undo Move:"
saves drawing.svg
press ctrl+shift+z
logs "Redo Move:"
saves moved.svg

echo "== select the pair with a rubber band, recolour and duplicate it; delete the square"
drag 115 10 190 110
logs "selected 2"
press ctrl+5
logs "Recolour:"
press ctrl+d
logs "Duplicate:"
click 80 50
logs "selected 1"
press Delete
logs "Delete:"
saves edited.svg

echo "== kill it; reopen the drawing"
kill -9 "$editor"
wait "$editor" || true
start --log
await "the reopened drawing" has_title drawing.tqdoc
calibrate

echo "== the window of another process follows an option"
cp "$data/drawing.svg" "$work/drawings/other.svg"
"$sketch" --log "$work/drawings/other.svg" 2>"$work/other.log" &
other=$!
focus "^other.svg - Sketch$"
focus "^drawing.tqdoc - Sketch$"
press alt+v
press g
await "the option in the other window" grep -q "ShowsGrid is false" "$work/other.log"
kill "$other"
wait "$other" || true
other=""

echo "== drag the blue square to the crossing of two lines, at 50, 155"
drag 124 84 55 158
logs "Move:"
saves snapped.svg

echo "== download a drawing"
perl -MIO::Socket::INET -e '
  my $server = IO::Socket::INET->new(Listen => 5, LocalAddr => "127.0.0.1") or die;
  open my $port, ">", "$ARGV[0].new"; print $port $server->sockport; close $port;
  rename "$ARGV[0].new", $ARGV[0];
  open my $file, "<", $ARGV[1]; my $body = join "", <$file>;
  while (my $client = $server->accept) {
    while (<$client>) { last if /^\r\n$/ }
    print $client "HTTP/1.1 200 OK\r\nContent-Length: ", length $body, "\r\n\r\n", $body;
    close $client;
  }' "$work/port" "$data/moved.svg" &
server=$!
await "the server" test -e "$work/port"
press ctrl+l
focus "^Download a Drawing$"
xdotool type "http://127.0.0.1:$(cat "$work/port")/fetched.svg?version=1"
press Return
await "the download" has_title fetched.svg
cmp "$data/moved.svg" "$work/drawings/fetched.svg" || fail "another file was downloaded"

echo "== end"
focus " - Sketch$"
press ctrl+q
wait "$editor" || fail "exit status $?"
editor=""
echo "passed"
