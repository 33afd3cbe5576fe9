#include <TQFoundation/platform/network/URLSession.h>

#include <algorithm>
#include <memory>
#include <new>

#include <TQFoundation/platform/network/detail/URLSessionEngine.h>

namespace tq {
namespace {

char lowered(char c) noexcept { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; }

/// Collects a body in memory.
class Collector {
 public:
  Collector(URLSession::Completion completion, std::uint64_t mostBytes)
      : completion_(std::move(completion)), mostBytes_(mostBytes) {}

  bool append(std::span<const std::byte> bytes) {
    isTooLong_ = bytes.size() > mostBytes_ - body_->length();
    if (isTooLong_) return false;
    try {
      body_->append(bytes);
      return true;
    } catch (const std::bad_alloc&) {
      isTooLong_ = true;
      return false;
    }
  }

  void complete(const URLResponse& response, Ref<Error> error) {
    if (!completion_) return;
    Ref<Data> body;
    try {
      if (isTooLong_) error = detail::urlError(URLErrorDataLengthExceedsMaximum, {});
      if (error == nullptr) body = Data::dataByTakingBytes(*body_);
    } catch (const std::bad_alloc&) {
      error = detail::exhaustedError();
    }
    completion_(std::move(body), response, std::move(error));
  }

 private:
  const URLSession::Completion completion_;
  const std::uint64_t mostBytes_;
  const Ref<MutableData> body_ = MutableData::data();
  bool isTooLong_ = false;
};

}  // namespace

bool detail::isSameHeader(std::string_view a, std::string_view b) noexcept {
  return std::ranges::equal(a, b, {}, lowered, lowered);
}

std::string detail::codingsOf(const URLResponse& response, std::string_view name) {
  std::string codings;
  for (const auto& [each, value] : response.allHeaderFields) {
    if (value.empty() || !isSameHeader(each, name)) continue;
    codings.append(codings.empty() ? "" : ", ").append(value);
  }
  return isSameHeader(codings, "identity") ? "" : codings;
}

std::string_view URLResponse::valueForHTTPHeaderField(std::string_view field) const {
  for (const auto& [name, value] : allHeaderFields) {
    if (detail::isSameHeader(name, field)) return value;
  }
  return {};
}

URLSessionDataTask::URLSessionDataTask(URLSession& session, URLRequest request,
                                       URLSessionTaskHandler handler)
    : request_(std::move(request)), handler_(std::move(handler)), session_(share(session)) {}

URLSessionDataTask::~URLSessionDataTask() = default;

// The session, which may be released as soon as the task completes on its thread, is held here.

void URLSessionDataTask::resume() {
  const Ref<URLSession> session = session_;
  State expected = State::suspended;
  if (!state_.compare_exchange_strong(expected, State::running)) return;
  session->engine_->submit(share(*this));
}

void URLSessionDataTask::cancel() {
  const Ref<URLSession> session = session_;
  State expected = State::suspended;
  if (state_.compare_exchange_strong(expected, State::canceling)) {
    session->engine_->submit(share(*this));  // completes on the session's thread, like all others
  } else if (expected == State::running &&
             state_.compare_exchange_strong(expected, State::canceling)) {
    session->engine_->wake();
  }
}

URLSession::URLSession(URLSessionConfiguration configuration)
    : configuration_(std::move(configuration)),
      engine_(std::make_unique<Engine>(configuration_).release()) {}

URLSession::~URLSession() { engine_->close(); }

Ref<URLSession> URLSession::sessionWithConfiguration(URLSessionConfiguration configuration) {
  return Ref<URLSession>::adopt(new URLSession(std::move(configuration)));
}

Ref<URLSessionDataTask> URLSession::dataTaskWithRequest(URLRequest request,
                                                        URLSessionTaskHandler handler) {
  return Ref<URLSessionDataTask>::adopt(
      new URLSessionDataTask(*this, std::move(request), std::move(handler)));
}

Ref<URLSessionDataTask> URLSession::dataTaskWithRequest(URLRequest request,
                                                        Completion completionHandler) {
  const std::uint64_t mostBytes = std::min(std::uint64_t{kLargestCollectedBody},
                                           configuration_.readingLimits.decompressedBytes);
  const auto collector = std::make_shared<Collector>(std::move(completionHandler), mostBytes);
  URLSessionTaskHandler handler;
  handler.didReceiveData = [collector](URLSessionDataTask&, std::span<const std::byte> bytes) {
    return collector->append(bytes);
  };
  handler.didComplete = [collector](URLSessionDataTask&, const URLResponse& response,
                                    Ref<Error> error) {
    collector->complete(response, std::move(error));
  };
  return dataTaskWithRequest(std::move(request), std::move(handler));
}

Ref<URLSessionDataTask> URLSession::dataTaskWithURL(Ref<URL> url, Completion completionHandler) {
  URLRequest request;
  request.url = std::move(url);
  return dataTaskWithRequest(std::move(request), std::move(completionHandler));
}

}  // namespace tq
