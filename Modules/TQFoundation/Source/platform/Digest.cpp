#include <TQFoundation/platform/Digest.h>

#include <openssl/evp.h>

namespace tq {
namespace {

/// Looking an algorithm up costs more than digesting a short buffer, so it is done once.
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

}  // namespace tq
