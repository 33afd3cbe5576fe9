#pragma once

/// @file URLTransfer.h
/// The libcurl transfer of one task.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include <TQFoundation/platform/network/URLSession.h>
#include <TQFoundation/platform/network/detail/ContentDecoder.h>

namespace tq {

/// Calls the task's handler as data comes in. Used by the session's thread alone.
class URLTransfer {
 public:
  using Time = std::chrono::steady_clock::time_point;

  /// Loads the functions of libcurl; must have succeeded before a transfer is made. Any thread.
  /// @return false, with the reason, if they cannot be loaded
  [[nodiscard]] static bool loadLibrary(std::string& reason);

  /// @param cookies  libcurl's store of the session's cookies; null: no cookies
  URLTransfer(Ref<URLSessionDataTask> task, const URLSessionConfiguration& configuration,
              void* cookies);
  ~URLTransfer();
  URLTransfer(const URLTransfer&) = delete;
  URLTransfer& operator=(const URLTransfer&) = delete;

  /// libcurl's handle; null if the request is invalid.
  [[nodiscard]] void* handle() const noexcept;
  [[nodiscard]] bool isCancelled() const noexcept;
  /// The scheme, name and port of the server, as the request writes them.
  [[nodiscard]] const std::string& host() const noexcept { return host_; }
  /// Whether its connection is known to carry many transfers at a time (HTTP/2).
  [[nodiscard]] bool isMultiplexed() const noexcept { return isMultiplexed_; }
  /// The time at which it times out, unless data comes before.
  [[nodiscard]] Time deadline() const noexcept;

  /// Reports the end of the task to the handler. @param result  a CURLcode
  void completeWithResult(int result) noexcept;
  void completeWithError(std::int64_t code) noexcept;
  /// The same, for a task that has no transfer. Any thread.
  static void refuse(URLSessionDataTask& task, Ref<Error> error) noexcept;

 private:
  struct Library;

  void prepare(const URLSessionConfiguration& configuration, void* cookies);
  void prepareMethod();
  [[nodiscard]] bool prepareHeaders(const HTTPHeaders& additional);
  [[nodiscard]] bool addHeaders(const HTTPHeaders& headers, const HTTPHeaders* unlessIn);

  bool headersEnded();
  [[nodiscard]] long statusCode() const;
  [[nodiscard]] std::string lastURL() const;
  [[nodiscard]] bool hasAnswer() const;
  void readResponse();
  bool tellResponse();
  [[nodiscard]] Ref<Error> errorOf(int result);
  void explainUnsupportedProtocol();
  /// Decodes a piece of the body.
  bool receive(std::span<const std::byte> bytes);
  /// Passes decoded bytes to the handler.
  bool pass(std::span<const std::byte> bytes);
  [[nodiscard]] bool hasTruncatedCoding() const;
  /// Sets the error that the task ends with. @return false
  bool fail(std::int64_t code, std::string sentence = {});
  template <class Step>
  bool withMemory(const Step& step) noexcept;
  void complete(Ref<Error> error) noexcept;
  void touch() noexcept { lastActivity_ = std::chrono::steady_clock::now(); }

  /// Starts the idle time-out; later calls have no effect.
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
  std::string host_;
  URLResponse response_;
  std::size_t headerBytes_ = 0;  // of all responses, trailers included
  std::size_t headerLines_ = 0;
  bool isUnderWay_ = false;      // no longer waits for a connection
  bool isHeadComplete_ = false;  // of the last response, which is not provisional
  bool isResponseTold_ = false;
  bool isMultiplexed_ = false;
  bool isExhausted_ = false;                 // ran out of memory
  bool decodes_ = false;                     // content codings
  std::unique_ptr<ContentDecoder> decoder_;  // null if the body is not coded
  std::optional<std::int64_t> ownError_;     // the reason if one of our callbacks ended it
  std::string ownSentence_;                  // its description; if empty, that of the code
};

}  // namespace tq
