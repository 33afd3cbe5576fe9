#pragma once

/// @file TQCacheDeferredCreation.h
/// Placeholders for objects that are created at their first use.

#include <condition_variable>
#include <cstdint>
#include <functional>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {

/// A placeholder in a cache for an object that is not created yet.
///
/// The block runs at most once, on the first thread that resolves the placeholder. Other threads
/// wait and then get its result. If the block returns null or throws, the result stays null; the
/// exception propagates to the thread that ran the block. A block that resolves its own placeholder
/// gets null.
///
/// Threads: any. The block runs, and is destroyed, with no lock held. It may release the last
///          reference to the placeholder.
class TQ_EXPORT TQCacheDeferredCreation final : public Subclass<TQCacheDeferredCreation> {
 public:
  static constexpr std::string_view className = "TQCacheDeferredCreation";
  ~TQCacheDeferredCreation() override;

  /// Creates the object. May return null.
  using CreationBlock = std::function<Ref<Object>()>;

  /// Create an unresolved placeholder. With an empty block, its object is null.
  [[nodiscard]] static Ref<TQCacheDeferredCreation> createWithBlock(CreationBlock block) {
    return initWithBlock(std::move(block));
  }
  [[nodiscard]] static Ref<TQCacheDeferredCreation> initWithBlock(CreationBlock block);

  /// Returns the object. Creates it, or waits for its creation, if necessary.
  [[nodiscard]] Ref<Object> selfOrDeferredObject();
  /// Like selfOrDeferredObject(), but returns null at once while another thread creates the object.
  [[nodiscard]] Ref<Object> unblockingSelfOrDeferredObject();

 private:
  friend class TQCache;

  explicit TQCacheDeferredCreation(CreationBlock block);

  /// Creates a placeholder that only the calling thread resolves, by create(). Others wait for it.
  [[nodiscard]] static Ref<TQCacheDeferredCreation> reserveWithBlock(CreationBlock block);
  /// Runs the block of a placeholder that is reserved for this thread.
  Ref<Object> create();
  [[nodiscard]] Ref<Object> resolve(bool mayWait);

  Lock lock_;
  std::condition_variable_any hasEnded_;
  std::uint32_t creator_ TQ_GUARDED_BY(lock_) = 0;  // the thread that creates the object, or 0
  Ref<Object> calculatedObject_ TQ_GUARDED_BY(lock_);
  CreationBlock creationBlock_ TQ_GUARDED_BY(lock_);
};

/// Returns the object of a placeholder, created if necessary. Returns any other object, and null,
/// unchanged.
[[nodiscard]] TQ_EXPORT Ref<Object> TQCache_selfOrDeferredObject(Ref<Object> object);

/// Like TQCache_selfOrDeferredObject(), but returns null at once while another thread creates the
/// object.
[[nodiscard]] TQ_EXPORT Ref<Object> TQCache_unblockingSelfOrDeferredObject(Ref<Object> object);

}  // namespace tq
