#include <TQFoundation/objects/Weak.h>

#include <array>
#include <mutex>
#include <unordered_map>

#include <TQFoundation/base/TQAssert.h>

// The weak block of an object is in a side table, keyed by the object's address. Protocol:
//   - The caller that creates a block owns a reference, so the count cannot become 0 meanwhile. In
//     the object's own destructor there is no owner; a block created there would outlive the
//     object.
//   - The last release sees the mark in the count and calls forgetWeakly() before the destructor.
//   - Locking a block reads the object's count only under the shard's lock and only while the block
//     still refers to the object, so the memory is valid. A count of 0 is never raised again.

namespace tq::detail {

struct WeakBlock {
  explicit WeakBlock(const Object& observed) noexcept : object(&observed), address(&observed) {}

  std::atomic<std::uint32_t> references{1};
  std::atomic<const Object*> object;  // written under the shard's lock; null when gone
  const Object* const address;        // selects the shard, also after the object is gone
};

namespace {

constinit std::atomic<std::uint64_t> losses{0};

struct Shard {
  std::mutex lock;
  std::unordered_map<const Object*, WeakBlock*> blocks;  // guarded by lock
};

Shard& shardOf(const Object* address) {
  static auto& shards = *new std::array<Shard, 64>;  // never destroyed: threads may outlive main
  const auto bits = reinterpret_cast<std::uintptr_t>(address) >> 4;
  return shards[(bits ^ (bits >> 6) ^ (bits >> 12)) % shards.size()];
}

}  // namespace

WeakBlock* weakBlockFor(const Object& object) {
  TQ_ASSERT(!object.isBeingDestroyed());
  Shard& shard = shardOf(&object);
  const std::scoped_lock guard(shard.lock);
  auto [entry, isNew] = shard.blocks.try_emplace(&object, nullptr);
  if (isNew) {
    try {
      entry->second = new WeakBlock(object);
    } catch (...) {
      shard.blocks.erase(entry);
      throw;
    }
    object.references_.fetch_or(Object::kWeaklyHeld, std::memory_order_relaxed);
  } else {
    retainBlock(*entry->second);
  }
  return entry->second;
}

void forgetWeakly(const Object& object) noexcept {
  Shard& shard = shardOf(&object);
  const std::scoped_lock guard(shard.lock);
  const auto entry = shard.blocks.find(&object);
  if (entry == shard.blocks.end()) return;  // every Weak has been destroyed meanwhile
  entry->second->object.store(nullptr, std::memory_order_relaxed);
  losses.fetch_add(1, std::memory_order_release);  // a thread that sees the count sees null
  shard.blocks.erase(entry);
}

bool retainIfAlive(const WeakBlock& block) noexcept {
  const std::scoped_lock guard(shardOf(block.address).lock);
  const Object* const object = block.object.load(std::memory_order_relaxed);
  if (object == nullptr) return false;
  auto& references = object->references_;
  std::uint32_t count = references.load(std::memory_order_relaxed);
  do {
    if (count < Object::kReference) return false;  // the last release calls forgetWeakly() next
  } while (!references.compare_exchange_weak(count, count + Object::kReference,
                                             std::memory_order_relaxed));
  return true;
}

void retainBlock(WeakBlock& block) noexcept {
  block.references.fetch_add(1, std::memory_order_relaxed);
}

void releaseBlock(WeakBlock& block) noexcept {
  Shard& shard = shardOf(block.address);
  {
    // Under the lock, so that weakBlockFor() cannot return a block that is being freed.
    const std::scoped_lock guard(shard.lock);
    if (block.references.fetch_sub(1, std::memory_order_relaxed) != 1) return;
    if (block.object.load(std::memory_order_relaxed) != nullptr) shard.blocks.erase(block.address);
  }
  delete &block;
}

// Relaxed: the caller owns `object`, which was created after any earlier object at its address was
// destroyed. So the block of an earlier object is already seen as null.
bool observes(const WeakBlock& block, const Object& object) noexcept {
  return block.object.load(std::memory_order_relaxed) == &object;
}

bool isGone(const WeakBlock& block) noexcept {
  return block.object.load(std::memory_order_relaxed) == nullptr;
}

std::uint64_t weakLossCount() noexcept { return losses.load(std::memory_order_acquire); }

Object* objectOf(const WeakBlock& block) noexcept { return const_cast<Object*>(block.address); }

}  // namespace tq::detail
