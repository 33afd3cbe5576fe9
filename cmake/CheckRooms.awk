# Checks that the rooms of the library use each other only as Rooms.list permits.
#
#   awk -f CheckRooms.awk Rooms.list facts
#
# CheckRooms.sh collects the facts, one on each line; paths are relative to the folder Source:
#   internal <header>                for headers that other folders use but that are not installed
#   include <file> <line of source>  for each #include
#   symbol <file> <name> <type>      for each symbol of an object file, with the type that nm prints

# ---- Rooms.list

$1 == "knows" {
  room = $2
  if (room in isRoom) fault("Rooms.list: " room " is listed twice")
  isRoom[room] = 1
  group = room
  if (sub(/\/.*/, "", group)) members[group] = members[group] " " room
  below = ""
  for (i = 3; i <= NF; ++i) {
    if (!($i in isRoom) && !($i in members)) {  # later rooms are higher, so there is no cycle
      fault("Rooms.list: " room " knows " $i ", which is not a room listed before it")
    }
    below = below " " ($i in members ? members[$i] : $i)
  }
  mayKnow[room, room] = 1
  count = split(below, direct, " ")
  for (i = 1; i <= count; ++i) {
    for (other in isRoom) {
      if ((direct[i], other) in mayKnow) mayKnow[room, other] = 1
    }
  }
  next
}
$1 == "except" {
  isExcepted[$2, $3] = 1
  next
}

# ---- Headers that are not installed

$1 == "internal" {
  isInternal[$2] = 1
  next
}

# ---- Includes

$1 == "include" {
  file = $2
  line = $0
  sub(/^include [^ ]* /, "", line)
  ++includes
  room = roomOf(file)
  if (!(file in seen)) {
    seen[file] = 1
    ++files
    if (room != "" && !(room in isRoom)) fault(file ": " room " is not a room of Rooms.list")
  }
  if (room == "") next  # the umbrella header
  if (match(line, /<TQFoundation\/[^>]*>/)) {
    header = substr(line, RSTART + 14, RLENGTH - 15)
    included[file] = included[file] " " header
    if (!((room, roomOf(header)) in mayKnow)) {
      fault(file ": " room " may not know " roomOf(header) ": " line)
    }
    owner = header
    if (sub(/\/detail\/.*/, "", owner) && folderOf(file) != owner) {
      fault(file ": " owner "/detail is only for " owner ": " line)
    }
  } else if (line ~ /[<"][a-z0-9_\/]+[>"]$/ || line ~ /<(errno|cxxabi|emmintrin|immintrin)\.h>/) {
    # headers of the C++ library or of the compiler
  } else if (line ~ /<((sys|linux|netinet|arpa)\/[a-z0-9_]+|fcntl|unistd|pthread|signal|poll)\.h>/) {
    if (room !~ /^platform\//) fault(file ": only platform may call the system: " line)
  } else if (room !~ /^platform\// || file !~ /\.cpp$/) {
    fault(file ": only .cpp files of platform may include other libraries: " line)
  }
  next
}

# ---- Symbols

$1 == "symbol" {
  objects[$2] = 1
  if ($4 == "U" || $4 == "w" || $4 == "v") {
    ++calls
    callers[calls] = $2
    callees[calls] = $3
  } else if ($4 ~ /^[A-Zu]$/) {  # not a local name
    definers[$3] = definers[$3] " " $2
  }
  next
}

# ---- Verdict

END {
  for (file in seen) {
    if (file ~ /\.h$/ && !(file in isInternal) && file !~ /\/detail\//) requireInstalled(file)
  }
  for (i = 1; i <= calls; ++i) {
    if (!(callees[i] in definers)) continue  # defined by another library
    if (!isCallAllowed(callers[i], definers[callees[i]])) {
      fault(callers[i] ": " roomOf(callers[i]) " may not call what" definers[callees[i]] \
            " defines: " callees[i])
    }
  }
  for (pair in isExcepted) {
    if (calls > 0 && !(pair in isUsed)) {
      split(pair, ends, SUBSEP)
      fault("Rooms.list: " ends[1] " calls nothing of " ends[2] "; remove the exception")
    }
  }
  if (faults > 0) exit 1
  for (object in objects) ++objectCount
  printf "%d files and %d object files obey Rooms.list\n", files, objectCount
}

function fault(text) {
  print text
  ++faults
}

# "platform/files" of platform/files/detail/A.h, "objects" of objects/Array.h, "" of A.h.
function roomOf(file,    parts, count) {
  count = split(file, parts, "/")
  if (count < 2) return ""
  if (count > 2 && (parts[1] in members)) return parts[1] "/" parts[2]
  return parts[1]
}

# The folder of a file; a folder `detail` counts as its parent.
function folderOf(file) {
  sub(/\/[^\/]*$/, "", file)
  sub(/\/detail$/, "", file)
  return file
}

# Public headers, and what they include in turn, must not need headers that are not installed.
function requireInstalled(file,    headers, count, i) {
  if (file in isChecked) return
  isChecked[file] = 1
  count = split(included[file], headers, " ")
  for (i = 1; i <= count; ++i) {
    if (headers[i] in isInternal) {
      fault(file ": a public header needs " headers[i] ", which is not installed")
    } else if (headers[i] ~ /\/detail\//) {
      requireInstalled(headers[i])
    }
  }
}

# A name that several files define is an inline function or a template. It is enough if one of these
# files is permitted.
function isCallAllowed(caller, definedIn,    files, count, i) {
  count = split(definedIn, files, " ")
  for (i = 1; i <= count; ++i) {
    if ((roomOf(caller), roomOf(files[i])) in mayKnow) return 1
  }
  for (i = 1; i <= count; ++i) {
    if ((roomOf(caller), files[i]) in isExcepted) {
      isUsed[roomOf(caller), files[i]] = 1
      return 1
    }
  }
  return 0
}
