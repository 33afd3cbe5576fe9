#pragma once

/// @file MatchedPairs.h
/// Which old item was found to be the same as which new one.

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include <TQFoundation/comparison/TQArrayComparison.h>

namespace tq::detail {

/// Pairs by the identity of the old item, in the order in which the old items were first matched.
/// Holds both items strongly.
class MatchedPairs {
 public:
  using Pair = std::pair<Ref<Object>, Ref<Object>>;

  /// A comparator that asks `comparator` and keeps every pair that it says yes to, those that the
  /// final script makes no use of among them; the last match of an old item is the one kept.
  [[nodiscard]] auto recording(const TQArrayComparator& comparator, bool keeps) {
    return [this, &comparator, keeps](Object& oldItem, std::size_t oldIndex, Object& newItem,
                                      std::size_t newIndex) {
      const bool isSame = comparator(oldItem, oldIndex, newItem, newIndex);
      if (isSame && keeps) keep(oldItem, newItem);
      return isSame;
    };
  }

  [[nodiscard]] auto begin() const noexcept { return pairs_.begin(); }
  [[nodiscard]] auto end() const noexcept { return pairs_.end(); }

 private:
  void keep(Object& oldItem, Object& newItem) {
    const auto [place, isNew] = places_.try_emplace(&oldItem, pairs_.size());
    if (isNew) {
      pairs_.emplace_back(share(oldItem), share(newItem));
    } else {
      pairs_[place->second].second = share(newItem);
    }
  }

  std::vector<Pair> pairs_;
  std::unordered_map<const Object*, std::size_t> places_;
};

}  // namespace tq::detail
