#pragma once

/// @file Error.h
/// What went wrong, for programs and for people.

#include <cstdint>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Dictionary.h>

namespace tq {

/// Domains of errors that the platform room reports.
inline constexpr std::string_view CocoaErrorDomain = "NSCocoaErrorDomain";
inline constexpr std::string_view POSIXErrorDomain = "NSPOSIXErrorDomain";

/// Keys of an error's user info.
inline constexpr std::string_view LocalizedDescriptionKey = "NSLocalizedDescription";
inline constexpr std::string_view DebugDescriptionKey = "NSDebugDescription";
inline constexpr std::string_view UnderlyingErrorKey = "NSUnderlyingError";
inline constexpr std::string_view FilePathKey = "NSFilePath";

/// A domain, a code and more where there is more. Threads: any; immutable.
class TQ_EXPORT Error final : public Subclass<Error> {
 public:
  static constexpr std::string_view className = "Error";
  static constexpr std::string_view codingName = "NSError";

  /// @param domain  whose codes these are, such as POSIXErrorDomain
  /// @param userInfo  what else there is to say, under the keys above; may be none
  [[nodiscard]] static Ref<Error> errorWithDomain(std::string_view domain, std::int64_t code,
                                                  Ref<Dictionary> userInfo = nullptr);
  /// With `description` as its localized description.
  [[nodiscard]] static Ref<Error> errorWithDomain(std::string_view domain, std::int64_t code,
                                                  std::string_view description);

  /// Whose code it is.
  [[nodiscard]] const std::string& domain() const noexcept { return domain_; }
  /// Means something within its domain only.
  [[nodiscard]] std::int64_t code() const noexcept { return code_; }
  /// Never null.
  [[nodiscard]] const Dictionary& userInfo() const noexcept { return *userInfo_; }

  /// The user info's text (a String; anything else is none), else the domain's own for a code that
  /// it knows (the system's for POSIX, of Cocoa's that of malformed data, 3840), else "The
  /// operation couldn’t be completed. (DOMAIN error CODE.)".
  [[nodiscard]] std::string localizedDescription() const;

  /// Same domain, code and user info.
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

/// Stores `error` where the caller asked for it; a null `out` asks for nothing.
inline void setOutError(Ref<Error>* out, Ref<Error> error) noexcept {
  if (out != nullptr) *out = std::move(error);
}

}  // namespace tq
