# awk -f page-filter.awk docs/Page.md
# Prepares a page for Doxygen, which knows no anchors of headings as other viewers of Markdown make them:
# "## Older programs" in Format.md becomes Format-older-programs. The guides are below their list in the
# index of pages. Links to files without a page become text.

function identifier(path,    parts, count, name) {
  count = split(path, parts, "/")
  name = parts[count]
  sub(/[.]md$/, "", name)
  return name == "README" && path ~ /guides\// ? "guides" : name
}

# Returns the anchor of a heading, or of the part of a link after "#".
function slug(text) {
  text = tolower(text)
  gsub(/[^a-z0-9 _-]/, "", text)
  gsub(/ /, "-", text)
  return text
}

# Returns a link "[text](target)" in Doxygen's form.
function converted(link,    text, target, part) {
  target = substr(link, index(link, "](") + 2)
  sub(/\)$/, "", target)
  if (link ~ /^!/ || target ~ /^http/) return link
  text = substr(link, 2, index(link, "](") - 2)
  if (split(target, part, "#") == 2)
    return "[" text "](@ref " identifier(part[1] == "" ? FILENAME : part[1]) "-" part[2] ")"
  if (target !~ /[.]md$/) return text
  if (FILENAME !~ /guides\/README[.]md$/ || target ~ /\//) return link
  sub(/[.]md$/, "", target)
  gsub(/`/, "", text)
  return "@subpage md_docs_guides_" target " \"" text "\""
}

/^ *```/ { isSample = !isSample }
isSample || /^    / { print; next }
/^# / { gsub(/`/, "") }
/^##+ / {
  heading = $0
  sub(/^#+ /, "", heading)
  anchor = identifier(FILENAME) "-" slug(heading)
  print $0 (isUsed[anchor]++ ? "" : " {#" anchor "}")
  next
}
{
  rest = $0
  line = ""
  while (match(rest, /!?\[[^]]+\]\([^)]*\)/)) {
    line = line substr(rest, 1, RSTART - 1) converted(substr(rest, RSTART, RLENGTH))
    rest = substr(rest, RSTART + RLENGTH)
  }
  print line rest
}
