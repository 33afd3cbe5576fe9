#pragma once

/// @file TQDigests.h
/// SHA-1 digests. Any thread.

#include <cstddef>
#include <span>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/String.h>

namespace tq {

/// Returns the digest, 20 bytes; null if the system forbids SHA-1 or lacks memory or libcrypto.
[[nodiscard]] TQ_EXPORT Ref<Data> sha1Data_tq(std::span<const std::byte> bytes);
[[nodiscard]] TQ_EXPORT Ref<Data> sha1Data_tq(const Data& data);

/// Returns the digest as 40 lower-case hexadecimal digits; an empty string if there is no digest.
[[nodiscard]] TQ_EXPORT Ref<String> sha1String_tq(std::span<const std::byte> bytes);
[[nodiscard]] TQ_EXPORT Ref<String> sha1String_tq(const Data& data);

/// The older name of sha1Data_tq(). Each call first logs a warning at error level to the channel
/// “digests” of com.korvan.serialisation.
[[nodiscard]] TQ_EXPORT Ref<Data> sha1(std::span<const std::byte> bytes);
[[nodiscard]] TQ_EXPORT Ref<Data> sha1(const Data& data);

/// The older name of sha1String_tq(). Each call logs a warning likewise.
[[nodiscard]] TQ_EXPORT Ref<String> sha1AsString(std::span<const std::byte> bytes);
[[nodiscard]] TQ_EXPORT Ref<String> sha1AsString(const Data& data);

}  // namespace tq
