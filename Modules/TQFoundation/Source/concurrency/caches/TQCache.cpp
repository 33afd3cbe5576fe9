#include <TQFoundation/concurrency/caches/TQCache.h>

#include <algorithm>
#include <utility>

#include <TQFoundation/concurrency/caches/TQCacheDeferredCreation.h>
#include <TQFoundation/concurrency/locks/ObjectSynchronizer.h>

// Destructors of owners, keys and objects may call back in, so no reference may be dropped with the
// lock held. In every function that changes the table, removed entries are stored in variables
// declared before the guard, and new ones are held by the caller. This holds even when an
// allocation fails.

namespace tq {

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
  const ReadLocked guard(*locker_);
  const MapTable* const entries = entriesOf(owner);
  return Ref<Object>(entries != nullptr ? entries->objectForKey(andKey) : nullptr);
}

Ref<Object> TQCache::cachedObjectForOwner(const Object& owner, const Object& andKey) const {
  return TQCache_selfOrDeferredObject(rawObjectForOwner(owner, andKey));
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
  const WriteLocked guard(*locker_);
  gone = cachedObjectsByOwner_->purge();
  displaced = store(object, forOwner, *key);
}

// If the entry has changed by the time the monitor is held, the loop starts again. A new
// placeholder is then resolved without the monitor, because its creation may need the monitor for
// another key.
Ref<Object> TQCache::blockingCachedObjectForOwner(Object& owner, const Object& andKey,
                                                  const CreationBlock& orCreateWithBlock) {
  for (;;) {
    const Ref<Object> stored = rawObjectForOwner(owner, andKey);
    if (Ref<Object> found = TQCache_selfOrDeferredObject(stored)) return found;
    ObjectSynchronizer monitor(share(owner));
    const Locked guard(monitor);
    if (rawObjectForOwner(owner, andKey) != stored) continue;
    Ref<Object> created = orCreateWithBlock();
    setCachedObject(created, owner, andKey);
    return created;
  }
}

Ref<Object> TQCache::cachedObjectForOwner(Object& owner, const Object& andKey,
                                          const CreationBlock& orCreateWithBlock) {
  const Ref<Object> stored = blockingCachedObjectForOwner(owner, andKey, [&]() -> Ref<Object> {
    return TQCacheDeferredCreation::createWithBlock(orCreateWithBlock);
  });
  return resolve(stored, owner, andKey);
}

void TQCache::populateCacheForObjectWithOwner(Object& owner, const Object& andKey,
                                              const CreationBlock& creationBlock) {
  if (rawObjectForOwner(owner, andKey) != nullptr) return;
  Ref<Object> placeholder;
  {
    ObjectSynchronizer monitor(share(owner));
    const Locked guard(monitor);
    if (rawObjectForOwner(owner, andKey) != nullptr) return;
    placeholder = TQCacheDeferredCreation::createWithBlock(creationBlock);
    setCachedObject(placeholder, owner, andKey);
  }
  resolve(placeholder, owner, andKey);
}

// If the creation throws, the placeholder is removed. It would return null for ever.
Ref<Object> TQCache::resolve(const Ref<Object>& placeholder, Object& owner, const Object& key) {
  Ref<Object> resolved;
  try {
    resolved = TQCache_selfOrDeferredObject(placeholder);
  } catch (...) {
    replace(placeholder, nullptr, owner, key);
    throw;
  }
  if (resolved != placeholder) replace(placeholder, resolved, owner, key);
  return resolved;
}

// Replaces the placeholder by the object. The object is also stored if the key was removed during
// the creation, but it does not replace a later entry. Checking and storing hold the lock together:
// otherwise a later placeholder could be overwritten and its object created twice.
void TQCache::replace(const Ref<Object>& placeholder, const Ref<Object>& object, Object& owner,
                      const Object& key) {
  const Ref<Object> copied = key.copy();
  MapTable::Removed gone, displaced;
  const WriteLocked guard(*locker_);
  gone = cachedObjectsByOwner_->purge();
  const MapTable* const entries = entriesOf(owner);
  const Object* const now = entries != nullptr ? entries->objectForKey(key) : nullptr;
  if (now == object.get() || (now != nullptr && now != placeholder.get())) return;
  displaced = store(object, owner, *copied);
}

void TQCache::removeCachedObjectForOwner(const Object& owner, const Object& andKey) {
  MapTable::Removed gone, removed;
  const WriteLocked guard(*locker_);
  gone = cachedObjectsByOwner_->purge();
  if (MapTable* const entries = entriesOf(owner)) removed = entries->removeObjectForKey(andKey);
}

void TQCache::removeCachedObjectsForOwner(const Object& owner) {
  MapTable::Removed gone, removed;
  const WriteLocked guard(*locker_);
  gone = cachedObjectsByOwner_->purge();
  removed = cachedObjectsByOwner_->removeObjectForKey(owner);
}

void TQCache::removeCachedObjectsExceptForOwners(std::span<const Ref<Object>> ownersToKeep) {
  const std::vector<Ref<Object>> owners = allOwners();
  std::vector<MapTable::Removed> removed;
  removed.reserve(owners.size());
  const WriteLocked guard(*locker_);
  for (const Ref<Object>& owner : owners) {
    if (std::find(ownersToKeep.begin(), ownersToKeep.end(), owner) != ownersToKeep.end()) continue;
    removed.push_back(cachedObjectsByOwner_->removeObjectForKey(*owner));
  }
}

void TQCache::removeAllCachedObjects() {
  MapTable::Removed removed;
  const WriteLocked guard(*locker_);
  removed = cachedObjectsByOwner_->removeAllObjects();
}

std::size_t TQCache::count() const {
  MapTable::Removed gone;
  const WriteLocked guard(*locker_);
  gone = cachedObjectsByOwner_->purge();
  return cachedObjectsByOwner_->count();
}

std::vector<Ref<Object>> TQCache::allOwners() const {
  MapTable::Removed gone;
  std::vector<MapTable::Entry> entries;
  {
    const WriteLocked guard(*locker_);
    gone = cachedObjectsByOwner_->purge();
    entries = cachedObjectsByOwner_->entries();
  }
  std::vector<Ref<Object>> owners;
  owners.reserve(entries.size());
  for (MapTable::Entry& entry : entries) owners.push_back(std::move(entry.key));
  return owners;
}

}  // namespace tq
