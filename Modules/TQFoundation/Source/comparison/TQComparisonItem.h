#pragma once

/// @file TQComparisonItem.h
/// Results of a tree comparison: old and new objects with dotted paths.

#include <cstdint>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

class TQComparisonPropertyChange;

/// An object in its new and its old state, either of which may be null, and a parent item.
///
/// The items form a tree. Each item between the root and an item adds a step to its path. An item
/// must not be its own ancestor.
///
/// Threads: one at a time for a whole tree of items, because computing a path may change a path
///          item.
class TQ_EXPORT TQComparisonItem : public Subclass<TQComparisonItem> {
 public:
  static constexpr std::string_view className = "TQComparisonItem";

  /// Results of type().
  static constexpr unsigned kPlain = 0;
  static constexpr unsigned kPropertyChange = 1;
  static constexpr unsigned kArrayRemoval = 2;
  static constexpr unsigned kArrayInsertion = 3;

  /// Creates an item. Each argument may be null.
  [[nodiscard]] static Ref<TQComparisonItem> initWithNewObject(Ref<Object> newObject,
                                                               Ref<Object> oldObject,
                                                               Ref<TQComparisonItem> parent);
  /// Creates an item for two new objects without content, and without a parent.
  [[nodiscard]] static Ref<TQComparisonItem> init();

  ~TQComparisonItem() override;

  /// Returns the path. In this class it is empty.
  [[nodiscard]] virtual std::string internalFullPath();

  /// Returns internalFullPath() with every ".-" removed.
  [[nodiscard]] virtual std::string fullPath();

  /// Creates a change of the named property of this item's objects, with this item as its parent.
  /// The item does not store it.
  [[nodiscard]] virtual Ref<TQComparisonPropertyChange> addChangeForPropertyNamed(std::string name);

  /// Returns one of the four codes above.
  [[nodiscard]] virtual unsigned type() const noexcept { return kPlain; }

  /// Returns the new object, or if that is null, the old one. May return null.
  [[nodiscard]] virtual Object* object() const noexcept;
  /// Return the new and the old object. Either may be null.
  [[nodiscard]] virtual Object* updatedObject() const noexcept { return updatedObject_.get(); }
  [[nodiscard]] virtual Object* oldObject() const noexcept { return oldObject_.get(); }
  /// Returns the parent, or null at a root.
  [[nodiscard]] virtual TQComparisonItem* parent() const noexcept { return parent_.get(); }
  /// Sets the parent, which may be null. The paths of this item and of all items below change.
  virtual void setParent(Ref<TQComparisonItem> parent) { parent_ = std::move(parent); }

 protected:
  /// For derived classes.
  TQComparisonItem(Ref<Object> newObject, Ref<Object> oldObject, Ref<TQComparisonItem> parent);

  /// The step that an item adds to a path.
  struct PathStep {
    std::string text;                    ///< the text of this item
    TQComparisonItem* before = nullptr;  ///< the item before it; null: the path starts here
    bool hasDot = false;                 ///< true puts a "." between both
  };

  /// Returns the step of this item. By default, the path starts here with internalFullPath().
  [[nodiscard]] virtual PathStep pathStep() { return {internalFullPath(), nullptr, false}; }

  /// Returns the joined steps from the start of the path down to this item. Not recursive.
  [[nodiscard]] std::string joinedPath();

 private:
  Ref<Object> updatedObject_;
  Ref<Object> oldObject_;
  Ref<TQComparisonItem> parent_;
};

/// A property whose value differs between the two states. The path is the parent's path, a dot and
/// the name; without a parent it is only the name.
class TQ_EXPORT TQComparisonPropertyChange final
    : public Subclass<TQComparisonPropertyChange, TQComparisonItem> {
 public:
  static constexpr std::string_view className = "TQComparisonPropertyChange";

  /// Creates a change of the named property below `parent`, which may be null.
  [[nodiscard]] static Ref<TQComparisonPropertyChange> initWithNewObject(
      Ref<Object> newObject, Ref<Object> oldObject, Ref<TQComparisonItem> parent,
      std::string propertyName);

  /// Returns the name of the property.
  [[nodiscard]] const std::string& propertyName() const noexcept { return propertyName_; }
  /// Returns kPropertyChange.
  [[nodiscard]] unsigned type() const noexcept override { return kPropertyChange; }
  /// Returns the parent's path, a dot and the name.
  [[nodiscard]] std::string internalFullPath() override { return joinedPath(); }

 private:
  TQComparisonPropertyChange(Ref<Object> newObject, Ref<Object> oldObject,
                             Ref<TQComparisonItem> parent, std::string propertyName);
  [[nodiscard]] PathStep pathStep() override;

  std::string propertyName_;
};

/// A named step on the path to other items: a relationship, or one element of it with its index.
///
/// The path is the parent's path, a dot and the name. The name of a root (an item without a parent)
/// does not occur in the paths below it: the path of a child of a root starts with the child's
/// name.
class TQ_EXPORT TQComparisonPathItem final
    : public Subclass<TQComparisonPathItem, TQComparisonItem> {
 public:
  static constexpr std::string_view className = "TQComparisonPathItem";
  /// The index of an item that is not an element.
  static constexpr std::int64_t kNoIndex = -1;

  /// Creates an item. `index` is the index of an element of a to-many relationship.
  [[nodiscard]] static Ref<TQComparisonPathItem> pathItemWithParent(Ref<TQComparisonItem> parent,
                                                                    Ref<Object> newObject,
                                                                    Ref<Object> oldObject,
                                                                    std::string named,
                                                                    std::int64_t index = kNoIndex);

  /// Returns the name. The first computation of a path of this item, or of an item below it,
  /// permanently appends the index to the name, as in "children[2]".
  [[nodiscard]] const std::string& objectName() const noexcept { return objectName_; }
  /// Returns the index. Negative if there is none, or if it has been appended to the name.
  [[nodiscard]] std::int64_t index() const noexcept { return index_; }

  [[nodiscard]] std::string internalFullPath() override { return joinedPath(); }

 private:
  TQComparisonPathItem(Ref<Object> newObject, Ref<Object> oldObject, Ref<TQComparisonItem> parent,
                       std::string objectName, std::int64_t index);
  [[nodiscard]] PathStep pathStep() override;

  std::string objectName_;
  std::int64_t index_;
};

}  // namespace tq
