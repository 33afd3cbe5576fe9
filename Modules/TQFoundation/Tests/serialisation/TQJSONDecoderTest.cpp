#include <TQFoundation/serialisation/TQJSONDecoder.h>

#include <errno.h>

#include <filesystem>
#include <stdexcept>

#include "platform/ExpectFileError.h"
#include "serialisation/JSONModel.h"
#include "support/CapturedLog.h"
#include "support/TemporaryDirectory.h"

namespace tq {
namespace {

using test::CapturedLog;
using test::data;
using test::decoded;
using test::expectError;
using test::num;
using test::Scripted;
using test::str;

std::string described(const Ref<Object>& object) {
  return object ? object->description() : "(null)";
}

/// A class that takes nothing from an archive, only its place.
class Plain final : public Subclass<Plain> {
 public:
  static constexpr std::string_view className = "Plain";
};

class Throwing final : public Subclass<Throwing> {
 public:
  static constexpr std::string_view className = "Throwing";
  explicit Throwing(TQJSONDecoder&) { throw std::runtime_error("thrown"); }
};

/// Answers none now and then, as a class may.
class Choosy final : public Subclass<Choosy> {
 public:
  static constexpr std::string_view className = "Choosy";
  static Ref<Choosy> initWithJSONDecoder(TQJSONDecoder& decoder) {
    return decoder.containsValueForKey("good") ? makeRef<Choosy>() : nullptr;
  }
};

class TQJSONDecoderTest : public testing::Test {
 protected:
  TQJSONDecoderTest() {
    Class::registerClass<Scripted>();
    Class::registerClass<Plain>();
    Class::registerClass<Throwing>();
    Class::registerClass<Choosy>();
    Scripted::onDecode() = [](TQJSONDecoder&) {};
  }

  /// Runs `read` as the constructor of an object with these members.
  static void reading(std::string members, const Scripted::Decode& read) {
    int calls = 0;
    Scripted::onDecode() = [&](TQJSONDecoder& decoder) { ++calls, read(decoder); };
    EXPECT_TRUE(decoded("{\"_class\":\"Scripted\"," + members + "}"));
    EXPECT_EQ(calls, 1);
    calls = 0;
    const Ref<Object> tree = TQJSONDecoder::initWithData(*test::data("{" + members + "}"))->root();
    const auto parsed =
        MutableDictionary::dictionaryWithDictionary(static_cast<const Dictionary&>(*tree));
    parsed->setObject(str("Scripted"), "_class");
    Ref<Error> error;
    EXPECT_TRUE(TQJSONDecoder::init()->decodeDictionary(parsed, &error));
    EXPECT_EQ(calls, 1);
    Scripted::onDecode() = [](TQJSONDecoder&) {};
  }

