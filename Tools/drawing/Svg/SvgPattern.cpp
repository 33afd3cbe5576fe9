#include "Svg/SvgPattern.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "Model/Document.h"
#include "Svg/SvgFilter.h"
#include "Svg/SvgShapes.h"

namespace tqdoc {
namespace {

/// Returns a pattern and those from which it inherits.
[[nodiscard]] std::vector<pugi::xml_node> chainOf(SvgContext& context, pugi::xml_node node) {
  constexpr std::size_t kChainLimit = 32;
  std::vector<pugi::xml_node> chain;
  while (context.nameOf(node) == "pattern") {
    if (chain.size() == kChainLimit || std::ranges::find(chain, node) != chain.end()) {
      context.leaveOut("pattern that refers to itself");
      break;
    }
    chain.push_back(node);
    const std::string_view href = hrefOf(node);
    node = context.find(localReference(href));
    if (!href.empty() && !node) context.leaveOut("pattern href without a target");
  }
  return chain;
}

}  // namespace

tq::Ref<Pattern> readPattern(SvgContext& context, pugi::xml_node first, const tq::Rect& bounds,
                             Viewport viewport, const ReadContent& readContent) {
  const std::vector<pugi::xml_node> chain = chainOf(context, first);
  const auto having = [&](const char* attribute) {
    const auto found = std::ranges::find_if(
        chain, [&](pugi::xml_node node) { return !node.attribute(attribute).empty(); });
    return found != chain.end() ? *found : first;
  };
  const auto isDrawn = [&](pugi::xml_node node) { return !context.nameOf(node).empty(); };
  const auto content = std::ranges::find_if(
      chain, [&](pugi::xml_node node) { return std::ranges::any_of(node.children(), isDrawn); });

  const char* const units = "patternUnits";
  const bool inFractions = attributeOf(having(units), units) != "userSpaceOnUse";
  const Viewport lengths = inFractions ? Viewport{1, 1, viewport.fontSize} : viewport;
  const auto length = [&](const char* name, Extent extent) {
    return lengthOf(context, having(name), name, lengths, extent);
  };
  tq::Rect tile(length("x", Extent::horizontal), length("y", Extent::vertical),
                length("width", Extent::horizontal), length("height", Extent::vertical));
  if (inFractions && tq::RectIsEmpty(bounds)) return nullptr;
  if (inFractions) tile = tq::RectApplyAffineTransform(tile, unitTransform(bounds));
  if (content == chain.end() || !(tile.size.width > 0 && tile.size.height > 0)) return nullptr;

  tq::AffineTransform inTile;
  const char* const contentUnits = "patternContentUnits";
  if (const auto box = viewBoxOf(context, having("viewBox"))) {
    const char* const fit = "preserveAspectRatio";
    inTile = viewTransform(*box, tile.size, attributeOf(having(fit), fit));
    viewport = {box->size.width, box->size.height, viewport.fontSize};
  } else if (attributeOf(having(contentUnits), contentUnits) == "objectBoundingBox") {
    inTile = {bounds.size.width, 0, 0, bounds.size.height, 0, 0};
    viewport = {1, 1, viewport.fontSize};
  }
  auto children = readContent(*content, viewport);
  if (inTile != tq::AffineTransformIdentity) {
    Node::Traits traits;
    traits.transform = inTile;
    children =
        tq::Array::arrayWithObjects({tq::makeRef<Group>(std::move(traits), std::move(children))});
  }
  Node::Traits traits;
  std::string_view name = attributeOf(first, "inkscape:label");
  if (name.empty()) name = attributeOf(first, "id");
  traits.name = tq::String::stringWithUTF8Repaired(name);
  traits.transform = transformOf(context, having("patternTransform"), "patternTransform");
  return tq::makeRef<Pattern>(std::move(traits), std::move(children), tile);
}

}  // namespace tqdoc
