// Whatever the encoder writes of registered classes reads back, and is written again to the byte.

#include <cmath>
#include <limits>
#include <random>

#include "serialisation/JSONModel.h"
#include "support/CapturedLog.h"

namespace tq {
namespace {

using test::archiveOf;
using test::decoded;
using test::illFormed;
using test::num;
using test::str;

/// A structured object with a member of every kind.
class Record : public Subclass<Record> {
 public:
  static constexpr std::string_view className = "Record";
  Record() = default;
  explicit Record(TQJSONDecoder& d)
      : number(d.decodeDoubleForKey("number", -1)),
        flag(d.decodeBoolForKey("flag", false)),
        integer(d.decodeIntegerForKey("integer", -1)),
        rect(d.decodeRectForKey("rect")),
        point(d.decodePointForKey("point")),
        size(d.decodeSizeForKey("size")),
        child(d.decodeObjectForKey("child")),
        name(refCast<String>(d.decodeObjectForKey("name"))) {}

  void encodeAsJSON(TQJSONEncoder& e) const {
    e.encodeDouble(number, "number");
    e.encodeBool(flag, "flag");
    e.encodeObject(child, "child");
    e.encodeInteger(integer, "integer");
    e.encodeRect(rect, "rect");
    e.encodePoint(point, "point");
    e.encodeSize(size, "size");
    e.encodeStringWithoutCheckingFormat(name.get(), "name", true);
  }

  double number = 0;
  bool flag = false;
  std::int64_t integer = 0;
  Rect rect;
  Point point;
  Size size;
  Ref<Object> child;
  Ref<String> name;
};

class AliasedRecord final : public Subclass<AliasedRecord, Record> {
 public:
  static constexpr std::string_view className = "AliasedRecord";
  AliasedRecord() = default;
  explicit AliasedRecord(TQJSONDecoder& decoder) : Subclass(decoder) {}
};

/// Kept by keyed archives alone.
class Keyed final : public Subclass<Keyed> {
 public:
  static constexpr std::string_view className = "Keyed";
  void encodeWithCoder(KeyedArchiver& coder) const { coder.encodeObject(content, "content"); }
  bool initWithCoder(KeyedUnarchiver& coder) {
    content = coder.decodeObjectForKey("content");
    return true;
  }
  Ref<Object> content;
};

void registerModel() {
  Class::registerClass<Record>();
  Class::registerClass<Keyed>();
  TQJSONEncoder::setAliasName("alias", classOf<AliasedRecord>);
  TQJSONDecoder::setClass(&classOf<AliasedRecord>, "alias");
}

/// Random graphs of everything that archives can hold.
class Graphs {
 public:
  explicit Graphs(unsigned seed) : random_(seed) {}

  Ref<Object> object(int depth) {
    switch (below(depth > 0 ? 13 : 6)) {
      case 0:
        return Null::null();
      case 1:
      case 2:
        return num(number());
      case 3:
        return string();
      case 4:
        return test::data(bytes());
      case 5:
        return boxed();
      case 6:
        return fallback();
      case 7:
        return packed();
      case 8:
      case 9:
        return array(depth - 1);
      case 10:
        return record(depth - 1);
      default:
        return dictionary(depth - 1);
    }
  }

 private:
  unsigned below(unsigned count) { return static_cast<unsigned>(random_() % count); }

  double real() {
    const double value = anyReal();
    const bool isPowerOfTen = num(std::fabs(value))->description().starts_with("1e");
    return isPowerOfTen ? 0.5 : value;  // some of them are an exception, see below
  }

