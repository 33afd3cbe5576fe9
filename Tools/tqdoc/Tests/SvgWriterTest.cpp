#include "Svg/SvgWriter.h"

#include "Files/FileList.h"
#include "Files/RoundTrip.h"
#include "Model/Compare.h"
#include "Support.h"

namespace tqdoc {
namespace {

[[nodiscard]] tq::Ref<Document> rewritten(const Document& document) {
  const std::string text = svgOf(document);
  return readSvg(std::as_bytes(std::span(text)), "written.svg", nullptr).document;
}

TEST(SvgWriter, WritesWhatReadsAsTheSame) {
  registerModel();
  const std::string data = TQDOC_TEST_DATA;
  const auto files = listFiles({data, data + "/../../Compare/features"}).files;
  EXPECT_GT(files.size(), 20U);
  for (const std::string& file : files) {
    const auto document = openDrawing(file, nullptr).document;
    if (!document) continue;  // a drawing that the reader must refuse
    SCOPED_TRACE(file);
    const auto again = rewritten(*document);
    ASSERT_TRUE(again);
    EXPECT_TRUE(looksTheSame(*document, *again, 96));
    EXPECT_EQ(svgOf(*rewritten(*again)), svgOf(*again));
  }
}

TEST(SvgWriter, KeepsNamesTextAndNumbers) {
  for (const char* content :
       {"<g id='g' opacity='.3' transform='rotate(30)'><path id='p' d='M0 0h.1v1e-7z'/></g>",
        "<path inkscape:label='&lt;&quot;&amp;ü' d='M0 0L3 4C1 2 3 4 5 6' display='none'/>",
        "<path d='M0 0h9' fill='none' stroke='red' stroke-dasharray='1 .3' "
        "stroke-linecap='round'/>",
        "<path d='M0 0h9' fill='#123456' fill-opacity='.1' fill-rule='evenodd'/>",
        "<text x='1' y='2' font-family='A B, serif' xml:space='preserve'> a&lt;  </text>",
        "<text font-weight='bold' stroke='red'>one <tspan x='1 2' y='3' rotate='9' stroke='none' "
        "font-weight='400'>two</tspan><tspan dx='1' font-style='italic'>😀</tspan> end</text>"}) {
    const auto document = drawingOf(content);
    EXPECT_EQ(firstDifference(*document, *rewritten(*document)), std::nullopt) << content;
  }
}

}  // namespace
}  // namespace tqdoc
