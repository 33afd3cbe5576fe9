#include <TQFoundation/platform/operations/detail/PoolThreads.h>

#include <chrono>
#include <condition_variable>
#include <list>
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

  void serve() noexcept;
  bool take(Work& into) TQ_REQUIRES(lock);
};

// A thread is counted as idle from its creation on. Returns false if the thread should end.
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

void Pool::serve() noexcept {
  for (;;) {
    Work taken;
    {
      const Locked guard(lock);
      if (!take(taken)) return;
    }
    taken.front()();
    taken.clear();  // its destructor is host code
    const Locked guard(lock);
    ++idle;
  }
}

Pool& pool() {
  static auto& all = *new Pool;  // never destroyed: threads may outlive main
  return all;
}

}  // namespace

bool runOnPoolThread(std::function<void()>& work) noexcept {
  Work added;
  try {
    Pool& threads = pool();
    added.push_back(std::move(work));
    bool isIdle = false;
    {
      const Locked guard(threads.lock);
      isIdle = threads.idle > threads.waiting.size();
      if (isIdle) threads.waiting.splice(threads.waiting.end(), added);
    }
    if (!isIdle) {
      std::thread([&threads] { threads.serve(); }).detach();
      const Locked guard(threads.lock);
      ++threads.idle;
      threads.waiting.splice(threads.waiting.end(), added);
    }
    threads.hasWork.notify_one();
    return true;
  } catch (...) {  // no memory, or no thread can be created
    if (!added.empty()) work = std::move(added.front());
    return false;
  }
}

}  // namespace tq::detail
