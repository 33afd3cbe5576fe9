#include <curl/curl.h>
#include <openssl/crypto.h>
#include <signal.h>

#include <algorithm>
#include <new>
#include <string>
#include <system_error>
#include <thread>
#include <utility>

#include <TQFoundation/platform/files/StandardStreams.h>
#include <TQFoundation/platform/libraries/LazyLibrary.h>
#include <TQFoundation/platform/network/detail/URLSessionEngine.h>
#include <TQFoundation/platform/network/detail/URLTransfer.h>

// Only the session's thread uses libcurl, except for the call that wakes it. Tasks are passed to
// the thread under a lock of this library; they are cancelled through an atomic flag.

namespace tq {
namespace {

struct LibCrypto : detail::LazyLibrary {
  LibCrypto() : LazyLibrary(TQ_LIBCRYPTO) {}
  TQ_LAZY_FUNCTION(OPENSSL_init_crypto);
};

/// The functions for sessions. URLTransfer.cpp has those for transfers.
struct LibCurl : detail::LazyLibrary {
  LibCurl() : LazyLibrary(TQ_LIBCURL) {}
  TQ_LAZY_FUNCTION(curl_global_init);
  TQ_LAZY_FUNCTION(curl_multi_add_handle);
  TQ_LAZY_FUNCTION(curl_multi_cleanup);
  TQ_LAZY_FUNCTION(curl_multi_info_read);
  TQ_LAZY_FUNCTION(curl_multi_init);
  TQ_LAZY_FUNCTION(curl_multi_perform);
  TQ_LAZY_FUNCTION(curl_multi_poll);
  TQ_LAZY_FUNCTION(curl_multi_remove_handle);
  TQ_LAZY_FUNCTION(curl_multi_setopt);
  TQ_LAZY_FUNCTION(curl_multi_wakeup);
  TQ_LAZY_FUNCTION(curl_share_cleanup);
  TQ_LAZY_FUNCTION(curl_share_init);
  TQ_LAZY_FUNCTION(curl_share_setopt);
};

/// Loads libcurl, and sets it up once. @return null, with the reason, if it cannot be loaded
const LibCurl* loadedLibCurl(std::string& reason) {
  const LibCurl* const libcurl = detail::lazyLibrary<LibCurl>(reason);
  if (libcurl == nullptr || !URLTransfer::loadLibrary(reason)) return nullptr;
  const LibCrypto* const libcrypto = detail::lazyLibrary<LibCrypto>(reason);
  if (libcrypto == nullptr) return nullptr;
  static const bool isPrepared = [&] {
    // Sessions may exist when the process exits, so OpenSSL must not be shut down then.
    libcrypto->OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    static_cast<void>(detail::exhaustedError());
    return libcurl->curl_global_init(CURL_GLOBAL_DEFAULT) == CURLE_OK;
  }();
  if (!isPrepared) throw std::bad_alloc();
  return libcurl;
}

}  // namespace

struct URLSession::Engine::Library {
  Library() {
    std::string reason;
    curl = loadedLibCurl(reason);
    if (curl == nullptr) {
      missing = detail::urlError(URLErrorUnknown, {}, reason);
      return;
    }
    multi = curl->curl_multi_init();
    cookies = curl->curl_share_init();
    if (multi == nullptr || cookies == nullptr) {
      release();
      throw std::bad_alloc();
    }
    curl->curl_share_setopt(cookies, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    canWake = curl->curl_multi_wakeup(multi) == CURLM_OK;
  }
  ~Library() {
    if (curl != nullptr) release();
  }

  void release() noexcept {
    curl->curl_multi_cleanup(multi);
    curl->curl_share_cleanup(cookies);
  }

  const LibCurl* curl = nullptr;
  Ref<Error> missing;  // the error of every task if `curl` is null
  CURLM* multi = nullptr;
  CURLSH* cookies = nullptr;
  bool canWake = false;  // it had a descriptor for it
};

URLSession::Engine::Engine(const URLSessionConfiguration& configuration)
    : configuration_(configuration), library_(std::make_unique<Library>()) {
  if (library_->missing != nullptr) return;
  library_->curl->curl_multi_setopt(library_->multi, CURLMOPT_MAX_HOST_CONNECTIONS,
                                    static_cast<long>(configuration.HTTPMaximumConnectionsPerHost));
}

URLSession::Engine::~Engine() = default;

void URLSession::Engine::submit(Ref<URLSessionDataTask> task) noexcept {
  if (library_->missing != nullptr) return URLTransfer::refuse(*task, library_->missing);
  detail::occupyStandardStreams();
  try {
    const Locked guard(lock_);
    if (!isRunning_) std::thread([this] { run(); }).detach();
    isRunning_ = true;
    submitted_.push_back(task);
  } catch (const std::bad_alloc&) {
    return URLTransfer::refuse(*task, detail::exhaustedError());
  } catch (const std::system_error&) {  // no thread
    return URLTransfer::refuse(*task, detail::exhaustedError());
  }
  wake();
}

void URLSession::Engine::wake() noexcept { library_->curl->curl_multi_wakeup(library_->multi); }

void URLSession::Engine::close() noexcept {
  {
    const Locked guard(lock_);
    isClosing_ = true;
    if (isRunning_) {
      wake();  // with the lock held: the thread deletes the engine after it has seen the flag
      return;
    }
  }
  delete this;
}

void URLSession::Engine::run() noexcept {
  // Writing to a closed connection raises SIGPIPE in the writing thread. While it is blocked, the
  // write fails instead.
  sigset_t brokenPipe;
  sigemptyset(&brokenPipe);
  sigaddset(&brokenPipe, SIGPIPE);
  pthread_sigmask(SIG_BLOCK, &brokenPipe, nullptr);
  for (;;) {
    std::vector<Ref<URLSessionDataTask>> submitted;
    {
      const Locked guard(lock_);
      if (isClosing_) break;  // then there are no tasks: each keeps the session alive
      submitted.swap(submitted_);
    }
    for (Ref<URLSessionDataTask>& task : submitted) begin(std::exchange(task, nullptr));
    submitted.clear();
    startWaiting();
    // Data that arrived during a slow callback is not late: it is processed before time-outs are
    // checked.
    const Clock::time_point now = Clock::now();
    int running = 0;
    library_->curl->curl_multi_perform(library_->multi, &running);
    const bool hasEnded = finishEnded();
    const bool hasRemoved = finishCancelledAndLate(now);
    // A connection may have become free. If libcurl gives it to a transfer that it has passed in
    // this round, it deletes its timer, and polling would not end for it.
    if (hasEnded || hasRemoved) continue;
    library_->curl->curl_multi_poll(library_->multi, nullptr, 0, pollTimeout(), nullptr);
  }
  delete this;
}

void URLSession::Engine::begin(const Ref<URLSessionDataTask>& task) noexcept {
  const bool wantsCookies = configuration_.HTTPShouldSetCookies &&
                            configuration_.cookieAcceptPolicy != HTTPCookieAcceptPolicy::never;
  try {
    transfers_.push_back(std::make_unique<URLTransfer>(task, configuration_,
                                                       wantsCookies ? library_->cookies : nullptr));
  } catch (const std::bad_alloc&) {
    return URLTransfer::refuse(*task, detail::exhaustedError());
  }
  const URLTransfer& transfer = *transfers_.back();
  const bool isValid = transfer.handle() != nullptr;
  if (isValid && !transfer.isCancelled()) return;
  remove(transfers_.size() - 1)->completeWithError(isValid ? URLErrorCancelled : URLErrorBadURL);
}

// libcurl could let transfers wait, too, but it has one queue for all hosts: when a connection to
// one becomes free, it tries the first in the queue alone, even if that one is for another host.
// Its own limit remains for redirects to other hosts. The cost of a pass is proportional to the
// number of waiting transfers, and to that of started ones whenever the host changes.
void URLSession::Engine::startWaiting() noexcept {
  std::string_view full;
  for (std::size_t i = started_; i < transfers_.size(); ++i) {
    const std::string_view host = transfers_[i]->host();
    if (host == full) continue;
    if (!hasFreeConnection(host)) {
      full = host;
      continue;
    }
    const auto place = transfers_.begin() + static_cast<std::ptrdiff_t>(started_);
    const auto found = transfers_.begin() + static_cast<std::ptrdiff_t>(i);
    std::rotate(place, found, found + 1);
    const CURLMcode result =
        library_->curl->curl_multi_add_handle(library_->multi, transfers_[started_]->handle());
    if (result == CURLM_OK) {
      ++started_;
    } else {
      remove(started_)->completeWithError(URLErrorUnknown);
      --i;
    }
  }
}

bool URLSession::Engine::hasFreeConnection(std::string_view host) const noexcept {
  constexpr std::size_t kStreams = 100;  // that libcurl lets share a connection
  std::size_t used = 0;
  bool isMultiplexed = false;
  for (std::size_t i = 0; i < started_; ++i) {
    if (transfers_[i]->host() != host) continue;
    ++used;
    isMultiplexed = isMultiplexed || transfers_[i]->isMultiplexed();
  }
  const int limit = configuration_.HTTPMaximumConnectionsPerHost;
  return limit <= 0 || used < static_cast<std::size_t>(limit) * (isMultiplexed ? kStreams : 1);
}

std::unique_ptr<URLTransfer> URLSession::Engine::remove(std::size_t index) noexcept {
  std::unique_ptr<URLTransfer> removed = std::move(transfers_[index]);
  transfers_.erase(transfers_.begin() + static_cast<std::ptrdiff_t>(index));
  if (index < started_) {
    --started_;
    library_->curl->curl_multi_remove_handle(library_->multi, removed->handle());
  }
  return removed;
}

bool URLSession::Engine::finishEnded() {
  bool hasEnded = false;
  int left = 0;
  while (const CURLMsg* const message =
             library_->curl->curl_multi_info_read(library_->multi, &left)) {
    if (message->msg != CURLMSG_DONE) continue;
    CURL* const handle = message->easy_handle;
    const CURLcode result = message->data.result;
    const auto ended = std::ranges::find(transfers_, handle, &URLTransfer::handle);
    remove(static_cast<std::size_t>(ended - transfers_.begin()))->completeWithResult(result);
    hasEnded = true;
  }
  return hasEnded;
}

bool URLSession::Engine::finishCancelledAndLate(Clock::time_point now) {
  const std::size_t before = transfers_.size();
  for (std::size_t i = 0; i < transfers_.size();) {
    if (!transfers_[i]->isCancelled() && transfers_[i]->deadline() > now) {
      ++i;
      continue;
    }
    const std::unique_ptr<URLTransfer> ending = remove(i);
    ending->completeWithError(ending->isCancelled() ? URLErrorCancelled : URLErrorTimedOut);
  }
  return transfers_.size() != before;
}

int URLSession::Engine::pollTimeout() const {
  constexpr std::chrono::milliseconds kLongest(60'000);  // then it wakes without a reason
  constexpr std::chrono::milliseconds kUnlessWoken(100);
  auto wait = library_->canWake ? kLongest : kUnlessWoken;
  const Clock::time_point now = Clock::now();
  for (const std::unique_ptr<URLTransfer>& each : transfers_) {
    wait = std::min(wait, std::chrono::ceil<std::chrono::milliseconds>(each->deadline() - now));
  }
  return static_cast<int>(std::max(wait, std::chrono::milliseconds(0)).count());
}

}  // namespace tq
