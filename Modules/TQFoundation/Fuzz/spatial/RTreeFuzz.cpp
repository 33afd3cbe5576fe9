#include <algorithm>
#include <vector>

#include <TQFoundation/base/Rect.h>
#include <TQFoundation/objects/Ref.h>
#include <TQFoundation/spatial/RTree.h>

#include "../support/Bytes.h"

// Interprets any bytes as the capacity of a tree and small rects, each inserted and then queried. A
// list of the same rects must return the same, and so must a search through the nodes.

namespace {

using namespace tq;
using fuzz::Bytes;
using fuzz::require;

Rect takeRect(Bytes& bytes) {
  const auto place = bytes.take<std::int8_t>();
  const auto y = bytes.take<std::int8_t>();
  const auto extent = bytes.take<std::uint8_t>();
  if (extent == 255) return RectNull;
  return {{double(place), double(y)}, {double(extent % 16), double(extent / 16)}};
}

using Node = RTree<std::size_t>::Node;

/// Returns how many elements intersect the rect. Visits a child only if its directory rect
/// intersects it.
std::size_t countIn(const Node& node, const Rect& rect) {
  std::size_t count = 0;
  for (const auto& entry : node.leafEntries()) {
    if (RectIntersectsRect(entry.rect, rect)) ++count;
  }
  for (const auto& entry : node.directoryEntries()) {
    if (RectIntersectsRect(entry.rect, rect)) count += countIn(*entry.child, rect);
  }
  return count;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Bytes bytes(data, size);
  const auto tree = makeRef<RTree<std::size_t>>(2 + bytes.take<std::uint8_t>() % 8);
  std::vector<Rect> list;
  while (!bytes.isEmpty()) {
    const Rect rect = takeRect(bytes);
    tree->insert(list.size(), rect);
    list.push_back(rect);
    const Rect area = takeRect(bytes);
    const auto met = std::count_if(list.begin(), list.end(),
                                   [&](const Rect& r) { return RectIntersectsRect(r, area); });
    require(tree->intersects(area) == (met > 0));
    require(countIn(*tree->root(), area) == static_cast<std::size_t>(met));
  }
  require(tree->validate());
  return 0;
}
