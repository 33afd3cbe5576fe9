#include "Model/Text.h"

#include "Model/Compare.h"
#include "Model/Differences.h"
#include "Model/HitIndex.h"
#include "Model/TextLayout.h"
#include "Support.h"

namespace tqdoc {
namespace {

[[nodiscard]] const Text& firstText(const Document& document) {
  const Node& first = document.root().child(0);
  const auto* group = tq::objectCast<Group>(&first);
  return dynamic_cast<const Text&>(group != nullptr ? group->child(0) : first);
}

/// Describes the strings of the spans, and of the rest, with the names of their changes.
[[nodiscard]] std::string spansOf(const Text& text) {
  std::string all, place;
  std::string_view rest = text.string();
  for (std::size_t i = 0; i <= text.spans().count(); ++i) {
    const bool isRest = i == text.spans().count();
    const auto part = firstCharacters(rest, isRest ? rest.size() : text.span(i).length());
    if (part.empty() && isRest) break;
    rest.remove_prefix(part.size());
    all += "[" + std::string(part);
    if (!isRest) {
      for (const auto [key, value] : text.span(i).style()) all += " " + key.description();
      const GlyphPositions& p = text.span(i).positions();
      const std::vector<double>* lists[] = {&p.x, &p.y, &p.dx, &p.dy, &p.rotate};
      for (const auto* list : lists) {
        for (const double number : *list) all += " " + std::to_string(int(number));
        if (!list->empty()) all += ";";
      }
    }
    all += "]";
  }
  return all;
}

TEST(Texts, AreReadAsStringsWithSpans) {
  const tq::test::Rows<const char*, const char*, tq::Point> cases{
      {"<text x='1' y='2'>plain</text>", "[plain]", {1, 2}},
      {"<text>\n  one\n  <tspan>two  three</tspan> <tspan> four </tspan>\n</text>",
       "[one two three four]",
       {}},
      {"<text xml:space='preserve'> a\n <tspan xml:space='default'> b </tspan> </text>",
       "[ a   b  ]",
       {}},
      {"<g xml:space='preserve'><text> a</text></g>", "[ a]", {}},
      {"<text>a<tspan fill='red'>b</tspan><tspan fill='red'>c</tspan>d</text>",
       "[a][bc fill][d]",
       {}},
      {"<text><tspan x='3' y='1em'>a</tspan><tspan x='3' dy='2'>b</tspan></text>",
       "[a][b 3; 2;]",
       {3, 16}},
      {"<text x='1 2,3' rotate='9 8'>a<tspan x='7'>bc</tspan>de</text>",
       "[a 9;][bc 7 3; 8;][de 8;]",
       {1, 0}},
      {"<text>ä<tspan dx='1'>&#x1f600;é</tspan><tspan display='none'>no</tspan></text>",
       "[ä][😀é 1;]",
       {}},
      {"<text>a<tspan visibility='hidden' font-weight='bold'>b</tspan></text>",
       "[a][b fontWeight fill]",
       {}},
      {"<text> <!-- --> <tspan/> </text><text>next</text>", "[next]", {}},
      {"<g xml:lang='sr'><text>a<tspan lang='en'>b</tspan></text></g>", "[a][b language]", {}},
  };
  for (const auto& [content, spans, position] : cases) {
    const auto document = drawingOf(content);
    ASSERT_TRUE(document) << content;
    EXPECT_EQ(spansOf(firstText(*document)), spans) << content;
    EXPECT_EQ(firstText(*document).position(), position) << content;
  }
}

TEST(Texts, HaveTheStyleOfTheirElements) {
  const tq::test::Rows<const char*, const char*, const char*> cases{
      {"font-family: 'A B',&quot;C&quot; , sans-serif", "fontFamily", "A B, C, sans-serif"},
      {"font-size: 2em", "fontSize", "20"},
      {"font-size: 150%", "fontSize", "15"},
      {"font-size: larger", "fontSize", "12"},
      {"font-weight: bolder", "fontWeight", "700"},
      {"font: bold 20px/2 B C", "fontWeight", "700"},
      {"font: oblique 600 small-caps 20px B C", "fontFamily", "B C"},
      {"font: 20px", "fontFamily", "X"},
      {"font-style: wrong; font-style: italic", "fontStyle", "italic"},
      {"letter-spacing: .5em", "letterSpacing", "5"},
      {"word-spacing: normal", "wordSpacing", ""},
      {"baseline-shift: super", "baselineShift", "4"},
      {"baseline-shift: -20%", "baselineShift", "-2"},
      {"text-decoration: underline line-through", "decoration", "underline line-through"},
      {"text-anchor: end", "anchor", "end"},
  };
  for (const auto& [style, key, value] : cases) {
    const auto document = drawingOf("<g font-size='10' font-family='X'><text style=\"" +
                                    std::string(style) + "\">a</text></g>");
    ASSERT_TRUE(document) << style;
    const auto* found = firstText(*document).style().objectForKey(key);
    EXPECT_EQ(found != nullptr ? found->description() : "", value) << style;
  }
}

[[nodiscard]] tq::Rect boundsOf(const std::string& content) {
  return tightBounds(drawingOf(content)->root());
}

TEST(Texts, AreLaidOut) {
  const auto scaled = [](const tq::Rect& rect, double factor) {
    return tq::RectApplyAffineTransform(rect, {factor, 0, 0, factor, 0, 0});
  };
  const tq::Rect start = boundsOf("<text>HlH</text>");
  EXPECT_GT(start.size.width, start.size.height);
  EXPECT_NEAR(tq::RectGetMaxY(start), 0, 0.5);           // letters stand on the baseline
  const double before = start.origin.x;                  // the space before the glyph
  const double advance = start.size.width + 2 * before;  // symmetric letters
  const auto moved = [&](double x, double y) {
    return tq::RectApplyAffineTransform(start, {1, 0, 0, 1, x, y});
  };
  const tq::test::Rows<const char*, tq::Rect> cases{
      {"<text x='5' y='7'>HlH</text>", moved(5, 7)},
      {"<text font-size='160'>HlH</text>", scaled(start, 10)},
      {"<text font-size='0.016'>HlH</text>", scaled(start, 0.001)},
      {"<text text-anchor='end'>HlH</text>", moved(-advance, 0)},
      {"<text x='9' text-anchor='middle'>HlH</text>", moved(9 - advance / 2, 0)},
      {"<text x='9' text-anchor='middle'>H<tspan>l</tspan><tspan fill='red'>H</tspan></text>",
       moved(9 - advance / 2, 0)},
      {"<text direction='rtl'>HlH</text>", moved(-advance, 0)},
      {"<text dx='3' dy='4'>HlH</text>", moved(3, 4)},
      {"<text baseline-shift='5'>HlH</text>", moved(0, -5)},
      {"<text y='3'>HlH<tspan fill='none' stroke='red' x='2' y='3'>HlH</tspan></text>",
       tq::RectUnion(moved(0, 3), moved(2, 3))},
      {"<text rotate='180'>H</text>",
       tq::RectApplyAffineTransform(boundsOf("<text>H</text>"), {-1, 0, 0, -1, 0, 0})},
      {"<text font-size='0'>HlH</text>", tq::RectNull},
  };
  for (const auto& [content, bounds] : cases) {
    SCOPED_TRACE(content);
    expectNear(boundsOf(content), bounds, std::max(0.01, 0.001 * bounds.size.width));
  }
  const auto widthOf = [](const char* content) { return boundsOf(content).size.width; };
  EXPECT_NEAR(widthOf("<text letter-spacing='10'>HlH</text>"), start.size.width + 20, 0.1);
  EXPECT_NEAR(widthOf("<text word-spacing='10'>H H</text>"), widthOf("<text>H H</text>") + 10, 0.1);
  EXPECT_GT(widthOf("<text font-weight='bold'>HlH</text>"), start.size.width);
  EXPECT_GT(boundsOf("<text text-decoration='underline'>HlH</text>").size.height,
            start.size.height + 0.5);
}

TEST(Texts, OfAnyLengthAreLaidOut) {
  const std::string line(5000, 'i');
  const auto text = [&](const std::string& string) {
    return tq::makeRef<Text>(Node::Traits(), tq::String::stringWithUTF8Repaired(string),
                             tq::Point(), tq::Dictionary::dictionary(), tq::Array::array());
  };
  const double hundred = tightBounds(*text(line.substr(0, 100))).size.width;
  EXPECT_NEAR(tightBounds(*text(line)).size.width, 50 * hundred, hundred);
  const auto longest = drawingOf("<text>" + std::string(kLaidOutCharacters + 1, 'i') + "</text>");
  EXPECT_TRUE(longest->unsupported().objectForKey("characters of a long text"));
  EXPECT_TRUE(tq::RectIsNull(tightBounds(*text(std::string("\0\n\x7f ", 4)))));
  EXPECT_FALSE(tq::RectIsNull(tightBounds(*text("\xff\xed\xa0\x80"))));
}

TEST(Texts, DifferInOneChangeForEachThingChanged) {
  const auto before =
      drawingOf("<text x='1' font-size='10'>one<tspan fill='red'>two</tspan></text>");
  const tq::test::Rows<const char*, const char*, const char*> cases{
      {"<text x='1' font-size='10'>1ne<tspan fill='red'>two</tspan></text>", "string",
       "root/0: the strings differ"},
      {"<text x='1' font-size='11'>one<tspan fill='red'>two</tspan></text>", "style.fontSize",
       "root/0: the styles differ"},
      {"<text x='1' font-size='10' font-family='X'>one<tspan fill='red'>two</tspan></text>",
       "style.fontFamily", "root/0: the styles differ"},
      {"<text x='2' font-size='10'>one<tspan fill='red'>two</tspan></text>", "position",
       "root/0: the positions differ"},
      {"<text x='1' font-size='10'>one<tspan fill='tan'>two</tspan></text>", "spans",
       "root/0: the spans differ"},
  };
  for (const auto& [content, property, difference] : cases) {
    const auto after = drawingOf(content);
    const auto differences = differencesOf(*before, *after);
    ASSERT_EQ(differences.size(), 1u) << content;
    EXPECT_EQ(differences[0].property, property);
    EXPECT_EQ(firstDifference(*before, *after), difference);
  }
}

}  // namespace
}  // namespace tqdoc
