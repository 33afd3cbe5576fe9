#pragma once

/// @file Hash.h
/// Hashes that depend on a secret of the process: who does not know it cannot make values that
/// collide.

#include <cstddef>
#include <cstdint>
#include <string_view>

#include <TQFoundation/objects/Object.h>

namespace tq::detail {

[[nodiscard]] std::size_t hashOfBytes(std::string_view bytes) noexcept;

[[nodiscard]] std::size_t hashOfWord(std::uint64_t word) noexcept;

/// Zeros of both signs hash alike, and so does every NaN.
[[nodiscard]] std::size_t hashOfDouble(double value) noexcept;

/// A hash of what `hash` stands for and `next` behind it.
[[nodiscard]] inline std::size_t hashJoined(std::size_t hash, std::size_t next) noexcept {
  return hashOfWord(hash) + next;
}

/// What an object gives to the hash of the container that holds it: its own hash, or of a container
/// its kind and count alone, so that no hash goes deep.
[[nodiscard]] std::size_t hashOfElement(const Object& element);

}  // namespace tq::detail
