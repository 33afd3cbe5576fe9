#pragma once

// Differences written down step by step, with a record for every snake: the slow twin.

#include <cstddef>
#include <functional>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

namespace tq::test {

using PlainComparator = std::function<bool(std::size_t, std::size_t)>;

/// An edit: whether it is an insertion, its index, and the place of its partner among the edits.
struct PlainEdit {
  bool isInsertion;
  std::size_t index;
  std::optional<std::size_t> partner;
  friend bool operator==(const PlainEdit&, const PlainEdit&) = default;
};

class PlainDifference {
 public:
  PlainDifference(std::size_t oldCount, std::size_t newCount, PlainComparator comparator)
      : oldCount_(oldCount), newCount_(newCount), comparator_(std::move(comparator)) {}

  [[nodiscard]] std::optional<std::vector<PlainEdit>> editSequence(bool inferringMoves) {
    const std::size_t start = follow(0, 0);
    if (start == oldCount_ && start == newCount_) return std::nullopt;
    std::vector<std::vector<Snake>> levels{{Snake{start, start, 0}}};
    std::optional<std::size_t> last;
    while (!last) last = fill(levels);
    std::vector<PlainEdit> edits = backTrace(levels, *last);
    if (inferringMoves) inferMoves(edits);
    return edits;
  }

 private:
  struct Snake {
    std::size_t x, y, previous;
  };

  [[nodiscard]] std::size_t follow(long long diagonal, std::size_t x) const {
    for (;; ++x) {
      const std::size_t y = x - static_cast<std::size_t>(diagonal);
      if (!(y < newCount_) || !(x < oldCount_)) return x;
      if (!comparator_(x, y)) return x;
    }
  }

  [[nodiscard]] std::optional<std::size_t> fill(std::vector<std::vector<Snake>>& levels) const {
    const std::size_t d = levels.size();
    const std::vector<Snake> before = levels.back();
    levels.emplace_back();
    for (std::size_t i = 0; i <= d; ++i) {
      const auto diagonal = -static_cast<long long>(d) + 2 * static_cast<long long>(i);
      const bool down = i == 0 || (i < d && before[i - 1].x < before[i].x);
      const std::size_t previous = down ? i : i - 1;
      const std::size_t x = follow(diagonal, before[previous].x + (down ? 0 : 1));
      const std::size_t y = x - static_cast<std::size_t>(diagonal);
      levels.back().push_back({x, y, previous});
      if (!(x < oldCount_) && !(y < newCount_)) return i;
    }
    return std::nullopt;
  }

  [[nodiscard]] static std::vector<PlainEdit> backTrace(
      const std::vector<std::vector<Snake>>& levels, std::size_t last) {
    std::vector<PlainEdit> edits;
    for (std::size_t d = levels.size() - 1; d > 0; --d) {
      const Snake& s = levels[d][last];
      const Snake& p = levels[d - 1][s.previous];
      const bool isRemoval = s.x - p.x > s.y - p.y;
      edits.push_back({!isRemoval, isRemoval ? p.x : p.y, {}});
      last = s.previous;
    }
    std::ranges::stable_sort(edits, [](const PlainEdit& a, const PlainEdit& b) {
      if (a.isInsertion != b.isInsertion) return b.isInsertion;
      return a.isInsertion ? a.index < b.index : a.index > b.index;
    });
    return edits;
  }

  void inferMoves(std::vector<PlainEdit>& edits) const {
    std::vector<std::size_t> pool;
    std::size_t at = 0;
    for (; at < edits.size() && !edits[at].isInsertion; ++at) pool.push_back(at);
    for (; at < edits.size(); ++at) {
      for (std::size_t p = 0; p < pool.size(); ++p) {
        if (!comparator_(edits[pool[p]].index, edits[at].index)) continue;
        edits[at].partner = pool[p];
        edits[pool[p]].partner = at;
        pool.erase(pool.begin() + static_cast<std::ptrdiff_t>(p));
        break;
      }
    }
  }

  std::size_t oldCount_;
  std::size_t newCount_;
  PlainComparator comparator_;
};

}  // namespace tq::test
