#pragma once

/// @file TQCache.h
/// A thread-safe object cache by owner and key. Each object is created once.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/concurrency/caches/detail/FairSharedLock.h>
#include <TQFoundation/objects/MapTable.h>

namespace tq {

class TQCacheDeferredCreation;

/// Cached objects by owner, then by key.
///
/// Owners: compared by identity. They are held weakly by default: when an owner is destroyed, its
///         entries become invalid, and a new owner at the same address does not inherit them. The
///         caller must hold the owner; an owner's destructor must not use the cache for it.
/// Keys:   copied, and compared by equality. Their isEqual() and hash() run with the cache's lock
///         held and must not call the cache.
/// Threads: any. Creation blocks, and destructors of removed objects, run without the cache's lock.
///          They may call the cache, and release the last reference to it and to the owner. Lock
///          order: the owner's monitor, then the cache's lock. A writer waits only for the readers
///          before it.
/// Waits:   a block may wait for the creation of other keys. Two threads whose blocks wait for each
///          other's keys wait for ever. So do a block of blockingCachedObjectForOwner() that waits
///          for a creation of another thread for the same owner, and that creation if it adds an
///          entry of this owner.
/// Memory:  the entries of a destroyed owner are released by later changes. Each change examines a
///          few owners, so its cost does not depend on their number.
class TQ_EXPORT TQCache final : public Subclass<TQCache> {
 public:
  static constexpr std::string_view className = "TQCache";
  ~TQCache() override;

  /// Creates the object to be cached. May return null, as an empty block does.
  using CreationBlock = std::function<Ref<Object>()>;

  /// Creates an empty cache that holds its owners weakly.
  [[nodiscard]] static Ref<TQCache> init() { return initWithOwnerRetentionPolicy(0); }
  /// Creates an empty cache.
  /// @param policy  0 holds owners weakly, any other value strongly
  [[nodiscard]] static Ref<TQCache> initWithOwnerRetentionPolicy(std::intptr_t policy);

  /// Returns the stored object, which may be a TQCacheDeferredCreation, or null.
  [[nodiscard]] Ref<Object> rawObjectForOwner(const Object& owner, const Object& andKey) const;
  /// Returns the cached object, or null. If its creation is pending, waits for it or runs it.
  [[nodiscard]] Ref<Object> cachedObjectForOwner(const Object& owner, const Object& andKey) const;

  /// Stores the object. Null removes the key; the owner still counts in count().
  void setCachedObject(Ref<Object> object, Object& forOwner, const Object& andKey);

  /// Returns the cached object. If there is none, runs the block inside the owner's monitor, so
  /// that only one creation per owner runs at a time, and stores its result, even if an object was
  /// stored under the key in the meantime. If the block returns null, the key is removed.
  /// Exceptions of the block propagate.
  Ref<Object> blockingCachedObjectForOwner(Object& owner, const Object& andKey,
                                           const CreationBlock& orCreateWithBlock);

  /// Returns the cached object. If there is none, runs the block without the monitor and stores its
  /// result. Creations for different keys run concurrently; for one key a single block runs, on the
  /// thread of its caller, and the other callers wait. If the block throws or returns null, only
  /// its own caller gets the exception or null, and one of the waiting callers runs its own block.
  /// An object that is stored under the key in the meantime, also by the block, is kept; the call
  /// returns the block's result nevertheless. A placeholder that is found is replaced by its
  /// object.
  Ref<Object> cachedObjectForOwner(Object& owner, const Object& andKey,
                                   const CreationBlock& orCreateWithBlock);

  /// Creates the entry unless it exists or is being created.
  void populateCacheForObjectWithOwner(Object& owner, const Object& andKey,
                                       const CreationBlock& creationBlock);

  /// Remove one entry of the owner, or all of them. Missing entries are ignored.
  void removeCachedObjectForOwner(const Object& owner, const Object& andKey);
  void removeCachedObjectsForOwner(const Object& owner);
  /// Removes the entries of all other owners. Owners that are added during the call stay. O(n).
  void removeCachedObjectsExceptForOwners(std::span<const Ref<Object>> ownersToKeep);
  /// Removes all entries of all owners.
  void removeAllCachedObjects();

  /// Returns the number of living owners in the cache. O(n) if owners may have been destroyed.
  [[nodiscard]] std::size_t count() const;
  /// Returns all living owners, each once, in no particular order.
  [[nodiscard]] std::vector<Ref<Object>> allOwners() const;

 private:
  explicit TQCache(MapTable::Keys owners);

  struct Holding;
  [[nodiscard]] MapTable* entriesOf(const Object& owner) const TQ_REQUIRES_SHARED(locker_);
  MapTable::Removed store(const Ref<Object>& object, Object& owner, Object& key)
      TQ_REQUIRES(locker_);
  bool replace(const Ref<Object>& expected, const Ref<Object>& object, Object& owner,
               const Object& key, bool evenIfRemoved);
  Ref<TQCacheDeferredCreation> reserve(const Ref<Object>& stored, Object& owner, const Object& key,
                                       const CreationBlock& block);
  Ref<Object> create(const Ref<TQCacheDeferredCreation>& placeholder, Object& owner,
                     const Object& key);

  mutable detail::FairSharedLock locker_;
  const Ref<MapTable> cachedObjectsByOwner_ TQ_PT_GUARDED_BY(locker_);
};

}  // namespace tq
