#include <gmock/gmock.h>

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/objects/String.h>

#include "comparison/Letters.h"

namespace tq {
namespace {

using test::letters;

// A literal implementation of the edit script search, with a record for every snake.

using PlainComparator = std::function<bool(std::size_t, std::size_t)>;

/// An edit. `partner` is the position of the other half of a move in the list of edits.
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
      if (y >= newCount_ || x >= oldCount_ || !comparator_(x, y)) return x;
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
      if (x >= oldCount_ && y >= newCount_) return i;
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

/// Converts changes to plain edits.
std::optional<std::vector<PlainEdit>> plain(const std::optional<TQArrayChanges>& changes) {
  if (!changes) return std::nullopt;
  std::map<const TQComparisonArrayChange*, std::size_t> places;
  for (const auto& change : *changes) places.emplace(change.get(), places.size());
  std::vector<PlainEdit> edits;
  for (const auto& change : *changes) {
    const auto partner = change->associatedChange();
    edits.push_back({change->isInsertion(), static_cast<std::size_t>(change->index()), {}});
    if (partner) edits.back().partner = places.at(partner.get());
  }
  return edits;
}

std::string randomText(std::mt19937& random) {
  std::string text(random() % 45, ' ');
  const auto letterCount = static_cast<std::mt19937::result_type>(1 + random() % 9);
  for (char& c : text) c = static_cast<char>('a' + random() % letterCount);
  return text;
}

TEST(ArrayComparison, EqualsThePlainAlgorithmOnRandomArrays) {
  using Calls = std::vector<std::pair<std::size_t, std::size_t>>;
  for (unsigned seed = 0; seed < 3000; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string before = randomText(random);
    const std::string after = randomText(random);
    const bool infers = random() % 2 == 0;
    const bool isFickle = random() % 3 == 0;  // an inconsistent comparator
    const auto says = [&](const Calls& calls, std::size_t x, std::size_t y) {
      return isFickle ? std::hash<std::size_t>{}(calls.size() * 2654435761U + seed) % 5 < 2
                      : before.at(x) == after.at(y);
    };

    Calls expectedCalls;
    PlainDifference twin(before.size(), after.size(), [&](std::size_t x, std::size_t y) {
      expectedCalls.emplace_back(x, y);
      return says(expectedCalls, x, y);
    });
    const auto expected = twin.editSequence(infers);

    Calls calls;
    const Ref<Array> olds = letters(before);
    const Ref<Array> news = letters(after);
    const auto changes = editSequenceTo(
        *olds, *news, infers, [&](Object& a, std::size_t x, Object& b, std::size_t y) {
          EXPECT_TRUE(&a == &olds->objectAtIndex(x) && &b == &news->objectAtIndex(y));
          calls.emplace_back(x, y);
          return says(calls, x, y);
        });
    ASSERT_EQ(plain(changes), expected);
    ASSERT_EQ(calls, expectedCalls);
    ASSERT_TRUE(isFickle || changes.has_value() == (before != after));
  }
}

TEST(ArrayComparison, ReturnsEditsInTheOrderOfTheirApplication) {
  const struct {
    std::string before, after, edits;
  } cases[] = {
      {"", "", "none"},
      {"abc", "abc", "none"},
      {"", "xy", "+x0 +y1"},
      {"xy", "", "-y1 -x0"},
      {"abxa", "xb", "-a3 -b1> -a0 +b1>"},
      {"qzz", "zzq", "-q0> +q2>"},
      {"aab", "ba", "-a1> -a0 +a1>"},  // of two removals, the one with the higher index
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.before + " to " + c.after);
    const auto changes = editSequenceTo(*letters(c.before), *letters(c.after), true);
    std::string edits = changes ? "" : "none";
    for (const auto& change : changes.value_or(TQArrayChanges())) {
      edits += std::string(edits.empty() ? "" : " ") + (change->isInsertion() ? "+" : "-") +
               change->object()->description() + std::to_string(change->index()) +
               (change->isMove() ? ">" : "");
    }
    EXPECT_EQ(edits, c.edits);
  }
}

TEST(ArrayComparison, CanBeRepeatedAfterAnExceptionOfTheComparator) {
  const Ref<Array> olds = letters("abcabba");
  const Ref<Array> news = letters("cbabac");
  const auto expected = plain(editSequenceTo(*olds, *news, false));
  bool hasThrown = true;
  for (int allowed = 0; hasThrown; ++allowed) {
    hasThrown = false;
    int calls = 0;
    TQArrayComparison broken(*olds, *news, 0, [&](Object& a, std::size_t, Object& b, std::size_t) {
      if (calls++ == allowed) throw std::runtime_error("comparator");
      return a.isEqual(b);
    });
    try {
      static_cast<void>(broken.changes());
    } catch (const std::runtime_error&) {
      hasThrown = true;
      for (const auto& element : olds->objects()) ASSERT_EQ(element->referenceCount(), 1U);
    }
    ASSERT_EQ(plain(broken.changes()), expected) << "at the next call";
    ASSERT_TRUE(hasThrown || allowed > 10);
  }
}

TEST(ArrayComparisonStress, ArraysWithNothingInCommonFitInMemory) {
  const Ref<Array> olds = letters(std::string(10'000, 'a'));
  const Ref<Array> news = letters(std::string(10'000, 'b'));
  std::size_t calls = 0;
  TQArrayComparison comparison(*olds, *news, 0, [&](Object&, std::size_t, Object&, std::size_t) {
    ++calls;
    return false;
  });
  ASSERT_EQ(comparison.changes().size(), 20'000U);
  EXPECT_EQ(calls, 10'000U * 10'000U - 1);  // all pairs but one
  EXPECT_LT(comparison.furthestPath().byteCount(), 26'000'000U);
  EXPECT_EQ(comparison.changes().front()->index(), 9'999U);
  EXPECT_EQ(comparison.changes().back()->index(), 9'999U);
}

}  // namespace
}  // namespace tq
