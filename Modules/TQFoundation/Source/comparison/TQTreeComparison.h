#pragma once

/// @file TQTreeComparison.h
/// Differences between two versions of a tree of objects.

#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/comparison/TQComparisonArrayChange.h>
#include <TQFoundation/objects/Array.h>

namespace tq {

class TQTreeComparison;

/// Describes the host's objects to a comparison: their properties, children and identity. Called on
/// the thread that calls changes(). Exceptions propagate.
class TQ_EXPORT TQTreeComparisonDelegate {
 public:
  /// Returns the names of the properties whose values differ between two versions of one object, in
  /// the order in which they are to be reported.
  [[nodiscard]] virtual std::vector<std::string> propertiesOfObject(TQTreeComparison& comparison,
                                                                    Object& oldObject,
                                                                    Object& notMatching) = 0;

  /// Calls `comparison` for each relationship to be compared: compareOldArray() for a to-many
  /// relationship, compareOldObject() for a single object that both versions have.
  virtual void compareChildrenOf(TQTreeComparison& comparison, Object& oldObject,
                                 Object& against) = 0;

  /// Returns whether both are versions of one object.
  [[nodiscard]] virtual bool isObject(TQTreeComparison& comparison, Object& oldObject,
                                      Object& theSameObjectAs) = 0;

 protected:
  ~TQTreeComparisonDelegate() = default;
};

/// Compares two versions of a tree with the help of a delegate, and reports every difference with
/// its path.
///
/// Order: first an object's properties. Then, for each relationship, the differences inside
/// matching children, in the order in which the array comparison found the pairs; then the removals
/// and insertions of that relationship. Differences inside objects that moved between arrays come
/// last.
///
/// Moves between arrays: differences inside a moved object are reported below its insertion. A
/// change of one of its properties has the objects of the insertion: the new object, and null as
/// the old one. The old object is the object of the insertion's associated change.
///
/// Repeated pairs: the array comparison may find a pair more than once, or on a path that is not
/// part of the final edit script. Such a pair is compared in depth each time, and its changes are
/// reported each time.
///
/// Depth:    a pair may be at most kMaximumDepth levels below the roots, or below the start of a
///           move between arrays. For deeper trees changes() throws.
/// Cost:     the work of the delegate and of the array comparisons, see TQArrayComparison. Path
///           items are created only for pairs on the path to a change.
/// Threads:  one at a time.
/// Lifetime: the delegate is held weakly, and strongly during the computation. If it has been
///           destroyed, no difference is found.
class TQ_EXPORT TQTreeComparison final : public Subclass<TQTreeComparison> {
 public:
  static constexpr std::string_view className = "TQTreeComparison";

  /// The maximum number of levels. Each takes about 1 KB of stack, plus the delegate's own frames.
  static constexpr int kMaximumDepth = 1000;

  /// The name of the exception for trees that are too deep.
  static constexpr const char* kDepthException = "TQTreeComparisonDepthException";

  /// Creates a comparison of `root1`, the old root, with `root2`. If either is null, the process
  /// stops.
  /// @param inferringMoves  true links the halves of moves, inside an array and between arrays
  [[nodiscard]] static Ref<TQTreeComparison> initWithRoot1(Ref<Object> root1, Ref<Object> root2,
                                                           bool inferringMoves,
                                                           Weak<TQTreeComparisonDelegate> delegate);

  ~TQTreeComparison() override;

  /// Returns the differences; empty for equal trees. They are computed once; each call returns a
  /// copy of the list. If the delegate calls it during the computation, it returns the differences
  /// found so far.
  /// @throws Exception (kDepthException), std::bad_alloc, and exceptions of the delegate. The next
  ///         call then computes again.
  [[nodiscard]] std::vector<Ref<TQComparisonItem>> changes();

  /// Compares a to-many relationship. Must only be called by compareChildrenOf() of the delegate.
  void compareOldArray(const Array& oldArray, const Array& againstNewArray,
                       std::string_view withName);

  /// Compares the two versions of a single related object. Does not call isObject(). Must only be
  /// called by compareChildrenOf() of the delegate.
  void compareOldObject(Object& oldObject, Object& againstNewObject, std::string_view withName);

  /// Return the arguments of initWithRoot1().
  [[nodiscard]] bool inferMoves() const noexcept { return inferMoves_; }
  [[nodiscard]] Object& root1() const noexcept { return *root1_; }
  [[nodiscard]] Object& root2() const noexcept { return *root2_; }
  /// Returns the delegate, or null if it has been destroyed.
  [[nodiscard]] Held<TQTreeComparisonDelegate> delegate() const noexcept {
    return delegate_.lock();
  }

  /// Returns the item below which changes are currently reported. After the computation it is the
  /// root item, or the insertion of the last move between arrays. Null before the computation.
  [[nodiscard]] TQComparisonItem* currentParent();

 private:
  TQTreeComparison(Ref<Object> root1, Ref<Object> root2, bool inferringMoves,
                   Weak<TQTreeComparisonDelegate> delegate);

  void computeChanges();
  void compareNode(Object& oldObject, Object& against);
  void findCrossArrayMoves();

  /// A pair on the path from the root to the current one. Its path item is created when the first
  /// change is reported there; most pairs have none.
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
  TQTreeComparisonDelegate* walking_ = nullptr;  // the delegate, during the computation
  Place* place_ = nullptr;                       // null outside the computation
  int depth_ = 0;
};

}  // namespace tq
