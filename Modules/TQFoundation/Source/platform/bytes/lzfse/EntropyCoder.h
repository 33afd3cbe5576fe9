#pragma once

/// @file EntropyCoder.h
/// A finite-state entropy coder. Each symbol owns a run of states; frequent symbols own more.
///
/// With 2^n states and weights f that add up to them, symbol i owns f(i) neighbouring states. To
/// code it, low bits of the state are written until the rest is in f(i)...2 f(i) - 1, which selects
/// one of its states as the next. Decoding reverses this: the coder processes the symbols backwards
/// and the decoder gets them forwards, from a stack of bits.
///
/// Source: Duda, Asymmetric numeral systems (2013), in its tabled form without spreading.

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>

#include <TQFoundation/platform/bytes/lzfse/Format.h>

namespace tq::lzfse {

/// Pops fields off a stack of bits. The payload must begin at least 8 bytes after the start of its
/// buffer: whole words are loaded, so bytes before it are read, but not used.
class BitReader {
 public:
  /// Returns false if there are fewer bits than unused ones, or if these are not 0.
  [[nodiscard]] bool open(std::span<const std::byte> payload, unsigned unusedBits) noexcept {
    if (payload.empty()) return unusedBits == 0;
    if (std::to_integer<unsigned>(payload.back()) >> (8 - unusedBits) != 0) return false;
    base_ = payload.data();
    bits_ = static_cast<std::ptrdiff_t>(8 * payload.size() - unusedBits);
    return true;
  }

  /// Loads at least 57 bits, the next one on top. Must not be called once isExhausted().
  void fill() noexcept {
    // Nothing may be loaded before the first byte of an empty payload.
    const std::ptrdiff_t bytes = (bits_ + 7) / 8;
    word_ = bytes > 0 ? load<std::uint64_t>(base_ + bytes - 8) << (8 * bytes - bits_) : 0;
  }

  /// Returns the next `count` bits (0...32) of the word.
  [[nodiscard]] std::uint32_t pop(unsigned count) noexcept {
    const auto value = static_cast<std::uint32_t>(word_ >> 1 >> (63 - count));
    word_ <<= count;
    bits_ -= count;
    return value;
  }

  /// Returns true if more bits were popped than there were.
  [[nodiscard]] bool isExhausted() const noexcept { return bits_ < 0; }

 private:
  const std::byte* base_ = nullptr;
  std::ptrdiff_t bits_ = 0;  // bits left, without those of the loaded word
  std::uint64_t word_ = 0;
};

/// Pushes fields onto a stack of bits. Bits that do not fit are dropped; see overflowed().
class BitWriter {
 public:
  explicit BitWriter(std::span<std::byte> room) noexcept : room_(room) {}

  /// At most 57 bits between two calls of flush(). `value` has no bit above `count`.
  void push(std::uint32_t value, unsigned count) noexcept {
    word_ |= std::uint64_t{value} << count_;
    count_ += count;
  }

  /// Writes the complete bytes.
  void flush() noexcept {
    const std::size_t bytes = count_ / 8;
    if (room_.size() >= sizeof word_) {
      store(room_.data(), word_);
    } else if (room_.size() >= bytes) {
      std::memcpy(room_.data(), &word_, bytes);
    } else {
      overflowed_ = true;
    }
    room_ = room_.subspan(std::min(bytes, room_.size()));
    word_ >>= 8 * bytes;
    count_ %= 8;
  }

  /// Writes the last byte. @return the number of its unused bits
  unsigned finish() noexcept {
    flush();
    const unsigned unused = (8 - count_) % 8;
    count_ += unused;
    flush();
    return unused;
  }

  [[nodiscard]] bool overflowed() const noexcept { return overflowed_; }
  [[nodiscard]] std::span<std::byte> room() const noexcept { return room_; }

 private:
  std::span<std::byte> room_;
  std::uint64_t word_ = 0;
  unsigned count_ = 0;
  bool overflowed_ = false;
};

/// How to code one symbol: a state above a threshold writes one bit more.
struct EncoderEntry {
  std::int32_t threshold;
  std::int32_t bits;
  std::int32_t offset;
};

template <std::size_t symbols, unsigned stateBits>
class SymbolEncoder {
 public:
  explicit SymbolEncoder(const std::array<std::uint16_t, symbols>& weights) noexcept {
    std::int32_t firstState = 0;
    for (std::size_t i = 0; i < symbols; ++i) {
      const std::int32_t weight = weights[i];
      if (weight == 0) continue;
      const int bits =
          static_cast<int>(stateBits) + 1 - static_cast<int>(std::bit_width(weights[i]));
      entries_[i] = {(weight << bits) - kStates, bits, firstState - weight};
      firstState += weight;
    }
  }

  /// Codes a symbol, which must have a weight.
  void encode(std::size_t symbol, BitWriter& bits) noexcept {
    const EncoderEntry& entry = entries_[symbol];
    const auto count = static_cast<unsigned>(entry.bits - (state_ < entry.threshold ? 1 : 0));
    bits.push(static_cast<std::uint32_t>(state_) & ((1u << count) - 1), count);
    state_ = entry.offset + ((kStates + state_) >> count);
  }

  [[nodiscard]] std::uint32_t state() const noexcept { return static_cast<std::uint32_t>(state_); }

 private:
  static constexpr std::int32_t kStates = 1 << stateBits;
  std::array<EncoderEntry, symbols> entries_{};
  std::int32_t state_ = 0;
};

/// A state of the decoder: bits to read, and the next state if these are 0.
struct StateStep {
  unsigned bits;
  std::uint32_t base;
};

/// Calls `visit(state, symbol, step)` for every state. The weights add up to all states.
template <unsigned stateBits, std::size_t symbols, class Visit>
void forEachState(const std::array<std::uint16_t, symbols>& weights, Visit visit) {
  std::uint32_t state = 0;
  for (std::size_t symbol = 0; symbol < symbols; ++symbol) {
    const std::uint32_t weight = weights[symbol];
    for (std::uint32_t y = weight; y < 2 * weight; ++y) {
      const unsigned bits = stateBits + 1 - static_cast<unsigned>(std::bit_width(y));
      visit(state++, symbol, StateStep{bits, (y << bits) - (1u << stateBits)});
    }
  }
}

/// Scales counts to weights that add up to 2^stateBits; each symbol that occurs gets at least 1.
/// If all counts are 0, the first symbol gets all states.
void weightsFromCounts(std::span<const std::uint32_t> counts, unsigned stateBits,
                       std::span<std::uint16_t> weights) noexcept;

}  // namespace tq::lzfse
