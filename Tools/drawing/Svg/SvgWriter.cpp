#include "Svg/SvgWriter.h"

#include <algorithm>
#include <charconv>
#include <initializer_list>
#include <span>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <pugixml.hpp>

#include "Model/Gradient.h"
#include "Model/Marker.h"
#include "Model/Mask.h"
#include "Model/Numbers.h"
#include "Model/Pattern.h"
#include "Model/Text.h"
#include "Svg/SvgColor.h"

namespace tqdoc {
namespace {

/// Returns the shortest text that is read as the same number.
[[nodiscard]] std::string textOf(double number) {
  char text[32];
  return {text, std::to_chars(std::begin(text), std::end(text), number).ptr};
}

[[nodiscard]] std::string textOf(std::span<const double> numbers) {
  std::string text;
  for (const double number : numbers) text += (text.empty() ? "" : " ") + textOf(number);
  return text;
}

[[nodiscard]] std::string textOf(const tq::AffineTransform& t) {
  return "matrix(" + textOf(std::initializer_list<double>{t.a, t.b, t.c, t.d, t.tx, t.ty}) + ")";
}

[[nodiscard]] std::string textOf(const PathData& path) {
  std::string text;
  std::size_t at = 0;
  for (const char step : path.steps()) {
    const auto count = 2 * static_cast<std::size_t>(PathData::pointsOf(step));
    text += step + textOf(path.coordinates().subspan(at, count));
    at += count;
  }
  return text;
}

/// Replaces control characters by "?": XML has none, not even escaped.
[[nodiscard]] std::string xmlText(std::string_view text) {
  std::string result(text);
  std::ranges::replace_if(
      result, [](unsigned char c) { return c < 0x20 || c == 0x7f; }, '?');
  return result;
}

void set(pugi::xml_node element, const char* attribute, const std::string& text) {
  element.append_attribute(attribute) = text.c_str();
}

void set(pugi::xml_node element, const char* attribute, double number) {
  set(element, attribute, textOf(number));
}

constexpr const char* kFactors[] = {"k1", "k2", "k3", "k4"};  // of an arithmetic composite

void setRect(pugi::xml_node element, const tq::Rect& rect) {
  set(element, "x", rect.origin.x);
  set(element, "y", rect.origin.y);
  set(element, "width", rect.size.width);
  set(element, "height", rect.size.height);
}

class Writer {
 public:
  explicit Writer(const Document& document) {
    pugi::xml_node svg = xml_.append_child("svg");
    set(svg, "xmlns", "http://www.w3.org/2000/svg");
    set(svg, "xmlns:xlink", "http://www.w3.org/1999/xlink");
    set(svg, "xmlns:inkscape", "http://www.inkscape.org/namespaces/inkscape");
    const Document::Page& page = document.page();
    const tq::Rect& box = page.viewBox;
    set(svg, "width", page.size.width);
    set(svg, "height", page.size.height);
    set(svg, "viewBox",
        textOf(std::initializer_list<double>{box.origin.x, box.origin.y, box.size.width,
                                             box.size.height}));
    if (page.fit->length() > 0) set(svg, "preserveAspectRatio", xmlText(page.fit->view()));
    if (!document.title().empty()) {
      svg.append_child("title").text() = xmlText(document.title()).c_str();
    }
    definitions_ = svg.append_child("defs");
    if (document.root().traits().transform == tq::AffineTransformIdentity) {
      writeContent(svg, document.root());
    } else {
      write(svg, document.root());  // the outermost element cannot be transformed
    }
    if (!definitions_.first_child()) svg.remove_child(definitions_);
  }

  [[nodiscard]] std::string take() const {
    struct : pugi::xml_writer {
      void write(const void* data, std::size_t size) override {
        text.append(static_cast<const char*>(data), size);
      }
      std::string text;
    } writer;
    xml_.save(writer, " ", pugi::format_default, pugi::encoding_utf8);
    return std::move(writer.text);
  }

 private:
  void write(pugi::xml_node parent, const Node& node) {
    const char* const name = tq::objectCast<Group>(&node) != nullptr   ? "g"
                             : tq::objectCast<Shape>(&node) != nullptr ? "path"
                             : tq::objectCast<Text>(&node) != nullptr  ? "text"
                                                                       : "image";
    writeContent(parent.append_child(name), node);
  }

  void writeContent(pugi::xml_node element, const Node& node) {
    writeTraits(element, node.traits());
    if (const auto* group = tq::objectCast<Group>(&node)) {
      for (std::size_t i = 0; i < group->count(); ++i) write(element, group->child(i));
    } else if (const auto* shape = tq::objectCast<Shape>(&node)) {
      set(element, "d", textOf(shape->path()));
      writeStyle(element, shape->style());
    } else if (const auto* picture = tq::objectCast<Picture>(&node)) {
      writePicture(element, *picture);
    } else if (const auto* words = tq::objectCast<Text>(&node)) {
      writeText(element, *words);
    }
  }

