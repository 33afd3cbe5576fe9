#pragma once

/// @file Keychain.h
/// Secrets, kept by the desktop's own service for them.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Error.h>

namespace tq {

/// The domain of the errors below.
inline constexpr std::string_view KeychainErrorDomain = "com.korvan.Keychain";
/// What can go wrong with a keychain.
enum class KeychainErrorCode : std::int64_t {
  noService = 1,  ///< no service for secrets runs in this session
  refused = 2,    ///< locked, cancelled by the user, or another failure of the service
  badText = 3,    ///< service or account are not UTF-8 text without NUL
};

/// An item of the user's keychain: the secret of an account with a service. Secrets are any bytes.
/// Each call asks the service and may block while the user is asked to unlock it: not for the main
/// thread. Any other thread, several at a time.
struct TQ_EXPORT KeychainItem {
  std::string service;  ///< "com.korvan.cloud"
  std::string account;  ///< "ada@example.org"

  /// The secret. None without an error when there is no such item; none with one on failure.
  [[nodiscard]] std::optional<std::string> secret(Ref<Error>* error = nullptr) const;
  /// Stores the secret in place of an earlier one. @return false on failure, with an error
  [[nodiscard]] bool setSecret(std::string_view secret, Ref<Error>* error = nullptr) const;
  /// An item that is not there is no failure. @return false on failure, with an error
  [[nodiscard]] bool remove(Ref<Error>* error = nullptr) const;
};

}  // namespace tq
