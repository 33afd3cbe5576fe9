#pragma once

/// @file Codec.h
/// Lossless packing of whole buffers, one codec a stream format.

#include <cstddef>
#include <span>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// The two directions of a stream format. Threads: any, several at a time; nothing is kept between
/// calls. Buffers must not overlap.
struct Codec {
  /// Packs `plain` into `packed`. @return the bytes written; 0 when they do not fit, when there is
  /// no memory for the codec's state, or when the format cannot hold a plain of that size
  std::size_t (*encode)(std::span<const std::byte> plain, std::span<std::byte> packed);

  /// Unpacks into `plain`. True when `packed` starts with a whole, well-formed stream whose plain
  /// is exactly as long as `plain`; bytes behind the stream's own end are not looked at. Otherwise
  /// false, and `plain` holds anything. Takes hostile input, and no memory beyond a fixed state.
  bool (*decode)(std::span<const std::byte> packed, std::span<std::byte> plain);

  /// No stream of n bytes has a plain longer than n times this.
  std::size_t largestExpansion;

  /// Room that encode() wants behind a stream's end to be sure to find it; it may use it.
  std::size_t slack = 0;
};

/// Raw deflate (RFC 1951).
TQ_EXPORT extern const Codec deflateCodec;

/// LZ4 blocks, each after a magic word and its sizes; the blocks share one history.
TQ_EXPORT extern const Codec lz4Codec;

/// One bare LZ4 block. Carries no end: `packed` must be the block and nothing else. Plains are at
/// most 0x7E000000 bytes long.
TQ_EXPORT extern const Codec lz4RawCodec;

/// One .xz stream, written at preset 6 without an integrity check. Any preset, filterless or not,
/// and any check are read, with up to 128 MiB of state.
TQ_EXPORT extern const Codec lzmaCodec;

/// LZFSE, with every kind of block read.
TQ_EXPORT extern const Codec lzfseCodec;

}  // namespace tq
