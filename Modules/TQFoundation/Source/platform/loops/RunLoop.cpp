#include <TQFoundation/platform/loops/RunLoop.h>

#include <glib.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/loops/Timer.h>
#include <TQFoundation/platform/threads/Lock.h>
#include <TQFoundation/platform/threads/Thread.h>

// A loop adds one source to its context; each source makes a pass about 100 ns longer. It has no
// descriptor: GLib calls it before and after the context sleeps. Blocks are passed between threads
// under locks of this library, so that the thread sanitizer sees the synchronisation, although it
// does not see inside GLib.

namespace tq {
namespace {

constexpr std::int64_t kNever = std::numeric_limits<std::int64_t>::max();

/// A block and the mode that performs it.
struct Performed {
  RunLoop::Block block;
  RunLoopMode mode;

  /// Runs the block and destroys it.
  void run() noexcept {
    block();
    block = nullptr;
  }
};

/// A pass of the context: one that runOnce() makes, or one of a loop of the host, which may also
/// run inside a callback of this loop.
struct Pass {
  int depth = -1;  // g_main_depth() around the pass; -1 for a loop of the host
  RunLoopMode mode = RunLoopMode::standard;
  std::int64_t deadline = kNever;

  [[nodiscard]] bool isOwn() const noexcept { return depth != -1; }
};

/// Converts to whole milliseconds for poll(), rounded up, so that the loop does not wake too early.
int pollTimeout(std::int64_t nanoseconds) noexcept {
  const std::int64_t milliseconds = nanoseconds / 1'000'000 + (nanoseconds % 1'000'000 != 0);
  return static_cast<int>(
      std::clamp<std::int64_t>(milliseconds, 0, std::numeric_limits<int>::max()));
}

thread_local constinit RunLoop* currentLoop = nullptr;

}  // namespace

/// Used by the loop's thread only, except for what the lock guards.
struct RunLoop::State {
  struct Source : GSource {
    State* state;
  };

  explicit State(bool ofMainThread);
  ~State() { g_main_context_unref(context); }

  void attach();
  void detach() noexcept;

  static State& of(GSource* source) noexcept { return *static_cast<Source*>(source)->state; }

  // GLib calls these before the sleep, after it unless something was ready before it, and if
  // something is ready.
  static gboolean beforeSleep(GSource* source, gint* timeout);
  static gboolean afterSleep(GSource* source);
  static gboolean dispatch(GSource* source, GSourceFunc, gpointer);

  /// Returns the pass at this depth.
  [[nodiscard]] Pass passAt(int depth) const noexcept {
    return depth == innermost.depth ? innermost : Pass{};
  }
  [[nodiscard]] bool isCommon(RunLoopMode mode) const TQ_REQUIRES(lock) {
    return std::ranges::find(commonModes, mode) != commonModes.end();
  }

  bool drain(RunLoopMode mode);
  [[nodiscard]] std::size_t waitingBlocks();
  void runBlocks();
  [[nodiscard]] int timeUntilTimer(const Pass& pass);
  [[nodiscard]] bool timersMayFire(const Pass& pass) const noexcept;
  [[nodiscard]] bool timersAreDue(const Pass& pass) const noexcept;
  [[nodiscard]] bool hasMainBlocks(const Pass& pass);
  void fireDueTimers();
  void serveMainQueue();

  GMainContext* const context;
  const bool isMain;  // whether it is the main thread's
  GSource* source = nullptr;

  Lock lock;
  std::vector<Performed> performed TQ_GUARDED_BY(lock);
  std::atomic<bool> hasPerformed{false};  // some are in `performed`; changed with the lock held
  std::vector<RunLoopMode> commonModes TQ_GUARDED_BY(lock){RunLoopMode::standard};
  bool hasEnded TQ_GUARDED_BY(lock) = false;
  std::vector<Performed> mainQueue TQ_GUARDED_BY(lock);  // of the main thread's loop
  std::atomic<bool> hasQueued{false};                    // some are in `mainQueue`, likewise
  std::atomic<bool> stopIsAsked{false};

