#include <TQFoundation/concurrency/caches/TQCacheDeferredCreation.h>

#include <utility>

#include <TQFoundation/platform/threads/Thread.h>

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

TQCacheDeferredCreation::~TQCacheDeferredCreation() = default;

TQCacheDeferredCreation::TQCacheDeferredCreation(CreationBlock block)
    : creationBlock_(std::move(block)) {}

Ref<TQCacheDeferredCreation> TQCacheDeferredCreation::initWithBlock(CreationBlock block) {
  return Ref<TQCacheDeferredCreation>::adopt(new TQCacheDeferredCreation(std::move(block)));
}

Ref<TQCacheDeferredCreation> TQCacheDeferredCreation::reserveWithBlock(CreationBlock block) {
  auto reserved = initWithBlock(std::move(block));
  const Locked guard(reserved->lock_);
  reserved->creator_ = currentThreadNumber();
  return reserved;
}

// The placeholder is resolved in every case, so that no thread waits forever. Waiting cannot
// violate a lock order, because the lock is not held while the block runs.
Ref<Object> TQCacheDeferredCreation::create() {
  const auto self = share(*this);
  CreationBlock block;
  {
    const Locked guard(lock_);
    block = std::exchange(creationBlock_, nullptr);  // so that it runs once
  }
  Ref<Object> created;
  struct Ending {
    ~Ending() {
      const Locked guard(placeholder.lock_);
      placeholder.calculatedObject_ = created;
      placeholder.creator_ = 0;
      placeholder.hasEnded_.notify_all();
    }
    TQCacheDeferredCreation& placeholder;
    const Ref<Object>& created;
  };
  {
    const Ending ending{*this, created};
    if (block) created = block();
  }
  return created;
}

Ref<Object> TQCacheDeferredCreation::resolve(bool mayWait) {
  const auto self = share(*this);  // its last reference may be released meanwhile
  {
    const Locked guard(lock_);
    while (creator_ != 0 && creator_ != currentThreadNumber()) {
      if (!mayWait) return nullptr;
      hasEnded_.wait(lock_);
    }
    if (creator_ != 0 || creationBlock_ == nullptr) return calculatedObject_;
    creator_ = currentThreadNumber();
  }
  return create();
}

Ref<Object> TQCacheDeferredCreation::selfOrDeferredObject() { return resolve(true); }

Ref<Object> TQCacheDeferredCreation::unblockingSelfOrDeferredObject() { return resolve(false); }

Ref<Object> TQCache_selfOrDeferredObject(Ref<Object> object) {
  TQCacheDeferredCreation* const placeholder = placeholderIn(object);
  return placeholder != nullptr ? placeholder->selfOrDeferredObject() : std::move(object);
}

Ref<Object> TQCache_unblockingSelfOrDeferredObject(Ref<Object> object) {
  TQCacheDeferredCreation* const placeholder = placeholderIn(object);
  return placeholder != nullptr ? placeholder->unblockingSelfOrDeferredObject() : std::move(object);
}

}  // namespace tq
