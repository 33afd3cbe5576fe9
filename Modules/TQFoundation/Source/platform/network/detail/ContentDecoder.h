#pragma once

/// @file ContentDecoder.h
/// Decodes the bodies of HTTP responses.

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string_view>

namespace tq {

/// Decodes a body that arrives in pieces, and detects whether it is complete.
///
/// Threads: one at a time.
class ContentDecoder {
 public:
  /// The codings that it decodes, as a value of Accept-Encoding.
  static constexpr const char* kCodings = "gzip, deflate";

  /// @return null if the coding is unknown
  [[nodiscard]] static std::unique_ptr<ContentDecoder> decoderForCoding(std::string_view coding);
  ~ContentDecoder();
  ContentDecoder(const ContentDecoder&) = delete;
  ContentDecoder& operator=(const ContentDecoder&) = delete;

  /// Passes the decoded bytes to `take`, in pieces of bounded size.
  /// @return false if the body is damaged or memory is exhausted, or as soon as `take` returns
  ///         false
  [[nodiscard]] bool decode(std::span<const std::byte> bytes,
                            const std::function<bool(std::span<const std::byte>)>& take);

  /// Returns whether any byte has arrived.
  [[nodiscard]] bool hasBegun() const noexcept { return hasBegun_; }
  /// Returns whether the body may end here.
  [[nodiscard]] bool isComplete() const noexcept { return isComplete_; }

 private:
  struct Stream;

  explicit ContentDecoder(bool isGzip);
  [[nodiscard]] bool begin(std::byte first);

  const std::unique_ptr<Stream> stream_;
  const bool isGzip_;
  bool hasBegun_ = false;
  bool isComplete_ = false;
};

}  // namespace tq
