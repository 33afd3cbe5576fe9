#pragma once

/// @file Keychain.h
/// Secrets in the desktop's keychain.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Error.h>

namespace tq {

/// The domain of the errors below.
inline constexpr std::string_view KeychainErrorDomain = "com.korvan.Keychain";
/// Codes of KeychainErrorDomain.
enum class KeychainErrorCode : std::int64_t {
  noService = 1,  ///< no keychain service runs in this session, or libsecret cannot be loaded
  refused = 2,    ///< locked, cancelled by the user, or another failure of the service
  badText = 3,    ///< the service or the account is not UTF-8, or contains a NUL
};

/// An item of the user's keychain: the secret for an account with a service. Secrets are any bytes.
/// Each call may block while the user is asked to unlock the keychain, so do not call it on the
/// main thread. Any other thread, several at a time.
struct TQ_EXPORT KeychainItem {
  std::string service;  ///< "com.korvan.cloud"
  std::string account;  ///< "ada@example.org"

  /// Returns the secret; nullopt, without an error, if there is no such item; nullopt, with an
  /// error, on failure.
  [[nodiscard]] std::optional<std::string> secret(Ref<Error>* error = nullptr) const;
  /// Stores the secret, and replaces an earlier one. @return false on failure, with an error
  [[nodiscard]] bool setSecret(std::string_view secret, Ref<Error>* error = nullptr) const;
  /// Removes the item. A missing item is not an error. @return false on failure, with an error
  [[nodiscard]] bool remove(Ref<Error>* error = nullptr) const;
};

}  // namespace tq
