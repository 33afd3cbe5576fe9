# Turns what a benchmark program prints into a table: ours beside each peer of the same run.
#
# A benchmark is named BM_<Subject>_<Who>, ours BM_<Subject>_TQ; a template's argument follows in "<>",
# others behind "/". The medians of the repetitions are compared: CPU time, real time where a benchmark
# asks for that, or the counter that stands in for it. One named BM_<Subject>Vs<Who> has run both in
# turns; its counter "speedup" is the ratio.

BEGIN { print "| what | arguments | ours | peer | peer's | ours is |"; print "|---|---|---:|---|---:|---:|" }

function inNanoseconds(time, unit) {
  return time * (unit == "s" ? 1e9 : unit == "ms" ? 1e6 : unit == "us" ? 1e3 : 1)
}

function readable(value) {
  if (held) return sprintf("%.0f B", value)
  if (value >= 1e6) return sprintf("%.2f ms", value / 1e6)
  if (value >= 1e3) return sprintf("%.2f µs", value / 1e3)
  return sprintf("%.1f ns", value)
}

$1 ~ /^BM_.*_median$/ {
  name = $1
  sub(/_median$/, "", name)
  slash = index(name, "/")
  arguments = slash ? substr(name, slash + 1) : ""
  isReal = arguments ~ /real_time/
  gsub(/iterations:[0-9]+|repeats:[0-9]+|real_time|manual_time/, "", arguments)
  gsub(/\/+/, " ", arguments)
  sub(/ $/, "", arguments)
  if (slash) name = substr(name, 1, slash - 1)
  if (match(name, /<.*>$/)) {
    arguments = substr(name, RSTART + 1, RLENGTH - 2) " " arguments
    name = substr(name, 1, RSTART - 1)
  }
  hasBoth = match($0, /speedup=[0-9.]+m?/)
  if (hasBoth) {
    speedup = substr($0, RSTART + 8, RLENGTH - 8)
    if (speedup ~ /m$/) speedup /= 1000
    at = index(name, "Vs")
    who = substr(name, at + 2)
    subject = substr(name, 4, at - 4)
  } else {
    who = name
    sub(/.*_/, "", who)
    subject = substr(name, 4, length(name) - length(who) - 4)
  }
  key = subject "|" arguments
  value = isReal ? inNanoseconds($2, $3) : inNanoseconds($4, $5)
  if (match($0, /bytes_per_value=[0-9.]+/)) value = substr($0, RSTART + 16, RLENGTH - 16)
  if (!(key in seen)) { seen[key] = 1; keys[++count] = key }
  if (hasBoth) {
    ours[key] = inNanoseconds($2, $3)
    peers[key] = peers[key] " " who
    theirs[key, who] = ours[key] * speedup
  } else if (who == "TQ") ours[key] = value
  else { peers[key] = peers[key] " " who; theirs[key, who] = value }
}

END {
  for (k = 1; k <= count; ++k) {
    key = keys[k]
    if (!(key in ours)) continue
    split(key, parts, "|")
    held = parts[1] ~ /Held/
    number = split(peers[key], list, " ")
    if (number == 0) printf "| %s | %s | %s | | | |\n", parts[1], parts[2], readable(ours[key]) | "sort -V"
    for (p = 1; p <= number; ++p) {
      value = theirs[key, list[p]]
      printf "| %s | %s | %s | %s | %s | %.2f× |\n", parts[1], parts[2], readable(ours[key]), list[p], readable(value), value / ours[key] | "sort -V"
    }
  }
}
