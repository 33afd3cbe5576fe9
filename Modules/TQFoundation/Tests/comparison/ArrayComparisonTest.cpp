#include <TQFoundation/comparison/EditSequence.h>

#include "comparison/Letters.h"

namespace {

using PlainComparator = std::function<bool(std::size_t, std::size_t)>;

/// An edit. `partner` is the position of the other half of a move in the list of edits.
struct PlainEdit {
  bool isInsertion;
  std::size_t index;
  std::optional<std::size_t> partner;
  friend bool operator==(const PlainEdit&, const PlainEdit&) = default;
};
using PlainEdits = std::vector<PlainEdit>;

/// A literal search for the edit script, in which every path stores its own edits: the index of an
/// insertion, or ~index of a removal.
std::vector<long> plainSearch(std::size_t oldCount, std::size_t newCount,
                              const PlainComparator& matches) {
  struct Path {
    std::size_t x, y;
    std::vector<long> edits;
  };
  const auto follow = [&](Path path) {
    while (path.y < newCount && path.x < oldCount && matches(path.x, path.y)) ++path.x, ++path.y;
    return path;
  };
  std::vector<Path> paths{follow({0, 0, {}})};
  if (paths[0].x == oldCount && paths[0].y == newCount) return {};
  for (;;) {
    const std::vector<Path> before = std::exchange(paths, {});
    for (std::size_t i = 0; i <= before.size(); ++i) {
      const bool down = i == 0 || (i < before.size() && before[i - 1].x < before[i].x);
      Path path = before[down ? i : i - 1];
      path.edits.push_back(down ? static_cast<long>(path.y++) : ~static_cast<long>(path.x++));
      paths.push_back(follow(std::move(path)));
      if (paths.back().x >= oldCount && paths.back().y >= newCount) return paths.back().edits;
    }
  }
}

std::optional<PlainEdits> plainEdits(std::size_t oldCount, std::size_t newCount,
                                     bool inferringMoves, const PlainComparator& matches) {
  std::vector<long> found = plainSearch(oldCount, newCount, matches);
  if (found.empty()) return std::nullopt;
  std::ranges::sort(found);  // removals from the highest index, then insertions from the lowest
  PlainEdits edits;
  for (const long i : found)
    edits.push_back({i >= 0, static_cast<std::size_t>(i < 0 ? ~i : i), {}});
  if (!inferringMoves) return edits;
  for (std::size_t added = 0; added < edits.size(); ++added) {
    for (std::size_t removed = 0; edits[added].isInsertion && removed < added; ++removed) {
      const bool isFree = !edits[removed].isInsertion && !edits[removed].partner;
      if (!isFree || !matches(edits[removed].index, edits[added].index)) continue;
      edits[removed].partner = added;
      edits[added].partner = removed;
      break;
    }
  }
  return edits;
}

/// Converts changes to plain edits.
std::optional<PlainEdits> plain(const std::optional<TQArrayChanges>& changes) {
  if (!changes) return std::nullopt;
  std::map<const TQComparisonArrayChange*, std::size_t> places;
  for (const auto& change : *changes) places.emplace(change.get(), places.size());
  PlainEdits edits;
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
    const std::string before = randomText(random), after = randomText(random);
    const bool infers = random() % 2 == 0;
    const bool isFickle = random() % 3 == 0;  // an inconsistent comparator
    const auto says = [&](const Calls& calls, std::size_t x, std::size_t y) {
      return isFickle ? std::hash<std::size_t>{}(calls.size() * 2654435761U + seed) % 5 < 2
                      : before.at(x) == after.at(y);
    };

    Calls expectedCalls;
    const auto expected =
        plainEdits(before.size(), after.size(), infers, [&](std::size_t x, std::size_t y) {
          expectedCalls.emplace_back(x, y);
          return says(expectedCalls, x, y);
        });

    Calls calls;
    const Ref<Array> olds = letters(before), news = letters(after);
    const auto changes = editSequenceTo(
        *olds, *news, infers, [&](Object& a, std::size_t x, Object& b, std::size_t y) {
          EXPECT_TRUE(&a == &olds->objectAtIndex(x) && &b == &news->objectAtIndex(y));
          calls.emplace_back(x, y);
          return says(calls, x, y);
        });
    ASSERT_EQ(plain(changes), expected);
    ASSERT_EQ(calls, expectedCalls);
    const TQArrayChanges edits = changes.value_or(TQArrayChanges());
    for (const auto& change : edits) {
      const Array& array = change->isInsertion() ? *news : *olds;
      ASSERT_EQ(change->object(), &array.objectAtIndex(static_cast<std::size_t>(change->index())));
      ASSERT_EQ(change->isMove(), change->associatedChange() != nullptr);
    }
    ASSERT_TRUE(isFickle || changes.has_value() == (before != after));

    const Ref<MutableArray> array = MutableArray::arrayWithArray(*olds);
    applyEditSequence(*array, edits);
    ASSERT_EQ(array->count(), after.size());
    ASSERT_TRUE(isFickle || array->isEqual(*news));
    for (const auto& change : edits) {
      ASSERT_TRUE(change->isRemoval() ||
                  change->object() == &array->objectAtIndex(change->index()));
    }
    revertEditSequence(*array, edits);
    ASSERT_TRUE(std::ranges::equal(array->objects(), olds->objects()));
  }
}

