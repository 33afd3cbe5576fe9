#pragma once

#include <gtest/gtest.h>

#include <TQFoundation/objects/Error.h>

namespace tq::test {

inline void expectFileError(const Ref<Error>& error, std::int64_t code, int errorNumber,
                            std::string_view text) {
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), CocoaErrorDomain);
  EXPECT_EQ(error->code(), code);
  EXPECT_EQ(error->localizedDescription(), text);
  const auto* underlying = objectCast<Error>(error->userInfo().objectForKey(UnderlyingErrorKey));
  ASSERT_TRUE(underlying);
  EXPECT_EQ(underlying->domain(), POSIXErrorDomain);
  EXPECT_EQ(underlying->code(), errorNumber);
}

}  // namespace tq::test
