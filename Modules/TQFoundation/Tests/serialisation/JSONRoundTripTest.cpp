// Whatever the encoder writes of registered classes reads back, and is written again to the byte.

#include <random>

#include "serialisation/JSONModel.h"
#include "support/CapturedLog.h"
#include "support/RandomGraphs.h"

namespace tq {
namespace {

using namespace test;

/// A structured object with a member of every kind.
struct Record final : Subclass<Record> {
  static constexpr std::string_view className = "Record";
  Record(double real, std::int64_t whole, Ref<Object> object)
      : rect{real, -real, real / 3, 0.1}, number(real), integer(whole), child(std::move(object)) {}
  explicit Record(TQJSONDecoder& d)
      : rect(d.decodeRectForKey("rect")),
        point(d.decodePointForKey("point")),
        number(d.decodeDoubleForKey("number", -1)),
        integer(d.decodeIntegerForKey("integer", -1)),
        flag(d.decodeBoolForKey("flag", false)),
        child(d.decodeObjectForKey("child")) {}

  void encodeAsJSON(TQJSONEncoder& e) const {
    e.encodeDouble(number, "number");
    e.encodeBool(flag, "flag");
    e.encodeObject(child, "child");
    e.encodeInteger(integer, "integer");
    e.encodeRect(rect, "rect");
    e.encodePoint(point, "point");
    e.encodeSize(rect.size, "size");
  }

 private:
  Rect rect;
  Point point = rect.origin;
  double number;
  std::int64_t integer;
  bool flag = integer % 2 == 0;
  Ref<Object> child;
};

Ref<Object> graphOf(unsigned seed, int depth) {
  const auto host = [](double real, std::int64_t whole, Ref<Object> child) {
    return makeRef<Record>(real, whole, std::move(child));
  };
  return RandomGraphs(seed, host).object(depth);
}

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

// A float is written as a double the second time, and some powers of ten slip below.
TEST(JSONRoundTrip, ButForTwoExceptionsThatSettleAfterOneMore) {
  const struct {
    NumberValue number;
    const char* first;
    const char* second;
  } cases[] = {{100000000000000008388608.0, "1e+23", "9.999999999999999e+22"},
               {0.56f, "0.56", "0.5600000000000001"}};
  for (const auto& c : cases) {
    EXPECT_EQ(archiveOf(num(c.number)), c.first);
    EXPECT_EQ(archiveOf(decoded(c.first)), c.second);
    EXPECT_EQ(archiveOf(decoded(c.second)), c.second);
  }
}

/// No crash, no hang, and either an object or none, with whatever error.
void survive(std::string_view text) {
  Ref<Error> error;
  const Ref<Object> object = decoded(text, &error);
  if (!object) return;
  const Ref<Data> written = TQJSONEncoder::encodeObjectAsData(object, &error);
  EXPECT_TRUE(!written || decoded(written->view()));
}

TEST(JSONRoundTrip, HostileTextIsReadOrRefusedStress) {
  Class::registerClass<Record>();
  const CapturedLog log;  // repairs by the thousand
  std::vector<std::string> texts = {
      R"([{"_class":5},{"_class":"NSValue","type":[],"value":{}},{"_data":[]},)"
      R"({"_archive":{"_class":"Value"}},{"_class":"NSValue","value":1e400}])"};
  for (const unsigned seed : {3u, 5u, 6u, 13u, 20u, 41u}) {
    const Ref<Dictionary> graph = Dictionary::dictionaryWithEntries({{"a", graphOf(seed, 4)}});
    texts.push_back(archiveOf(graph).substr(0, 3000));
  }
  for (const std::string& text : texts) {
    for (std::size_t length = 0; length < text.size(); ++length) survive(text.substr(0, length));
  }
  std::mt19937 random(11);
  for (int i = 0; i < 6000; ++i) {
    std::string text = texts[random() % texts.size()];
    for (auto n = 1 + random() % 8; n > 0; --n) {
      const char mark = "\"{}[],:0"[random() % 8];
      text[random() % text.size()] = random() % 4 == 0 ? static_cast<char>(random()) : mark;
    }
    survive(text);
  }
  for (const char* open : {"[", "{\"a\":", "[{\"_class\":\"Record\",\"child\":"}) {
    std::string text;
    for (int i = 0; i < 100'000; ++i) text += open;
    Ref<Error> error;
    EXPECT_FALSE(decoded(text, &error));
    EXPECT_TRUE(error);
  }
}

}  // namespace
}  // namespace tq
