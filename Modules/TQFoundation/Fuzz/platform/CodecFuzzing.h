#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>

#include <TQFoundation/platform/bytes/Codec.h>

#include "../support/Bytes.h"

namespace tq::fuzz {

/// A heap block of exactly the given size, so that an access beyond either end is detected.
struct Block {
  std::unique_ptr<std::byte[]> memory;
  std::span<std::byte> bytes;

  explicit Block(std::size_t size) : memory(new std::byte[size]), bytes(memory.get(), size) {}
  explicit Block(std::span<const std::byte> copied) : Block(copied.size()) {
    std::copy(copied.begin(), copied.end(), bytes.begin());
  }
};

inline void unpackHostile(const Codec& codec, std::span<const std::byte> input,
                          std::size_t length) {
  const Block packed(input);
  const Block plain(length);
  if (!codec.decode(packed.bytes, plain.bytes)) return;
  require(length <= packed.bytes.size() * codec.largestExpansion);
  // A stream decodes to exactly one length.
  const Block longer(length + 1);
  require(!codec.decode(packed.bytes, longer.bytes));
  if (length > 0) {
    const Block shorter(length - 1);
    require(!codec.decode(packed.bytes, shorter.bytes));
  }
}

inline void packAndUnpack(const Codec& codec, std::span<const std::byte> input,
                          std::size_t capacity) {
  const Block plain(input);
  const Block packed(capacity);
  const std::size_t size = codec.encode(plain.bytes, packed.bytes);
  require(size <= capacity);
  if (size == 0) return;
  const Block fitting(packed.bytes.first(size));
  const Block back(plain.bytes.size());
  require(codec.decode(fitting.bytes, back.bytes));
  require(std::equal(back.bytes.begin(), back.bytes.end(), plain.bytes.begin()));
}

/// Damages a byte of a valid stream.
inline void unpackDamaged(const Codec& codec, std::span<const std::byte> input,
                          std::size_t position, std::byte damage) {
  const Block packed(input.size() + 64);
  const std::size_t size = codec.encode(input, packed.bytes);
  if (size == 0) return;
  packed.bytes[position % size] ^= damage;
  unpackHostile(codec, packed.bytes.first(size), input.size());
}

/// The first four bytes control the run, the rest is the input: bit 31 selects compression, and the
/// low 17 bits are the length of the output. Bit 30 selects damage: bits 17 to 24 change the byte
/// at the place that the low 17 bits name.
inline int fuzzCodec(const Codec& codec, const std::uint8_t* data, std::size_t size) {
  std::uint32_t control = 0;
  if (size < sizeof control) return -1;
  std::memcpy(&control, data, sizeof control);
  const auto input = std::as_bytes(std::span(data, size)).subspan(sizeof control);
  const std::size_t length = control & 0x1ffff;
  if (control >> 31 != 0) {
    packAndUnpack(codec, input, length % (input.size() + 64));
  } else if (control >> 30 != 0) {
    unpackDamaged(codec, input, length, static_cast<std::byte>(control >> 17 & 0xff));
  } else {
    unpackHostile(codec, input, length);
  }
  return 0;
}

}  // namespace tq::fuzz
