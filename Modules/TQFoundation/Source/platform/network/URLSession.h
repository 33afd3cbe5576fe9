#pragma once

/// @file URLSession.h
/// Requests over HTTP and HTTPS.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/ReadingLimits.h>
#include <TQFoundation/objects/URL.h>

namespace tq {

/// The domain of the errors below.
inline constexpr std::string_view URLErrorDomain = "NSURLErrorDomain";

/// Codes of URLErrorDomain.
enum URLErrorCode : std::int64_t {
  URLErrorUnknown = -1,
  URLErrorCancelled = -999,
  URLErrorBadURL = -1000,
  URLErrorTimedOut = -1001,
  URLErrorUnsupportedURL = -1002,
  URLErrorCannotFindHost = -1003,
  URLErrorCannotConnectToHost = -1004,
  URLErrorNetworkConnectionLost = -1005,
  URLErrorHTTPTooManyRedirects = -1007,
  URLErrorBadServerResponse = -1011,
  URLErrorDataLengthExceedsMaximum = -1103,
  URLErrorSecureConnectionFailed = -1200,
  URLErrorServerCertificateUntrusted = -1202,
  URLErrorCannotWriteToFile = -3003,
};

/// Names and values. Names are compared without regard to case.
using HTTPHeaders = std::vector<std::pair<std::string, std::string>>;

/// Which cookies are accepted.
enum class HTTPCookieAcceptPolicy : std::uint8_t { always, never, onlyFromMainDocumentDomain };
/// Whether responses may come from a cache.
enum class URLRequestCachePolicy : std::uint8_t { useProtocolCachePolicy, reloadIgnoringCache };

/// How a session behaves. These are the values of the default configuration.
struct URLSessionConfiguration {
  /// Returns the default values, listed below.
  [[nodiscard]] static URLSessionConfiguration defaultSessionConfiguration() { return {}; }

  /// Maximum number of seconds without data, also while connecting. Waiting for a connection that
  /// other tasks use does not count, and neither does a running callback. 0, negative or NaN: no
  /// limit.
  double timeoutIntervalForRequest = 60;
  /// Maximum number of seconds for a whole task; 0, negative or NaN: no limit.
  double timeoutIntervalForResource = 604800;
  /// Limit of simultaneous connections to one server; 0 or negative: no limit.
  int HTTPMaximumConnectionsPerHost = 6;
  /// More redirects fail with URLErrorHTTPTooManyRedirects; negative: no limit.
  int HTTPMaximumRedirects = 20;
  ReadingLimits readingLimits = {};      ///< its decompressedBytes limit the collected bodies
  bool HTTPShouldUsePipelining = false;  ///< no effect: the protocol decides
  bool HTTPShouldSetCookies = true;      ///< cookies are kept in memory for the session's lifetime
  /// `never` accepts no cookies; the other two mean the same.
  HTTPCookieAcceptPolicy cookieAcceptPolicy = HTTPCookieAcceptPolicy::onlyFromMainDocumentDomain;
  /// No effect: a session has no cache.
  URLRequestCachePolicy requestCachePolicy = URLRequestCachePolicy::useProtocolCachePolicy;
  bool allowsCellularAccess = true;  ///< no effect on a desktop
  bool discretionary = false;        ///< no effect: every task starts at once
  /// Added to each request that does not set the same header. Range and If-Range are ignored: they
  /// are for one request.
  HTTPHeaders HTTPAdditionalHeaders = {};
  /// The path of a PEM file that is trusted instead of the system's.
  std::string certificateAuthorities = {};
};

/// A request.
struct URLRequest {
  /// The URL; null fails with URLErrorBadURL.
  Ref<URL> url = nullptr;
  /// The method, sent unchanged. One that is no token ("", "G T") fails with URLErrorBadURL, and so
  /// does a header with an invalid name, or a line break or NUL in its value.
  std::string HTTPMethod = "GET";
  /// Headers; they take precedence over the session's.
  HTTPHeaders HTTPHeaderFields = {};
  /// Sent with each method but HEAD, as application/x-www-form-urlencoded unless there is a header
  /// Content-Type. May be null.
  Ref<Data> HTTPBody = nullptr;
  /// Replaces the session's timeoutIntervalForRequest; 0, negative or NaN: the session's value.
  double timeoutInterval = 0;
};

/// The status and the headers of a response.
struct URLResponse {
  std::string url;                          ///< after all redirects
  int statusCode = 0;                       ///< 200, 404 and so on; 0 before a response has come
  std::int64_t expectedContentLength = -1;  ///< bytes of the body; -1: unknown
  HTTPHeaders allHeaderFields;              ///< as sent, in order

