#include <TQFoundation/platform/bytes/lzfse/BlockEncoder.h>

#include <algorithm>
#include <bit>

#include <TQFoundation/platform/bytes/lzfse/BlockHeader.h>
#include <TQFoundation/platform/bytes/lzfse/EntropyCoder.h>

namespace tq::lzfse {
namespace {

/// The symbol of every value of an alphabet: the one with the largest base up to the value.
template <std::size_t values, std::size_t symbols>
consteval std::array<std::uint8_t, values> symbolTable(const Alphabet<symbols>& alphabet) {
  std::array<std::uint8_t, values> table{};
  std::uint8_t symbol = 0;
  for (std::uint32_t value = 0; value < values; ++value) {
    while (symbol + 1u < symbols && alphabet.base[symbol + 1u] <= value) ++symbol;
    table[value] = symbol;
  }
  return table;
}

constexpr auto kRunSymbols = symbolTable<kMostLiteralRun + 1>(kLiteralRuns);
constexpr auto kLengthSymbolOf = symbolTable<kMostMatchLength + 1>(kMatchLengths);

/// The symbol: the two leading binary digits of distance + 4, and how many follow.
std::size_t distanceSymbol(std::uint32_t distance) noexcept {
  const std::uint32_t shifted = distance + 4;
  const auto extra = static_cast<unsigned>(std::bit_width(shifted)) - 3;
  return 4 * extra + (shifted >> extra) - 4;
}

std::size_t triplesFor(std::size_t count, std::size_t most) noexcept {
  return (count + most - 1) / most;
}

template <std::size_t symbols, unsigned stateBits>
void encodeValue(std::uint32_t value, std::size_t symbol, const Alphabet<symbols>& alphabet,
                 SymbolEncoder<symbols, stateBits>& coder, BitWriter& bits) noexcept {
  bits.push(value - alphabet.base[symbol], alphabet.extraBits[symbol]);
  coder.encode(symbol, bits);
}

}  // namespace

bool BlockEncoder::add(std::span<const std::byte> literals, std::size_t length,
                       std::size_t distance) noexcept {
  const std::size_t wanted =
      triplesFor(literals.size(), kMostLiteralRun) + triplesFor(length, kMostMatchLength);
  if (tripleCount_ + wanted > kMostTriples || literalCount_ + literals.size() > kMostLiterals) {
    if (!writeBlock()) return false;
  }
  std::copy(literals.begin(), literals.end(), literals_.begin() + literalCount_);
  literalCount_ += literals.size();
  plainSize_ += literals.size() + length;
  // A run of literals without a match still needs a distance, so the smallest is used.
  std::size_t run = literals.size();
  for (; run > kMostLiteralRun; run -= kMostLiteralRun) push(kMostLiteralRun, 0, 1);
  for (; length > kMostMatchLength; length -= kMostMatchLength, run = 0) {
    push(run, kMostMatchLength, distance);
  }
  if (length > 0) {
    push(run, length, distance);
  } else if (run > 0) {
    push(run, 0, 1);
  }
  return true;
}

bool BlockEncoder::finish() noexcept { return tripleCount_ == 0 || writeBlock(); }

void BlockEncoder::push(std::size_t run, std::size_t length, std::size_t distance) noexcept {
  triples_[tripleCount_++] = {static_cast<std::uint16_t>(run), static_cast<std::uint16_t>(length),
                              static_cast<std::uint32_t>(distance)};
}

/// A repeated distance is coded as 0, which usually takes fewer bits.
void BlockEncoder::useRepeatedDistances() noexcept {
  std::uint32_t previous = 0;
  for (Triple& triple : std::span(triples_).first(tripleCount_)) {
    if (triple.distance == previous) {
      triple.distance = 0;
    } else {
      previous = triple.distance;
    }
  }
}

Weights BlockEncoder::weights() const noexcept {
  std::array<std::uint32_t, kLengthSymbols> runs{};
  std::array<std::uint32_t, kLengthSymbols> lengths{};
  std::array<std::uint32_t, kDistanceSymbols> distances{};
  std::array<std::uint32_t, kLiteralSymbols> literals{};
  for (const Triple& triple : std::span(triples_).first(tripleCount_)) {
    ++runs[kRunSymbols[triple.run]];
    ++lengths[kLengthSymbolOf[triple.length]];
    ++distances[distanceSymbol(triple.distance)];
  }
  for (const std::byte literal : std::span(literals_).first(literalCount_)) {
    ++literals[std::to_integer<std::size_t>(literal)];
  }
  Weights weights;
  weightsFromCounts(runs, kLengthStateBits, weights.literalRun);
  weightsFromCounts(lengths, kLengthStateBits, weights.matchLength);
  weightsFromCounts(distances, kDistanceStateBits, weights.distance);
  weightsFromCounts(literals, kLiteralStateBits, weights.literal);
  return weights;
}

/// Writes header, literal payload and triple payload. The header depends on the payloads, so these
/// are written first, after the space for the header. The size of the header is known from the
/// weights.
bool BlockEncoder::writeBlock() noexcept {
  useRepeatedDistances();
  while (literalCount_ % kLiteralGroup != 0) literals_[literalCount_++] = std::byte{0};
  BlockHeader header;
  header.plainSize = static_cast<std::uint32_t>(plainSize_);
  header.literalCount = static_cast<std::uint32_t>(literalCount_);
  header.tripleCount = static_cast<std::uint32_t>(tripleCount_);
  header.weights = weights();
  const std::size_t headerSize = writeHeader(header, room_);
  if (headerSize == 0) return false;
  std::span<std::byte> room = room_.subspan(headerSize);
  if (!writeLiterals(room, header) || !writeTriples(room, header)) return false;
  static_cast<void>(writeHeader(header, room_));  // fits: the weights determine its size
  room_ = room;
  literalBits_ = literalCount_ * kTellingShare < plainSize_
                     ? kAnyLiteralBits
                     : 8.0 * header.literalBytes / static_cast<double>(literalCount_);
  plainSize_ = literalCount_ = tripleCount_ = 0;
  return true;
}

bool BlockEncoder::writeLiterals(std::span<std::byte>& room, BlockHeader& header) const noexcept {
  using Coder = SymbolEncoder<kLiteralSymbols, kLiteralStateBits>;
  Coder first(header.weights.literal);
  std::array<Coder, kLiteralGroup> coders = {first, first, first, first};
  BitWriter bits(room);
  for (std::size_t i = literalCount_; i > 0; i -= kLiteralGroup) {
    for (std::size_t j = kLiteralGroup; j-- > 0;) {
      coders[j].encode(std::to_integer<std::size_t>(literals_[i - kLiteralGroup + j]), bits);
    }
    bits.flush();
  }
  header.literalUnusedBits = bits.finish();
  for (std::size_t j = 0; j < kLiteralGroup; ++j) header.literalStates[j] = coders[j].state();
  header.literalBytes = static_cast<std::uint32_t>(room.size() - bits.room().size());
  room = bits.room();
  return !bits.overflowed();
}

bool BlockEncoder::writeTriples(std::span<std::byte>& room, BlockHeader& header) const noexcept {
  if (room.size() < kTripleFiller) return false;
  std::fill_n(room.begin(), kTripleFiller, std::byte{0});
  SymbolEncoder<kLengthSymbols, kLengthStateBits> runs(header.weights.literalRun);
  SymbolEncoder<kLengthSymbols, kLengthStateBits> lengths(header.weights.matchLength);
  SymbolEncoder<kDistanceSymbols, kDistanceStateBits> distances(header.weights.distance);
  BitWriter bits(room.subspan(kTripleFiller));
  for (std::size_t i = tripleCount_; i-- > 0;) {
    const Triple& triple = triples_[i];
    encodeValue(triple.distance, distanceSymbol(triple.distance), kDistances, distances, bits);
    encodeValue(triple.length, kLengthSymbolOf[triple.length], kMatchLengths, lengths, bits);
    encodeValue(triple.run, kRunSymbols[triple.run], kLiteralRuns, runs, bits);
    bits.flush();
  }
  header.tripleUnusedBits = bits.finish();
  header.literalRunState = runs.state();
  header.matchLengthState = lengths.state();
  header.distanceState = distances.state();
  header.tripleBytes = static_cast<std::uint32_t>(room.size() - bits.room().size());
  room = bits.room();
  return !bits.overflowed();
}

}  // namespace tq::lzfse
