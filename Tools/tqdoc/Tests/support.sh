# Sourced by the shell tests. TQDOC is the program, TQDOC_WORK a folder for this test alone. Exit
# status 77 means that the test was skipped.
source="$(cd "$(dirname "$0")/.." && pwd)"
tqdoc="$TQDOC"
work="$TQDOC_WORK"
manual="$source/tqdoc.1"
completions="$source/completions"
data="$source/Tests/data"
rm -rf "$work"
mkdir -p "$work"
export XDG_CONFIG_HOME="$work/config"  # not the user's

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
say() { printf '== %s\n' "$*"; }
needs() {
  command -v "$1" >/dev/null || { say "skipped: $1 is not installed"; exit 77; }
}
