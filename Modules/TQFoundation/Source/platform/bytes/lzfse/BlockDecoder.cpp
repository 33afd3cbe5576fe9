#include <TQFoundation/platform/bytes/lzfse/BlockDecoder.h>

#include <TQFoundation/platform/bytes/lzfse/BlockHeader.h>

namespace tq::lzfse {

template <unsigned stateBits, std::size_t symbols>
void BlockDecoder::fillTable(ValueTable<stateBits>& table,
                             const std::array<std::uint16_t, symbols>& weights,
                             const Alphabet<symbols>& alphabet) noexcept {
  forEachState<stateBits>(weights, [&](std::size_t state, std::size_t symbol, StateStep step) {
    const std::uint8_t extra = alphabet.extraBits[symbol];
    table[state] = {static_cast<std::uint8_t>(step.bits + extra), extra,
                    static_cast<std::uint16_t>(step.base), alphabet.base[symbol]};
  });
}

template <std::size_t states>
std::uint32_t BlockDecoder::popValue(const std::array<ValueState, states>& table,
                                     std::uint32_t& state, BitReader& bits) noexcept {
  const ValueState entry = table[state];
  const std::uint32_t popped = bits.pop(entry.bits);
  state = entry.base + (popped >> entry.extraBits);
  return entry.value + (popped & ((1u << entry.extraBits) - 1));
}

std::size_t BlockDecoder::decode(std::span<const std::byte> bytes, Output& output) noexcept {
  BlockHeader header;
  const std::size_t headerSize = readHeader(bytes, header);
  if (headerSize == 0 || header.plainSize > output.room()) return 0;
  const std::size_t payloadSize = std::size_t{header.literalBytes} + header.tripleBytes;
  if (payloadSize > bytes.size() - headerSize) return 0;
  const auto literals = bytes.subspan(headerSize, header.literalBytes);
  const auto triples = bytes.subspan(headerSize + header.literalBytes, header.tripleBytes);
  return readLiterals(header, literals) && runTriples(header, triples, output)
             ? headerSize + payloadSize
             : 0;
}

bool BlockDecoder::readLiterals(const BlockHeader& header,
                                std::span<const std::byte> payload) noexcept {
  BitReader bits;
  if (!bits.open(payload, header.literalUnusedBits)) return false;
  forEachState<kLiteralStateBits>(header.weights.literal,
                                  [&](std::size_t state, std::size_t symbol, StateStep step) {
                                    literalStates_[state] = {static_cast<std::uint8_t>(symbol),
                                                             static_cast<std::uint8_t>(step.bits),
                                                             static_cast<std::uint16_t>(step.base)};
                                  });
  auto states = header.literalStates;
  for (std::size_t i = 0; i < header.literalCount; i += kLiteralGroup) {
    bits.fill();
    for (std::size_t j = 0; j < kLiteralGroup; ++j) {
      const LiteralState entry = literalStates_[states[j]];
      literals_[i + j] = static_cast<std::byte>(entry.symbol);
      states[j] = entry.base + bits.pop(entry.bits);
    }
    if (bits.isExhausted()) return false;
  }
  return true;
}

// Each triple is checked before anything is copied: against the literals and the plain bytes left
// in the block and the bytes produced so far. The distance is checked even if the match is empty,
// because a later triple may reuse it. Distance 0 means that there is none yet, which is only
// possible at the start of a block.
bool BlockDecoder::runTriples(const BlockHeader& header, std::span<const std::byte> payload,
                              Output& output) noexcept {
  BitReader bits;
  if (!bits.open(payload, header.tripleUnusedBits)) return false;
  fillTable<kLengthStateBits>(literalRuns_, header.weights.literalRun, kLiteralRuns);
  fillTable<kLengthStateBits>(matchLengths_, header.weights.matchLength, kMatchLengths);
  fillTable<kDistanceStateBits>(distances_, header.weights.distance, kDistances);

  std::uint32_t literalRunState = header.literalRunState;
  std::uint32_t matchLengthState = header.matchLengthState;
  std::uint32_t distanceState = header.distanceState;
  const std::byte* literals = literals_.data();
  std::size_t literalsLeft = header.literalCount;
  std::size_t plainLeft = header.plainSize;
  std::size_t distance = 0;
  for (std::uint32_t i = 0; i < header.tripleCount; ++i) {
    bits.fill();
    const std::size_t run = popValue(literalRuns_, literalRunState, bits);
    const std::size_t length = popValue(matchLengths_, matchLengthState, bits);
    const std::size_t stated = popValue(distances_, distanceState, bits);
    if (bits.isExhausted() || run > literalsLeft || run + length > plainLeft) return false;
    if (stated != 0) distance = stated;
    if (distance - 1 >= output.produced() + run) return false;  // 0 wraps around and fails too
    output.appendPadded(literals, run);
    output.repeat(distance, length);
    literals += run;
    literalsLeft -= run;
    plainLeft -= run + length;
  }
  return plainLeft == 0;
}

}  // namespace tq::lzfse
