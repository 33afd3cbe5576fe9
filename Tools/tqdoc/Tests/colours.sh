# Colours of diff: on terminals that support them, and as set by the option and the environment.
set -eu
. "$(dirname "$0")/support.sh"
needs script
export TERM=xterm
unset NO_COLOR
diff="$tqdoc diff $data/face.svg $data/face-changed.svg"

# coloured|plain COMMAND...: runs it; true if its output has, or has not, colours.
coloured() {
  "$@" >"$work/out" || [ $? = 1 ] || fail "$*"
  grep -q 'nose' "$work/out" || fail "no output: $*"
  grep -q "$(printf '\033\\[3[0-9]m')" "$work/out"
}
plain() { ! coloured "$@"; }
on_terminal() { script -qec "$diff" /dev/null </dev/null; }
# As in most pipes, standard error is still a terminal.
in_pipe() {
  script -qec "$diff | cat >'$work/piped'" /dev/null </dev/null
  cat "$work/piped"
}

plain in_pipe || fail "colours in a pipe"
coloured on_terminal || fail "no colours on a terminal"
(export NO_COLOR=1; plain on_terminal) || fail "colours despite NO_COLOR"
(export NO_COLOR=; coloured on_terminal) || fail "an empty NO_COLOR disables colours"
(export TERM=dumb; plain on_terminal) || fail "colours on a dumb terminal"
"$tqdoc" options colours always
(export NO_COLOR=1; coloured in_pipe) || fail "no colours with colours=always"
"$tqdoc" options colours never
plain on_terminal || fail "colours with colours=never"
"$tqdoc" options --reset
coloured on_terminal || fail "--reset did not restore the default"
