#include "Files/Gzip.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tqdoc {
namespace {

// The layout of RFC 1952: ten bytes, optional fields, the stream, CRC-32 and length.
constexpr std::size_t kHeader = 10;
constexpr std::size_t kFooter = 8;
constexpr std::size_t kFlagsAt = 3;
enum Flags : std::uint8_t { kCheckedHeader = 2, kExtra = 4, kName = 8, kComment = 16 };

/// Returns where the compressed stream begins; the length of the file if it has none.
[[nodiscard]] std::size_t headerSize(std::span<const std::byte> file) {
  const auto flags = std::to_integer<unsigned>(file[kFlagsAt]);
  const auto rest = [&](std::size_t at) { return file.subspan(std::min(at, file.size())); };
  std::size_t at = kHeader;
  if ((flags & kExtra) != 0 && file.size() > at + 1) {
    at += 2 + std::to_integer<std::size_t>(file[at]) +
          256 * std::to_integer<std::size_t>(file[at + 1]);
  }
  for (const unsigned text : {kName, kComment}) {
    if ((flags & text) == 0) continue;
    const auto field = rest(at);
    at += static_cast<std::size_t>(std::ranges::find(field, std::byte{0}) - field.begin()) + 1;
  }
  if ((flags & kCheckedHeader) != 0) at += 2;
  return std::min(at, file.size());
}

}  // namespace

tq::Ref<tq::Data> contentOfGzip(const tq::Data& file, std::size_t limit,
                                tq::Ref<tq::Error>* error) {
  const std::span<const std::byte> bytes = file.bytes();
  if (!tq::isGzipped_tq(bytes)) return nullptr;
  std::uint32_t length = 0;
  for (std::size_t i = 1; i <= 4; ++i) {
    length = length << 8 | std::to_integer<std::uint32_t>(bytes[bytes.size() - i]);
  }
  return tq::dataByDecompressingWithAlgorithm(bytes, tq::TQCompressionAlgorithm::deflate,
                                              headerSize(bytes), kFooter, length,
                                              {.decompressedBytes = limit}, error);
}

}  // namespace tqdoc
