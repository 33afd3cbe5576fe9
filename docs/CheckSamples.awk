# awk -f CheckSamples.awk Unsampled.list pages… public headers…
# Fails if a public type (class, struct, enumeration, concept or alias) is neither met in a ```cpp block
# of a page nor excused in Unsampled.list, and if an excuse is not needed. Types within other types and
# in tq::detail do not count. With -v uses=1, also prints the types with the pages that use them, as
# "<keyword> <name> <page>…".

FILENAME ~ /[.]list$/ {
  if (NF > 1 && !/^#/) excused[$1] = 1
  next
}

FILENAME ~ /[.]md$/ {
  if (/^```/) {
    inBlock = /^```cpp$/
  } else if (inBlock) {
    gsub(/[^A-Za-z0-9_]+/, " ")
    for (i = 1; i <= NF; ++i) {
      if (!((FILENAME, $i) in isIn)) met[$i] = met[$i] " " FILENAME
      isIn[FILENAME, $i] = 1
    }
  }
  next
}

FNR == 1 { inDetail = 0 }
/^namespace detail/ { inDetail = FNR }
/^}  \/\/ namespace detail/ || (/^}$/ && FNR == inDetail + 2) { inDetail = 0 }
inDetail { next }

# A definition starts its line; a forward declaration ends in a semicolon, a specialisation has angle
# brackets. The name is what follows the keyword and its attributes.
/^(class|struct|enum|concept|using) / && (!/;$/ || /=/) {
  declaration = $0
  keyword = $1
  sub(/^(class|struct|enum class|enum|concept|using) /, "", declaration)
  gsub(/TQ_[A-Z_]+(\("[^"]*"\))? /, "", declaration)
  match(declaration, /^[A-Za-z0-9_]+/)
  name = substr(declaration, 1, RLENGTH)
  if (declaration !~ /^[A-Za-z0-9_]+</ && !(name in seen)) {
    seen[name] = 1
    ++count
    if (uses && name in met) print keyword, name met[name]
    if (name in met) {
      if (name in excused) complain(name " is met in a sample: remove it from Unsampled.list")
    } else if (!(name in excused)) {
      complain(FILENAME ": no sample uses " name)
    }
  }
}

function complain(text) {
  print text
  failed = 1
}

END {
  for (name in excused) {
    if (!(name in seen)) complain(name " in Unsampled.list is no public type")
  }
  if (count < 100) complain("found only " count " public types")
  if (!failed) print count " public types"
  exit failed
}
