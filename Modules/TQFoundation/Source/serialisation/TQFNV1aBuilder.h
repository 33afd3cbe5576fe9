#pragma once

/// @file TQFNV1aBuilder.h
/// Incremental FNV-1a checksums of 128 bits.

#include <cstddef>
#include <cstdint>
#include <span>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/String.h>

namespace tq {

/// Computes FNV-1a with 128 bits. Suitable to distinguish versions of the same data, not to detect
/// forgeries. The checksum depends on the sequence of bytes, not on how calls divide it. A copy
/// continues from the same state.
/// Threads: one at a time.
///
/// Source: Fowler, Noll, Vo and Eastlake, The FNV Non-Cryptographic Hash Algorithm (IETF draft).
class TQ_EXPORT TQFNV1aBuilder {
 public:
  TQFNV1aBuilder() noexcept = default;

  /// Appends the bytes.
  void addData(std::span<const std::byte> bytes) noexcept;
  void addData(const Data& data) noexcept { addData(data.bytes()); }
  /// Null changes nothing.
  void addData(const Data* data) noexcept;

  /// Appends the string's UTF-8 bytes. A string with unpaired surrogates changes nothing.
  void addString(const String& string) noexcept;
  /// Null changes nothing.
  void addString(const String* string) noexcept;

  /// Returns 32 upper-case hexadecimal digits, most significant first.
  [[nodiscard]] Ref<String> checksum() const;

 private:
  // Initially the offset basis.
  std::uint64_t high_ = 0x6c62272e07bb0142;
  std::uint64_t low_ = 0x62b821756295c58d;
};

}  // namespace tq
