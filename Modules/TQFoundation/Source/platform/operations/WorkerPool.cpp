#include <TQFoundation/platform/operations/WorkerPool.h>

#include <tbb/blocked_range.h>
#include <tbb/parallel_for.h>
#include <tbb/task_arena.h>

#include <algorithm>
#include <chrono>

// In builds with the thread sanitizer, this file alone is compiled without it (see CMakeLists.txt):
// oneTBB passes tasks between threads in a library that is not instrumented, but reads them in
// templates that are compiled here. Instead, the sanitizer is given what the library guarantees:
// all writes from before the loop are visible to every range, and all writes of the ranges are
// visible after the loop.

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

/// Keeps oneTBB initialised for ever: our threads may outlive main(), which ends oneTBB's.
void keepWorkers() {
  static auto& kept = *new tbb::task_arena;
  static const bool isUp = (kept.initialize(), true);
  static_cast<void>(isUp);
}

/// Runs the loop on the workers. @param grain  the smallest number of calls in a range
void share(std::size_t begin, std::size_t end, std::size_t grain, const void* body,
           ApplyRange range) {
  keepWorkers();
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
  const auto run = [&](const tbb::blocked_range<std::size_t>& part) {
    __tsan_acquire(&handedOut);
    const Releasing result{&handedBack};
    range(body, part.begin(), part.end());
  };
  // Isolated: a thread that waits for the last ranges runs none of another loop, whose body might
  // need a lock that this thread holds.
  tbb::this_task_arena::isolate(
      [&] { tbb::parallel_for(tbb::blocked_range<std::size_t>(begin, end, grain), run); });
}

/// Runs the loop on this thread until it has ended or takes longer than expected. The clock is read
/// after the first call, after a range's worth of calls, and whenever their number has doubled.
/// @return the number of calls made
std::size_t runAlone(std::size_t count, std::size_t grain, const void* body, ApplyRange range,
                     ApplyCost& cost) {
  const Time begin = now();
  for (std::size_t done = 0, next = 1;; next = std::max(2 * done, grain)) {
    const std::size_t end = std::min(next, count);
    range(body, done, end);
    done = end;
    const std::int64_t elapsed = picosecondsSince(begin);
    if (done < count && elapsed <= kWorthSharing) continue;
    remember(&cost, elapsed, done);
    return done;
  }
}

/// Whether a loop of one range may skip reading the clock, which can take as long as its calls. It
/// is still read now and then, because calls may become slower.
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
  const std::size_t grain = expected == 0 ? 1 : std::max(kWorthARange / expected, 1U);
  std::size_t done = 0;
  if (expected != 0 && static_cast<double>(expected) * static_cast<double>(count) < kWorthSharing) {
    if (count <= grain && isUnmeasured(*cost)) return range(body, 0, count);
    done = runAlone(count, grain, body, range, *cost);
    if (done == count) return;
  }
  const Time begin = now();
  share(done, count, grain, body, range);
  remember(cost, picosecondsSince(begin), count - done);
}

}  // namespace tq::detail
