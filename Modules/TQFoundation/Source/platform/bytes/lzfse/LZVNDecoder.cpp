#include <TQFoundation/platform/bytes/lzfse/LZVN.h>

#include <cstdint>

#include <TQFoundation/platform/bytes/lzfse/Format.h>

namespace tq::lzfse {
namespace {

constexpr std::size_t kEndSize = 8;
constexpr std::size_t kShortestMatch = 3;
constexpr std::size_t kLongCount = 16;

enum class Kind : std::uint8_t { copy, end, invalid };

/// A decoded opcode with its operands. One without effect copies nothing.
struct Opcode {
  Kind kind = Kind::copy;
  std::size_t size = 1;  ///< of the opcode, without its literals
  std::size_t literals = 0;
  std::size_t length = 0;
  std::size_t distance = 0;  ///< 0: the previous one
};

/// A count of 1 to 15 in the opcode's low half, or 16 plus the next byte.
std::size_t readCount(const std::byte* at, unsigned first, Opcode& opcode) noexcept {
  if ((first & 15) != 0) return first & 15;
  opcode.size = 2;
  return kLongCount + std::to_integer<std::size_t>(at[1]);
}

/// The forms with two bits for literals and three for a length in the same place.
Opcode readDistanceForm(const std::byte* at, unsigned first) noexcept {
  Opcode opcode;
  opcode.literals = first >> 6;
  opcode.length = (first >> 3 & 7) + kShortestMatch;
  switch (first & 7) {
    case 7:
      opcode.size = 3;
      opcode.distance = load<std::uint16_t>(at + 1);
      if (opcode.distance == 0) opcode.kind = Kind::invalid;
      break;
    case 6:
      if (first == 0x06) {
        opcode.kind = Kind::end;
      } else if (first == 0x0e || first == 0x16) {
        opcode.length = 0;
      } else if (first < 0x40) {
        opcode.kind = Kind::invalid;
      }
      break;
    default:
      opcode.size = 2;
      opcode.distance = (first & 7) << 8 | std::to_integer<std::size_t>(at[1]);
      if (opcode.distance == 0) opcode.kind = Kind::invalid;
  }
  return opcode;
}

/// Reads up to two bytes after the first.
Opcode readOpcode(const std::byte* at) noexcept {
  const auto first = std::to_integer<unsigned>(*at);
  Opcode opcode;
  switch (first >> 4) {
    case 0xe:
      opcode.literals = readCount(at, first, opcode);
      return opcode;
    case 0xf:
      opcode.length = readCount(at, first, opcode);
      return opcode;
    case 0xa:
    case 0xb: {
      const std::size_t word = load<std::uint16_t>(at + 1);
      opcode.size = 3;
      opcode.literals = first >> 3 & 3;
      opcode.length = ((first & 7) << 2 | (word & 3)) + kShortestMatch;
      opcode.distance = word >> 2;
      if (opcode.distance == 0) opcode.kind = Kind::invalid;
      return opcode;
    }
    case 0x7:
    case 0xd:
      opcode.kind = Kind::invalid;
      return opcode;
    default:
      return readDistanceForm(at, first);
  }
}

}  // namespace

// The end opcode has eight bytes, so two operand bytes can always be read before it. An opcode with
// fewer bytes after it cannot be followed by the end, so the block is damaged.
bool decodeLZVN(std::span<const std::byte> opcodes, std::size_t plainSize,
                Output& output) noexcept {
  if (plainSize == 0 || plainSize > output.room()) return false;
  std::size_t plainLeft = plainSize;
  std::size_t distance = 0;
  while (opcodes.size() >= kEndSize) {
    const Opcode opcode = readOpcode(opcodes.data());
    if (opcode.kind == Kind::end) return plainLeft == 0 && opcodes.size() == kEndSize;
    if (opcode.kind == Kind::invalid || opcode.literals > opcodes.size() - opcode.size ||
        opcode.literals + opcode.length > plainLeft) {
      return false;
    }
    output.append(opcodes.data() + opcode.size, opcode.literals);
    if (opcode.distance != 0) distance = opcode.distance;
    if (opcode.length > 0) {
      if (distance - 1 >= output.produced()) return false;  // 0 wraps around and fails too
      output.repeat(distance, opcode.length);
      plainLeft -= opcode.length;
    }
    plainLeft -= opcode.literals;
    opcodes = opcodes.subspan(opcode.size + opcode.literals);
  }
  return false;
}

}  // namespace tq::lzfse
