#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <exception>
#include <memory>
#include <new>
#include <thread>
#include <utility>

#include <TQFoundation/platform/operations/WorkerPool.h>
#include <TQFoundation/platform/operations/detail/PoolThreads.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {
namespace {

constexpr std::size_t kMostThreads = 64;
constexpr std::chrono::milliseconds kAWhile(5);

/// The state of one loop, owned by the threads that make its calls. The body belongs to the caller,
/// which waits for these threads.
struct Group {
  Group(std::size_t callCount, const std::function<void(std::size_t)>& call)
      : count(callCount), body(call) {}

  /// Adds a thread. Returns false if no thread can be created.
  static bool addThread(const std::shared_ptr<Group>& group) TQ_REQUIRES(group->lock) {
    try {
      std::function<void()> calls = [group] { group->makeCalls(); };
      if (!detail::runOnPoolThread(calls)) return false;
    } catch (const std::bad_alloc&) {
      return false;
    }
    ++group->threads;
    return true;
  }

  void makeCalls() noexcept {
    for (std::size_t i = next++; i < count; i = next++) {
      try {
        body(i);
      } catch (...) {
        next = count;
        const Locked guard(lock);
        if (!failure) failure = std::current_exception();
      }
      ++ended;
    }
    const Locked guard(lock);
    if (--threads == 0) allLeft.notify_all();
  }

  /// Waits until the threads have made all calls. Adds threads if the calls may wait for each
  /// other.
  static void waitForThreads(const std::shared_ptr<Group>& group) TQ_REQUIRES(group->lock) {
    for (std::size_t seen = 0; group->threads > 0;) {
      if (group->allLeft.wait_for(group->lock, kAWhile) == std::cv_status::no_timeout) continue;
      const std::size_t ended = group->ended;
      const bool isStuck = ended == seen && group->next < group->count;
      if (isStuck && group->threads < kMostThreads) addThread(group);
      seen = ended;
    }
  }

  const std::size_t count;
  const std::function<void(std::size_t)>& body;
  std::atomic<std::size_t> next{0};   // the next call to start
  std::atomic<std::size_t> ended{0};  // calls that have ended
  Lock lock;
  std::condition_variable_any allLeft;
  std::size_t threads TQ_GUARDED_BY(lock) = 0;
  std::exception_ptr failure TQ_GUARDED_BY(lock);
};

}  // namespace

void groupApply(std::size_t count, const std::function<void(std::size_t)>& body) {
  const auto group = std::make_shared<Group>(count, body);
  // If the caller's thread is cancelled (pthread_cancel) while it waits, this waits on: the threads
  // still use the body.
  struct Waiting {
    ~Waiting() {
      const Locked guard(group->lock);
      Group::waitForThreads(group);
    }
    const std::shared_ptr<Group>& group;
  } const waiting{group};
  const std::size_t cores = std::max(std::thread::hardware_concurrency(), 1U);
  std::exception_ptr failure;
  {
    const Locked guard(group->lock);
    for (std::size_t i = 0; i < std::min(count, cores) && Group::addThread(group); ++i) {
    }
    if (group->threads == 0) {
      ++group->threads;  // this thread
      group->lock.unlock();
      group->makeCalls();
      group->lock.lock();
    }
    Group::waitForThreads(group);
    failure = std::exchange(group->failure, nullptr);
  }
  if (failure) std::rethrow_exception(failure);
}

}  // namespace tq
