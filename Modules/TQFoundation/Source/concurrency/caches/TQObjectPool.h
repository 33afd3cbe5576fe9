#pragma once

/// @file TQObjectPool.h
/// A pool of reusable objects.

#include <cstddef>
#include <functional>
#include <span>
#include <string_view>
#include <unordered_set>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/concurrency/locks/ReadWriteLock.h>

namespace tq {

/// Idle objects, and a block that creates new ones. The pool owns its idle objects. It contains
/// each at most once, by identity.
///
/// Threads: any. The creator, the block of allObjectsWithBlock() and the destructors of released
///          objects run with no lock held.
class TQ_EXPORT TQObjectPool final : public Subclass<TQObjectPool> {
 public:
  static constexpr std::string_view className = "TQObjectPool";
  /// Creates an object. Called when no object is idle; must not return null.
  using CreatorBlock = std::function<Ref<Object>()>;

  /// Creates an empty pool without a limit. An empty `creatorBlock` stops the process.
  [[nodiscard]] static Ref<TQObjectPool> initWithObjectCreatorBlock(CreatorBlock creatorBlock);

  ~TQObjectPool() override;

  /// Removes and returns any idle object, or creates one if none is idle.
  [[nodiscard]] Ref<Object> vendObject();

  /// Returns an object to the pool, or releases it if the pool is full. Null is ignored, and so is
  /// an object that is in the pool already.
  void recycleObject(Ref<Object> object);

  /// Removes all idle objects and returns them.
  std::vector<Ref<Object>> removeAllObjects();

  /// Calls the block once with the current idle objects. They are kept alive during the call.
  void allObjectsWithBlock(const std::function<void(std::span<const Ref<Object>>)>& block);

  /// Returns the largest number of idle objects that the pool keeps; 0 means no limit.
  [[nodiscard]] std::size_t maximumPoolCount();
  /// Sets the limit and releases idle objects until at most `count` are left. Thus 0 empties the
  /// pool and then removes the limit.
  void setMaximumPoolCount(std::size_t count);

  /// Returns the block that creates objects.
  [[nodiscard]] const CreatorBlock& creatorBlock() const noexcept { return creatorBlock_; }

 private:
  struct Identity {
    std::size_t operator()(const Ref<Object>& object) const noexcept {
      return std::hash<const Object*>{}(object.get());
    }
  };

  explicit TQObjectPool(CreatorBlock creatorBlock);

  const Ref<ReadWriteLock> lock_ = makeRef<ReadWriteLock>();
  using Pool = std::unordered_set<Ref<Object>, Identity>;
  Pool pool_ TQ_GUARDED_BY(*lock_);
  Pool::node_type spare_ TQ_GUARDED_BY(*lock_);  // of the last vended object, for the next one
  std::size_t maximumPoolCount_ TQ_GUARDED_BY(*lock_) = 0;
  const CreatorBlock creatorBlock_;
};

}  // namespace tq
