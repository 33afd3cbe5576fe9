# Turns what a benchmark program prints into a table: ours beside each peer of the same run.
#
# A benchmark is named BM_<Subject>_<Who>, ours BM_<Subject>_TQ; a template's argument follows in "<>",
# others behind "/". The medians of the repetitions are compared: CPU time, real time where a benchmark
# asks for that, or the counter that stands in for it.

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
  gsub(/iterations:[0-9]+|repeats:[0-9]+|real_time/, "", arguments)
  gsub(/\/+/, " ", arguments)
  sub(/ $/, "", arguments)
  if (slash) name = substr(name, 1, slash - 1)
  if (match(name, /<.*>$/)) {
    arguments = substr(name, RSTART + 1, RLENGTH - 2) " " arguments
    name = substr(name, 1, RSTART - 1)
  }
  who = name
  sub(/.*_/, "", who)
  subject = substr(name, 4, length(name) - length(who) - 4)
  key = subject "|" arguments
  value = isReal ? inNanoseconds($2, $3) : inNanoseconds($4, $5)
  if (match($0, /bytes_per_value=[0-9.]+/)) value = substr($0, RSTART + 16, RLENGTH - 16)
  if (!(key in seen)) { seen[key] = 1; keys[++count] = key }
  if (who == "TQ") ours[key] = value
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
