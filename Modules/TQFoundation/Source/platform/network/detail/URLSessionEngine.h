#pragma once

/// @file URLSessionEngine.h
/// The thread behind a URL session.

#include <chrono>
#include <memory>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/network/URLSession.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {

namespace detail {
[[nodiscard]] bool isSameHeader(std::string_view a, std::string_view b) noexcept;
/// An error of URLErrorDomain with its sentence for people, and the details for programmers.
[[nodiscard]] Ref<Error> urlError(std::int64_t code, std::string_view details);
}  // namespace detail

class URLTransfer;

/// Runs all transfers of a session on one thread, which begins with the first and ends when the
/// session has gone.
class URLSession::Engine {
 public:
  explicit Engine(const URLSessionConfiguration& configuration);
  ~Engine();

  /// Begins the task, or completes it at once if it is cancelled.
  void submit(Ref<URLSessionDataTask> task);
  /// Lets the thread look for cancelled tasks.
  void wake() noexcept;
  /// To be called once, last: the engine goes when its thread is done.
  void close() noexcept;

 private:
  struct Library;
  using Clock = std::chrono::steady_clock;

  void run() noexcept;
  void begin(Ref<URLSessionDataTask> task);
  void finishEnded();
  /// @param now  a time before what had come was last taken
  void finishCancelledAndLate(Clock::time_point now);
  [[nodiscard]] int pollTimeout() const;

  const URLSessionConfiguration configuration_;
  const std::unique_ptr<Library> library_;
  std::vector<std::unique_ptr<URLTransfer>> transfers_;  // the thread's own

  Lock lock_;
  std::vector<Ref<URLSessionDataTask>> submitted_ TQ_GUARDED_BY(lock_);
  bool isRunning_ TQ_GUARDED_BY(lock_) = false;
  bool isClosing_ TQ_GUARDED_BY(lock_) = false;
};

}  // namespace tq