  CapturedLog log_;
};

TEST_F(TQJSONDecoderTest, ReadsPlainValuesWhateverIsAtTheTop) {
  const struct {
    const char* text;
    Ref<Object> object;
  } cases[] = {
      {"null", Null::null()},
      {" 3 ", num(3)},
      {"\xEF\xBB\xBF-2.5", num(-2.5)},
      {"true", num(true)},
      {R"("a\/b\u00e9")", str("a/bé")},
      {"[]", Array::array()},
      {"[1,[\"x\"],null]",
       Array::arrayWithObjects({num(1), Array::arrayWithObjects({str("x")}), Null::null()})},
      {R"({"b":1,"a":{"c":[]}})",
       Dictionary::dictionaryWithEntries(
           {{"b", num(1)}, {"a", Dictionary::dictionaryWithEntries({{"c", Array::array()}})}})},
      {R"({"_data":"AAEC"})", data(std::string_view("\0\1\2", 3))},
      {R"({"_class":"NSValue","type":"point","value":"{1, 2}"})", Value::valueWithPoint({1, 2})},
      {R"({"_class":"NSValue","type":"size","value":"{1, 2}"})", Value::valueWithSize({1, 2})},
      {R"({"_class":"NSValue","type":"rect","value":"{1, 2, 3, 4}"})",
       Value::valueWithRect({1, 2, 3, 4})},
      {R"({"_class":"NSValue","type":"rect"})", Value::valueWithRect({})},
      {R"({"_class":"NSValue","type":"line","value":"{1}"})", Value::valueWithBytes({}, {})},
      {R"({"_class":"NSValue","type":7})", Value::valueWithBytes({}, {})},
  };
  for (const auto& c : cases) {
    Ref<Error> error = Error::errorWithDomain("old", 1, "old");
    const Ref<Object> object = decoded(c.text, &error);
    ASSERT_TRUE(object) << c.text;
    EXPECT_TRUE(object->isEqual(*c.object)) << described(object);
    EXPECT_FALSE(error);  // always written

    const Ref<TQJSONDecoder> again = TQJSONDecoder::initWithData(*data(c.text));
    const Ref<Object> fromTree = TQJSONDecoder::initWithRootObject(again->root())->decode();
    ASSERT_TRUE(fromTree);
    EXPECT_TRUE(fromTree->isEqual(*c.object)) << described(fromTree);
  }
  EXPECT_FALSE(TQJSONDecoder::init()->decode());
  EXPECT_FALSE(TQJSONDecoder::init()->decodeDictionary(nullptr, nullptr));
  EXPECT_FALSE(TQJSONDecoder::init()->currentObjectDict());
  EXPECT_FALSE(TQJSONDecoder::init()->containsValueForKey("x"));
  EXPECT_TRUE(log_.messages().empty());
}

TEST_F(TQJSONDecoderTest, DropsWhatDecodesToNone) {
  const struct {
    const char* text;
    const char* description;
  } cases[] = {
      {R"({"_class":"Unknown","a":1})", "(null)"},
      {R"([1,{"_class":"Unknown"},2])", "(1, 2)"},
      {R"([{"_class":"Unknown"}])", "()"},
      {R"({"a":{"_class":"Unknown"},"b":2})", "{b = 2;}"},
      {R"([{"_class":"Choosy"},{"_class":5},{"_class":null},{"_class":[]}])", "()"},
      {R"([{"_data":[]},{"_data":5},{"_data":"A"},{"_data":"AA\n="},{"_data":""}])",
       "(<0 bytes: >)"},
      {R"([{"_archive":"x"},{"_archive":{}},{"_archive":""},{"_archive":"AAAA"}])", "()"},
      {R"({"_archive":"x","_class":"NSValue","_data":"AAAA"})", "(null)"},
      {R"({"_data":"AAAA","_class":"Unknown"})", "(null)"},
      {R"([{"_class":"unknown","x":{"_class":"Plain"}}])", "()"},
  };
  for (const auto& c : cases) {
    Ref<Error> error;
    EXPECT_EQ(described(decoded(c.text, &error)), c.description) << c.text;
    EXPECT_FALSE(error) << c.text;
  }
  EXPECT_TRUE(log_.messages().empty());
}

TEST_F(TQJSONDecoderTest, LeavesTheDictionaryOfAClassThatCannotBeRead) {
  Ref<Error> error;
  const Ref<Object> object = decoded(R"([{"_class":"Plain","x":{"_data":"AAAA"}},1])", &error);
  EXPECT_EQ(described(object), "({_class = Plain; x = {_data = AAAA;};}, 1)");
  expectError(error, TQJSONDecoderError, 0, "Invalid object class Plain found in archive");
  EXPECT_EQ(log_.messages(), std::vector<std::string>{error->description()});
}

TEST_F(TQJSONDecoderTest, AnArchivePassesTheSameJudgementAsAClass) {
  const std::string text = test::archiveOf(test::illFormed());
  ASSERT_TRUE(text.starts_with(R"({"_archive":")")) << text;
  const Ref<Object> object = decoded(text);
  ASSERT_TRUE(object);
  EXPECT_TRUE(object->isEqual(*test::illFormed()));
  const std::string both = text.substr(0, text.size() - 1) + R"(,"_class":"Unknown"})";
  EXPECT_TRUE(decoded(both));

  TQJSONDecoder::setClass(nullptr, "NSString");
  EXPECT_FALSE(decoded(text));
  TQJSONDecoder::setClass(&classOf<String>, "NSString");
  EXPECT_TRUE(decoded(text));
}

TEST_F(TQJSONDecoderTest, ClassesAreSetBannedAndSetBackByName) {
  const std::string text = R"([{"_class":"Scripted"},{"_class":"Alias"}])";
  const auto decodedCount = [&] {
    Ref<Error> error;
    const Ref<Array> array = refCast<Array>(decoded(text, &error));
    EXPECT_FALSE(error);
    return array->count();
  };
  EXPECT_EQ(decodedCount(), 1u);
  TQJSONDecoder::setClass(&classOf<Scripted>, "Alias");
  EXPECT_EQ(decodedCount(), 2u);
  TQJSONDecoder::setClass(nullptr, "Scripted");
  EXPECT_EQ(decodedCount(), 1u);
  TQJSONDecoder::setClass(&classOf<Choosy>, "Scripted");  // answers none
  EXPECT_EQ(decodedCount(), 1u);
  TQJSONDecoder::setClass(&classOf<Scripted>, "Scripted");  // removes what was set
  EXPECT_EQ(decodedCount(), 2u);
  TQJSONDecoder::setClass(nullptr, "Alias");
  EXPECT_EQ(decodedCount(), 1u);
  EXPECT_EQ(TQJSONDecoder::init()->classFromClassName("Scripted"), &classOf<Scripted>);
  EXPECT_EQ(TQJSONDecoder::init()->classFromClassName("Alias"), nullptr);
  EXPECT_EQ(TQJSONDecoder::init()->classFromClassName(""), nullptr);
}

class Judge final : public Subclass<Judge>, public TQJSONDecoderDelegate {
 public:
  static constexpr std::string_view className = "Judge";
  bool shouldInstantiateObjectOfClass(TQJSONDecoder&, const Class& objectClass) override {
    asked.emplace_back(objectClass.name());
    return &objectClass != &classOf<Scripted>;
  }
  std::vector<std::string> asked;
};

TEST_F(TQJSONDecoderTest, ADelegateRefusesClassesWhileItLives) {
  const Ref<TQJSONDecoder> decoder = TQJSONDecoder::initWithData(
      *data(R"([{"_class":"Scripted"},{"_class":"Unknown"},{"_class":"NSValue"},)"
            R"({"_class":"Scripted"}])"));
  Ref<Judge> judge = makeRef<Judge>();
  decoder->setDelegate(Weak<TQJSONDecoderDelegate>(judge));
  EXPECT_EQ(decoder->delegate().get(), judge.get());
  Ref<Error> error;
  EXPECT_EQ(refCast<Array>(decoder->decode(&error))->count(), 1u);
  expectError(error, TQJSONDecoderError, 0, "Invalid object class Scripted found in archive");
  EXPECT_EQ(judge->asked, (std::vector<std::string>{"Scripted", "Value", "Scripted"}));
  EXPECT_EQ(log_.messages(), std::vector<std::string>(2, error->description()));

  judge = nullptr;
  EXPECT_FALSE(decoder->delegate());
  EXPECT_EQ(refCast<Array>(decoder->decode())->count(), 3u);
}

TEST_F(TQJSONDecoderTest, KeepsTheFirstErrorAndLogsEach) {
  const Ref<TQJSONDecoder> decoder = TQJSONDecoder::init();
  decoder->setError(nullptr);
  const auto first = Error::errorWithDomain("d", 1, "first");
  const auto second = Error::errorWithDomain("d", 2, "second");
  decoder->setError(first);
  decoder->setError(second);
  EXPECT_EQ(decoder->error(), first);
  EXPECT_EQ(log_.messages(),
            (std::vector<std::string>{first->description(), second->description()}));
}

TEST_F(TQJSONDecoderTest, ReadsNumbersLeniently) {
  const struct {
    const char* json;
    double asDouble;
    bool asBool;
    std::int64_t asInteger;
  } cases[] = {
      {"1", 1, true, 1},
      {"0", 0, false, 0},
      {"true", 1, true, 1},
      {"false", 0, false, 0},
      {"-2.9", -2.9, true, -2},
      {"0.5", 0.5, true, 0},
      {"1e300", 1e300, true, std::numeric_limits<std::int64_t>::max()},
      {"18446744073709551615", 18446744073709551615.0, true,
       std::numeric_limits<std::int64_t>::max()},
      {R"("1")", 1, true, 1},
      {R"(" -12.5e1x")", -125, true, -12},
      {R"("0x10")", 0, false, 0},
      {R"("YES")", 0, true, 0},
      {R"("nan")", 0, false, 0},
      {R"("")", 0, false, 0},
      {"null", 0, false, 0},
      {"[1]", 0, false, 0},
      {R"({"a":1})", 0, false, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.json);
    reading(std::string("\"k\":") + c.json, [&](TQJSONDecoder& decoder) {
      EXPECT_TRUE(decoder.containsValueForKey("k"));
      EXPECT_EQ(decoder.decodeDoubleForKey("k", 9), c.asDouble);
      EXPECT_EQ(decoder.decodeBoolForKey("k", !c.asBool), c.asBool);
      EXPECT_EQ(decoder.decodeIntegerForKey("k", 9), c.asInteger);
      EXPECT_FALSE(decoder.containsValueForKey("K"));
      EXPECT_EQ(decoder.decodeDoubleForKey("K", 9), 9);
      EXPECT_TRUE(decoder.decodeBoolForKey("K", true));
      EXPECT_EQ(decoder.decodeIntegerForKey("K", -9), -9);
      EXPECT_FALSE(decoder.decodeObjectForKey("K"));
    });
  }
}

TEST_F(TQJSONDecoderTest, ReadsGeometryFromTheNumbersOfAString) {
  const struct {
    const char* json;
    Rect rect;
  } cases[] = {
      {R"("{{1, 2}, {3, 4}}")", {1, 2, 3, 4}},
      {R"("{1, 2, 3, 4}")", {1, 2, 3, 4}},
      {R"("{1e+20, -1e-05}")", {1e20, -1e-5, 0, 0}},
      {R"("-0.6a5.4das-105.7bfh24.3")", {-0.6, 5.4, -105.7, 24.3}},
      {R"("")", {}},
      {"5", {}},
      {"null", {}},
      {"[1,2,3,4]", {}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.json);
    reading(std::string("\"k\":") + c.json, [&](TQJSONDecoder& decoder) {
      const auto& [origin, size] = c.rect;
      const Rect rect = decoder.decodeRectForKey("k", {9, 9, 9, 9});
      EXPECT_EQ(textFromRect(rect), textFromRect(c.rect));
      EXPECT_EQ(decoder.decodePointForKey("k", {9, 9}), origin);
      EXPECT_EQ(textFromSize(decoder.decodeSizeForKey("k", {9, 9})),
                textFromSize({origin.x, origin.y}));
      EXPECT_EQ(decoder.decodePointForKey("K"), Point{});
      EXPECT_EQ(decoder.decodePointForKey("K", {9, 8}), (Point{9, 8}));
      EXPECT_EQ(textFromSize(decoder.decodeSizeForKey("K", {9, 8})), "{9, 8}");
      EXPECT_EQ(textFromRect(decoder.decodeRectForKey("K")), textFromRect({}));
    });
  }
}

TEST_F(TQJSONDecoderTest, EachObjectReadsItsOwnMembers) {
  reading(R"("a":1,"c":{"_class":"Choosy","good":1},"t":{"_class":"Throwing"},"d":{"a":2},"a":3)",
          [](TQJSONDecoder& decoder) {
            const auto own = [&] { return decoder.decodeIntegerForKey("a", 0); };
            const auto ownName = [&] {
              return described(share(*decoder.currentObjectDict()->objectForKey("_class")));
            };
            const std::int64_t a = own();
            EXPECT_TRUE(decoder.decodeObjectForKey("c"));
            EXPECT_EQ(own(), a);
            EXPECT_THROW(static_cast<void>(decoder.decodeObjectForKey("t")), std::runtime_error);
            EXPECT_EQ(own(), a);
            EXPECT_EQ(described(decoder.decodeObjectForKey("d")), "{a = 2;}");
            EXPECT_EQ(own(), a);
            EXPECT_EQ(ownName(), "Scripted");
            EXPECT_FALSE(decoder.decodeObjectForKey("d") == decoder.decodeObjectForKey("d"));
          });
}

TEST_F(TQJSONDecoderTest, WhatAThrowingConstructorLeftIsInNoOtherContainer) {
  Scripted::onDecode() = [](TQJSONDecoder& decoder) {
    EXPECT_THROW(static_cast<void>(decoder.decodeObjectForKey("k")), std::runtime_error);
  };
  const std::string inner = R"({"_class":"Scripted","k":["stale",{"_class":"Throwing"}]})";
  EXPECT_EQ(refCast<Array>(decoded("[" + inner + ",\"x\"]"))->count(), 2u);
  const Ref<Dictionary> dictionary = refCast<Dictionary>(
      decoded(R"({"o":{"_class":"Scripted","k":{"a":"stale","t":{"_class":"Throwing"}}},"z":1})"));
  ASSERT_TRUE(dictionary);
  EXPECT_TRUE(dictionary->objectForKey("z")->isEqual(*num(1)));
  EXPECT_TRUE(objectCast<Scripted>(dictionary->objectForKey("o")));
  EXPECT_THROW(static_cast<void>(decoded(R"([1,{"_class":"Throwing"}])")), std::runtime_error);
}

TEST_F(TQJSONDecoderTest, RepairsControlCharactersAndSaysSo) {
  const std::string text("[\"a\tb\x1f\",\x01\"\"]");
  Ref<Error> error;
  EXPECT_FALSE(decoded(text, &error));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->domain(), CocoaErrorDomain);
  EXPECT_EQ(error->userInfo().objectForKey(JSONDocument::kErrorIndexKey)->description(), "8");
  EXPECT_EQ(log_.messages(), (std::vector<std::string>{
                                 "Strange \\x9 character at 3\n", "Strange \\x1f character at 5\n",
                                 "Strange \\x1 character at 8\n", error->description()}));

  EXPECT_EQ(described(decoded("\"a\tb\nc\"", &error)), "a?b?c");
  EXPECT_FALSE(error);
  EXPECT_FALSE(decoded("[\n\"a\tb\"\n]", &error));  // pretty-printed text does not survive
  EXPECT_TRUE(error);
  EXPECT_TRUE(decoded("[\n\"a\"\n]", &error));
  EXPECT_FALSE(error);
  EXPECT_FALSE(decoded(std::string_view("\"a\0b\"", 5), &error));  // NUL stays
  EXPECT_TRUE(error);
  EXPECT_FALSE(decoded("", &error));
  EXPECT_TRUE(error);
}

TEST_F(TQJSONDecoderTest, DecodesOneTextAfterAnother) {
  const Ref<TQJSONDecoder> decoder =
      TQJSONDecoder::initWithData(std::as_bytes(std::span("[1]", 3)));
  EXPECT_EQ(described(decoder->decode()), "(1)");
  EXPECT_EQ(described(decoder->decode()), "(1)");
  Ref<Error> error;
  EXPECT_EQ(described(decoder->decodeDataError(*data("[2]"), &error)), "(2)");
  EXPECT_EQ(described(decoder->decodeDictionary(Dictionary::dictionary(), &error)), "{}");
  EXPECT_FALSE(error);
  EXPECT_FALSE(decoder->decodeDataError(*data("["), &error));
  const Ref<Error> first = error;
  EXPECT_TRUE(first);
  EXPECT_EQ(described(decoder->decodeDataError(*data("[3]"), &error)), "(3)");
  EXPECT_EQ(error, first);
}

TEST_F(TQJSONDecoderTest, ReadsParsedTreesOfEveryShape) {
  const std::pair<Ref<Object>, Ref<Object>> entries[] = {
      {num(1), str("one")},
      {test::illFormed(), Dictionary::dictionaryWithEntries({{"_data", str("AAAA")}})},
      {Null::null(), Dictionary::dictionaryWithEntries({{"_class", str("Unknown")}})},
  };
  const auto tree = Dictionary::dictionaryWithEntries(entries);
  const Ref<Dictionary> read =
      refCast<Dictionary>(TQJSONDecoder::initWithRootObject(tree)->decode());
  ASSERT_TRUE(read);
  ASSERT_EQ(read->count(), 2u);  // keys are kept as they were
  EXPECT_TRUE(read->objectForKey(*num(1))->isEqual(*str("one")));
  EXPECT_TRUE(
      read->objectForKey(*test::illFormed())->isEqual(*data(std::string_view("\0\0\0", 3))));

  const Ref<TQJSONDecoder> decoder = TQJSONDecoder::init();
  EXPECT_EQ(described(decoder->decodeObject(*num(1))), "1");
  EXPECT_EQ(described(decoder->decodeArray(*Array::arrayWithObjects({tree}))).substr(0, 1), "(");
  EXPECT_TRUE(decoder->decodeDictionary(*tree));
}

TEST_F(TQJSONDecoderTest, RefusesTreesThatAreCyclicOrTooDeep) {
  Ref<Object> deep = str("x");
  for (int i = 0; i < 512; ++i) deep = Array::arrayWithObjects({deep});
  EXPECT_TRUE(TQJSONDecoder::initWithRootObject(deep)->decode());
  deep = Array::arrayWithObjects({deep});
  const Ref<MutableArray> cycle = MutableArray::array();
  for (int i = 0; i < 3; ++i) cycle->addObject(cycle);  // 3^512 ways down
  for (const Ref<Object>& root : {deep, Ref<Object>(cycle)}) {
    const Ref<TQJSONDecoder> decoder = TQJSONDecoder::initWithRootObject(root);
    Ref<Error> error;
    static_cast<void>(decoder->decode(&error));
    expectError(error, TQJSONDecoderError, 1,
                "The parsed tree is cyclic, or nested deeper than 512 containers.");
    EXPECT_EQ(described(decoder->decodeDataError(*data("[[7]]"), nullptr)), "((7))");
    EXPECT_EQ(described(decoder->decodeObject(*Array::arrayWithObjects({str("y")}))), "(y)");
  }
  cycle->removeAllObjects();
}

TEST_F(TQJSONDecoderTest, ReadsFilesAndSaysWhyNot) {
  const test::TemporaryDirectory directory;
  const auto read = [](std::string_view path, Ref<Error>* error) {
    return TQJSONDecoder::decodeFileAtURL(*URL::fileURLWithPath(path), error);
  };
  Ref<Error> error = Error::errorWithDomain("old", 1, "old");
  EXPECT_EQ(described(read(directory.write("good", "[1,2]"), &error)), "(1, 2)");
  EXPECT_FALSE(error);
  EXPECT_FALSE(read(directory.write("empty", ""), &error));
  EXPECT_EQ(error->code(), 3840);
  EXPECT_FALSE(read(directory.path("none"), nullptr));
  EXPECT_FALSE(read(directory.path("none"), &error));
  EXPECT_EQ(error->code(), 260);
  EXPECT_FALSE(read(directory.path(""), &error));
  EXPECT_EQ(error->code(), 256);
  std::filesystem::permissions(directory.write("locked", "1"), std::filesystem::perms::none);
  const bool isRoot = ::access(directory.path("locked").c_str(), R_OK) == 0;
  EXPECT_EQ(bool(read(directory.path("locked"), &error)), isRoot);
  EXPECT_TRUE(isRoot || error->code() == 257);
}

TEST_F(TQJSONDecoderTest, HoldsItsUserInfoWeakly) {
  const Ref<TQJSONDecoder> decoder = TQJSONDecoder::init();
  Ref<Object> info = str("context");
  decoder->setUserInfo(info);
  EXPECT_EQ(decoder->userInfo(), info);
  info = nullptr;
  EXPECT_FALSE(decoder->userInfo());
}

}  // namespace
}  // namespace tq
