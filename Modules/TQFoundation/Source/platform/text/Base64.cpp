#include <TQFoundation/platform/text/Base64.h>

#include <algorithm>
#include <array>
#include <cstdint>

#include <TQFoundation/objects/FilledData.h>

namespace tq {
namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

/// The values of the characters; kInvalid for those outside the alphabet.
constexpr std::uint8_t kInvalid = 0x80;
constexpr std::array<std::uint8_t, 256> kValues = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(kInvalid);
  for (std::uint8_t value = 0; value < 64; ++value) {
    values[static_cast<unsigned char>(kAlphabet[value])] = value;
  }
  return values;
}();

/// Writes the 4 characters of 3 bytes.
void encode(const std::byte* bytes, char* text) noexcept {
  const auto at = [bytes](int i) { return std::to_integer<std::uint32_t>(bytes[i]); };
  const std::uint32_t group = at(0) << 16 | at(1) << 8 | at(2);
  text[0] = kAlphabet[group >> 18];
  text[1] = kAlphabet[group >> 12 & 63];
  text[2] = kAlphabet[group >> 6 & 63];
  text[3] = kAlphabet[group & 63];
}

/// Writes the 3 bytes of 4 characters.
/// @return a number with the bit kInvalid if a character is outside the alphabet
std::uint8_t decode(const char* text, std::byte* bytes) noexcept {
  const auto at = [text](int i) { return kValues[static_cast<unsigned char>(text[i])]; };
  const std::uint32_t group =
      std::uint32_t{at(0)} << 18 | std::uint32_t{at(1)} << 12 | std::uint32_t{at(2)} << 6 | at(3);
  bytes[0] = static_cast<std::byte>(group >> 16);
  bytes[1] = static_cast<std::byte>(group >> 8);
  bytes[2] = static_cast<std::byte>(group);
  return at(0) | at(1) | at(2) | at(3);
}

}  // namespace

void appendBase64(std::string& text, std::span<const std::byte> bytes) {
  const std::size_t before = text.size();
  text.resize(before + (bytes.size() + 2) / 3 * 4);
  char* to = text.data() + before;
  for (; bytes.size() >= 3; bytes = bytes.subspan(3), to += 4) encode(bytes.data(), to);
  if (bytes.empty()) return;
  std::array<std::byte, 3> last{};
  std::ranges::copy(bytes, last.begin());
  encode(last.data(), to);
  std::fill(to + bytes.size() + 1, to + 4, '=');
}

std::string base64FromBytes(std::span<const std::byte> bytes) {
  std::string text;
  appendBase64(text, bytes);
  return text;
}

Ref<Data> dataFromBase64(std::string_view text) {
  if (text.size() % 4 != 0) return nullptr;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  const std::size_t length = text.size() / 4 * 3 - padding;
  Ref<detail::FilledData> data = makeRef<detail::FilledData>(length + padding);
  std::byte* to = data->room().data();
  std::uint8_t faults = 0;
  for (; text.size() > 4; text.remove_prefix(4), to += 3) faults |= decode(text.data(), to);
  if (!text.empty()) {
    std::array<char, 4> last{};
    std::ranges::copy(text, last.begin());
    std::fill(last.end() - padding, last.end(), kAlphabet[0]);  // bytes of 0, which are cut off
    faults |= decode(last.data(), to);
  }
  if ((faults & kInvalid) != 0) return nullptr;
  data->setLength(length);
  return data;
}

}  // namespace tq
