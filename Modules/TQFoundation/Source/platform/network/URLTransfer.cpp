#include <curl/curl.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <new>
#include <optional>
#include <utility>

#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/platform/libraries/LazyLibrary.h>
#include <TQFoundation/platform/network/detail/URLSessionEngine.h>
#include <TQFoundation/platform/network/detail/URLTransfer.h>

namespace tq {
namespace {

/// The functions for transfers.
struct LibCurl : detail::LazyLibrary {
  LibCurl() : LazyLibrary(TQ_LIBCURL) {}
  TQ_LAZY_FUNCTION(curl_easy_cleanup);
  TQ_LAZY_FUNCTION(curl_easy_getinfo);
  TQ_LAZY_FUNCTION(curl_easy_header);
  TQ_LAZY_FUNCTION(curl_easy_init);
  TQ_LAZY_FUNCTION(curl_easy_nextheader);
  TQ_LAZY_FUNCTION(curl_easy_setopt);
  TQ_LAZY_FUNCTION(curl_easy_strerror);
  TQ_LAZY_FUNCTION(curl_slist_append);
  TQ_LAZY_FUNCTION(curl_slist_free_all);
};

std::int64_t errorCodeOf(CURLcode result) noexcept {
  switch (result) {
    case CURLE_UNSUPPORTED_PROTOCOL:
      return URLErrorUnsupportedURL;
    case CURLE_URL_MALFORMAT:
      return URLErrorBadURL;
    case CURLE_COULDNT_RESOLVE_HOST:
    case CURLE_COULDNT_RESOLVE_PROXY:
      return URLErrorCannotFindHost;
    case CURLE_COULDNT_CONNECT:
      return URLErrorCannotConnectToHost;
    case CURLE_OPERATION_TIMEDOUT:
      return URLErrorTimedOut;
    case CURLE_SSL_CONNECT_ERROR:
      return URLErrorSecureConnectionFailed;
    case CURLE_PEER_FAILED_VERIFICATION:
    case CURLE_SSL_CACERT_BADFILE:
      return URLErrorServerCertificateUntrusted;
    case CURLE_TOO_MANY_REDIRECTS:
      return URLErrorHTTPTooManyRedirects;
    case CURLE_GOT_NOTHING:
    case CURLE_SEND_ERROR:
    case CURLE_RECV_ERROR:
    case CURLE_PARTIAL_FILE:
    case CURLE_HTTP2:
    case CURLE_HTTP2_STREAM:
      return URLErrorNetworkConnectionLost;
    case CURLE_WEIRD_SERVER_REPLY:
    case CURLE_BAD_CONTENT_ENCODING:
      return URLErrorBadServerResponse;
    default:
      return URLErrorUnknown;
  }
}

std::string_view sentenceOf(std::int64_t code) noexcept {
  switch (code) {
    case URLErrorCancelled:
      return "cancelled";
    case URLErrorBadURL:
      return "bad URL";
    case URLErrorTimedOut:
      return "The request timed out.";
    case URLErrorUnsupportedURL:
      return "unsupported URL";
    case URLErrorCannotFindHost:
      return "A server with the specified hostname could not be found.";
    case URLErrorCannotConnectToHost:
      return "Could not connect to the server.";
    case URLErrorNetworkConnectionLost:
      return "The network connection was lost.";
    case URLErrorHTTPTooManyRedirects:
      return "too many HTTP redirects";
    case URLErrorBadServerResponse:
      return "The server’s response is invalid.";
    case URLErrorDataLengthExceedsMaximum:
      return "The response is too long to be kept in memory.";
    case URLErrorSecureConnectionFailed:
      return "An SSL error has occurred and a secure connection to the server cannot be made.";
    case URLErrorServerCertificateUntrusted:
      return "The certificate for this server is invalid.";
    case URLErrorCannotWriteToFile:
      return "The response could not be stored.";
    default:
      return "The request failed.";
  }
}

std::chrono::nanoseconds durationOf(double seconds) noexcept {
  constexpr double kLongest = 4e9;  // seconds; no overflow when it is added to a time
  const double limit = seconds > 0 ? std::min(seconds, kLongest) : kLongest;  // also for NaN
  return std::chrono::nanoseconds(static_cast<std::int64_t>(limit * 1e9));
}

// Limits for all responses to a task together, trailers included: libcurl keeps them all, and
// listing the headers of one takes time that grows with the square of their number.
constexpr std::size_t kMostHeaderBytes = 300'000;
constexpr std::size_t kMostHeaderLines = 2'000;

constexpr std::string_view kHeadStart = "HTTP/";  // of the status line
constexpr long kFirstFinalStatus = 200;           // further responses follow those below

constexpr int kLastResponse = -1;  // for libcurl's header functions

bool isHeaderName(std::string_view name) noexcept {
  return !name.empty() && std::ranges::all_of(name, [](char c) {
    return c > ' ' && c < 0x7f &&
           std::string_view("()<>@,;:\\\"/[]?={}").find(c) == std::string_view::npos;
  });
}

/// Returns true for headers that a session cannot add to all requests.
bool isOfOneRequest(std::string_view name) noexcept {
  return detail::isSameHeader(name, "Range") || detail::isSameHeader(name, "If-Range");
}

bool isHeaderValue(std::string_view value) noexcept {
  return value.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

bool holds(const HTTPHeaders& headers, std::string_view name) {
  return std::ranges::any_of(
      headers, [&](const auto& each) { return detail::isSameHeader(each.first, name); });
}

std::string_view trimmed(std::string_view text) noexcept {
  const std::size_t first = text.find_first_not_of(" \t\r\n");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t\r\n") - first + 1);
}

constexpr std::int64_t kUnknownLength = -1;

/// Returns the length of the body in its transferred form, which may be kUnknownLength; nullopt if
/// the lengths of the response contradict each other or are not numbers (RFC 9112, 6.3).
std::optional<std::int64_t> announcedLength(const URLResponse& response) {
  if (holds(response.allHeaderFields, "Transfer-Encoding")) return kUnknownLength;
  std::int64_t announced = kUnknownLength;
  for (const auto& [name, value] : response.allHeaderFields) {
    if (!detail::isSameHeader(name, "Content-Length")) continue;
    for (std::string_view rest = value; !rest.empty();) {
      const std::string_view text = trimmed(rest.substr(0, rest.find(',')));
      rest.remove_prefix(std::min(rest.find(','), rest.size() - 1) + 1);
      std::int64_t length = kUnknownLength;
      const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), length);
      if (fault != std::errc() || end != text.data() + text.size() || length < 0) {
        return std::nullopt;
      }
      if (announced != kUnknownLength && announced != length) return std::nullopt;
      announced = length;
    }
  }
  return announced;
}

std::string_view schemeOf(std::string_view url) noexcept { return url.substr(0, url.find(':')); }

constexpr std::string_view kAuthority = "://";  // precedes the name of the server

bool isSupported(std::string_view scheme) noexcept {
  return detail::isSameHeader(scheme, "http") || detail::isSameHeader(scheme, "https");
}

}  // namespace

