#include <algorithm>
#include <cstdint>
#include <memory>
#include <new>

#include <TQFoundation/platform/bytes/Codec.h>
#include <TQFoundation/platform/bytes/lzfse/BlockDecoder.h>
#include <TQFoundation/platform/bytes/lzfse/Encoder.h>
#include <TQFoundation/platform/bytes/lzfse/Format.h>
#include <TQFoundation/platform/bytes/lzfse/LZVN.h>
#include <TQFoundation/platform/bytes/lzfse/Output.h>

namespace tq {
namespace {

using namespace lzfse;

/// Best case: 11 bits lengthen a match from 15 to 2359 bytes. Symbols that take no bits, 10000
/// matches of 15 bytes and 40000 literals in a block, expand less: a block takes at least 135
/// bytes.
constexpr std::size_t kLargestExpansion = 1705;

constexpr std::size_t kFewestLZVNPlain = 8;
constexpr std::size_t kMostStoredPlain = 0x7ffffffe;

/// Writes an LZVN block if its opcodes are shorter than the plain bytes.
std::size_t encodeShort(std::span<const std::byte> plain, std::span<std::byte> packed) {
  if (plain.size() < kFewestLZVNPlain || packed.size() < kLZVNHeaderSize + kMagicSize) return 0;
  const auto room = packed.subspan(kLZVNHeaderSize, packed.size() - kLZVNHeaderSize - kMagicSize);
  const std::size_t size = encodeLZVN(plain, room.first(std::min(room.size(), plain.size() - 1)));
  if (size == 0) return 0;
  store(packed.data(), kLZVNMagic);
  store(packed.data() + 4, static_cast<std::uint32_t>(plain.size()));
  store(packed.data() + 8, static_cast<std::uint32_t>(size));
  return kLZVNHeaderSize + size;
}

std::size_t encodeStored(std::span<const std::byte> plain, std::span<std::byte> packed) {
  if (plain.size() > kMostStoredPlain ||
      packed.size() < plain.size() + kStoredHeaderSize + kMagicSize) {
    return 0;
  }
  store(packed.data(), kStoredMagic);
  store(packed.data() + 4, static_cast<std::uint32_t>(plain.size()));
  std::copy(plain.begin(), plain.end(), packed.begin() + kStoredHeaderSize);
  return kStoredHeaderSize + plain.size();
}

std::size_t encode(std::span<const std::byte> plain, std::span<std::byte> packed) {
  if (packed.size() < kMagicSize) return 0;
  const auto room = packed.first(packed.size() - kMagicSize);
  std::size_t size =
      plain.size() < kFewestBlockPlain ? encodeShort(plain, packed) : encodeBlocks(plain, room);
  if (size == 0 || size > plain.size() + kStoredHeaderSize) {
    const std::size_t stored = encodeStored(plain, packed);
    if (stored != 0) size = stored;
  }
  if (size == 0) return 0;
  store(packed.data() + size, kEndMagic);
  return size + kMagicSize;
}

/// @return the size of the block at the front of `bytes`; 0 if it is damaged
std::size_t decodeStored(std::span<const std::byte> bytes, Output& output) {
  if (bytes.size() < kStoredHeaderSize) return 0;
  const std::size_t size = load<std::uint32_t>(bytes.data() + 4);
  if (size > bytes.size() - kStoredHeaderSize || size > output.room()) return 0;
  output.append(bytes.data() + kStoredHeaderSize, size);
  return kStoredHeaderSize + size;
}

std::size_t decodeShort(std::span<const std::byte> bytes, Output& output) {
  if (bytes.size() < kLZVNHeaderSize) return 0;
  const std::size_t plainSize = load<std::uint32_t>(bytes.data() + 4);
  const std::size_t size = load<std::uint32_t>(bytes.data() + 8);
  if (size > bytes.size() - kLZVNHeaderSize ||
      !decodeLZVN(bytes.subspan(kLZVNHeaderSize, size), plainSize, output)) {
    return 0;
  }
  return kLZVNHeaderSize + size;
}

bool decode(std::span<const std::byte> packed, std::span<std::byte> plain) {
  Output output(plain);
  std::unique_ptr<BlockDecoder> blocks;  // created for the first LZFSE block
  while (packed.size() >= kMagicSize) {
    std::size_t size = 0;
    switch (load<std::uint32_t>(packed.data())) {
      case kEndMagic:
        return output.room() == 0;
      case kStoredMagic:
        size = decodeStored(packed, output);
        break;
      case kLZVNMagic:
        size = decodeShort(packed, output);
        break;
      case kPlainMagic:
      case kPackedMagic:
        if (blocks == nullptr) blocks.reset(new (std::nothrow) BlockDecoder);
        if (blocks != nullptr) size = blocks->decode(packed, output);
        break;
      default:
        break;
    }
    if (size == 0) return false;
    packed = packed.subspan(size);
  }
  return false;
}

}  // namespace

const Codec lzfseCodec{encode, decode, kLargestExpansion};

}  // namespace tq
