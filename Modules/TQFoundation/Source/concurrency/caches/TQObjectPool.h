#pragma once

/// @file TQObjectPool.h
/// Objects kept for being used again.

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

/// Idle objects, each held once (by identity) and strongly, and a block that makes new ones.
///
/// Threads: any. The creator, the block of allObjectsWithBlock() and the destructors of dropped
///          objects run with no lock held.
class TQ_EXPORT TQObjectPool final : public Subclass<TQObjectPool> {
 public:
  static constexpr std::string_view className = "TQObjectPool";
  /// Makes an object when none is idle; must not answer none.
  using CreatorBlock = std::function<Ref<Object>()>;

  /// An empty pool without a limit. An empty `creatorBlock` stops the process.
  [[nodiscard]] static Ref<TQObjectPool> initWithObjectCreatorBlock(CreatorBlock creatorBlock);

  ~TQObjectPool() override;

  /// Any idle object, which leaves the pool; a new one when there is none.
  [[nodiscard]] Ref<Object> vendObject();

  /// Keeps the object for later, or drops it when the pool is full. None is ignored, and so is one
  /// that is idle already.
  void recycleObject(Ref<Object> object);

  /// Empties the pool. @return what was idle
  std::vector<Ref<Object>> removeAllObjects();

  /// Calls the block once with the objects that are idle at this moment, held for the call.
  void allObjectsWithBlock(const std::function<void(std::span<const Ref<Object>>)>& block);

  /// Most idle objects that are kept; 0: no limit.
  [[nodiscard]] std::size_t maximumPoolCount();
  /// Drops idle objects until no more than `count` are left, so that 0 first empties the pool and
  /// then lifts the limit.
  void setMaximumPoolCount(std::size_t count);

  /// As given.
  [[nodiscard]] const CreatorBlock& creatorBlock() const noexcept { return creatorBlock_; }

 private:
  struct Identity {
    std::size_t operator()(const Ref<Object>& object) const noexcept {
      return std::hash<const Object*>{}(object.get());
    }
  };

  explicit TQObjectPool(CreatorBlock creatorBlock);

  const Ref<ReadWriteLock> lock_ = makeRef<ReadWriteLock>();
  std::unordered_set<Ref<Object>, Identity> pool_ TQ_GUARDED_BY(*lock_);
  std::size_t maximumPoolCount_ TQ_GUARDED_BY(*lock_) = 0;
  const CreatorBlock creatorBlock_;
};

}  // namespace tq