  double anyReal() {
    const auto bits = random_();
    switch (below(6)) {
      case 0:
        return std::bit_cast<double>(bits);
      case 1:
        return static_cast<double>(bits % 20'000) / 100;
      case 2:
        return std::ldexp(static_cast<double>(bits >> 11), -static_cast<int>(below(110)));
      case 3:
        return std::pow(10, static_cast<double>(bits % 80) - 40);
      case 4:
        return std::copysign(std::numeric_limits<double>::infinity(), static_cast<int>(bits));
      default:
        return static_cast<double>(static_cast<int>(bits));
    }
  }

  NumberValue number() {
    const auto bits = random_();
    switch (below(8)) {
      case 0:
        return bits % 2 == 0;
      case 1:
        return static_cast<std::int8_t>(bits);
      case 2:
        return static_cast<std::int16_t>(bits);
      case 3:
        return static_cast<std::int32_t>(bits);
      case 4:
        return static_cast<std::int64_t>(bits);
      case 5:
        return bits;
      case 6:
        return static_cast<float>(bits % 10'000) /
               4;  // others are the exception, see TQJSONEncoder
      default:
        return real();
    }
  }

  std::string bytes() {
    std::string bytes(below(40), '\0');
    for (char& byte : bytes) byte = static_cast<char>(random_());
    return bytes;
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

  Ref<Object> boxed() {
    switch (below(3)) {
      case 0:
        return Value::valueWithPoint({real(), real()});
      case 1:
        return Value::valueWithSize({real(), real()});
      default:
        return Value::valueWithRect({real(), real(), real(), real()});
    }
  }

  Ref<Object> fallback() {
    switch (below(5)) {
      case 0:
        return illFormed();
      case 1:
        return Value::valueWithRange({random_() >> 1, below(9)});
      case 2:
        return Date::dateWithTimeIntervalSinceReferenceDate(static_cast<int>(random_()));
      case 3:
        return Value::valueWith("{?=dd}", Point{real(), 1});
      default: {
        const Ref<Keyed> keyed = makeRef<Keyed>();
        keyed->content = below(2) == 0 ? Ref<Object>(boxed()) : Ref<Object>(string());
        return keyed;
      }
    }
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
    if (below(3) != 0) return Array::arrayWithObjects(elements);
    const Ref<MutableArray> array = MutableArray::array();
    for (auto& element : elements) array->addObject(element);
    return array;
  }

  Ref<Object> dictionary(int depth) {
    const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
    const unsigned count = below(4) == 0 ? below(41) : below(5);
    for (unsigned i = 0; i < count; ++i) {
      Ref<Object> key = num(number());
      if (below(3) != 0) key = str("k" + std::to_string(below(4) == 0 ? below(1000) : i));
      const std::string text = key->description();
      bool isNew = true;  // two keys of one text are one key to the reader
      for (const auto& held : dictionary->keys()) isNew = isNew && held->description() != text;
      if (isNew) dictionary->setObject(object(count > 8 ? 0 : depth), key);
    }
    return below(2) == 0 ? dictionary->copy() : Ref<Object>(dictionary);
  }

  Ref<Object> record(int depth) {
    const Ref<Record> record =
        below(2) == 0 ? makeRef<Record>() : Ref<Record>(makeRef<AliasedRecord>());
    record->number = real();
    record->flag = below(2) == 0;
    record->integer = static_cast<std::int64_t>(random_());
    record->rect = {real(), real(), real(), real()};
    record->point = {real(), real()};
    record->size = {real(), real()};
    if (below(4) != 0) record->child = object(depth);
    if (below(2) == 0) record->name = str("plain name");
    return record;
  }

  std::mt19937_64 random_;
};

TEST(JSONRoundTrip, WhatIsReadIsWrittenAgainToTheByteStress) {
  registerModel();
  const test::CapturedLog log;
  std::size_t bytes = 0;
  for (unsigned seed = 1; seed <= 8000; ++seed) {
    SCOPED_TRACE(seed);
    const std::string text = archiveOf(Graphs(seed).object(static_cast<int>(seed % 7)));
    Ref<Error> error;
    const Ref<Object> object = decoded(text, &error);
    ASSERT_TRUE(object && !error) << text;
    ASSERT_EQ(archiveOf(object), text);
    // A parsed tree reads as the text does.
    const Ref<TQJSONDecoder> parsed = TQJSONDecoder::initWithData(*test::data(text));
    const Ref<Object> fromTree = TQJSONDecoder::initWithRootObject(parsed->root())->decode();
    ASSERT_TRUE(fromTree);
    ASSERT_EQ(archiveOf(fromTree), text);
    bytes += text.size();
  }
  EXPECT_GT(bytes, 1'000'000u);
  EXPECT_TRUE(log.messages().empty());
}

TEST(JSONRoundTrip, SomePowersOfTenSlipBelowTheSecondTime) {
  EXPECT_EQ(archiveOf(num(100000000000000008388608.0)), "1e+23");
  EXPECT_EQ(archiveOf(decoded("1e+23")), "9.999999999999999e+22");
  EXPECT_EQ(archiveOf(decoded("9.999999999999999e+22")), "9.999999999999999e+22");
}

TEST(JSONRoundTrip, AFloatIsWrittenAsADoubleTheSecondTime) {
  EXPECT_EQ(archiveOf(num(0.56f)), "0.56");
  EXPECT_EQ(archiveOf(decoded("0.56")), "0.5600000000000001");
  EXPECT_EQ(archiveOf(decoded("0.5600000000000001")), "0.5600000000000001");
}

TEST(JSONRoundTrip, ValuesComeBackEqual) {
  registerModel();
  const Ref<Object> cases[] = {
      illFormed(u"\xDC00\xD800"),
      Value::valueWithRange({3, 4}),
      Value::valueWith("{?=dd}", Point{1, 2}),
      Date::dateWithTimeIntervalSinceReferenceDate(0.1),
      Array::arrayWithObjects({illFormed(), num(-1), Array::array(), Null::null()}),
      test::data(std::string(100'000, '\xff')),
      Value::valueWithRect({0.1, -2, 1e20, 3}),
      str(std::string_view("\0\x1f/\"", 4)),
  };
  for (const auto& object : cases) {
    const Ref<Object> again = decoded(archiveOf(object));
    ASSERT_TRUE(again) << object->description();
    EXPECT_TRUE(again->isEqual(*object)) << object->description();
  }
  const Ref<Record> record = makeRef<Record>();
  record->rect = {0.1, 1.0 / 3, 1e-20, 12345678.901234567};
  const Ref<Record> again = refCast<Record>(decoded(archiveOf(record)));
  ASSERT_TRUE(again);
  EXPECT_EQ(textFromRect(again->rect), textFromRect(record->rect));
  EXPECT_EQ(again->rect.size.height, record->rect.size.height);
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
  registerModel();
  const test::CapturedLog log;  // repairs by the thousand
  std::vector<std::string> texts;
  for (const unsigned seed : {3u, 5u, 6u, 13u, 20u, 41u}) {
    texts.push_back(archiveOf(Graphs(seed).object(4)).substr(0, 3000));
  }
  texts.push_back(R"([{"_class":5},{"_class":"NSValue","type":[],"value":{}},{"_data":[]},)"
                  R"({"_archive":{"_class":"Record"}},{"_class":"Record","child":1e400}])");
  for (const std::string& text : texts) {
    for (std::size_t length = 0; length < text.size(); ++length) survive(text.substr(0, length));
  }
  std::mt19937 random(11);
  for (int i = 0; i < 6000; ++i) {
    std::string text = texts[random() % texts.size()];
    for (auto n = 1 + random() % 8; n > 0; --n) {
      text[random() % text.size()] =
          static_cast<char>(random() % 4 == 0 ? random() : "\"{}[],:0"[random() % 8]);
    }
    survive(text);
  }
  for (const char* open : {"[", "{\"a\":", "[{\"_class\":\"Record\",\"child\":"}) {
    std::string text;
    for (int i = 0; i < 100'000; ++i) text += open;
    survive(text);
    Ref<Error> error;
    EXPECT_FALSE(decoded(text, &error));
    EXPECT_TRUE(error);
  }
  for (const std::string& number : {std::string(100'000, '9'), "1e" + std::string(9, '9'),
                                    "-0." + std::string(100'000, '3'), std::string("1e-400")}) {
    survive(number);
    survive("{\"_class\":\"Record\",\"integer\":" + number + "}");
    survive("{\"_class\":\"Record\",\"rect\":\"{" + number + ", " + number + "}\"}");
  }
}

}  // namespace
}  // namespace tq
