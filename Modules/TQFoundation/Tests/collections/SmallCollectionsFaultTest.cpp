#include <TQFoundation/collections/Multiset.h>
#include <TQFoundation/collections/Queue.h>
#include <TQFoundation/collections/RecentsList.h>

#include "support/FailingAllocations.h"

namespace {

/// A string that is long enough to need an allocation.
std::string word(int number) { return std::string(40, 'x') + std::to_string(number); }

/// True if the queue contains `count` elements and returns them in order.
bool isWhole(PriorityQueue<std::string> queue, std::size_t count) {
  std::vector<std::string> left;
  while (auto next = queue.dequeue()) left.push_back(*std::move(next));
  return left.size() == count && std::ranges::is_sorted(left);
}

TEST(SmallCollectionsFault, ChangesAreCompleteOrHaveNoEffect) {
  test::failEachAllocation([] {
    Multiset<std::string> bag;
    RecentsList<std::string> recents(3);
    PriorityQueue<std::string> queue;
    for (int i = 0; i < 8; ++i) {
      const Multiset<std::string> bagBefore = bag;
      const std::vector<std::string> recentsBefore(recents.begin(), recents.end());
      try {
        bag.insert(word(i % 5), 2);
        recents.insert(word(i % 5));
        queue.enqueue(word(i));
      } catch (const std::bad_alloc&) {
        const auto done = static_cast<std::size_t>(i);
        EXPECT_TRUE(bag == bagBefore || bag.totalCount() == 2 * (done + 1));
        EXPECT_TRUE(std::ranges::equal(recents, recentsBefore) || recents[0] == word(i % 5));
        EXPECT_TRUE(isWhole(queue, done));
        throw;
      }
    }
    return bag.distinctCount() == 5 && recents.count() == 3 && isWhole(queue, 8);
  });
}

}  // namespace
