#include <TQFoundation/platform/bytes/Codec.h>

#include <algorithm>
#include <memory>

#include <libdeflate.h>
#include <zlib.h>

namespace tq {
namespace {

/// Most streams are smaller than those of zlib at level 5; some of those of 36 to 76 plain bytes
/// are larger. They are written at about twice its speed.
constexpr int kLevel = 5;

/// Up to this size libdeflate stores data uncompressed at that level; zlib compresses it.
constexpr std::size_t kLongestShort = 55 - 4 * kLevel;

/// libdeflate fails if fewer bytes than this would stay free.
constexpr std::size_t kSlack = 16;

/// A match of 258 bytes takes at least two bits.
constexpr std::size_t kLargestExpansion = 258 * 8 / 2;

struct FreeCompressor {
  void operator()(libdeflate_compressor* state) const { libdeflate_free_compressor(state); }
};
struct FreeDecompressor {
  void operator()(libdeflate_decompressor* state) const { libdeflate_free_decompressor(state); }
};

Bytef* zlibBytes(std::span<const std::byte> bytes) {
  return reinterpret_cast<Bytef*>(const_cast<std::byte*>(bytes.data()));
}

std::size_t encodeShort(std::span<const std::byte> plain, std::span<std::byte> packed) {
  z_stream stream{};
  constexpr int kRaw = -9;  // no header, smallest window
  if (deflateInit2(&stream, kLevel, Z_DEFLATED, kRaw, 1, Z_DEFAULT_STRATEGY) != Z_OK) return 0;
  stream.next_in = zlibBytes(plain);
  stream.avail_in = static_cast<uInt>(plain.size());
  stream.next_out = zlibBytes(packed);
  stream.avail_out = static_cast<uInt>(std::min<std::size_t>(packed.size(), 2 * kLongestShort));
  const bool isWhole = deflate(&stream, Z_FINISH) == Z_STREAM_END;
  deflateEnd(&stream);
  return isWhole ? stream.total_out : 0;
}

std::size_t encode(std::span<const std::byte> plain, std::span<std::byte> packed) {
  if (plain.size() <= kLongestShort) return encodeShort(plain, packed);
  const std::unique_ptr<libdeflate_compressor, FreeCompressor> state(
      libdeflate_alloc_compressor(kLevel));
  if (state == nullptr) return 0;
  return libdeflate_deflate_compress(state.get(), plain.data(), plain.size(), packed.data(),
                                     packed.size());
}

bool decode(std::span<const std::byte> packed, std::span<std::byte> plain) {
  const std::unique_ptr<libdeflate_decompressor, FreeDecompressor> state(
      libdeflate_alloc_decompressor());
  if (state == nullptr) return false;
  // Without an argument for the actual length, only an exact fit succeeds.
  return libdeflate_deflate_decompress(state.get(), packed.data(), packed.size(), plain.data(),
                                       plain.size(), nullptr) == LIBDEFLATE_SUCCESS;
}

}  // namespace

const Codec deflateCodec{encode, decode, kLargestExpansion, kSlack};

}  // namespace tq
