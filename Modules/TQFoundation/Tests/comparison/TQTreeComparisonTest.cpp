#include <TQFoundation/comparison/TQTreeComparison.h>

#include <TQFoundation/comparison/EditSequence.h>
#include <TQFoundation/objects/Exception.h>

#include "support/Test.h"

namespace {

constexpr const char* kRelationships[] = {"kids", "more"};

/// A node with an identity, a value, two arrays of nodes and an optional single node.
struct Thing final : Subclass<Thing> {
  static constexpr std::string_view className = "Thing";
  explicit Thing(int identity, int initialValue = 0) : id(identity), value(initialValue) {}

  [[nodiscard]] Thing& child(std::size_t relationship, std::size_t index) const {
    return static_cast<Thing&>(arrays[relationship]->objectAtIndex(index));
  }

  int id;
  int value;
  Ref<MutableArray> arrays[2] = {MutableArray::array(), MutableArray::array()};
  Ref<Thing> own;
};

Thing& thing(Object& object) { return static_cast<Thing&>(object); }

Ref<Thing> make(int id, int value = 0) { return makeRef<Thing>(id, value); }

Ref<Thing> with(Ref<Thing> node, const std::vector<Ref<Thing>>& kids,
                const std::vector<Ref<Thing>>& more = {}) {
  for (const auto& kid : kids) node->arrays[0]->addObject(kid);
  for (const auto& each : more) node->arrays[1]->addObject(each);
  return node;
}

struct Delegate final : Subclass<Delegate>, TQTreeComparisonDelegate {
  static constexpr std::string_view className = "Delegate";

  std::vector<std::string> propertiesOfObject(TQTreeComparison&, Object& a, Object& b) override {
    ++comparisons;
    log += std::to_string(thing(a).id);
    if (failing.erase(thing(a).id) != 0) throw std::runtime_error("failed");
    if (thing(a).value == thing(b).value) return {};
    return {"value"};
  }
  void compareChildrenOf(TQTreeComparison& comparison, Object& a, Object& b) override {
    for (std::size_t i = 0; i < 2; ++i) {
      name = kRelationships[i];  // overwritten by the levels below
      comparison.compareOldArray(*thing(a).arrays[i], *thing(b).arrays[i], name);
    }
    if (!thing(a).own || !thing(b).own) return;
    try {
      name = "own";
      comparison.compareOldObject(*thing(a).own, *thing(b).own, name);
    } catch (const std::runtime_error&) {
      comparison.compareOldObject(*thing(a).own, *thing(b).own, "again");
    }
  }
  bool isObject(TQTreeComparison&, Object& a, Object& b) override {
    return thing(a).id == thing(b).id || ++refusals > 2;
  }

