#pragma once

/// @file TQSortableTreeItem.h
/// Objects sorted by names with groups in them, such as "Basic / Round / Small".

#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Dictionary.h>

namespace tq {

/// Something with a name to be sorted by: groups and a last component, separated by "/".
class TQ_EXPORT TQSortable {
 public:
  /// The whole name, such as "Icons/Arrows/Left". Any text; empty components are
  /// left out.
  [[nodiscard]] virtual std::string name() const = 0;

 protected:
  ~TQSortable() = default;
};

class TQSortableTreeItem;
/// Siblings in order; none of them is null.
using TQSortableTreeItems = std::vector<Ref<TQSortableTreeItem>>;

/// A node of a tree of names: a leaf with the object that it stands for, or a group.
/// Names may have any number of components: no operation takes stack for them.
/// Threads: one at a time, for a whole tree.
class TQ_EXPORT TQSortableTreeItem final : public Subclass<TQSortableTreeItem> {
 public:
  static constexpr std::string_view className = "TQSortableTreeItem";

  /// A node without children. A parent gets it for its only child, in place of those that it had,
  /// and loses its object.
  [[nodiscard]] static Ref<TQSortableTreeItem> initWithObject(Ref<Object> object,
                                                              TQSortableTreeItem* parent,
                                                              std::string name);

  /// The first of a chain of nodes, one for each component of the object's name; the last one holds
  /// the object. White space around components is left out, and so are empty ones; a name of
  /// nothing else gives one node of that name. None for an object that is not TQSortable.
  [[nodiscard]] static Ref<TQSortableTreeItem> sortableTreeItemForObject(Object& object);
  /// The chains of all objects that have one.
  [[nodiscard]] static TQSortableTreeItems sortableTreeItemsForSortableObjects(
      const Array& objects);

  /// Makes groups of the same name one, at every level, and sorts each level by
  /// localizedStandardCompare(); an object comes before a group of the same name, and objects of
  /// the same name stay in their order.
  static void sortAndCombineTreeItems(TQSortableTreeItems& items);

  /// Compresses each node. A group that is alone at the top then makes way for its children, whose
  /// names it goes before.
  static void compressNestingWithTreeItems(TQSortableTreeItems& items);

  /// Joins every node here and below that has exactly one child with that child: "group / child".
  void compressNesting();

  ~TQSortableTreeItem() override;

  /// None for a group. Lent.
  [[nodiscard]] Object* object() const noexcept { return object_.get(); }
  /// What is left of the name at this place of the tree: one component, or several that were
  /// joined.
  [[nodiscard]] const std::string& name() const noexcept { return name_; }
  /// Null for a node that never had a child.
  [[nodiscard]] const TQSortableTreeItems* children() const noexcept {
    return hasChildren_ ? &internalChildren_ : nullptr;
  }

  /// The host's own notes; nothing here reads them.
  [[nodiscard]] const Ref<Dictionary>& descriptionDictionary() const noexcept {
    return descriptionDictionary_;
  }
  void setDescriptionDictionary(Ref<Dictionary> notes) {
    descriptionDictionary_ = std::move(notes);
  }

 private:
  TQSortableTreeItem(Ref<Object> object, std::string name);
  void adoptChildrenOf(const TQSortableTreeItem& other);

  Ref<Object> object_;
  std::string name_;
  bool hasChildren_ = false;
  TQSortableTreeItems internalChildren_;
  Ref<Dictionary> descriptionDictionary_;
};

/// Objects as sorted trees of their names.
class TQ_EXPORT TQObjectSorting {
 public:
  /// The objects that are TQSortables, the others left out, as trees by the components of their
  /// names. Siblings are in natural order; of a leaf and a group with one name the leaf is first.
  [[nodiscard]] static TQSortableTreeItems sortObjectsWithNesting(const Array& objects);
  /// The same with every chain of single children joined.
  [[nodiscard]] static TQSortableTreeItems sortObjectsWithCompressedNesting(const Array& objects);
};

}  // namespace tq
