// Filters, masks and patterns: what is read, archived and compared. How they look is compared with
// another renderer, see Compare/features.

#include "Model/Differences.h"
#include "Model/Filter.h"
#include "Model/Mask.h"
#include "Model/Pattern.h"
#include "Render/Canvas.h"
#include "Support.h"
#include "support/Bytes.h"
#include "support/CapturedLog.h"

namespace tqdoc {
namespace {

[[nodiscard]] const Node& lastOf(const Document& document) {
  return document.root().child(document.root().count() - 1);
}

TEST(Filters, ArePrimitivesInTheCoordinatesOfTheNode) {
  // The rect is 10 by 20, so the filter's region is 12 by 24.
  const tq::test::Rows<const char*, const char*, const char*> cases{
      {"", "<feGaussianBlur stdDeviation='2'/>", "within -1 -2 12 24: blur 2 2"},
      {"primitiveUnits='objectBoundingBox'", "<feOffset dx='.5' dy='.1'/>",
       "within -1 -2 12 24: offset 5 2"},
      {"x='1' y='0' width='2' height='50%'", "<feMorphology operator='dilate' radius='1 2'/>",
       "within 10 0 20 10: morphology dilate 1 2"},
      {"filterUnits='userSpaceOnUse' width='9' height='8' x='1' y='2'", "<feMerge/>",
       "within 1 2 9 8: merge"},
      {"", "<feComposite operator='arithmetic' k1='1' k4='.5'/><feBlend mode='hue'/>",
       "within -1 -2 12 24: composite arithmetic 1 0 0 0.5, blend hue"},
      {"", "<feFlood flood-color='lime' flood-opacity='.5'/><desc/>",
       "within -1 -2 12 24: flood 0 1 0 0.5"},
      {"", "<feDropShadow dx='1' flood-color='red'/>",
       "within -1 -2 12 24: blur 2 2, offset 1 2, flood 1 0 0 1, composite in, merge"},
      {"", "<feColorMatrix type='luminanceToAlpha'/>",
       "within -1 -2 12 24: colorMatrix 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0.2125 0.7154 0.0721 0 0"},
      {"", "<feOffset/><feTurbulence/>", "none"},
      {"", "", "within -1 -2 12 24: merge"},
  };
  for (const auto& [attributes, primitives, steps] : cases) {
    const auto document = drawingOf(std::string("<filter id='f' ") + attributes + ">" + primitives +
                                    "</filter><rect width='10' height='20' filter='url(#f)'/>");
    ASSERT_TRUE(document);
    const auto& filter = lastOf(*document).traits().filter;
    EXPECT_EQ(filter ? filter->description() : "none", steps) << primitives;
  }
}

TEST(Filters, ReferToEarlierResults) {
  const auto document = drawingOf(
      "<filter id='f' color-interpolation-filters='sRGB'><feFlood width='3' result='a'/>"
      "<feOffset in='SourceAlpha' result='b'/><feBlend in2='a'/><feOffset in='unknown'/>"
      "<feMerge color-interpolation-filters='linearRGB'><feMergeNode in='a'/><feMergeNode in='b'/>"
      "<feMergeNode in='BackgroundImage'/></feMerge></filter>"
      "<rect width='10' height='20' filter='url(#f)'/>");
  const auto& filter = lastOf(*document).traits().filter;
  ASSERT_TRUE(filter);
  std::vector<std::vector<int>> inputs;
  for (const FilterStep& step : filter->steps()) inputs.push_back(step.inputs);
  EXPECT_THAT(inputs, ElementsAre(std::vector<int>{}, std::vector{FilterStep::kSourceAlpha},
                                  std::vector{1, 0}, std::vector{2},
                                  std::vector{0, 1, FilterStep::kNothing}));
  EXPECT_TRUE(filter->steps()[0].region);
  EXPECT_FALSE(filter->steps()[2].region);  // the union with the region of the other input
  EXPECT_FALSE(filter->steps()[0].linear);
  EXPECT_TRUE(filter->steps()[4].linear);
}

TEST(Filters, InDamagedArchivesAreErrors) {
  registerModel();
  const tq::test::CapturedLog quiet;
  for (
      const auto& [steps, isValid] : tq::test::Rows<const char*, bool>{
          {R"([{"kind":"blur","inputs":[-1],"numbers":[1,2]},{"kind":"offset","inputs":[0],"numbers":[1,2]}])",
           true},
          {R"([{"kind":"blur","inputs":[0],"numbers":[1,2]}])", false},
          {R"([{"kind":"blur","inputs":[-4],"numbers":[1,2]}])", false},
          {R"([{"kind":"blur","inputs":[1e300],"numbers":[1,2]}])", false},
          {R"([{"kind":"blur","inputs":[-1],"numbers":[1]}])", false},
          {R"([{"kind":"blend","inputs":[-1,-1],"mode":"over"}])", false},
          {R"([{"kind":"composite","inputs":[-1,-1],"mode":"arithmetic"}])", false},
          {R"([{"kind":"turbulence"}])", false},
          {"[3]", false},
          {"[]", false}}) {
    tq::Ref<tq::Error> error;
    const auto archive = tq::Data::dataWithBytes(
        R"({"_class":"TQDocFilter","region":[0,0,9,9],"steps":)" + std::string(steps) + "}");
    const auto filter = tq::TQJSONDecoder::decodeDataError(*archive, &error);
    EXPECT_EQ(filter && !error, isValid) << steps;
  }
}

TEST(Effects, DifferByPath) {
  const auto drawing = [](const char* mask, const char* filter, const char* pattern) {
    return drawingOf(std::string("<mask id='m' ") + mask + "/></mask><filter id='f'>" + filter +
                     "</filter><pattern id='p' width='2' height='2'><path d='" + pattern +
                     "'/></pattern><rect width='10' height='20' mask='url(#m)' filter='url(#f)' "
                     "fill='url(#p)'/>");
  };
  const char* const mask = "><path d='M0 0h9v9'";
  const char* const blur = "<feGaussianBlur stdDeviation='2'/>";
  const auto old = drawing(mask, blur, "M0 0h1v1");
  const auto changes = [&](const char* newMask, const char* filter, const char* pattern) {
    std::vector<std::string> all;
    for (const auto& each : differencesOf(*old, *drawing(newMask, filter, pattern))) {
      all.push_back(each.path + ": " + each.oldValue + " -> " + each.newValue);
    }
    return all;
  };
  EXPECT_THAT(changes(mask, blur, "M0 0h1v1"), ElementsAre());
  EXPECT_THAT(changes("><path d='M0 0h9v8'", "<feGaussianBlur stdDeviation='3'/>", "M0 0h1v2"),
              ElementsAre("root.children[0].filter: within -1 -2 12 24: blur 2 2 -> "
                          "within -1 -2 12 24: blur 3 3",
                          "root.children[0].style.fill: \"pattern of 1 in 20 x 40\" -> "
                          "another \"pattern of 1 in 20 x 40\" (pattern/0: the paths differ)",
                          "root.children[0].mask.children[0].path: 3 steps within 0 0 9 9 -> "
                          "3 steps within 0 0 9 8"));
  EXPECT_THAT(changes("mask-type='alpha' height='1'><path d='M0 0h9v9'", blur, "M0 0h1v1"),
              ElementsAre("root.children[0].mask.region: -1 -2 12 24 -> -1 -2 12 20",
                          "root.children[0].mask.alpha: no -> yes"));
}

TEST(Patterns, InheritAndScaleTheirContent) {
  const auto document = drawingOf(
      "<pattern id='a' x='.5' width='.5' height='.25' viewBox='0 0 4 4'><path d='M0 "
      "0h4v4'/></pattern>"
      "<pattern id='b' href='#a' patternTransform='scale(2)' x='0'/>"
      "<rect width='10' height='20' stroke='url(#b)'/>");
  const auto* pattern = tq::objectCast<Pattern>(
      dynamic_cast<const Shape&>(lastOf(*document)).style().objectForKey("stroke"));
  ASSERT_TRUE(pattern);
  expectNear(pattern->tile(), {0, 0, 5, 5}, 1e-12);
  expectNear(tightBounds(*pattern), {0, 0, 10, 10}, 1e-12);
}

TEST(Canvas, ReportsWhatItCannotDraw) {
  const std::string nested = repeated("<g opacity='.9'>", 30) + "<path d='M0 0h9v9'/>";
  const tq::test::Rows<const char*, std::string> cases{
      {"damaged or too large image 1",
       "<image width='3' height='2' href='data:image/png;base64,iVBORw0KGgo='/>"},
      {"characters that no font has 2", "<text y='9'>a&#x10FFFD;b&#x10FFFD;</text>"},
      {"effects that are nested too deeply 6", nested + repeated("</g>", 30)},
      {"dashes of a long stroke 1",
       "<path d='M0 0h1e7' stroke='red' stroke-dasharray='1' fill='none'/>"},
      {"dashes of a long stroke 1",  // which overlap
       "<path d='M0 0h1e5' transform='scale(1 1e4)' stroke='red' stroke-dasharray='1' "
       "fill='none'/>"},
      {"none", "<text y='9'>a b</text><path d='M0 0h9' stroke='red' stroke-dasharray='1'/>"}};
  for (const auto& [leftOut, content] : cases) {
    const auto document = drawingOf(content);
    ASSERT_TRUE(document) << content;
    EXPECT_EQ(summary(rendered(*document, 1).leftOut()), leftOut) << content;
  }
}

}  // namespace
}  // namespace tqdoc
