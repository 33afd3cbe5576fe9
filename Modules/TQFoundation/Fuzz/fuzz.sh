#!/bin/sh
# fuzz.sh SECONDS NAME: runs a fuzz target of the asan build. Failing inputs, and inputs that reach
# new code, are stored in build/asan/found/NAME. Prints a summary; exit status 1 reports a failure.
set -eu
cd "$(dirname "$0")/../../.."
root="$PWD"
seeds="$(find "$PWD/Modules" "$PWD/Tools" -path "*/corpus/$2")"
words="${seeds%/corpus/*}/$2.dict"
[ ! -f "$words" ] || set -- "$@" "-dict=$words"
program="$PWD/build/asan/Modules/TQFoundation/Fuzz/${2}Fuzz"
mkdir -p "build/asan/found/$2"
cd "build/asan/found/$2"
export LSAN_OPTIONS="suppressions=$root/cmake/leaks.supp:print_suppressions=0"
status=0
"$program" -max_total_time="$1" -rss_limit_mb=4096 -timeout=20 -print_final_stats=1 ${3+"$3"} . \
  "$seeds" >log 2>&1 || status=$?
printf '%s: %s inputs in %s seconds, exit status %s\n' "$2" \
  "$(sed -n 's/^stat::number_of_executed_units: //p' log)" "$1" "$status"
[ "$status" = 0 ] || { tail -40 log; exit 1; }
