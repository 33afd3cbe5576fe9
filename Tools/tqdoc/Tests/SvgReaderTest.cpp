#include "Svg/SvgReader.h"

#include "Model/Gradient.h"
#include "Model/Numbers.h"
#include "Support.h"
#include "support/Bytes.h"

namespace tqdoc {
namespace {

using testing::StartsWith;

struct Outcome {
  SvgDrawing drawing;
  std::string error;

  [[nodiscard]] const Group& root() const { return drawing.document->root(); }
};

[[nodiscard]] Outcome readFile(std::string_view text) {
  tq::Ref<tq::Error> error;
  Outcome outcome;
  outcome.drawing = readSvg(std::as_bytes(std::span(text)), "a.svg", &error);
  if (error) outcome.error = error->localizedDescription();
  EXPECT_EQ(outcome.error.empty(), static_cast<bool>(outcome.drawing.document));
  return outcome;
}

[[nodiscard]] Outcome read(const std::string& inside, const std::string& attributes = "") {
  return readFile("<svg xmlns:xlink='x' width='40' height='20' " + attributes + ">" + inside +
                  "</svg>");
}

TEST(SvgReader, PlacesEveryElement) {
  const tq::test::Rows<const char*, tq::Rect> cases{
      {"<rect x='1' y='2' width='3' height='4'/>", {1, 2, 3, 4}},
      {"<rect width='50%' height='50%' rx='3'/>", {0, 0, 20, 10}},
      {"<circle cx='5' cy='6' r='2'/>", {3, 4, 4, 4}},
      {"<ellipse cx='5' cy='6' rx='2' ry='1'/>", {3, 5, 4, 2}},
      {"<line x1='1' y1='2' x2='4' y2='1'/>", {1, 1, 3, 1}},
      {"<polygon points='1,1 2,1 2,5'/>", {1, 1, 1, 4}},
      {"<g transform='translate(10)'><path transform='scale(2)' d='M1 1h2v1'/></g>", {12, 2, 4, 2}},
      {"<defs><path id='p' d='M0 0h1v1'/></defs><use xlink:href='#p' x='3' y='4'/>", {3, 4, 1, 1}},
      {"<symbol id='s' viewBox='0 0 10 10'><path d='M0 0h10v10'/></symbol>"
       "<use href='#s' x='1' width='20' height='20'/>",
       {1, 0, 20, 20}},
      {"<svg x='2' y='2' width='10' height='10' viewBox='5 5 5 5'><path d='M5 5h5v5'/></svg>",
       {2, 2, 10, 10}},
      {"<path d='M0 0h1v1'/><path display='none' d='M0 0h9v9'/>"
       "<g visibility='hidden'><path d='M0 0h9v9'/><path visibility='visible' d='M0 0h2v2'/></g>",
       {0, 0, 2, 2}},
      {"<switch><text requiredExtensions='x'/><path systemLanguage='de, en-GB' d='M0 0h1v1'/>"
       "<path d='M0 0h5v5'/></switch>",
       {0, 0, 1, 1}},
      {"<path d='M0 0h9v9' systemLanguage='de'/><path d='M0 0h9v9' requiredFeatures='x#Shape'/>"
       "<path d='M0 0h1v1' requiredFeatures=' http://www.w3.org/TR/SVG11/feature#Shape '/>",
       {0, 0, 1, 1}},
      {"<path d='M0 0h2v2' transform='scale(9)' style='transform:translate(50%, "
       "1in)scale(2,50%)'/>",
       {20, 96, 4, 1}},
      {"<path d='M0 0h1v1' style='transform-origin:bottom right' transform='scale(3)'/>",
       {-80, -40, 3, 3}},
      {"<rect x='4' width='2' height='2' style='transform:rotate(.25turn);transform-box:fill-box;"
       "transform-origin:100% 0'/>",
       {4, -2, 2, 2}},
      {"<image width='3' height='2' href='data:image/png;base64,iVBORw0K Ggo=\n'/>", {0, 0, 3, 2}},
  };
  for (const auto& [inside, bounds] : cases) {
    SCOPED_TRACE(inside);
    const Outcome outcome = read(inside);
    ASSERT_EQ(outcome.error, "");
    expectNear(tightBounds(outcome.root()), bounds, 1e-9);
    const bool isTranslated = std::string_view(inside).find("'de'") != std::string_view::npos;
    EXPECT_EQ(outcome.drawing.leftOut.count("content in other languages"), isTranslated ? 1u : 0u);
    EXPECT_EQ(outcome.drawing.leftOut.size(), isTranslated ? 1u : 0u);
  }
}

TEST(SvgReader, ReadsTheSizeOfThePage) {
  const tq::test::Rows<const char*, tq::Size, tq::Rect> cases{
      {"<svg/>", {300, 150}, {0, 0, 300, 150}},
      {"<svg width='1in' height='2in'/>", {96, 192}, {0, 0, 96, 192}},
      {"<svg viewBox='1 2 30 40'/>", {30, 40}, {1, 2, 30, 40}},
      {"<svg viewBox='1,2,30,40' width='60'/>", {60, 40}, {1, 2, 30, 40}},
      {"<svg viewBox='0 0 -1 5' width='-1'/>", {300, 150}, {0, 0, 300, 150}},
      {"<s:svg xmlns:s='x' width='9' height='8'><s:path d='M0 0'/></s:svg>", {9, 8}, {0, 0, 9, 8}},
  };
  for (const auto& [root, size, viewBox] : cases) {
    SCOPED_TRACE(root);
    const Outcome outcome = readFile(root);
    ASSERT_EQ(outcome.error, "");
    EXPECT_EQ(outcome.drawing.document->page().size, size);
    expectNear(outcome.drawing.document->page().viewBox, viewBox, 1e-9);
  }
}

[[nodiscard]] const Shape& onlyShape(const Outcome& outcome) {
  const Node& last = outcome.root().child(outcome.root().count() - 1);
  return dynamic_cast<const Shape&>(last);
}

TEST(SvgReader, ResolvesGradientsToTheShapesCoordinates) {
  const Outcome outcome = read(
      "<linearGradient id='a'><stop offset='20%' stop-color='red'/>"
      "<stop offset='.1' style='stop-opacity:.5'/></linearGradient>"
      "<linearGradient id='b' xlink:href='#a' gradientTransform='translate(1)' x2='50%'/>"
      "<rect x='10' y='10' width='20' height='10' fill='url(#b)' fill-opacity='.5'/>");
  const Shape& shape = onlyShape(outcome);
  const auto* gradient = tq::objectCast<Gradient>(shape.style().objectForKey("fill"));
  ASSERT_TRUE(gradient);
  EXPECT_EQ(gradient->geometry().end, (tq::Point{0.5, 0}));
  EXPECT_EQ(gradient->geometry().transform, (tq::AffineTransform{20, 0, 0, 10, 30, 10}));
  ASSERT_EQ(gradient->stops().size(), 2u);
  EXPECT_EQ(gradient->stops()[0], (GradientStop{0.2, 1, 0, 0, 1}));
  EXPECT_EQ(gradient->stops()[1], (GradientStop{0.2, 0, 0, 0, 0.5}));  // offsets never descend
}

TEST(SvgReader, FindsPaintForEveryFill) {
  const std::string stops = "<stop stop-color='red'/><stop offset='1' stop-color='blue'/>";
  // The definitions, the fill, and the style's "fill", which is empty if nothing is painted.
  const tq::test::Rows<const char*, std::string, const char*, const char*> cases{
      {"none", "", "none", ""},
      {"current colour", "", "currentColor", "#00ff00"},
      {"one stop", "<linearGradient id='g'><stop stop-color='red'/></linearGradient>", "url(#g)",
       "#ff0000"},
      {"no stops", "<linearGradient id='g'/>", "url(#g)", ""},
      {"no extent", "<radialGradient id='g' r='0'>" + stops + "</radialGradient>", "url(#g)",
       "#0000ff"},
      {"pattern", "<pattern id='g'/>", "url(#g) red", "#ff0000"},
      {"missing", "", "url('#g')", ""},
  };
  for (const auto& [name, defs, fill, paint] : cases) {
    const Outcome outcome = read(defs + "<path color='lime' fill=\"" + fill + "\" d='M0 0h1v1'/>");
    const tq::Object* found = onlyShape(outcome).style().objectForKey("fill");
    EXPECT_EQ(found != nullptr ? found->description() : "", paint) << name;
  }
}

TEST(SvgReader, CountsIgnoredFeatures) {
  const Outcome outcome = read(
      "<text>a<textPath>b</textPath></text><text style='writing-mode:tb'>b</text><path d='M0 0h1' "
      "filter='url(#f)' style='marker-end:url(#m)'/>"
      "<path d='M0 0h1 junk'/><foo:bar/><title>t</title><image href='a.png'/><use href='#no'/>"
      "<mask id='p'/><path d='M0 0h1' stroke='url(#p)' transform='turn(3)'/>"
      "<image width='1' height='1' href='data:image/jpeg;base64,AAAA'/>");
  ASSERT_EQ(outcome.error, "");
  using testing::Pair;
  EXPECT_THAT(
      outcome.drawing.leftOut,
      testing::UnorderedElementsAre(
          Pair("<textPath>", 1u), Pair("writing-mode: tb", 1u), Pair("filter without a target", 1u),
          Pair("marker without a target", 1u), Pair("invalid d of path", 1u),
          Pair("external image", 1u), Pair("use without a target", 1u), Pair("paint by mask", 1u),
          Pair("invalid transform of path", 1u), Pair("drawing of image/jpeg", 1u)));
  EXPECT_EQ(outcome.drawing.document->unsupported().count(), 10u);
  EXPECT_EQ(outcome.drawing.document->title(), "t");
}

TEST(SvgReader, LeavesExternalEntitiesOut) {
  const Outcome outcome = readFile(
      "<!DOCTYPE svg [<!-- <!ENTITY x 'no'> --><!ENTITY x SYSTEM 'x.dtd'><!ENTITY a.b \"M0 0h3\">]>"
      "<svg><!-- &x; --><title>&x;&amp;</title><path d='&a.b;v4'/></svg>");
  ASSERT_EQ(outcome.error, "");
  EXPECT_EQ(outcome.drawing.leftOut.count("entity &x;"), 1u);
  EXPECT_EQ(outcome.drawing.document->title(), "&x;&");
  expectNear(tightBounds(outcome.root()), {0, 0, 3, 4}, 1e-9);
}

TEST(SvgReader, ReadsClipPaths) {
  const Outcome outcome = read(
      "<clipPath id='c' clipPathUnits='objectBoundingBox'><rect width='.5' height='1' "
      "clip-rule='evenodd' fill='red'/></clipPath>"
      "<rect x='10' width='8' height='4' clip-path='url(#c)'/>");
  const auto& clip = onlyShape(outcome).traits().clip;
  ASSERT_TRUE(clip);
  expectNear(tightBounds(*clip), {10, 0, 4, 4}, 1e-9);
  const auto& cut = dynamic_cast<const Shape&>(dynamic_cast<const Group&>(*clip).child(0));
  EXPECT_TRUE(cut.style().objectForKey("evenOdd"));
  EXPECT_FALSE(cut.style().objectForKey("fill"));
}

TEST(SvgReader, ReadsMarkersOnce) {
  const Outcome outcome = read(
      "<marker id='m' orient='auto' refX='2' markerWidth='8' overflow='visible'><path id='i' "
      "d='M0 0h1' marker-end='url(#m)'/></marker><path d='M0 0h1v1' marker-mid='url(#m)'/>"
      "<g style='marker:url(#m)'><path d='M0 0a1 1 0 0 1 1 1' stroke-width='3'/><rect/></g>");
  using testing::Pair;
  EXPECT_THAT(outcome.drawing.leftOut,
              testing::UnorderedElementsAre(Pair("marker inside a marker", 1u),
                                            Pair("marker-mid of arcs", 1u)));
  const auto& first = dynamic_cast<const Shape&>(outcome.root().child(0)).style();
  const auto& group = dynamic_cast<const Group&>(outcome.root().child(1));
  const auto& second = dynamic_cast<const Shape&>(group.child(0)).style();
  ASSERT_TRUE(first.objectForKey("markerMid"));
  EXPECT_EQ(first.objectForKey("markerMid"), second.objectForKey("markerEnd"));
  EXPECT_FALSE(first.objectForKey("markerStart"));
  EXPECT_EQ(numberIn(second, "strokeWidth", 1), 3);
}

TEST(SvgReaderFault, ReportsHostileDrawingsWithThePosition) {
  // Ten levels of ten references: 10^10 copies of a path.
  std::string bomb = "<path id='l0' d='M0 0h1'/>";
  for (int i = 1; i <= 10; ++i) {
    bomb += "<g id='l" + std::to_string(i) + "'>" +
            repeated("<use href='#l" + std::to_string(i - 1) + "'/>", 10) + "</g>";
  }
  std::string entities = "<!ENTITY e0 'M0 0'>";
  for (int i = 1; i <= 40; ++i) {
    const std::string inner = "&e" + std::to_string(i - 1) + ";";
    entities += "<!ENTITY e" + std::to_string(i) + " '" + inner + inner + "'>";
  }
  const tq::test::Rows<const char*, std::string, const char*, const char*> cases{
      {"empty", "", "a.svg:1:1: ", ""},
      {"not XML", "hello", "a.svg:1:", ""},
      {"truncated", "<svg>\n<g><path d='M0", "a.svg:2:", ""},
      {"NUL bytes", std::string("<svg>\0\0</svg", 12), "a.svg:", ""},
      {"another root", "<?xml version='1.0'?>\n<html/>", "a.svg:2:2: ", "<html>"},
      {"deep", "<svg>" + repeated("<g>", 100'000) + repeated("</g>", 100'000) + "</svg>",
       "a.svg:1:", "100 deep"},
      {"use of its parent", "<svg>\n<g id='a'>\n<use href='#a'/></g></svg>", "a.svg:3:2: ", "#a"},
      {"use of itself", "<svg><use id='a' href='#a'/></svg>", "a.svg:1:", "#a"},
      {"circle of two", "<svg><g id='a'><use href='#b'/></g><g id='b'><use href='#a'/></g></svg>",
       "a.svg:1:", "circular"},
      {"pattern of itself",
       "<svg><pattern id='c' width='1' height='1'><path d='M0 0h9v9' fill='url(#c)'/></pattern>"
       "<path d='M0 0h9v9' fill='url(#c)'/></svg>",
       "a.svg:1:", "#c"},
      {"clip by itself",
       "<svg><clipPath id='c'><path d='M0 0' clip-path='url(#c)'/></clipPath>"
       "<path d='M0 0' clip-path='url(#c)'/></svg>",
       "a.svg:1:", "#c"},
      {"entity of itself", "<!DOCTYPE svg [%p;<!ENTITY a '&b;'><!ENTITY b '&a;'>]>\n<svg>&a;</svg>",
       "a.svg:2:6: ", "contains itself"},
      {"error behind an entity",
       "<!DOCTYPE svg [<!ENTITY a '<g/><g/>'>]>\n<svg>&a;<use id='u' href='#u'/></svg>",
       "a.svg:2:10: ", "#u"},
      {"bomb of entities", "<!DOCTYPE svg [" + entities + "]><svg>&e40;</svg>",
       "a.svg:1:", "too large"},
      {"bomb", "<svg>" + bomb + "</svg>", "a.svg:1:", "too large"},
      {"bomb of markers",
       "<svg><marker id='m'>" + repeated("<path d='M0 0h1'/>", 500) + "</marker><path d='M0 0" +
           repeated("h1", 5000) + "' marker-mid='url(#m)'/></svg>",
       "a.svg:1:", "too large"},
      {"bomb of selectors",
       "<svg><style>x " + repeated("g ", 30) + "path{}</style>" + repeated("<g>", 90) + "<path/>" +
           repeated("</g>", 90) + "</svg>",
       "a.svg:1:", "too large"},
  };
  for (const auto& [name, text, start, reason] : cases) {
    SCOPED_TRACE(name);
    const Outcome outcome = readFile(text);
    EXPECT_THAT(outcome.error, StartsWith(start));
    EXPECT_THAT(outcome.error, HasSubstr(reason));
  }
}

TEST(SvgReaderFault, ReportsEveryTruncation) {
  const std::string whole =
      "<svg viewBox='0 0 9 9'><style>.a{fill:url(#g)}</style><linearGradient id='g' href='#h'/>"
      "<linearGradient id='h' href='#g'><stop offset='1' stop-color='#fff'/></linearGradient>"
      "<path class='a' d='M1 1c1 1 2 2 3 3a1 2 3 0 1 4 4z' transform='rotate(1e999)'/></svg>";
  EXPECT_EQ(readFile(whole).drawing.leftOut.count("gradient that refers to itself"), 1u);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_THAT(readFile(whole.substr(0, length)).error, StartsWith("a.svg:1:"));
  }
}

}  // namespace
}  // namespace tqdoc
