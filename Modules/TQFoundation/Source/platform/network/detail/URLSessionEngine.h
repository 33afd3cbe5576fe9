#pragma once

/// @file URLSessionEngine.h
/// The thread of a URL session.

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQThreadSafety.h>
#include <TQFoundation/platform/network/URLSession.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {

namespace detail {
[[nodiscard]] bool isSameHeader(std::string_view a, std::string_view b) noexcept;
/// Returns the codings that all headers of that name list together, such as "gzip, chunked"; empty
/// for "identity" and if there is none.
[[nodiscard]] std::string codingsOf(const URLResponse& response, std::string_view name);
/// Returns an error of URLErrorDomain.
/// @param details   for developers; may be empty
/// @param sentence  the description for users; if empty, that of the code
[[nodiscard]] Ref<Error> urlError(std::int64_t code, std::string_view details,
                                  std::string_view sentence = {});
/// Returns the error of a task without memory or thread. Allocated with the first session.
[[nodiscard]] const Ref<Error>& exhaustedError();
}  // namespace detail

class URLTransfer;

/// Runs all transfers of a session on one thread. The thread starts with the first transfer and
/// ends after the session has been destroyed.
class URLSession::Engine {
 public:
  explicit Engine(const URLSessionConfiguration& configuration);
  ~Engine();

  /// Passes the task to the thread, which starts it, or completes it if it is cancelled. Completes
  /// it here with an error if there is no thread, no memory or no libcurl.
  void submit(Ref<URLSessionDataTask> task) noexcept;
  /// Makes the thread check for cancelled tasks.
  void wake() noexcept;
  /// Must be called once, last. The engine is deleted when its thread has ended.
  void close() noexcept;

 private:
  struct Library;
  using Clock = std::chrono::steady_clock;

  void run() noexcept;
  void begin(const Ref<URLSessionDataTask>& task) noexcept;
  /// Starts those waiting transfers whose host has a free connection.
  void startWaiting() noexcept;
  [[nodiscard]] bool hasFreeConnection(std::string_view host) const noexcept;
  /// Takes a transfer away from the list and from libcurl.
  std::unique_ptr<URLTransfer> remove(std::size_t index) noexcept;
  /// Each returns whether it completed any task.
  bool finishEnded();
  /// @param now  a time before received data was last processed
  bool finishCancelledAndLate(Clock::time_point now);
  [[nodiscard]] int pollTimeout() const;

  const URLSessionConfiguration configuration_;
  const std::unique_ptr<Library> library_;

  // Used by the thread alone. The first transfers have been started, in the order of the list; the
  // others wait for a connection.
  std::vector<std::unique_ptr<URLTransfer>> transfers_;
  std::size_t started_ = 0;

  Lock lock_;
  std::vector<Ref<URLSessionDataTask>> submitted_ TQ_GUARDED_BY(lock_);
  bool isRunning_ TQ_GUARDED_BY(lock_) = false;
  bool isClosing_ TQ_GUARDED_BY(lock_) = false;
};

}  // namespace tq
