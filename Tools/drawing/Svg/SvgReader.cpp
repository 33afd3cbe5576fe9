#include "Svg/SvgReader.h"

#include <algorithm>
#include <functional>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include <pugixml.hpp>

#include "Model/Marker.h"
#include "Model/Mask.h"
#include "Model/Numbers.h"
#include "Model/TextLayout.h"
#include "Svg/SvgConditions.h"
#include "Svg/SvgEntities.h"
#include "Svg/SvgFilter.h"
#include "Svg/SvgGradient.h"
#include "Svg/SvgImage.h"
#include "Svg/SvgPattern.h"
#include "Svg/SvgShapes.h"
#include "Svg/SvgStyleSheet.h"
#include "Svg/SvgText.h"
#include "Svg/SvgTransform.h"

namespace tqdoc {
namespace {

[[nodiscard]] bool isGroup(std::string_view name) {
  return name == "g" || name == "a" || name == "switch" || name == "svg";
}

/// Returns true for elements that become nodes.
[[nodiscard]] bool isDrawn(std::string_view name) {
  return isGroup(name) || isOutline(name) || name == "use" || name == "image" || name == "text";
}

[[nodiscard]] tq::Ref<tq::Object> number(double value) {
  return tq::Number::numberWith(tq::NumberValue(archivable(value)));
}

class Reader {
 public:
  explicit Reader(SvgContext& context) : context_(context), sheet_(context) {}

  [[nodiscard]] tq::Ref<Document> read();

 private:
  /// What a node inherits, and what its lengths are relative to.
  struct Place {
    Style style;
    Viewport viewport;
  };
  using Bounds = std::function<tq::Rect()>;

  [[nodiscard]] tq::Ref<Node> readNode(pugi::xml_node node, const Place& parent);
  [[nodiscard]] tq::Ref<tq::Array> readChildren(pugi::xml_node node, const Place& place);
  [[nodiscard]] tq::Ref<Node> readShape(pugi::xml_node node, const Place& place);
  [[nodiscard]] tq::Ref<Node> readText(pugi::xml_node node, const Place& place);
  [[nodiscard]] tq::Ref<Node> readPicture(pugi::xml_node node, const Place& place);
  [[nodiscard]] tq::Ref<Node> readUse(pugi::xml_node node, const Place& place);
  [[nodiscard]] tq::Ref<Group> readViewport(pugi::xml_node node, const Place& place,
                                            const tq::Rect& frame);
  [[nodiscard]] tq::Ref<Node> readClip(pugi::xml_node user, const Place& place,
                                       const Bounds& bounds);
  [[nodiscard]] tq::Ref<Node> readMask(pugi::xml_node user, const Place& place,
                                       const Bounds& bounds);
  [[nodiscard]] ModelPaint paintOf(pugi::xml_node user, const Paint& paint, const Place& place,
                                   const tq::Rect& bounds);
  [[nodiscard]] Node::Traits traitsOf(pugi::xml_node node, const Place& place,
                                      const Bounds& bounds);
  [[nodiscard]] tq::Ref<Marker> readMarker(const std::string& id, std::size_t points);
  [[nodiscard]] tq::Ref<Marker> newMarker(pugi::xml_node node);
  [[nodiscard]] tq::Ref<tq::Dictionary> withMarkers(pugi::xml_node node, const Style& style,
                                                    const PathData& path,
                                                    tq::Ref<tq::Dictionary> without);
  [[nodiscard]] tq::AffineTransform transformOf(pugi::xml_node node, const Place& place,
                                                const Bounds& bounds);
  [[nodiscard]] tq::Ref<tq::Dictionary> styleOf(pugi::xml_node node, const Place& place,
                                                const Bounds& boundsOfNode);
  [[nodiscard]] static tq::Rect boundsOf(const tq::Array& children,
                                         const tq::AffineTransform& transform = {});

  /// Records a reference while its target is read, to detect cycles.
  class Following;

