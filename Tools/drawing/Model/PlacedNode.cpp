#include "Model/PlacedNode.h"

#include <utility>

namespace tqdoc {
namespace {

[[nodiscard]] std::string textOf(const NodePath& path) {
  std::string text = "root";
  for (const std::size_t index : path) text += "/" + std::to_string(index);
  return text;
}

/// Collects the visible nodes, with the path and the clips of the node that is visited.
class Collector {
 public:
  void collect(const Node& node, const tq::AffineTransform& parent) {
    const Node::Traits& traits = node.traits();
    if (traits.hidden) return;
    const auto transform = tq::AffineTransformConcat(traits.transform, parent);
    const std::size_t before = clips_.size();
    for (const auto* cover : {&traits.clip, &traits.mask}) {
      if (*cover) clips_.push_back({cover->get(), transform});
    }
    if (const auto* group = tq::objectCast<Group>(&node)) {
      for (std::size_t i = 0; i < group->count(); ++i) {
        path_.push_back(i);
        collect(group->child(i), transform);
        path_.pop_back();
      }
    } else {
      nodes_.push_back({&node, path_, placeOf(textOf(path_), node), transform, clips_});
    }
    clips_.resize(before);
  }

  [[nodiscard]] std::vector<PlacedNode> take() { return std::move(nodes_); }

 private:
  NodePath path_;
  std::vector<PlacedNode::Clip> clips_;
  std::vector<PlacedNode> nodes_;
};

}  // namespace

std::vector<PlacedNode> placedNodes(const Node& node, const tq::AffineTransform& parent) {
  Collector collector;
  collector.collect(node, parent);
  return collector.take();
}

tq::Rect outlineBounds(const PlacedNode& placed) {
  return placed.node->contentBounds(placed.transform);
}

tq::Rect grown(const tq::Rect& rect, double margin) {
  if (tq::RectIsNull(rect)) return rect;
  return {rect.origin.x - margin, rect.origin.y - margin, rect.size.width + 2 * margin,
          rect.size.height + 2 * margin};
}

}  // namespace tqdoc