  /// If there are spans, each part has its whole style: nothing is inherited that it lacks.
  void writeText(pugi::xml_node element, const Text& text) {
    set(element, "xml:space", "preserve");
    set(element, "x", text.position().x);
    set(element, "y", text.position().y);
    const std::size_t count = text.spans().count();
    std::string_view rest = text.string();
    for (std::size_t i = 0; i <= count && !rest.empty(); ++i) {
      const auto part = i < count ? firstCharacters(rest, text.span(i).length()) : rest;
      rest.remove_prefix(part.size());
      pugi::xml_node styled = element;
      if (count > 0) {
        // Text between elements, even if it is empty, keeps them on one line of the file.
        element.append_child(pugi::node_pcdata);
        styled = element.append_child("tspan");
      }
      if (i < count) writePositions(styled, text.span(i).positions());
      const auto style = text.styleOfSpan(i);
      writeStyle(styled, *style);
      writeTextStyle(styled, *style);
      styled.append_child(pugi::node_pcdata).set_value(xmlText(part).c_str());
    }
    if (count > 0) element.append_child(pugi::node_pcdata);
  }

  static void writePositions(pugi::xml_node element, const GlyphPositions& positions) {
    const std::pair<const char*, std::span<const double>> lists[] = {{"x", positions.x},
                                                                     {"y", positions.y},
                                                                     {"dx", positions.dx},
                                                                     {"dy", positions.dy},
                                                                     {"rotate", positions.rotate}};
    for (const auto& [attribute, list] : lists) {
      if (!list.empty()) set(element, attribute, textOf(list));
    }
  }

  static void writeTextStyle(pugi::xml_node element, const tq::Dictionary& style) {
    constexpr std::pair<const char*, const char*> kAttributes[] = {
        {"fontFamily", "font-family"},
        {"fontSize", "font-size"},
        {"fontStyle", "font-style"},
        {"fontWeight", "font-weight"},
        {"fontStretch", "font-stretch"},
        {"fontVariant", "font-variant"},
        {"letterSpacing", "letter-spacing"},
        {"wordSpacing", "word-spacing"},
        {"anchor", "text-anchor"},
        {"direction", "direction"},
        {"baselineShift", "baseline-shift"},
        {"decoration", "text-decoration"},
        {"language", "xml:lang"}};
    for (const auto& [key, attribute] : kAttributes) {
      const tq::Object* const value = style.objectForKey(key);
      if (const auto* word = tq::objectCast<tq::String>(value)) {
        set(element, attribute, xmlText(word->view()));
      } else if (value != nullptr) {
        set(element, attribute, numberIn(style, key, 0));
      }
    }
  }

  void writeTraits(pugi::xml_node element, const Node::Traits& traits) {
    if (traits.name) set(element, "inkscape:label", xmlText(traits.name->view()));
    if (traits.transform != tq::AffineTransformIdentity) {
      set(element, "transform", textOf(traits.transform));
    }
    if (traits.opacity != 1) set(element, "opacity", traits.opacity);
    if (traits.hidden) set(element, "display", "none");
    std::string blending;  // there are no attributes for these
    if (traits.blend != Blend::normal)
      blending = "mix-blend-mode:" + std::string(nameOf(traits.blend));
    if (traits.isolated) blending += blending.empty() ? "isolation:isolate" : ";isolation:isolate";
    if (!blending.empty()) set(element, "style", blending);
    if (traits.clip) set(element, "clip-path", referenceTo(clip(*traits.clip)));
    if (traits.filter) set(element, "filter", referenceTo(define(*traits.filter)));
    if (const auto* mask = tq::objectCast<Mask>(traits.mask.get())) {
      set(element, "mask", referenceTo(define(*mask)));
    }
  }

