#pragma once

/// @file TQComparisonItem.h
/// What a comparison reports: things in their old and their new state, each with a dotted path.

#include <cstdint>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

class TQComparisonPropertyChange;

/// A thing in its new and its old state, either of which may be none, and the item around it.
///
/// Paths are made of what each item between here and the root adds to them, so the items form a
/// tree by their parents. No item may be its own ancestor.
///
/// Threads: one at a time, for a whole tree of items: asking for a path may change a path item.
class TQ_EXPORT TQComparisonItem : public Subclass<TQComparisonItem> {
 public:
  static constexpr std::string_view className = "TQComparisonItem";

  /// Codes answered by type().
  static constexpr unsigned kPlain = 0;
  static constexpr unsigned kPropertyChange = 1;
  static constexpr unsigned kArrayRemoval = 2;
  static constexpr unsigned kArrayInsertion = 3;

  /// An item for these states, either of which may be none, below `parent`, which may be none too.
  [[nodiscard]] static Ref<TQComparisonItem> initWithNewObject(Ref<Object> newObject,
                                                               Ref<Object> oldObject,
                                                               Ref<TQComparisonItem> parent);
  /// An item for two fresh objects without content, without a parent.
  [[nodiscard]] static Ref<TQComparisonItem> init();

  ~TQComparisonItem() override;

  /// The path of an item of this very class is empty.
  [[nodiscard]] virtual std::string internalFullPath();

  /// internalFullPath() without any ".-".
  [[nodiscard]] virtual std::string fullPath();

  /// A new change of the property of this item's objects, with this item for its parent. The item
  /// does not keep it.
  [[nodiscard]] virtual Ref<TQComparisonPropertyChange> addChangeForPropertyNamed(std::string name);

  /// Which of the four codes; saves a cast.
  [[nodiscard]] virtual unsigned type() const noexcept { return kPlain; }

  /// The new object, or else the old one, lent; may be none.
  [[nodiscard]] virtual Object* object() const noexcept;
  /// The new and the old object, lent; either may be none.
  [[nodiscard]] virtual Object* updatedObject() const noexcept { return updatedObject_.get(); }
  [[nodiscard]] virtual Object* oldObject() const noexcept { return oldObject_.get(); }
  /// The item around this one, lent; none at a root.
  [[nodiscard]] virtual TQComparisonItem* parent() const noexcept { return parent_.get(); }
  /// Moves this item, and with it the paths of all below, under another parent, or under none.
  virtual void setParent(Ref<TQComparisonItem> parent) { parent_ = std::move(parent); }

 protected:
  /// For derived classes.
  TQComparisonItem(Ref<Object> newObject, Ref<Object> oldObject, Ref<TQComparisonItem> parent);

  /// What an item adds to a path: its own text, and the item whose path comes before it with or
  /// without a dot between; none when the path starts here.
  struct PathStep {
    std::string text;                    ///< what the item adds
    TQComparisonItem* before = nullptr;  ///< whose path goes before; none: the path starts here
    bool hasDot = false;                 ///< a "." stands between both
  };

  /// By default the path starts here, with whatever internalFullPath() answers.
  [[nodiscard]] virtual PathStep pathStep() { return {internalFullPath(), nullptr, false}; }

  /// The steps from the start of the path down to this item, joined. Takes no stack for long paths.
  [[nodiscard]] std::string joinedPath();

 private:
  Ref<Object> updatedObject_;
  Ref<Object> oldObject_;
  Ref<TQComparisonItem> parent_;
};

/// A property whose value differs between the two states. Its path is the parent's, a dot and the
/// name; without a parent the name alone.
class TQ_EXPORT TQComparisonPropertyChange final
    : public Subclass<TQComparisonPropertyChange, TQComparisonItem> {
 public:
  static constexpr std::string_view className = "TQComparisonPropertyChange";

  /// A change below `parent` of the property with this name.
  [[nodiscard]] static Ref<TQComparisonPropertyChange> initWithNewObject(
      Ref<Object> newObject, Ref<Object> oldObject, Ref<TQComparisonItem> parent,
      std::string propertyName);

  /// As the delegate or the caller named it.
  [[nodiscard]] const std::string& propertyName() const noexcept { return propertyName_; }
  /// kPropertyChange.
  [[nodiscard]] unsigned type() const noexcept override { return kPropertyChange; }
  /// The parent's path, a dot and the name.
  [[nodiscard]] std::string internalFullPath() override { return joinedPath(); }

 private:
  TQComparisonPropertyChange(Ref<Object> newObject, Ref<Object> oldObject,
                             Ref<TQComparisonItem> parent, std::string propertyName);
  [[nodiscard]] PathStep pathStep() override;

  std::string propertyName_;
};

/// A named place on the way to other items: a relationship, or one element of it by its index.
///
/// Its path is the parent's, a dot and the name. The name of a root, an item without a parent,
/// never shows in the paths below it: an item right under a root starts its path with its own name.
class TQ_EXPORT TQComparisonPathItem final
    : public Subclass<TQComparisonPathItem, TQComparisonItem> {
 public:
  static constexpr std::string_view className = "TQComparisonPathItem";
  /// The element has no index.
  static constexpr std::int64_t kNoIndex = -1;

  /// An item named `named` below `parent`, for the place in its two states; `index` when it is one
  /// element of a relationship to many.
  [[nodiscard]] static Ref<TQComparisonPathItem> pathItemWithParent(Ref<TQComparisonItem> parent,
                                                                    Ref<Object> newObject,
                                                                    Ref<Object> oldObject,
                                                                    std::string named,
                                                                    std::int64_t index = kNoIndex);

  /// The first path that is asked for here or below makes the index a part of the name, as in
  /// "children[2]", for good.
  [[nodiscard]] const std::string& objectName() const noexcept { return objectName_; }
  /// Negative for no index, which is also what is left of an index that went into the name.
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
