#include "Svg/Scanner.h"
#include "Svg/SvgColor.h"
#include "Svg/SvgStyle.h"
#include "Svg/SvgStyleSheet.h"
#include "Svg/SvgTransform.h"
#include "support/Test.h"

namespace tqdoc {
namespace {

TEST(SvgLength, ReadsUnitsAndPercentages) {
  const Viewport viewport{200, 100, 10};
  const tq::test::Rows<const char*, Extent, std::optional<double>> cases{
      {"12", Extent::diagonal, 12},       {" 12px ", Extent::diagonal, 12},
      {"1in", Extent::diagonal, 96},      {"72pt", Extent::diagonal, 96},
      {"2.54cm", Extent::diagonal, 96},   {"25.4mm", Extent::diagonal, 96},
      {"6pc", Extent::diagonal, 96},      {"2em", Extent::diagonal, 20},
      {"2ex", Extent::diagonal, 10},      {"50%", Extent::horizontal, 100},
      {"50%", Extent::vertical, 50},      {"100%", Extent::diagonal, std::sqrt(25000.0)},
      {"-1e1", Extent::diagonal, -10},    {"1 px", Extent::diagonal, {}},
      {"", Extent::diagonal, {}},         {"inf", Extent::diagonal, {}},
      {"1furlong", Extent::diagonal, {}}, {"0x10", Extent::diagonal, {}},
      {"1e400", Extent::diagonal, 1e12},
  };
  for (const auto& [text, extent, pixels] : cases) {
    SCOPED_TRACE(text);
    const auto read = parseLength(text, viewport, extent);
    ASSERT_EQ(read.has_value(), pixels.has_value());
    EXPECT_NEAR(read.value_or(0), pixels.value_or(0), 1e-9);
  }
}

TEST(SvgTransform, CombinesListsFromTheLeft) {
  const tq::test::Rows<const char*, tq::Point> cases{
      {"", {1, 2}},
      {"matrix(1 2 3 4 5 6)", {12, 16}},
      {"translate(10)", {11, 2}},
      {"translate(10,20) scale(2)", {12, 24}},
      {"scale(2 3),translate(1 1)", {4, 9}},
      {"rotate(90)", {-2, 1}},
      {" rotate( 90 , 1 , 1 ) ", {0, 1}},
      {"skewX(45)", {3, 2}},
      {"skewY(45)", {1, 3}},
  };
  for (const auto& [text, seenFrom12] : cases) {
    SCOPED_TRACE(text);
    const auto transform = parseTransform(text);
    ASSERT_TRUE(transform);
    const tq::Point seen = tq::PointApplyAffineTransform({1, 2}, *transform);
    EXPECT_NEAR(seen.x, seenFrom12.x, 1e-12);
    EXPECT_NEAR(seen.y, seenFrom12.y, 1e-12);
  }
  for (const char* text : {"rotate", "rotate(", "scale()", "scale(1 2 3)", "matrix(1 2 3)",
                           "translate(a)", "turn(3)", "scale(1) x"}) {
    EXPECT_FALSE(parseTransform(text)) << text;
    EXPECT_FALSE(parseStyleTransform(text, {})) << text;
  }
  for (const char* text : {"rotate(45)", "translate3d(1px, 2px, 3px)", "scale(1px)", "skew()"}) {
    EXPECT_FALSE(parseStyleTransform(text, {})) << text;
  }
}

TEST(SvgColor, ReadsAllForms) {
  const tq::test::Rows<const char*, const char*, double> cases{
      {"#fA0", "#ffaa00", 1},
      {"#12345678", "#123456", 0x78 / 255.0},
      {"#f008", "#ff0000", 0x88 / 255.0},
      {" tomato ", "#ff6347", 1},
      {"YellowGreen", "#9acd32", 1},
      {"aliceblue", "#f0f8ff", 1},
      {"rgb(255, 0,128)", "#ff0080", 1},
      {"rgb(100%,50%,0%)", "#ff8000", 1},
      {"rgba(1 2 3 / 50%)", "#010203", 0.5},
      {"rgb(999,-5,0)", "#ff0000", 1},
      {"transparent", "#000000", 0},
      {"#fff icc-color(x, 1)", "#ffffff", 1},
      {"hsl(120, 100%, 25%)", "#008000", 1},
      {"HSLA(-120deg 100% 50% / 25%)", "#0000ff", 0.25},
      {"hwb(0.5turn 20% 20%)", "#33cccc", 1},
      {"hwb(9 75% 75%)", "#808080", 1},
  };
  for (const auto& [text, hex, alpha] : cases) {
    SCOPED_TRACE(text);
    const auto color = parseColor(text);
    ASSERT_TRUE(color);
    EXPECT_EQ(colorText(*color), hex);
    EXPECT_DOUBLE_EQ(color->alpha, alpha);
  }
  for (const char* text : {"", "#", "#12345", "#ggg", "#-12", "nocolor", "rgb(1,2)", "rgb(1,2,3",
                           "hsl(1,2,3)", "hsl(red 1% 2%)", "hsl(1 2%)", "lab(1 2 3)"}) {
    EXPECT_FALSE(parseColor(text)) << text;
  }
}

TEST(SvgStyle, SplitsDeclarationsOutsideQuotesAndParentheses) {
  std::string read;
  for (const auto& each :
       parseDeclarations(" fill : url(a;b) ;; font: 'x;y' ; broken; color:red ! important")) {
    read += std::string(each.value) + (each.important ? "! " : " ");
  }
  EXPECT_EQ(read, "url(a;b) 'x;y' red! ");
}

TEST(SvgStyle, CascadesBySpecificityOrderAndImportance) {
  const tq::test::Rows<const char*, std::string, const char*, const char*> cases{
      {"nothing", "", "<path/>", "#000000"},
      {"attribute", "", "<path fill='red'/>", "#ff0000"},
      {"rule over attribute", "path{fill:blue}", "<path fill='red'/>", "#0000ff"},
      {"style over rule", "#x{fill:blue}", "<path id='x' style='fill:lime'/>", "#00ff00"},
      {"important rule over style", "path{fill:blue!important}", "<path style='fill:lime'/>",
       "#0000ff"},
      {"class over element, in any order", ".c{fill:red}path{fill:blue}", "<path class='b c'/>",
       "#ff0000"},
      {"id over class", "#x{fill:red}.c{fill:blue}", "<path id='x' class='c'/>", "#ff0000"},
      {"later of equal rules", ".a{fill:red}.b{fill:blue}", "<path class='b a'/>", "#0000ff"},
      {"list, compound, comment", "g,/* , */path.c#x{fill:red}", "<path id='x' class='c'/>",
       "#ff0000"},
      {"compound without a match", "path.c#y{fill:red}", "<path id='x' class='c'/>", "#000000"},
      {"any element", "*{fill:red}", "<path/>", "#ff0000"},
      {"at-rule ignored", "@media x{path{fill:red}}@import y;*{fill:blue}", "<path/>", "#0000ff"},
      {"combinators and conditions",
       "svg > style + [d]:last-child{fill:red}:root path[d]{fill:blue}path{fill:lime}",
       "<path d='M1'/>", "#ff0000"},
      {"an ancestor that is not there", "g path, svg > g ~ path{fill:red}", "<path/>", "#000000"},
      {"values of attributes", "[class~=b][class^='a '][class$=b][class*=' '][id|=x]{fill:red}",
       "<path class='a b' id='x-y'/>", "#ff0000"},
      {"unsupported and idle", "path:nth-child(2), path:hover{fill:red}", "<path/>", "#000000"},
      {"invalid value", "", "<path fill='red' style='fill:nonsense'/>", "#ff0000"},
  };
  for (const auto& [name, rules, element, fill] : cases) {
    SCOPED_TRACE(name);
    const std::string text = "<svg><style>" + rules + "</style>" + element + "</svg>";
    pugi::xml_document xml;
    ASSERT_TRUE(xml.load_string(text.c_str()));
    SvgContext context(xml, text.size());
    SvgStyleSheet sheet(context);
    const Style style = sheet.styleOf(context.root().last_child(), Style(), {});
    ASSERT_TRUE(style.fill.color);
    EXPECT_EQ(colorText(*style.fill.color), fill);
  }
}

TEST(SvgStyle, InheritsProperties) {
  Style parent;
  for (const auto& [name, value] : tq::test::Rows<const char*, const char*>{
           {"stroke", "url(#g) red"}, {"stroke-dasharray", "1, 2 3px"}, {"opacity", "50%"}}) {
    ASSERT_EQ(setProperty(parent, Style(), name, value, {}), Understood::yes);
  }
  Style child = parent.inherited();
  EXPECT_EQ(child.stroke.server, "g");
  EXPECT_EQ(child.dashes, (std::vector<double>{1, 2, 3}));
  EXPECT_EQ(child.opacity, 1);
  EXPECT_EQ(setProperty(child, parent, "opacity", "inherit", {}), Understood::yes);
  EXPECT_EQ(child.opacity, 0.5);
  EXPECT_EQ(setProperty(child, parent, "stroke-dasharray", "1,-2", {}), Understood::notTheValue);
  EXPECT_EQ(setProperty(child, parent, "paint-order", "stroke", {}), Understood::yes);
  EXPECT_EQ(child.paintOrder, "stroke fill markers");
  for (const auto& [name, value] :
       tq::test::Rows<const char*, const char*>{{"paint-order", "fill fill"},
                                                {"mix-blend-mode", "plus"},
                                                {"transform", "scale(1px)"},
                                                {"transform-origin", "top top"},
                                                {"marker-end", "#m"}}) {
    EXPECT_EQ(setProperty(child, parent, name, value, {}), Understood::notTheValue) << name;
  }
  EXPECT_EQ(setProperty(child, parent, "filter", "none", {}), Understood::yes);
  EXPECT_EQ(setProperty(child, parent, "d", "path('M0')", {}), Understood::notTheValue);
  EXPECT_EQ(setProperty(child, parent, "unknown", "1", {}), Understood::notTheProperty);
  EXPECT_EQ(setProperty(child, parent, "font-family", "Any", {}), Understood::yes);
}

}  // namespace
}  // namespace tqdoc
