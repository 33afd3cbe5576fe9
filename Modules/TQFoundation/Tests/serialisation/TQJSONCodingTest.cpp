#include <TQFoundation/serialisation/TQJSONCoding.h>

#include <random>

#include "serialisation/JSONModel.h"

namespace tq {
namespace {

using test::archiveOf;
using test::num;
using test::str;

/// Writes every step in a form of its own.
class Stepwise : public Subclass<Stepwise> {
 public:
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

/// Inherits its steps but for one.
class Inheriting final : public Subclass<Inheriting, Stepwise> {
 public:
  static constexpr std::string_view className = "Inheriting";
  static constexpr std::string_view codingName = "Heir";
  void encodeClassInfoForJSON(TQJSONEncoder& encoder) const { encoder.write("heir"); }
};

class Raw final : public Subclass<Raw> {
 public:
  static constexpr std::string_view className = "Raw";
  void encodeAsRAWArchive(TQJSONEncoder& encoder) const { encoder.write("raw"); }
};

/// A host's own kind of array, which writes itself.
class RawArray final : public Subclass<RawArray, Array> {
 public:
  static constexpr std::string_view className = "RawArray";
  RawArray() : Subclass(Storage::objects) {}
  void encodeAsRAWArchive(TQJSONEncoder& encoder) const { encoder.write("rawArray"); }
};

class Replaced final : public Subclass<Replaced> {
 public:
  static constexpr std::string_view className = "Replaced";
  explicit Replaced(Ref<Object> other) : other_(std::move(other)) {}
  Ref<Object> replacementObjectForJSONEncoder(TQJSONEncoder&) const { return other_; }
  void encodeAsJSON(TQJSONEncoder& encoder) const { encoder.encodeBool(true, "itself"); }