Ref<Error> detail::urlError(std::int64_t code, std::string_view details,
                            std::string_view sentence) {
  const std::string_view description = sentence.empty() ? sentenceOf(code) : sentence;
  if (details.empty()) return Error::errorWithDomain(URLErrorDomain, code, description);
  return Error::errorWithDomain(
      URLErrorDomain, code,
      Dictionary::dictionaryWithEntries(
          {{LocalizedDescriptionKey, String::stringWithUTF8Repaired(description)},
           {DebugDescriptionKey, String::stringWithUTF8Repaired(details)}}));
}

const Ref<Error>& detail::exhaustedError() {
  static const auto& error = *new Ref<Error>(
      urlError(URLErrorUnknown, {},
               "The request failed because the system has no memory or no thread left."));
  return error;
}

bool URLTransfer::loadLibrary(std::string& reason) {
  return detail::lazyLibrary<LibCurl>(reason) != nullptr;
}

struct URLTransfer::Library {
  explicit Library(std::string reason = {}) : curl(*detail::lazyLibrary<LibCurl>(reason)) {}
  ~Library() {
    curl.curl_easy_cleanup(easy);
    curl.curl_slist_free_all(headers);
  }
  template <class Value>
  void set(CURLoption option, Value value) {
    curl.curl_easy_setopt(easy, option, value);
  }
  void addHeader(const char* line) {
    curl_slist* const longer = curl.curl_slist_append(headers, line);
    if (longer == nullptr) throw std::bad_alloc();
    headers = longer;
  }

