#include <TQFoundation/serialisation/TQJSONCoding.h>

#include <pthread.h>

#include <cstdio>

#include "serialisation/JSONModel.h"

namespace {

/// Writes every step in its own form.
struct Stepwise : Subclass<Stepwise> {
  static constexpr std::string_view className = "Stepwise";
  void startEncodingObject(TQJSONEncoder& encoder) const {
    encoder.write("<");
    tq::encodeClassInfoForJSON(*this, encoder);
  }
  void encodeClassInfoForJSON(TQJSONEncoder& encoder) const { encoder.write("me"); }
  void encodeAsJSON(TQJSONEncoder& encoder) const { encoder.encodeBool(true, "k"); }
  void finishEncodingObject(TQJSONEncoder& encoder) const { encoder.write(">"); }
  void encodeAsKey(TQJSONEncoder& encoder) const { encoder.write("\"key\""); }
};

/// Inherits all steps except one.
struct Inheriting final : Subclass<Inheriting, Stepwise> {
  static constexpr std::string_view className = "Inheriting";
  void encodeClassInfoForJSON(TQJSONEncoder& encoder) const { encoder.write("heir"); }
};

/// A host's own kind of array, which writes itself.
struct RawArray final : Subclass<RawArray, Array> {
  static constexpr std::string_view className = "RawArray";
  RawArray() : Subclass(Storage::objects) {}
  void encodeAsRAWArchive(TQJSONEncoder& encoder) const { encoder.write("raw"); }
};

struct Replaced final : Subclass<Replaced> {
  static constexpr std::string_view className = "Replaced";
  explicit Replaced(Ref<Object> other) : other_(std::move(other)) {}
  Ref<Object> replacementObjectForJSONEncoder(TQJSONEncoder&) const { return other_; }
  void encodeAsJSON(TQJSONEncoder& encoder) const { encoder.encodeBool(true, "itself"); }
  Ref<Object> other_;
};

/// A class with an alias, and a class that archives store as the first one.
struct Base : Subclass<Base> {
  static constexpr std::string_view className = "Base";
  void encodeAsJSON(TQJSONEncoder&) const {}
};
struct Derived final : Subclass<Derived, Base> {
  static constexpr std::string_view className = "Derived";
};
struct Disguised final : Subclass<Disguised, Base> {
  static constexpr std::string_view className = "Disguised";
  using CodingClass = Base;
};

TEST(TQJSONCoding, EachObjectIsWrittenAndReadInItsForm) {
  constexpr double kInfinity = std::numeric_limits<double>::infinity();
  Class::registerClass<Choosy>();
  TQJSONEncoder::setAliasName("first", classOf<Disguised>);  // its coding class is Base
  TQJSONEncoder::setAliasName("alias", classOf<Base>);       // and so names this one, too
  const std::pair<Ref<Object>, Ref<Object>> entries[] = {{makeRef<Stepwise>(), num(1)}};
  const Ref<Object> itself = makeRef<Replaced>(nullptr);
  const NumberValue mixed[] = {true, 2.5, 3, std::uint64_t{1} << 63};
  const struct {
    Ref<Object> written;  // if not null
    const char* text;
    const char* read = nullptr;  // if not null: the description of what is read
  } cases[] = {
      {num(std::int8_t{-128}), "-128", "-128"},
      {num(std::numeric_limits<std::int64_t>::min()), "-9223372036854775808",
       "-9223372036854775808"},
      {num(std::numeric_limits<std::uint64_t>::max()), "18446744073709551615",
       "18446744073709551615"},
      {num(0.1f), "0.1", "0.1"},
      {num(16777216.f), "1.677722e+07", "16777220"},
      // A float reads as a double. Some powers of ten read as their neighbours.
      {num(0.56f), "0.56", "0.5600000000000001"},
      {num(100000000000000008388608.0), "1e+23", "9.999999999999999e+22"},
      {num(9.999999999999999e+22), "9.999999999999999e+22", "9.999999999999999e+22"},
      {Array::arrayWithObjects({Null::null(), Array::array(), str("x")}), R"([null,[],"x"])",
       "(<null>, (), x)"},
      {Array::arrayWithNumbers(mixed), "[1,2.5,3,9223372036854775808]",
       "(1, 2.5, 3, 9223372036854775808)"},
      {Dictionary::dictionary(), "{}", "{}"},
      {Value::valueWithPoint({0.1, -2}),
       R"({"_class":"NSValue","type":"point","value":"{0.1, -2}"})", "{0.10000000000000001, -2}"},
      {Value::valueWithSize({kInfinity, std::nan("")}),
       R"({"_class":"NSValue","type":"size","value":"{3.402823466385289e+38, 0}"})"},
      {Value::valueWithRect({{0.1, -2}, {3, kInfinity}}),
       R"({"_class":"NSValue","type":"rect","value":"{0.1, -2, 3, 3.402823466385289e+38}"})"},
      {keyed(str("a/\n")), R"({"a\/\n":null,"z":1})", "{a/\n = <null>; z = 1;}"},
      {keyed(num(std::numeric_limits<std::uint64_t>::max())),
       R"({"18446744073709551615":null,"z":1})", "{18446744073709551615 = <null>; z = 1;}"},
      {keyed(num(std::nan(""))), R"({"nan":null,"z":1})"},
      // Steps of a class
      {makeRef<Stepwise>(), R"(<me,"k":true>)"},
      {makeRef<Inheriting>(), R"(<heir,"k":true>)"},
      {makeRef<RawArray>(), "raw"},
      {Dictionary::dictionaryWithEntries(entries), R"({"key":1})", "{key = 1;}"},
      {itself, R"({"_class":"Replaced","itself":true})", "(null)"},
      {Array::arrayWithObjects({makeRef<Replaced>(str("x")), num(1)}), R"(["x",1])", "(x, 1)"},
      // One step only: the replacement of a replacement is not used.
      {makeRef<Replaced>(itself), R"({"_class":"Replaced","itself":true})"},
      {makeRef<Replaced>(makeRef<Replaced>(num(1))), R"({"_class":"Replaced","itself":true})"},
      {Array::arrayWithObjects({makeRef<Base>(), makeRef<Derived>(), makeRef<Disguised>()}),
       R"([{"_class":"alias"},{"_class":"Derived"},{"_class":"alias"}])", "()"},
      // Read only
      {nullptr, "\xEF\xBB\xBF-2.5", "-2.5"},
      {nullptr, R"("a\/b\u00e9")", "a/bé"},
      {nullptr, R"({"b":1,"a":{"c":[]}})", "{b = 1; a = {c = ();};}"},
      {nullptr, R"({"a":1,"b":{"_class":5},"c":[],"d":{"_class":5},"e":2})",
       "{a = 1; c = (); e = 2;}"},
      {nullptr, R"({"_class":"NSDictionary","a":1})", "{_class = NSDictionary; a = 1;}"},
      {nullptr, R"([{"_class":"NSValue","type":"rect"}])", "({{0, 0}, {0, 0}})"},
      {nullptr, R"({"_class":"NSValue","type":"size","value":"{1, 2}"})", "{1, 2}"},
      {nullptr, R"([{"_class":"Choosy"},{"_class":5},{"_class":null},{"_class":[]}])", "()"},
      {nullptr, R"([{"_data":[]},{"_data":5},{"_data":"A"},{"_data":"AA\n="},{"_data":""}])",
       "(<0 bytes: >)"},
      {nullptr, R"([{"_archive":"x"},{"_archive":{}},{"_archive":""},{"_archive":"AAAA"}])", "()"},
      {nullptr, R"({"_archive":"x","_class":"NSValue","_data":"AAAA"})", "(null)"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    if (c.written) {
      EXPECT_EQ(archiveOf(c.written), c.text);
    }
    if (c.read == nullptr) continue;
    Ref<Error> error = Error::errorWithDomain("old", 1, "old");
    EXPECT_EQ(described(decoded(c.text, &error)), c.read);
    EXPECT_FALSE(error);  // always written
    const Ref<Object> tree = TQJSONDecoder::initWithData(*data(c.text))->root();
    EXPECT_EQ(described(TQJSONDecoder::initWithRootObject(tree)->decode()), c.read);
  }
  const Ref<Object> range = Value::valueWithRange({1, 2});
  EXPECT_TRUE(decoded(archiveOf(range))->isEqual(*range));  // in a keyed archive
  // The keys of an object are compared with those of the last one of as many, modulo 16.
  std::string wide = R"({"k":0)";
  for (int i = 1; i < 17; ++i) wide += ",\"k" + std::to_string(i) + "\":" + std::to_string(i);
  const std::string shapes = R"([{"k":1},)" + wide + R"(},{"k":2},{"m":3}])";
  EXPECT_EQ(archiveOf(decoded(shapes)), shapes);
  const Ref<Object> nest = nested(TQJSONEncoder::kDepthLimit, makeRef<Replaced>(str("x")));
  EXPECT_TRUE(decoded(archiveOf(nest)));  // the replacement is no container
}

TEST(TQJSONCoding, StepsCanBeCalledForAnyObject) {
  const auto sink = makeRef<TextSink>();
  for (const Ref<Object>& object : {Ref<Object>(MutableArray::array()), Ref<Object>(str("x"))}) {
    EXPECT_EQ(replacementObjectForJSONEncoder(*object, *sink), object);
    startEncodingObject(*object, *sink);
    finishEncodingObject(*object, *sink);
    encodeAsRAWArchive(*object, *sink);
  }
  encodeAsKey(*num(2.5), *sink);
  EXPECT_EQ(sink->text, R"([][]{"_class":"NSString"}"x""2.5")");
  EXPECT_EQ(replacementObjectForJSONEncoder(*makeRef<Replaced>(nullptr), *sink), nullptr);
}

#ifdef __GLIBCXX__
/// A sink whose end a test writes.
struct EndingSink final : Subclass<EndingSink, TQJSONFileEncoder> {
  static constexpr std::string_view className = "EndingSink";
  EndingSink() : Subclass(FileHandle::fileHandleWithFileDescriptor(-1)) {}
  void finishWriting() override { ::pthread_exit(nullptr); }
};

/// Is kept in keyed archives that cannot be read.
struct Unreadable final : Subclass<Unreadable> {
  static constexpr std::string_view className = "Unreadable";
  void encodeWithCoder(KeyedArchiver&) const {}
  bool initWithCoder(KeyedUnarchiver&) { ::pthread_exit(nullptr); }
};

TEST(TQJSONCoding, AThreadMayEndInTheHostsCode) {
  Class::registerClass<Scripted>();
  Class::registerClass<Unreadable>();
  Scripted::onDecode() = [](TQJSONDecoder&) { ::pthread_exit(nullptr); };
  const std::function<void()> ways[] = {
      [] { archiveOf(makeRef<Scripted>([](TQJSONEncoder&) { ::pthread_exit(nullptr); })); },
      [] { makeRef<EndingSink>()->encodeRootObject(num(1)); },
      [] { decoded(R"({"_class":"Scripted"})"); },
      [] { decoded(archived(*makeRef<Unreadable>())); },
  };
  for (const auto& way : ways) {
    bool hasReturned = false;
    std::thread([&] { way(), hasReturned = true; }).join();
    EXPECT_FALSE(hasReturned);
  }
}
#endif

TEST(TQJSONCoding, EscapesWhatJSONRequiresAndTheSlash) {
  const std::map<int, const char*> named = {{'"', "\\\""}, {'\\', "\\\\"}, {'/', "\\/"},
                                            {'\b', "\\b"}, {'\f', "\\f"},  {'\n', "\\n"},
                                            {'\r', "\\r"}, {'\t', "\\t"}};
  for (int c = 0; c < 0x80; ++c) {
    char escape[8];
    std::snprintf(escape, sizeof escape, c < 0x20 ? "\\u%04x" : "%c", c);
    for (std::size_t at = 0; at < 20; ++at) {  // in every place of a word, and in the rest
      const std::string before = std::string(at, 'x'), after = "é/" + std::string(at / 2, '\x7F');
      const std::string expected = before + (named.contains(c) ? named.at(c) : escape) + "é\\/" +
                                   std::string(at / 2, '\x7F');
      const Ref<String> string = str(before + static_cast<char>(c) + after);
      ASSERT_EQ(safeJSONValue(*string)->view(), expected);
      ASSERT_EQ(archiveOf(string), '"' + expected + '"');
    }
  }
  const Ref<String> plain = str("bcdefgh é \u00AD\u2028\U0001F600\x7F");
  EXPECT_EQ(safeJSONValue(*plain), plain);  // itself, not a copy
  EXPECT_TRUE(safeJSONValue(*test::illFormed(u"/\xD800"))->isEqual(*test::illFormed(u"\\/\xD800")));
}

TEST(TQJSONCoding, KnowsTheAwkwardCharacters) {
  TQJSONEncoder::initialize();
  const auto isAwkward = TQJSONAwkwardCharacters::contains;
  EXPECT_TRUE(std::ranges::all_of(U"\"\\/\n\x1f\x7f\u0085\u00AD\u200B\uFEFF\U000E0001", isAwkward));
  EXPECT_TRUE(std::ranges::none_of(std::u32string_view(U" aé\u2028\U0001F600\x110000"), isAwkward));
}

}  // namespace
