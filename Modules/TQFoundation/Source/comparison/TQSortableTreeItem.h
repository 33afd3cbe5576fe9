#pragma once

/// @file TQSortableTreeItem.h
/// Sorts objects into a tree by hierarchical names such as "Basic/Round/Small".

#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Dictionary.h>

namespace tq {

/// An object with a hierarchical name: groups and a last component, separated by "/".
class TQ_EXPORT TQSortable {
 public:
  /// Returns the whole name, such as "Icons/Arrows/Left". Empty components are ignored.
  [[nodiscard]] virtual std::string name() const = 0;

 protected:
  virtual ~TQSortable();
};

class TQSortableTreeItem;
/// Siblings in order. Elements are never null.
using TQSortableTreeItems = std::vector<Ref<TQSortableTreeItem>>;

/// A node of a tree of names: a leaf with its object, or a group. Names may have any number of
/// components; no operation is recursive. Threads: one at a time for a whole tree.
class TQ_EXPORT TQSortableTreeItem final : public Subclass<TQSortableTreeItem> {
 public:
  static constexpr std::string_view className = "TQSortableTreeItem";

  /// Creates a node without children. If `parent` is not null, the node becomes its only child:
  /// earlier children are replaced, and the parent's object is cleared.
  [[nodiscard]] static Ref<TQSortableTreeItem> initWithObject(Ref<Object> object,
                                                              TQSortableTreeItem* parent,
                                                              std::string name);

  /// Creates a chain of nodes, one for each component of the object's name, and returns the first.
  /// The last node holds the object. White space around components and empty components are
  /// removed. If nothing is left, the result is one node with the unchanged name. Returns null if
  /// the object is not a TQSortable.
  [[nodiscard]] static Ref<TQSortableTreeItem> sortableTreeItemForObject(Object& object);
  /// Creates the chains of all objects that are TQSortable.
  [[nodiscard]] static TQSortableTreeItems sortableTreeItemsForSortableObjects(
      const Array& objects);

  /// Merges groups with the same name at every level, and sorts each level by
  /// localizedStandardCompare(). An object comes before a group with the same name. Objects with
  /// the same name keep their order. The trees must be disjoint: no node may be in two of them, or
  /// twice in one.
  static void sortAndCombineTreeItems(TQSortableTreeItems& items);

  /// Compresses each node. If a single group is left at the top, its children replace it, and its
  /// name is prepended to theirs.
  static void compressNestingWithTreeItems(TQSortableTreeItems& items);

  /// Joins each node that has exactly one child, here and below, with that child: "group / child".
  /// A joined child is no longer in the tree, and keeps its own name and children.
  void compressNesting();

  ~TQSortableTreeItem() override;

  /// Returns the object of a leaf, or null for a group. The node owns it.
  [[nodiscard]] Object* object() const noexcept { return object_.get(); }
  /// Returns the part of the name at this node: one component, or several joined ones.
  [[nodiscard]] const std::string& name() const noexcept { return name_; }
  /// Returns the children, or null if the node never had a child.
  [[nodiscard]] const TQSortableTreeItems* children() const noexcept {
    return hasChildren_ ? &internalChildren_ : nullptr;
  }

  /// Data of the host; the library does not read it.
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

/// Sorts objects into trees by their names.
class TQ_EXPORT TQObjectSorting {
 public:
  /// Returns the objects as trees by the components of their names. Objects that are not TQSortable
  /// are skipped. Siblings are in natural order; a leaf comes before a group with the same name.
  [[nodiscard]] static TQSortableTreeItems sortObjectsWithNesting(const Array& objects);
  /// The same, with every chain of single children joined.
  [[nodiscard]] static TQSortableTreeItems sortObjectsWithCompressedNesting(const Array& objects);
};

}  // namespace tq
