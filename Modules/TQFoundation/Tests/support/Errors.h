#pragma once

#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/ReadingLimits.h>

#include "support/Test.h"

namespace tq::test {

inline std::int64_t codeOf(const Ref<Error>& error) { return error == nullptr ? 0 : error->code(); }

/// @param text  the localized description, unless it is nullopt
template <class Code>
void expectError(const Ref<Error>& error, std::string_view domain, Code code,
                 std::optional<std::string_view> text = {}) {
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), domain);
  EXPECT_EQ(error->code(), static_cast<std::int64_t>(code)) << error->description();
  EXPECT_EQ(error->localizedDescription(), text.value_or(error->localizedDescription()));
}

/// Checks an error of a file operation and the system's error number in it.
inline void expectFileError(const Ref<Error>& error, std::int64_t code, int errorNumber,
                            std::string_view text) {
  expectError(error, CocoaErrorDomain, code, text);
  if (!error) return;
  Object* const below = error->userInfo().objectForKey(UnderlyingErrorKey);
  expectError(below ? refCast<Error>(share(*below)) : nullptr, POSIXErrorDomain, errorNumber);
}

inline void expectLimit(const Ref<Error>& error, ReadingLimit limit) {
  expectError(error, ReadingLimitsError, limit);
}

}  // namespace tq::test
