#include <TQFoundation/serialisation/TQJSONDecoder.h>

#include "serialisation/JSONModel.h"
#include "support/CapturedLog.h"
#include "support/TemporaryDirectory.h"

namespace {

struct Throwing final : Subclass<Throwing> {
  static constexpr std::string_view className = "Throwing";
  explicit Throwing(TQJSONDecoder&) { throw std::runtime_error("thrown"); }
};

/// These take any object, and so a decoder, but not as what to read from.
struct Wrapper final : Subclass<Wrapper> {
  static constexpr std::string_view className = "Wrapper";
  explicit Wrapper(const Object&) {}
};
struct LentWrapper final : Subclass<LentWrapper> {
  static constexpr std::string_view className = "LentWrapper";
  explicit LentWrapper(LentObject) {}
};

/// These have more than one way to take a decoder.
struct EitherWay final : Subclass<EitherWay> {
  static constexpr std::string_view className = "EitherWay";
  explicit EitherWay(TQJSONDecoder&) {}
  explicit EitherWay(const TQJSONDecoder&) {}
};
struct AnyDecoder final : Subclass<AnyDecoder> {
  static constexpr std::string_view className = "AnyDecoder";
  explicit AnyDecoder(std::derived_from<TQJSONDecoder> auto&) {}
};

class TQJSONDecoderTest : public testing::Test {
 protected:
  TQJSONDecoderTest() {
    Class::registerClass<Scripted>();
    Class::registerClass<Opaque>();
    Class::registerClass<Throwing>();
    Class::registerClass<Choosy>();
    Scripted::onDecode() = [](TQJSONDecoder&) {};
  }

  /// Runs `read` as the constructor of an object with these members, of text and of a parsed tree.
  static void reading(std::string members, const Scripted::Decode& read) {
    int calls = 0;
    Scripted::onDecode() = [&](TQJSONDecoder& decoder) { ++calls, read(decoder); };
    const auto decoder =
        TQJSONDecoder::initWithData(*test::data("{\"_class\":\"Scripted\"," + members + "}"));
    EXPECT_TRUE(decoder->decode());
    EXPECT_TRUE(decoder->decodeDictionary(refCast<Dictionary>(decoder->root()), nullptr));
    EXPECT_EQ(calls, 2);
  }

  static void expectRefused(const std::string& name, const Ref<Error>& error) {
    expectError(error, TQJSONDecoderError, 0, "Invalid object class " + name + " found in archive");
  }

