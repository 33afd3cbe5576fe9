#pragma once

/// @file Cache.h
/// TQCache and TQObjectPool for objects of one class, without casts.

#include <cstddef>
#include <functional>
#include <utility>
#include <vector>

#include <TQFoundation/concurrency/caches/TQCache.h>
#include <TQFoundation/concurrency/caches/TQObjectPool.h>

namespace tq {

/// Cached objects of class T, by owner and key. See TQCache, which does the work; copies share one
/// cache. Objects should be stored only through this class: then every object in the cache is a T.
template <class Owner, class Key, class T>
class Cache {
 public:
  /// Creates an empty cache that holds its owners weakly.
  Cache() : cache_(TQCache::init()) {}

  /// Returns the cached object, or null. If its creation is pending, waits for it.
  [[nodiscard]] Ref<T> find(const Owner& owner, const Key& key) const {
    return refCast<T>(cache_->cachedObjectForOwner(owner, key));
  }
  /// Returns the cached object. If there is none, calls `create` on this thread, and stores and
  /// returns its result (a Ref<T>, or null). Other callers with the same key wait.
  template <class Create>
  Ref<T> findOrCreate(Owner& owner, const Key& key, Create&& create) {
    return refCast<T>(cache_->cachedObjectForOwner(
        owner, key, [&create]() -> Ref<Object> { return Ref<T>(create()); }));
  }
  /// Stores the object. Null removes the key.
  void store(Ref<T> object, Owner& owner, const Key& key) {
    cache_->setCachedObject(std::move(object), owner, key);
  }
  /// Remove one entry, all entries of an owner, or all entries.
  void remove(const Owner& owner, const Key& key) {
    cache_->removeCachedObjectForOwner(owner, key);
  }
  void remove(const Owner& owner) { cache_->removeCachedObjectsForOwner(owner); }
  void removeAll() { cache_->removeAllCachedObjects(); }

  /// Returns the number of living owners in the cache.
  [[nodiscard]] std::size_t ownerCount() const { return cache_->count(); }

 private:
  Ref<TQCache> cache_;
};

/// A pool of reusable objects of class T. See TQObjectPool, which does the work; copies share one
/// pool.
template <class T>
class ObjectPool {
 public:
  /// @param create  returns a new object, not null; called when no object is idle. An empty
  ///                function stops the process.
  explicit ObjectPool(std::function<Ref<T>()> create)
      : pool_(TQObjectPool::initWithObjectCreatorBlock(std::move(create))) {}

  /// Removes and returns any idle object, or creates one.
  [[nodiscard]] Ref<T> vend() { return refCast<T>(pool_->vendObject()); }
  /// Returns an object to the pool, or releases it if the pool is full. Null is ignored.
  void recycle(Ref<T> object) { pool_->recycleObject(std::move(object)); }
  /// Sets the largest number of idle objects; see TQObjectPool::setMaximumPoolCount().
  void setMaximumCount(std::size_t count) { pool_->setMaximumPoolCount(count); }

 private:
  Ref<TQObjectPool> pool_;
};

}  // namespace tq