  std::string name;
  int comparisons = 0;
  std::set<int> failing;      // ids of pairs that throw once
  int refusals = -1'000'000;  // counted up; above 2 all objects are the same
  std::string log;            // ids of the pairs that were compared in depth
};

using Items = std::vector<Ref<TQComparisonItem>>;

Items compare(const Ref<Thing>& a, const Ref<Thing>& b, bool infersMoves,
              const Ref<Delegate>& delegate = makeRef<Delegate>()) {
  return TQTreeComparison::initWithRoot1(a, b, infersMoves, delegate)->changes();
}

/// "-path" for a removal, "+path" for an insertion, followed by ">" for a half of a move.
std::string paths(const Items& changes) {
  std::string all;
  for (const auto& change : changes) {
    const auto* const edit = objectCast<TQComparisonArrayChange>(change.get());
    const char* const sign = edit == nullptr ? "" : edit->isInsertion() ? "+" : "-";
    const char* const mark = edit != nullptr && edit->isMove() ? ">" : "";
    all += (all.empty() ? "" : " ") + (sign + change->fullPath()) + mark;
  }
  return all;
}

TEST(TQTreeComparison, ReportsChangesInTheOrderOfTheTraversal) {
  const auto a = with(make(1), {make(2), with(make(3), {make(4)}), make(5)}, {make(6)});
  a->own = with(make(7), {make(8, 1)});
  const auto b = with(make(1, 9), {with(make(3, 9), {}), make(5), make(10)}, {make(6, 9)});
  b->own = with(make(7), {make(8, 2)});
  const auto delegate = makeRef<Delegate>();
  EXPECT_EQ(paths(compare(a, b, false, delegate)),
            ".value kids[0].value -kids[0].kids[0] -kids[0] +kids[2] more[0].value "
            "own.kids[0].value");
  EXPECT_EQ(delegate->log, "135678");
  EXPECT_TRUE(compare(a, a, true).empty());
}

TEST(TQTreeComparison, DelegatesMayCatchExceptionsFromBelow) {
  const auto a = make(0), b = make(0);
  a->own = make(7, 1);
  b->own = make(7, 2);
  const auto delegate = makeRef<Delegate>();
  delegate->failing = {7};
  EXPECT_EQ(paths(compare(a, b, false, delegate)), "again.value");
}

TEST(TQTreeComparison, ReportsAPairEachTimeTheSearchFindsIt) {
  const auto a = with(make(0, 0), {make(1, 0), make(2, 0), make(3, 0)});
  const auto b = with(make(0, 0), {make(3, 1), make(1, 1), make(2, 1)});
  // The search finds 1 and 2 on the diagonal of the edit script, and 3 on another one. Inferring
  // moves finds 3 once more.
  EXPECT_EQ(paths(compare(a, b, false)), "kids[1].value kids[2].value -kids[2] +kids[0]");
  EXPECT_EQ(paths(compare(a, b, true)),
            "kids[1].value kids[2].value kids[0].value -kids[2]> +kids[0]>");
}

TEST(TQTreeComparison, ReportsMovesBetweenArraysBelowTheInsertion) {
  const auto a = with(make(0), {make(1), make(2), with(make(3), {make(9)})}, {make(4)});
  const auto b = with(make(0), {make(4, 5), make(7)}, {make(1), with(make(3, 5), {make(9, 5)})});
  const Ref<Delegate> delegate = makeRef<Delegate>();
  const auto comparison = TQTreeComparison::initWithRoot1(a, b, true, delegate);
  EXPECT_EQ(comparison->currentParent(), nullptr);
  const Items changes = comparison->changes();
  EXPECT_EQ(paths(changes),
            "-kids[2]> -kids[1] -kids[0]> +kids[0]> +kids[1] -more[0]> +more[0]> +more[1]> "
            "more[1].value more[1].kids[0].value kids[0].value");
  EXPECT_EQ(changes.back()->oldObject(), nullptr);           // it has the insertion's objects
  EXPECT_EQ(comparison->currentParent(), changes[3].get());  // the insertion of the last move
  EXPECT_EQ(objectCast<TQComparisonArrayChange>(changes[0].get())->property(), "kids");
  delegate->log.clear();
  EXPECT_EQ(comparison->changes(), changes);
  EXPECT_TRUE(delegate->log.empty());

  const auto c = with(make(0), {make(1)}, {make(2)}), d = with(make(0), {make(2)}, {make(1)});
  EXPECT_EQ(paths(compare(c, d, false)), "-kids[0] +kids[0] -more[0] +more[0]");
}

TEST(TQTreeComparison, LinksMovesBetweenArraysOnlyAcrossArrays) {
  const Ref<Delegate> delegate = makeRef<Delegate>();
  delegate->refusals = 0;  // one by the search, one by its moves
  const auto a = with(make(0), {make(1)});
  const auto b = with(make(0), {make(2)});
  EXPECT_EQ(paths(compare(a, b, true, delegate)), "-kids[0] +kids[0]");
}

TEST(TQTreeComparison, ThrowsForTreesThatAreTooDeepAtEachCall) {
  const auto chain = [](int levels, int leafValue) {
    Ref<Thing> node = make(levels, leafValue);
    while (levels-- > 0) node = with(make(levels), {node});
    return node;
  };
  constexpr int kDeepest = TQTreeComparison::kMaximumDepth;
  EXPECT_EQ(compare(chain(kDeepest, 1), chain(kDeepest, 2), true).size(), 1U);
  for (const int levels : {kDeepest + 1, 100'000}) {
    const Ref<Delegate> delegate = makeRef<Delegate>();
    const auto comparison =
        TQTreeComparison::initWithRoot1(chain(levels, 1), chain(levels, 2), false, delegate);
    for (int attempt = 0; attempt < 2; ++attempt) {
      EXPECT_THAT([&] { static_cast<void>(comparison->changes()); },
                  testing::Throws<Exception>(
                      testing::Property(&Exception::name, TQTreeComparison::kDepthException)));
    }
    EXPECT_EQ(delegate->comparisons, 2 * (kDeepest + 1));
  }
  const auto without =
      TQTreeComparison::initWithRoot1(chain(1, 1), chain(1, 2), true, makeRef<Delegate>());
  EXPECT_TRUE(without->changes().empty());  // its delegate has been destroyed
}

/// Collects the nodes of a tree.
void collect(Thing& root, std::vector<Thing*>& all) {
  all.push_back(&root);
  for (const auto& array : root.arrays) {
    for (Object& each : *array) collect(thing(each), all);
  }
}

class Trees {
 public:
  explicit Trees(unsigned seed) : random_(seed) {}

  Ref<Thing> grow(int depth) {
    const Ref<Thing> node = make(next_++, static_cast<int>(pick(3)));
    for (std::size_t r = 0; r < 2; ++r) {
      for (auto n = depth > 0 ? pick(5) : 0; n > 0; --n)
        node->arrays[r]->addObject(grow(depth - 1));
    }
    return node;
  }

  void change(const Ref<Thing>& root) {
    for (auto n = pick(8); n > 0; --n) {
      std::vector<Thing*> all;
      collect(*root, all);
      Thing& node = *all[pick(all.size())];
      MutableArray& array = *node.arrays[pick(2)];
      const auto place = [&] { return pick(array.count() + 1); };
      const std::size_t kind = pick(4);
      if (kind == 0) ++node.value;
      if (kind == 1) array.insertObject(grow(1), place());
      if (kind < 2 || array.count() == 0) continue;
      const std::size_t from = place() % array.count();
      Ref<Object> taken = share(array.objectAtIndex(from));
      array.removeObjectAtIndex(from);
      if (pick(2) == 0) array.insertObject(std::move(taken), place());
    }
  }

 private:
  std::size_t pick(std::size_t count) { return random_() % count; }

  std::mt19937 random_;
  int next_ = 0;
};

/// Reported changes, by the pair of objects that contains them.
struct Reported {
  using Pair = std::pair<const Object*, const Object*>;
  std::set<Pair> values;
  std::map<std::pair<Pair, std::string>, TQArrayChanges> arrays;
};

/// Checks both trees recursively along the pairs that the changes leave matched. Every difference
/// must be reported, with the path to it by new indexes.
void expectComplete(Thing& a, Thing& b, const std::string& path, Reported& reported) {
  const Reported::Pair pair{&a, &b};
  EXPECT_EQ(reported.values.count(pair), a.value != b.value ? 1U : 0U) << path;
  for (std::size_t r = 0; r < 2; ++r) {
    const std::string below = (path.empty() ? "" : path + ".") + kRelationships[r];
    const TQArrayChanges& edits = reported.arrays[{pair, kRelationships[r]}];
    for (const auto& change : edits) {
      const auto index = static_cast<std::size_t>(change->index());
      EXPECT_EQ(change->fullPath(), below + "[" + std::to_string(index) + "]");
      EXPECT_EQ(change->object(), &(change->isRemoval() ? a : b).child(r, index));
    }
    const Ref<MutableArray> edited = MutableArray::arrayWithArray(*a.arrays[r]);
    applyEditSequence(*edited, edits);
    ASSERT_EQ(edited->count(), b.arrays[r]->count());
    for (std::size_t i = 0; i < edited->count(); ++i) {
      Thing& old = thing(edited->objectAtIndex(i));
      Thing& now = b.child(r, i);
      if (&old == &now) continue;  // inserted
      ASSERT_EQ(old.id, now.id);
      expectComplete(old, now, below + "[" + std::to_string(i) + "]", reported);
    }
  }
}

TEST(TQTreeComparison, ReportsExactlyTheDifferencesOfRandomTrees) {
  for (unsigned seed = 0; seed < 400; ++seed) {
    SCOPED_TRACE(seed);
    Trees trees(seed);
    const Ref<Thing> a = Trees(seed).grow(4);
    const Ref<Thing> b = trees.grow(4);  // a copy: the same seed
    ASSERT_TRUE(compare(a, b, true).empty());
    trees.change(b);
    Reported reported;
    for (const auto& change : compare(a, b, false)) {
      if (auto* edit = objectCast<TQComparisonArrayChange>(change.get())) {
        const TQComparisonItem& array = *edit->parent();
        auto& edits =
            reported.arrays[{{array.oldObject(), array.updatedObject()}, edit->property()}];
        // The search may find a pair of arrays again.
        if (!edits.empty() && edits.front()->parent() != edit->parent()) edits.clear();
        edits.push_back(share(*edit));
      } else {
        EXPECT_NE(thing(*change->oldObject()).value, thing(*change->updatedObject()).value);
        reported.values.emplace(change->oldObject(), change->updatedObject());
      }
    }
    expectComplete(*a, *b, "", reported);
  }
}

}  // namespace
