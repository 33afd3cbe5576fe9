# Checks that public headers include the standard headers of HeavyHeaders.list only where permitted.
#
#   awk -f CheckHeavyHeaders.awk HeavyHeaders.list TQFoundation.h <all other headers, relative to Source>

FNR == NR {
  if ($1 != "" && $1 !~ /^#/) {
    isHeavy[$1] = 1
    for (i = 2; i <= NF; ++i) permitted[$1, $i] = 0
  }
  next
}
match($0, /^#include <[^>]*>/) {
  header = substr($0, RSTART + 10, RLENGTH - 11)
  sub(/^TQFoundation\//, "", header)
  included[FILENAME] = included[FILENAME] " " header
}
END {
  count = split(included["TQFoundation.h"], headers, " ")
  for (i = 1; i <= count; ++i) {
    split("", reached)
    reach(headers[i])
    for (header in reached) {
      if (header in isHeavy) check(headers[i], header, reached[header])
    }
  }
  for (pair in permitted) {
    if (permitted[pair] == 0) {
      split(pair, parts, SUBSEP)
      fault("HeavyHeaders.list: no public header that matches " parts[2] " includes <" parts[1] ">")
    }
  }
  if (faults > 0) exit 1
  printf "%d public headers obey HeavyHeaders.list\n", count
}

# Collects what a header includes, with the header that includes it directly.
function reach(from,    parts, count, i) {
  count = split(included[from], parts, " ")
  for (i = 1; i <= count; ++i) {
    if (parts[i] in reached) continue
    reached[parts[i]] = from
    reach(parts[i])
  }
}

function check(public, heavy, by,    pair, parts, isPermitted) {
  for (pair in permitted) {
    split(pair, parts, SUBSEP)
    if (parts[1] == heavy && public ~ "^" parts[2]) {
      ++permitted[pair]
      isPermitted = 1
    }
  }
  if (!isPermitted) fault(public ": may not include <" heavy ">, which " by " includes")
}

function fault(text) {
  print text
  ++faults
}
