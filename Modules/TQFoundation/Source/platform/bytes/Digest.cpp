#include <TQFoundation/platform/bytes/Digest.h>

#include <errno.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <memory>
#include <new>
#include <string>
#include <vector>

#include <TQFoundation/platform/files/FileError.h>
#include <TQFoundation/platform/files/RegularFile.h>
#include <TQFoundation/platform/libraries/LazyLibrary.h>
#include <TQFoundation/platform/log/LogChannel.h>

namespace tq {
namespace {

/// The functions of libcrypto, and the algorithm, which is looked up once: this costs more than the
/// digest of a short buffer.
struct Crypto : detail::LazyLibrary {
  Crypto() : LazyLibrary(TQ_LIBCRYPTO) {
    if (!failure().empty()) return;
    // Threads may outlive main(), so OpenSSL must not be shut down then.
    OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr);
    sha1 = EVP_MD_fetch(nullptr, "SHA1", nullptr);
  }
  TQ_LAZY_FUNCTION(EVP_Digest);
  TQ_LAZY_FUNCTION(EVP_DigestFinal_ex);
  TQ_LAZY_FUNCTION(EVP_DigestInit_ex2);
  TQ_LAZY_FUNCTION(EVP_DigestUpdate);
  TQ_LAZY_FUNCTION(EVP_MD_CTX_free);
  TQ_LAZY_FUNCTION(EVP_MD_CTX_new);
  TQ_LAZY_FUNCTION(EVP_MD_fetch);
  TQ_LAZY_FUNCTION(OPENSSL_init_crypto);

  const EVP_MD* sha1 = nullptr;
};

/// Loads libcrypto. @return null, after a line in the log, if that fails
const Crypto* cryptoOrLog() {
  std::string reason;
  const Crypto* const crypto = detail::lazyLibrary<Crypto>(reason);
  if (crypto == nullptr) {
    LogChannel::channel("com.korvan.platform", "digests").log(LogLevel::error, reason);
  }
  return crypto;
}

}  // namespace

std::optional<SHA1Digest> sha1Digest(std::span<const std::byte> bytes) noexcept {
  const Crypto* crypto = nullptr;
  try {
    crypto = cryptoOrLog();
  } catch (const std::bad_alloc&) {
    return std::nullopt;
  }
  SHA1Digest digest;
  auto* const out = reinterpret_cast<unsigned char*>(digest.data());
  if (crypto == nullptr || crypto->sha1 == nullptr ||
      crypto->EVP_Digest(bytes.data(), bytes.size(), out, nullptr, crypto->sha1, nullptr) != 1) {
    return std::nullopt;
  }
  return digest;
}

std::optional<SHA1Digest> sha1DigestOfFile(const URL& url, Ref<Error>* error) {
  constexpr std::size_t kPiece = std::size_t{1} << 18;
  std::size_t size = 0;
  const Ref<FileHandle> file = detail::openRegularFile(url, size, error);
  if (file == nullptr) return std::nullopt;
  const auto fail = [&](const auto&... reason) {
    setOutError(error, detail::fileError(detail::FileUse::reading, url, reason...));
    return std::nullopt;
  };
  std::string reason;
  const Crypto* const crypto = detail::lazyLibrary<Crypto>(reason);
  if (crypto == nullptr) return fail(ELIBACC, reason);
  const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(crypto->EVP_MD_CTX_new(),
                                                                   crypto->EVP_MD_CTX_free);
  bool isWhole = context != nullptr && crypto->sha1 != nullptr &&
                 crypto->EVP_DigestInit_ex2(context.get(), crypto->sha1, nullptr) == 1;
  std::vector<std::byte> piece(kPiece);
  for (ssize_t count = 1; isWhole && count != 0;) {
    count = ::read(file->fileDescriptor(), piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return fail(errno);
    isWhole =
        crypto->EVP_DigestUpdate(context.get(), piece.data(), static_cast<std::size_t>(count)) == 1;
  }
  SHA1Digest digest;
  auto* const out = reinterpret_cast<unsigned char*>(digest.data());
  if (!isWhole || crypto->EVP_DigestFinal_ex(context.get(), out, nullptr) != 1) {
    return fail(ENOTSUP);
  }
  return digest;
}

}  // namespace tq
