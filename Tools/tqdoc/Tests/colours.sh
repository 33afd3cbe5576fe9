# Differences are coloured on terminals that have colours, and where the user wants it otherwise.
set -eu
. "$(dirname "$0")/support.sh"
needs script
export TERM=xterm
unset NO_COLOR
diff="$tqdoc diff $data/face.svg $data/face-changed.svg"

# coloured|plain COMMAND...: what it prints.
coloured() {
  "$@" >"$work/out" || [ $? = 1 ] || fail "$*"
  grep -q 'nose' "$work/out" || fail "nothing is told: $*"
  grep -q "$(printf '\033\\[3[0-9]m')" "$work/out"
}
plain() { ! coloured "$@"; }
on_terminal() { script -qec "$diff" /dev/null </dev/null; }
# As most pipes are: what is told of errors goes to a terminal all the same.
in_pipe() {
  script -qec "$diff | cat >'$work/piped'" /dev/null </dev/null
  cat "$work/piped"
}

plain in_pipe || fail "colours in a pipe"
coloured on_terminal || fail "no colours on a terminal"
(export NO_COLOR=1; plain on_terminal) || fail "colours in spite of NO_COLOR"
(export NO_COLOR=; coloured on_terminal) || fail "an empty NO_COLOR keeps colours off"
(export TERM=dumb; plain on_terminal) || fail "colours on a dumb terminal"
"$tqdoc" options colours always
(export NO_COLOR=1; coloured in_pipe) || fail "no colours where they are always wanted"
"$tqdoc" options colours never
plain on_terminal || fail "colours where they are never wanted"
"$tqdoc" options --reset
coloured on_terminal || fail "the option is not what it was in the beginning"
