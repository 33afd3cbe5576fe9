#include "Model/Crossings.h"

namespace tqdoc {
namespace {

struct Piece {
  tq::TQBezierSegment segment;
  const PlacedNode* owner;
};

[[nodiscard]] bool isEnd(double offset) { return offset == 0 || offset == 1; }

/// Intersects each new segment with all earlier ones.
class Search {
 public:
  void add(const Piece& piece) {
    const tq::Rect bounds = tq::TQBezierSegmentGetBounds(piece.segment);
    tq::visitEntriesIntersecting(*tree_, bounds,
                                 [&](const auto& entry) { cross(piece, entry.element); });
    tree_->insert(piece, bounds);
  }

  [[nodiscard]] Crossings take() { return std::move(found_); }

 private:
  void cross(const Piece& a, const Piece& b) {
    if (++pairs_ > Crossings::kPairLimit) {
      found_.complete = false;
      return;
    }
    const bool all =
        tq::TQBezierSegmentIntersections(a.segment, b.segment, [&](double offsetA, double offsetB) {
          if (a.owner == b.owner && isEnd(offsetA) && isEnd(offsetB)) return;
          found_.points.push_back(tq::TQBezierSegmentPointAtOffset(a.segment, offsetA));
        });
    if (!all) found_.complete = false;
  }

  tq::Ref<tq::RTree<Piece>> tree_ = tq::makeRef<tq::RTree<Piece>>(16);
  std::size_t pairs_ = 0;
  Crossings found_;
};

}  // namespace

Crossings findCrossings(const std::vector<PlacedNode>& nodes) {
  Search search;
  for (const PlacedNode& placed : nodes) {
    const auto* shape = tq::objectCast<Shape>(placed.node);
    if (shape == nullptr) continue;
    const tq::Path outline = shape->path().outline(placed.transform);
    for (auto segments = tq::TQBezierSegmentIteratorMake(outline);
         auto segment = segments.next();) {
      search.add({*segment, &placed});
    }
  }
  return search.take();
}

}  // namespace tqdoc
