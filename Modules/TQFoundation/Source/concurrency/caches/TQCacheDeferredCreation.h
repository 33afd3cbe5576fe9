#pragma once

/// @file TQCacheDeferredCreation.h
/// An object that will be created by whoever asks for it first.

#include <functional>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {

/// Stands in a cache for an object until that has been created.
///
/// The block runs at most once, on the first thread that resolves the placeholder; others wait and
/// then see its result. A block that throws, or answers none, leaves none for good: the error goes
/// to the thread that ran it. A block that resolves its own placeholder is answered none. Threads:
/// any.
class TQ_EXPORT TQCacheDeferredCreation final : public Subclass<TQCacheDeferredCreation> {
 public:
  static constexpr std::string_view className = "TQCacheDeferredCreation";
  /// Makes the object; may answer none.
  using CreationBlock = std::function<Ref<Object>()>;

  /// A placeholder that has not created yet. An empty block creates none.
  [[nodiscard]] static Ref<TQCacheDeferredCreation> createWithBlock(CreationBlock block) {
    return initWithBlock(std::move(block));
  }
  [[nodiscard]] static Ref<TQCacheDeferredCreation> initWithBlock(CreationBlock block);

  /// What it stands for: created now, waited for, or there already.
  [[nodiscard]] Ref<Object> selfOrDeferredObject();
  /// The same, but none at once while another thread creates.
  [[nodiscard]] Ref<Object> unblockingSelfOrDeferredObject();

 private:
  explicit TQCacheDeferredCreation(CreationBlock block) noexcept;
  [[nodiscard]] Ref<Object> resolve() TQ_REQUIRES(lock_);

  RecursiveLock lock_;
  Ref<Object> calculatedObject_ TQ_GUARDED_BY(lock_);
  CreationBlock creationBlock_ TQ_GUARDED_BY(lock_);
};

/// What a placeholder stands for, created if need be; every other object itself. None for none.
[[nodiscard]] TQ_EXPORT Ref<Object> TQCache_selfOrDeferredObject(Ref<Object> object);

/// The same, but none at once while another thread creates.
[[nodiscard]] TQ_EXPORT Ref<Object> TQCache_unblockingSelfOrDeferredObject(Ref<Object> object);

}  // namespace tq
