#include <TQFoundation/spatial/RTree.h>

#include <bit>

#include "support/FailingAllocations.h"

namespace {

// Its move may throw, so leaves store it in heap blocks, which are allocated too.
struct Element {
  explicit Element(int n) : number(std::make_unique<int>(n)) {}
  Element(Element&& other) noexcept(false) : number(std::move(other.number)) {}
  std::unique_ptr<int> number;
};
using Tree = RTree<Element>;

/// Returns a number that changes with any node, rect and element. Allocates nothing.
std::uint64_t fingerprint(const Tree::Node* node) {
  std::uint64_t print = std::bit_cast<std::uint64_t>(node) + node->count();
  const auto mix = [&](std::uint64_t value) { print = (print ^ value) * 0x9E3779B97F4A7C15u; };
  for (const Rect& rect : node->rects()) {
    mix(std::bit_cast<std::uint64_t>(rect.origin.x));
    mix(std::bit_cast<std::uint64_t>(rect.size.height));
  }
  for (const auto& entry : node->leafEntries())
    mix(static_cast<std::uint64_t>(*entry.element.number));
  for (const Tree::Node* child : node->children()) mix(fingerprint(child));
  return print;
}

TEST(RTreeFault, AnInsertionWithoutMemoryLeavesTheTreeAsItWas) {
  for (const std::int64_t capacity : {2, 5, 200}) {
    test::failEachAllocation([capacity] {
      std::mt19937 random(7);
      const auto tree = makeRef<Tree>(capacity);
      for (int i = 0; i < 40; ++i) {
        const std::uint64_t before = fingerprint(tree->root());
        const Rect rect{double(random() % 100), double(random() % 100), 5, 5};
        try {
          tree->insert(Element(i), rect);
        } catch (const std::bad_alloc&) {
          EXPECT_EQ(fingerprint(tree->root()), before) << i;
          tree->insert(Element(i), rect);
          EXPECT_TRUE(tree->validate());
          throw;
        }
      }
      return tree->validate();
    });
  }
}

TEST(RTreeFault, AQueryWithoutMemoryForTheIndexIsAnsweredByTheNodes) {
  test::failEachAllocation([] {
    const auto tree = makeRef<RTree<int>>(4);
    bool isRight = true;
    for (int i = 0; i < 80; ++i) {
      tree->insert(i, Rect{2.0 * i, 0, 1, 1});
      try {
        for (int n = i < 70 ? 0 : 400; n >= 0; --n) {
          isRight = isRight && tree->intersects({2.0 * i + 1, 0, 0, 0}) &&
                    !tree->intersects({2.0 * i + 1.5, 0, 0, 0});
        }
      } catch (const std::bad_alloc&) {
        ADD_FAILURE() << "a query needs no memory";
      }
    }
    EXPECT_TRUE(isRight);
    return isRight;
  });
}

}  // namespace
