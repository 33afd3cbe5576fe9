#pragma once

/// @file UUID.h
/// Universally unique identifiers.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// A 16-byte identifier (RFC 4122). Threads: any; immutable.
class TQ_EXPORT UUID final : public Subclass<UUID> {
 public:
  static constexpr std::string_view className = "UUID";
  static constexpr std::string_view codingName = "NSUUID";

  /// The bytes in the order of the text.
  using Bytes = std::array<std::uint8_t, 16>;

  /// Creates an identifier of any 16 bytes.
  [[nodiscard]] static Ref<UUID> UUIDWithBytes(const Bytes& bytes);

  /// Parses text such as "68753A44-4D6F-1226-9C60-0050E4C00067"; upper and lower case.
  /// @return null for text of any other form
  [[nodiscard]] static Ref<UUID> UUIDWithString(std::string_view text);

  /// The bytes in the order of the text.
  [[nodiscard]] const Bytes& bytes() const noexcept { return bytes_; }

  /// Returns 36 characters, letters in upper case.
  [[nodiscard]] std::string UUIDString() const;

  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  [[nodiscard]] std::string description() const override { return UUIDString(); }

 private:
  explicit UUID(const Bytes& bytes) noexcept : bytes_(bytes) {}

  const Bytes bytes_;
};

}  // namespace tq
