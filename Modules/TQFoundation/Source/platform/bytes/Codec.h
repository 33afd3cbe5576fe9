#pragma once

/// @file Codec.h
/// Lossless compression of whole buffers.

#include <cstddef>
#include <span>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// The compressor and decompressor of a stream format. Stateless: any thread, several at a time.
/// Buffers must not overlap.
struct Codec {
  /// Compresses `plain` into `packed`. @return the number of bytes written; 0 if they do not fit,
  /// if there is no memory for the codec's state, if `plain` is too long for the format, and for
  /// lz4RawCodec if `plain` is empty
  std::size_t (*encode)(std::span<const std::byte> plain, std::span<std::byte> packed);

  /// Decompresses into `plain`. Returns true if `packed` starts with a complete, well-formed stream
  /// whose plain data is exactly as long as `plain`; bytes after the end of the stream are ignored.
  /// Otherwise returns false and leaves `plain` undefined. Input may be hostile. Memory: a fixed
  /// amount for the codec's state.
  bool (*decode)(std::span<const std::byte> packed, std::span<std::byte> plain);

  /// A stream of n bytes expands to at most n · largestExpansion plain bytes.
  std::size_t largestExpansion;

  /// Extra bytes that `packed` needs for encode() to succeed whenever the stream itself would fit.
  std::size_t slack = 0;
};

/// Raw deflate (RFC 1951).
TQ_EXPORT extern const Codec deflateCodec;

/// LZ4 blocks, each preceded by a magic word and its sizes. A block may refer to earlier ones.
TQ_EXPORT extern const Codec lz4Codec;

/// One raw LZ4 block. It has no end mark: `packed` must be exactly the block. Plain data has at
/// most 0x7E000000 bytes.
TQ_EXPORT extern const Codec lz4RawCodec;

/// One .xz stream, written at preset 6 without an integrity check. Streams of any preset, filter
/// and check are read if their state takes at most 128 MiB.
TQ_EXPORT extern const Codec lzmaCodec;

/// LZFSE. All kinds of blocks are read.
TQ_EXPORT extern const Codec lzfseCodec;

}  // namespace tq
