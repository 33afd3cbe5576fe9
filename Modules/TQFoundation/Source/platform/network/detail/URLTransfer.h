#pragma once

/// @file URLTransfer.h
/// One task under way, as the network library sees it.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <TQFoundation/platform/network/URLSession.h>

namespace tq {

/// Used by the session's thread alone. Tells its task's handler what comes in.
class URLTransfer {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// @param cookies  the network library's store of the session's cookies; none: no cookies
  URLTransfer(Ref<URLSessionDataTask> task, const URLSessionConfiguration& configuration,
              void* cookies);
  ~URLTransfer();
  URLTransfer(const URLTransfer&) = delete;
  URLTransfer& operator=(const URLTransfer&) = delete;

  /// The network library's handle; none when the request makes no sense.
  [[nodiscard]] void* handle() const noexcept;
  [[nodiscard]] bool isCancelled() const noexcept;
  /// When it has taken too long, unless something comes before.
  [[nodiscard]] Time deadline() const noexcept;

  /// Tells the handler that the task has ended. @param result  the network library's code
  void completeWithResult(int result) noexcept;
  void completeWithError(std::int64_t code) noexcept;

 private:
  struct Library;

  void prepare(const URLSessionConfiguration& configuration, void* cookies);
  void prepareMethod();
  [[nodiscard]] bool prepareHeaders(const HTTPHeaders& additional);
  [[nodiscard]] bool addHeaders(const HTTPHeaders& headers, const HTTPHeaders* unlessIn);

  bool headersEnded();
  [[nodiscard]] long statusCode() const;
  void readResponse();
  bool tellResponse();
  bool receive(std::span<const std::byte> bytes);
  void complete(Ref<Error> error) noexcept;
  void touch() noexcept { lastActivity_ = std::chrono::steady_clock::now(); }

  /// Begins the time without any data, the first time.
  void getUnderWay() noexcept;

  static int onResolving(void* resolver, void* reserved, void* self) noexcept;
  static int onSocket(void* self, int socket, int purpose) noexcept;
  static int onConnected(void* self, char* address, char* ownAddress, int port,
                         int ownPort) noexcept;
  static std::size_t onHeader(char* bytes, std::size_t size, std::size_t count,
                              void* self) noexcept;
  static std::size_t onBody(char* bytes, std::size_t size, std::size_t count, void* self) noexcept;
  static int onProgress(void* self, std::int64_t, std::int64_t, std::int64_t,
                        std::int64_t sent) noexcept;

  const Ref<URLSessionDataTask> task_;
  const std::unique_ptr<Library> library_;
  const Time begin_ = std::chrono::steady_clock::now();
  Time lastActivity_ = begin_;
  std::chrono::nanoseconds idleLimit_{};
  std::chrono::nanoseconds totalLimit_{};
  URLResponse response_;
  std::size_t headerBytes_ = 0;  // of all responses, trailers included
  std::size_t headerLines_ = 0;
  bool isUnderWay_ = false;  // not among those that wait for a connection
  bool isResponseTold_ = false;
  std::optional<std::int64_t> ownError_;  // why one of our callbacks ended it
};

}  // namespace tq
