#include <TQFoundation/platform/network/FileDownload.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <optional>
#include <string>

#include <TQFoundation/platform/network/detail/PartialFile.h>
#include <TQFoundation/platform/network/detail/URLSessionEngine.h>
#include <TQFoundation/platform/threads/Lock.h>

namespace tq {
namespace {

/// "bytes 100-199/200"; total is -1 for "*".
struct ContentRange {
  std::int64_t first = 0;
  std::int64_t last = 0;
  std::int64_t total = -1;
};

std::optional<std::int64_t> takeNumber(std::string_view& text, std::string_view terminator) {
  std::int64_t number = -1;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  if (fault != std::errc() || number < 0 || !text.starts_with(terminator)) return std::nullopt;
  text.remove_prefix(terminator.size());
  return number;
}

std::optional<ContentRange> contentRange(std::string_view text) {
  constexpr std::string_view kUnit = "bytes ";
  if (!text.starts_with(kUnit)) return std::nullopt;
  text.remove_prefix(kUnit.size());
  const auto first = takeNumber(text, "-");
  if (!first) return std::nullopt;
  const auto last = takeNumber(text, "/");
  if (!last || *last < *first) return std::nullopt;
  if (text == "*") return ContentRange{*first, *last, -1};
  const auto total = takeNumber(text, "");
  if (!total || !text.empty() || *last >= *total) return std::nullopt;
  return ContentRange{*first, *last, *total};
}

/// Returns the length in "bytes */200", the field of a response without such a part.
std::optional<std::int64_t> unsatisfiedLength(std::string_view text) {
  constexpr std::string_view kUnit = "bytes */";
  if (!text.starts_with(kUnit)) return std::nullopt;
  text.remove_prefix(kUnit.size());
  const auto length = takeNumber(text, "");
  return text.empty() ? length : std::nullopt;
}

/// Returns the validator of this version for If-Range (RFC 9110, 13.1.5): a strong entity tag, or
/// the modification date. A date within the second of the response does not count, since the file
/// may change again in that second. Empty if there is none.
std::string_view validatorOf(const URLResponse& response) {
  const std::string_view tag = response.valueForHTTPHeaderField("ETag");
  if (tag.starts_with('"')) return tag;
  const std::string_view changed = response.valueForHTTPHeaderField("Last-Modified");
  const std::string_view now = response.valueForHTTPHeaderField("Date");
  return now.empty() || changed == now ? std::string_view() : changed;
}

/// Returns true if the response has another validator of the same kind as `validator`.
bool isOfAnotherVersion(const URLResponse& response, std::string_view validator) {
  const bool isTag = validator.starts_with('"');
  const std::string_view name = response.valueForHTTPHeaderField(isTag ? "ETag" : "Last-Modified");
  return !name.empty() && name != validator;
}

/// Returns true for headers that the download sets itself.
bool isOurs(const std::pair<std::string, std::string>& header) {
  constexpr std::string_view kOurs[] = {"Range", "If-Range", "Accept-Encoding"};
  return std::ranges::any_of(
      kOurs, [&](std::string_view name) { return detail::isSameHeader(header.first, name); });
}

bool isGet(const URLRequest& request) {
  return request.HTTPMethod == "GET" && request.HTTPBody == nullptr;
}

}  // namespace

/// Owned by the download and by the handler of its task. The task is released when it ends.
class FileDownload::Transfer : public std::enable_shared_from_this<Transfer> {
 public:
  Transfer(URLSession& session, URLRequest request, FileDownloadHandler handler,
           std::unique_ptr<detail::PartialFile> partial)
      : received(partial->length()),
        session_(share(session)),
        request_(std::move(request)),
        handler_(std::move(handler)),
        partial_(std::move(partial)) {
    std::erase_if(request_.HTTPHeaderFields, isOurs);
    request_.HTTPHeaderFields.emplace_back("Accept-Encoding",
                                           "identity");  // so that ranges refer to the file
  }

  void resume() {
    const Locked guard(lock_);
    if (isBegun_) return;
    begin();
  }

  void cancel() {
    const Locked guard(lock_);
    isCancelled_ = true;
    if (!isBegun_) return begin();
    if (task_ != nullptr) task_->cancel();
  }

  std::atomic<std::int64_t> received;
  std::atomic<std::int64_t> expected{-1};

