#include <TQFoundation/serialisation/TQJSONEncoder.h>

#include "serialisation/JSONModel.h"
#include "support/CapturedLog.h"

namespace {

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

struct MeddlingKey final : Subclass<MeddlingKey> {
  static constexpr std::string_view className = "MeddlingKey";
  explicit MeddlingKey(std::function<void()> act) : act_(std::move(act)) {}
  Ref<Object> replacementObjectForJSONEncoder(TQJSONEncoder& encoder) const {
    EXPECT_TRUE(encoder.encodeRootObject(num(7)));
    return str("other");
  }
  void encodeAsKey(TQJSONEncoder& encoder) const {
    act_();
    encoder.write("\"key\"");
  }
  std::function<void()> act_;
};

TEST(TQJSONEncoder, ReportsWhatTheHostChangesMeanwhile) {
  EXPECT_EQ(archiveOf(makeRef<MeddlingKey>(nullptr)), R"(7"other")");
  const Ref<MutableArray> array = MutableArray::array();
  const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
  const std::function<void()> changes[] = {
      [&] { array->removeAllObjects(), dictionary->removeAllObjects(); },
      [&] { array->addObject(num(1)), dictionary->setObject(num(1), "new"); },
      [&] {
        array->removeObjectAtIndex(0), array->addObject(num(1));
        dictionary->removeObjectForKey(*str("a")), dictionary->setObject(num(1), "new");
      },
      [&] { array->replaceObjectAtIndex(1, num(1)), dictionary->setObject(num(1), "b"); },
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
    dictionary->removeAllObjects();
    const auto key = [&] { return makeRef<MeddlingKey>(change); };
    dictionary->setObject(Array::arrayWithObjects({str("x")}), key());
    dictionary->setObject(str("x"), "b");
    dictionary->setObject(str("x"), "a");
    if (array->count() < 2) array->addObject(num(1)), array->addObject(num(1));
    EXPECT_FALSE(TQJSONEncoder::encodeObjectAsData(dictionary));
  }
  const Ref<MutableData> buffer = MutableData::data();
  Ref<Error> error;
  EXPECT_FALSE(TQJSONDataEncoder::initWithData(buffer)->encodeRootObject(
      Array::arrayWithObjects({buffer}), &error));
  expectError(error, TQJSONEncoderError, 0,
              "The archive cannot contain the data it is written to.");
  for (const std::size_t added : {1U, 100'000U}) {  // with and without a new block of memory
    for (const bool sets : {false, true}) {
      buffer->setLength(0);
      const auto sink = TQJSONDataEncoder::initWithData(buffer);
      EXPECT_FALSE(sink->encodeRootObject(makeRef<Scripted>([&](TQJSONEncoder& e) {
                                            e.encodeBool(true, "a");
                                            sets ? sink->setData(MutableData::data())
                                                 : buffer->append(std::string(added, '#'));
                                            e.encodeBool(false, "b");
                                          }),
                                          &error));
      EXPECT_EQ(sink->data().get(), buffer.get());
    }
  }
}

TEST(TQJSONEncoder, AnArchiveWithAGapIsAnErrorEvenIfTheHostCatchesTheException) {
  const auto encodes = [](Ref<Object> object) {
    return [object](TQJSONEncoder& e) { e.encodeObject(object, "k"); };
  };
  const Ref<MutableArray> array = MutableArray::array();
  array->addObject(makeRef<Scripted>([&](TQJSONEncoder&) { array->removeAllObjects(); }));
  const Scripted::Encode failing[] = {
      encodes(nested(600, str("x"))),
      encodes(array),
      encodes(raising([] { throw 7; })),
      [](TQJSONEncoder& e) { e.write(std::string(2000, 'x')); },
      // Each is short enough, but not all of them.
      [](TQJSONEncoder& e) {
        for (int i = 0; i < 50; ++i) {
          e.write(i == 0 ? ",\"k\":[" : ",");
          e.encodeRootObject(str(std::string(200, 'x')));
        }
      },
  };
  for (const auto& encode : failing) {
    const Ref<MutableData> buffer = MutableData::data();
    const auto sink = TQJSONEncoder::encoderForWritingToMutableData(buffer);
    sink->setLongestArchive(1000);
    Ref<Error> error;
    EXPECT_FALSE(sink->encodeRootObject(makeRef<Scripted>([&](TQJSONEncoder& e) {
                                          try {
                                            encode(e);
                                          } catch (...) {
                                          }
                                          e.encodeBool(true, "b");
                                        }),
                                        &error));
    expectError(error, TQJSONEncoderError, 0);
    EXPECT_LE(buffer->length(), 1000u);
  }
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

struct Keyed final : Subclass<Keyed> {
  static constexpr std::string_view className = "Keyed";
  void encodeWithCoder(KeyedArchiver&) const {}
  bool initWithCoder(KeyedUnarchiver&) { return true; }
};

struct Impostor final : Subclass<Impostor> {  // has the name of a registered class
  static constexpr std::string_view className = "Impostor";
  static constexpr std::string_view codingName = "Choosy";
  Impostor() = default;
  explicit Impostor(TQJSONDecoder&) {}
  void encodeAsJSON(TQJSONEncoder&) const {}
};

TEST(TQJSONEncoder, LogsClassesThatTheReaderWouldNotFind) {
  Class::registerClass<Choosy>();
  const CapturedLog log;
  TQJSONEncoder::setAliasName("Boxed", classOf<Value>);
  const Ref<Array> objects = Array::arrayWithObjects(
      {makeRef<Keyed>(), makeRef<Impostor>(), Value::valueWithPoint({1, 2})});
  for (int i = 0; i < 2; ++i) archiveOf(objects);
  TQJSONEncoder::setAliasName("NSValue", classOf<Value>);
  const std::string start = "Objects of class ";
  const std::string middle = " are archived but cannot be read back: ";
  EXPECT_EQ(
      log.messages(),
      (std::vector{
          start + "Keyed" + middle + "no class is registered under the name Keyed.\n",
          start + "Impostor" + middle + "another class is registered under the name Choosy.\n",
          start + "Value" + middle + "no class is registered under the name Boxed.\n"}));
}

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

  const auto keyError = [](std::string_view key) {
    Ref<Error> error;
    membersOf([&](TQJSONEncoder& e) { e.encodeBool(true, key); }, &error);
    return error;
  };
  for (const char* const key : {"", "a/b", "_data", "é", "\xF0\x9F\x98\x80 \xEF\xBF\xBF"}) {
    EXPECT_EQ(keyError(key), nullptr) << key;
  }
  for (const char* const key : {"a\"b", "a\\", "long key\x1f", "\xff", "\xC0\x80", "\xED\xA0\x80",
                                "\xF4\x90\x80\x80", "\xE0\xA0"}) {
    expectError(keyError(key), TQJSONEncoderError, 0);
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
