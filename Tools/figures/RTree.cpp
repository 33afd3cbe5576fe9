#include <cstdint>
#include <string>

#include <TQFoundation/geometry/values/VectorAlgebra.h>
#include <TQFoundation/spatial/RTree.h>

#include "Drawing.h"
#include "Figures.h"

namespace figures {
namespace {

using namespace tq;

constexpr std::int64_t kEntries = 4;  // the capacity of a node
constexpr double kSide = 220;

/// Random rects in a square; the same on every machine.
class Scatter {
 public:
  Rect next() {
    const double width = 8 + 22 * share();
    const double height = 8 + 22 * share();
    return {(kSide - width) * share(), (kSide - height) * share(), width, height};
  }

 private:
  double share() {
    state_ = state_ * 6364136223846793005U + 1442695040888963407U;
    return static_cast<double>(state_ >> 40) / static_cast<double>(1 << 24);
  }

  std::uint64_t state_ = 7;
};

Rect moved(const Rect& rect, Vector by) { return {rect.origin + by, rect.size}; }

/// Returns the number of levels above the leaves.
int height(const RTreeNode<int>& node) { return node.isLeaf() ? 0 : 1 + height(*node.child(0)); }

void drawNode(Drawing& drawing, const RTreeNode<int>& node, Vector by) {
  for (const RTreeNode<int>* child : node.children()) drawNode(drawing, *child, by);
  for (const auto& entry : node.leafEntries()) {
    drawing.rect(moved(entry.rect, by),
                 {.stroke = ink::quiet, .width = 1, .fill = ink::quiet, .fillOpacity = 0.25});
  }
  // Nodes of higher levels are drawn slightly larger, so that coinciding edges remain visible.
  constexpr std::string_view kColours[] = {ink::blue, ink::red, ink::green};
  const int level = height(node);
  const double margin = 2 + 3 * level;
  const Rect bounds = moved(node.boundingRect(), by);
  drawing.rect({bounds.origin.x - margin, bounds.origin.y - margin, bounds.size.width + 2 * margin,
                bounds.size.height + 2 * margin},
               {.stroke = kColours[level], .width = 1.5 + 0.5 * level}, 3);
}

void drawPanel(Drawing& drawing, int count, Vector by) {
  const Ref<RTree<int>> tree = makeRef<RTree<int>>(kEntries);
  Scatter scatter;
  for (int i = 0; i < count; ++i) tree->insert(i, scatter.next());
  drawNode(drawing, *tree->root(), by);
  std::size_t nodes = 0;
  std::size_t leaves = 0;
  for (const RTreeNode<int>* node : *tree) {
    ++nodes;
    leaves += node->isLeaf() ? 1 : 0;
  }
  const Point caption = Point{kSide / 2, 0} + by;
  drawing.text(std::to_string(count) + " rects", caption + Vector{0, -30}, {.isBold = true});
  drawing.text(std::to_string(leaves) + " leaves, " + std::to_string(nodes - leaves) +
                   (nodes - leaves == 1 ? " directory" : " directories"),
               caption + Vector{0, kSide + 30}, {.fill = ink::quiet, .size = 11});
}

}  // namespace

std::string rtree() {
  Drawing drawing({860, 370},
                  "An R-tree with four entries per node, after 5, 12 and 24 insertions");
  drawPanel(drawing, 5, {40, 60});
  drawPanel(drawing, 12, {320, 60});
  drawPanel(drawing, 24, {600, 60});
  const struct {
    std::string_view colour;
    const char* name;
    double x;
  } legend[] = {{ink::quiet, "element", 190},
                {ink::blue, "leaf", 330},
                {ink::red, "directory", 440},
                {ink::green, "directory of directories", 590}};
  for (const auto& entry : legend) {
    const bool isElement = entry.colour == ink::quiet;
    drawing.rect({entry.x, 341, 22, 12},
                 {.stroke = entry.colour,
                  .fill = isElement ? ink::quiet : "none",
                  .fillOpacity = isElement ? 0.25 : 1},
                 isElement ? 0 : 3);
    drawing.text(entry.name, {entry.x + 30, 347}, {.size = 11, .anchor = "start"});
  }
  return drawing.svg();
}

}  // namespace figures
