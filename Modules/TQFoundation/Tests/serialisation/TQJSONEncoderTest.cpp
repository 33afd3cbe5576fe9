#include <TQFoundation/serialisation/TQJSONEncoder.h>

#include "serialisation/JSONModel.h"
#include "support/CapturedLog.h"
#include "support/Test.h"

namespace {

using namespace test;

TEST(TQJSONEncoder, WritesKeyedMembersInTheirForms) {
  const Ref<String> raw = str("a/b");
  const auto members = [&](TQJSONEncoder& e) {
    e.encodeInteger(std::numeric_limits<std::int64_t>::min(), "i");
    e.encodeSize({0.1, -0.0}, "s");
    e.encodeRect({kInf, -kInf, kNaN, 1e-320}, "r");
    e.encodeObject(num(true), "o");
    e.encodeObject(nullptr, "none");
    e.encodeStringWithoutCheckingFormat(raw.get(), "t", true);
    e.encodeStringWithoutCheckingFormat(nullptr, "none", true);
    e.write("|");
    e.encodeObject(raw, "o", false);
    e.encodeStringWithoutCheckingFormat(raw.get(), "t", false);
    e.encodeStringWithoutCheckingFormat(*raw, false);
    e.encodeStringWithoutCheckingFormat(*raw, true);
  };
  EXPECT_EQ(membersOf(members),
            R"(,"i":-9223372036854775808,"s":"{0.10000000000000001, 0}",)"
            R"("r":"{{3.4028234663852886e+38, -3.4028234663852886e+38}, {0, 0}}","o":1,)"
            R"("t":"a/b"|"o":"a\/b""t":"a/b"a/b"a/b")");
}

TEST(TQJSONEncoder, ClampsEveryDoubleToTheRangeOfSinglePrecision) {
  constexpr double kSmallest = 1.1754943508222875e-38;
  constexpr double kLargest = 3.4028234663852886e+38;
  const Rows<double, const char*, const char*> cases{
      {-0.0, "0", "0"},
      {kNaN, "0", "0"},
      {std::nextafter(kSmallest, 0), "0", "0"},
      {kSmallest, "1.175494350822288e-38", "1.1754943508222875e-38"},
      {kLargest, "3.402823466385289e+38", "3.4028234663852886e+38"},
      {std::nextafter(kLargest, kInf), "3.402823466385289e+38", "3.4028234663852886e+38"},
      {-kInf, "-3.402823466385289e+38", "-3.4028234663852886e+38"},
      {12345678.9, "12345678.9", "12345678.9"},
  };
  for (const auto& [value, text16, text17] : cases) {
    SCOPED_TRACE(text17);
    const auto members = [&](TQJSONEncoder& e) {
      e.encodeDouble(value, "d");
      e.encodePoint({value, 1}, "p");
    };
    EXPECT_EQ(membersOf(members),
              std::string(",\"d\":") + text16 + ",\"p\":\"{" + text17 + ", 1}\"");
    EXPECT_EQ(archiveOf(num(value)), text16);
  }
  EXPECT_EQ(archiveOf(num(std::numeric_limits<float>::infinity())), "3.402823e+38");
  EXPECT_EQ(archiveOf(num(-std::numeric_limits<float>::quiet_NaN())), "0");
}

Ref<Object> raising(std::function<void()> raise) {
  return makeRef<Scripted>([raise](TQJSONEncoder& e) {
    e.encodeBool(true, "b");
    raise();
  });
}

TEST(TQJSONEncoder, ReportsEveryFailureAndWritesAsDeepAsTheDecoderReads) {
  constexpr int kLimit = TQJSONEncoder::kDepthLimit;
  EXPECT_TRUE(decoded(archiveOf(nested(kLimit, str("x")))));
  EXPECT_TRUE(decoded(archiveOf(nested(kLimit - 1, Value::valueWithPoint({})))));
  const Ref<MutableArray> cycle = MutableArray::array();
  cycle->addObject(num(1));
  cycle->addObject(cycle);
  const char* tooDeep =
      "The graph is cyclic, or nested deeper than the 512 containers that an archive may hold.";
  const char* any = nullptr;
  const Rows<Ref<Object>, int, const char*, const char*> cases{
      {keyed(Null::null()), 2, "Don't know how to encode objects of class Null as keys",
       R"({:null,"z":1})"},
      {keyed(illFormed()), 2, "Don't know how to encode objects of class String as keys", any},
      {Array::arrayWithObjects({num(1), makeRef<Opaque>(), str("x")}), 1,
       "Error - can't encode object of class Opaque", R"([1,,"x"])"},
      {Array::arrayWithObjects({raising([] { throw Exception("Name", "the reason"); }), num(1)}), 0,
       "the reason", R"([{"_class":"Scripted","b":true)"},
      {raising([] { throw std::runtime_error("bad \xff byte"); }), 0, "bad \uFFFD byte", any},
      {raising([] { throw 7; }), 0, "unknown exception", any},
      {nested(kLimit + 1, str("x")), 0, tooDeep, any},
      {nested(kLimit, Value::valueWithPoint({})), 0, tooDeep, any},
      {cycle, 0, tooDeep, any},
  };
  for (const auto& [object, code, message, expected] : cases) {
    Ref<Error> error;
    const std::string text = archiveOf(object, &error);
    EXPECT_EQ(text, expected != nullptr ? expected : text);
    expectError(error, TQJSONEncoderError, code, message);
  }
  cycle->removeAllObjects();
}

TEST(TQJSONEncoder, KeepsTheFirstErrorAndEncodesNothingWithOneFromBefore) {
  Ref<Error> error;
  const std::string members = membersOf(
      [&](TQJSONEncoder& e) {
        e.setError("mine", 7, "first");
        e.setError(Error::errorWithDomain("mine", 8, "second"));
        e.encodeObject(makeRef<Opaque>(), "o");
        e.encodeBool(true, "b");
      },
      &error);
  EXPECT_EQ(members, R"(,"o":,"b":true)");
  expectError(error, "mine", 7, "first");
  EXPECT_FALSE(TQJSONEncoder::encodeObjectAsString(makeRef<Opaque>()));
  EXPECT_EQ(TQJSONEncoder::encodeObjectAsString(str("é"), &error)->view(), "\"é\"");
  EXPECT_TRUE(error);  // unchanged by a success
  const auto unchecked = makeRef<Scripted>(
      [](TQJSONEncoder& e) { e.encodeStringWithoutCheckingFormat(illFormed().get(), "k", true); });
  EXPECT_FALSE(TQJSONEncoder::encodeObjectAsString(unchecked, &error));
  expectError(error, TQJSONEncoderError, 0);

  EXPECT_EQ(membersOf([](TQJSONEncoder& e) {
              e.encodeBool(true, "a");
              e.encodeRootObject(Null::null());  // keeps the text of the enclosing encoding
              e.encodeBool(false, "b");
            }),
            R"(,"a":truenull,"b":false)");
  const auto sink = makeRef<TextSink>();
  sink->setError(error);
  EXPECT_FALSE(sink->encodeRootObject(num(1)));
  EXPECT_EQ(sink->text, "");
}

TEST(TQJSONEncoder, ReportsWhatTheHostChangesMeanwhile) {
  const Ref<MutableArray> array = MutableArray::array();
  const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
  const std::function<void()> changes[] = {
      [&] { array->removeAllObjects(), dictionary->removeAllObjects(); },
      [&] { array->addObject(num(1)), dictionary->setObject(num(1), "new"); },
  };
  for (const auto& change : changes) {
    for (const Ref<Object>& container : {Ref<Object>(array), Ref<Object>(dictionary)}) {
      array->removeAllObjects();
      dictionary->removeAllObjects();
      for (const char* key : {"a", "b"}) {  // the containers have the only references
        const auto element = makeRef<Scripted>([&](TQJSONEncoder&) { change(); });
        array->addObject(element);
        dictionary->setObject(element, key);
      }
      Ref<Error> error;
      EXPECT_FALSE(TQJSONEncoder::encodeObjectAsData(container, &error));
      expectError(error, TQJSONEncoderError, 0, "A container was changed while it was encoded.");
    }
  }
  const Ref<MutableData> buffer = MutableData::data();
  Ref<Error> error;
  EXPECT_FALSE(TQJSONDataEncoder::initWithData(buffer)->encodeRootObject(
      Array::arrayWithObjects({buffer}), &error));
  expectError(error, TQJSONEncoderError, 0,
              "The archive cannot contain the data it is written to.");
}

struct WriteOnly final : Subclass<WriteOnly> {
  static constexpr std::string_view className = "WriteOnly";
  void encodeAsJSON(TQJSONEncoder&) const {}
};

struct Unregistered final : Subclass<Unregistered> {
  static constexpr std::string_view className = "Unregistered";
  Unregistered() = default;
  explicit Unregistered(TQJSONDecoder&) {}
  void encodeAsJSON(TQJSONEncoder& encoder) const { encoder.encodeBool(true, "_archive"); }
};

TEST(TQJSONEncoder, IsNotSilentAboutMistakes) {
  const CapturedLog log;
  for (int i = 0; i < 2; ++i) archiveOf(Array::arrayWithObjects({makeRef<WriteOnly>()}));
  ASSERT_EQ(log.messages().size(), 1u);
  EXPECT_TRUE(log.messages()[0].starts_with("Objects of class WriteOnly are archived but cannot"));
  const Ref<Object> reserved = Dictionary::dictionaryWithEntries(
      {{"_class", str("a")}, {"_data", str("b")}, {"_x", num(1)}});
  for (int i = 0; i < 2; ++i) {
    archiveOf(Array::arrayWithObjects(
        {makeRef<Unregistered>(), reserved, makeRef<WriteOnly>(), makeRef<Unregistered>()}));
  }
  ASSERT_EQ(log.messages().size(), 5u);
  EXPECT_EQ(log.messages()[1],
            "Objects of class Unregistered are archived but cannot be read back: no class is "
            "registered under the name Unregistered.\n");
  EXPECT_TRUE(log.messages()[2].starts_with("The key _archive is reserved: "));
  EXPECT_TRUE(log.messages()[3].starts_with("The key _class is reserved: "));
  EXPECT_TRUE(log.messages()[4].starts_with("The key _data is reserved: "));
  TQJSONEncoder::setAliasName("NSArray", classOf<WriteOnly>);
  EXPECT_EQ(log.messages().back(),
            "The classes Array and WriteOnly have the same name in archives, NSArray.\n");
  for (const Class* each : {&classOf<WriteOnly>, &classOf<WriteOnly>, &classOf<Unregistered>}) {
    TQJSONEncoder::setAliasName("twice", *each);
  }
  ASSERT_EQ(log.messages().size(), 7u);
  EXPECT_EQ(log.messages().back(),
            "The classes WriteOnly and Unregistered have the same name in archives, twice.\n");

  const std::pair<std::string_view, bool> keys[] = {
      {"", true},      {"a/b", true},  {"_data", true},        {"é", true},
      {"a\"b", false}, {"a\\", false}, {"long key\x1f", false}};
  for (const auto& [key, isPlain] : keys) {
    Ref<Error> error;
    membersOf([&](TQJSONEncoder& e) { e.encodeBool(true, key); }, &error);
    EXPECT_EQ(!error, isPlain) << key;
    if (isPlain) continue;
    expectError(error, TQJSONEncoderError, 0,
                "The key \"" + std::string(key) +
                    "\" has a quotation mark, a backslash or a control character.");
  }
  const auto sink = makeRef<TextSink>();
  Ref<Error> error;
  EXPECT_TRUE(sink->encodeRootObject(num(1)));
  EXPECT_FALSE(sink->encodeRootObject(num(2), &error));
  EXPECT_EQ(sink->text, "1");
  expectError(error, TQJSONEncoderError, 0,
              "The encoder has been used before. It writes one archive.");
  EXPECT_EQ(archiveOf(nullptr), "");
  EXPECT_TRUE(makeRef<TQJSONEncoder>()->encodeRootObject(num(1)));  // without a sink
}

}  // namespace