struct Shortening final : Subclass<Shortening> {
  static constexpr std::string_view className = "Shortening";
  bool isEqual(const Object&) const override { return array->removeObjectAtIndex(2), true; }
  MutableArray* array;
};

TEST(EditSequence, ThatDoesNotFitLeavesTheArrayUnchanged) {
  const auto insertion = [](const char* text, std::uint64_t at) {
    return TQComparisonArrayChange::insertionChangeForItem(String::of(text), at);
  };
  const auto removal = [](const char* text, std::uint64_t at) {
    return TQComparisonArrayChange::removalChangeForItem(String::of(text), at);
  };
  const auto nothing = TQComparisonArrayChange::initWithNewObject(nullptr, nullptr, 0);
  constexpr auto kFar = std::numeric_limits<std::uint64_t>::max();
  const auto apply = applyEditSequence;
  const auto revert = revertEditSequence;
  const Rows<decltype(apply), TQArrayChanges, const char*> cases{
      {apply, {removal("b", 0)}, "element at index 0 is another"},
      {revert, {insertion("b", 0)}, "element at index 0 is another"},
      {apply, {removal("c", 2), removal("d", 3)}, "index 2 is out of range or out of order"},
      {apply, {removal("c", 2), removal("c", 2)}, "index 2 is out of"},
      {apply, {removal("e", 4)}, "index 4 is out of range"},
      {revert, {removal("e", 5)}, "index 5 is out of range"},
      {apply, {removal("d", 3), insertion("x", 4)}, "index 4 is out of range"},
      {apply, {insertion("x", 1), insertion("y", 0)}, "index 0 is out of range or out of order"},
      {apply, {insertion("x", kFar)}, "index 18446744073709551615 is out of range"},
      {apply, {insertion("x", 0), removal("a", 0)}, "removal follows an insertion"},
      {revert, {nullptr}, "null"},
      {apply, {nothing}, "null"},
  };
  const Ref<MutableArray> array = MutableArray::arrayWithArray(*letters("abcd"));
  const std::vector<Ref<Object>> before(array->objects().begin(), array->objects().end());
  for (const auto& [edit, changes, reason] : cases) {
    const auto act = std::bind_front(edit, std::ref(*array), changes);
    EXPECT_THAT(act, testing::Throws<Exception>(testing::AllOf(
                         testing::Property(&Exception::name, InvalidArgumentException),
                         testing::Property(&Exception::what, HasSubstr(reason)))));
    ASSERT_TRUE(std::ranges::equal(array->objects(), before));
  }
  const auto shortening = makeRef<Shortening>();
  const auto shortened =
      MutableArray::arrayWithArray(*Array::arrayWithObjects({before[0], shortening, before[2]}));
  shortening->array = shortened.get();
  EXPECT_THROW(applyEditSequence(*shortened, TQArrayChanges{removal("b", 1)}), Exception);
  EXPECT_THAT(shortened->objects(), ElementsAre(before[0], shortening));
  const TQArrayChanges fitting{removal("d", 3), removal("a", 0), insertion("x", 2)};
  applyEditSequence(*array, fitting);  // by equality
  EXPECT_EQ(textOf(*array), "bcx");
}

TEST(ArrayComparison, StartsInsideTheArrays) {
  const Ref<Array> olds = letters("ab"), news = letters("abc");
  using Comparison = TQArrayComparison<>;
  EXPECT_EQ(Comparison(*olds, *news, 2, areEqual).changes().size(), 1U);
  EXPECT_DEATH(Comparison(*olds, *news, 3, areEqual), "startPoint <= shorter");
  EXPECT_DEATH(Comparison(*olds, *olds, 2, areEqual), "startPoint < longer");
}

TEST(ArrayComparison, CanBeRepeatedAfterAnExceptionOfTheComparator) {
  const Ref<Array> olds = letters("abcabba"), news = letters("cbabac");
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
  TQArrayComparison comparison(*olds, *news, 0, [&](auto&&...) { return ++calls, false; });
  ASSERT_EQ(comparison.changes().size(), 20'000U);
  EXPECT_EQ(calls, 10'000U * 10'000U - 1);  // all pairs but one
  EXPECT_LT(comparison.furthestPath().byteCount(), 26'000'000U);
  EXPECT_EQ(comparison.changes().front()->index(), 9'999U);
  EXPECT_EQ(comparison.changes().back()->index(), 9'999U);
}

}  // namespace
