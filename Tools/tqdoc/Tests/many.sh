# Checking 20,000 drawings takes little more memory than checking 1,000, and shows a progress bar.
set -eu
. "$(dirname "$0")/support.sh"
needs /usr/bin/time
needs script

# drawings COUNT FOLDER: writes COUNT different drawings.
drawings() {
  mkdir "$2"
  awk -v count="$1" -v folder="$2" 'BEGIN {
    for (i = 1; i <= count; ++i) {
      file = folder "/" i ".svg"
      print "<svg width=\"" i "\" height=\"9\"><path d=\"M0 0h" i "v9c1 2 3 4 5 6z\"/></svg>" >file
      close(file)
    }
  }'
}

# peak FOLDER: prints the peak memory of checking it, in KiB.
peak() {
  /usr/bin/time -q -o "$work/peak" -f %M "$tqdoc" check "$1" >"$work/out" 2>"$work/bar" ||
    fail "checking $1"
  [ ! -s "$work/bar" ] || fail "a progress bar without a terminal"
  cat "$work/peak"
}

drawings 1000 "$work/few"
drawings 20000 "$work/many"
few="$(peak "$work/few")"
many="$(peak "$work/many")"
grep -qx 'drawings     20,000' "$work/out" || fail "some drawings were not checked"
each=$(((many - few) * 1024 / 19000))
say "peaks of $few and $many KiB: $each bytes for each further drawing"
[ "$each" -lt 450 ] || fail "memory grows with the number of drawings"

script -qec "stty cols 50; $tqdoc check $work/many" "$work/screen" </dev/null >/dev/null
tr '\r' '\n' <"$work/screen" | sed -n 's|^.*\(\[#*\.*\] \)|\1|p' >"$work/bars"
sed 's|.* \([0-9]*\)/20000 .*|\1|' "$work/bars" >"$work/steps"
[ "$(wc -L <"$work/bars")" = 49 ] || fail "the bar does not fit the terminal"
[ "$(sort -u "$work/steps" | wc -l)" -ge 2 ] || fail "the bar does not move"
sort -nc "$work/steps" || fail "the bar moves backwards"
