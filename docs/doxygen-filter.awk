# awk -f doxygen-filter.awk reference/Topics.list header.h
# Prepares a header for Doxygen. The conventions of the project are expanded:
# - a comment covers every declaration below it, up to an empty line;
# - members with the same meaning in every class (`sameEverywhere`) are documented once, here;
# - the first sentence is the summary, and describes the result if it begins with "Returns";
# - a line "Threads: any." within a comment is an item of a list;
# - a header's names belong to the topic that lists it.
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
  if (text ~ / operator==\((.* = default;|(const )?[A-Za-z]+&?,$)/)
    return "Compares all fields. NaN is not equal to anything."
  if (text ~ / operator==\(Iterator /) return "Returns whether both are at the same element."
  if (text ~ / operator==\(.*sentinel/) return "Returns whether all elements have been visited."
  if (text ~ /[ :](begin|end)\(\) (const )?(noexcept )?[{;]/)
    return "For range-based loops, in order. The container must not change during the loop."
  if (text ~ / count\(\) const/) return "Returns the number of elements. O(1)."
  if (text ~ / isEmpty\(\) const/) return "Returns true if there are no elements."
  if (text ~ / hash\(\) const( noexcept)? override/) return "Equal objects have equal hashes."
  return ""
}

# Judges by the first line of a declaration.
function hasResult(declaration) {
  return declaration !~ /^(using|struct|class|enum|#define|explicit|~)|^[A-Za-z]+\(|void [a-zA-Z]+\(/
}

# Returns a comment with commands for its parts, on as many lines.
function formatted(comment, declaration,    size, isSentence, first, rest, details) {
  if (match(comment, /^ @file [^\n]*\n/)) {
    size = RLENGTH
    first = header in topicOf ? " @details <code>\\#include &lt;TQFoundation/" header "&gt;</code>\n" : "\n"
    return substr(comment, 1, size - 1) first formatted(substr(comment, size + 1), "")
  }
  if (comment ~ /^[ \n]*(@|$)/) return comment
  size = 0
  do {  # a sentence does not end within quotation marks
    match(substr(comment, size + 1), /[.?!]( |\n|$)|\n *(\n|@|- )|$/)
    isSentence = substr(comment, size + RSTART, 1) ~ /[.?!]/
    size += RSTART - !isSentence
    first = substr(comment, 1, size)
  } while (isSentence && gsub(/"/, "&", first) % 2)
  if (first ~ /\\/) return comment
  if (first ~ /^ [A-Z][a-z]+ [a-z]/) sub(/ /, " %", first)  # a word, not a class: "Set the state."
  rest = substr(comment, size + 1)
  details = first
  if (sub(/^ %?Returns /, " @return ", details) && rest !~ /@return/ && hasResult(declaration))
    details = details (rest ~ /[^ \n]/ ? " @details" : "")
  else
    details = " @details" first
  gsub(/\n */, " ", details)
  comment = ""
  while (sub(/\n */, " ", first)) comment = comment "\n"
  return comment " @brief" first details rest
}

# Prints the comment above a declaration.
function printComment(declaration,    lines, count, i) {
  count = split(formatted(comment, declaration), lines, "\n")
  for (i = 1; i <= count; ++i) print commentIndentation "///" lines[i]
  isHeld = 0
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
  isInitializer = declaration !~ /\(/
}

FILENAME ~ /Topics[.]list$/ {
  if ($1 == "topic") name = $2
  if ($1 == "headers") for (i = 2; i <= NF; ++i) topicOf[$i] = name
  next
}
FNR == 1 {
  header = FILENAME
  sub(/.*\/Include\/TQFoundation\//, "", header)
  if (header in topicOf) {
    opening = "/** @topic{" topicOf[header] "} */ "
    closing = "/** @} */ "
  }
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
  if (index($0, bodyEnd) == 1 || isInitializer && /};$/) bodyEnd = ""
  print text ~ /^#define/ ? "" : $0
  next
}
text ~ /^\/\/\// {
  line = substr(text, 4)
  if (isFresh && comment !~ /^ @file [^\n]*$/ && match(line, /^ [A-Z][a-z]+: /))
    line = " - **%" substr(line, 2, RLENGTH - 2) "** " substr(line, RLENGTH + 1)
  gsub(/Null /, "%&", line)  # a pointer that is null, not the class
  # A number that wrapping put first is no item of a list.
  if (!isFresh) item = 0
  if (line ~ /^ *[0-9]+[.] / && line + 0 != ++item) sub(/[.]/, "\\.", line)
  comment = (isFresh ? comment "\n" : "") line
  commentIndentation = indentation
  isFresh = isHeld = 1
  next
}
isHeld { printComment(text) }
text == "" || /^(namespace tq [{]|}  \/\/ namespace tq)$/ { comment = ""; isFresh = 0 }
# The namespace itself has no topic, unlike the names in it and the macros around it.
text == "" && !isBegun {
  isBegun = 1
  print opening
  next
}
/^namespace tq [{]$/ { print closing $0 " " opening; next }
/^}  \/\/ namespace tq$/ { print closing "} " opening; next }
# Only gives access to private members.
text ~ /^friend .*;$/ && text !~ /operator/ { print ""; next }
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
      words = formatted(words ~ /^ / ? words : " " words, text)
      gsub(/\n - /, " @li ", words)
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
  else if (code ~ /[;}{]$/ || (code ~ /,$/ && code !~ /\(|^(template|using) /)) finish(code)
  print
  next
}
{
  declaration = declaration " " code
  indentation = startIndentation
  if (code ~ /[;}{]$/) finish(code)
  print
}
END {
  if (isHeld) printComment("")
  print closing
}
