#pragma once

/// @file Hash.h
/// Hash functions keyed with a random secret of the process, so that input from outside cannot be
/// chosen to collide.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <TQFoundation/objects/Object.h>

namespace tq::detail {

[[nodiscard]] std::size_t hashOfBytes(std::string_view bytes) noexcept;

[[nodiscard]] std::size_t hashOfWord(std::uint64_t word) noexcept;

/// +0 and -0 have equal hashes, and so have all NaN.
[[nodiscard]] std::size_t hashOfDouble(double value) noexcept;

/// Combines the hash of a sequence with the hash of its next element.
[[nodiscard]] inline std::size_t hashJoined(std::size_t hash, std::size_t next) noexcept {
  return hashOfWord(hash) + next;
}

/// Returns the contribution of an element to the hash of its container: the element's hash, or for
/// a container only its kind and count, so that hashing never recurses.
[[nodiscard]] std::size_t hashOfElement(const Object& element);

}  // namespace tq::detail
