#include <TQFoundation/platform/threads/ObjectMonitor.h>

#include <pthread.h>

#include <array>
#include <memory>
#include <optional>
#include <unordered_map>
#include <utility>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/threads/Lock.h>
#include <TQFoundation/platform/threads/MonitorCount.h>
#include <TQFoundation/platform/threads/MonitorReservation.h>

// A table holds the monitors that are reserved, or that threads have entered or wait for, each with
// the number of these users. The key is the object's address, which is unique: the callers keep the
// object alive.

namespace tq::detail {

thread_local constinit HeldMonitor* innermostMonitor = nullptr;

namespace {

// Monitors are reused for other objects. The system's mutex is destroyed and created again in
// between: tools that check the order of locks would otherwise take the two objects for one lock.
class MonitorLock {
 public:
  MonitorLock() noexcept { ::pthread_mutex_init(&mutex_, nullptr); }
  ~MonitorLock() { ::pthread_mutex_destroy(&mutex_); }
  MonitorLock(const MonitorLock&) = delete;
  MonitorLock& operator=(const MonitorLock&) = delete;
  void lock() noexcept { ::pthread_mutex_lock(&mutex_); }
  void unlock() noexcept { ::pthread_mutex_unlock(&mutex_); }

 private:
  pthread_mutex_t mutex_;
};

struct Monitor : HeldMonitor {
  std::optional<MonitorLock> lock;  // while the monitor has users
  std::size_t users = 0;            // guarded by the shard's lock
};

struct Shard {
  Lock lock;
  std::unordered_map<const Object*, std::unique_ptr<Monitor>> monitors TQ_GUARDED_BY(lock);
  std::unique_ptr<Monitor> spare TQ_GUARDED_BY(lock);  // saves an allocation for each entry
};

using Shards = std::array<Shard, 64>;

Shards& shards() {
  static auto& all = *new Shards;  // never destroyed: threads may outlive main
  return all;
}

Shard& shardOf(const Object* object) {
  const auto bits = reinterpret_cast<std::uintptr_t>(object) >> 4;
  return shards()[(bits ^ (bits >> 6) ^ (bits >> 12)) % std::tuple_size_v<Shards>];
}

// Returns the link to this thread's monitor of `object`, or the link to null at the list's end.
HeldMonitor** linkTo(const Object* object) noexcept {
  HeldMonitor** link = &innermostMonitor;
  while (*link != nullptr && (*link)->object != object) link = &(*link)->outer;
  return link;
}

Monitor& use(Shard& shard, const Object* object) {
  const Locked guard(shard.lock);
  std::unique_ptr<Monitor>& monitor = shard.monitors[object];
  if (monitor == nullptr) {
    try {
      monitor = shard.spare != nullptr ? std::move(shard.spare) : std::make_unique<Monitor>();
    } catch (...) {
      shard.monitors.erase(object);
      throw;
    }
    monitor->lock.emplace();
  }
  ++monitor->users;
  return *monitor;
}

void disuse(Shard& shard, const Object* object) noexcept {
  const Locked guard(shard.lock);
  const auto entry = shard.monitors.find(object);
  if (--entry->second->users != 0) return;
  entry->second->lock.reset();
  shard.spare = std::move(entry->second);
  shard.monitors.erase(entry);
}

}  // namespace

int enterMonitor(const Object* object) {
  if (object == nullptr) return 0;
  if (HeldMonitor* const held = *linkTo(object); held != nullptr) {
    ++held->depth;
    return 0;
  }
  Monitor& monitor = use(shardOf(object), object);
  monitor.lock->lock();
  monitor.object = object;
  monitor.depth = 1;
  monitor.outer = std::exchange(innermostMonitor, &monitor);
  return 0;
}

int exitMonitor(const Object* object) noexcept {
  if (object == nullptr) return 0;
  HeldMonitor** const link = linkTo(object);
  if (*link == nullptr) return -1;
  if (--(*link)->depth != 0) return 0;
  auto& monitor = static_cast<Monitor&>(**link);
  *link = monitor.outer;
  monitor.lock->unlock();
  disuse(shardOf(object), object);
  return 0;
}

void reserveMonitor(const Object& object) { use(shardOf(&object), &object); }

void unreserveMonitor(const Object& object) noexcept { disuse(shardOf(&object), &object); }

std::size_t monitorCount() {
  std::size_t count = 0;
  for (Shard& shard : shards()) {
    const Locked guard(shard.lock);
    count += shard.monitors.size();
  }
  return count;
}

}  // namespace tq::detail
