// Whatever the encoder writes of registered classes reads back, and is written again to the byte.

#include <cmath>
#include <limits>
#include <random>

#include "serialisation/JSONModel.h"
#include "support/CapturedLog.h"

namespace tq {
namespace {

using namespace test;

/// A structured object with a member of every kind.
class Record final : public Subclass<Record> {
 public:
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

/// Random graphs of everything that archives can hold.
class Graphs {
 public:
  explicit Graphs(unsigned seed) : random_(seed) {}

  Ref<Object> object(int depth) {
    switch (below(depth > 0 ? 9 : 5)) {
      case 0:
        return num(number());
      case 1:
        return string();
      case 2:
        // Now and then more than is turned into text at once.
        return test::data(
            std::string(below(50) == 0 ? 20'000 : below(40), static_cast<char>(random_())));
      case 3:
        return single();
      case 4:
        return packed();
      case 5:
        return makeRef<Record>(real(), static_cast<std::int64_t>(random_()),
                               below(4) == 0 ? nullptr : object(depth - 1));
      case 6:
        return array(depth - 1);
      default:
        return dictionary(depth - 1);
    }
  }

 private:
  unsigned below(unsigned count) { return static_cast<unsigned>(random_() % count); }

  /// Without powers of ten: 1e23 and some others are written differently the second time.
  double real() {
    const auto bits = random_();
    const double reals[] = {
        std::bit_cast<double>(bits), static_cast<double>(bits % 20'000) / 100,
        std::ldexp(static_cast<double>(bits >> 11), -static_cast<int>(bits % 110)),
        std::copysign(std::numeric_limits<double>::infinity(), static_cast<int>(bits)),
        static_cast<double>(static_cast<int>(bits))};
    const double value = reals[below(5)];
    return num(std::fabs(value))->description().starts_with("1e") ? 0.5 : value;
  }

  NumberValue number() {
    const auto bits = random_();
    const NumberValue numbers[] = {
        bits % 2 == 0,
        static_cast<std::int8_t>(bits),
        static_cast<std::int16_t>(bits),
        static_cast<std::int32_t>(bits),
        static_cast<std::int64_t>(bits),
        bits,
        static_cast<float>(bits % 10'000) / 4,  // others come back as doubles of more digits
        real()};
    return numbers[below(8)];
  }

  Ref<String> string() {
    std::u16string units;
    for (auto n = below(12); n > 0; --n) {
      const char16_t ranges[] = {u' ', 0x00, 0x80, 0x2000, 0xD800, 0xDC00, 0xFFF0};
      units += static_cast<char16_t>(ranges[below(4) == 0 ? below(7) : below(2)] + below(96));
      if (below(8) == 0) units += u"\U0001F600";
    }
    return String::stringWithUTF16(units);
  }

  Ref<Object> single() {
    const Ref<Object> objects[] = {
        Null::null(),
        illFormed(),
        Value::valueWithPoint({real(), real()}),
        Value::valueWithSize({real(), real()}),
        Value::valueWithRect({real(), real(), real(), real()}),
        Value::valueWithRange({random_() >> 1, below(9)}),
        Value::valueWith("{?=dd}", Point{real(), 1}),
        Date::dateWithTimeIntervalSinceReferenceDate(static_cast<int>(random_()))};
    return objects[below(8)];
  }

  Ref<Object> packed() {
    std::vector<NumberValue> numbers(1 + below(9));
    const unsigned kind = below(3);
    for (auto& n : numbers) n = kind == 0 ? number() : kind == 1 ? NumberValue(real()) : random_();
    return Array::arrayWithNumbers(numbers);
  }

  Ref<Object> array(int depth) {
    std::vector<Ref<Object>> elements(below(6));
    for (auto& element : elements) element = object(depth);
    return Array::arrayWithObjects(elements);
  }

  Ref<Object> dictionary(int depth) {
    const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
    const unsigned count = below(4) == 0 ? below(41) : below(5);
    for (unsigned i = 0; i < count; ++i) {
      const std::string key = std::to_string(below(4) == 0 ? below(1000) : i);
      const Ref<Object> text = str((below(3) == 0 ? "" : "k") + key);
      dictionary->setObject(object(count > 8 ? 0 : depth), text);
    }
    return below(2) == 0 ? dictionary->copy() : Ref<Object>(dictionary);
  }

  std::mt19937_64 random_;
};

TEST(JSONRoundTrip, WhatIsReadIsWrittenAgainToTheByteStress) {
  Class::registerClass<Record>();
  const CapturedLog log;
  std::size_t bytes = 0;
  for (unsigned seed = 1; seed <= 8000; ++seed) {
    SCOPED_TRACE(seed);
    const std::string text = archiveOf(Graphs(seed).object(static_cast<int>(seed % 7)));
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
    const Ref<Dictionary> graph =
        Dictionary::dictionaryWithEntries({{"a", Graphs(seed).object(4)}});
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
