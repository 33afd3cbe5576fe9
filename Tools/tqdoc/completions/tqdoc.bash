# Bash completion for tqdoc.

# _tqdoc_files ENDING...: files with these endings, and folders.
_tqdoc_files() {
  local ending file
  compopt -o filenames 2>/dev/null
  while IFS= read -r file; do COMPREPLY+=("$file"); done < <(
    compgen -d -- "$cur"
    for ending; do compgen -f -X "!*.$ending" -- "$cur"; done
  )
}

_tqdoc_words() {
  mapfile -t COMPREPLY < <(compgen -W "$*" -- "$cur")
}

# Prints the number of arguments between the command and the cursor, without options and their values.
_tqdoc_arguments_before() {
  local i count=0
  for ((i = 2; i < COMP_CWORD; ++i)); do
    case ${COMP_WORDS[i]} in
      -o | --output | --png | --html | --git | --width | --size | --count | --columns) ((++i)) ;;
      -[!0-9]*) ;;
      *) ((++count)) ;;
    esac
  done
  echo $count
}

_tqdoc() {
  local cur=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD - 1]} command=${COMP_WORDS[1]}
  local arguments=0
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    case $cur in
      -*) _tqdoc_words -h --help --help-all --version ;;
      *) _tqdoc_words import show render hit sheet diff patch check recent options ;;
    esac
    return
  fi
  case $command,$before in
    import,-o | import,--output | patch,-o | patch,--output) _tqdoc_files tqdoc; return ;;
    *,--html) _tqdoc_files html; return ;;
    *,-o | *,--output | *,--png) _tqdoc_files png; return ;;
    *,--git | *,--width | *,--size | *,--count | *,--columns) return ;;
  esac
  case $command,$cur in
    import,-*) _tqdoc_words -h --help -o --output --gzip --no-gzip; return ;;
    render,-*) _tqdoc_words -h --help -o --output --width --bounds --controls --intersections; return ;;
    show,-*) _tqdoc_words -h --help --json; return ;;
    hit,-*) _tqdoc_words -h --help --json --png --width; return ;;
    sheet,-*) _tqdoc_words -h --help -o --output --count --columns --size; return ;;
    diff,-*) _tqdoc_words -h --help --json --png --html --git --size; return ;;
    patch,-*) _tqdoc_words -h --help -o --output --partial --gzip --no-gzip; return ;;
    check,-*) _tqdoc_words -h --help --draw --json -v --verbose; return ;;
    recent,-*) _tqdoc_words -h --help --clear; return ;;
    options,-*) _tqdoc_words -h --help --reset; return ;;
    *,-*) _tqdoc_words -h --help; return ;;
  esac
  arguments=$(_tqdoc_arguments_before)
  case $command,$arguments in
    import,0) _tqdoc_files svg svgz ;;
    patch,1) _tqdoc_files json ;;
    show,0 | hit,0 | patch,0 | diff,* | check,* | render,* | sheet,*) _tqdoc_files svg svgz tqdoc ;;
    options,0) _tqdoc_words colours gzip width recent ;;
    options,1)
      case $before in
        colours) _tqdoc_words auto always never ;;
        gzip) _tqdoc_words on off ;;
      esac
      ;;
  esac
}

complete -F _tqdoc tqdoc