  detail::TimerHeap timers;   // retains each of them
  std::int64_t passTime = 0;  // when this pass has looked for due timers
  Pass innermost;             // of the passes that runOnce() makes
  bool drainsBeforeSleep = false;
  bool servesMainQueue = false;
  std::size_t heldBlocks = 0;  // the first blocks, which wait until the context has slept
};

RunLoop::State::State(bool ofMainThread)
    : context([ofMainThread] {
        if (ofMainThread) return g_main_context_ref(g_main_context_default());
        GMainContext* const own = g_main_context_get_thread_default();
        return own != nullptr ? g_main_context_ref(own) : g_main_context_new();
      }()),
      isMain(ofMainThread) {
  attach();
}

void RunLoop::State::attach() {
  static GSourceFuncs functions{beforeSleep, afterSleep, dispatch, nullptr, {}, {}};
  auto* const made = static_cast<Source*>(g_source_new(&functions, sizeof(Source)));
  made->state = this;
  g_source_set_can_recurse(made, true);
  g_source_attach(made, context);
  source = made;
}

void RunLoop::State::detach() noexcept {
  g_source_destroy(source);
  g_source_unref(source);
}

gboolean RunLoop::State::beforeSleep(GSource* source, gint* timeout) {
  State& state = of(source);
  const Pass pass = state.passAt(g_main_depth());
  state.drainsBeforeSleep = !pass.isOwn() && state.waitingBlocks() > state.heldBlocks;
  *timeout = state.timeUntilTimer(pass);
  return state.drainsBeforeSleep || state.timersAreDue(pass) || state.hasMainBlocks(pass);
}

gboolean RunLoop::State::afterSleep(GSource* source) {
  State& state = of(source);
  const Pass pass = state.passAt(g_main_depth());
  if (state.timersMayFire(pass)) state.passTime = now();
  return state.timersAreDue(pass) || state.hasMainBlocks(pass) ||
         (!pass.isOwn() && state.waitingBlocks() != 0);
}

// The source may have been ready since an earlier pass, which served more urgent sources.
gboolean RunLoop::State::dispatch(GSource* source, GSourceFunc, gpointer) {
  State& state = of(source);
  const Pass pass = state.passAt(g_main_depth() - 1);  // here, GLib counts this call
  const bool serves = state.hasMainBlocks(pass);       // blocks that are added from here on wait
  if (!pass.isOwn()) state.runBlocks();
  if (state.timersMayFire(pass)) state.fireDueTimers();
  if (serves) state.serveMainQueue();
  return G_SOURCE_CONTINUE;
}

// Blocks. A pass performs them twice, before and after the sleep. Blocks that are added while the
// first ones run do not prevent the sleep: they wait until something wakes the loop. runOnce()
// performs blocks itself at these two places; in a loop of the host, the source does.

bool RunLoop::State::drain(RunLoopMode mode) {
  if (!hasPerformed) return false;
  std::vector<Performed> taken;
  {
    const Locked guard(lock);
    const auto matches = [&](const Performed& each) TQ_NO_THREAD_SAFETY_ANALYSIS {
      return each.mode == mode || (each.mode == RunLoopMode::common && isCommon(mode));
    };
    const auto others = std::ranges::stable_partition(performed, matches);
    taken.assign(std::make_move_iterator(performed.begin()),
                 std::make_move_iterator(others.begin()));
    performed.erase(performed.begin(), others.begin());
    hasPerformed = !performed.empty();
  }
  if (!taken.empty()) heldBlocks = 0;  // they are among these, or after them
  for (Performed& each : taken) each.run();
  return !taken.empty();
}

std::size_t RunLoop::State::waitingBlocks() {
  if (!hasPerformed) return 0;
  const Locked guard(lock);
  return static_cast<std::size_t>(
      std::ranges::count_if(performed, [&](const Performed& each) TQ_NO_THREAD_SAFETY_ANALYSIS {
        return each.mode == RunLoopMode::standard ||
               (each.mode == RunLoopMode::common && isCommon(RunLoopMode::standard));
      }));
}

void RunLoop::State::runBlocks() {
  const bool beforeSleep = drainsBeforeSleep;
  heldBlocks = 0;
  drain(RunLoopMode::standard);
  heldBlocks = beforeSleep ? waitingBlocks() : 0;
}

// Timers.

/// Returns for how many milliseconds the context may sleep; -1 means until something wakes it.
int RunLoop::State::timeUntilTimer(const Pass& pass) {
  std::int64_t wake = pass.deadline;
  if (timersMayFire(pass)) wake = std::min(wake, timers.earliest());
  if (wake == kNever) return -1;
  passTime = now();
  return pollTimeout(std::max<std::int64_t>(wake - passTime, 0));
}

bool RunLoop::State::timersMayFire(const Pass& pass) const noexcept {
  return !timers.isEmpty() && pass.mode == RunLoopMode::standard;
}

bool RunLoop::State::timersAreDue(const Pass& pass) const noexcept {
  return timersMayFire(pass) && timers.earliest() <= passTime;
}

// Timers that become due meanwhile wait for the next pass.
void RunLoop::State::fireDueTimers() {
  if (timers.earliest() > passTime) passTime = now();
  const std::int64_t due = passTime;  // a loop that an action runs has passes of its own
  while (!timers.isEmpty() && timers.earliest() <= due) {
    const auto timer = Ref<Timer>::adopt(timers.top());
    timers.remove(timer->slot_);
    timer->fire();
  }
}

// The main queue.

bool RunLoop::State::hasMainBlocks(const Pass& pass) {
  // A main queue whose block runs a loop is not served by that loop.
  if (!hasQueued || servesMainQueue) return false;
  const Locked guard(lock);
  return !mainQueue.empty() && isCommon(pass.mode);
}

void RunLoop::State::serveMainQueue() {
  std::vector<Performed> taken;
  {
    const Locked guard(lock);
    taken.swap(mainQueue);
    hasQueued = false;
  }
  servesMainQueue = true;
  for (Performed& each : taken) each.run();
  servesMainQueue = false;
}

// The loop.

RunLoop::RunLoop(bool isMain) : state_(new State(isMain)) {}

RunLoop::~RunLoop() { delete state_; }

RunLoop& RunLoop::current() { return currentLoop != nullptr ? *currentLoop : makeCurrent(); }

RunLoop& RunLoop::main() {
  static RunLoop& loop = *new RunLoop(true);  // never destroyed, like the process's context
  return loop;
}

RunLoop& RunLoop::makeCurrent() {
  if (isMainThread()) return *(currentLoop = &main());
  // Not a thread-local object: a block that is destroyed at the thread's end may ask for the loop
  // again, and GPrivate then runs its destructor again.
  static GPrivate atThreadEnd = G_PRIVATE_INIT(endThread);
  currentLoop = new RunLoop(false);
  g_private_set(&atThreadEnd, currentLoop);
  return *currentLoop;
}

void RunLoop::endThread(void* loop) noexcept {
  const auto self = Ref<RunLoop>::adopt(static_cast<RunLoop*>(loop));
  State& state = *self->state_;
  state.detach();
  std::vector<Performed> dropped;
  {
    const Locked guard(state.lock);
    state.hasEnded = true;
    dropped.swap(state.performed);
  }
  while (!state.timers.isEmpty()) Ref<Timer>(state.timers.top())->end();
  currentLoop = nullptr;
}

// The thread's number would not do: a later thread may get the number of one that has ended.
bool RunLoop::isCurrent() const noexcept {
  return currentLoop == this || (state_->isMain && isMainThread());
}

/// Nanoseconds on the steady clock.
std::int64_t RunLoop::now() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void* RunLoop::context() const noexcept { return state_->context; }

void RunLoop::scheduleTimer(Timer& timer) {
  state_->timers.push(timer.nextDue(now()), timer, timer.slot_);
  timer.retain();
}

void RunLoop::forgetTimer(Timer& timer) noexcept {
  if (timer.slot_.position == detail::TimerSlot::kNowhere) return;
  state_->timers.remove(timer.slot_);
  timer.release();
}

void RunLoop::performBlock(Block block, RunLoopMode mode) {
  TQ_ASSERT(block != nullptr);
  Performed added{std::move(block), mode};  // if dropped, destroyed after the lock is released
  const Locked guard(state_->lock);
  if (state_->hasEnded) return;
  state_->performed.push_back(std::move(added));
  state_->hasPerformed = true;
}

void RunLoop::wakeUp() noexcept { g_main_context_wakeup(state_->context); }

void RunLoop::addCommonMode(RunLoopMode mode) {
  const Locked guard(state_->lock);
  if (!state_->isCommon(mode)) state_->commonModes.push_back(mode);
}

bool RunLoop::runOnce(double timeoutSeconds, RunLoopMode mode) {
  TQ_ASSERT(isCurrent() && mode != RunLoopMode::common);
  State& state = *state_;
  constexpr double kLongest = 4e9;  // seconds; longer time-outs are unlimited
  std::int64_t deadline = kNever;
  const bool maySleep = timeoutSeconds > 0;
  if (maySleep && timeoutSeconds < kLongest) {
    deadline = now() + static_cast<std::int64_t>(timeoutSeconds * 1e9);
  }
  bool hasRun = state.drain(mode);
  const Pass outer = std::exchange(state.innermost, {g_main_depth(), mode, deadline});
  if (g_main_context_iteration(state.context, maySleep) != FALSE) hasRun = true;
  state.innermost = outer;
  return state.drain(mode) || hasRun;
}

void RunLoop::runFor(double seconds, RunLoopMode mode) {
  const double end = static_cast<double>(now()) * 1e-9 + seconds;
  double left = seconds;
  while (!state_->stopIsAsked.exchange(false) && left > 0) {
    runOnce(left, mode);
    left = end - static_cast<double>(now()) * 1e-9;
  }
}

void RunLoop::run() { runFor(std::numeric_limits<double>::infinity()); }

void RunLoop::stop() noexcept {
  state_->stopIsAsked.store(true);
  wakeUp();
}

void RunLoop::appendToMainQueue(Block block) {
  TQ_ASSERT(block != nullptr);
  bool wasEmpty = false;
  Performed added{std::move(block),
                  RunLoopMode::common};  // if not added, destroyed without the lock
  {
    const Locked guard(state_->lock);
    wasEmpty = state_->mainQueue.empty();
    state_->mainQueue.push_back(std::move(added));
    state_->hasQueued = true;
  }
  if (wasEmpty) wakeUp();  // otherwise an earlier caller has woken it
}

void mainQueueAsync(std::function<void()> block) {
  RunLoop::main().appendToMainQueue(std::move(block));
}

bool isMainThread() noexcept {
  return currentThreadNumber() == static_cast<std::uint32_t>(::getpid());
}

}  // namespace tq