  SvgContext& context_;
  SvgStyleSheet sheet_;
  std::vector<pugi::xml_node> followed_;
  int depth_ = 0;
  bool inClip_ = false;
  Viewport page_;
  struct KnownMarker {
    tq::Ref<Marker> marker;
    std::size_t work = 0;
  };
  std::unordered_map<std::string, KnownMarker> markers_;  // by id
  bool inMarker_ = false;
};

class Reader::Following {
 public:
  Following(Reader& reader, pugi::xml_node target, pugi::xml_node from) : reader_(reader) {
    if (std::ranges::find(reader.followed_, target) != reader.followed_.end()) {
      throw SvgFault("the reference to #" + std::string(attributeOf(target, "id")) + " is circular",
                     from.offset_debug());
    }
    reader.followed_.push_back(target);
  }
  ~Following() { reader_.followed_.pop_back(); }
  Following(const Following&) = delete;
  Following& operator=(const Following&) = delete;

 private:
  Reader& reader_;
};

tq::Ref<Document> Reader::read() {
  const pugi::xml_node root = context_.root();
  const auto box = viewBoxOf(context_, root);
  const tq::Size natural = box ? box->size : tq::Size{300, 150};
  const tq::Rect frame = frameOf(context_, root, {natural.width, natural.height}, natural);
  const tq::Size size = frame.size.width > 0 && frame.size.height > 0 ? frame.size : natural;
  const tq::Rect viewBox = box.value_or(tq::Rect({0, 0}, size));

  page_ = {viewBox.size.width, viewBox.size.height};
  Place place{sheet_.styleOf(root, Style(), page_), page_};
  if (place.style.transform ||
      transformOf(root, place, [] { return tq::Rect(); }) != tq::AffineTransformIdentity) {
    context_.leaveOut("transform of the root");
  }
  auto children = readChildren(root, place);
  auto group =
      tq::makeRef<Group>(traitsOf(root, place, [&] { return boundsOf(*children); }), children);

  tq::Ref<tq::String> title;
  for (const pugi::xml_node child : root.children()) {
    if (context_.nameOf(child) == "title" && !title) {
      title = tq::String::stringWithUTF8Repaired(trimmed(child.child_value()));
    }
  }
  auto unsupported = tq::MutableDictionary::dictionary();
  for (const auto& [name, count] : context_.features()) {
    unsupported->setObject(tq::Number::numberWith(tq::NumberValue(count)),
                           tq::String::stringWithUTF8Repaired(name));
  }
  const auto fit = tq::String::stringWithUTF8Repaired(attributeOf(root, "preserveAspectRatio"));
  return tq::makeRef<Document>(title, Document::Page{size, viewBox, fit}, group,
                               tq::refCast<tq::Dictionary>(unsupported->copy()));
}

tq::Ref<Node> Reader::readNode(pugi::xml_node node, const Place& parent) {
  const std::string_view name = context_.nameOf(node);
  if (name.empty() || isDefinition(name)) return nullptr;
  if (!meetsConditions(node)) {
    if (isForOtherLanguages(node)) context_.leaveOut("content in other languages");
    return nullptr;
  }
  if (!isDrawn(name)) {
    context_.leaveOut("<" + std::string(name) + ">");
    return nullptr;
  }
  if (depth_ == SvgContext::kDepthLimit) {
    throw SvgFault(
        "elements are nested more than " + std::to_string(SvgContext::kDepthLimit) + " deep",
        node.offset_debug());
  }
  ++depth_;
  Place place{sheet_.styleOf(node, parent.style, parent.viewport), parent.viewport};
  place.viewport.fontSize = place.style.fontSize;
  if (!isGroup(name) && name != "text") context_.leaveOutContent(node);
  tq::Ref<Node> result;
  if (isOutline(name)) {
    result = readShape(node, place);
  } else if (name == "use") {
    result = readUse(node, place);
  } else if (name == "text") {
    result = readText(node, place);
  } else if (name == "image") {
    result = readPicture(node, place);
  } else if (name == "svg") {
    const tq::Size whole{place.viewport.width, place.viewport.height};
    result = readViewport(node, place, frameOf(context_, node, place.viewport, whole));
  } else {
    auto children = readChildren(node, place);
    result =
        tq::makeRef<Group>(traitsOf(node, place, [&] { return boundsOf(*children); }), children);
  }
  --depth_;
  return result;
}

/// Of a switch, the first child that can be drawn is read.
tq::Ref<tq::Array> Reader::readChildren(pugi::xml_node node, const Place& place) {
  const bool isSwitch = context_.nameOf(node) == "switch";
  std::vector<tq::Ref<tq::Object>> children;
  for (const pugi::xml_node child : node.children()) {
    if (auto read = readNode(child, place)) children.push_back(std::move(read));
    if (isSwitch && isDrawn(context_.nameOf(child)) && meetsConditions(child)) break;
  }
  return tq::Array::arrayWithObjects(std::move(children));
}

tq::Ref<Node> Reader::readShape(pugi::xml_node node, const Place& place) {
  auto path = readOutline(context_, node, place.viewport);
  if (path->isEmpty()) return nullptr;
  const bool scalesDashes = !place.style.dashes.empty() && !attributeOf(node, "pathLength").empty();
  if (scalesDashes) context_.leaveOut("pathLength of dashes");
  const auto bounds = [&] { return path->tightBounds(); };
  auto traits = traitsOf(node, place, bounds);
  auto style = withMarkers(node, place.style, *path, styleOf(node, place, bounds));
  return tq::makeRef<Shape>(std::move(traits), std::move(path), std::move(style));
}

tq::Ref<Node> Reader::readText(pugi::xml_node node, const Place& place) {
  const auto runs = readTextRuns(context_, sheet_, node, place.style, place.viewport);
  if (runs.empty()) return nullptr;
  std::size_t length = 0;
  for (const TextRun& run : runs) length += run.length;
  if (length > kLaidOutCharacters) context_.leaveOut("characters of a long text");
  using Styles = std::vector<tq::Ref<tq::Dictionary>>;
  const auto stylesWith = [&](const auto& paintOf) {
    Styles styles;
    for (const TextRun& run : runs) {
      const auto style = tq::MutableDictionary::dictionaryWithDictionary(*paintOf(run));
      addTextStyle(*style, run.style.text, run.style.fontSize);
      styles.push_back(tq::refCast<tq::Dictionary>(style->copy()));
    }
    return styles;
  };
  const Bounds bounds = [&] {  // of the text without paint, which may depend on them
    const auto unpainted = stylesWith([](const TextRun&) { return tq::Dictionary::dictionary(); });
    return tightBounds(*textOf(runs, unpainted, Node::Traits()));
  };
  // Invisible parts of a visible text take up space, but are not painted.
  const bool isVisible =
      std::ranges::any_of(runs, [](const TextRun& run) { return run.style.visible; });
  const Styles styles = stylesWith([&](const TextRun& run) {
    if (!run.style.visible && isVisible) return tq::Dictionary::dictionary();
    Place inner{run.style, place.viewport};
    inner.viewport.fontSize = run.style.fontSize;
    return styleOf(run.element, inner, bounds);
  });
  auto traits = traitsOf(node, place, bounds);
  traits.hidden = traits.hidden || !isVisible;
  return textOf(runs, styles, std::move(traits));
}

tq::Ref<Node> Reader::readPicture(pugi::xml_node node, const Place& place) {
  const tq::Rect frame = frameOf(context_, node, place.viewport);
  auto image = readEmbeddedImage(context_, node);
  if (!image.bytes) return nullptr;
  if (tq::RectIsEmpty(frame)) {
    context_.leaveOut("image without a size");
    return nullptr;
  }
  return tq::makeRef<Picture>(
      traitsOf(node, place, [&] { return frame; }), frame,
      tq::String::stringWithUTF8Repaired(attributeOf(node, "preserveAspectRatio")),
      std::move(image.mediaType), std::move(image.bytes));
}

/// A reference becomes a group with a copy of the referenced element as its only child.
tq::Ref<Node> Reader::readUse(pugi::xml_node node, const Place& place) {
  const pugi::xml_node target = context_.find(localReference(hrefOf(node)));
  if (!target) {
    context_.leaveOut("use without a target");
    return nullptr;
  }
  const tq::Rect frame =
      frameOf(context_, node, place.viewport, {place.viewport.width, place.viewport.height});
  tq::Ref<Node> child;
  // Until the end of the copy: the mask of the reference may contain the same element.
  std::optional<Following> following(std::in_place, *this, target, node);
  if (context_.nameOf(target) == "symbol" || context_.nameOf(target) == "svg") {
    const Place inner{sheet_.styleOf(target, place.style, place.viewport), place.viewport};
    if (target.attribute("refX") || target.attribute("refY")) {
      context_.leaveOut("reference point of symbol");
    }
    child = readViewport(target, inner, {0, 0, frame.size.width, frame.size.height});
  } else {
    child = readNode(target, place);
  }
  following.reset();
  if (!child) return nullptr;
  auto traits = traitsOf(node, place, [&] { return tightBounds(*child); });
  traits.transform = tq::AffineTransformTranslate(traits.transform, frame.origin.x, frame.origin.y);
  return tq::makeRef<Group>(std::move(traits), tq::Array::arrayWithObjects({child}));
}

/// An element with its own coordinate system becomes a group with a transform and a clip.
tq::Ref<Group> Reader::readViewport(pugi::xml_node node, const Place& place,
                                    const tq::Rect& frame) {
  const tq::Rect viewBox = viewBoxOf(context_, node).value_or(tq::Rect({0, 0}, frame.size));
  const auto fitted = viewTransform(viewBox, frame.size, attributeOf(node, "preserveAspectRatio"));

  Place inner = place;
  inner.viewport.width = viewBox.size.width;
  inner.viewport.height = viewBox.size.height;
  auto children = readChildren(node, inner);
  Node::Traits content;
  content.transform =
      tq::AffineTransformConcat(fitted, {1, 0, 0, 1, frame.origin.x, frame.origin.y});
  if (!place.style.overflows) {
    const tq::Rect cut =
        tq::RectApplyAffineTransform({{0, 0}, frame.size}, tq::AffineTransformInvert(fitted));
    content.clip =
        tq::makeRef<Shape>(Node::Traits{}, rectanglePath(cut), tq::Dictionary::dictionary());
  }
  auto traits = traitsOf(node, place, [&] { return boundsOf(*children, content.transform); });
  if (traits.clip || traits.filter || traits.mask) {  // they are in the coordinates outside
    const auto group = tq::makeRef<Group>(std::move(content), std::move(children));
    return tq::makeRef<Group>(std::move(traits), tq::Array::arrayWithObjects({group}));
  }
  traits.transform = tq::AffineTransformConcat(content.transform, traits.transform);
  traits.clip = std::move(content.clip);
  return tq::makeRef<Group>(std::move(traits), std::move(children));
}

tq::Ref<Node> Reader::readClip(pugi::xml_node user, const Place& place, const Bounds& bounds) {
  if (place.style.clipPath.empty()) return nullptr;
  const pugi::xml_node node = context_.find(place.style.clipPath);
  if (context_.nameOf(node) != "clipPath") {
    context_.leaveOut("clip-path without a target");
    return nullptr;
  }
  const Following following(*this, node, user);
  const bool outer = std::exchange(inClip_, true);
  const Viewport& viewport = place.viewport;
  const Place inner{sheet_.styleOf(node, sheet_.styleAround(node, viewport), viewport), viewport};
  auto children = readChildren(node, inner);
  inClip_ = outer;
  auto traits = traitsOf(node, inner, bounds);
  if (attributeOf(node, "clipPathUnits") == "objectBoundingBox") {
    const tq::Rect box = bounds();
    const tq::AffineTransform unit =
        tq::RectIsNull(box) ? tq::AffineTransform{0, 0, 0, 0, 0, 0}
                            : tq::AffineTransform{box.size.width, 0,           0, box.size.height,
                                                  box.origin.x,   box.origin.y};
    traits.transform = tq::AffineTransformConcat(traits.transform, unit);
  }
  return tq::makeRef<Group>(std::move(traits), std::move(children));
}

tq::Ref<Node> Reader::readMask(pugi::xml_node user, const Place& place, const Bounds& bounds) {
  if (place.style.mask.empty()) return nullptr;
  const pugi::xml_node node = context_.find(place.style.mask);
  if (context_.nameOf(node) != "mask") {
    context_.leaveOut("mask without a target");
    return nullptr;
  }
  const Following following(*this, node, user);
  const Viewport& viewport = place.viewport;
  Place inner{sheet_.styleOf(node, sheet_.styleAround(node, viewport), viewport), viewport};
  // These have no effect on a mask.
  inner.style.opacity = 1;
  inner.style.displayed = true;
  inner.style.filter.clear();
  auto traits = traitsOf(node, inner, bounds);
  traits.transform = {};
  const tq::Rect region = regionOf(context_, node, "maskUnits", bounds(), viewport);
  Node::Traits content;
  if (attributeOf(node, "maskContentUnits") == "objectBoundingBox") {
    content.transform = unitTransform(tq::RectIsNull(bounds()) ? tq::Rect() : bounds());
    inner.viewport = {1, 1, viewport.fontSize};
  }
  auto children = readChildren(node, inner);
  if (content.transform != tq::AffineTransformIdentity) {
    children =
        tq::Array::arrayWithObjects({tq::makeRef<Group>(std::move(content), std::move(children))});
  }
  const auto kind = inner.style.alphaMask ? Mask::Kind::alpha : Mask::Kind::luminance;
  return tq::makeRef<Mask>(std::move(traits), std::move(children), region, kind);
}

/// A pattern that draws nothing is replaced by the fallback colour.
ModelPaint Reader::paintOf(pugi::xml_node user, const Paint& paint, const Place& place,
                           const tq::Rect& bounds) {
  Paint plain = paint;
  const pugi::xml_node server =
      paint.server.empty() ? pugi::xml_node() : context_.find(paint.server);
  if (context_.nameOf(server) == "pattern") {
    const Following following(*this, server, user);
    const auto readContent = [&](pugi::xml_node node, Viewport viewport) {
      Style style = sheet_.styleOf(node, sheet_.styleAround(node, viewport), viewport);
      return readChildren(node, {std::move(style), viewport});
    };
    auto pattern = readPattern(context_, server, bounds, place.viewport, readContent);
    if (pattern) return {std::move(pattern), 1};
    plain.server.clear();
  }
  return readPaint(context_, sheet_, plain, place.style, bounds, place.viewport);
}

Node::Traits Reader::traitsOf(pugi::xml_node node, const Place& place, const Bounds& bounds) {
  const Style& style = place.style;
  Node::Traits traits;
  std::string_view name = attributeOf(node, "inkscape:label");
  if (name.empty()) name = attributeOf(node, "id");
  if (!name.empty()) traits.name = tq::String::stringWithUTF8Repaired(name);
  if (node != context_.root()) traits.transform = transformOf(node, place, bounds);
  traits.opacity = style.opacity;
  traits.blend = style.blend;
  traits.isolated = style.isolated && !isOutline(context_.nameOf(node));
  // Visibility is inherited, and a descendant may be visible again, so it never hides a group.
  const std::string_view element = context_.nameOf(node);
  traits.hidden =
      !style.displayed || (!style.visible && (isOutline(element) || element == "image"));
  traits.clip = readClip(node, place, bounds);
  if (!inClip_) {
    traits.filter = readFilter(context_, sheet_, style, bounds, place.viewport);
    traits.mask = readMask(node, place, bounds);
  }
  return traits;
}

/// Adds the markers to the style of a shape. They are for paths and lines, not for circles and
/// rects.
tq::Ref<tq::Dictionary> Reader::withMarkers(pugi::xml_node node, const Style& style,
                                            const PathData& path, tq::Ref<tq::Dictionary> without) {
  const std::string_view element = context_.nameOf(node);
  const bool isLine = element != "rect" && element != "circle" && element != "ellipse";
  const bool hasMarkers =
      !style.markerStart.empty() || !style.markerMid.empty() || !style.markerEnd.empty();
  if (inClip_ || !isLine || !hasMarkers) return without;
  const auto result = tq::MutableDictionary::dictionaryWithDictionary(*without);
  const auto setMarker = [&](const std::string& id, std::size_t points, std::string_view key) {
    if (id.empty()) return;
    auto marker = readMarker(id, points);
    if (!marker) return;
    if (marker->placing().scalesWithStroke && style.strokeWidth != 1) {
      result->setObject(number(style.strokeWidth), "strokeWidth");
    }
    result->setObject(std::move(marker), key);
  };
  setMarker(style.markerStart, 1, "markerStart");
  setMarker(style.markerEnd, 1, "markerEnd");
  const bool hasArcs = attributeOf(node, "d").find_first_of("aA") != std::string_view::npos;
  if (hasArcs && !style.markerMid.empty()) {
    context_.leaveOut("marker-mid of arcs");  // an arc is several steps of the model
  } else {
    setMarker(style.markerMid, path.steps().size(), "markerMid");
  }
  return tq::refCast<tq::Dictionary>(result->copy());
}

/// Returns the marker with this id, or null. It costs its work again at each point.
tq::Ref<Marker> Reader::readMarker(const std::string& id, std::size_t points) {
  const pugi::xml_node node = context_.find(id);
  if (inMarker_ || context_.nameOf(node) != "marker") {
    context_.leaveOut(inMarker_ ? "marker inside a marker" : "marker without a target");
    return nullptr;
  }
  const auto [known, isNew] = markers_.try_emplace(id);
  if (isNew) {
    inMarker_ = true;
    const std::size_t before = context_.workLeft();
    known->second.marker = newMarker(node);
    known->second.work = before - context_.workLeft();
    inMarker_ = false;
  }
  context_.charge(points * known->second.work, node);
  return known->second.marker;
}

/// Its content is placed with the reference point at the origin. A marker that adds nothing to the
/// group in it is that group.
tq::Ref<Marker> Reader::newMarker(pugi::xml_node node) {
  Place place{sheet_.styleOf(node, sheet_.styleAround(node, page_), page_), page_};
  place.viewport.fontSize = place.style.fontSize;
  const tq::Size size{
      lengthOf(context_, node, "markerWidth", place.viewport, Extent::horizontal, 3),
      lengthOf(context_, node, "markerHeight", place.viewport, Extent::vertical, 3)};
  if (!(size.width > 0 && size.height > 0)) return nullptr;
  const tq::Rect viewBox = viewBoxOf(context_, node).value_or(tq::Rect({0, 0}, size));
  const auto fitted = viewTransform(viewBox, size, attributeOf(node, "preserveAspectRatio"));
  place.viewport.width = viewBox.size.width;
  place.viewport.height = viewBox.size.height;
  const tq::Point reference{lengthOf(context_, node, "refX", place.viewport, Extent::horizontal),
                            lengthOf(context_, node, "refY", place.viewport, Extent::vertical)};
  auto children = readChildren(node, place);

  Node::Traits traits = traitsOf(node, place, [&] { return boundsOf(*children); });
  traits.hidden = false;  // it is never displayed itself
  traits.transform =
      tq::AffineTransformTranslate({fitted.a, 0, 0, fitted.d, 0, 0}, -reference.x, -reference.y);
  if (!place.style.overflows && !traits.clip) {
    const tq::Rect cut =
        tq::RectApplyAffineTransform({{0, 0}, size}, tq::AffineTransformInvert(fitted));
    traits.clip =
        tq::makeRef<Shape>(Node::Traits{}, rectanglePath(cut), tq::Dictionary::dictionary());
  }
  const bool addsNothing = traits.transform == tq::AffineTransformIdentity && !traits.clip &&
                           traits.opacity == 1 && children->count() == 1;
  tq::Ref<Node> content;
  if (addsNothing) content = tq::share(static_cast<Node&>(children->objectAtIndex(0)));
  if (!tq::objectCast<Group>(content.get())) {
    content = tq::makeRef<Group>(std::move(traits), std::move(children));
  }

  Marker::Placing placing;
  placing.scalesWithStroke = attributeOf(node, "markerUnits") != "userSpaceOnUse";
  const std::string_view orient = trimmed(attributeOf(node, "orient"));
  if (orient == "auto") {
    placing.direction = Marker::Direction::alongPath;
  } else if (orient == "auto-start-reverse") {
    placing.direction = Marker::Direction::alongPathFromStart;
  } else {
    const auto degrees = parseAngle(orient, true);
    if (!degrees && !orient.empty()) context_.leaveOut("invalid orient of marker");
    placing.degrees = degrees.value_or(0);
  }
  return tq::makeRef<Marker>(std::move(content), placing);
}

tq::AffineTransform Reader::transformOf(pugi::xml_node node, const Place& place,
                                        const Bounds& bounds) {
  const Style& style = place.style;
  Viewport viewport = place.viewport;
  tq::Point corner;
  if (style.transformsInBounds && (style.transform || !style.transformOrigin.empty())) {
    const tq::Rect box = bounds();
    if (!tq::RectIsNull(box)) corner = box.origin;
    viewport = {tq::RectGetWidth(box), tq::RectGetHeight(box), viewport.fontSize};
  }
  const auto transform = style.transform ? parseStyleTransform(*style.transform, viewport)
                                         : tqdoc::transformOf(context_, node);
  const auto offset = parseTransformOrigin(style.transformOrigin, viewport);
  const tq::Point origin{corner.x + (offset ? offset->x : 0), corner.y + (offset ? offset->y : 0)};
  return tq::AffineTransformTranslate(
      tq::AffineTransformConcat(transform.value_or(tq::AffineTransformIdentity),
                                {1, 0, 0, 1, origin.x, origin.y}),
      -origin.x, -origin.y);
}

tq::Ref<tq::Dictionary> Reader::styleOf(pugi::xml_node node, const Place& place,
                                        const Bounds& boundsOfNode) {
  const Style& style = place.style;
  auto result = tq::MutableDictionary::dictionary();
  const auto flag = [&](bool on, std::string_view key) {
    if (on) result->setObject(tq::Number::numberWith(tq::NumberValue(true)), key);
  };
  const auto measure = [&](double value, double otherwise, std::string_view key) {
    if (value != otherwise) result->setObject(number(value), key);
  };
  if (inClip_) {
    flag(style.clipEvenOdd, "evenOdd");
    return tq::refCast<tq::Dictionary>(result->copy());
  }
  const bool isPlain = style.fill.server.empty() && style.stroke.server.empty();
  const tq::Rect bounds = isPlain ? tq::Rect() : boundsOfNode();
  const auto paint = [&](const Paint& from) { return paintOf(node, from, place, bounds); };
  if (ModelPaint fill = paint(style.fill); fill.object) {
    result->setObject(std::move(fill.object), "fill");
    measure(style.fillOpacity * fill.alpha, 1, "fillOpacity");
    flag(style.fillEvenOdd, "evenOdd");
  }
  if (ModelPaint stroke = paint(style.stroke); stroke.object && style.strokeWidth > 0) {
    result->setObject(std::move(stroke.object), "stroke");
    measure(style.strokeOpacity * stroke.alpha, 1, "strokeOpacity");
    measure(style.strokeWidth, 1, "strokeWidth");
    if (style.lineCap != "butt") result->setObject(tq::String::of(style.lineCap), "lineCap");
    if (style.lineJoin != "miter") result->setObject(tq::String::of(style.lineJoin), "lineJoin");
    measure(style.miterLimit, 4, "miterLimit");
    if (!style.dashes.empty()) {
      std::vector<double> dashes;
      std::ranges::transform(style.dashes, std::back_inserter(dashes),
                             [](double dash) { return archivable(dash); });
      context_.charge(dashes.size(), node);
      result->setObject(tq::Array::arrayWithNumbers(std::span<const double>(dashes)), "dashes");
      measure(style.dashOffset, 0, "dashOffset");
    }
  }
  flag(!style.strokeScales && result->objectForKey("stroke") != nullptr, "nonScalingStroke");
  if (!style.paintOrder.empty() && result->count() > 0) {
    result->setObject(tq::String::of(style.paintOrder), "paintOrder");
  }
  return tq::refCast<tq::Dictionary>(result->copy());
}

tq::Rect Reader::boundsOf(const tq::Array& children, const tq::AffineTransform& transform) {
  tq::Rect bounds = tq::RectNull;
  for (const tq::Object& child : children) {
    bounds = tq::RectUnion(bounds, tightBounds(static_cast<const Node&>(child), transform));
  }
  return bounds;
}

/// Returns "line:column" of an offset, both counted from 1.
[[nodiscard]] std::string lineAndColumn(std::string_view text, std::ptrdiff_t offset) {
  const std::string_view before =
      text.substr(0, static_cast<std::size_t>(std::max<std::ptrdiff_t>(offset, 0)));
  const auto line = std::ranges::count(before, '\n') + 1;
  const std::size_t start = before.rfind('\n') + 1;  // npos + 1 is 0
  return std::to_string(line) + ":" + std::to_string(before.size() - start + 1);
}

}  // namespace

SvgDrawing readSvg(std::span<const std::byte> bytes, std::string_view fileName,
                   tq::Ref<tq::Error>* error) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const auto fail = [&](std::ptrdiff_t offset, std::string_view reason) {
    const std::string message =
        std::string(fileName) + ":" + lineAndColumn(text, offset) + ": " + std::string(reason);
    tq::setOutError(
        error, tq::Error::errorWithDomain("com.korvan.tqdoc", 2,
                                          tq::String::stringWithUTF8Repaired(message)->view()));
    return SvgDrawing();
  };
  std::optional<ExpandedText> expanded;
  try {
    expanded.emplace(text);
  } catch (const SvgFault& fault) {
    return fail(fault.offset(), fault.what());
  }
  pugi::xml_document xml;
  constexpr unsigned kParsed = pugi::parse_default | pugi::parse_ws_pcdata;  // spaces in texts
  const std::string_view content = expanded->text();
  const pugi::xml_parse_result parsed = xml.load_buffer(content.data(), content.size(), kParsed);
  if (!parsed) return fail(expanded->sourceOffset(parsed.offset), parsed.description());
  try {
    SvgContext context(xml, content.size(), expanded->leftOut());
    const auto start = static_cast<std::size_t>(context.root().offset_debug());
    if (content.substr(0, start).find("<?xml-stylesheet") != content.npos) {
      context.leaveOut("external style sheet");
    }
    auto document = Reader(context).read();
    return {std::move(document), context.features()};
  } catch (const SvgFault& fault) {
    return fail(expanded->sourceOffset(fault.offset()), fault.what());
  }
}

}  // namespace tqdoc
