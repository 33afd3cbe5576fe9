#include <TQFoundation/platform/operations/detail/PoolThreads.h>

#include <chrono>
#include <condition_variable>
#include <list>
#include <memory>
#include <thread>
#include <utility>

#include <TQFoundation/platform/threads/Lock.h>

// This pool is our own: the known libraries stop the process, or keep the work forever, if the
// system cannot create a thread.

namespace tq::detail {
namespace {

using Work = std::list<std::function<void()>>;  // lists pass their nodes without allocation

constexpr std::chrono::seconds kIdleTime(15);

/// Invariant: there are at least as many idle threads as pieces of work that wait for one.
struct Pool {
  Lock lock;
  std::condition_variable_any hasWork;
  Work waiting TQ_GUARDED_BY(lock);
  std::size_t idle TQ_GUARDED_BY(lock) = 0;

  bool passToIdleThread(std::function<void()>& work);
  void serve(std::unique_ptr<std::function<void()>> first) noexcept;
  bool take(Work& into) TQ_REQUIRES(lock);
};

// Returns false, with the work unchanged, if no idle thread is left for it.
bool Pool::passToIdleThread(std::function<void()>& work) {
  Work added(1);  // allocated without the lock
  {
    const Locked guard(lock);
    if (idle <= waiting.size()) return false;
    added.front().swap(work);
    waiting.splice(waiting.end(), added);
  }
  hasWork.notify_one();
  return true;
}

// The calling thread counts as idle. Returns false if it should end.
bool Pool::take(Work& into) {
  const auto end = std::chrono::steady_clock::now() + kIdleTime;
  while (waiting.empty()) {
    if (hasWork.wait_until(lock, end) == std::cv_status::timeout && waiting.empty()) break;
  }
  --idle;
  if (waiting.empty()) return false;
  into.splice(into.begin(), waiting, waiting.begin());
  return true;
}

// A new thread brings its first work along, so it needs nothing more from the thread that creates
// it. All work is destroyed without the lock: its destructor is host code.
void Pool::serve(std::unique_ptr<std::function<void()>> first) noexcept {
  (*first)();
  first = nullptr;
  for (;;) {
    Work taken;
    {
      const Locked guard(lock);
      ++idle;
      if (!take(taken)) return;
    }
    taken.front()();
  }
}

Pool& pool() {
  static auto& all = *new Pool;  // never destroyed: threads may outlive main
  return all;
}

}  // namespace

bool runOnPoolThread(std::function<void()>& work) noexcept {
  std::unique_ptr<std::function<void()>> first;
  try {
    Pool& threads = pool();
    if (threads.passToIdleThread(work)) return true;
    first = std::make_unique<std::function<void()>>(std::move(work));
    std::thread([&threads, own = first.get()] {
      threads.serve(std::unique_ptr<std::function<void()>>(own));
    }).detach();
    static_cast<void>(first.release());  // the thread deletes it
    return true;
  } catch (...) {  // no memory, or no thread can be created
    if (first != nullptr) work.swap(*first);
    return false;
  }
}

}  // namespace tq::detail
