// Reads and draws any drawing. What was read must be the same after archiving and reopening. An
// input that begins with "<" is the drawing; the bytes of any other choose the elements, attributes
// and values of a well-formed one.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "Render/Canvas.h"
#include "Reopening.h"
#include "Svg/SvgReader.h"

namespace {

using namespace tqdoc;
using tq::fuzz::require;

constexpr const char* kElements[] = {"g",
                                     "path",
                                     "rect",
                                     "circle",
                                     "ellipse",
                                     "line",
                                     "polyline",
                                     "use",
                                     "symbol",
                                     "svg",
                                     "clipPath",
                                     "linearGradient",
                                     "radialGradient",
                                     "stop",
                                     "image",
                                     "a",
                                     "defs",
                                     "switch",
                                     "polygon",
                                     "style",
                                     "text",
                                     "title",
                                     "pattern",
                                     "mask",
                                     "tspan",
                                     "filter",
                                     "feGaussianBlur",
                                     "feOffset",
                                     "feFlood",
                                     "feMerge",
                                     "feMergeNode",
                                     "feBlend",
                                     "feComposite",
                                     "feColorMatrix",
                                     "feMorphology",
                                     "feDropShadow",
                                     "marker"};
constexpr const char* kAttributes[] = {"id",
                                       "href",
                                       "d",
                                       "points",
                                       "transform",
                                       "style",
                                       "class",
                                       "clip-path",
                                       "fill",
                                       "stroke",
                                       "stroke-width",
                                       "opacity",
                                       "viewBox",
                                       "width",
                                       "height",
                                       "x",
                                       "y",
                                       "r",
                                       "rx",
                                       "cx",
                                       "cy",
                                       "offset",
                                       "stop-color",
                                       "fill-rule",
                                       "clip-rule",
                                       "display",
                                       "visibility",
                                       "stroke-linejoin",
                                       "gradientUnits",
                                       "overflow",
                                       "x2",
                                       "spreadMethod",
                                       "clipPathUnits",
                                       "stroke-dasharray",
                                       "gradientTransform",
                                       "fx",
                                       "xml:space",
                                       "filter",
                                       "mask",
                                       "in",
                                       "in2",
                                       "result",
                                       "stdDeviation",
                                       "dx",
                                       "rotate",
                                       "operator",
                                       "values",
                                       "radius",
                                       "patternUnits",
                                       "maskContentUnits",
                                       "mask-type",
                                       "color-interpolation-filters",
                                       "fr",
                                       "marker-start",
                                       "marker-mid",
                                       "marker-end",
                                       "orient",
                                       "refX",
                                       "markerUnits",
                                       "paint-order",
                                       "vector-effect",
                                       "requiredFeatures"};
constexpr const char* kValues[] = {"a",
                                   "#a",
                                   "b",
                                   "#b",
                                   "url(#a)",
                                   "url(#b) red",
                                   "1",
                                   "0",
                                   "-3.5",
                                   "1e9",
                                   "1e-9",
                                   "50%",
                                   "10 10",
                                   "M0 0h9v9",
                                   "m1 1c1 2 3 4 5 6s7 8 9 9z",
                                   "M1 1a3 2 9 0 1 8 8t1 1q2 2 3 3",
                                   "0 0 10 10",
                                   "scale(3)",
                                   "matrix(1 2 3 4 5 6)",
                                   "rotate(9 9 9) skewX(80)",
                                   "none",
                                   "inherit",
                                   "round",
                                   "evenodd",
                                   "userSpaceOnUse",
                                   "objectBoundingBox",
                                   "fill:red;opacity:.5",
                                   "a b",
                                   "hidden",
                                   "5em",
                                   "preserve",
                                   "font:bold 9px serif;text-anchor:end;letter-spacing:1e9",
                                   "scale(1e7 0)",
                                   "SourceAlpha",
                                   "arithmetic",
                                   "dilate",
                                   "alpha",
                                   "sRGB",
                                   "auto-start-reverse",
                                   "markers stroke",
                                   "non-scaling-stroke",
                                   "mix-blend-mode:multiply;marker:url(#a)",
                                   "transform:rotate(9deg);transform-origin:50%",
                                   "isolation:isolate;transform-box:fill-box",
                                   "hsl(9 9% 9%)",
                                   "data:image/jpeg;base64,/9j/4AAQ",
                                   "data:image/png;base64,iVBORw0KGgo="};

/// Writes elements until the bytes or the depth end. Each byte is one choice.
class Generator {
 public:
  explicit Generator(tq::fuzz::Bytes bytes) : bytes_(bytes) {}

  [[nodiscard]] std::string drawing() {
    std::string text = "<svg width='40' height='30'>";
    while (!bytes_.isEmpty()) addElement(text, 0);
    return text + "</svg>";
  }

 private:
  void addElement(std::string& text, int depth) {
    constexpr std::size_t kMostAttributes = 6, kMostChildren = 4;
    constexpr int kDeepest = 20;
    const std::string name = bytes_.pick(kElements);
    text += '<' + name;
    unsigned used[std::size(kAttributes) / 32 + 1] = {};  // XML allows each attribute once
    for (std::size_t count = bytes_.choose(kMostAttributes); count > 0; --count) {
      const std::size_t attribute = bytes_.choose(std::size(kAttributes));
      unsigned& word = used[attribute / 32];
      if ((word >> attribute % 32 & 1) != 0) continue;
      word |= 1u << attribute % 32;
      text += std::string(" ") + kAttributes[attribute] + "='" + bytes_.pick(kValues) + '\'';
    }
    text += '>';
    if (name == "text" || name == "tspan") text += bytes_.pick(kValues);
    const std::size_t children = depth < kDeepest ? bytes_.choose(kMostChildren) : 0;
    for (std::size_t i = 0; i < children && !bytes_.isEmpty(); ++i) addElement(text, depth + 1);
    text += "</" + name + '>';
  }

  tq::fuzz::Bytes bytes_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
  prepareModel();
  const std::span<const std::uint8_t> input(bytes, size);
  const bool isText = size > 0 && bytes[0] == '<';
  const std::string text =
      isText ? std::string(input.begin(), input.end()) : Generator({bytes, size}).drawing();
  tq::Ref<tq::Error> error;
  const SvgDrawing drawing = readSvg(std::as_bytes(std::span(text)), "a.svg", &error);
  require((drawing.document == nullptr) == (error != nullptr));
  if (!drawing.document) return 0;
  Canvas canvas(32, 24);
  canvas.draw(*reopened(drawing.document), {0, 0, 32, 24});
  return 0;
}
