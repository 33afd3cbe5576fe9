#include <TQFoundation/serialisation/TQFNV1aBuilder.h>

#include <string_view>

namespace tq {

// The prime is 2^88 + 315, so modulo 2^128
//
//   state * prime = state * 315 + (low half << 24) in the high half
//
// and only one product needs its upper word. The low half, which the next byte depends on, takes
// one short multiplication.
void TQFNV1aBuilder::addData(std::span<const std::byte> bytes) noexcept {
  __extension__ using Wide = unsigned __int128;
  constexpr std::uint64_t kFactor = 315;
  constexpr int kShift = 88 - 64;
  std::uint64_t high = high_;
  std::uint64_t low = low_;
  for (const std::byte byte : bytes) {
    low ^= std::to_integer<std::uint64_t>(byte);
    const Wide product = static_cast<Wide>(low) * kFactor;
    high = high * kFactor + static_cast<std::uint64_t>(product >> 64) + (low << kShift);
    low = static_cast<std::uint64_t>(product);
  }
  high_ = high;
  low_ = low;
}

void TQFNV1aBuilder::addData(const Data* data) noexcept {
  if (data != nullptr) addData(data->bytes());
}

void TQFNV1aBuilder::addString(const String& string) noexcept {
  if (string.isWellFormed()) addData(std::as_bytes(std::span(string.view())));
}

void TQFNV1aBuilder::addString(const String* string) noexcept {
  if (string != nullptr) addString(*string);
}

Ref<String> TQFNV1aBuilder::checksum() const {
  constexpr char kDigits[] = "0123456789ABCDEF";
  char text[32];
  for (unsigned i = 0; i < 16; ++i) {
    text[i] = kDigits[high_ >> (60 - 4 * i) & 15];
    text[16 + i] = kDigits[low_ >> (60 - 4 * i) & 15];
  }
  return String::of(std::string_view(text, sizeof text));
}

}  // namespace tq
