#pragma once

/// @file TQCompression.h
/// A small self-describing container for compressed bytes; for deflate it is a gzip file.
///
/// All integers are little-endian, N is the length of the plain bytes:
///
///     0       8  deflate: 1F 8B 08 00 00 00 00 00; otherwise the algorithm (32 bits), 00 00 00 00
///     8       2  00 03
///     10      M  the compressed stream, or the plain bytes themselves when it would be longer
///     10 + M  4  CRC-32 of the plain bytes
///     14 + M  4  N, its low 32 bits
///
/// Every function may be called on any thread. Bytes that are only looked at are borrowed for the
/// call. What is read may come from anywhere: lengths are believed only as far as the payload could
/// unpack to them, and no more memory is touched than is really produced.

#include <cstddef>
#include <cstdint>
#include <span>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Exception.h>

namespace tq {

/// Identifiers as they stand in a container. Any 32-bit value may be asked for; only these name an
/// algorithm.
enum class TQCompressionAlgorithm : std::uint32_t {
  stored = 0,
  lz4 = 256,
  lz4Raw = 257,
  deflate = 517,
  lzma = 774,
  lzfse = 2049,
};

/// The container of `bytes`: at most 18 bytes longer than they are. They are stored as they are
/// when the algorithm does not make them shorter or equal, or is none of those above. Plains beyond
/// 4 GiB are written, but only stored ones can be read back: the container keeps 32 bits of N.
///
/// Cost:   one block of N + 18 bytes, cut to the result; the codec's state while it runs (LZMA: 93
///         MiB, the others less than 2 MiB).
/// @return none when there is no memory for that block
[[nodiscard]] TQ_EXPORT Ref<Data> dataByCompressingWithAlgorithm_tq(
    std::span<const std::byte> bytes, TQCompressionAlgorithm algorithm);
[[nodiscard]] TQ_EXPORT Ref<Data> dataByCompressingWithAlgorithm_tq(
    const Data& data, TQCompressionAlgorithm algorithm);

/// Unpacks what lies between the first `headerSize` and the last `footerSize` bytes.
///
/// Stored bytes are returned whatever length was expected. Everything else must be a well-formed
/// stream of exactly `uncompressedSize` plain bytes; bytes behind the stream's own end are ignored.
///
/// Cost:   one block of `uncompressedSize` bytes, and that only when the payload is long enough to
///         unpack to so many; a fixed codec state.
/// @return none when the buffer is shorter than header and footer, the stream is damaged or of
///         another length, the algorithm is unknown, or there is no memory
[[nodiscard]] TQ_EXPORT Ref<Data> dataByDecompressingWithAlgorithm(std::span<const std::byte> bytes,
                                                                   TQCompressionAlgorithm algorithm,
                                                                   std::size_t headerSize,
                                                                   std::size_t footerSize,
                                                                   std::uint64_t uncompressedSize);
[[nodiscard]] TQ_EXPORT Ref<Data> dataByDecompressingWithAlgorithm(const Data& data,
                                                                   TQCompressionAlgorithm algorithm,
                                                                   std::size_t headerSize,
                                                                   std::size_t footerSize,
                                                                   std::uint64_t uncompressedSize);

/// The plain bytes of a container; none when it is not one or is damaged. The CRC is not checked:
/// damage that leaves a well-formed stream of the right length goes unnoticed.
///
/// An older layout is read too, for LZFSE: the algorithm (32 bits), N (64 bits), the stream.
[[nodiscard]] TQ_EXPORT Ref<Data> dataByDecompressing_tq(std::span<const std::byte> bytes);
[[nodiscard]] TQ_EXPORT Ref<Data> dataByDecompressing_tq(const Data& data);

/// At least 18 bytes that begin with 1F 8B.
[[nodiscard]] TQ_EXPORT bool isGzipped_tq(std::span<const std::byte> bytes) noexcept;
[[nodiscard]] TQ_EXPORT bool isGzipped_tq(const Data& data) noexcept;

/// Bytes that could not be made a gzip file: they would not get shorter or equal (the shortest and
/// random ones never do), or there was no memory.
class TQ_EXPORT gzip_tqError final : public Exception {
 public:
  gzip_tqError();
  ~gzip_tqError() override;
};

/// Domain and code of the same failure as an error object.
inline constexpr std::string_view gzip_tqErrorDomain = "com.korvan.gzip_tq";
inline constexpr std::int64_t gzip_tqErrorCannotCompress = 1;

/// A gzip file of `bytes`: their deflate container, when deflate makes them shorter or equal.
/// @throws gzip_tqError
[[nodiscard]] TQ_EXPORT Ref<Data> gzipped_tq(std::span<const std::byte> bytes);
[[nodiscard]] TQ_EXPORT Ref<Data> gzipped_tq(const Data& data);

/// The same; none, and an error in gzip_tqErrorDomain, instead of an exception.
[[nodiscard]] TQ_EXPORT Ref<Data> gzipped_tqAndReturnError(std::span<const std::byte> bytes,
                                                           Ref<Error>* error);
[[nodiscard]] TQ_EXPORT Ref<Data> gzipped_tqAndReturnError(const Data& data, Ref<Error>* error);

}  // namespace tq
