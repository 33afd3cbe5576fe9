# entry-points.sh <TQFoundation module> <list of internal headers> <doxygen> <folder for its pages>
# Checks that the callback tests cover every public function, or Callbacks.list excuses it.
set -eu
module=$1 pages=$4
internal=$(sed 's|^|Modules/TQFoundation/Include/TQFoundation/|' "$2" | tr '\n' ' ')
rm -rf "$pages"
mkdir -p "$pages"
cd "$module/../.."  # docs/Doxyfile names files relative to it
"$3" - <<END
@INCLUDE = docs/Doxyfile
OUTPUT_DIRECTORY = $pages
GENERATE_HTML = NO
GENERATE_XML = YES
XML_PROGRAMLISTING = NO
EXTRACT_PRIVATE = YES
WARNINGS = NO
WARN_IF_UNDOCUMENTED = NO
WARN_AS_ERROR = NO
INPUT = Modules/TQFoundation/Include
USE_MDFILE_AS_MAINPAGE =
EXCLUDE = $internal
END
awk -f "$module/Tests/callbacks/entry-points.awk" "$pages"/xml/*.xml "$module/Callbacks.list" \
  "$module/Exports.list" "$module"/Tests/callbacks/*.cpp
