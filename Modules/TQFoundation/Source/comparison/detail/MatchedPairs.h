#pragma once

/// @file MatchedPairs.h
/// Records the matching pairs of an array comparison.

#include <cstddef>
#include <unordered_map>
#include <utility>
#include <vector>

#include <TQFoundation/comparison/TQArrayComparison.h>

namespace tq::detail {

/// Pairs of old and new items, one for each old item (by identity), in the order of their first
/// matches. Holds both items strongly.
class MatchedPairs {
 public:
  using Pair = std::pair<Ref<Object>, Ref<Object>>;

  /// Returns a comparator that calls `comparator` and, if `keeps` is true, records every matching
  /// pair, including pairs that the final edit script does not use. For each old item, the last
  /// match is kept.
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
