#include <TQFoundation/platform/network/Keychain.h>

#include "support/Errors.h"

namespace {

TEST(Keychain, SaysClearlyThatNoServiceRuns) {
#if defined(__SANITIZE_THREAD__)
  GTEST_SKIP() << "GLib's bus thread is not built with the sanitizer, which takes it for a race";
#endif
  ::setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nowhere/bus", 1);
  const KeychainItem item{"com.korvan.test", "nobody"};
  Ref<Error> errors[3];
  EXPECT_EQ(item.secret(&errors[0]), std::nullopt);
  EXPECT_FALSE(item.setSecret("secret", &errors[1]));
  EXPECT_FALSE(item.remove(&errors[2]));
  for (const Ref<Error>& error : errors) {
    test::expectError(error, KeychainErrorDomain, KeychainErrorCode::noService);
    EXPECT_THAT(error->localizedDescription(),
                testing::HasSubstr("No keychain service runs in this session"));
  }
  for (const KeychainItem& bad : {KeychainItem{"a\xFF", "b"}, {"a", std::string("b\0c", 3)}}) {
    EXPECT_FALSE(bad.setSecret("secret", &errors[0]));
    test::expectError(errors[0], KeychainErrorDomain, KeychainErrorCode::badText);
  }
}

// Runs in a D-Bus session with its own keychain service, which stores secrets in a test folder.
TEST(KeychainService, KeepsSecretsAndForgetsThem) {
  if (std::getenv("TQ_TEST_KEYCHAIN") == nullptr) GTEST_SKIP() << "no service of the test's own";
  const KeychainItem item{"com.korvan.test", "somebody"};
  const KeychainItem other{"com.korvan.test", "somebody else"};
  Ref<Error> error;
  EXPECT_EQ(item.secret(&error), std::nullopt);
  EXPECT_EQ(error, nullptr);  // a missing item is not an error
  for (const std::string& secret :
       {std::string("first"), std::string("a\0\xff", 3), std::string()}) {
    EXPECT_TRUE(item.setSecret(secret, &error));
    EXPECT_EQ(item.secret(&error), secret);
    EXPECT_EQ(other.secret(&error), std::nullopt);
  }
  EXPECT_TRUE(item.remove(&error));
  EXPECT_EQ(item.secret(&error), std::nullopt);
  EXPECT_TRUE(item.remove(&error));
  EXPECT_EQ(error, nullptr);
}

}  // namespace
