#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/objects/String.h>

#include "comparison/Letters.h"
#include "comparison/PlainDifference.h"

namespace tq {
namespace {

using test::letters;
using test::PlainEdit;

/// The changes as plain edits.
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

std::string applied(const std::string& before, const TQArrayChanges& changes) {
  std::string text = before;
  for (const auto& change : changes) {
    const auto at = static_cast<std::ptrdiff_t>(change->index());
    const std::string element = change->object()->description();
    if (change->isRemoval()) {
      EXPECT_EQ(std::string(1, text.at(change->index())), element);
      text.erase(text.begin() + at);
    } else {
      text.insert(text.begin() + at, element[0]);
    }
  }
  return text;
}

/// Fewest removals and insertions, by way of the longest common subsequence.
std::size_t fewestEdits(const std::string& a, const std::string& b) {
  std::vector<std::vector<std::size_t>> common(a.size() + 1,
                                               std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 1; i <= a.size(); ++i) {
    for (std::size_t j = 1; j <= b.size(); ++j) {
      common[i][j] = a[i - 1] == b[j - 1] ? common[i - 1][j - 1] + 1
                                          : std::max(common[i - 1][j], common[i][j - 1]);
    }
  }
  return a.size() + b.size() - 2 * common[a.size()][b.size()];
}

std::string randomText(std::mt19937& random) {
  std::string text(random() % 45, ' ');
  const auto letterCount = static_cast<std::mt19937::result_type>(1 + random() % 9);
  for (char& c : text) c = static_cast<char>('a' + random() % letterCount);
  return text;
}

TEST(ArrayComparison, IsTheOneOfTheStepsOnRandomArrays) {
  using Calls = std::vector<std::pair<std::size_t, std::size_t>>;
  for (unsigned seed = 0; seed < 3000; ++seed) {
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    const std::string before = randomText(random);
    const std::string after = randomText(random);
    const bool infers = random() % 2 == 0;
    const bool isFickle = random() % 3 == 0;  // says what it likes, another thing each time
    const auto says = [&](const Calls& calls, std::size_t x, std::size_t y) {
      return isFickle ? std::hash<std::size_t>{}(calls.size() * 2654435761U + seed) % 5 < 2
                      : before.at(x) == after.at(y);
    };

    Calls expectedCalls;
    test::PlainDifference twin(before.size(), after.size(), [&](std::size_t x, std::size_t y) {
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
    if (!isFickle) {
      ASSERT_EQ(changes.has_value(), before != after);
      ASSERT_EQ(changes ? changes->size() : 0, fewestEdits(before, after));
      ASSERT_EQ(applied(before, changes.value_or(TQArrayChanges())), after);
    }
  }
}

TEST(ArrayComparison, TellsEditsInTheOrderInWhichTheyAreApplied) {
  const struct {
    std::string before, after, edits;
  } cases[] = {
      {"", "", "none"},
      {"abc", "abc", "none"},
      {"abc", "ac", "-b1"},
      {"", "xy", "+x0 +y1"},
      {"xy", "", "-y1 -x0"},
      {"abc", "cab", "-c2> +c0>"},
      {"abxa", "xb", "-a3 -b1> -a0 +b1>"},
      {"qzz", "zzq", "-q0> +q2>"},
      {"aba", "cc", "-a2 -b1 -a0 +c0 +c1"},
      {"aab", "ba", "-a1> -a0 +a1>"},  // of two removals the one with the higher index
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
  const auto unlinked = editSequenceTo(*letters("abc"), *letters("cab"), false);
  EXPECT_FALSE(unlinked->front()->isMove() || unlinked->back()->isMove());
}

TEST(ArrayComparison, WhatTheComparatorThrowsLeavesAllAsItWas) {
  const Ref<Array> olds = letters("abcabba");
  const Ref<Array> news = letters("cbabac");
  for (int allowed = 0;; ++allowed) {
    int calls = 0;
    const auto comparator = [&](Object& a, std::size_t, Object& b, std::size_t) {
      if (calls++ == allowed) throw std::runtime_error("comparator");
      return a.isEqual(b);
    };
    try {
      ASSERT_EQ(editSequenceTo(*olds, *news, true, comparator)->size(), 5U);
      ASSERT_GT(allowed, 10);
      break;
    } catch (const std::runtime_error&) {
    }
    for (const auto& array : {olds, news}) {
      for (const auto& element : array->objects()) ASSERT_EQ(element->referenceCount(), 1U);
    }
    // A comparison that was broken off can be asked again.
    calls = -1000;
    int asked = 0;
    TQArrayComparison again(*olds, *news, 0, [&](Object& a, std::size_t, Object& b, std::size_t) {
      if (asked++ == allowed) throw std::runtime_error("comparator");
      return a.isEqual(b);
    });
    try {
      static_cast<void>(again.changes());
    } catch (const std::runtime_error&) {
    }
    ASSERT_EQ(plain(again.changes()), plain(editSequenceTo(*olds, *news, false)));
  }
}

TEST(ArrayComparisonStress, ArraysWithNothingInCommonFitIntoMemory) {
  const Ref<Array> olds = letters(std::string(10'000, 'a'));
  const Ref<Array> news = letters(std::string(10'000, 'b'));
  std::size_t calls = 0;
  TQArrayComparison comparison(*olds, *news, 0, [&](Object&, std::size_t, Object&, std::size_t) {
    ++calls;
    return false;
  });
  ASSERT_EQ(comparison.changes().size(), 20'000U);
  EXPECT_EQ(calls, 10'000U * 10'000U - 1);  // each pair but the first, the prefix's
  EXPECT_LT(comparison.furthestPath().byteCount(), 26'000'000U);
  EXPECT_EQ(comparison.changes().front()->index(), 9'999U);
  EXPECT_EQ(comparison.changes().back()->index(), 9'999U);
}

}  // namespace
}  // namespace tq