  /// Returns the value of the first header of that name, valid while the response lives; empty if
  /// there is none.
  [[nodiscard]] TQ_EXPORT std::string_view valueForHTTPHeaderField(std::string_view field) const;
};

class URLSessionDataTask;

/// Callbacks of a task. They are called on the session's thread, one at a time for all tasks of the
/// session. A slow callback slows down the sender, so a body of any size takes constant memory.
/// They must not throw: an exception stops the process. std::bad_alloc that leaves one of the first
/// two ends the task with an error. Each may be empty. The task releases all of them at its end, so
/// they may own the task.
struct URLSessionTaskHandler {
  /// Called before the body. If it returns false, the task is cancelled.
  std::function<bool(URLSessionDataTask&, const URLResponse&)> didReceiveResponse = nullptr;
  /// Called with each piece of the body, which is valid during the call. If it returns false, the
  /// task ends with URLErrorCannotWriteToFile.
  std::function<bool(URLSessionDataTask&, std::span<const std::byte>)> didReceiveData = nullptr;
  /// Called once, last. Without an error the body is complete, for any status code.
  std::function<void(URLSessionDataTask&, const URLResponse&, Ref<Error>)> didComplete = nullptr;
};

/// A request of a session. Suspended until resume() is called.
///
/// If there is no memory for the task, or no thread for its session, or if libcurl, which the first
/// session of the process loads, was missing, it ends with URLErrorUnknown.
/// If it could not be passed to the session's thread, resume() or cancel() calls didComplete.
///
/// Threads:  any.
/// Lifetime: its session keeps it alive from resume() until it has completed.
class TQ_EXPORT URLSessionDataTask final : public Subclass<URLSessionDataTask> {
 public:
  static constexpr std::string_view className = "URLSessionDataTask";
  /// The state of a task. It only moves forward.
  enum class State : std::uint8_t { suspended, running, canceling, completed };

  ~URLSessionDataTask() override;

  /// Starts the task. Later calls have no effect.
  void resume();
  /// Ends it with URLErrorCancelled unless it has ended, even if it was never resumed.
  void cancel();

  /// The current state.
  [[nodiscard]] State state() const noexcept { return state_; }
  /// The request as given, before redirects.
  [[nodiscard]] const URLRequest& originalRequest() const noexcept { return request_; }

  /// Bytes of the body so far, and the expected total, -1 while unknown. Any thread, at any time.
  [[nodiscard]] std::int64_t countOfBytesReceived() const noexcept { return received_; }
  [[nodiscard]] std::int64_t countOfBytesExpectedToReceive() const noexcept { return expected_; }
  [[nodiscard]] std::int64_t countOfBytesSent() const noexcept { return sent_; }

 private:
  friend class URLSession;
  friend class URLTransfer;

  URLSessionDataTask(class URLSession& session, URLRequest request, URLSessionTaskHandler handler);

  const URLRequest request_;
  URLSessionTaskHandler handler_;  // empty after the end
  const Ref<class URLSession> session_;
  std::atomic<State> state_{State::suspended};
  std::atomic<std::int64_t> received_{0};
  std::atomic<std::int64_t> expected_{-1};
  std::atomic<std::int64_t> sent_{0};
};

/// Runs tasks that share connections, cookies and a thread for their callbacks.
///
/// - Redirects are followed within HTTP and HTTPS. After 301 and 302 a POST becomes a GET, and
///   after 303 every method but HEAD does. Other methods are kept, with their body. Credentials for
///   one host are not sent to another.
/// - The content codings "gzip" and "deflate" are requested and decoded, unless the request has a
///   header Accept-Encoding or Range, or the session adds Accept-Encoding. A damaged or truncated
///   body, and any other coding or several, fail with URLErrorBadServerResponse. So does a transfer
///   coding other than "chunked", in any case.
/// - A body has the length that the server announced. Two different lengths, and a length that is
///   not a number, fail with URLErrorBadServerResponse.
/// - Servers with an invalid certificate are refused.
/// - More than 300 000 bytes or 2 000 lines of headers and trailers, including those of redirects,
///   fail with URLErrorBadServerResponse. So does a header line of more than about 100 000 bytes; a
///   trailer line of more than about 4 000 fails with URLErrorNetworkConnectionLost.
///
/// Threads:  any.
/// Lifetime: running tasks keep the session alive. Its thread ends some time after the last
///           reference is released. A process may exit while sessions exist.
class TQ_EXPORT URLSession final : public Subclass<URLSession> {
 public:
  static constexpr std::string_view className = "URLSession";
  /// The complete body (null on failure), the response as far as it has come, and the error or
  /// null.
  using Completion =
      std::function<void(Ref<Data> data, const URLResponse& response, Ref<Error> error)>;
  /// Maximum size of a body that is collected in memory, after decoding. The configuration can set
  /// a lower one: a few kilobytes may decode to gigabytes.
  static constexpr std::size_t kLargestCollectedBody = std::size_t{1} << 31;

  /// Returns a new session, with its own connections and cookies.
  [[nodiscard]] static Ref<URLSession> sessionWithConfiguration(
      URLSessionConfiguration configuration);
  ~URLSession() override;

  /// The configuration that it was created with.
  [[nodiscard]] const URLSessionConfiguration& configuration() const noexcept {
    return configuration_;
  }

  /// Returns a task that calls its handler while it runs.
  [[nodiscard]] Ref<URLSessionDataTask> dataTaskWithRequest(URLRequest request,
                                                            URLSessionTaskHandler handler);
  /// Returns a task that collects the body in memory. A body that is larger than
  /// kLargestCollectedBody or `configuration().readingLimits.decompressedBytes` ends with
  /// URLErrorDataLengthExceedsMaximum.
  [[nodiscard]] Ref<URLSessionDataTask> dataTaskWithRequest(URLRequest request,
                                                            Completion completionHandler);
  [[nodiscard]] Ref<URLSessionDataTask> dataTaskWithURL(Ref<URL> url, Completion completionHandler);

 private:
  friend class URLSessionDataTask;
  class [[gnu::visibility("hidden")]] Engine;

  explicit URLSession(URLSessionConfiguration configuration);

  const URLSessionConfiguration configuration_;
  Engine* const engine_;
};

}  // namespace tq