  void writeStyle(pugi::xml_node element, const tq::Dictionary& style) {
    constexpr struct {
      const char* key;
      const char* attribute;
    } kNumbers[] = {{"fillOpacity", "fill-opacity"},
                    {"strokeOpacity", "stroke-opacity"},
                    {"strokeWidth", "stroke-width"},
                    {"miterLimit", "stroke-miterlimit"},
                    {"dashOffset", "stroke-dashoffset"}},
      kWords[] = {{"lineCap", "stroke-linecap"},
                  {"lineJoin", "stroke-linejoin"},
                  {"paintOrder", "paint-order"}};
    set(element, "fill", paint(style.objectForKey("fill")));
    if (const auto* stroke = style.objectForKey("stroke")) set(element, "stroke", paint(stroke));
    if (numberIn(style, "evenOdd", 0) != 0) {
      set(element, "fill-rule", "evenodd");
      set(element, "clip-rule", "evenodd");
    }
    for (const auto& [key, attribute] : kNumbers) {
      if (style.objectForKey(key) != nullptr) set(element, attribute, numberIn(style, key, 0));
    }
    for (const auto& [key, attribute] : kWords) {
      const auto* word = tq::objectCast<tq::String>(style.objectForKey(key));
      if (word != nullptr) set(element, attribute, xmlText(word->view()));
    }
    const auto* dashes = tq::objectCast<tq::Array>(style.objectForKey("dashes"));
    const auto lengths = dashes != nullptr ? numbersOf(*dashes) : std::nullopt;
    if (lengths) set(element, "stroke-dasharray", textOf(*lengths));
    if (numberIn(style, "nonScalingStroke", 0) != 0) {
      set(element, "vector-effect", "non-scaling-stroke");
    }
    constexpr std::pair<const char*, const char*> kMarkers[] = {
        {"markerStart", "marker-start"}, {"markerMid", "marker-mid"}, {"markerEnd", "marker-end"}};
    for (const auto& [key, attribute] : kMarkers) {
      const auto* marker = tq::objectCast<Marker>(style.objectForKey(key));
      if (marker != nullptr) set(element, attribute, referenceTo(define(*marker)));
    }
  }

  void writePicture(pugi::xml_node element, const Picture& picture) {
    setRect(element, picture.frame());
    if (!picture.fit().empty()) set(element, "preserveAspectRatio", xmlText(picture.fit()));
    set(element, "xlink:href",
        "data:" + xmlText(picture.mediaType()) + ";base64," +
            tq::base64FromBytes(picture.bytes().bytes()));
  }

  /// Returns the text of a paint; a gradient or a pattern is defined first.
  [[nodiscard]] std::string paint(const tq::Object* paint) {
    if (const auto* color = tq::objectCast<tq::String>(paint)) return xmlText(color->view());
    if (const auto* pattern = tq::objectCast<Pattern>(paint)) {
      return referenceTo(define(*pattern));
    }
    const auto* gradient = tq::objectCast<Gradient>(paint);
    return gradient != nullptr ? referenceTo(define(*gradient)) : "none";
  }

  [[nodiscard]] pugi::xml_node define(const Gradient& gradient) {
    const GradientGeometry& g = gradient.geometry();
    pugi::xml_node element = definition(g.radial ? "radialGradient" : "linearGradient");
    set(element, "gradientUnits", "userSpaceOnUse");
    if (g.transform != tq::AffineTransformIdentity) {
      set(element, "gradientTransform", textOf(g.transform));
    }
    constexpr const char* kSpreads[] = {"pad", "reflect", "repeat"};
    set(element, "spreadMethod", kSpreads[static_cast<std::size_t>(g.spread)]);
    const bool isRadial = g.radial;
    set(element, isRadial ? "fx" : "x1", g.start.x);
    set(element, isRadial ? "fy" : "y1", g.start.y);
    set(element, isRadial ? "cx" : "x2", g.end.x);
    set(element, isRadial ? "cy" : "y2", g.end.y);
    if (isRadial) set(element, "r", g.radius);
    if (g.focalRadius != 0) set(element, "fr", g.focalRadius);
    for (const GradientStop& stop : gradient.stops()) {
      pugi::xml_node child = element.append_child("stop");
      set(child, "offset", stop.offset);
      set(child, "stop-color", colorText({stop.red, stop.green, stop.blue, 1}));
      if (stop.alpha != 1) set(child, "stop-opacity", stop.alpha);
    }
    return element;
  }

  /// Defines a marker once. Its only child has the transform and the clip.
  [[nodiscard]] pugi::xml_node define(const Marker& marker) {
    const auto [known, isNew] = markers_.try_emplace(&marker);
    if (!isNew) return known->second;
    pugi::xml_node element = definition("marker");
    known->second = element;
    const Marker::Placing& placing = marker.placing();
    if (!placing.scalesWithStroke) set(element, "markerUnits", "userSpaceOnUse");
    if (placing.direction != Marker::Direction::fixed) {
      const bool isTurned = placing.direction == Marker::Direction::alongPathFromStart;
      set(element, "orient", isTurned ? "auto-start-reverse" : "auto");
    } else if (placing.degrees != 0) {
      set(element, "orient", placing.degrees);
    }
    set(element, "overflow", "visible");
    write(element, marker.content());
    return element;
  }

