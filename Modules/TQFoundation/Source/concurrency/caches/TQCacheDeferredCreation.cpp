#include <TQFoundation/concurrency/caches/TQCacheDeferredCreation.h>

#include <utility>

namespace tq {
namespace {

TQCacheDeferredCreation* placeholderIn(const Ref<Object>& object) noexcept {
  // The class is final, so comparing class records is enough.
  if (object == nullptr || &object->objectClass() != &classOf<TQCacheDeferredCreation>) {
    return nullptr;
  }
  return static_cast<TQCacheDeferredCreation*>(object.get());
}

}  // namespace

TQCacheDeferredCreation::TQCacheDeferredCreation(CreationBlock block) noexcept
    : creationBlock_(std::move(block)) {}

Ref<TQCacheDeferredCreation> TQCacheDeferredCreation::initWithBlock(CreationBlock block) {
  return Ref<TQCacheDeferredCreation>::adopt(new TQCacheDeferredCreation(std::move(block)));
}

Ref<Object> TQCacheDeferredCreation::resolve() {
  // Cleared before the call, because the block may call resolve() again.
  if (const CreationBlock block = std::exchange(creationBlock_, nullptr)) {
    calculatedObject_ = block();
  }
  return calculatedObject_;
}

Ref<Object> TQCacheDeferredCreation::selfOrDeferredObject() {
  const Locked guard(lock_);
  return resolve();
}

Ref<Object> TQCacheDeferredCreation::unblockingSelfOrDeferredObject() TQ_NO_THREAD_SAFETY_ANALYSIS {
  if (!lock_.tryLock()) return nullptr;
  struct Unlock {
    ~Unlock() TQ_NO_THREAD_SAFETY_ANALYSIS { lock.unlock(); }
    RecursiveLock& lock;
  } const unlock{lock_};
  return resolve();
}

Ref<Object> TQCache_selfOrDeferredObject(Ref<Object> object) {
  TQCacheDeferredCreation* const placeholder = placeholderIn(object);
  return placeholder != nullptr ? placeholder->selfOrDeferredObject() : std::move(object);
}

Ref<Object> TQCache_unblockingSelfOrDeferredObject(Ref<Object> object) {
  TQCacheDeferredCreation* const placeholder = placeholderIn(object);
  return placeholder != nullptr ? placeholder->unblockingSelfOrDeferredObject() : std::move(object);
}

}  // namespace tq
