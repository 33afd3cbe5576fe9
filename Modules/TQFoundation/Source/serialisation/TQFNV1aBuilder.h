#pragma once

/// @file TQFNV1aBuilder.h
/// A 128-bit checksum that is built up piece by piece.

#include <cstddef>
#include <cstdint>
#include <span>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/String.h>

namespace tq {

/// FNV-1a with 128 bits: tells versions of the same thing apart, not forgeries. Only the sequence
/// of bytes counts, not how it was cut into calls. A value: a copy goes on from the same state.
/// Threads: one at a time.
///
/// Source: Fowler, Noll, Vo and Eastlake, The FNV Non-Cryptographic Hash Algorithm (IETF draft).
class TQ_EXPORT TQFNV1aBuilder {
 public:
  TQFNV1aBuilder() noexcept = default;

  /// Goes on with these bytes: pieces give the digest of the whole.
  void addData(std::span<const std::byte> bytes) noexcept;
  void addData(const Data& data) noexcept { addData(data.bytes()); }
  /// Nothing changes for none.
  void addData(const Data* data) noexcept;

  /// The text's UTF-8 bytes. A string with unpaired surrogates has none and changes nothing.
  void addString(const String& string) noexcept;
  /// Nothing changes for none.
  void addString(const String* string) noexcept;

  /// 32 upper-case hexadecimal digits, most significant first.
  [[nodiscard]] Ref<String> checksum() const;

 private:
  // The offset basis.
  std::uint64_t high_ = 0x6c62272e07bb0142;
  std::uint64_t low_ = 0x62b821756295c58d;
};

}  // namespace tq
