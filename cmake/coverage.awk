# awk -f coverage.awk -v lineBar=95 -v branchBar=85
# Reads gcovr's CSV of files. Prints a table of rooms with covered lines and branches, then the
# files below the bar. The exit code is 1 if the total is below it.
BEGIN { FS = "," }
NR == 1 {
  for (i = 1; i <= NF; ++i) column[$i] = i
  next
}
{
  file = $column["filename"]
  sub(/.*TQFoundation\/(Source\/)?/, "", file)
  room = file
  sub(/\/.*/, "", room)
  if (!(room in lines)) order[++rooms] = room
  count(room, $column["line_total"], $column["line_covered"], $column["branch_total"],
        $column["branch_covered"])
  count("total", $column["line_total"], $column["line_covered"], $column["branch_total"],
        $column["branch_covered"])
  if (isBelow(file_lines = percent($column["line_covered"], $column["line_total"]),
              file_branches = percent($column["branch_covered"], $column["branch_total"]))) {
    below[++belows] = sprintf("%-45s %7.1f %% %8.1f %%", file, file_lines, file_branches)
  }
}
END {
  printf "%-15s %8s %9s %9s %10s\n", "room", "lines", "covered", "branches", "covered"
  order[++rooms] = "total"
  for (i = 1; i <= rooms; ++i) {
    room = order[i]
    printf "%-15s %8d %7.1f %% %9d %8.1f %%\n", room, lines[room],
      percent(linesCovered[room], lines[room]), branches[room],
      percent(branchesCovered[room], branches[room])
  }
  printf "\nfiles below %d %% of lines or %d %% of branches: %d\n", lineBar, branchBar, belows
  for (i = 1; i <= belows; ++i) print "  " below[i]
  exit lines["total"] == 0 || isBelow(percent(linesCovered["total"], lines["total"]),
                                      percent(branchesCovered["total"], branches["total"]))
}
function count(key, ofLines, covered, ofBranches, taken) {
  lines[key] += ofLines
  linesCovered[key] += covered
  branches[key] += ofBranches
  branchesCovered[key] += taken
}
function percent(part, whole) { return whole == 0 ? 100 : 100 * part / whole }
function isBelow(ofLines, ofBranches) { return ofLines < lineBar || ofBranches < branchBar }
