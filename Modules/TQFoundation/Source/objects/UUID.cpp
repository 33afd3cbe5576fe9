#include <TQFoundation/objects/UUID.h>

#include <charconv>

#include <TQFoundation/objects/Hash.h>

namespace tq {
namespace {

constexpr std::size_t kTextLength = 36;

constexpr bool isHyphenAt(std::size_t index) noexcept {
  return index == 8 || index == 13 || index == 18 || index == 23;
}

}  // namespace

Ref<UUID> UUID::UUIDWithBytes(const Bytes& bytes) { return Ref<UUID>::adopt(new UUID(bytes)); }

Ref<UUID> UUID::UUIDWithString(std::string_view text) {
  if (text.size() != kTextLength) return nullptr;
  Bytes bytes{};
  std::size_t at = 0;
  for (std::uint8_t& byte : bytes) {
    if (isHyphenAt(at) && text[at++] != '-') return nullptr;
    const char* digits = text.data() + at;
    if (std::from_chars(digits, digits + 2, byte, 16).ptr != digits + 2) return nullptr;
    at += 2;
  }
  return UUIDWithBytes(bytes);
}

std::string UUID::UUIDString() const {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (const std::uint8_t byte : bytes_) {
    if (isHyphenAt(text.size())) text += '-';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

bool UUID::isEqual(const Object& other) const {
  const auto* uuid = objectCast<UUID>(&other);
  return uuid != nullptr && bytes_ == uuid->bytes_;
}

std::size_t UUID::hash() const {
  const std::string_view content(reinterpret_cast<const char*>(bytes_.data()), bytes_.size());
  return detail::hashOfBytes(content);
}

}  // namespace tq