  const LibCurl& curl;
  CURL* easy = nullptr;
  curl_slist* headers = nullptr;
  std::array<char, CURL_ERROR_SIZE> message{};
};

URLTransfer::URLTransfer(Ref<URLSessionDataTask> task, const URLSessionConfiguration& configuration,
                         void* cookies)
    : task_(std::move(task)), library_(std::make_unique<Library>()) {
  const URLRequest& request = task_->request_;
  idleLimit_ = durationOf(request.timeoutInterval > 0 ? request.timeoutInterval
                                                      : configuration.timeoutIntervalForRequest);
  totalLimit_ = durationOf(configuration.timeoutIntervalForResource);
  if (request.url == nullptr || !isHeaderName(request.HTTPMethod)) {
    ownError_ = URLErrorBadURL;
    return;
  }
  response_.url = request.url->absoluteString();
  if (response_.url.find('\0') != std::string::npos) {  // libcurl would stop reading there
    ownError_ = URLErrorBadURL;
    return;
  }
  host_ = response_.url.substr(
      0, response_.url.find_first_of("/?#", schemeOf(response_.url).size() + kAuthority.size()));
  library_->easy = library_->curl.curl_easy_init();
  if (library_->easy == nullptr) throw std::bad_alloc();
  prepare(configuration, cookies);
  if (!prepareHeaders(configuration.HTTPAdditionalHeaders)) {
    ownError_ = URLErrorBadURL;
    library_->curl.curl_easy_cleanup(std::exchange(library_->easy, nullptr));
  }
}

URLTransfer::~URLTransfer() = default;