  [[nodiscard]] pugi::xml_node define(const Filter& filter) {
    pugi::xml_node element = definition("filter");
    set(element, "filterUnits", "userSpaceOnUse");
    setRect(element, filter.region());
    const auto steps = filter.steps();
    // A step without a region inherits those of its inputs.
    const bool hasRegions =
        std::ranges::any_of(steps, [](const FilterStep& step) { return step.region.has_value(); });
    for (std::size_t i = 0; i < steps.size(); ++i) {
      pugi::xml_node child = primitive(element, steps[i]);
      if (hasRegions) setRect(child, steps[i].region.value_or(filter.region()));
      if (!steps[i].linear) set(child, "color-interpolation-filters", "sRGB");
      set(child, "result", "r" + std::to_string(i));
    }
    return element;
  }

  [[nodiscard]] static std::string nameOfInput(int input) {
    if (input == FilterStep::kSource) return "SourceGraphic";
    if (input == FilterStep::kSourceAlpha) return "SourceAlpha";
    return input == FilterStep::kNothing ? "BackgroundImage" : "r" + std::to_string(input);
  }

  [[nodiscard]] static pugi::xml_node primitive(pugi::xml_node filter, const FilterStep& step) {
    using enum FilterStep::Kind;
    constexpr const char* kNames[] = {"feGaussianBlur", "feOffset",    "feFlood",
                                      "feMerge",        "feBlend",     "feComposite",
                                      "feColorMatrix",  "feMorphology"};
    pugi::xml_node element = filter.append_child(kNames[static_cast<std::size_t>(step.kind)]);
    const char* const inputs[] = {"in", "in2"};
    for (std::size_t i = 0; i < step.inputs.size(); ++i) {
      const bool isMerge = step.kind == merge;
      set(isMerge ? element.append_child("feMergeNode") : element, inputs[isMerge ? 0 : i],
          nameOfInput(step.inputs[i]));
    }
    const std::vector<double>& n = step.numbers;
    if (step.kind == offset) {
      set(element, "dx", n[0]);
      set(element, "dy", n[1]);
    } else if (step.kind == flood) {
      set(element, "flood-color", colorText({n[0], n[1], n[2], 1}));
      set(element, "flood-opacity", n[3]);
    } else if (step.mode == "arithmetic") {
      for (std::size_t k = 0; k < n.size(); ++k) set(element, kFactors[k], n[k]);
    } else if (!n.empty()) {
      set(element,
          step.kind == blur         ? "stdDeviation"
          : step.kind == morphology ? "radius"
                                    : "values",
          textOf(n));
    }
    if (!step.mode.empty()) set(element, step.kind == blend ? "mode" : "operator", step.mode);
    return element;
  }

  [[nodiscard]] pugi::xml_node define(const Mask& mask) {
    pugi::xml_node element = definition("mask");
    set(element, "maskUnits", "userSpaceOnUse");
    setRect(element, mask.region());
    if (mask.kind() == Mask::Kind::alpha) set(element, "mask-type", "alpha");
    const Node::Traits& traits = mask.traits();
    if (traits.transform == tq::AffineTransformIdentity && traits.opacity == 1 && !traits.hidden &&
        !traits.filter) {
      writeContent(element, mask);
    } else {  // these have no effect on a mask element
      writeContent(element.append_child("g"), mask);
    }
    return element;
  }

  [[nodiscard]] pugi::xml_node define(const Pattern& pattern) {
    pugi::xml_node element = definition("pattern");
    const Node::Traits& traits = pattern.traits();
    if (traits.name) set(element, "inkscape:label", xmlText(traits.name->view()));
    set(element, "patternUnits", "userSpaceOnUse");
    setRect(element, pattern.tile());
    if (traits.transform != tq::AffineTransformIdentity) {
      set(element, "patternTransform", textOf(traits.transform));
    }
    for (std::size_t i = 0; i < pattern.count(); ++i) write(element, pattern.child(i));
    return element;
  }

  [[nodiscard]] pugi::xml_node clip(const Node& node) {
    pugi::xml_node element = definition("clipPath");
    if (tq::objectCast<Group>(&node) != nullptr) {
      writeContent(element, node);
    } else {
      write(element, node);
    }
    return element;
  }

  /// Appends an element that others refer to.
  [[nodiscard]] pugi::xml_node definition(const char* name) {
    pugi::xml_node element = definitions_.append_child(name);
    set(element, "id", name + std::to_string(++definitionCount_));
    return element;
  }
  [[nodiscard]] static std::string referenceTo(pugi::xml_node definition) {
    return std::string("url(#") + definition.attribute("id").value() + ")";
  }

  pugi::xml_document xml_;
  pugi::xml_node definitions_;
  std::size_t definitionCount_ = 0;
  std::unordered_map<const Marker*, pugi::xml_node> markers_;
};

}  // namespace

std::string svgOf(const Document& document) { return Writer(document).take(); }

}  // namespace tqdoc
