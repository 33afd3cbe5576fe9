// Archives of registered classes are read back, and written again to the byte.

#include <random>

#include "serialisation/JSONModel.h"
#include "support/CapturedLog.h"

namespace tq {
namespace {

using namespace test;

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

/// Objects that are read from hostile text can be written and read again. No crash, no hang.
TEST(JSONRoundTrip, HostileTextIsReadOrRefusedStress) {
  Class::registerClass<Record>();
  const CapturedLog log;  // of thousands of repairs
  std::vector<std::string> texts = {
      R"([{"_class":5},{"_class":"NSValue","type":[],"value":{}},{"_data":[]},)"
      R"({"_archive":{"_class":"Value"}},{"_class":"NSValue","value":1e400}])"};
  for (const unsigned seed : {3u, 5u, 6u, 13u, 20u, 41u}) {
    texts.push_back(archiveOf(Array::arrayWithObjects({graphOf(seed, 4)})).substr(0, 3000));
  }
  std::mt19937 random(11);
  for (int i = 0; i < 12'000; ++i) {
    std::string text = texts[random() % texts.size()];
    for (auto n = random() % 8; n > 0; --n) {
      const char mark = "\"{}[],:0"[random() % 8];
      text[random() % text.size()] = random() % 4 == 0 ? static_cast<char>(random()) : mark;
    }
    if (random() % 2 == 0) text.resize(random() % text.size());
    const Ref<Object> object = decoded(text);
    const Ref<Data> written = object ? TQJSONEncoder::encodeObjectAsData(object) : nullptr;
    EXPECT_TRUE(!written || decoded(written->view()));
  }
}

}  // namespace
}  // namespace tq