void URLTransfer::prepare(const URLSessionConfiguration& configuration, void* cookies) {
  Library& curl = *library_;
  curl.set(CURLOPT_URL, response_.url.c_str());
  curl.set(CURLOPT_PROTOCOLS_STR, "http,https");
  curl.set(CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
  curl.set(CURLOPT_FOLLOWLOCATION, 1L);
  curl.set(CURLOPT_MAXREDIRS, static_cast<long>(configuration.HTTPMaximumRedirects));
  // Otherwise libcurl would end connecting after 300 s. Time-outs are those of deadline().
  curl.set(CURLOPT_CONNECTTIMEOUT_MS, long{std::numeric_limits<int>::max()});
  curl.set(CURLOPT_NOSIGNAL, 1L);
  curl.set(CURLOPT_BUFFERSIZE, 32L * 1024);  // fits in the fastest cache
  curl.set(CURLOPT_ERRORBUFFER, curl.message.data());
  curl.set(CURLOPT_SUPPRESS_CONNECT_HEADERS, 1L);
  curl.set(CURLOPT_HEADERFUNCTION, onHeader);
  curl.set(CURLOPT_HEADERDATA, this);
  curl.set(CURLOPT_WRITEFUNCTION, onBody);
  curl.set(CURLOPT_WRITEDATA, this);
  curl.set(CURLOPT_XFERINFOFUNCTION, onProgress);
  curl.set(CURLOPT_XFERINFODATA, this);
  curl.set(CURLOPT_NOPROGRESS, 0L);
  // One of these is called first when the task no longer waits for a connection: its host name is
  // resolved, or a connection is made, or an open connection is reused.
  curl.set(CURLOPT_RESOLVER_START_FUNCTION, onResolving);
  curl.set(CURLOPT_RESOLVER_START_DATA, this);
  curl.set(CURLOPT_SOCKOPTFUNCTION, onSocket);
  curl.set(CURLOPT_SOCKOPTDATA, this);
  curl.set(CURLOPT_PREREQFUNCTION, onConnected);
  curl.set(CURLOPT_PREREQDATA, this);
  if (!configuration.certificateAuthorities.empty()) {
    curl.set(CURLOPT_CAINFO, configuration.certificateAuthorities.c_str());
    curl.set(CURLOPT_CAPATH, static_cast<char*>(nullptr));
  }
  if (cookies != nullptr) {
    curl.set(CURLOPT_COOKIEFILE, "");  // enables cookies; no file is read
    curl.set(CURLOPT_SHARE, cookies);
  }
  // Parts of a body, and codings that the caller asked for, are passed on without decoding.
  const HTTPHeaders& own = task_->request_.HTTPHeaderFields;
  // Others are decoded here, because libcurl accepts a coded body that is truncated.
  curl.set(CURLOPT_HTTP_CONTENT_DECODING, 0L);
  decodes_ = !holds(own, "Accept-Encoding") && !holds(own, "Range") &&
             !holds(configuration.HTTPAdditionalHeaders, "Accept-Encoding");
  if (decodes_) curl.set(CURLOPT_ACCEPT_ENCODING, ContentDecoder::kCodings);
  prepareMethod();
}

void URLTransfer::prepareMethod() {
  Library& curl = *library_;
  const URLRequest& request = task_->request_;
  if (request.HTTPMethod == "HEAD") {
    curl.set(CURLOPT_NOBODY, 1L);
  } else if (request.HTTPMethod == "POST" || request.HTTPBody != nullptr) {
    const std::string_view body =
        request.HTTPBody != nullptr ? request.HTTPBody->view() : std::string_view("");
    curl.set(CURLOPT_POST, 1L);
    curl.set(CURLOPT_POSTFIELDS, body.data());  // not copied: the request owns it
    curl.set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    if (request.HTTPMethod != "POST") {
      curl.set(CURLOPT_CUSTOMREQUEST, request.HTTPMethod.c_str());
      curl.set(CURLOPT_POSTREDIR, CURL_REDIR_POST_301 | CURL_REDIR_POST_302);  // with its body
    }
  } else if (request.HTTPMethod != "GET") {
    curl.set(CURLOPT_CUSTOMREQUEST, request.HTTPMethod.c_str());
  }
}

bool URLTransfer::addHeaders(const HTTPHeaders& headers, const HTTPHeaders* unlessIn) {
  for (const auto& [name, value] : headers) {
    if (unlessIn != nullptr && (holds(*unlessIn, name) || isOfOneRequest(name))) continue;
    // A line break would let the value add a header.
    if (!isHeaderName(name) || !isHeaderValue(value)) return false;
    const std::string_view text = trimmed(value);
    std::string line = name;
    text.empty() ? line.append(";") : line.append(": ").append(text);
    library_->addHeader(line.c_str());
  }
  return true;
}

bool URLTransfer::prepareHeaders(const HTTPHeaders& additional) {
  const HTTPHeaders& own = task_->request_.HTTPHeaderFields;
  if (!addHeaders(own, nullptr) || !addHeaders(additional, &own)) return false;
  // Without a value the header is not sent, so nothing waits.
  if (!holds(own, "Expect")) library_->addHeader("Expect:");
  library_->set(CURLOPT_HTTPHEADER, library_->headers);
  return true;
}

void* URLTransfer::handle() const noexcept { return library_->easy; }

bool URLTransfer::isCancelled() const noexcept {
  return task_->state_ == URLSessionDataTask::State::canceling;
}

URLTransfer::Time URLTransfer::deadline() const noexcept {
  const Time last = begin_ + totalLimit_;
  return isUnderWay_ ? std::min(lastActivity_ + idleLimit_, last) : last;
}

void URLTransfer::getUnderWay() noexcept {
  if (!std::exchange(isUnderWay_, true)) touch();
}

int URLTransfer::onResolving(void*, void*, void* self) noexcept {
  static_cast<URLTransfer*>(self)->getUnderWay();
  return 0;
}

int URLTransfer::onSocket(void* self, int, int) noexcept {
  static_cast<URLTransfer*>(self)->getUnderWay();
  return CURL_SOCKOPT_OK;
}

int URLTransfer::onConnected(void* self, char*, char*, int, int) noexcept {
  static_cast<URLTransfer*>(self)->getUnderWay();
  return CURL_PREREQFUNC_OK;
}

std::size_t URLTransfer::onHeader(char* bytes, std::size_t size, std::size_t count,
                                  void* self) noexcept {
  auto& transfer = *static_cast<URLTransfer*>(self);
  transfer.touch();
  const std::string_view line(bytes, size * count);
  transfer.headerBytes_ += line.size();
  const bool isTooLong =
      transfer.headerBytes_ > kMostHeaderBytes || ++transfer.headerLines_ > kMostHeaderLines;
  const bool isLast = line == "\r\n" || line == "\n";        // the empty line after the headers
  const bool isDamaged = !isLast && line.starts_with('\r');  // libcurl ends the headers here, too
  if (detail::isSameHeader(line.substr(0, kHeadStart.size()), kHeadStart)) {
    transfer.isHeadComplete_ = false;
  }
  const bool goesOn = transfer.withMemory([&] {
    if (isTooLong) {
      return transfer.fail(URLErrorBadServerResponse, "The server’s headers are too long.");
    }
    if (isDamaged) return transfer.fail(URLErrorBadServerResponse);
    return !isLast || transfer.isResponseTold_ || transfer.headersEnded();
  });
  transfer.touch();
  return goesOn ? line.size() : 0;
}

bool URLTransfer::headersEnded() {
  curl_header* location = nullptr;
  const long code = statusCode();
  const bool isRedirect =
      code >= 300 && code < 400 &&
      library_->curl.curl_easy_header(library_->easy, "Location", 0, CURLH_HEADER, kLastResponse,
                                      &location) == CURLHE_OK;
  isHeadComplete_ = code >= kFirstFinalStatus;
  // "See other" requests a GET for any method (RFC 9110, 15.4.4).
  constexpr long kSeeOther = 303;
  if (isRedirect && code == kSeeOther) {
    library_->set(CURLOPT_CUSTOMREQUEST, static_cast<char*>(nullptr));
  }
  return code < kFirstFinalStatus || isRedirect ||
         tellResponse();  // more headers follow in the first two cases
}

long URLTransfer::statusCode() const {
  long code = 0;
  library_->curl.curl_easy_getinfo(library_->easy, CURLINFO_RESPONSE_CODE, &code);
  return code;
}

/// Returns the URL of the last request, after redirects.
std::string URLTransfer::lastURL() const {
  const char* url = "";
  library_->curl.curl_easy_getinfo(library_->easy, CURLINFO_EFFECTIVE_URL, &url);
  return *url != '\0' ? url : response_.url;  // none was sent
}

/// Returns whether the server has sent anything.
bool URLTransfer::hasAnswer() const {
  curl_off_t firstByte = 0;  // microseconds
  library_->curl.curl_easy_getinfo(library_->easy, CURLINFO_STARTTRANSFER_TIME_T, &firstByte);
  return firstByte > 0;
}

void URLTransfer::readResponse() {
  response_.url = lastURL();
  response_.statusCode = static_cast<int>(statusCode());
  for (curl_header* header = nullptr; (header = library_->curl.curl_easy_nextheader(
                                           library_->easy, CURLH_HEADER, kLastResponse, header));) {
    response_.allHeaderFields.emplace_back(header->name, header->value);
  }
  // libcurl sets its own length only after it has handled the last header line.
  if (!holds(response_.allHeaderFields, "Content-Encoding")) {
    response_.expectedContentLength = announcedLength(response_).value_or(kUnknownLength);
  }
}

bool URLTransfer::fail(std::int64_t code, std::string sentence) {
  ownError_ = code;
  ownSentence_ = std::move(sentence);
  return false;
}

bool URLTransfer::tellResponse() {
  isResponseTold_ = true;
  readResponse();
  long version = 0;
  library_->curl.curl_easy_getinfo(library_->easy, CURLINFO_HTTP_VERSION, &version);
  isMultiplexed_ = version == CURL_HTTP_VERSION_2_0;
  if (!announcedLength(response_)) {
    return fail(URLErrorBadServerResponse, "The server announced an invalid length of the body.");
  }
  const std::string framing = detail::codingsOf(response_, "Transfer-Encoding");
  if (!framing.empty() && !detail::isSameHeader(framing, "chunked")) {
    return fail(URLErrorBadServerResponse,
                "The server returned a body in the unknown transfer coding “" + framing + "”.");
  }
  const std::string coding = detail::codingsOf(response_, "Content-Encoding");
  if (decodes_ && !coding.empty()) {
    decoder_ = ContentDecoder::decoderForCoding(coding);
    if (decoder_ == nullptr) {
      return fail(URLErrorBadServerResponse,
                  "The server returned a body in the unknown coding “" + coding + "”.");
    }
  }
  task_->expected_ = response_.expectedContentLength;
  const auto& tell = task_->handler_.didReceiveResponse;
  if (!tell || tell(*task_, response_)) return true;
  return fail(URLErrorCancelled);
}

std::size_t URLTransfer::onBody(char* bytes, std::size_t size, std::size_t count,
                                void* self) noexcept {
  auto& transfer = *static_cast<URLTransfer*>(self);
  const bool isTaken = transfer.withMemory([&] {
    return transfer.receive({reinterpret_cast<const std::byte*>(bytes), size * count});
  });
  transfer.touch();
  return isTaken ? size * count : 0;
}

bool URLTransfer::receive(std::span<const std::byte> bytes) {
  if (isCancelled()) return false;
  if (!isResponseTold_ && !tellResponse()) return false;
  if (decoder_ == nullptr) return pass(bytes);
  const auto take = [this](std::span<const std::byte> decoded) { return pass(decoded); };
  if (decoder_->decode(bytes, take)) return true;
  return ownError_ ? false
                   : fail(URLErrorBadServerResponse, "The encoded body could not be decoded.");
}

bool URLTransfer::pass(std::span<const std::byte> bytes) {
  if (isCancelled()) return false;
  task_->received_ += static_cast<std::int64_t>(bytes.size());
  const auto& take = task_->handler_.didReceiveData;
  if (!take || take(*task_, bytes)) return true;
  return fail(URLErrorCannotWriteToFile);
}

// Responses that have no body may still name a coding, and an empty body may lack its frame.
bool URLTransfer::hasTruncatedCoding() const {
  constexpr int kNoContent = 204;
  constexpr int kNotModified = 304;
  if (decoder_ == nullptr || decoder_->isComplete()) return false;
  return task_->request_.HTTPMethod != "HEAD" && response_.statusCode != kNoContent &&
         response_.statusCode != kNotModified &&
         (decoder_->hasBegun() || announcedLength(response_) != 0);
}

int URLTransfer::onProgress(void* self, std::int64_t, std::int64_t, std::int64_t,
                            std::int64_t sent) noexcept {
  auto& transfer = *static_cast<URLTransfer*>(self);
  if (transfer.task_->sent_.exchange(sent) != sent) transfer.touch();
  return transfer.isCancelled() ? 1 : 0;
}

/// Sets the error of a scheme that is not supported, or of a response that is not HTTP, which
/// libcurl reports by the same code.
void URLTransfer::explainUnsupportedProtocol() {
  const std::string_view scheme = schemeOf(response_.url);
  if (isSupported(schemeOf(lastURL()))) {
    fail(URLErrorBadServerResponse);
  } else if (isSupported(scheme)) {
    fail(URLErrorUnsupportedURL, "The server redirects to a URL whose scheme is not supported.");
  } else {
    fail(URLErrorUnsupportedURL, "The scheme “" + std::string(scheme) + "” is not supported.");
  }
}

/// Returns the error that a transfer with this result ends with, or null.
Ref<Error> URLTransfer::errorOf(int result) {
  const auto code = static_cast<CURLcode>(result);
  const char* const message = library_->message.data();
  if (code == CURLE_UNSUPPORTED_PROTOCOL) explainUnsupportedProtocol();
  // libcurl reports a header line that is too long for it as a lack of memory, and one that
  // continues no other line as a bad argument.
  if ((code == CURLE_OUT_OF_MEMORY || code == CURLE_BAD_FUNCTION_ARGUMENT) && hasAnswer()) {
    fail(URLErrorBadServerResponse, "The server’s headers are invalid or too long.");
  }
  if (code != CURLE_OK) {
    return detail::urlError(ownError_.value_or(errorCodeOf(code)),
                            *message != '\0' ? message : library_->curl.curl_easy_strerror(code),
                            ownSentence_);
  }
  // libcurl accepts a response that ends within its headers.
  if (!isResponseTold_ && !isHeadComplete_) {
    return detail::urlError(URLErrorNetworkConnectionLost,
                            "The response has ended in its headers.");
  }
  const bool isTold = isResponseTold_ || tellResponse();
  if (isTold && hasTruncatedCoding()) {
    fail(URLErrorBadServerResponse, "The encoded body is truncated.");
  } else if (isTold) {
    return nullptr;
  }
  return detail::urlError(ownError_.value_or(URLErrorCancelled), {}, ownSentence_);
}

/// Runs a step that may need memory. @return its result; false if there is no memory
template <class Step>
bool URLTransfer::withMemory(const Step& step) noexcept {
  try {
    return step();
  } catch (const std::bad_alloc&) {
    isExhausted_ = true;
    return false;
  }
}

void URLTransfer::completeWithResult(int result) noexcept {
  if (isCancelled()) return completeWithError(URLErrorCancelled);
  Ref<Error> error;
  withMemory([&] { return (error = errorOf(result)) == nullptr; });
  complete(std::move(error));
}

void URLTransfer::completeWithError(std::int64_t code) noexcept {
  Ref<Error> error;
  withMemory([&] {
    error = detail::urlError(ownError_.value_or(code), {}, ownSentence_);
    return true;
  });
  complete(std::move(error));
}

void URLTransfer::complete(Ref<Error> error) noexcept {
  task_->state_ = URLSessionDataTask::State::completed;
  if (!isResponseTold_ && library_->easy != nullptr) {
    withMemory([this] {
      readResponse();
      return true;
    });
  }
  if (isExhausted_) error = detail::exhaustedError();
  const auto last = std::exchange(task_->handler_, {});
  if (last.didComplete) last.didComplete(*task_, response_, std::move(error));
}

void URLTransfer::refuse(URLSessionDataTask& task, Ref<Error> error) noexcept {
  task.state_ = URLSessionDataTask::State::completed;
  const auto last = std::exchange(task.handler_, {});
  if (last.didComplete) last.didComplete(task, {}, std::move(error));
}

}  // namespace tq