 private:
  Ref<Object> other_;
};

class Base : public Subclass<Base> {
 public:
  static constexpr std::string_view className = "Base";
  void encodeAsJSON(TQJSONEncoder&) const {}
};
class Derived final : public Subclass<Derived, Base> {
 public:
  static constexpr std::string_view className = "Derived";
};
class Disguised final : public Subclass<Disguised, Base> {
 public:
  static constexpr std::string_view className = "Disguised";
  using CodingClass = Base;
};

TEST(TQJSONCoding, AClassOverridesAnyStep) {
  const std::pair<Ref<Object>, Ref<Object>> entries[] = {{makeRef<Stepwise>(), makeRef<Raw>()}};
  const struct {
    Ref<Object> object;
    const char* text;
  } cases[] = {
      {makeRef<Stepwise>(), R"(<me,"k":true>)"},
      {makeRef<Inheriting>(), R"(<heir,"k":true>)"},
      {makeRef<Raw>(), "raw"},
      {makeRef<RawArray>(), "rawArray"},
      {Dictionary::dictionaryWithEntries(entries), R"({"key":raw})"},
  };
  for (const auto& c : cases) EXPECT_EQ(archiveOf(c.object), c.text);
}

TEST(TQJSONCoding, AnotherObjectMayBeWrittenInAnObjectsPlace) {
  const Ref<Object> itself = makeRef<Replaced>(nullptr);
  const char* own = R"({"_class":"Replaced","itself":true})";
  EXPECT_EQ(archiveOf(itself), own);
  EXPECT_EQ(archiveOf(makeRef<Replaced>(str("x"))), R"("x")");
  EXPECT_EQ(archiveOf(makeRef<Replaced>(Array::array())), "[]");
  // One step only: the replacement is not asked for another.
  EXPECT_EQ(archiveOf(makeRef<Replaced>(makeRef<Replaced>(str("x")))), own);
  const auto list = Array::arrayWithObjects({makeRef<Replaced>(num(1)), itself});
  EXPECT_EQ(archiveOf(list), std::string("[1,") + own + "]");
  EXPECT_EQ(test::membersOf(
                [](TQJSONEncoder& e) { e.encodeObject(makeRef<Replaced>(Null::null()), "k"); }),
            R"(,"k":null)");

  const auto sink = makeRef<test::TextSink>();
  EXPECT_EQ(replacementObjectForJSONEncoder(*itself, *sink), nullptr);
  const Ref<Object> string = str("x");
  EXPECT_EQ(replacementObjectForJSONEncoder(*string, *sink), string);
}

TEST(TQJSONCoding, DefaultStepsWriteWhatTheKindAsksFor) {
  const auto text = [](auto&& step, const Ref<Object>& object) {
    const auto sink = makeRef<test::TextSink>();
    step(*object, *sink);
    return sink->text;
  };
  EXPECT_EQ(text(startEncodingObject, Array::array()), "[");
  EXPECT_EQ(text(finishEncodingObject, MutableArray::array()), "]");
  EXPECT_EQ(text(startEncodingObject, str("x")), R"({"_class":"NSString")");
  EXPECT_EQ(text(finishEncodingObject, str("x")), "}");
  EXPECT_EQ(text(encodeClassInfoForJSON, makeRef<Disguised>()), R"("_class":"Base")");
  EXPECT_EQ(text(encodeAsKey, num(2.5)), R"("2.5")");
  EXPECT_EQ(text(encodeAsRAWArchive, Array::arrayWithObjects({num(1)})), "[1]");
}

TEST(TQJSONCoding, AnAliasNamesOneCodingClass) {
  const auto written = [](const Object& object) {
    const auto sink = makeRef<test::TextSink>();
    encodeClassInfoForJSON(object, *sink);
    return sink->text;
  };
  TQJSONEncoder::initialize();
  TQJSONEncoder::setAliasName("first", classOf<Disguised>);  // its coding class is Base
  TQJSONEncoder::setAliasName("alias", classOf<Base>);
  EXPECT_EQ(written(*makeRef<Base>()), R"("_class":"alias")");
  EXPECT_EQ(written(*makeRef<Disguised>()), R"("_class":"alias")");
  EXPECT_EQ(written(*makeRef<Derived>()), R"("_class":"Derived")");
  const auto mixed =
      Array::arrayWithObjects({makeRef<Base>(), makeRef<Derived>(), makeRef<Base>()});
  EXPECT_EQ(archiveOf(mixed), R"([{"_class":"alias"},{"_class":"Derived"},{"_class":"alias"}])");
}

/// As the format's rules say it, a character at a time.
std::string escapedSlowly(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const std::size_t named = std::string_view("\"\\/\b\f\n\r\t").find(c);
    if (named != std::string_view::npos) {
      (result += '\\') += "\"\\/bfnrt"[named];
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\u%04x", static_cast<unsigned>(c));
      result += hex;
    } else {
      result += c;
    }
  }
  return result;
}

TEST(TQJSONCoding, EscapesWhatJSONAsksForAndTheSlash) {
  constexpr unsigned kSeed = 7;
  SCOPED_TRACE(kSeed);
  std::mt19937 random(kSeed);
  std::string all(0x80, '\0');
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<char>(i);
  std::vector<std::string> texts = {all, "", "plain text of some length",
                                    "é\u2028\U0001F600\x7F\u00AD"};
  const std::string_view pieces[] = {
      "a",    "bcdefgh", "é", "\U0001F600", "\"", "/", "\\", "\n", std::string_view("\0", 1),
      "\x1f", "\x7f",    " "};
  for (int i = 0; i < 2000; ++i) {
    std::string text;
    for (auto n = random() % 20; n > 0; --n) text += pieces[random() % std::size(pieces)];
    texts.push_back(std::move(text));
  }
  for (const std::string& text : texts) {
    const Ref<String> string = str(text);
    const Ref<String> escaped = safeJSONValue(*string);
    ASSERT_EQ(escaped->view(), escapedSlowly(text));
    ASSERT_EQ(escaped == string, escaped->view() == text);  // itself when it needs none
    ASSERT_EQ(archiveOf(string), '"' + escapedSlowly(text) + '"');
  }
  const Ref<String> illFormed = safeJSONValue(*test::illFormed(u"/\xD800"));
  EXPECT_TRUE(illFormed->isEqual(*String::stringWithUTF16(u"\\/\xD800")));
}

TEST(TQJSONCoding, KnowsTheAwkwardCharacters) {
  for (const char32_t awkward : {U'"', U'\\', U'/', U'\0', U'\n', U'\x1f', U'\x7f', U'\u0085',
                                 U'\u00AD', U'\u200B', U'\u2060', U'\uFEFF', U'\U000E0001'}) {
    EXPECT_TRUE(TQJSONAwkwardCharacters::contains(awkward)) << std::hex << std::uint32_t(awkward);
  }
  for (const char32_t plain :
       {U' ', U'a', U'é', U'\u2028', U'\U0001F600', char32_t{0xD800}, char32_t{0x110000}}) {
    EXPECT_FALSE(TQJSONAwkwardCharacters::contains(plain)) << std::hex << std::uint32_t(plain);
  }
}

}  // namespace
}  // namespace tq
