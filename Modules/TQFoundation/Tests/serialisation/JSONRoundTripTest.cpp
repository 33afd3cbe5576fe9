// Archives of registered classes are read back, and written again to the byte. The fuzz target
// JSONArchive reads hostile text.

#include "serialisation/JSONModel.h"
#include "support/CapturedLog.h"

namespace {

TEST(JSONRoundTrip, WhatIsReadIsWrittenAgainToTheByteStress) {
  Class::registerClass<Record>();
  const CapturedLog log;
  std::size_t bytes = 0;
  for (unsigned seed = 1; seed <= 8000; ++seed) {
    SCOPED_TRACE(seed);
    const std::string text = archiveOf(graphOf(seed, static_cast<int>(seed % 7)));
    const Ref<TQJSONDecoder> decoder = TQJSONDecoder::initWithData(*test::data(text));
    Ref<Error> error;
    ASSERT_EQ(archiveOf(decoder->decode(&error)), text);
    ASSERT_FALSE(error);
    // A parsed tree reads as the text does.
    ASSERT_EQ(archiveOf(TQJSONDecoder::initWithRootObject(decoder->root())->decode()), text);
    bytes += text.size();
  }
  EXPECT_GT(bytes, 1'000'000u);
  EXPECT_TRUE(log.messages().empty());
}

}  // namespace
