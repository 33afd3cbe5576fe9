#pragma once

/// @file RunLoop.h
/// Each thread's event loop, and the queue of blocks that the main thread serves.

#include <cstdint>
#include <functional>
#include <memory>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

class Timer;

/// What a loop is running for. A host may have modes of its own: any other number.
enum class RunLoopMode : std::uint32_t {
  standard = 0,  ///< what a loop runs in unless told otherwise; timers fire in this one alone
  common = 1,    ///< a label, not a mode to run in: all modes marked so, `standard` among them
};

/// A thread's event loop: timers, performed blocks and, on the main thread, the main queue.
///
/// It stands on the thread's own default main context (the main thread's on the process's), so
/// where a toolkit runs that context, nothing else needs to be run; where nobody does, run() does.
/// The loop of a thread that runs neither never fires a timer and never performs a block.
///
/// One pass performs blocks; serves, after sleeping until there is something to serve, the timers
/// that are due, the main queue and whatever else lives in the context; and performs blocks again.
///
/// Threads:    performBlock(), wakeUp() and stop() from any; the rest on the loop's own thread.
/// Lifetime:   ends with its thread, which drops what has not been performed or fired; the main
///             thread's never does. Held longer, it takes blocks only to drop them.
/// Exceptions: one that leaves a block or a timer's action stops the process.
class TQ_EXPORT RunLoop final : public Subclass<RunLoop> {
 public:
  static constexpr std::string_view className = "RunLoop";
  /// What a loop is to do once.
  using Block = std::function<void()>;

  /// The calling thread's loop, made on first use. Hold it with share() to use it from elsewhere.
  [[nodiscard]] static RunLoop& current();
  /// The loop of the process's first thread. Any thread.
  [[nodiscard]] static RunLoop& main();

  ~RunLoop() override;

  /// Appends a block, to be run in a pass of `mode`, first come, first served. Does not wake the
  /// loop: one that sleeps runs the block when something else wakes it. A block added while blocks
  /// are being performed waits for the next time. An empty block is the caller's fault and stops
  /// the process.
  void performBlock(Block block, RunLoopMode mode = RunLoopMode::common);

  /// Ends the loop's sleep, or keeps its next one from beginning.
  void wakeUp() noexcept;

  /// Makes blocks for `common` run in `mode` too.
  void addCommonMode(RunLoopMode mode);

  /// One pass. Sleeps up to `timeoutSeconds` for something to do; 0 or less does not sleep, and
  /// infinity sleeps without limit.
  /// @return whether anything was done
  bool runOnce(double timeoutSeconds = 0, RunLoopMode mode = RunLoopMode::standard);

  /// Passes until `seconds` are over or stop() is called.
  void runFor(double seconds, RunLoopMode mode = RunLoopMode::standard);

  /// Passes until stop() is called.
  void run();

  /// Lets the innermost run() or runFor() return after its pass; the next one, when none runs.
  void stop() noexcept;

  /// Whether this is the calling thread's loop.
  [[nodiscard]] bool isCurrent() const noexcept;

 private:
  friend class Timer;
  friend TQ_EXPORT void mainQueueAsync(std::function<void()> block);
  struct [[gnu::visibility("hidden")]] State;

  explicit RunLoop(bool isMain);
  static void endThread(void* loop) noexcept;
  static RunLoop& makeCurrent();

  [[nodiscard]] static std::int64_t now();
  void appendToMainQueue(Block block);
  void scheduleTimer(Timer& timer);
  void forgetTimer(Timer& timer) noexcept;

  std::unique_ptr<State> state_;
};

/// Runs `block` on the main thread in a later pass of its loop, which is woken; also when called
/// there. First come, first served; a pass serves what was there when it began to. A loop that is
/// run from such a block does not serve the queue. Any thread. An empty block stops the process,
/// and so does an exception that leaves one.
TQ_EXPORT void mainQueueAsync(std::function<void()> block);

/// Whether the calling thread is the process's first. In a child made by fork() none is.
[[nodiscard]] TQ_EXPORT bool isMainThread() noexcept;

}  // namespace tq
