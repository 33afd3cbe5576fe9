#include <TQFoundation/platform/bytes/Codec.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>

#include <lz4.h>

namespace tq {
namespace {

// A framed stream is a sequence of blocks. All integers are little-endian.
//
//   "bv41"  u32 plain size  u32 packed size  one LZ4 block, matches up to 64 KiB back in the stream
//   "bv4-"  u32 size        that many plain bytes
//   "bv4$"  the end
constexpr std::uint32_t kPackedMagic = 0x31347662;
constexpr std::uint32_t kStoredMagic = 0x2d347662;
constexpr std::uint32_t kEndMagic = 0x24347662;
constexpr std::size_t kWordSize = 4;
constexpr std::size_t kBlockSize = 65536;
constexpr std::size_t kHistorySize = 65536;
constexpr int kAcceleration = 1;

/// Each byte of a long match's length adds up to 255 bytes.
constexpr std::size_t kLargestExpansion = 255;

static_assert(std::endian::native == std::endian::little, "words are copied as they are");

const char* chars(const std::byte* bytes) { return reinterpret_cast<const char*>(bytes); }
char* chars(std::byte* bytes) { return reinterpret_cast<char*>(bytes); }

bool fitsInt(std::size_t size) {
  return size <= static_cast<std::size_t>(std::numeric_limits<int>::max());
}

/// Reads words and runs of bytes from the front of a stream.
struct Reader {
  std::span<const std::byte> rest;

  bool word(std::uint32_t& value) {
    if (rest.size() < kWordSize) return false;
    std::memcpy(&value, rest.data(), kWordSize);
    rest = rest.subspan(kWordSize);
    return true;
  }

  bool bytes(std::size_t count, std::span<const std::byte>& value) {
    if (rest.size() < count) return false;
    value = rest.first(count);
    rest = rest.subspan(count);
    return true;
  }
};

void putWord(std::byte* at, std::uint32_t value) { std::memcpy(at, &value, kWordSize); }

struct FreeStream {
  void operator()(LZ4_stream_t* stream) const { LZ4_freeStream(stream); }
};

/// Writes one block at the front of `room`. @return its size in bytes; 0 if it does not fit
std::size_t encodeBlock(LZ4_stream_t& stream, std::span<const std::byte> plain,
                        std::span<std::byte> room) {
  constexpr std::size_t kPackedHeader = 3 * kWordSize;
  constexpr std::size_t kStoredHeader = 2 * kWordSize;
  const auto plainSize = static_cast<std::uint32_t>(plain.size());
  if (room.size() > kPackedHeader) {
    // A block that would not become shorter is stored uncompressed.
    const std::size_t most = std::min(plain.size() - 1, room.size() - kPackedHeader);
    const int size = LZ4_compress_fast_continue(
        &stream, chars(plain.data()), chars(room.data() + kPackedHeader),
        static_cast<int>(plainSize), static_cast<int>(most), kAcceleration);
    if (size > 0) {
      putWord(room.data(), kPackedMagic);
      putWord(room.data() + kWordSize, plainSize);
      putWord(room.data() + 2 * kWordSize, static_cast<std::uint32_t>(size));
      return kPackedHeader + static_cast<std::size_t>(size);
    }
  }
  if (room.size() < kStoredHeader + plain.size()) return 0;
  putWord(room.data(), kStoredMagic);
  putWord(room.data() + kWordSize, plainSize);
  std::memcpy(room.data() + kStoredHeader, plain.data(), plain.size());
  // Some readers do not keep stored bytes as history, so the next block starts without history.
  LZ4_initStream(&stream, sizeof stream);
  return kStoredHeader + plain.size();
}

std::size_t encodeFramed(std::span<const std::byte> plain, std::span<std::byte> packed) {
  const std::unique_ptr<LZ4_stream_t, FreeStream> stream(LZ4_createStream());
  if (stream == nullptr) return 0;
  std::span<std::byte> room = packed;
  while (!plain.empty()) {
    const auto block = plain.first(std::min(plain.size(), kBlockSize));
    const std::size_t size = encodeBlock(*stream, block, room);
    if (size == 0) return 0;
    plain = plain.subspan(block.size());
    room = room.subspan(size);
  }
  if (room.size() < kWordSize) return 0;
  putWord(room.data(), kEndMagic);
  return packed.size() - room.size() + kWordSize;
}

/// Decompresses one block of known size at `produced`; the bytes before it are its history.
bool decodeBlock(std::span<const std::byte> block, std::span<std::byte> plain, std::size_t produced,
                 std::size_t size) {
  if (!fitsInt(block.size()) || !fitsInt(size)) return false;
  const std::size_t history = std::min(produced, kHistorySize);
  std::byte* const at = plain.data() + produced;
  return LZ4_decompress_safe_usingDict(
             chars(block.data()), chars(at), static_cast<int>(block.size()), static_cast<int>(size),
             chars(at - history), static_cast<int>(history)) == static_cast<int>(size);
}

bool decodeFramed(std::span<const std::byte> packed, std::span<std::byte> plain) {
  Reader reader{packed};
  std::size_t produced = 0;
  for (;;) {
    std::uint32_t magic = 0;
    std::uint32_t size = 0;
    std::span<const std::byte> block;
    if (!reader.word(magic)) return false;
    if (magic == kEndMagic) return produced == plain.size();
    if (!reader.word(size) || size > plain.size() - produced) return false;
    if (magic == kPackedMagic) {
      std::uint32_t packedSize = 0;
      if (!reader.word(packedSize) || !reader.bytes(packedSize, block) ||
          !decodeBlock(block, plain, produced, size)) {
        return false;
      }
    } else if (magic == kStoredMagic) {
      if (!reader.bytes(size, block)) return false;
      std::ranges::copy(block, plain.subspan(produced).begin());
    } else {
      return false;
    }
    produced += size;
  }
}

std::size_t encodeRaw(std::span<const std::byte> plain, std::span<std::byte> packed) {
  if (plain.empty() || plain.size() > LZ4_MAX_INPUT_SIZE) return 0;
  const std::size_t room = std::min<std::size_t>(packed.size(), std::numeric_limits<int>::max());
  return static_cast<std::size_t>(
      std::max(0, LZ4_compress_default(chars(plain.data()), chars(packed.data()),
                                       static_cast<int>(plain.size()), static_cast<int>(room))));
}

bool decodeRaw(std::span<const std::byte> packed, std::span<std::byte> plain) {
  if (packed.empty()) return plain.empty();  // some encoders write empty data this way
  if (!fitsInt(packed.size()) || !fitsInt(plain.size())) return false;
  return LZ4_decompress_safe(chars(packed.data()), chars(plain.data()),
                             static_cast<int>(packed.size()),
                             static_cast<int>(plain.size())) == static_cast<int>(plain.size());
}

}  // namespace

const Codec lz4Codec{encodeFramed, decodeFramed, kLargestExpansion};
const Codec lz4RawCodec{encodeRaw, decodeRaw, kLargestExpansion};

}  // namespace tq
