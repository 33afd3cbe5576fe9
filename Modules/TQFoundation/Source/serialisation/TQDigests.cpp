#include <TQFoundation/serialisation/TQDigests.h>

#include <string>
#include <string_view>

#include <TQFoundation/platform/bytes/Digest.h>
#include <TQFoundation/platform/log/LogChannel.h>

namespace tq {
namespace {

/// The names are those of the former interface.
void warnOfOldName(std::string_view used, std::string_view instead) {
  std::string line = "WARNING: `";
  line.append(used).append(
      "` from a private Korvan category might be removed in the future. We now use `");
  line.append(instead).append("` ourselves (no warranty!).");
  LogChannel::channel("com.korvan.serialisation", "digests").log(LogLevel::error, line);
}

}  // namespace

Ref<Data> sha1Data_tq(std::span<const std::byte> bytes) {
  const auto digest = sha1Digest(bytes);
  return digest ? Data::dataWithBytes(*digest) : nullptr;
}

Ref<String> sha1String_tq(std::span<const std::byte> bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  if (const auto digest = sha1Digest(bytes)) {
    text.reserve(2 * digest->size());
    for (const std::byte byte : *digest) {
      text += kDigits[std::to_integer<unsigned>(byte) >> 4];
      text += kDigits[std::to_integer<unsigned>(byte) & 15];
    }
  }
  return String::of(text);
}

Ref<Data> sha1(std::span<const std::byte> bytes) {
  warnOfOldName("-[NSData sha1]", "-[NSData sha1Data_tq]");
  return sha1Data_tq(bytes);
}

Ref<String> sha1AsString(std::span<const std::byte> bytes) {
  warnOfOldName("-[NSData sha1AsString]", "-[NSData sha1String_tq]");
  return sha1String_tq(bytes);
}

Ref<Data> sha1Data_tq(const Data& data) { return sha1Data_tq(data.bytes()); }
Ref<String> sha1String_tq(const Data& data) { return sha1String_tq(data.bytes()); }
Ref<Data> sha1(const Data& data) { return sha1(data.bytes()); }
Ref<String> sha1AsString(const Data& data) { return sha1AsString(data.bytes()); }

}  // namespace tq
