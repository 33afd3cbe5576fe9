#pragma once

/// @file TQCompression.h
/// Compresses bytes into a self-describing container, which for deflate is a gzip file.
///
/// All integers are little-endian. N is the number of plain bytes.
///
///     0       8  deflate: 1F 8B 08 00 00 00 00 00; otherwise the algorithm (32 bits), 00 00 00 00
///     8       2  00 03
///     10      M  the compressed stream, or the plain bytes if the stream would be longer
///     10 + M  4  CRC-32 of the plain bytes
///     14 + M  4  the low 32 bits of N
///
/// Every function may be called on any thread. Arguments are borrowed for the call. Containers may
/// come from untrusted sources: a length is accepted only if the payload can expand to it, and only
/// memory that receives plain bytes is touched.

#include <cstddef>
#include <cstdint>
#include <span>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/ReadingLimits.h>

namespace tq {

/// The identifiers of algorithms in containers. Functions accept any 32-bit value; only these name
/// an algorithm.
enum class TQCompressionAlgorithm : std::uint32_t {
  stored = 0,
  lz4 = 256,
  lz4Raw = 257,
  deflate = 517,
  lzma = 774,
  lzfse = 2049,
};

/// Returns the container of `bytes`, at most 18 bytes longer than they are. The bytes are stored
/// unchanged if the stream would be longer or the algorithm is unknown. More than 4 GiB can be
/// written, but can be read back only if they were stored: the container keeps 32 bits of N.
///
/// Cost:   one block of N + 18 bytes, truncated to the result; the codec's state while it runs
///         (LZMA: 93 MiB, the others less than 2 MiB).
/// @return null if the block cannot be allocated
[[nodiscard]] TQ_EXPORT Ref<Data> dataByCompressingWithAlgorithm_tq(
    std::span<const std::byte> bytes, TQCompressionAlgorithm algorithm);
[[nodiscard]] TQ_EXPORT Ref<Data> dataByCompressingWithAlgorithm_tq(
    const Data& data, TQCompressionAlgorithm algorithm);

/// Decompresses the bytes between the first `headerSize` and the last `footerSize` bytes.
///
/// Stored bytes are returned, whatever their length. Otherwise the bytes must be a well-formed
/// stream of exactly `uncompressedSize` plain bytes; bytes after the end of the stream are ignored,
/// but LZ4 raw has no end mark: there they are damage.
///
/// Cost:   one block of `uncompressedSize` bytes, only if the payload can expand to as many; a
///         codec state of fixed size.
/// @param error  receives null, or the error if the stored bytes, or an `uncompressedSize` that the
///               payload can expand to, exceed `limits.decompressedBytes`. This is checked before
///               the stream is read. Other failures have no error.
/// @return null if the buffer is shorter than header and footer, the stream is damaged or has
///         another length, the algorithm is unknown, the limit is exceeded, or memory cannot be
///         allocated
[[nodiscard]] TQ_EXPORT Ref<Data> dataByDecompressingWithAlgorithm(
    std::span<const std::byte> bytes, TQCompressionAlgorithm algorithm, std::size_t headerSize,
    std::size_t footerSize, std::uint64_t uncompressedSize, const ReadingLimits& limits = {},
    Ref<Error>* error = nullptr);
[[nodiscard]] TQ_EXPORT Ref<Data> dataByDecompressingWithAlgorithm(
    const Data& data, TQCompressionAlgorithm algorithm, std::size_t headerSize,
    std::size_t footerSize, std::uint64_t uncompressedSize, const ReadingLimits& limits = {},
    Ref<Error>* error = nullptr);

/// Returns the plain bytes of a container, or null if it is not one or is damaged. The CRC is not
/// checked: damage that leaves a well-formed stream of the right length is not detected.
///
/// An older layout is also read, for LZFSE and 18 bytes or more: the algorithm (32 bits), N (64
/// bits), the stream.
///
/// A container of 625 KB can expand to 4 GiB: for data from outside, set a limit. `limits` and
/// `error` are those of dataByDecompressingWithAlgorithm().
[[nodiscard]] TQ_EXPORT Ref<Data> dataByDecompressing_tq(std::span<const std::byte> bytes,
                                                         const ReadingLimits& limits = {},
                                                         Ref<Error>* error = nullptr);
[[nodiscard]] TQ_EXPORT Ref<Data> dataByDecompressing_tq(const Data& data,
                                                         const ReadingLimits& limits = {},
                                                         Ref<Error>* error = nullptr);

/// Returns whether there are at least 18 bytes and they begin with 1F 8B.
[[nodiscard]] TQ_EXPORT bool isGzipped_tq(std::span<const std::byte> bytes) noexcept;
[[nodiscard]] TQ_EXPORT bool isGzipped_tq(const Data& data) noexcept;

/// Thrown when bytes cannot be compressed to a gzip file: the stream would be longer, as for very
/// few or random bytes, or memory cannot be allocated.
class TQ_EXPORT gzip_tqError final : public Exception {
 public:
  gzip_tqError();
  ~gzip_tqError() override;
};

/// The domain and the code of the same failure as an error.
inline constexpr std::string_view gzip_tqErrorDomain = "com.korvan.gzip_tq";
inline constexpr std::int64_t gzip_tqErrorCannotCompress = 1;

/// Returns a gzip file of `bytes`, which is their deflate container.
/// @throws gzip_tqError
[[nodiscard]] TQ_EXPORT Ref<Data> gzipped_tq(std::span<const std::byte> bytes);
[[nodiscard]] TQ_EXPORT Ref<Data> gzipped_tq(const Data& data);

/// Does the same, but returns null and an error in gzip_tqErrorDomain instead of throwing.
[[nodiscard]] TQ_EXPORT Ref<Data> gzipped_tqAndReturnError(std::span<const std::byte> bytes,
                                                           Ref<Error>* error);
[[nodiscard]] TQ_EXPORT Ref<Data> gzipped_tqAndReturnError(const Data& data, Ref<Error>* error);

}  // namespace tq
