#include <TQFoundation/platform/bytes/Codec.h>

#include <cstdint>

#include <lzma.h>

namespace tq {
namespace {

constexpr std::uint32_t kPreset = 6;

/// A header can ask for a dictionary of 4 GiB; preset 9 needs 65 MiB.
constexpr std::uint64_t kDecoderMemory = std::uint64_t{128} << 20;

/// A repeated match of 273 bytes takes 14 binary decisions of at least
/// log2(2048 / 2017) = 0.022 bits each: 273 * 8 / (14 * 0.02200) = 7088.
constexpr std::size_t kLargestExpansion = 7100;

const std::uint8_t* octets(const std::byte* bytes) {
  return reinterpret_cast<const std::uint8_t*>(bytes);
}
std::uint8_t* octets(std::byte* bytes) { return reinterpret_cast<std::uint8_t*>(bytes); }

std::size_t encode(std::span<const std::byte> plain, std::span<std::byte> packed) {
  std::size_t produced = 0;
  const lzma_ret result =
      lzma_easy_buffer_encode(kPreset, LZMA_CHECK_NONE, nullptr, octets(plain.data()), plain.size(),
                              octets(packed.data()), &produced, packed.size());
  return result == LZMA_OK ? produced : 0;
}

struct Decoder {
  lzma_stream stream = LZMA_STREAM_INIT;
  Decoder() = default;
  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;
  ~Decoder() { lzma_end(&stream); }
};

bool decode(std::span<const std::byte> packed, std::span<std::byte> plain) {
  Decoder decoder;
  lzma_stream& stream = decoder.stream;
  if (lzma_stream_decoder(&stream, kDecoderMemory, 0) != LZMA_OK) return false;
  stream.next_in = octets(packed.data());
  stream.avail_in = packed.size();
  // Index and footer are read after the last byte, so the output pointer must be valid even then.
  std::uint8_t nowhere = 0;
  stream.next_out = plain.empty() ? &nowhere : octets(plain.data());
  stream.avail_out = plain.size();
  lzma_ret result = LZMA_OK;
  while (result == LZMA_OK) result = lzma_code(&stream, LZMA_FINISH);
  return result == LZMA_STREAM_END && stream.avail_out == 0;
}

}  // namespace

const Codec lzmaCodec{encode, decode, kLargestExpansion};

}  // namespace tq
