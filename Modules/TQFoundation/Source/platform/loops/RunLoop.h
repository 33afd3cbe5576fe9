#pragma once

/// @file RunLoop.h
/// Event loops of threads, and the main thread's queue of blocks.

#include <cstdint>
#include <functional>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

class Timer;
namespace detail {
class DescriptorSource;
}

/// The mode that a loop runs in. A host may use any other number as a mode of its own.
enum class RunLoopMode : std::uint32_t {
  standard = 0,  ///< the default mode, and the only one in which timers fire
  common = 1,    ///< for blocks: all common modes, such as `standard`; a loop cannot run in it
};

/// A thread's event loop: timers, performed blocks and, on the main thread, the main queue.
///
/// The loop uses the thread's default main context; on the main thread, that of the process. If a
/// toolkit runs this context, the host need not run the loop; otherwise it must call run(). If the
/// thread runs neither, its timers never fire and its blocks are never performed.
///
/// A pass has three steps. It performs blocks. Then it sleeps until there is work, and serves the
/// timers that are due, the main queue, and all other sources of the context. Finally it performs
/// blocks again.
///
/// Threads:    performBlock(), wakeUp(), stop() and isCurrent() from any; all others on the loop's
///             own thread.
/// Lifetime:   ends with its thread, which drops pending blocks and timers. A loop that is retained
///             longer drops each block that is added. The main thread's loop never ends.
/// Exceptions: an exception that leaves a block or a timer's action stops the process.
class TQ_EXPORT RunLoop final : public Subclass<RunLoop> {
 public:
  static constexpr std::string_view className = "RunLoop";
  /// Work that a loop does once.
  using Block = std::function<void()>;

  /// Returns the calling thread's loop, created on first use. To use it on other threads, retain it
  /// with share(). A new loop needs a file descriptor; without one, GLib stops the process.
  [[nodiscard]] static RunLoop& current();
  /// Returns the loop of the main thread. Any thread.
  [[nodiscard]] static RunLoop& main();

  ~RunLoop() override;

  /// Appends a block that a pass in `mode` performs, in the order of adding. Does not wake the
  /// loop: a sleeping loop performs the block after something else has woken it. A block that is
  /// added while blocks are performed waits for the next step that performs blocks; a loop that a
  /// block runs does not perform those that remain of its step. An empty block stops the process.
  void performBlock(Block block, RunLoopMode mode = RunLoopMode::common);

  /// Ends the loop's sleep, or prevents its next one.
  void wakeUp() noexcept;

  /// Makes `mode` a common mode, which performs blocks for `common` too.
  void addCommonMode(RunLoopMode mode);

  /// Makes one pass. It sleeps up to `timeoutSeconds` until there is work; not at all if 0 or
  /// negative, without limit if infinite.
  /// @return whether any work was done
  bool runOnce(double timeoutSeconds = 0, RunLoopMode mode = RunLoopMode::standard);

  /// Makes passes until `seconds` have elapsed or stop() is called.
  void runFor(double seconds, RunLoopMode mode = RunLoopMode::standard);

  /// Makes passes until stop() is called.
  void run();

  /// Makes the innermost run() or runFor() return after its pass. If neither is running, the next
  /// one returns at once.
  void stop() noexcept;

  /// Returns whether this is the calling thread's loop. False after the loop's thread has ended.
  [[nodiscard]] bool isCurrent() const noexcept;

 private:
  friend class Timer;
  friend class detail::DescriptorSource;
  friend TQ_EXPORT void mainQueueAsync(std::function<void()> block);
  struct [[gnu::visibility("hidden")]] State;

  explicit RunLoop(bool isMain);
  static void endThread(void* loop) noexcept;
  static RunLoop& makeCurrent();

  [[nodiscard]] static std::int64_t now();
  /// Returns GLib's context.
  [[nodiscard, gnu::visibility("hidden")]] void* context() const noexcept;
  void appendToMainQueue(Block block);
  void scheduleTimer(Timer& timer);
  void forgetTimer(Timer& timer) noexcept;

  State* const state_;  // owned
};

/// Appends `block` to the main queue and wakes the main thread's loop, which runs the block in a
/// later pass, also if called on the main thread. Blocks run in the order of adding. A pass runs
/// the blocks that are in the queue when it starts serving it. A loop that is run by such a block
/// does not serve the queue. An empty block, or an exception that leaves a block, stops the
/// process. Any thread.
TQ_EXPORT void mainQueueAsync(std::function<void()> block);

/// Returns whether the calling thread is the process's first thread. In a child of fork(), false if
/// the parent's thread had called it or used a lock before.
[[nodiscard]] TQ_EXPORT bool isMainThread() noexcept;

}  // namespace tq
