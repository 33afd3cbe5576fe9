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

/// Names are compared without regard to case.
using HTTPHeaders = std::vector<std::pair<std::string, std::string>>;

/// From whom cookies are taken.
enum class HTTPCookieAcceptPolicy : std::uint8_t { always, never, onlyFromMainDocumentDomain };
/// Whether answers may come from a cache.
enum class URLRequestCachePolicy : std::uint8_t { useProtocolCachePolicy, reloadIgnoringCache };

/// How a session behaves. These are the values of the default configuration.
struct URLSessionConfiguration {
  /// The values below.
  [[nodiscard]] static URLSessionConfiguration defaultSessionConfiguration() { return {}; }

  /// Seconds without any data, also to connect; not while the task waits for others to let it have
  /// a connection, nor while a callback runs. 0 or less, or not a number: no limit.
  double timeoutIntervalForRequest = 60;
  /// Seconds for the whole of a task; 0 or less, or not a number: no limit.
  double timeoutIntervalForResource = 604800;
  int HTTPMaximumConnectionsPerHost = 6;  ///< most connections to one server at a time
  int HTTPMaximumRedirects = 20;          ///< more of them fail with URLErrorHTTPTooManyRedirects
  bool HTTPShouldUsePipelining = false;   ///< of no effect: the protocol decides
  bool HTTPShouldSetCookies = true;       ///< cookies are kept in memory while the session lives
  /// `never` takes no cookies; the other two are alike.
  HTTPCookieAcceptPolicy cookieAcceptPolicy = HTTPCookieAcceptPolicy::onlyFromMainDocumentDomain;
  /// Of no effect: a session keeps no answers.
  URLRequestCachePolicy requestCachePolicy = URLRequestCachePolicy::useProtocolCachePolicy;
  bool allowsCellularAccess = true;    ///< of no effect: a desktop's connections are all alike
  bool discretionary = false;          ///< of no effect: every task begins at once
  HTTPHeaders HTTPAdditionalHeaders;   ///< added to each request that does not say otherwise
  std::string certificateAuthorities;  ///< path of a PEM file trusted instead of the system's
};

/// A request to be made: a value.
struct URLRequest {
  /// Where to; none fails with URLErrorBadURL.
  Ref<URL> url;
  /// As sent.
  std::string HTTPMethod = "GET";
  /// Added to the session's, and win over them.
  HTTPHeaders HTTPHeaderFields;
  Ref<Data> HTTPBody;  ///< sent with POST, PUT and the like; may be none
  /// Seconds without any data, as timeoutIntervalForRequest; 0 or less, or not a number: the
  /// session's.
  double timeoutInterval = 0;
};

/// What a server says before the body. Threads: any; immutable.
struct URLResponse {
  std::string url;                          ///< behind all redirects
  int statusCode = 0;                       ///< 200, 404 and so on; 0 before there is an answer
  std::int64_t expectedContentLength = -1;  ///< bytes; -1: not told
  HTTPHeaders allHeaderFields;              ///< as sent, in order

  /// The first header of that name; empty when there is none.
  [[nodiscard]] TQ_EXPORT std::string_view valueForHTTPHeaderField(std::string_view field) const;
};

class URLSessionDataTask;

/// What a task tells while it runs: on the session's own thread, one call at a time, each of the
/// session's tasks among them. Slow ones hold back the sender, so a body of any size takes constant
/// memory. They may not throw: that stops the process. Each may be empty.
struct URLSessionTaskHandler {
  /// Before the body. A false answer cancels the task.
  std::function<bool(URLSessionDataTask&, const URLResponse&)> didReceiveResponse;
  /// A piece of the body, lent for the call. A false answer ends the task with
  /// URLErrorCannotWriteToFile.
  std::function<bool(URLSessionDataTask&, std::span<const std::byte>)> didReceiveData;
  /// Once, last. Without an error all of the body has come, whatever the status code is.
  std::function<void(URLSessionDataTask&, const URLResponse&, Ref<Error>)> didComplete;
};

/// One request under way. Made by a session, suspended until resume().
/// Threads: any. Held by its session from resume() until it has completed.
class TQ_EXPORT URLSessionDataTask final : public Subclass<URLSessionDataTask> {
 public:
  static constexpr std::string_view className = "URLSessionDataTask";
  /// Where a task stands; it never goes back.
  enum class State : std::uint8_t { suspended, running, canceling, completed };

  ~URLSessionDataTask() override;

  /// Begins; called again it does nothing.
  void resume();
  /// Ends it with URLErrorCancelled, unless it has ended; also one that was never resumed.
  void cancel();

  /// At this moment.
  [[nodiscard]] State state() const noexcept { return state_; }
  /// As given, before redirects.
  [[nodiscard]] const URLRequest& originalRequest() const noexcept { return request_; }

  /// Bytes of the body so far, and in all: -1 while that is not known. Any thread, at any time.
  [[nodiscard]] std::int64_t countOfBytesReceived() const noexcept { return received_; }
  [[nodiscard]] std::int64_t countOfBytesExpectedToReceive() const noexcept { return expected_; }
  [[nodiscard]] std::int64_t countOfBytesSent() const noexcept { return sent_; }

 private:
  friend class URLSession;
  friend class URLTransfer;

  URLSessionDataTask(class URLSession& session, URLRequest request, URLSessionTaskHandler handler);

  const URLRequest request_;
  const URLSessionTaskHandler handler_;
  const Ref<class URLSession> session_;
  std::atomic<State> state_{State::suspended};
  std::atomic<std::int64_t> received_{0};
  std::atomic<std::int64_t> expected_{-1};
  std::atomic<std::int64_t> sent_{0};
};

/// Tasks that share connections, cookies and a thread for their callbacks.
///
/// Follows redirects (within HTTP and HTTPS; a POST that is redirected by 301 or 302 becomes a GET,
/// and so does all but a HEAD by 303; other methods stay as they are, with their body; credentials
/// of one host are not told to another), takes any content coding that the network library knows,
/// and refuses servers whose certificate is not in order. Headers and trailers of more than 300 000
/// bytes, those of redirects among them, fail with URLErrorBadServerResponse.
///
/// Threads:  any.
/// Lifetime: tasks under way keep the session alive; its thread ends some time after the last
///           reference has gone. A process may exit with sessions alive.
class TQ_EXPORT URLSession final : public Subclass<URLSession> {
 public:
  static constexpr std::string_view className = "URLSession";
  /// The whole body (none on failure), the response as far as it came, and what went wrong.
  using Completion =
      std::function<void(Ref<Data> data, const URLResponse& response, Ref<Error> error)>;
  /// What a body that is collected in memory may hold.
  static constexpr std::size_t kLargestCollectedBody = std::size_t{1} << 31;

  /// A session of its own, with its own connections and cookies.
  [[nodiscard]] static Ref<URLSession> sessionWithConfiguration(
      URLSessionConfiguration configuration);
  ~URLSession() override;

  /// A copy of what it was made with.
  [[nodiscard]] const URLSessionConfiguration& configuration() const noexcept {
    return configuration_;
  }

  /// A task that tells its handler as it goes.
  [[nodiscard]] Ref<URLSessionDataTask> dataTaskWithRequest(URLRequest request,
                                                            URLSessionTaskHandler handler);
  /// A task that collects the body; larger ones end with URLErrorDataLengthExceedsMaximum.
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
