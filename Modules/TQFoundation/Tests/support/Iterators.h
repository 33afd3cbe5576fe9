#pragma once

#include <iterator>
#include <ranges>

#include "support/Test.h"

namespace tq::test {

/// Goes through a range in every way that its iterators know. `isElement(i, *iterator)` returns
/// whether an iterator is at the element with the index i.
template <class Range, class IsElement>
void expectIterators(Range&& range, std::ptrdiff_t count, const IsElement& isElement) {
  const auto first = range.begin();
  auto before = first;
  auto after = first;
  for (std::ptrdiff_t i = 0; i < count; ++i, ++before) {
    EXPECT_TRUE(isElement(i, *before) && isElement(i, *after++)) << i;
    EXPECT_TRUE(before != after) << i;
  }
  EXPECT_TRUE(before == range.end() && after == range.end());
  if constexpr (std::random_access_iterator<std::ranges::iterator_t<Range>>) {
    for (std::ptrdiff_t i = 0; i < count; ++i) {
      EXPECT_TRUE(isElement(count - 1 - i, *--before) && before < after--) << i;
      EXPECT_TRUE(before == after && isElement(i, first[i])) << i;
      for (std::ptrdiff_t j = 0; j <= count; ++j) {
        auto at = i + first;
        EXPECT_TRUE((at += j - i) == first + j) << i << ", " << j;
        EXPECT_TRUE(at - first == j && ((first + i) <=> at) == (i <=> j)) << i << ", " << j;
        EXPECT_TRUE((at -= j - i) == range.end() - (count - i)) << i << ", " << j;
      }
    }
  }
}

}  // namespace tq::test
