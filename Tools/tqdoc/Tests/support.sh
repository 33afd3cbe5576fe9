# What the tests of the program as a whole share; each sources it. They are told TQDOC, the program,
# and TQDOC_WORK, a folder that is theirs alone. Exit code 77 says that a test was skipped.
source="$(cd "$(dirname "$0")/.." && pwd)"
tqdoc="$TQDOC"
work="$TQDOC_WORK"
manual="$source/tqdoc.1"
completions="$source/completions"
data="$source/Tests/data"
rm -rf "$work"
mkdir -p "$work"
export XDG_CONFIG_HOME="$work/config"  # never the user's own

fail() { printf 'FAILED: %s\n' "$*" >&2; exit 1; }
say() { printf '== %s\n' "$*"; }
needs() {
  command -v "$1" >/dev/null || { say "skipped: $1 is not installed"; exit 77; }
}
