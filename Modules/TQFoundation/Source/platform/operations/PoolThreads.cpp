#include <glib.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <exception>
#include <memory>
#include <thread>
#include <utility>

#include <TQFoundation/platform/operations/WorkerPool.h>
#include <TQFoundation/platform/operations/detail/PoolThreads.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq::detail {
namespace {

// Work passes between threads here, under our own lock; GLib only signals that there is some.
struct Waiting {
  Lock lock;
  std::deque<std::function<void()>> work TQ_GUARDED_BY(lock);
};

Waiting& waiting() {
  static auto& all = *new Waiting;  // never destroyed: threads may outlive main
  return all;
}

void runOne(gpointer, gpointer) noexcept {
  std::function<void()> work;
  {
    const Locked guard(waiting().lock);
    work = std::move(waiting().work.front());
    waiting().work.pop_front();
  }
  work();
}

}  // namespace

void runOnPoolThread(std::function<void()> work) {
  static GThreadPool* const pool = g_thread_pool_new(runOne, nullptr, -1, FALSE, nullptr);
  {
    const Locked guard(waiting().lock);
    waiting().work.push_back(std::move(work));
  }
  g_thread_pool_push(pool, &waiting(), nullptr);
}

}  // namespace tq::detail
