#include <TQFoundation/serialisation/TQCompression.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <new>
#include <utility>

#include <TQFoundation/platform/bytes/Checksum.h>
#include <TQFoundation/platform/bytes/Codec.h>

namespace tq {
namespace {

constexpr std::size_t kHeaderSize = 10;
constexpr std::size_t kFooterSize = 8;
constexpr std::size_t kContainerSize = kHeaderSize + kFooterSize;

/// Magic, method 8, no flags, no time, no extra flags, operating system 3.
constexpr std::array<std::uint8_t, kHeaderSize> kGzipHeader = {0x1f, 0x8b, 8, 0, 0, 0, 0, 0, 0, 3};

// The older layout of LZFSE containers: identifier, 64-bit length, stream.
constexpr std::size_t kOldHeaderSize = 12;
constexpr std::size_t kOldLengthOffset = 4;

constexpr const char* kCannotCompress =
    "The data could not be compressed to a gzip file because it would not become smaller.";

/// Returns null for stored bytes and unknown algorithms.
const Codec* codecFor(TQCompressionAlgorithm algorithm) noexcept {
  switch (algorithm) {
    case TQCompressionAlgorithm::lz4:
      return &lz4Codec;
    case TQCompressionAlgorithm::lz4Raw:
      return &lz4RawCodec;
    case TQCompressionAlgorithm::deflate:
      return &deflateCodec;
    case TQCompressionAlgorithm::lzma:
      return &lzmaCodec;
    case TQCompressionAlgorithm::lzfse:
      return &lzfseCodec;
    case TQCompressionAlgorithm::stored:
      break;
  }
  return nullptr;
}

template <class Integer>
void putLittleEndian(std::byte* at, Integer value) noexcept {
  for (std::size_t i = 0; i < sizeof value; ++i) at[i] = static_cast<std::byte>(value >> (8 * i));
}

template <class Integer>
Integer littleEndianAt(std::span<const std::byte> bytes, std::size_t offset) noexcept {
  Integer value = 0;
  for (std::size_t i = sizeof value; i-- > 0;) {
    value = static_cast<Integer>(value << 8 | std::to_integer<Integer>(bytes[offset + i]));
  }
  return value;
}

/// Returns whether a stream of `payloadSize` bytes can expand to `uncompressedSize` bytes.
bool isWithinReach(std::uint64_t uncompressedSize, std::size_t payloadSize, const Codec& codec) {
  return uncompressedSize / codec.largestExpansion <= payloadSize;
}

/// Returns whether a container has the older layout. There, the bytes 4 to 9 belong to a length;
/// the fixed ones of the newer layout would be a length of more than 2^41.
bool isOlderLayout(std::span<const std::byte> bytes, TQCompressionAlgorithm algorithm) noexcept {
  return algorithm == TQCompressionAlgorithm::lzfse &&
         std::memcmp(&bytes[4], &kGzipHeader[4], kHeaderSize - 4) != 0;
}

Ref<Data> unpack(std::span<const std::byte> payload, const Codec& codec,
                 std::uint64_t uncompressedSize) {
  const auto size = static_cast<std::size_t>(uncompressedSize);
  const Ref<MutableData> plain = MutableData::data();
  if (!codec.decode(payload, plain->spareRoom(size).first(size))) return nullptr;
  plain->commit(size);
  return Data::dataByTakingBytes(*plain);
}

}  // namespace

Ref<Data> dataByCompressingWithAlgorithm_tq(std::span<const std::byte> bytes,
                                            TQCompressionAlgorithm algorithm) try {
  const std::size_t size = bytes.size();
  const Ref<MutableData> container = MutableData::data();
  const Codec* const codec = codecFor(algorithm);
  const std::size_t slack = codec != nullptr ? codec->slack : 0;
  const std::span<std::byte> room = container->spareRoom(size + kContainerSize + slack);
  const std::span<std::byte> payload = room.subspan(kHeaderSize, size + slack);

  std::size_t packed = codec != nullptr ? codec->encode(bytes, payload) : 0;
  if (packed == 0 || packed > size) {
    algorithm = TQCompressionAlgorithm::stored;
    packed = size;
    if (size > 0) std::memcpy(payload.data(), bytes.data(), size);
  }
  std::memcpy(room.data(), kGzipHeader.data(), kHeaderSize);
  if (algorithm != TQCompressionAlgorithm::deflate) {
    putLittleEndian(room.data(), static_cast<std::uint32_t>(algorithm));
  }
  std::byte* const footer = room.data() + kHeaderSize + packed;
  putLittleEndian(footer, crc32(bytes));
  putLittleEndian(footer + 4, static_cast<std::uint32_t>(size));
  container->commit(packed + kContainerSize);
  return Data::dataByTakingBytes(*container);
} catch (const std::bad_alloc&) {
  return nullptr;
}

Ref<Data> dataByDecompressingWithAlgorithm(std::span<const std::byte> bytes,
                                           TQCompressionAlgorithm algorithm, std::size_t headerSize,
                                           std::size_t footerSize, std::uint64_t uncompressedSize,
                                           const ReadingLimits& limits, Ref<Error>* error) try {
  setOutError(error, nullptr);
  if (headerSize > bytes.size() || footerSize > bytes.size() - headerSize) return nullptr;
  const auto payload = bytes.subspan(headerSize, bytes.size() - headerSize - footerSize);
  const bool isStored = algorithm == TQCompressionAlgorithm::stored;
  const Codec* const codec = codecFor(algorithm);
  if (!isStored && codec == nullptr) return nullptr;
  // A false length is damage, not a large content.
  if (!isStored && !isWithinReach(uncompressedSize, payload.size(), *codec)) return nullptr;
  if ((isStored ? payload.size() : uncompressedSize) > limits.decompressedBytes) {
    setOutError(error, readingLimitError(ReadingLimit::decompressedBytes));
    return nullptr;
  }
  return isStored ? Data::dataWithBytes(payload) : unpack(payload, *codec, uncompressedSize);
} catch (const std::bad_alloc&) {
  return nullptr;
}

Ref<Data> dataByDecompressing_tq(std::span<const std::byte> bytes, const ReadingLimits& limits,
                                 Ref<Error>* error) {
  setOutError(error, nullptr);
  if (bytes.size() < kContainerSize) return nullptr;
  const auto algorithm =
      isGzipped_tq(bytes)
          ? TQCompressionAlgorithm::deflate
          : static_cast<TQCompressionAlgorithm>(littleEndianAt<std::uint32_t>(bytes, 0));
  Ref<Error> newer;
  Ref<Error> older;
  Ref<Data> plain = dataByDecompressingWithAlgorithm(
      bytes, algorithm, kHeaderSize, kFooterSize,
      littleEndianAt<std::uint32_t>(bytes, bytes.size() - 4), limits, &newer);
  if (plain == nullptr && algorithm == TQCompressionAlgorithm::lzfse) {
    plain = dataByDecompressingWithAlgorithm(bytes, algorithm, kOldHeaderSize, 0,
                                             littleEndianAt<std::uint64_t>(bytes, kOldLengthOffset),
                                             limits, &older);
  }
  // Where one layout has a length, the other has something else.
  if (plain == nullptr) setOutError(error, isOlderLayout(bytes, algorithm) ? older : newer);
  return plain;
}

bool isGzipped_tq(std::span<const std::byte> bytes) noexcept {
  return bytes.size() >= kContainerSize && bytes[0] == std::byte{0x1f} &&
         bytes[1] == std::byte{0x8b};
}

gzip_tqError::gzip_tqError() : Exception("gzip_tqError", kCannotCompress) {}

gzip_tqError::~gzip_tqError() = default;

Ref<Data> gzipped_tqAndReturnError(std::span<const std::byte> bytes, Ref<Error>* error) {
  Ref<Data> container = dataByCompressingWithAlgorithm_tq(bytes, TQCompressionAlgorithm::deflate);
  if (container != nullptr && isGzipped_tq(*container)) return container;
  setOutError(error, Error::errorWithDomain(gzip_tqErrorDomain, gzip_tqErrorCannotCompress,
                                            kCannotCompress));
  return nullptr;
}

Ref<Data> gzipped_tq(std::span<const std::byte> bytes) {
  Ref<Data> container = gzipped_tqAndReturnError(bytes, nullptr);
  if (container == nullptr) throw gzip_tqError();
  return container;
}

Ref<Data> dataByCompressingWithAlgorithm_tq(const Data& data, TQCompressionAlgorithm algorithm) {
  return dataByCompressingWithAlgorithm_tq(data.bytes(), algorithm);
}

Ref<Data> dataByDecompressingWithAlgorithm(const Data& data, TQCompressionAlgorithm algorithm,
                                           std::size_t headerSize, std::size_t footerSize,
                                           std::uint64_t uncompressedSize,
                                           const ReadingLimits& limits, Ref<Error>* error) {
  return dataByDecompressingWithAlgorithm(data.bytes(), algorithm, headerSize, footerSize,
                                          uncompressedSize, limits, error);
}

Ref<Data> dataByDecompressing_tq(const Data& data, const ReadingLimits& limits, Ref<Error>* error) {
  return dataByDecompressing_tq(data.bytes(), limits, error);
}

bool isGzipped_tq(const Data& data) noexcept { return isGzipped_tq(data.bytes()); }

Ref<Data> gzipped_tq(const Data& data) { return gzipped_tq(data.bytes()); }

Ref<Data> gzipped_tqAndReturnError(const Data& data, Ref<Error>* error) {
  return gzipped_tqAndReturnError(data.bytes(), error);
}

}  // namespace tq
