#include <TQFoundation/platform/bytes/lzfse/BlockHeader.h>

#include <algorithm>
#include <array>
#include <bit>
#include <numeric>

namespace tq::lzfse {
namespace {

// The packed form: magic, plain size, three words of bit fields, weights.
//
//   word 1   literalCount 20, literalBytes 20, tripleCount 20, 7 - literalUnusedBits 3
//   word 2   literalStates 4 × 10, tripleBytes 20, 7 - tripleUnusedBits 3
//   word 3   header size 32, literalRunState 10, matchLengthState 10, distanceState 10
constexpr std::size_t kFixedSize = 32;

// The plain form, at the same offsets in every block.
constexpr std::size_t kPlainSize = 772;
constexpr std::size_t kPlainWeightsOffset = 50;

using AllWeights = std::array<std::uint16_t, sizeof(Weights) / sizeof(std::uint16_t)>;

std::uint32_t field(std::uint64_t word, unsigned offset, unsigned bits) noexcept {
  return static_cast<std::uint32_t>(word >> offset & ((std::uint64_t{1} << bits) - 1));
}

/// A prefix code for weights, lowest bit first; small ones are short.
struct WeightCode {
  std::uint32_t bits;
  std::uint32_t value;
};

WeightCode weightCode(std::uint32_t weight) noexcept {
  constexpr WeightCode kSmall[] = {{2, 0}, {2, 2}, {3, 1}, {3, 5}};
  if (weight < 4) return kSmall[weight];
  if (weight < 8) return {5, 3 + 8 * (weight - 4)};
  if (weight < 24) return {8, 7 + 16 * (weight - 8)};
  return {14, 15 + 16 * (weight - 24)};
}

/// Returns the weight whose code is at the front of `word`, and the length of the code.
WeightCode weightOf(std::uint32_t word) noexcept {
  if ((word & 1) == 0) return {2, word >> 1 & 1};
  if ((word & 2) == 0) return {3, 2 + (word >> 2 & 1)};
  if ((word & 4) == 0) return {5, 4 + (word >> 3 & 3)};
  if ((word & 8) == 0) return {8, 8 + (word >> 4 & 15)};
  return {14, 24 + (word >> 4 & 1023)};
}

/// The codes must use all bytes, and no more.
bool readWeights(std::span<const std::byte> bytes, Weights& weights) noexcept {
  AllWeights all{};
  if (!bytes.empty()) {  // without bytes, all weights are 0
    std::uint32_t word = 0;
    unsigned available = 0;
    for (std::uint16_t& weight : all) {
      while (available < 14 && !bytes.empty()) {
        word |= std::to_integer<std::uint32_t>(bytes.front()) << available;
        bytes = bytes.subspan(1);
        available += 8;
      }
      const WeightCode code = weightOf(word);
      if (code.bits > available) return false;
      weight = static_cast<std::uint16_t>(code.value);
      word >>= code.bits;
      available -= code.bits;
    }
    if (!bytes.empty() || available >= 8) return false;
  }
  weights = std::bit_cast<Weights>(all);
  return true;
}

std::size_t readPacked(std::span<const std::byte> bytes, BlockHeader& header) noexcept {
  if (bytes.size() < kFixedSize) return 0;
  const auto word1 = load<std::uint64_t>(bytes.data() + 8);
  const auto word2 = load<std::uint64_t>(bytes.data() + 16);
  const auto word3 = load<std::uint64_t>(bytes.data() + 24);
  header.plainSize = load<std::uint32_t>(bytes.data() + 4);
  header.literalCount = field(word1, 0, 20);
  header.literalBytes = field(word1, 20, 20);
  header.tripleCount = field(word1, 40, 20);
  header.literalUnusedBits = 7 - field(word1, 60, 3);
  for (unsigned i = 0; i < kLiteralGroup; ++i) header.literalStates[i] = field(word2, 10 * i, 10);
  header.tripleBytes = field(word2, 40, 20);
  header.tripleUnusedBits = 7 - field(word2, 60, 3);
  header.literalRunState = field(word3, 32, 10);
  header.matchLengthState = field(word3, 42, 10);
  header.distanceState = field(word3, 52, 10);
  const std::size_t size = field(word3, 0, 32);
  if (size < kFixedSize || size > bytes.size() || size > kMostHeaderBytes ||
      !readWeights(bytes.subspan(kFixedSize, size - kFixedSize), header.weights)) {
    return 0;
  }
  return size;
}

/// The plain form stores the negated number of unused bits.
bool readUnusedBits(const std::byte* at, unsigned& unusedBits) noexcept {
  const auto value = load<std::int32_t>(at);
  if (value < -7 || value > 0) return false;
  unusedBits = static_cast<unsigned>(-value);
  return true;
}

std::size_t readPlain(std::span<const std::byte> bytes, BlockHeader& header) noexcept {
  if (bytes.size() < kPlainSize) return 0;
  const std::byte* const at = bytes.data();
  header.plainSize = load<std::uint32_t>(at + 4);
  header.literalCount = load<std::uint32_t>(at + 12);
  header.tripleCount = load<std::uint32_t>(at + 16);
  header.literalBytes = load<std::uint32_t>(at + 20);
  header.tripleBytes = load<std::uint32_t>(at + 24);
  for (std::size_t i = 0; i < kLiteralGroup; ++i) {
    header.literalStates[i] = load<std::uint16_t>(at + 32 + 2 * i);
  }
  header.literalRunState = load<std::uint16_t>(at + 44);
  header.matchLengthState = load<std::uint16_t>(at + 46);
  header.distanceState = load<std::uint16_t>(at + 48);
  std::memcpy(&header.weights, at + kPlainWeightsOffset, sizeof header.weights);
  if (!readUnusedBits(at + 28, header.literalUnusedBits) ||
      !readUnusedBits(at + 40, header.tripleUnusedBits)) {
    return 0;
  }
  return kPlainSize;
}

/// Weights must add up to all states, or to 0 if no symbol is coded.
template <std::size_t symbols>
bool areWeightsWhole(const std::array<std::uint16_t, symbols>& weights, unsigned stateBits,
                     bool used) noexcept {
  const auto sum = std::accumulate(weights.begin(), weights.end(), std::uint32_t{0});
  return sum == 1u << stateBits || (sum == 0 && !used);
}

bool isWithinLimits(const BlockHeader& header) noexcept {
  const Weights& weights = header.weights;
  const bool hasTriples = header.tripleCount > 0;
  return header.literalCount <= kMostLiterals && header.literalCount % kLiteralGroup == 0 &&
         header.tripleCount <= kMostTriples && header.tripleBytes >= kTripleFiller &&
         std::ranges::all_of(header.literalStates,
                             [](auto state) { return state < 1u << kLiteralStateBits; }) &&
         header.literalRunState < 1u << kLengthStateBits &&
         header.matchLengthState < 1u << kLengthStateBits &&
         header.distanceState < 1u << kDistanceStateBits &&
         areWeightsWhole(weights.literalRun, kLengthStateBits, hasTriples) &&
         areWeightsWhole(weights.matchLength, kLengthStateBits, hasTriples) &&
         areWeightsWhole(weights.distance, kDistanceStateBits, hasTriples) &&
         areWeightsWhole(weights.literal, kLiteralStateBits, header.literalCount > 0);
}

}  // namespace

std::size_t readHeader(std::span<const std::byte> bytes, BlockHeader& header) noexcept {
  if (bytes.size() < kMagicSize) return 0;
  const bool isPacked = load<std::uint32_t>(bytes.data()) == kPackedMagic;
  const std::size_t size = isPacked ? readPacked(bytes, header) : readPlain(bytes, header);
  return size > 0 && isWithinLimits(header) ? size : 0;
}

std::size_t writeHeader(const BlockHeader& header, std::span<std::byte> room) noexcept {
  std::array<std::byte, kMostHeaderBytes + sizeof(std::uint64_t)> bytes{};
  std::byte* at = bytes.data() + kFixedSize;
  std::uint32_t word = 0;
  unsigned pending = 0;
  for (const std::uint16_t weight : std::bit_cast<AllWeights>(header.weights)) {
    const WeightCode code = weightCode(weight);
    word |= code.value << pending;
    for (pending += code.bits; pending >= 8; pending -= 8, word >>= 8) {
      *at++ = static_cast<std::byte>(word);
    }
  }
  if (pending > 0) *at++ = static_cast<std::byte>(word);
  const auto size = static_cast<std::size_t>(at - bytes.data());
  if (size > room.size()) return 0;

  const auto wide = [](std::uint32_t value) { return std::uint64_t{value}; };
  store(bytes.data(), kPackedMagic);
  store(bytes.data() + 4, header.plainSize);
  store(bytes.data() + 8, wide(header.literalCount) | wide(header.literalBytes) << 20 |
                              wide(header.tripleCount) << 40 |
                              wide(7 - header.literalUnusedBits) << 60);
  store(bytes.data() + 16,
        wide(header.literalStates[0]) | wide(header.literalStates[1]) << 10 |
            wide(header.literalStates[2]) << 20 | wide(header.literalStates[3]) << 30 |
            wide(header.tripleBytes) << 40 | wide(7 - header.tripleUnusedBits) << 60);
  store(bytes.data() + 24, std::uint64_t{size} | wide(header.literalRunState) << 32 |
                               wide(header.matchLengthState) << 42 |
                               wide(header.distanceState) << 52);
  std::copy_n(bytes.data(), size, room.data());
  return size;
}

}  // namespace tq::lzfse
