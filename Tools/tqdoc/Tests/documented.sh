# documented.sh man|bash|zsh|fish
# The manual page and the completions list the same commands, options and values as the program's
# help. The completions are called as their shells call them.
set -eu
. "$(dirname "$0")/support.sh"
[ "$1" = man ] || needs "$1"

# tells WORD...: prints the completions of the last word, one on each line.
case "$1" in
  bash)
    tells() {
      bash --norc -c '. "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1))
        _tqdoc; printf "%s\n" "${COMPREPLY[@]}"' - "$completions/tqdoc.bash" "$@"
    } ;;
  fish)
    export HOME="$work"
    tells() {
      fish --no-config -c 'source $argv[1]; complete -C "$argv[2..]"' "$completions/tqdoc.fish" "$@" |
        cut -f 1
    } ;;
  zsh)
    # These functions replace zsh's own: they print the choices that they get.
    tells() {
      zsh -f -c '
        _arguments() {
          if [[ $1 == -C ]]; then top=1; shift; else top=0; fi
          if (( top == first )) && [[ $words[-1] == -* ]]; then print -rl -- "$@"
          elif (( top && first )); then state=command
          elif (( top )); then state=argument; shift words
          elif (( $#words == 2 )); then state=name
          else line=($words[2]); state=value
          fi
        }
        _describe() { print -rl -- ${${(P)2}%%:*} }
        compadd() { print -rl -- "$@" }
        fpath=($1); shift; words=("$@"); first=$(( $# == 2 )); autoload -Uz _tqdoc; _tqdoc' - "$completions" "$@" |
        sed -n 's/^\(([^)]*)\)\{0,1\}\(--*[a-z-]*\)\[.*/\2/p; /^[a-z]*$/p'
    } ;;
esac

commands="$("$tqdoc" --help | sed -n '/^Subcommands:/,/^$/s/^  \([a-z]*\) .*/\1/p')"
names="$("$tqdoc" options | sed 's/ .*//')"
[ "$(printf '%s\n' $commands $names | wc -l)" -ge 13 ] || fail "the help is incomplete"

# of WORD...: prints each line of standard input after the words.
of() { sed "s/^/$*: /"; }
in_help() {
  printf '%s\n' $commands | of command
  printf '%s\n' $names | of option
  for command in '' $commands; do
    # shellcheck disable=SC2086  # no word, or one
    "$tqdoc" $command --help | sed -n '/^Options:/,/^$/s/^  \(-[^ ]*\).*/\1/p' | tr , '\n' |
      of tqdoc $command
  done
  "$tqdoc" options | sed -n 's/^\([a-z]*\) .*: \(.*\)/\1 \2/p' | while read -r name values; do
    printf '%s\n' "$values" | sed 's/, \| or /\n/g' | of value of "$name"
  done
}
in_completions() {
  tells tqdoc '' | of command
  tells tqdoc options '' | of option
  tells tqdoc - | of tqdoc
  for command in $commands; do tells tqdoc "$command" - | of tqdoc "$command"; done
  for name in $names; do tells tqdoc options "$name" '' | sed '/^$/d' | of value of "$name"; done
}
# The manual describes -h of commands and some values of options in sentences.
in_manual() {
  awk '/^\.Sh/ { of = "-" } /^\.Sh DESCRIPTION/ { of = "tqdoc" }
       /^\.Ss/ { of = "tqdoc " $2; print "command: " $2 }
       /^\.It Fl/ { for (i = 2; i < NF; ++i) if ($i == "Fl") print of ": -" $(i + 1) }
       /^\.It Cm/ { name = $3; print "option: " name }
       /^\.Cm [a-z]* *\.*$/ && of == "tqdoc options" { print "value of " name ": " $2 }' "$manual" |
    grep -v '^value of .*: \(diff\|import\|render\|hit\)$'
}

in_help | LC_ALL=C sort -u >"$work/help"
if [ "$1" = man ]; then
  in_manual | LC_ALL=C sort -u >"$work/told"
  sed -i '/^tqdoc [a-z]*: \(-h\|--help\)$/d' "$work/help"
else
  in_completions | LC_ALL=C sort -u >"$work/told"
fi
say "$(wc -l <"$work/help") commands, options and values"
diff "$work/help" "$work/told" || fail "help (<) and $1 (>) differ"

case "$1" in
  man)
    say "checks of the manual page"
    ! command -v mandoc >/dev/null || mandoc -T lint -W warning "$manual" || fail "mandoc reports errors"
    ! command -v groff >/dev/null || [ -z "$(groff -man -ww -z "$manual" 2>&1)" ] ||
      fail "groff reports errors"
    ;;
  bash | fish)
    say "files"
    mkdir "$work/files" "$work/files/folder"
    cd "$work/files"
    touch a.svg 'b c.svg' d.tqdoc e.png f.txt
    # offers FILES WORD...: checks that exactly these files and the folder are offered
    offers() {
      found="$(shift; tells "$@" | sed 's|/$||' | LC_ALL=C sort | paste -sd ,)"
      [ "$found" = "$1,folder" ] || fail "offers $found: $*"
    }
    offers 'a.svg,b c.svg,d.tqdoc' tqdoc check a.svg ''
    offers 'a.svg,b c.svg' tqdoc import ''
    offers d.tqdoc tqdoc import a.svg -o ''
    offers e.png tqdoc render a.svg --output ''
    offers e.png tqdoc diff --png ''
    ;;
esac
