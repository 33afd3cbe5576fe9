#pragma once

/// @file Error.h
/// Error descriptions: domain, code and text.

#include <cstdint>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Dictionary.h>

namespace tq {

/// Error domains of the library.
inline constexpr std::string_view CocoaErrorDomain = "NSCocoaErrorDomain";
inline constexpr std::string_view POSIXErrorDomain = "NSPOSIXErrorDomain";

/// Keys of Error::userInfo().
inline constexpr std::string_view LocalizedDescriptionKey = "NSLocalizedDescription";
inline constexpr std::string_view DebugDescriptionKey = "NSDebugDescription";
inline constexpr std::string_view UnderlyingErrorKey = "NSUnderlyingError";
inline constexpr std::string_view FilePathKey = "NSFilePath";

/// A domain, a code and optional details. Threads: any; immutable.
class TQ_EXPORT Error final : public Subclass<Error> {
 public:
  static constexpr std::string_view className = "Error";
  static constexpr std::string_view codingName = "NSError";

  /// Creates an error.
  /// @param domain  the namespace of the code, such as POSIXErrorDomain
  /// @param userInfo  details under the keys above, which are copied; may be null
  [[nodiscard]] static Ref<Error> errorWithDomain(std::string_view domain, std::int64_t code,
                                                  Ref<Dictionary> userInfo = nullptr);
  /// Creates an error with `description` as its localized description.
  [[nodiscard]] static Ref<Error> errorWithDomain(std::string_view domain, std::int64_t code,
                                                  std::string_view description);

  /// The namespace of the code.
  [[nodiscard]] const std::string& domain() const noexcept { return domain_; }
  /// The code. It is meaningful only within its domain.
  [[nodiscard]] std::int64_t code() const noexcept { return code_; }
  /// The details. Never null.
  [[nodiscard]] const Dictionary& userInfo() const noexcept { return *userInfo_; }

  /// Returns the text of the user info if it is a String, else the domain's text for a known code
  /// (the system's text for POSIX; for Cocoa only 3840, malformed data), else "The operation
  /// couldn’t be completed. (DOMAIN error CODE.)".
  [[nodiscard]] std::string localizedDescription() const;

  /// Returns true if domain, code and user info are equal. Chains of underlying errors may have any
  /// length.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;

  /// `Error Domain=<domain> Code=<n> "<localized description>" UserInfo={…}`
  [[nodiscard]] std::string description() const override;

 private:
  Error(std::string_view domain, std::int64_t code, Ref<Dictionary> userInfo);

  std::string domain_;
  std::int64_t code_;
  Ref<Dictionary> userInfo_;
};

/// Stores `error` in `*out`, unless `out` is null.
inline void setOutError(Ref<Error>* out, Ref<Error> error) noexcept {
  if (out != nullptr) *out = std::move(error);
}

}  // namespace tq
