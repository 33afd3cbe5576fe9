#include <TQFoundation/platform/operations/WorkerPool.h>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <thread>
#include <vector>

// In builds with the thread sanitizer, this file alone is compiled without it (see CMakeLists.txt):
// oneTBB passes tasks between threads in a library that is not instrumented, but reads them in
// templates that are compiled here. Instead, the annotations in this file state what oneTBB
// guarantees: all writes from before the loop are visible to every range, and all writes of the
// ranges are visible after the loop.

#if defined(TQ_SANITIZED_THREAD)
extern "C" {
void __tsan_acquire(void* address);
void __tsan_release(void* address);
}
#else
namespace {
void __tsan_acquire(void*) {}
void __tsan_release(void*) {}
}  // namespace
#endif

namespace tq::detail {
namespace {

using Time = std::chrono::steady_clock::time_point;

constexpr std::int64_t kWorthSharing = 4'000'000;  // picoseconds that it takes to share a loop
constexpr std::uint32_t kWorthARange = 500'000;    // and to pass a part of it to a thread
constexpr std::uint32_t kMostUnmeasured = 32;      // loops in a row that are not timed

Time now() { return std::chrono::steady_clock::now(); }

std::int64_t picosecondsSince(Time begin) {
  return std::chrono::nanoseconds(now() - begin).count() * 1000;
}

void remember(ApplyCost* cost, std::int64_t elapsed, std::size_t count) noexcept {
  if (cost == nullptr) return;
  const auto each = elapsed / static_cast<std::int64_t>(count);
  cost->picoseconds.store(  // relaxed: a hint that publishes no other memory
      static_cast<std::uint32_t>(std::clamp<std::int64_t>(each, 1, UINT32_MAX)),
      std::memory_order_relaxed);
}

std::size_t coreCount() noexcept {
  static const std::size_t count = std::max(std::thread::hardware_concurrency(), 1U);
  return count;
}

/// Whether the system can start as many threads as there are workers.
bool threadsCanStart() {
  std::vector<std::thread> trials;
  std::atomic<bool> mayEnd{false};
  bool canStart = true;
  try {
    trials.reserve(coreCount());
    while (trials.size() + 1 < coreCount()) trials.emplace_back([&mayEnd] { mayEnd.wait(false); });
  } catch (...) {
    canStart = false;
  }
  mayEnd = true;
  mayEnd.notify_all();
  for (std::thread& each : trials) each.join();
  return canStart;
}

/// Returns whether there are workers. oneTBB creates them at its first loop, which fails halfway if
/// the system cannot create threads; so this is tried before. The workers are never destroyed:
/// threads of this library may outlive main(), which ends oneTBB's.
bool hasWorkers() {
  static std::atomic<bool> areUp{false};
  if (areUp.load(std::memory_order_acquire)) return true;
  if (!threadsCanStart()) return false;
  static auto& kept = *new tbb::task_arena;
  static const bool isUp = (kept.initialize(), true);
  areUp.store(isUp, std::memory_order_release);
  return true;
}

/// Runs the loop on the workers; on this thread if there are none. @param grain  the smallest
/// number of calls in a range, unless the workers would get too few ranges: the calls may be more
/// expensive than expected
void share(std::size_t begin, std::size_t end, std::size_t grain, const void* body,
           ApplyRange range) {
  if (!hasWorkers()) return range(body, begin, end);
  grain = std::clamp<std::size_t>((end - begin) / (2 * coreCount()), 1, grain);
  char handedOut = 0;
  char handedBack = 0;
  struct Acquiring {  // at the end of the scope, also after an exception
    ~Acquiring() { __tsan_acquire(address); }
    char* address;
  };
  struct Releasing {
    ~Releasing() { __tsan_release(address); }
    char* address;
  };
  const Acquiring results{&handedBack};
  __tsan_release(&handedOut);
  // No exception passes through oneTBB: it is built with libstdc++, this library perhaps with
  // libc++, and neither can keep an exception of the other.
  std::atomic<bool> hasFailed{false};
  std::exception_ptr failure;  // written by the range that sets hasFailed
  const auto run = [&](const tbb::blocked_range<std::size_t>& part) {
    __tsan_acquire(&handedOut);
    const Releasing result{&handedBack};
    if (hasFailed.load(std::memory_order_relaxed)) return;  // a hint: the rest is left out
    try {
      range(body, part.begin(), part.end());
    } catch (...) {
      if (!hasFailed.exchange(true)) failure = std::current_exception();
    }
  };
  // Isolated: a thread that waits for the last ranges does not run ranges of another loop, whose
  // body might need a lock that this thread holds.
  tbb::this_task_arena::isolate(
      [&] { tbb::parallel_for(tbb::blocked_range<std::size_t>(begin, end, grain), run); });
  if (failure) std::rethrow_exception(failure);
}

/// Reads a counter that is faster than the clock: less than a nanosecond for each tick on x86, up
/// to a few on other processors.
std::uint64_t ticks() noexcept {
#if defined(__x86_64__) || defined(__i386__)
  return __builtin_ia32_rdtsc();
#else
  return static_cast<std::uint64_t>(now().time_since_epoch().count());
#endif
}

struct AloneRun {
  std::size_t calls;  ///< made
  bool isSlow;        ///< they took longer than expected
};

/// Runs the loop on this thread until it has ended or takes longer than expected. The time is
/// checked after the second call and then every few calls, because any of them may be expensive
/// even if the earlier ones were not. Not more often: a check can take as long as several calls.
AloneRun runAlone(std::size_t count, const void* body, ApplyRange range) {
  constexpr std::uint64_t kPatience = 20'000;  // ticks
  constexpr std::size_t kFew = 16;
  const std::uint64_t begin = ticks();
  for (std::size_t done = 0;;) {
    const std::size_t end = std::min(done == 0 ? 2 : done + kFew, count);
    range(body, done, end);
    done = end;
    const bool isSlow = ticks() - begin > kPatience;
    if (isSlow || done == count) return {done, isSlow};
  }
}

/// Returns the number of calls that are worth passing to a thread.
std::size_t grainOf(std::uint32_t picoseconds) noexcept {
  return picoseconds == 0 ? 1 : std::max(kWorthARange / picoseconds, 1U);
}

/// Whether a loop of one range may skip reading the clock, which can take as long as its calls. It
/// is still read from time to time, because calls may become slower.
bool isUnmeasured(ApplyCost& cost) noexcept {
  const std::uint32_t before = cost.unmeasured.load(std::memory_order_relaxed);  // a hint, too
  cost.unmeasured.store((before + 1) % kMostUnmeasured, std::memory_order_relaxed);
  return before + 1 < kMostUnmeasured;
}

}  // namespace

void parallelApply(std::size_t count, const void* body, ApplyRange range, ApplyCost* cost) {
  if (count == 0) return;
  if (count == 1) return range(body, 0, 1);
  if (cost == nullptr) return share(0, count, 1, body, range);
  const std::uint32_t expected = cost->picoseconds.load(std::memory_order_relaxed);
  std::size_t grain = grainOf(expected);
  std::size_t done = 0;
  if (expected != 0 && static_cast<double>(expected) * static_cast<double>(count) < kWorthSharing) {
    const bool isMeasured = count > grain || !isUnmeasured(*cost);
    const Time begin = isMeasured ? now() : Time();
    const AloneRun run = runAlone(count, body, range);
    done = run.calls;
    if (isMeasured) remember(cost, picosecondsSince(begin), done);
    // Calls that became expensive too late to be shared: the next loop is measured.
    if (run.isSlow) cost->unmeasured.store(kMostUnmeasured - 1, std::memory_order_relaxed);
    if (done == count) return;
    grain = 1;  // the calls have turned out to be expensive
  }
  const Time begin = now();
  share(done, count, grain, body, range);
  remember(cost, picosecondsSince(begin), count - done);
}

}  // namespace tq::detail
