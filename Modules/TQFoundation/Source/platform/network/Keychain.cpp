#include <TQFoundation/platform/network/Keychain.h>

#include <libsecret/secret.h>

#include <memory>
#include <string>

#include <TQFoundation/platform/files/StandardStreams.h>
#include <TQFoundation/platform/libraries/LazyLibrary.h>

namespace tq {
namespace {

struct LibSecret : detail::LazyLibrary {
  LibSecret() : LazyLibrary(TQ_LIBSECRET) {}
  TQ_LAZY_FUNCTION(g_io_error_quark);
  TQ_LAZY_FUNCTION(secret_attributes_build);
  TQ_LAZY_FUNCTION(secret_error_get_quark);
  TQ_LAZY_FUNCTION(secret_password_clearv_sync);
  TQ_LAZY_FUNCTION(secret_password_lookupv_binary_sync);
  TQ_LAZY_FUNCTION(secret_password_storev_binary_sync);
  TQ_LAZY_FUNCTION(secret_value_get);
  TQ_LAZY_FUNCTION(secret_value_new);
  TQ_LAZY_FUNCTION(secret_value_unref);
};

const SecretSchema kSchema = {"com.korvan.Keychain",
                              SECRET_SCHEMA_NONE,
                              {{"service", SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {"account", SECRET_SCHEMA_ATTRIBUTE_STRING},
                               {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING}},
                              0,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr,
                              nullptr};

bool fail(Ref<Error>* error, KeychainErrorCode code, std::string_view description) {
  setOutError(error, Error::errorWithDomain(KeychainErrorDomain, static_cast<std::int64_t>(code),
                                            description));
  return false;
}

/// Converts libsecret's error, and frees it.
bool fail(Ref<Error>* error, const LibSecret& libsecret, GError* fault) {
  const std::unique_ptr<GError, void (*)(GError*)> held(fault, g_error_free);
  const bool isSecretError = fault->domain == libsecret.secret_error_get_quark();
  const GQuark ioError = libsecret.g_io_error_quark();
  if (isSecretError || g_error_matches(fault, ioError, G_IO_ERROR_CANCELLED) != FALSE) {
    return fail(error, KeychainErrorCode::refused,
                "The keychain refused: " + std::string(fault->message) + ".");
  }
  return fail(error, KeychainErrorCode::noService,
              "No keychain service runs in this session: " + std::string(fault->message) + ".");
}

/// Checks the item and loads libsecret. @return null, with an error, if one of these fails
const LibSecret* libSecretFor(const KeychainItem& item, Ref<Error>* error) {
  detail::occupyStandardStreams();  // for the connection to the service
  for (const std::string& text : {item.service, item.account}) {
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) == FALSE) {
      fail(error, KeychainErrorCode::badText,
           "The service and the account of a keychain item must be text.");
      return nullptr;
    }
  }
  std::string reason;
  const LibSecret* const libsecret = detail::lazyLibrary<LibSecret>(reason);
  if (libsecret == nullptr) fail(error, KeychainErrorCode::noService, reason);
  return libsecret;
}

using Attributes = std::unique_ptr<GHashTable, void (*)(GHashTable*)>;

Attributes attributesOf(const KeychainItem& item, const LibSecret& libsecret) {
  return {libsecret.secret_attributes_build(&kSchema, "service", item.service.c_str(), "account",
                                            item.account.c_str(), nullptr),
          g_hash_table_unref};
}

using Secret = std::unique_ptr<SecretValue, void (*)(void*)>;

}  // namespace

std::optional<std::string> KeychainItem::secret(Ref<Error>* error) const {
  setOutError(error, nullptr);
  const LibSecret* const libsecret = libSecretFor(*this, error);
  if (libsecret == nullptr) return std::nullopt;
  GError* fault = nullptr;
  const Secret value(libsecret->secret_password_lookupv_binary_sync(
                         &kSchema, attributesOf(*this, *libsecret).get(), nullptr, &fault),
                     libsecret->secret_value_unref);
  if (fault != nullptr) {
    fail(error, *libsecret, fault);
    return std::nullopt;
  }
  if (value == nullptr) return std::nullopt;
  gsize length = 0;
  const char* const bytes = libsecret->secret_value_get(value.get(), &length);
  return std::string(bytes, length);
}

bool KeychainItem::setSecret(std::string_view secret, Ref<Error>* error) const {
  const LibSecret* const libsecret = libSecretFor(*this, error);
  if (libsecret == nullptr) return false;
  const Secret value(
      libsecret->secret_value_new(secret.empty() ? "" : secret.data(),
                                  static_cast<gssize>(secret.size()), "application/octet-stream"),
      libsecret->secret_value_unref);
  const std::string label = service + ": " + account;
  GError* fault = nullptr;
  const gboolean isStored = libsecret->secret_password_storev_binary_sync(
      &kSchema, attributesOf(*this, *libsecret).get(), SECRET_COLLECTION_DEFAULT, label.c_str(),
      value.get(), nullptr, &fault);
  if (fault != nullptr) return fail(error, *libsecret, fault);
  return isStored != FALSE ||
         fail(error, KeychainErrorCode::refused, "The keychain did not store the item.");
}

bool KeychainItem::remove(Ref<Error>* error) const {
  const LibSecret* const libsecret = libSecretFor(*this, error);
  if (libsecret == nullptr) return false;
  GError* fault = nullptr;
  libsecret->secret_password_clearv_sync(&kSchema, attributesOf(*this, *libsecret).get(), nullptr,
                                         &fault);
  return fault == nullptr || fail(error, *libsecret, fault);
}

}  // namespace tq
