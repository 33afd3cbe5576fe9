#pragma once

/// @file TQCache.h
/// Objects remembered for an owner under a key, created once however many ask.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/concurrency/locks/ReadWriteLock.h>
#include <TQFoundation/objects/MapTable.h>

namespace tq {

/// Cached objects by owner, then key. Owners are told apart by identity, and are held weakly unless
/// asked otherwise: an owner that goes takes its entries with it, and a new owner at its address
/// inherits nothing. The caller holds the owner: in its destructor it can no longer be one. Keys
/// are copied and compared by equality; their isEqual() and hash() run under the cache's lock and
/// must not call back in. Owners and keys are references: none cannot be asked.
///
/// Threads: any. Creation blocks, and destructors of what the cache lets go of, run without the
///          cache's lock and may call back in. Lock order: the owner's monitor, then the cache's
///          lock.
/// Memory:  what a gone owner held is let go of at the next change, count() or allOwners().
class TQ_EXPORT TQCache final : public Subclass<TQCache> {
 public:
  static constexpr std::string_view className = "TQCache";
  /// Makes the object to be cached; may answer none.
  using CreationBlock = std::function<Ref<Object>()>;

  /// An empty cache that holds its owners weakly.
  [[nodiscard]] static Ref<TQCache> init() { return initWithOwnerRetentionPolicy(0); }
  /// @param policy  0 holds owners weakly, any other strongly
  [[nodiscard]] static Ref<TQCache> initWithOwnerRetentionPolicy(std::intptr_t policy);

  /// What is stored, be it a placeholder.
  [[nodiscard]] Ref<Object> rawObjectForOwner(const Object& owner, const Object& andKey) const;
  /// The object; of a placeholder what it stands for, waiting for its creation or running it.
  [[nodiscard]] Ref<Object> cachedObjectForOwner(const Object& owner, const Object& andKey) const;

  /// Stores the object; none removes the key, and keeps the owner counted.
  void setCachedObject(Ref<Object> object, Object& forOwner, const Object& andKey);

  /// The object; when missing, the block's, which runs inside the owner's monitor: one creation per
  /// owner at a time. A block that answers none leaves nothing under the key; what it throws passes
  /// through.
  Ref<Object> blockingCachedObjectForOwner(Object& owner, const Object& andKey,
                                           const CreationBlock& orCreateWithBlock);

  /// The same with the block run outside the monitor: creations for different keys run side by
  /// side, one for the same key runs once and the others wait for it. When it throws, the error
  /// goes to its own caller, and one of those who waited creates with its own block.
  /// What somebody else stored under the key in the meantime stays.
  Ref<Object> cachedObjectForOwner(Object& owner, const Object& andKey,
                                   const CreationBlock& orCreateWithBlock);

  /// Creates the entry unless there is one, or one is being created.
  void populateCacheForObjectWithOwner(Object& owner, const Object& andKey,
                                       const CreationBlock& creationBlock);

  /// Forgets one entry of the owner, or all of them; nothing happens when there is none.
  void removeCachedObjectForOwner(const Object& owner, const Object& andKey);
  void removeCachedObjectsForOwner(const Object& owner);
  /// Owners that come while this runs stay.
  void removeCachedObjectsExceptForOwners(std::span<const Ref<Object>> ownersToKeep);
  /// Forgets every entry of every owner.
  void removeAllCachedObjects();

  /// Owners in the table that live.
  [[nodiscard]] std::size_t count() const;
  /// Each once, by identity, in no order.
  [[nodiscard]] std::vector<Ref<Object>> allOwners() const;

 private:
  explicit TQCache(MapTable::Keys owners);

  [[nodiscard]] MapTable* entriesOf(const Object& owner) const TQ_REQUIRES_SHARED(*locker_);
  MapTable::Removed store(const Ref<Object>& object, Object& owner, Object& key)
      TQ_REQUIRES(*locker_);
  void replace(const Ref<Object>& placeholder, const Ref<Object>& object, Object& owner,
               const Object& key);
  Ref<Object> resolve(const Ref<Object>& placeholder, Object& owner, const Object& key);

  const Ref<ReadWriteLock> locker_ = makeRef<ReadWriteLock>();
  const Ref<MapTable> cachedObjectsByOwner_ TQ_PT_GUARDED_BY(*locker_);
};

}  // namespace tq
