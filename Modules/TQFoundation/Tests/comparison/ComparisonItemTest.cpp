#include <TQFoundation/comparison/TQComparisonArrayChange.h>
#include <TQFoundation/objects/String.h>

#include "support/Test.h"

namespace {

Ref<TQComparisonPathItem> path(const Ref<TQComparisonItem>& parent, std::string name,
                               std::int64_t index = TQComparisonPathItem::kNoIndex) {
  return TQComparisonPathItem::pathItemWithParent(parent, nullptr, nullptr, std::move(name), index);
}

/// An item with its own path.
struct Place final : Subclass<Place, TQComparisonItem> {
  static constexpr std::string_view className = "Place";
  Place() : Subclass(nullptr, nullptr, nullptr) {}
  std::string internalFullPath() override { return "here"; }
};

TEST(ComparisonItem, PathsRunFromBelowTheRootToTheItem) {
  const auto root = path(nullptr, "root", 7);
  const auto layers = path(root, "layers");
  const auto third = path(layers, "shapes", 2);
  const auto change = TQComparisonArrayChange::insertionChangeForItem(String::of("x"), 4);
  EXPECT_EQ(change->fullPath(), "[4]");
  change->setParent(third);
  const auto moved = path(change, "fill");

  EXPECT_EQ(third->index(), 2);
  EXPECT_EQ(moved->addChangeForPropertyNamed("red")->fullPath(), "layers.shapes[2][4].fill.red");
  EXPECT_EQ(third->index(), -1);  // it is part of the name now
  EXPECT_EQ(third->fullPath(), "layers.shapes[2]");
  EXPECT_EQ(change->property(), "shapes[2]");

  EXPECT_EQ(root->index(), 7);  // no path has needed it yet
  EXPECT_EQ(root->addChangeForPropertyNamed("a")->fullPath(), "root[7].a");
  EXPECT_EQ(
      TQComparisonPropertyChange::initWithNewObject(nullptr, nullptr, nullptr, "a")->fullPath(),
      "a");
  EXPECT_EQ(TQComparisonItem::init()->addChangeForPropertyNamed("a")->fullPath(), ".a");

  EXPECT_EQ(makeRef<Place>()->addChangeForPropertyNamed("name")->fullPath(), "here.name");

  EXPECT_EQ(path(path(path(nullptr, ""), "-a.-b"), "-c.")->fullPath(), "-abc.");
}

TEST(ComparisonItem, LongPathsDoNotRecurse) {
  Ref<TQComparisonItem> item = path(nullptr, "");
  for (int i = 0; i < 100'000; ++i) item = path(item, "c", i % 10);
  EXPECT_EQ(item->fullPath().size(), 100'000U * 5 - 1);
}

TEST(ComparisonItem, KindsHaveTheirObjectsAndCodes) {
  const Ref<Object> a = String::of("a");
  const Ref<Object> b = String::of("b");
  const auto insertion = TQComparisonArrayChange::insertionChangeForItem(a, 3);
  const auto removal = TQComparisonArrayChange::removalChangeForItem(b, 18446744073709551615U);
  const auto both = TQComparisonArrayChange::initWithNewObject(a, b, 0);
  const auto neither = TQComparisonArrayChange::initWithNewObject(nullptr, nullptr, 0);
  EXPECT_EQ(insertion->description(), "Insert a at 3");
  EXPECT_EQ(removal->description(), "Remove b at 18446744073709551615");
  EXPECT_EQ(neither->description(), "Remove (null) at 0");
  EXPECT_EQ(insertion->type(), 3U);
  EXPECT_EQ(removal->type(), 2U);
  EXPECT_TRUE(both->isInsertion() && both->object() == a.get() && neither->isRemoval());
  EXPECT_EQ(insertion->property(), "");

  const auto fresh = TQComparisonItem::init();
  EXPECT_NE(fresh->updatedObject(), fresh->oldObject());
  EXPECT_EQ(fresh->object(), fresh->updatedObject());
  EXPECT_EQ(fresh->type(), 0U);
  const auto gone = TQComparisonItem::initWithNewObject(nullptr, b, fresh);
  EXPECT_EQ(gone->object(), b.get());
  const auto property = gone->addChangeForPropertyNamed("p");
  EXPECT_TRUE(property->type() == 1 && property->oldObject() == b.get() &&
              property->updatedObject() == nullptr && property->parent() == gone.get());
}

TEST(ComparisonItem, LinkingUnlinksTheOwnPartnerButNotTheOthers) {
  const auto change = [](std::uint64_t i) {
    return TQComparisonArrayChange::removalChangeForItem(String::of("x"), i);
  };
  const auto a = change(0), p = change(1), b = change(2), q = change(3);
  a->setAssociatedChange(p.get());
  b->setAssociatedChange(q.get());
  a->setAssociatedChange(b.get());
  EXPECT_TRUE(a->associatedChange() == b && b->associatedChange() == a);
  EXPECT_FALSE(p->isMove());
  EXPECT_EQ(q->associatedChange(), b);  // keeps its link
  a->setAssociatedChange(nullptr);
  EXPECT_FALSE(a->isMove() || b->isMove());
  {
    const auto passing = change(4);
    a->setAssociatedChange(passing.get());
    EXPECT_TRUE(a->isMove());
  }
  EXPECT_FALSE(a->isMove());  // links are weak
}

}  // namespace
