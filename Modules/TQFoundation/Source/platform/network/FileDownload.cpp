#include <TQFoundation/platform/network/FileDownload.h>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <new>
#include <optional>
#include <string>
#include <utility>

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
  std::int64_t number = 0;
  const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  if (fault != std::errc() || !text.starts_with(terminator)) return std::nullopt;
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
/// may change again in that second. Empty if there is none, or if it is so long that a server might
/// refuse a request with it.
std::string_view validatorOf(const URLResponse& response) {
  constexpr std::size_t kLongest = 1'000;
  const std::string_view tag = response.valueForHTTPHeaderField("ETag");
  if (tag.starts_with('"') && tag.size() <= kLongest) return tag;
  const std::string_view changed = response.valueForHTTPHeaderField("Last-Modified");
  const std::string_view now = response.valueForHTTPHeaderField("Date");
  const bool isUsable = !now.empty() && changed != now && changed.size() <= kLongest;
  return isUsable ? changed : std::string_view();
}

/// Returns the response's validator of the same kind as `validator`; empty if it has none.
std::string_view counterpartOf(std::string_view validator, const URLResponse& response) {
  return response.valueForHTTPHeaderField(validator.starts_with('"') ? "ETag" : "Last-Modified");
}

/// Returns whether the body is encoded, although "identity" was requested.
bool isCoded(const URLResponse& response) {
  return !detail::codingsOf(response, "Content-Encoding").empty();
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

  // The task is started without the lock held, because it may complete at once.
  void resume() {
    Ref<URLSessionDataTask> task;
    {
      const Locked guard(lock_);
      if (isBegun_) return;
      task = begin();
    }
    task->resume();
  }

  void cancel() {
    Ref<URLSessionDataTask> task;
    {
      const Locked guard(lock_);
      isCancelled_ = true;
      task = isBegun_ ? task_ : begin();
    }
    if (task != nullptr) task->cancel();
  }

  std::atomic<std::int64_t> received;
  std::atomic<std::int64_t> expected{-1};

 private:
  /// Returns a new task that requests the body, or the rest of it.
  Ref<URLSessionDataTask> begin() TQ_REQUIRES(lock_) {
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
    isBegun_ = true;
    return task_;
  }

  /// Starts again if another version was found. @return whether it does
  bool beginsAgain() {
    Ref<URLSessionDataTask> task;
    {
      const Locked guard(lock_);
      task_ = nullptr;
      if (!std::exchange(beginsAnew_, false) || isCancelled_) return false;
      task = begin();
    }
    task->resume();
    return true;
  }

  /// Returns the error that the download ends with. Without one, the file is in its place.
  Ref<Error> endOf(Ref<Error> error) {
    if (isWhole_) error = nullptr;
    if (ownError_ != nullptr) error = std::exchange(ownError_, nullptr);
    if (error == nullptr && expected >= 0 && partial_->length() != expected) {
      error = detail::urlError(URLErrorBadServerResponse, {},
                               "The server returned fewer bytes than announced.");
    }
    return error == nullptr ? partial_->finish() : error;
  }

  /// What a response means for the bytes that have been received already.
  enum class Meaning : std::uint8_t {
    whole,           ///< a body from its start
    rest,            ///< the bytes that follow the received ones, of the same version
    nothingMissing,  ///< the received bytes are the whole body
    anotherVersion,  ///< cannot be combined with the received bytes: the download starts again
    status,          ///< no body of the file
    anotherPart,     ///< not the requested part
    coded,           ///< not the bytes of the file
  };

  // A part counts only with the validator and the total length of the first response. A server that
  // ignores If-Range sends a part of another version.
  Meaning meaningOf(const URLResponse& response) const {
    constexpr int kWhole = 200;
    constexpr int kPart = 206;
    constexpr int kNoSuchPart = 416;
    const int status = response.statusCode;
    if (status == kWhole) return isCoded(response) ? Meaning::coded : Meaning::whole;
    if (asked_ == 0 || (status != kPart && status != kNoSuchPart)) return Meaning::status;

    const std::string_view validator = counterpartOf(partial_->validator(), response);
    const std::int64_t total = partial_->total();
    const auto isTotal = [&](std::int64_t length) { return total < 0 || length == total; };
    const std::string_view field = response.valueForHTTPHeaderField("Content-Range");
    if (status == kNoSuchPart) {
      // Without the validator, another version could be as long as the received bytes.
      const bool isSame = validator.empty() ? total == asked_ : validator == partial_->validator();
      return isSame && unsatisfiedLength(field) == asked_ && isTotal(asked_)
                 ? Meaning::nothingMissing
                 : Meaning::anotherVersion;
    }
    if (isCoded(response)) return Meaning::coded;
    const auto range = contentRange(field);
    if (!range) return Meaning::anotherPart;
    if (validator != partial_->validator() || range->total < 0 || !isTotal(range->total)) {
      return Meaning::anotherVersion;
    }
    return range->first == asked_ ? Meaning::rest : Meaning::anotherPart;
  }

  bool take(const URLResponse& response) {
    switch (meaningOf(response)) {
      case Meaning::whole:
        end_ = expected = response.expectedContentLength;
        if (!keep(partial_->beginAnew(isGet(request_) ? validatorOf(response) : "", expected))) {
          return false;
        }
        break;
      case Meaning::rest: {
        const auto range = contentRange(response.valueForHTTPHeaderField("Content-Range"));
        expected = range->total;
        partial_->setTotal(expected);
        end_ = range->last + 1;
        break;
      }
      case Meaning::nothingMissing:
        isWhole_ = true;
        return false;
      case Meaning::anotherVersion:
        beginsAnew_ = keep(partial_->beginAnew({}, -1));
        return false;
      case Meaning::status:
        return refuse("The server returned status " + std::to_string(response.statusCode) +
                      " instead of the file.");
      case Meaning::anotherPart:
        return refuse("The server returned another part of the file than the requested one.");
      case Meaning::coded:
        return refuse("The server returned an encoded body, which was not requested.");
    }
    received = partial_->length();
    tell();
    return true;
  }

  // If more bytes than announced have arrived, those before them cannot be trusted either.
  bool take(std::span<const std::byte> bytes) {
    if (end_ >= 0 && static_cast<std::int64_t>(bytes.size()) > end_ - partial_->length()) {
      return keep(partial_->beginAnew({}, -1)) &&
             refuse("The server returned more bytes than announced.");
    }
    if (!keep(partial_->append(bytes))) return false;
    received = partial_->length();
    tell();
    return true;
  }

  void complete(const URLResponse& response, Ref<Error> error) {
    try {
      if (beginsAgain()) return;
      error = endOf(std::move(error));
    } catch (const std::bad_alloc&) {
      error = detail::exhaustedError();
    }
    partial_ = nullptr;  // another download may resume from here
    const auto last = std::exchange(handler_, {});
    if (last.didComplete) last.didComplete(response, std::move(error));
  }

  void tell() const {
    if (handler_.didWriteData) handler_.didWriteData(received, expected);
  }

  /// @return false
  bool refuse(const std::string& sentence) {
    return keep(detail::urlError(URLErrorBadServerResponse, {}, sentence));
  }

  /// @return whether there was no error before, so that this one is stored
  bool keep(Ref<Error> error) {
    ownError_ = std::move(error);
    return ownError_ == nullptr;
  }

  const Ref<URLSession> session_;
  URLRequest request_;
  FileDownloadHandler handler_;  // empty after the end

  // Used only by the session's thread after the start.
  std::unique_ptr<detail::PartialFile> partial_;
  std::int64_t asked_ = 0;  // start of the requested part; 0: the whole body
  std::int64_t end_ = -1;   // where the bytes of this response end; -1: unknown
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
