#include <TQFoundation/platform/Keychain.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace tq {
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
    ASSERT_NE(error, nullptr);
    EXPECT_EQ(error->domain(), KeychainErrorDomain);
    EXPECT_EQ(error->code(), static_cast<std::int64_t>(KeychainErrorCode::noService));
    EXPECT_THAT(error->localizedDescription(),
                testing::HasSubstr("no service that keeps secrets in this session"));
  }
  for (const KeychainItem& bad : {KeychainItem{"a\xFF", "b"}, {"a", std::string("b\0c", 3)}}) {
    EXPECT_FALSE(bad.setSecret("secret", &errors[0]));
    EXPECT_EQ(errors[0]->code(), static_cast<std::int64_t>(KeychainErrorCode::badText));
  }
}

}  // namespace
}  // namespace tq
