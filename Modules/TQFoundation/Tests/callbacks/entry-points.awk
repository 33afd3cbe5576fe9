# awk -f entry-points.awk pages… Callbacks.list Exports.list tests…
# Fails for a public function that no test calls with a callback that releases everything in reach,
# unless Callbacks.list excuses it by name; and for an excuse or a test of a function that does not
# exist. The functions are those of the headers, as Doxygen's XML pages list them, templates
# included, and those of Exports.list. An exported function that is private to its class is reached
# by public ones.

function fault(text) {
  print text
  ++faults
}

# Returns the name of a function without its namespace, template arguments and parameters.
function plain(name) {
  gsub(/\[abi:cxx11\]|^tq::|\(.*/, "", name)
  gsub(/<[^<>]*>/, "", name)
  return name
}

FILENAME ~ /\.xml$/ && /<memberdef / {
  isFunction = /kind="function"/
  isPrivate = /prot="private"/
}
FILENAME ~ /\.xml$/ && isFunction && /<qualifiedname>/ {
  name = $0
  gsub(/.*<qualifiedname>|<\/qualifiedname>.*/, "", name)
  gsub(/&lt;/, "<", name)
  gsub(/&gt;/, ">", name)
  name = plain(name)
  if (name ~ /(^|::)operator/) isFunction = 0
}
FILENAME ~ /\.xml$/ && isFunction && /<location / {
  isFunction = 0
  header = $0
  gsub(/.*<location file="([^"]*TQFoundation\/)?|".*/, "", header)
  if (isPrivate) isKnown[name] = 1
  else headerOf[name] = header
}

FILENAME ~ /Callbacks\.list$/ && /^[^#]/ {
  pattern[++patternCount] = $1
  regexOf[patternCount] = "^(" $1 ")$"
}

FILENAME ~ /Exports\.list$/ && /\(/ && !/^(vtable|typeinfo|VTT|guard|virtual thunk|non-virtual) / && !/^tq::detail::/ {
  name = plain($0)
  if (!(name in headerOf) && !(name in isKnown)) fault(name ": exported, but in no public header")
}

# Each row of a table begins with a text: the names of the functions that it calls. A function is in
# the class of the function before it if its name begins with two colons.
FILENAME ~ /\.cpp$/ && (/^ *\{"[A-Za-z_~]+(::|"|,)/ || isNames) {
  text = $0
  gsub(/^[^"]*"|".*/, "", text)
  row = row text
  isNames = $0 !~ /",/
  if (!isNames) {
    count = split(row, names, / *, */)
    for (i = 1; i <= count; ++i) {
      if (names[i] ~ /^::/) names[i] = scope names[i]
      scope = names[i]
      sub(/::[^:]*$/, "", scope)
      covered[names[i]] = FILENAME
    }
    row = ""
  }
  sub(/.*"/, "")
}
FILENAME ~ /\.cpp$/ {
  body[FILENAME] = body[FILENAME] $0
}

END {
  for (name in covered) {
    if (!(name in headerOf)) fault(name ": a test names it, but no public header")
    last = name
    sub(/.*::/, "", last)
    if (last !~ /^~/ && index(body[covered[name]], last) == 0) fault(name ": no test calls it")
    ++coveredCount
  }
  for (name in headerOf) {
    if (name in covered) continue
    isExcused = 0
    for (i = 1; i <= patternCount; ++i) {
      if (name !~ regexOf[i] && headerOf[name] !~ regexOf[i]) continue
      isExcused = used[i] = 1
    }
    if (!isExcused) fault(headerOf[name] " " name ": neither covered nor excused")
  }
  for (i = 1; i <= patternCount; ++i) {
    if (!used[i]) fault("Callbacks.list: nothing matches " pattern[i])
  }
  count = 0
  for (name in headerOf) ++count
  print coveredCount " of " count " functions have a callback that releases everything in reach"
  exit faults != 0
}
