#include <TQFoundation/concurrency/caches/TQObjectPool.h>

#include <utility>

#include <TQFoundation/base/TQAssert.h>

namespace tq {

TQObjectPool::TQObjectPool(CreatorBlock creatorBlock) : creatorBlock_(std::move(creatorBlock)) {}

Ref<TQObjectPool> TQObjectPool::initWithObjectCreatorBlock(CreatorBlock creatorBlock) {
  TQ_ASSERT(creatorBlock != nullptr);
  return Ref<TQObjectPool>::adopt(new TQObjectPool(std::move(creatorBlock)));
}

// Removes the objects one by one before they are released, because their destructors may call back
// in.
TQObjectPool::~TQObjectPool() {
  while (!pool_.empty()) pool_.extract(pool_.begin());
}

Ref<Object> TQObjectPool::vendObject() {
  {
    const WriteLocked guard(*lock_);
    if (!pool_.empty()) {
      spare_ = pool_.extract(pool_.begin());
      return std::move(spare_.value());
    }
  }
  const auto self = share(*this);  // the block may release the pool
  return creatorBlock_();
}

void TQObjectPool::recycleObject(Ref<Object> object) {
  if (object == nullptr) return;
  const WriteLocked guard(*lock_);
  if (maximumPoolCount_ != 0 && pool_.size() >= maximumPoolCount_) return;
  // Space is reserved first: an insertion that fails to allocate could release the object with the
  // lock held.
  if (pool_.size() + 1 >= pool_.bucket_count()) pool_.reserve(2 * pool_.size() + 2);
  // An object that is in the pool already is not the last reference to it.
  if (spare_.empty()) {
    pool_.insert(std::move(object));
  } else {
    spare_.value() = std::move(object);
    spare_ = pool_.insert(std::move(spare_)).node;
    if (!spare_.empty()) spare_.value() = nullptr;
  }
}

std::vector<Ref<Object>> TQObjectPool::removeAllObjects() {
  std::vector<Ref<Object>> removed;
  const WriteLocked guard(*lock_);
  removed.reserve(pool_.size());
  while (!pool_.empty()) removed.push_back(std::move(pool_.extract(pool_.begin()).value()));
  return removed;
}

void TQObjectPool::allObjectsWithBlock(
    const std::function<void(std::span<const Ref<Object>>)>& block) {
  std::vector<Ref<Object>> idle;
  {
    const WriteLocked guard(*lock_);
    idle.assign(pool_.begin(), pool_.end());
  }
  block(idle);
}

std::size_t TQObjectPool::maximumPoolCount() {
  const ReadLocked guard(*lock_);
  return maximumPoolCount_;
}

void TQObjectPool::setMaximumPoolCount(std::size_t count) {
  std::vector<Ref<Object>> dropped;  // outlives the lock
  const WriteLocked guard(*lock_);
  if (pool_.size() > count) dropped.reserve(pool_.size() - count);
  maximumPoolCount_ = count;
  while (pool_.size() > count) {
    dropped.push_back(std::move(pool_.extract(pool_.begin()).value()));
  }
}

}  // namespace tq
