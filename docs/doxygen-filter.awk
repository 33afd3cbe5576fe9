# awk -f doxygen-filter.awk header.h
# Hands a header to Doxygen with two of the house's conventions spelled out:
# - a comment speaks for every declaration below it, up to an empty line;
# - members that mean the same in every class (`sameEverywhere`) are told once, here.
# No line moves, so that warnings name the right ones.

function trimmed(text) {
  gsub(/^[ \t]+|[ \t]+$/, "", text)
  return text
}

# What a member means wherever it stands, or "".
function sameEverywhere(text) {
  if (text ~ /string_view className =/)
    return "The class's name, also in archives unless there is a codingName."
  if (text ~ /string_view codingName =/) return "The name that archives carry for the class."
  if (text ~ /^using (iterator_category|iterator_concept|value_type|difference_type|pointer|reference|iterator|const_iterator) =/)
    return "What the C++ library asks of iterators and ranges."
  if (text ~ / operator\*\(\) const/) return "What it stands at."
  if (text ~ / operator->\(\) const/) return "A member of what it stands at."
  if (text ~ / operator\+\+\(/) return "Steps to the next one."
  if (text ~ / operator--\(/) return "Steps back to the one before."
  if (text ~ / operator==\(.* = default;/) return "Equal in every field; a NaN equals nothing."
  if (text ~ /[ :](begin|end)\(\) (const )?(noexcept )?[{;]/)
    return "For range-based loops, in order. What is gone over must stay as it is meanwhile."
  if (text ~ / count\(\) const/) return "How many it holds. O(1)."
  if (text ~ / isEmpty\(\) const/) return "True when it holds nothing."
  if (text ~ / hash\(\) const( noexcept)? override/) return "The same for objects that are equal."
  return ""
}

# A declaration has ended: its braces say whether what follows is its body or its members.
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
  # Macros of a body are nobody else's.
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
  # The comment of code behind it is none of the declaration's.
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
