#include "Svg/SvgForeign.h"

#include "Model/Compare.h"
#include "Support.h"

namespace tqdoc {
namespace {

[[nodiscard]] SvgDrawing readContent(const std::string& content) {
  const std::string text = "<svg xmlns:x='http://www.w3.org/2000/svg'>" + content + "</svg>";
  SvgDrawing drawing = readSvg(std::as_bytes(std::span(text)), "a.svg", nullptr);
  EXPECT_TRUE(drawing.document) << text;
  return drawing;
}

// Every element of SVG 1.1 and 2 that is not drawn where it is. The others are in other tests.
TEST(SvgForeign, ElementsAreDefinitionsOrReported) {
  const char* const definitions =
      "clipPath defs desc filter linearGradient marker mask metadata pattern radialGradient style "
      "symbol title view";
  const char* const reported =
      "altGlyph altGlyphDef altGlyphItem animate animateColor animateMotion animateTransform audio "
      "canvas color-profile cursor discard embed feBlend feColorMatrix feComponentTransfer "
      "feComposite feConvolveMatrix feDiffuseLighting feDisplacementMap feDistantLight "
      "feDropShadow feFlood feFuncA feGaussianBlur feImage feMerge feMergeNode feMorphology "
      "feOffset fePointLight feSpecularLighting feSpotLight feTile feTurbulence flowRoot font "
      "font-face font-face-format font-face-name font-face-src font-face-uri foreignObject glyph "
      "glyphRef hatch hatchpath hkern iframe mesh meshgradient meshpatch meshrow missing-glyph "
      "mpath script set solidcolor stop textArea textPath tref tspan unknown video vkern";
  for (const auto& [names, isReported] :
       tq::test::Rows<const char*, bool>{{definitions, false}, {reported, true}}) {
    std::istringstream list(names);
    for (std::string name; list >> name;) {
      // In a group, by another prefix, and in a shape.
      const std::string element = "<" + name + "/>";
      for (const std::string& content :
           {element, "<x:" + name + "/>", "<path d='M0 0h1'>" + element + "</path>"}) {
        EXPECT_EQ(readContent(content).leftOut.count("<" + name + ">"), isReported ? 1u : 0u)
            << content;
      }
    }
  }
  EXPECT_EQ(readContent("<defs><font/></defs><path><set/></path>").leftOut.size(), 2u);
  EXPECT_THAT(
      readContent("<text>a<tref/><animate/><title/></text><linearGradient id='g'><stop/><rect/>"
                  "</linearGradient><path d='M0 0h1' fill='url(#g)'/>")
          .leftOut,
      testing::UnorderedElementsAre(testing::Pair("<tref>", 1u), testing::Pair("<animate>", 1u),
                                    testing::Pair("<rect>", 1u)));
}

// Every property of SVG 1.1 and 2 and of the style sheets that they use, with a value that matters.
TEST(SvgForeign, PropertiesChangeTheDocumentOrAreReported) {
  const std::string drawing =
      "<g><linearGradient id='g'><stop/><stop offset='1'/></linearGradient><clipPath id='c'>"
      "<path d='M0 0h9v9'/></clipPath><mask id='m'><path d='M0 0h9v9'/></mask><marker id='k'>"
      "<path d='M0 0h1v1'/></marker><filter id='f'><feFlood/></filter></g>"
      "<path d='M0 0h9v9' stroke='url(#g)' stroke-dasharray='1' fill='currentColor' "
      "transform='scale(2)' transform-origin='center' clip-path='url(#c)' mask='url(#m)' "
      "filter='url(#f)'/>"
      "<svg width='9' height='9'><text stroke='red'>a b</text></svg>";
  const SvgDrawing plain = readContent(drawing);
  const char* const declarations =
      "alignment-baseline:middle; all:initial; animation:a; backdrop-filter:blur(1px); "
      "background:red; background-color:red; baseline-shift:super; border:solid; "
      "box-shadow:red; clip:rect(0,0,0,0); clip-path:none; clip-rule:evenodd; color:red; "
      "color-interpolation:linearRGB; color-interpolation-filters:sRGB; color-profile:x; "
      "cx:1px; d:path('M0,0'); direction:rtl; display:none; dominant-baseline:middle; "
      "fill:red; fill-opacity:.5; fill-rule:evenodd; filter:none; flood-color:red; "
      "flood-opacity:.5; font:9px/1 x; font-family:x; font-feature-settings:'x'; "
      "font-kerning:none; font-size:9px; font-size-adjust:.5; font-stretch:condensed; "
      "font-style:italic; font-variant:small-caps; font-variant-caps:small-caps; "
      "font-variation-settings:'x'; font-weight:bold; glyph-orientation-horizontal:90; "
      "height:9px; image-rendering:pixelated; inline-size:9px; isolation:isolate; kerning:0; "
      "letter-spacing:1px; marker:url(#k); marker-end:url(#k); marker-mid:url(#k); "
      "marker-start:url(#k); mask:none; mask-border:x; mask-image:x; mask-type:alpha; "
      "mix-blend-mode:screen; offset-path:x; opacity:.5; overflow:visible; paint-order:stroke; "
      "perspective:1px; r:1px; rotate:9deg; rx:1px; scale:2; shape-inside:circle(); "
      "shape-rendering:crispEdges; shape-subtract:x; stop-color:red; stop-opacity:.5; "
      "stroke:red; stroke-alignment:inner; stroke-dasharray:3; stroke-dashoffset:1; "
      "stroke-linecap:round; stroke-linejoin:round; stroke-miterlimit:9; stroke-opacity:.5; "
      "stroke-width:9; text-anchor:end; text-decoration:underline; text-decoration-fill:red; "
      "text-decoration-line:overline; text-decoration-style:wavy; text-shadow:red; "
      "text-transform:uppercase; transform:none; transform-box:fill-box; "
      "transform-origin:right; translate:1px; unicode-bidi:isolate; unknown:x; "
      "vector-effect:non-scaling-stroke; visibility:hidden; white-space:pre; width:9px; "
      "word-spacing:9px; writing-mode:tb; -inkscape-stroke:hairline; -webkit-filter:x";
  std::istringstream list(declarations);
  for (std::string declaration; std::getline(list, declaration, ';');) {
    const SvgDrawing changed = readContent("<style>*{" + declaration + "}</style>" + drawing);
    EXPECT_TRUE(!changed.leftOut.empty() || firstDifference(*changed.document, *plain.document))
        << declaration;
  }
}

TEST(SvgForeign, PropertiesWithoutEffectAreNotReported) {
  for (const char* declaration :
       {"shape-rendering:auto", "color-interpolation:sRGB", "cursor:pointer", "--x:1",
        "enable-background:new 0 0 1 1", "white-space:normal", "line-height:1.25",
        "-inkscape-font-specification:Sans", "writing-mode:lr-tb", "font-kerning:inherit"}) {
    EXPECT_TRUE(readContent("<style>*{" + std::string(declaration) + "}</style><text>a</text>")
                    .leftOut.empty())
        << declaration;
  }
  EXPECT_EQ(isIdleDeclaration("unknown", "auto"), std::nullopt);
}

TEST(SvgForeign, AttributesAndConditionsAreReported) {
  const std::string shape = "<path d='M0 0h1v1' ", text = "<text>a<tspan ";
  const std::string filter = "<path d='M0 0h1v1' filter='url(#f)'/><filter id='f' ";
  for (const std::string& content :
       {shape + "shape-rendering='crispEdges'/>", shape + "stroke-dasharray='1' pathLength='3'/>",
        shape + "systemLanguage='de'/>", text + "display='none'>b</tspan></text>",
        text + "systemLanguage='de'>b</tspan></text>", filter + "filterRes='9'/>",
        filter + "><feGaussianBlur edgeMode='wrap'/></filter>",
        filter + "><feOffset><set/></feOffset></filter>", std::string("<svg viewBox='1 2 3'/>"),
        std::string("<style media='print'/>"), std::string("<style type='text/x'/>"),
        std::string("<symbol id='s' refX='1'/><use href='#s'/>")}) {
    EXPECT_EQ(readContent(content).leftOut.size(), 1u) << content;
  }
  const std::string_view sheet = "<?xml-stylesheet href='a.css'?><svg transform='scale(2)'/>";
  EXPECT_EQ(readSvg(std::as_bytes(std::span(sheet)), "a.svg", nullptr).leftOut.size(), 2u);
}

TEST(SvgForeign, ElementsMayHaveSeveralPrefixes) {
  EXPECT_EQ(readContent("<x:g><path d='M0 0h1'/></x:g><x:path d='M0 0h1'/><y:path/>")
                .document->root()
                .count(),
            2u);
}

}  // namespace
}  // namespace tqdoc
