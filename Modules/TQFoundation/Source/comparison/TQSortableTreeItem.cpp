#include <TQFoundation/comparison/TQSortableTreeItem.h>

#include <algorithm>
#include <unordered_map>
#include <utility>

#include <TQFoundation/platform/text/CharacterCategory.h>
#include <TQFoundation/platform/text/Collation.h>

namespace tq {
namespace {

/// Returns the components of a name that are not empty.
std::vector<std::string_view> componentsOf(std::string_view name) {
  std::vector<std::string_view> components;
  for (std::size_t begin = 0; begin <= name.size();) {
    const std::size_t end = std::min(name.find('/', begin), name.size());
    const std::string_view component = withoutBlankEnds(name.substr(begin, end - begin));
    if (!component.empty()) components.push_back(component);
    begin = end + 1;
  }
  return components;
}

bool comesBefore(const Ref<TQSortableTreeItem>& a, const Ref<TQSortableTreeItem>& b) {
  const int order = localizedStandardCompare(a->name(), b->name());
  if (order != 0) return order < 0;
  return a->object() != nullptr && b->object() == nullptr;
}

}  // namespace

TQSortable::~TQSortable() = default;

TQSortableTreeItem::TQSortableTreeItem(Ref<Object> object, std::string name)
    : object_(std::move(object)), name_(std::move(name)) {}

TQSortableTreeItem::~TQSortableTreeItem() = default;

Ref<TQSortableTreeItem> TQSortableTreeItem::initWithObject(Ref<Object> object,
                                                           TQSortableTreeItem* parent,
                                                           std::string name) {
  auto item =
      Ref<TQSortableTreeItem>::adopt(new TQSortableTreeItem(std::move(object), std::move(name)));
  if (parent != nullptr) {
    // What the parent loses is released last: a destructor may release the parent.
    TQSortableTreeItems children{item};
    const Ref<Object> lost = std::exchange(parent->object_, nullptr);
    parent->internalChildren_.swap(children);
    parent->hasChildren_ = true;
  }
  return item;
}

Ref<TQSortableTreeItem> TQSortableTreeItem::sortableTreeItemForObject(Object& object) {
  const auto* const sortable = dynamic_cast<const TQSortable*>(&object);
  if (sortable == nullptr) return nullptr;
  const auto held = share(object);  // name() may release it
  std::string name = sortable->name();
  Ref<TQSortableTreeItem> first;
  TQSortableTreeItem* last = nullptr;
  for (const std::string_view component : componentsOf(name)) {
    Ref<TQSortableTreeItem> item = initWithObject(share(object), last, std::string(component));
    last = item.get();
    if (!first) first = std::move(item);
  }
  return first ? first : initWithObject(share(object), nullptr, std::move(name));
}

TQSortableTreeItems TQSortableTreeItem::sortableTreeItemsForSortableObjects(const Array& objects) {
  const auto held = share(objects);  // name() may release it
  TQSortableTreeItems items;
  for (Object& object : objects) {
    if (Ref<TQSortableTreeItem> item = sortableTreeItemForObject(object)) {
      items.push_back(std::move(item));
    }
  }
  return items;
}

// Copies the children first, because `other` may be this item itself.
void TQSortableTreeItem::adoptChildrenOf(const TQSortableTreeItem& other) {
  const TQSortableTreeItems adopted = other.internalChildren_;
  internalChildren_.insert(internalChildren_.end(), adopted.begin(), adopted.end());
  hasChildren_ = hasChildren_ || other.hasChildren_;
}

void TQSortableTreeItem::sortAndCombineTreeItems(TQSortableTreeItems& items) {
  std::vector<TQSortableTreeItems*> levels{&items};
  while (!levels.empty()) {
    TQSortableTreeItems& level = *levels.back();
    levels.pop_back();

    std::unordered_map<std::string_view, TQSortableTreeItem*> groups;
    TQSortableTreeItems kept;
    for (const Ref<TQSortableTreeItem>& item : level) {
      if (!item->object_) {
        const auto [place, isNew] = groups.try_emplace(item->name_, item.get());
        if (!isNew) {
          place->second->adoptChildrenOf(*item);
          continue;
        }
      }
      kept.push_back(item);
    }
    level = std::move(kept);
    for (const auto& [name, group] : groups) levels.push_back(&group->internalChildren_);
    std::ranges::stable_sort(level, comesBefore);
  }
}

void TQSortableTreeItem::compressNesting() {
  const auto self = share(*this);  // a destructor may release it
  // From the top down, joining each chain as a whole. The tree becomes the same as by joining pairs
  // from the bottom up. That would also join the names of the nodes that leave the tree, whose
  // total length grows with the square of the chain's.
  std::vector<TQSortableTreeItem*> nodes{this};
  while (!nodes.empty()) {
    TQSortableTreeItem& node = *nodes.back();
    nodes.pop_back();
    while (node.internalChildren_.size() == 1) {
      const Ref<TQSortableTreeItem> child = node.internalChildren_.front();
      node.name_ += " / ";
      node.name_ += child->name_;
      node.object_ = child->object_;
      node.hasChildren_ = child->hasChildren_;
      node.internalChildren_ = child->internalChildren_;
    }
    for (const Ref<TQSortableTreeItem>& child : node.internalChildren_) {
      nodes.push_back(child.get());
    }
  }
}

void TQSortableTreeItem::compressNestingWithTreeItems(TQSortableTreeItems& items) {
  for (const Ref<TQSortableTreeItem>& item : items) item->compressNesting();
  if (items.size() != 1 || items.front()->object_) return;
  const Ref<TQSortableTreeItem> group = items.front();
  for (const Ref<TQSortableTreeItem>& child : group->internalChildren_) {
    child->name_ = group->name_ + " / " + child->name_;
  }
  items = group->internalChildren_;
}

TQSortableTreeItems TQObjectSorting::sortObjectsWithNesting(const Array& objects) {
  TQSortableTreeItems items = TQSortableTreeItem::sortableTreeItemsForSortableObjects(objects);
  TQSortableTreeItem::sortAndCombineTreeItems(items);
  return items;
}

TQSortableTreeItems TQObjectSorting::sortObjectsWithCompressedNesting(const Array& objects) {
  TQSortableTreeItems items = sortObjectsWithNesting(objects);
  TQSortableTreeItem::compressNestingWithTreeItems(items);
  return items;
}

}  // namespace tq
