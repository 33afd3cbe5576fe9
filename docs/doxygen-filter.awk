# awk -f doxygen-filter.awk header.h
# Prepares a header for Doxygen. Two conventions of the project are expanded:
# - a comment covers every declaration below it, up to an empty line;
# - members with the same meaning in every class (`sameEverywhere`) are documented once, here.
# Line numbers are unchanged, so that warnings show the right ones.

function trimmed(text) {
  gsub(/^[ \t]+|[ \t]+$/, "", text)
  return text
}

# Returns the meaning of a common member, or "".
function sameEverywhere(text) {
  if (text ~ /string_view className =/)
    return "The name of the class; also used in archives, unless there is a codingName."
  if (text ~ /string_view codingName =/) return "The name of the class in archives."
  if (text ~ /^using (iterator_category|iterator_concept|value_type|difference_type|pointer|reference|iterator|const_iterator) =/)
    return "Required by the C++ library for iterators and ranges."
  if (text ~ / operator\*\(\) const/) return "Returns the current element."
  if (text ~ / operator->\(\) const/) return "Accesses a member of the current element."
  if (text ~ / operator\+\+\(/) return "Advances to the next element."
  if (text ~ / operator--\(/) return "Moves back to the previous element."
  if (text ~ / operator==\(.* = default;/) return "Compares all fields. NaN is not equal to anything."
  if (text ~ /[ :](begin|end)\(\) (const )?(noexcept )?[{;]/)
    return "For range-based loops, in order. The container must not change during the loop."
  if (text ~ / count\(\) const/) return "Returns the number of elements. O(1)."
  if (text ~ / isEmpty\(\) const/) return "Returns true if there are no elements."
  if (text ~ / hash\(\) const( noexcept)? override/) return "Equal objects have equal hashes."
  return ""
}

# At the end of a declaration: decides whether its body or its members follow.
function finish(end) {
  isOpen = 0
  if (end !~ /[{]$/) return
  if (declaration ~ /^(template[^(]*> *)?(namespace|class|struct|union|enum|extern "C")/) {
    comment = ""
    return
  }
  bodyEnd = indentation "}"
}

{
  text = trimmed($0)
  indentation = substr($0, 1, index($0, substr(text, 1, 1)) - 1)
}
isMacro {
  isMacro = text ~ /\\$/
  print bodyEnd == "" ? $0 : ""
  next
}
bodyEnd != "" {
  # Macros inside a body are ignored.
  isMacro = text ~ /^#define.*\\$/
  if (index($0, bodyEnd) == 1) bodyEnd = ""
  print text ~ /^#define/ ? "" : $0
  next
}
text == "" { comment = ""; isFresh = 0 }
text ~ /^\/\/\// {
  comment = (isFresh ? comment "\n" : "") substr(text, 4)
  isFresh = 1
}
text == "" || text ~ /^\/\// || text ~ /^#/ && text !~ /^#define/ { print; next }
!isOpen && text ~ /^[}]|^(public|protected|private):/ { comment = ""; isFresh = 0; print; next }
{
  # Trailing comments are not part of the declaration.
  code = text
  sub(/ *\/\/.*$/, "", code)
}
!isOpen {
  if (!isFresh) {
    words = sameEverywhere(text)
    if (words == "" && text !~ /~|= delete;/) words = comment
    if (words != "" && text !~ /\/\/\/</) {
      gsub(/\n/, " ", words)
      $0 = indentation "/**" words " */ " text
    }
  }
  isFresh = 0
  isOpen = 1
  declaration = code
  startIndentation = indentation
  if (text ~ /^#define/) {
    isOpen = 0
    isMacro = text ~ /\\$/
  }
  else if (code ~ /[;}{]$/ || (code ~ /,$/ && code !~ /\(/)) finish(code)
  print
  next
}
{
  declaration = declaration " " code
  indentation = startIndentation
  if (code ~ /[;}{]$/) finish(code)
  print
}
