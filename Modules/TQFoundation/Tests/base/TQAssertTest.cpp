#include <TQFoundation/base/TQAssert.h>

#include "support/Test.h"

namespace {

void requirePositive(int value) { TQ_ASSERT(value > 0); }

TEST(TQAssert, NamesFunctionSourceLineAndConditionThenAborts) {
  requirePositive(1);
  EXPECT_EXIT(requirePositive(0), testing::KilledBySignal(SIGABRT),
              "Assertion failed: \\(value > 0\\), function requirePositive, "
              "file Modules/TQFoundation/Source/TQAssertTest, line [0-9]+\\.");
}

}  // namespace
