#include <TQFoundation/platform/bytes/Digest.h>

#include <errno.h>
#include <openssl/evp.h>
#include <unistd.h>

#include <memory>
#include <vector>

#include <TQFoundation/platform/files/FileError.h>
#include <TQFoundation/platform/files/RegularFile.h>

namespace tq {
namespace {

/// The algorithm is looked up once: this costs more than the digest of a short buffer.
const EVP_MD* sha1Algorithm() noexcept {
  static const EVP_MD* const algorithm = EVP_MD_fetch(nullptr, "SHA1", nullptr);
  return algorithm;
}

}  // namespace

std::optional<SHA1Digest> sha1Digest(std::span<const std::byte> bytes) noexcept {
  const EVP_MD* const algorithm = sha1Algorithm();
  SHA1Digest digest;
  auto* const out = reinterpret_cast<unsigned char*>(digest.data());
  if (algorithm == nullptr ||
      EVP_Digest(bytes.data(), bytes.size(), out, nullptr, algorithm, nullptr) != 1) {
    return std::nullopt;
  }
  return digest;
}

std::optional<SHA1Digest> sha1DigestOfFile(const URL& url, Ref<Error>* error) {
  constexpr std::size_t kPiece = std::size_t{1} << 18;
  std::size_t size = 0;
  const Ref<FileHandle> file = detail::openRegularFile(url, size, error);
  if (file == nullptr) return std::nullopt;
  const std::unique_ptr<EVP_MD_CTX, void (*)(EVP_MD_CTX*)> context(EVP_MD_CTX_new(),
                                                                   EVP_MD_CTX_free);
  const EVP_MD* const algorithm = sha1Algorithm();
  bool isWhole = context != nullptr && algorithm != nullptr &&
                 EVP_DigestInit_ex2(context.get(), algorithm, nullptr) == 1;
  int failure = isWhole ? 0 : ENOTSUP;
  std::vector<std::byte> piece(kPiece);
  while (isWhole) {
    const ssize_t count = ::read(file->fileDescriptor(), piece.data(), piece.size());
    if (count < 0 && errno == EINTR) continue;
    if (count == 0) break;
    failure = count < 0 ? errno : 0;
    isWhole = count > 0 &&
              EVP_DigestUpdate(context.get(), piece.data(), static_cast<std::size_t>(count)) == 1;
  }
  SHA1Digest digest;
  auto* const out = reinterpret_cast<unsigned char*>(digest.data());
  if (!isWhole || EVP_DigestFinal_ex(context.get(), out, nullptr) != 1) {
    setOutError(error,
                detail::fileError(detail::FileUse::reading, url, failure != 0 ? failure : ENOTSUP));
    return std::nullopt;
  }
  return digest;
}

}  // namespace tq
