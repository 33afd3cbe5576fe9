#include <TQFoundation/comparison/TQSortableTreeItem.h>

#include <TQFoundation/objects/Null.h>

#include "support/Test.h"

namespace {

struct Named final : Subclass<Named>, TQSortable {
  static constexpr std::string_view className = "Named";
  explicit Named(std::string name) : name_(std::move(name)) {}
  [[nodiscard]] std::string name() const override { return name_; }
  std::string name_;
};

Ref<Array> named(const std::vector<std::string>& names) {
  std::vector<Ref<Object>> objects;
  for (const std::string& name : names) objects.push_back(makeRef<Named>(name));
  return Array::arrayWithObjects(std::move(objects));
}

/// "group{leaf* leaf*}", with a star for each object.
std::string text(const TQSortableTreeItems& items) {
  std::string all;
  for (const auto& item : items) {
    all += (all.empty() ? "" : " ") + item->name() + (item->object() != nullptr ? "*" : "");
    if (item->children() != nullptr) all += "{" + text(*item->children()) + "}";
  }
  return all;
}

TEST(TQSortableTreeItem, SortsAndCompressesNamesWithGroups) {
  const test::Rows<std::vector<std::string>, std::string, std::string> cases{
      {{}, "", ""},
      {{"A / C", "A/B"}, "A{B* C*}", "A / B* A / C*"},
      {{"A/B/C"}, "A{B{C*}}", "A / B / C*"},
      {{"x10", "x9", "X9/b", "X9/a", "x9"}, "x9* x9* X9{a* b*} x10*", "x9* x9* X9{a* b*} x10*"},
      {{"G/a", "G"}, "G* G{a*}", "G* G / a*"},  // an object before a group with its name
      {{"G", "G/a", "G"}, "G* G* G{a*}", "G* G* G / a*"},
      {{"g/\t1 ", " g //2", "g/\xC2\xA0"}, "g* g{1* 2*}", "g* g{1* 2*}"},
      {{" / ", ""}, "* \x20/ *", "* \x20/ *"},  // names without components are unchanged
      {{"a/b/1", "a/c/2", "a/c/3"}, "a{b{1*} c{2* 3*}}", "a / b / 1* a / c{2* 3*}"},
      {{"p/q", "r/s/t", "r/s/u"}, "p{q*} r{s{t* u*}}", "p / q* r / s{t* u*}"},
  };
  for (const auto& [names, nested, compressed] : cases) {
    SCOPED_TRACE(nested);
    EXPECT_EQ(text(TQObjectSorting::sortObjectsWithNesting(*named(names))), nested);
    EXPECT_EQ(text(TQObjectSorting::sortObjectsWithCompressedNesting(*named(names))), compressed);
  }
}

TEST(TQSortableTreeItem, SkipsObjectsWithoutANameAndKeepsTheOrderOfEqualNames) {
  const Ref<Array> same = named({"n", "n", "n"});
  const auto items = TQObjectSorting::sortObjectsWithNesting(*same);
  for (std::size_t i = 0; i < 3; ++i) EXPECT_EQ(items[i]->object(), &same->objectAtIndex(i));
  const Ref<Array> mixed = Array::arrayWithObjects({Null::null(), share(same->objectAtIndex(0))});
  EXPECT_EQ(text(TQSortableTreeItem::sortableTreeItemsForSortableObjects(*mixed)), "n*");
}

TEST(TQSortableTreeItem, MergesADuplicateGroupAndReplacesChildren) {
  const auto group = TQSortableTreeItem::initWithObject(Null::null(), nullptr, "A");
  EXPECT_EQ(group->children(), nullptr);
  static_cast<void>(TQSortableTreeItem::initWithObject(nullptr, group.get(), "replaced"));
  static_cast<void>(TQSortableTreeItem::initWithObject(Null::null(), group.get(), "B"));
  TQSortableTreeItems items = {group, group};
  EXPECT_EQ(text(items), "A{B*} A{B*}");
  TQSortableTreeItem::sortAndCombineTreeItems(items);
  EXPECT_EQ(text(items), "A{B* B*}");
}

TEST(TQSortableTreeItem, DeepNamesDoNotRecurse) {
  std::string deep;
  for (int i = 0; i < 100'000; ++i) deep += "a/";
  const Ref<Array> objects = named({deep + "x", deep + "y"});
  EXPECT_EQ(TQObjectSorting::sortObjectsWithNesting(*objects).size(), 1U);
  const auto compressed = TQObjectSorting::sortObjectsWithCompressedNesting(*objects);
  ASSERT_EQ(compressed.size(), 2U);
  EXPECT_EQ(compressed[1]->name().size(), 100'000U * 4 + 1);
}

}  // namespace
