#include "Model/PlacedNode.h"

#include <utility>

namespace tqdoc {
namespace {

void collect(const Node& node, const std::string& path, const tq::AffineTransform& parent,
             std::vector<PlacedNode::Clip>& clips, std::vector<PlacedNode>& all) {
  const Node::Traits& traits = node.traits();
  if (traits.hidden) return;
  const auto transform = tq::AffineTransformConcat(traits.transform, parent);
  if (traits.clip) clips.push_back({traits.clip.get(), transform});
  if (const auto* group = tq::objectCast<Group>(&node)) {
    for (std::size_t i = 0; i < group->count(); ++i) {
      collect(group->child(i), path + "/" + std::to_string(i), transform, clips, all);
    }
  } else {
    all.push_back({&node, placeOf(path, node), transform, clips});
  }
  if (traits.clip) clips.pop_back();
}

}  // namespace

std::vector<PlacedNode> placedNodes(const Node& node, const tq::AffineTransform& parent) {
  std::vector<PlacedNode> all;
  std::vector<PlacedNode::Clip> clips;
  collect(node, "root", parent, clips, all);
  return all;
}

tq::Rect outlineBounds(const PlacedNode& placed) {
  if (const auto* shape = tq::objectCast<Shape>(placed.node)) {
    return shape->path().tightBounds(placed.transform);
  }
  const auto* picture = tq::objectCast<Picture>(placed.node);
  return picture != nullptr ? tq::RectApplyAffineTransform(picture->frame(), placed.transform)
                            : tq::RectNull;
}

tq::Rect grown(const tq::Rect& rect, double margin) {
  if (tq::RectIsNull(rect)) return rect;
  return {rect.origin.x - margin, rect.origin.y - margin, rect.size.width + 2 * margin,
          rect.size.height + 2 * margin};
}

}  // namespace tqdoc
