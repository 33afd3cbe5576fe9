#pragma once

#include <TQFoundation/base/Rect.h>

#include "support/Test.h"

namespace tq::test {

/// A literal R-tree of numbered elements, as an oracle: each step recomputes everything with the
/// rect functions and stores no bounds. Slow. RTree must build the same nodes, entry for entry.
class PlainRTree {
 public:
  struct Node {
    struct Entry {
      Rect rect;
      int element = 0;
      std::shared_ptr<Node> child;  // null in a leaf
    };
    bool isLeaf = true;
    std::vector<Entry> entries;

    [[nodiscard]] Rect boundingRect() const {
      Rect united = RectNull;
      for (const Entry& entry : entries) united = RectUnion(united, entry.rect);
      return united;
    }
  };

  explicit PlainRTree(std::size_t capacity) : capacity_(capacity) {}

  [[nodiscard]] const Node& root() const { return *root_; }

  void insert(int element, const Rect& rect) {
    const std::shared_ptr<Node> sibling = insertInto(*root_, {rect, element, nullptr});
    if (sibling == nullptr) return;
    root_ =
        makeNode(false, {{root_->boundingRect(), 0, root_}, {sibling->boundingRect(), 0, sibling}});
  }

  [[nodiscard]] bool intersects(const Rect& rect) const { return intersects(*root_, rect); }

 private:
  using Entries = std::vector<Node::Entry>;

  static std::shared_ptr<Node> makeNode(bool isLeaf, Entries entries) {
    return std::make_shared<Node>(Node{isLeaf, std::move(entries)});
  }
  static double area(const Rect& rect) { return rect.size.width * rect.size.height; }

  static bool intersects(const Node& node, const Rect& rect) {
    return std::ranges::any_of(node.entries, [&](const Node::Entry& entry) {
      return RectIntersectsRect(entry.rect, rect) &&
             (node.isLeaf || intersects(*entry.child, rect));
    });
  }

  std::shared_ptr<Node> insertInto(Node& node, const Node::Entry& added) {
    if (node.isLeaf) {
      node.entries.push_back(added);
      return node.entries.size() > capacity_ ? splitLeaf(node) : nullptr;
    }
    Node::Entry& chosen = chooseSubtree(node, added.rect);
    const std::shared_ptr<Node> sibling = insertInto(*chosen.child, added);
    chosen.rect = chosen.child->boundingRect();
    if (sibling != nullptr) node.entries.push_back({sibling->boundingRect(), 0, sibling});
    if (node.entries.size() <= capacity_) return nullptr;
    const auto middle = node.entries.begin() + static_cast<std::ptrdiff_t>((capacity_ + 1) / 2);
    const auto half = makeNode(false, {middle, node.entries.end()});
    node.entries.erase(middle, node.entries.end());
    return half;
  }

  static Node::Entry& chooseSubtree(Node& node, const Rect& rect) {
    const auto increase = [&](const Node::Entry& entry) {
      return area(RectUnion(entry.rect, rect)) - area(entry.rect);
    };
    Node::Entry* best = nullptr;
    for (Node::Entry& entry : node.entries) {
      if (best == nullptr || increase(entry) < increase(*best) ||
          (increase(entry) == increase(*best) && area(entry.rect) < area(best->rect))) {
        best = &entry;
      }
    }
    return *best;
  }

  static std::pair<std::size_t, std::size_t> chooseSeeds(const Entries& all) {
    std::optional<double> greatest;
    std::pair<std::size_t, std::size_t> seeds;
    for (std::size_t i = 0; i < all.size(); ++i) {
      for (std::size_t j = 0; j < all.size(); ++j) {
        const double waste =
            area(RectUnion(all[i].rect, all[j].rect)) - area(all[i].rect) - area(all[j].rect);
        if (i == j || (greatest && !(waste > *greatest))) continue;
        greatest = waste;
        seeds = {i, j};
      }
    }
    return seeds;
  }

  static std::shared_ptr<Node> splitLeaf(Node& leaf) {
    const Entries all = leaf.entries;
    const auto [first, second] = chooseSeeds(all);
    Entries groups[2] = {{all[first]}, {all[second]}};
    const Rect groupRects[2] = {all[first].rect, all[second].rect};
    std::set<std::size_t> pending;
    for (std::size_t i = 0; i < all.size(); ++i) {
      if (i != first && i != second) pending.insert(i);
    }
    while (!pending.empty()) {
      std::optional<double> least;
      std::pair<std::size_t, int> best;
      for (const std::size_t index : pending) {
        for (const int group : {0, 1}) {
          const double increase =
              area(RectUnion(groupRects[group], all[index].rect)) - area(groupRects[group]);
          if (least && !(increase < *least)) continue;
          least = increase;
          best = {index, group};
        }
      }
      groups[best.second].push_back(all[best.first]);
      pending.erase(best.first);
    }
    leaf.entries = groups[0];
    return makeNode(true, groups[1]);
  }

  std::size_t capacity_;
  std::shared_ptr<Node> root_ = std::make_shared<Node>();
};

}  // namespace tq::test
