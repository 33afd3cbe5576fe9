#pragma once

/// @file TQTreeComparison.h
/// What differs between two versions of a tree of objects.

#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQComparisonArrayChange.h>
#include <TQFoundation/objects/Array.h>

namespace tq {

class TQTreeComparison;

/// Knows the host's objects: what they consist of, and which of them are the same ones. Called on
/// the thread that asks for the changes; what it throws passes through.
class TQ_EXPORT TQTreeComparisonDelegate {
 public:
  /// Names of the properties whose values differ between the two versions of one object, in the
  /// order in which they are to be told.
  [[nodiscard]] virtual std::vector<std::string> propertiesOfObject(TQTreeComparison& comparison,
                                                                    Object& oldObject,
                                                                    Object& notMatching) = 0;

  /// Calls the comparison back for each relationship that it wants compared: compareOldArray() for
  /// many children, compareOldObject() for one that both versions have.
  virtual void compareChildrenOf(TQTreeComparison& comparison, Object& oldObject,
                                 Object& against) = 0;

  /// Whether the two are versions of one object.
  [[nodiscard]] virtual bool isObject(TQTreeComparison& comparison, Object& oldObject,
                                      Object& theSameObjectAs) = 0;

 protected:
  ~TQTreeComparisonDelegate() = default;
};

/// Walks two versions of a tree, led by a delegate, and tells every difference with its path.
///
/// The changes come in the order of the walk: an object's properties, then for each relationship
/// what differs inside the children that match, in the order in which the difference search met the
/// pairs, then what was removed and inserted there. What moved between arrays comes last.
///
/// What differs inside an object that moved between arrays is told below its insertion, and a
/// change of one of its own properties carries the insertion's objects: the new one, and no old
/// one, which is the object of the insertion's associated change.
///
/// A pair that the search meets more than once, or on a way that the edit script does not take in
/// the end, is compared in depth each time, and its changes are told each time.
///
/// Depth:   a pair of objects lies at most kMaximumDepth levels below the pair that the walk or a
///          move between arrays starts with; deeper trees are refused, see changes().
/// Cost:    the delegate's own work and that of the array differences, see TQArrayComparison. Path
///          items are made for the pairs on the way to a change alone.
/// Threads: one at a time. The delegate is held weakly; a walk holds it while it lasts, and finds
///          no difference when it is gone.
class TQ_EXPORT TQTreeComparison final : public Subclass<TQTreeComparison> {
 public:
  static constexpr std::string_view className = "TQTreeComparison";

  /// Levels, at about a kilobyte of stack each with a delegate whose functions take little.
  static constexpr int kMaximumDepth = 1000;

  /// Name of the exception for trees that are too deep.
  static constexpr const char* kDepthException = "TQTreeComparisonDepthException";

  /// Compares `root1`, the old root, with `root2`. Neither is none.
  /// @param inferringMoves  links the halves of what was moved, inside an array or between arrays
  [[nodiscard]] static Ref<TQTreeComparison> initWithRoot1(Ref<Object> root1, Ref<Object> root2,
                                                           bool inferringMoves,
                                                           Weak<TQTreeComparisonDelegate> delegate);

  ~TQTreeComparison() override;

  /// The differences; empty for equal trees. Computed once; each call answers a copy of the list. A
  /// delegate that asks during the walk gets what was found so far.
  /// @throws Exception (kDepthException), std::bad_alloc, and what the delegate throws. The trees
  ///         are untouched then, and the next call computes anew.
  [[nodiscard]] std::vector<Ref<TQComparisonItem>> changes();

  /// Compares a relationship to many objects. For the delegate, while it compares children.
  void compareOldArray(const Array& oldArray, const Array& againstNewArray,
                       std::string_view withName);

  /// Compares a relationship to one object, in its two versions: whether they are the same is not
  /// asked. For the delegate, while it compares children.
  void compareOldObject(Object& oldObject, Object& againstNewObject, std::string_view withName);

  /// What it was made with.
  [[nodiscard]] bool inferMoves() const noexcept { return inferMoves_; }
  [[nodiscard]] Object& root1() const noexcept { return *root1_; }
  [[nodiscard]] Object& root2() const noexcept { return *root2_; }
  /// Whom it asks; none once that has gone.
  [[nodiscard]] Held<TQTreeComparisonDelegate> delegate() const noexcept {
    return delegate_.lock();
  }

  /// The item under which changes are told at the moment. After the changes are computed, wherever
  /// the last move between arrays left it. None before.
  [[nodiscard]] TQComparisonItem* currentParent();

 private:
  TQTreeComparison(Ref<Object> root1, Ref<Object> root2, bool inferringMoves,
                   Weak<TQTreeComparisonDelegate> delegate);

  void computeChanges();
  void compareNode(Object& oldObject, Object& against);
  void findCrossArrayMoves();

  /// Where the walk is: a pair on the way down from the root. Its path item is made when something
  /// is told there, which most pairs have nothing of.
  struct Place {
    Place* above;
    Object* oldObject;
    Object* newObject;
    std::string_view name;
    std::int64_t index;
    Ref<TQComparisonItem> item;
  };
  class Descent;
  [[nodiscard]] static const Ref<TQComparisonItem>& itemAt(Place& place);
  void compareBelow(Object& oldObject, Object& newObject, std::string_view name,
                    std::int64_t index);
  void compareFrom(Ref<TQComparisonItem> parent, Object& oldObject, Object& newObject);

  const bool inferMoves_;
  const Ref<Object> root1_;
  const Ref<Object> root2_;
  const Weak<TQTreeComparisonDelegate> delegate_;

  bool isComputed_ = false;
  std::vector<Ref<TQComparisonItem>> mutableChanges_;
  Ref<TQComparisonItem> currentParent_;
  TQTreeComparisonDelegate* walking_ = nullptr;  // the delegate, held while the walk lasts
  Place* place_ = nullptr;                       // none outside of the walk
  int depth_ = 0;
};

}  // namespace tq
