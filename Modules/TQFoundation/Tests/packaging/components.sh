# Installs each component alone. Each file must be in exactly one component.
. "$(dirname "$0")/support.sh"

# put DESTDIR ARGUMENTS...: installs below DESTDIR; prints the files relative to the prefix.
put() {
  destdir="$TQ_WORK/$1"; shift
  (export DESTDIR="$destdir"; quietly "$CMAKE" --install "$TQ_BUILD" --prefix /opt/tq "$@")
  [ ! -e "$destdir/opt/tq" ] || (cd "$destdir/opt/tq" && find . ! -type d | LC_ALL=C sort)
}

put whole >"$TQ_WORK/whole.txt"
for component in Runtime Development Tools; do
  put "$component" --component "$component" >"$TQ_WORK/$component.txt"
  say "$component: $(wc -l <"$TQ_WORK/$component.txt") files"
done
LC_ALL=C sort "$TQ_WORK/Runtime.txt" "$TQ_WORK/Development.txt" "$TQ_WORK/Tools.txt" |
  diff - "$TQ_WORK/whole.txt" || fail "some files are in no component, or in two"

# has COMPONENT PATTERN...: each file must match a pattern, and each pattern must match a file.
has() {
  component="$1"; shift
  left="$(cat "$TQ_WORK/$component.txt")"
  for pattern in "$@"; do
    printf '%s\n' "$left" | grep -qx "$pattern" || fail "$component lacks $pattern"
    left="$(printf '%s\n' "$left" | grep -vx "$pattern" || true)"
  done
  [ -z "$left" ] || fail "$component has unexpected files: $left"
}
lib="./$TQ_LIBDIR"
docs='\(copyright\|changelog\.gz\)'
has Runtime "./share/doc/libtqfoundation$TQ_SERIES/$docs" \
  "./share/lintian/overrides/libtqfoundation$TQ_SERIES" \
  "$lib/libTQFoundation\.so\.$TQ_SERIES" "$lib/libTQFoundation\.so\.$TQ_SERIES\.[0-9]*"
has Development "./share/doc/libtqfoundation-dev/$docs" "$lib/libTQFoundation\.so" "$lib/pkgconfig/TQFoundation\.pc" \
  "$lib/cmake/TQFoundation/TQFoundation[A-Z][A-Za-z-]*\.cmake" '\./include/TQFoundation/.*\.h' \
  "\./share/gdb/auto-load/opt/tq/$TQ_LIBDIR/libTQFoundation\.so\.[0-9.]*-gdb\.py"
[ ! -e "$TQ_BUILD/Tools/tqdoc/tqdoc" ] || has Tools '\./bin/tqdoc' "./share/doc/tqdoc/$docs" \
  '\./share/man/man1/tqdoc\.1\.gz' \
  '\./share/bash-completion/completions/tqdoc' '\./share/zsh/site-functions/_tqdoc' \
  '\./share/fish/vendor_completions\.d/tqdoc\.fish'