  CapturedLog log_;
};

TEST_F(TQJSONDecoderTest, ClassesAreSetBannedAndSetBackByName) {
  const std::string archive = archiveOf(illFormed());
  const std::string text = R"([{"_class":"Scripted"},{"_class":"Alias"},)" +
                           archive.substr(0, archive.size() - 1) + R"(,"_class":"Unknown"}])";
  const Rows<const Class*, const char*, std::size_t> steps{
      {&classOf<Scripted>, "Scripted", 2},  // as it is
      {&classOf<Scripted>, "Alias", 3},
      {nullptr, "NSString", 2},  // the archived class
      {&classOf<String>, "NSString", 3},
      {nullptr, "Scripted", 2},
      {&classOf<Choosy>, "Scripted", 2},    // constructs null
      {&classOf<Scripted>, "Scripted", 3},  // removes the entry
      {nullptr, "Alias", 2},
  };
  for (const auto& [set, name, decodedCount] : steps) {
    TQJSONDecoder::setClass(set, name);
    EXPECT_EQ(refCast<Array>(decoded(text))->count(), decodedCount) << name;
  }
  EXPECT_TRUE(refCast<Array>(decoded(text))->lastObject()->isEqual(*illFormed()));
  EXPECT_EQ(TQJSONDecoder::init()->classFromClassName(""), nullptr);
}

TEST_F(TQJSONDecoderTest, OnlyAConstructorThatTakesADecoderReads) {
  Class::registerClass<Wrapper>();
  Class::registerClass<LentWrapper>();
  for (const std::string name : {"Wrapper", "LentWrapper"}) {
    Ref<Error> error;
    EXPECT_TRUE(objectCast<Dictionary>(decoded("{\"_class\":\"" + name + "\"}", &error).get()));
    expectRefused(name, error);
  }
  Class::registerClass<EitherWay>();
  Class::registerClass<AnyDecoder>();
  EXPECT_TRUE(objectCast<EitherWay>(decoded(R"({"_class":"EitherWay"})").get()));
  EXPECT_TRUE(objectCast<AnyDecoder>(decoded(R"({"_class":"AnyDecoder"})").get()));
}

TEST_F(TQJSONDecoderTest, ConstructorsMayChangeTheTree) {
  const Ref<MutableArray> array = MutableArray::array();
  const Ref<MutableDictionary> dictionary = MutableDictionary::dictionary();
  Scripted::onDecode() = [&](TQJSONDecoder& decoder) {
    const auto current = refCast<MutableDictionary>(decoder.currentObjectDict());
    for (int i = 0; i < 2'000; ++i) current->setObject(num(i), std::to_string(i));
    array->removeAllObjects();  // they own the objects
    dictionary->removeAllObjects();
    EXPECT_FALSE(decoder.containsValueForKey("1999"));
    EXPECT_EQ(described(decoder.decodeObjectForKey("key")), "value");
  };
  for (const Ref<Object>& tree : {Ref<Object>(array), Ref<Object>(dictionary)}) {
    for (const char* key : {"a", "b"}) {
      const Ref<MutableDictionary> object = MutableDictionary::dictionary();
      object->setObject(str("Scripted"), "_class");
      object->setObject(str("value"), "key");
      array->addObject(object);
      dictionary->setObject(object, key);
    }
    if (tree == array) dictionary->removeAllObjects();
    if (tree == dictionary) array->removeAllObjects();
    const auto decoder = TQJSONDecoder::initWithRootObject(tree);
    decoder->setListsUnreadContent(true);
    const std::string text = described(decoder->decode());
    EXPECT_EQ(std::ranges::count(text, '<'), 2) << text;
    EXPECT_TRUE(decoder->unreadContent().isEmpty());
  }
}

TEST_F(TQJSONDecoderTest, ADelegateRefusesClassesWhileItLives) {
  const Ref<TQJSONDecoder> decoder = TQJSONDecoder::initWithData(*data(
      R"([{"_class":"Scripted"},{"_class":"Unknown"},{"_class":"NSValue"},{"_class":"Scripted"}])"));
  Ref<Judge> judge = makeRef<Judge>(&classOf<Scripted>);
  decoder->setDelegate(Weak<TQJSONDecoderDelegate>(judge));
  Ref<Error> error;
  EXPECT_EQ(refCast<Array>(decoder->decode(&error))->count(), 1u);
  expectRefused("Scripted", error);
  EXPECT_EQ(judge->asked, "Scripted Value Scripted ");
  decoder->setError(Error::errorWithDomain("later", 2, "second"));
  EXPECT_EQ(decoder->error(), error);
  EXPECT_EQ(log_.messages().size(), 3u);  // all are logged
  EXPECT_EQ(log_.messages()[1], error->description());
  judge = nullptr;
  EXPECT_EQ(refCast<Array>(decoder->decode())->count(), 3u);
}

/// Exists only in keyed archives. Counts its instances by level: the root is 0.
struct Hosted final : Subclass<Hosted> {
  static constexpr std::string_view className = "Hosted";
  Hosted() { ++made; }
  void encodeWithCoder(KeyedArchiver& archiver) const { archiver.encodeObject(child, "child"); }
  bool initWithCoder(KeyedUnarchiver& unarchiver) {
    child = unarchiver.decodeObjectForKey("child");
    return true;
  }
  Ref<Object> child;
  static inline int made = 0;
};

TEST_F(TQJSONDecoderTest, RefusesClassesOfKeyedArchivesBeforeConstruction) {
  Class::registerClass<Hosted>();
  const Ref<Hosted> root = makeRef<Hosted>();
  root->child = Set::setWithObjects({makeRef<Hosted>(), URL::fileURLWithPath("/a")});
  const Ref<Judge> judge = makeRef<Judge>(nullptr);
  for (const Ref<Object>& object : {Ref<Object>(root), root->child}) {
    const auto read = [&](bool allowed, Ref<Error>* error) {
      const auto decoder = TQJSONDecoder::initWithData(*TQJSONEncoder::encodeObjectAsData(object));
      decoder->setDelegate(Weak<TQJSONDecoderDelegate>(judge));
      judge->asked.clear();
      judge->refused = allowed ? nullptr : &classOf<Hosted>;
      Hosted::made = 0;
      return bool(decoder->decode(error));
    };
    Ref<Error> error;
    EXPECT_FALSE(read(false, &error));
    EXPECT_EQ(Hosted::made, 0);
    EXPECT_EQ(judge->asked, "Hosted ");
    expectRefused("Hosted", error);
    EXPECT_TRUE(read(true, &error));
    EXPECT_EQ(judge->asked, "Hosted ");
    for (const char* banned : {"Hosted", "NSSet"}) {
      TQJSONDecoder::setClass(nullptr, banned);
      EXPECT_FALSE(read(true, &error));
      EXPECT_FALSE(error);
      EXPECT_TRUE(banned != Hosted::className || Hosted::made == 0);
      TQJSONDecoder::setClass(Class::classNamed(banned), banned);
    }
  }
}

TEST_F(TQJSONDecoderTest, RecordsWhatConstructorsThrowAndMembersOfAnotherKind) {
  Ref<Error> error;
  EXPECT_FALSE(decoded(R"([1,{"_class":"Throwing"}])", &error));
  expectError(error, TQJSONDecoderError, TQJSONDecoder::kConstructorThrew, "thrown");
  Scripted::onDecode() = [](TQJSONDecoder&) { throw 7; };
  EXPECT_FALSE(decoded(R"({"_class":"Scripted"})", &error));
  expectError(error, TQJSONDecoderError, TQJSONDecoder::kConstructorThrew, "unknown exception");
  reading(R"("s":"text","n":1,"u":{"_class":"Unknown"})", [](TQJSONDecoder& decoder) {
    EXPECT_EQ(described(decoder.decodeObjectForKey<String>("s")), "text");
    EXPECT_FALSE(decoder.decodeObjectForKey<String>("absent"));
    EXPECT_FALSE(decoder.decodeObjectForKey<String>("u"));
    EXPECT_FALSE(decoder.error() && decoder.error()->code() != TQJSONDecoder::kWrongKind);
    EXPECT_FALSE(decoder.decodeObjectForKey<Array>("n"));
    expectError(decoder.error(), TQJSONDecoderError, TQJSONDecoder::kWrongKind,
                "The member \"n\" is an object of class Number, not Array.");
  });
}

TEST_F(TQJSONDecoderTest, ReadsMembersLeniently) {
  constexpr auto kLargest = std::numeric_limits<std::int64_t>::max();
  const Rows<const char*, double, bool, std::int64_t, Rect> cases{
      {"true", 1, true, 1, {}},
      {"-2.9", -2.9, true, -2, {}},
      {"0.5", 0.5, true, 0, {}},
      {"18446744073709551615", 18446744073709551615.0, true, kLargest, {}},
      {R"(" -12.5e1x")", -125, true, -12, {-125, 0, 0, 0}},
      {R"("0x10")", 0, false, 0, {0, 10, 0, 0}},
      {R"("{{1, 2}, {3, 4}}")", 0, false, 0, {1, 2, 3, 4}},
      {R"("-0.6a5.4das-105.7bfh24.3")", -0.6, false, 0, {-0.6, 5.4, -105.7, 24.3}},
      {"null", 0, false, 0, {}},
  };
  for (const auto& [json, asDouble, asBool, asInteger, asRect] : cases) {
    SCOPED_TRACE(json);
    reading(std::string("\"k\":") + json, [&](TQJSONDecoder& decoder) {
      const Point origin = asRect.origin;
      EXPECT_TRUE(decoder.containsValueForKey("k"));
      EXPECT_EQ(decoder.decodeDoubleForKey("k", 9), asDouble);
      EXPECT_EQ(decoder.decodeBoolForKey("k", !asBool), asBool);
      EXPECT_EQ(decoder.decodeIntegerForKey("k", 9), asInteger);
      EXPECT_EQ(textFromRect(decoder.decodeRectForKey("k", {9, 9, 9, 9})), textFromRect(asRect));
      EXPECT_EQ(decoder.decodePointForKey("k", {9, 9}), origin);
      EXPECT_EQ(decoder.decodeSizeForKey("k", {9, 9}), (Size{origin.x, origin.y}));
      // An absent member is the default.
      EXPECT_FALSE(decoder.containsValueForKey("K") || decoder.decodeObjectForKey("K"));
      EXPECT_EQ(decoder.decodeDoubleForKey("K", 9), 9);
      EXPECT_TRUE(decoder.decodeBoolForKey("K", true));
      EXPECT_EQ(decoder.decodeIntegerForKey("K", -9), -9);
      EXPECT_EQ(decoder.decodePointForKey("K", {9, 8}), (Point{9, 8}));
      EXPECT_EQ(decoder.decodeSizeForKey("K", {9, 8}), (Size{9, 8}));
      EXPECT_EQ(textFromRect(decoder.decodeRectForKey("K", {9, 8, 7, 6})), "{{9, 8}, {7, 6}}");
    });
  }
}

TEST_F(TQJSONDecoderTest, EachObjectReadsItsOwnMembers) {
  reading(
      R"("a":1,"c":{"_class":"Choosy","good":1},"t":{"s":"stale","t":["stale",{"_class":"Throwing"}]},)"
      R"("p":{"_class":"Opaque","x":{"_data":"AAAA"}},"d":{"a":2},"a":3)",
      [](TQJSONDecoder& decoder) {
        const std::int64_t a = decoder.decodeIntegerForKey("a", 0);
        EXPECT_TRUE(decoder.decodeObjectForKey("c"));
        EXPECT_THROW((void)decoder.decodeObjectForKey("t"), std::runtime_error);
        EXPECT_EQ(described(decoder.decodeObjectForKey("d")), "{a = 2;}");
        EXPECT_FALSE(decoder.decodeObjectForKey("d") == decoder.decodeObjectForKey("d"));
        EXPECT_EQ(decoder.decodeIntegerForKey("a", 0), a);
        EXPECT_EQ(decoder.currentObjectDict()->objectForKey("_class")->description(), "Scripted");
        // A class that cannot be read leaves its dictionary, and an error.
        EXPECT_EQ(described(decoder.decodeObjectForKey("p")),
                  "{_class = Opaque; x = {_data = AAAA;};}");
        expectRefused("Opaque", decoder.error());
      });
}

TEST_F(TQJSONDecoderTest, AnObjectMayDecodeAnotherRootOnItsWay) {
  Scripted::onDecode() = [](TQJSONDecoder& decoder) {
    EXPECT_EQ(described(decoder.decodeData(*data(R"([{"a":7}])"), nullptr)), "({a = 7;})");
    const auto tree = Dictionary::dictionaryWithEntries({{"a", num(8)}});
    EXPECT_EQ(described(decoder.decodeDictionary(tree, nullptr)), "{a = 8;}");
    EXPECT_EQ(decoder.root(), tree);
    EXPECT_EQ(decoder.decodeIntegerForKey("a", 0), 1);
    EXPECT_EQ(described(decoder.decodeObjectForKey("d")), "({b = long enough to be kept apart;})");
  };
  const std::string object =
      R"({"_class":"Scripted","a":1,"d":[{"b":"long enough to be kept apart"}]})";
  EXPECT_EQ(refCast<Array>(decoded("[" + object + "," + object + "]"))->count(), 2u);
}

TEST_F(TQJSONDecoderTest, RepairsControlCharactersAndSaysSo) {
  const std::string text("[\"a\tb\x1f\",\x01\"\"]");
  Ref<Error> error;
  EXPECT_FALSE(decoded(text, &error));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->userInfo().objectForKey(TQJSONDecoder::kErrorIndexKey)->description(), "8");
  EXPECT_THAT(log_.messages(),
              ElementsAre("Strange \\x9 character at 3\n", "Strange \\x1f character at 5\n",
                          "Strange \\x1 character at 8\n", error->description()));

  const std::string tabs(1'000'000, '\t'), marks(1'000'000, '?');
  EXPECT_EQ(described(decoded('"' + tabs + '"')), marks);
  EXPECT_EQ(log_.messages().size(), 4u + 101u);
  EXPECT_EQ(log_.messages().back(), "999900 more strange characters\n");

  const std::pair<std::string_view, const char*> cases[] = {
      {"\"a\tb\nc\"", "a?b?c"},
      {"[\n\"a\tb\"\n]", "(null)"},  // line feeds between tokens are replaced, too
      {"[\n\"a\"\n]", "(a)"},
      {"\n\"a\tb\"", "(null)"},
      {std::string_view("\"a\0b\"", 5), "(null)"},  // NUL stays
      {"", "(null)"},
  };
  for (const auto& [given, description] : cases) {
    EXPECT_EQ(described(decoded(given)), description) << given;
  }
}

TEST_F(TQJSONDecoderTest, ReadsParsedTreesOfEveryShape) {
  const std::pair<Ref<Object>, Ref<Object>> entries[] = {
      {num(1), str("one")},
      {test::illFormed(), Dictionary::dictionaryWithEntries({{"_data", str("AAAA")}})},
      {Null::null(), Dictionary::dictionaryWithEntries({{"_class", str("Unknown")}})},
  };
  const Ref<Object> tree = Dictionary::dictionaryWithEntries(entries);
  const std::string keysAsTheyWere = described(illFormed());
  EXPECT_EQ(described(TQJSONDecoder::initWithRootObject(tree)->decode()),
            "{1 = one; " + keysAsTheyWere + " = <3 bytes: 000000>;}");
  EXPECT_EQ(described(TQJSONDecoder::init()->decodeMembers()), "{}");
  EXPECT_FALSE(TQJSONDecoder::init()->decode());
  EXPECT_FALSE(TQJSONDecoder::init()->containsValueForKey("x"));
}

TEST_F(TQJSONDecoderTest, RefusesTreesThatAreCyclicOrTooDeep) {
  EXPECT_TRUE(TQJSONDecoder::initWithRootObject(nested(512, str("x")))->decode());
  const Ref<MutableArray> cycle = MutableArray::array();
  for (int i = 0; i < 3; ++i) cycle->addObject(cycle);  // 3^512 ways down
  for (const Ref<Object>& root :
       {nested(513, str("x")), nested(512, Dictionary::dictionary()), Ref<Object>(cycle)}) {
    const Ref<TQJSONDecoder> decoder = TQJSONDecoder::initWithRootObject(root);
    Ref<Error> error;
    static_cast<void>(decoder->decode(&error));
    expectError(error, TQJSONDecoderError, 1,
                "The parsed tree is cyclic, or nested deeper than 512 containers.");
    EXPECT_EQ(described(decoder->decodeData(*data("[[7]]"), nullptr)), "((7))");
    EXPECT_EQ(described(decoder->decodeObject(*Array::arrayWithObjects({str("y")}))), "(y)");
  }
  cycle->removeAllObjects();
}

TEST_F(TQJSONDecoderTest, ReadsFilesAndOneTextAfterAnother) {
  const test::TemporaryDirectory directory;
  const auto read = [](std::string_view path, Ref<Error>* error) {
    return TQJSONDecoder::decodeFileAtURL(*URL::fileURLWithPath(path), error);
  };
  Ref<Error> error = Error::errorWithDomain("old", 1, "old");
  EXPECT_EQ(described(read(directory.write("good", "[1,2]"), &error)), "(1, 2)");
  EXPECT_FALSE(error);
  EXPECT_FALSE(read(directory.path("none"), &error));
  EXPECT_EQ(error->code(), 260);

  const auto decoder = TQJSONDecoder::initWithData(std::as_bytes(std::span("[1]", 3)));
  for (int i = 0; i < 2; ++i) EXPECT_EQ(described(decoder->decode()), "(1)");
  EXPECT_FALSE(decoder->decodeData(*data("["), &error));
  const Ref<Error> first = error;
  EXPECT_EQ(described(decoder->decodeData(*data("[3]"), &error)), "(3)");
  EXPECT_EQ(error, first);
}

}  // namespace