 private:
  /// Requests the body, or the rest of it.
  void begin() TQ_REQUIRES(lock_) {
    isBegun_ = true;
    URLRequest request = request_;
    const bool goesOn = isGet(request_) && !partial_->validator().empty() && partial_->length() > 0;
    if (goesOn) {
      request.HTTPHeaderFields.emplace_back("Range",
                                            "bytes=" + std::to_string(partial_->length()) + "-");
      request.HTTPHeaderFields.emplace_back("If-Range", partial_->validator());
    }
    asked_ = goesOn ? partial_->length() : 0;
    URLSessionTaskHandler handler;
    handler.didReceiveResponse = [self = shared_from_this()](URLSessionDataTask&,
                                                             const URLResponse& response) {
      return self->take(response);
    };
    handler.didReceiveData = [self = shared_from_this()](URLSessionDataTask&,
                                                         std::span<const std::byte> bytes) {
      return self->take(bytes);
    };
    handler.didComplete = [self = shared_from_this()](
                              URLSessionDataTask&, const URLResponse& response, Ref<Error> error) {
      self->complete(response, std::move(error));
    };
    task_ = session_->dataTaskWithRequest(std::move(request), std::move(handler));
    isCancelled_ ? task_->cancel() : task_->resume();
  }

  bool take(const URLResponse& response) {
    constexpr int kWhole = 200;
    constexpr int kPart = 206;
    constexpr int kNoSuchPart = 416;
    const std::string_view field = response.valueForHTTPHeaderField("Content-Range");
    const auto range = contentRange(field);
    const bool isOther = isOfAnotherVersion(response, partial_->validator());
    if (response.statusCode == kWhole) {
      expected = response.expectedContentLength;
      if (!keep(partial_->beginAnew(isGet(request_) ? validatorOf(response) : ""))) return false;
    } else if (response.statusCode == kPart && !isOther && asked_ > 0 && range &&
               range->first == asked_) {
      expected = range->total;
    } else if (asked_ > 0 &&
               (response.statusCode == kNoSuchPart || (response.statusCode == kPart && isOther))) {
      // Either all of this version is here already, or the server has another one. A server that
      // ignores If-Range sends a part of another version.
      isWhole_ = !isOther && unsatisfiedLength(field) == asked_;
      beginsAnew_ = !isWhole_ && keep(partial_->beginAnew({}));
      return false;
    } else {
      keep(detail::urlError(URLErrorBadServerResponse,
                            "HTTP status " + std::to_string(response.statusCode)));
      return false;
    }
    received = partial_->length();
    tell();
    return true;
  }

  bool take(std::span<const std::byte> bytes) {
    if (!keep(partial_->append(bytes))) return false;
    received = partial_->length();
    tell();
    return true;
  }

  void complete(const URLResponse& response, Ref<Error> error) {
    {
      const Locked guard(lock_);
      task_ = nullptr;
      if (std::exchange(beginsAnew_, false) && !isCancelled_) return begin();
    }
    if (isWhole_) error = nullptr;
    if (ownError_ != nullptr) error = std::exchange(ownError_, nullptr);
    if (error == nullptr && expected >= 0 && partial_->length() != expected) {
      error = detail::urlError(URLErrorBadServerResponse,
                               "the body does not have the announced length");
    }
    if (error == nullptr) error = partial_->finish();
    partial_ = nullptr;  // another download may resume from here
    if (handler_.didComplete) handler_.didComplete(response, std::move(error));
  }

  void tell() const {
    if (handler_.didWriteData) handler_.didWriteData(received, expected);
  }

  /// @return whether there was no error to keep
  bool keep(Ref<Error> error) {
    ownError_ = std::move(error);
    return ownError_ == nullptr;
  }

  const Ref<URLSession> session_;
  URLRequest request_;
  const FileDownloadHandler handler_;

  // Used only by the session's thread after the start.
  std::unique_ptr<detail::PartialFile> partial_;
  std::int64_t asked_ = 0;  // start of the requested part; 0: the whole body
  bool beginsAnew_ = false;
  bool isWhole_ = false;  // together with the bytes of earlier attempts
  Ref<Error> ownError_;   // the reason if one of our callbacks ended the task

  Lock lock_;
  Ref<URLSessionDataTask> task_ TQ_GUARDED_BY(lock_);
  bool isBegun_ TQ_GUARDED_BY(lock_) = false;
  bool isCancelled_ TQ_GUARDED_BY(lock_) = false;
};

Ref<FileDownload> FileDownload::downloadWithRequest(URLSession& session, URLRequest request,
                                                    const URL& file, FileDownloadHandler handler,
                                                    Ref<Error>* error) {
  const std::string source = request.url != nullptr ? request.url->absoluteString() : "";
  auto partial = detail::PartialFile::open(file, source, error);
  if (partial == nullptr) return nullptr;
  return Ref<FileDownload>::adopt(new FileDownload(std::make_shared<Transfer>(
      session, std::move(request), std::move(handler), std::move(partial))));
}

FileDownload::~FileDownload() = default;

void FileDownload::resume() { transfer_->resume(); }
void FileDownload::cancel() { transfer_->cancel(); }

std::int64_t FileDownload::countOfBytesReceived() const noexcept { return transfer_->received; }
std::int64_t FileDownload::countOfBytesExpectedToReceive() const noexcept {
  return transfer_->expected;
}

}  // namespace tq
