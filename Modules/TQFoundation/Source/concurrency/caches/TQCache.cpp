#include <TQFoundation/concurrency/caches/TQCache.h>

#include <unordered_set>
#include <utility>

#include <TQFoundation/concurrency/caches/TQCacheDeferredCreation.h>
#include <TQFoundation/concurrency/locks/ObjectSynchronizer.h>

// Destructors of owners, keys and objects may call back in, so no reference may be dropped with the
// lock held. In every function that changes the table, removed entries are stored in variables
// declared before the guard, and new ones are held by the caller. This holds even when an
// allocation fails.

namespace tq {
namespace {

bool isPlaceholder(const Object& object) noexcept {
  return &object.objectClass() == &classOf<TQCacheDeferredCreation>;  // the class is final
}

}  // namespace

TQCache::~TQCache() = default;

/// Holds what a call uses after a block, which may release the last references.
struct TQCache::Holding {
  Holding(const TQCache& usedCache, const Object& usedOwner, const Object& usedKey) noexcept
      : cache(share(usedCache)), owner(share(usedOwner)), key(share(usedKey)) {}
  const Ref<const TQCache> cache;
  const Ref<const Object> owner, key;
};

TQCache::TQCache(MapTable::Keys owners)
    : cachedObjectsByOwner_(MapTable::mapTable(owners, MapTable::Matching::identity)) {}

Ref<TQCache> TQCache::initWithOwnerRetentionPolicy(std::intptr_t policy) {
  return Ref<TQCache>::adopt(
      new TQCache(policy == 0 ? MapTable::Keys::weak : MapTable::Keys::strong));
}

MapTable* TQCache::entriesOf(const Object& owner) const {
  return static_cast<MapTable*>(cachedObjectsByOwner_->objectForKey(owner));
}

Ref<Object> TQCache::rawObjectForOwner(const Object& owner, const Object& andKey) const {
  const detail::FairReadLocked guard(locker_);
  const MapTable* const entries = entriesOf(owner);
  return Ref<Object>(entries != nullptr ? entries->objectForKey(andKey) : nullptr);
}

Ref<Object> TQCache::cachedObjectForOwner(const Object& owner, const Object& andKey) const {
  Ref<Object> stored = rawObjectForOwner(owner, andKey);
  if (stored == nullptr || !isPlaceholder(*stored)) return stored;  // at the least cost
  return TQCache_selfOrDeferredObject(std::move(stored));
}

MapTable::Removed TQCache::store(const Ref<Object>& object, Object& owner, Object& key) {
  if (MapTable* const entries = entriesOf(owner)) return entries->setObject(object, key);
  const Ref<MapTable> made = MapTable::strongToStrongObjectsMapTable();
  made->setObject(object, key);
  return cachedObjectsByOwner_->setObject(made, owner);
}

void TQCache::setCachedObject(Ref<Object> object, Object& forOwner, const Object& andKey) {
  const Ref<Object> key = andKey.copy();
  MapTable::Removed gone, displaced;
  const detail::FairWriteLocked guard(locker_);
  gone = cachedObjectsByOwner_->purgeSome();
  displaced = store(object, forOwner, *key);
}

// If the entry has changed by the time the monitor is held, the loop starts again. A placeholder is
// resolved without the monitor, because its creation may need the monitor for another key. If it
// resolves to null, its creation has failed, or is running on this thread: this caller creates.
Ref<Object> TQCache::blockingCachedObjectForOwner(Object& owner, const Object& andKey,
                                                  const CreationBlock& orCreateWithBlock) {
  Ref<Object> stored = rawObjectForOwner(owner, andKey);
  if (stored != nullptr && !isPlaceholder(*stored)) return stored;  // found, at the least cost
  const Holding held(*this, owner, andKey);
  for (;; stored = rawObjectForOwner(owner, andKey)) {
    if (Ref<Object> found = TQCache_selfOrDeferredObject(stored)) return found;
    ObjectSynchronizer monitor(share(owner));
    const Locked guard(monitor);
    if (rawObjectForOwner(owner, andKey) != stored) continue;
    const CreationBlock block = orCreateWithBlock;  // the call may destroy the caller's
    Ref<Object> created = block ? block() : nullptr;
    setCachedObject(created, owner, andKey);
    return created;
  }
}

// The placeholder is reserved for this thread before others can see it, so that a block only runs
// on the thread of its own caller.
Ref<Object> TQCache::cachedObjectForOwner(Object& owner, const Object& andKey,
                                          const CreationBlock& orCreateWithBlock) {
  Ref<Object> stored = rawObjectForOwner(owner, andKey);
  if (stored != nullptr && !isPlaceholder(*stored)) return stored;
  const Holding held(*this, owner, andKey);
  for (;; stored = rawObjectForOwner(owner, andKey)) {
    if (Ref<Object> found = TQCache_selfOrDeferredObject(stored)) {
      // Mostly, the thread that created it has replaced it.
      if (found != stored && rawObjectForOwner(owner, andKey) == stored) {
        replace(stored, found, owner, andKey, false);
      }
      return found;
    }
    if (const auto mine = reserve(stored, owner, andKey, orCreateWithBlock)) {
      return create(mine, owner, andKey);
    }
  }
}

void TQCache::populateCacheForObjectWithOwner(Object& owner, const Object& andKey,
                                              const CreationBlock& creationBlock) {
  if (rawObjectForOwner(owner, andKey) != nullptr) return;
  const Holding held(*this, owner, andKey);
  const auto mine = reserve(nullptr, owner, andKey, creationBlock);
  if (mine != nullptr) create(mine, owner, andKey);
}

// Stores a new placeholder for this thread, unless the entry is no longer `stored`: then returns
// null. The monitor is held because blockingCachedObjectForOwner() holds it while its block runs.
Ref<TQCacheDeferredCreation> TQCache::reserve(const Ref<Object>& stored, Object& owner,
                                              const Object& key, const CreationBlock& block) {
  auto placeholder = TQCacheDeferredCreation::reserveWithBlock(block);
  ObjectSynchronizer monitor(share(owner));
  const Locked guard(monitor);
  return replace(stored, placeholder, owner, key, false) ? placeholder : nullptr;
}

// If the creation throws or returns null, the placeholder is removed: it would stay null.
Ref<Object> TQCache::create(const Ref<TQCacheDeferredCreation>& placeholder, Object& owner,
                            const Object& key) {
  Ref<Object> created;
  try {
    created = placeholder->create();
  } catch (...) {
    replace(placeholder, nullptr, owner, key, true);
    throw;
  }
  replace(placeholder, created, owner, key, true);
  return created;
}

// Stores the object if the entry is still `expected`; returns false if it is not. With
// `evenIfRemoved`, the object is also stored if the key was removed meanwhile. Checking and storing
// hold the lock together: otherwise an object that another thread stores in between would be lost.
bool TQCache::replace(const Ref<Object>& expected, const Ref<Object>& object, Object& owner,
                      const Object& key, bool evenIfRemoved) {
  const Ref<Object> copied = key.copy();
  MapTable::Removed gone, displaced;
  const detail::FairWriteLocked guard(locker_);
  gone = cachedObjectsByOwner_->purgeSome();
  const MapTable* const entries = entriesOf(owner);
  const Object* const now = entries != nullptr ? entries->objectForKey(key) : nullptr;
  if (now != expected.get() && (now != nullptr || !evenIfRemoved)) return false;
  if (now != object.get()) displaced = store(object, owner, *copied);
  return true;
}

void TQCache::removeCachedObjectForOwner(const Object& owner, const Object& andKey) {
  MapTable::Removed gone, removed;
  const detail::FairWriteLocked guard(locker_);
  gone = cachedObjectsByOwner_->purgeSome();
  if (MapTable* const entries = entriesOf(owner)) removed = entries->removeObjectForKey(andKey);
}

void TQCache::removeCachedObjectsForOwner(const Object& owner) {
  MapTable::Removed gone, removed;
  const detail::FairWriteLocked guard(locker_);
  gone = cachedObjectsByOwner_->purgeSome();
  removed = cachedObjectsByOwner_->removeObjectForKey(owner);
}

void TQCache::removeCachedObjectsExceptForOwners(std::span<const Ref<Object>> ownersToKeep) {
  const std::vector<Ref<Object>> owners = allOwners();
  std::unordered_set<const Object*> kept;
  for (const Ref<Object>& owner : ownersToKeep) kept.insert(owner.get());
  std::vector<MapTable::Removed> removed;
  removed.reserve(owners.size());
  const detail::FairWriteLocked guard(locker_);
  for (const Ref<Object>& owner : owners) {
    if (kept.contains(owner.get())) continue;
    removed.push_back(cachedObjectsByOwner_->removeObjectForKey(*owner));
  }
}

void TQCache::removeAllCachedObjects() {
  MapTable::Removed removed;
  const detail::FairWriteLocked guard(locker_);
  removed = cachedObjectsByOwner_->removeAllObjects();
}

std::size_t TQCache::count() const {
  const detail::FairReadLocked guard(locker_);
  return cachedObjectsByOwner_->count();
}

std::vector<Ref<Object>> TQCache::allOwners() const {
  std::vector<MapTable::Entry> entries;  // the last references may be among them
  {
    const detail::FairReadLocked guard(locker_);
    entries = cachedObjectsByOwner_->entries();
  }
  std::vector<Ref<Object>> owners;
  owners.reserve(entries.size());
  for (MapTable::Entry& entry : entries) owners.push_back(std::move(entry.key));
  return owners;
}

}  // namespace tq
