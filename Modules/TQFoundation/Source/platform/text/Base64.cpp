#include <TQFoundation/platform/text/Base64.h>

#include <openssl/evp.h>

#include <algorithm>
#include <array>

#include <TQFoundation/objects/FilledData.h>

namespace tq {
namespace {

// libcrypto counts in int, so long buffers are encoded in pieces of whole quanta.
constexpr std::size_t kBytesAtOnce = std::size_t{3} << 28;
constexpr std::size_t kTextAtOnce = kBytesAtOnce / 3 * 4;

const unsigned char* unsignedBytes(const void* bytes) noexcept {
  return static_cast<const unsigned char*>(bytes);
}

constexpr std::array<bool, 256> kIsInAlphabet = [] {
  std::array<bool, 256> table{};
  for (int c = 'A'; c <= 'Z'; ++c) table[static_cast<std::size_t>(c)] = true;
  for (int c = 'a'; c <= 'z'; ++c) table[static_cast<std::size_t>(c)] = true;
  for (int c = '0'; c <= '9'; ++c) table[static_cast<std::size_t>(c)] = true;
  table['+'] = table['/'] = true;
  return table;
}();

}  // namespace

void appendBase64(std::string& text, std::span<const std::byte> bytes) {
  std::size_t at = text.size();
  text.resize(at + (bytes.size() + 2) / 3 * 4);
  while (!bytes.empty()) {
    const auto piece = bytes.first(std::min(bytes.size(), kBytesAtOnce));
    // libcrypto writes a NUL after each piece. The next piece overwrites it; the last one falls on
    // the string's own NUL.
    auto* to = reinterpret_cast<unsigned char*>(text.data() + at);
    at += static_cast<std::size_t>(
        EVP_EncodeBlock(to, unsignedBytes(piece.data()), static_cast<int>(piece.size())));
    bytes = bytes.subspan(piece.size());
  }
}

std::string base64FromBytes(std::span<const std::byte> bytes) {
  std::string text;
  appendBase64(text, bytes);
  return text;
}

// libcrypto accepts white space, so the text is checked before.
Ref<Data> dataFromBase64(std::string_view text) {
  if (text.size() % 4 != 0) return nullptr;
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with('=') ? 1 : 0;
  const auto isInAlphabet = [](char c) { return kIsInAlphabet[static_cast<unsigned char>(c)]; };
  if (!std::ranges::all_of(text.substr(0, text.size() - padding), isInAlphabet)) return nullptr;

  const std::size_t length = text.size() / 4 * 3;  // the padding decodes to bytes of 0
  Ref<detail::FilledData> data = makeRef<detail::FilledData>(length);
  auto* to = reinterpret_cast<unsigned char*>(data->room().data());
  while (!text.empty()) {
    const std::string_view piece = text.substr(0, kTextAtOnce);
    const int count =
        EVP_DecodeBlock(to, unsignedBytes(piece.data()), static_cast<int>(piece.size()));
    if (count < 0) return nullptr;
    to += count;
    text.remove_prefix(piece.size());
  }
  data->setLength(length - padding);
  return data;
}

}  // namespace tq
