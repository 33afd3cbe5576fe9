#include <TQFoundation/platform/network/Keychain.h>

#include <libsecret/secret.h>

#include <memory>

namespace tq {
namespace {

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
bool fail(Ref<Error>* error, GError* fault) {
  const std::unique_ptr<GError, void (*)(GError*)> held(fault, g_error_free);
  const bool isSecretError = fault->domain == SECRET_ERROR;
  if (isSecretError || g_error_matches(fault, G_IO_ERROR, G_IO_ERROR_CANCELLED) != FALSE) {
    return fail(error, KeychainErrorCode::refused,
                "The keychain refused: " + std::string(fault->message) + ".");
  }
  return fail(error, KeychainErrorCode::noService,
              "No keychain service runs in this session: " + std::string(fault->message) + ".");
}

bool check(const KeychainItem& item, Ref<Error>* error) {
  for (const std::string& text : {item.service, item.account}) {
    if (g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) == FALSE) {
      return fail(error, KeychainErrorCode::badText,
                  "The service and the account of a keychain item must be text.");
    }
  }
  return true;
}

using Attributes = std::unique_ptr<GHashTable, void (*)(GHashTable*)>;

Attributes attributesOf(const KeychainItem& item) {
  return {secret_attributes_build(&kSchema, "service", item.service.c_str(), "account",
                                  item.account.c_str(), nullptr),
          g_hash_table_unref};
}

using Secret = std::unique_ptr<SecretValue, void (*)(SecretValue*)>;

void unref(SecretValue* value) { secret_value_unref(value); }

}  // namespace

std::optional<std::string> KeychainItem::secret(Ref<Error>* error) const {
  setOutError(error, nullptr);
  if (!check(*this, error)) return std::nullopt;
  GError* fault = nullptr;
  const Secret value(
      secret_password_lookupv_binary_sync(&kSchema, attributesOf(*this).get(), nullptr, &fault),
      unref);
  if (fault != nullptr) {
    fail(error, fault);
    return std::nullopt;
  }
  if (value == nullptr) return std::nullopt;
  gsize length = 0;
  const char* const bytes = secret_value_get(value.get(), &length);
  return std::string(bytes, length);
}

bool KeychainItem::setSecret(std::string_view secret, Ref<Error>* error) const {
  if (!check(*this, error)) return false;
  const Secret value(
      secret_value_new(secret.empty() ? "" : secret.data(), static_cast<gssize>(secret.size()),
                       "application/octet-stream"),
      unref);
  const std::string label = service + ": " + account;
  GError* fault = nullptr;
  const gboolean isStored = secret_password_storev_binary_sync(
      &kSchema, attributesOf(*this).get(), SECRET_COLLECTION_DEFAULT, label.c_str(), value.get(),
      nullptr, &fault);
  if (fault != nullptr) return fail(error, fault);
  return isStored != FALSE ||
         fail(error, KeychainErrorCode::refused, "The keychain did not store the item.");
}

bool KeychainItem::remove(Ref<Error>* error) const {
  if (!check(*this, error)) return false;
  GError* fault = nullptr;
  secret_password_clearv_sync(&kSchema, attributesOf(*this).get(), nullptr, &fault);
  return fault == nullptr || fail(error, fault);
}

}  // namespace tq
