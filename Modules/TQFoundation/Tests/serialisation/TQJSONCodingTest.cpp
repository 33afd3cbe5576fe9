#include <TQFoundation/serialisation/TQJSONCoding.h>

#include <random>

#include "serialisation/JSONModel.h"

namespace tq {
namespace {

using namespace test;

/// Writes every step in a form of its own.
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

/// Inherits its steps but for one.
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

 private:
  Ref<Object> other_;
};

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

TEST(TQJSONCoding, AClassOverridesAnyStep) {
  const std::pair<Ref<Object>, Ref<Object>> entries[] = {{makeRef<Stepwise>(), num(1)}};
  const Ref<Object> itself = makeRef<Replaced>(nullptr);
  const std::pair<Ref<Object>, const char*> cases[] = {
      {makeRef<Stepwise>(), R"(<me,"k":true>)"},
      {makeRef<Inheriting>(), R"(<heir,"k":true>)"},
      {makeRef<RawArray>(), "raw"},
      {Dictionary::dictionaryWithEntries(entries), R"({"key":1})"},
      {itself, R"({"_class":"Replaced","itself":true})"},
      {Array::arrayWithObjects({makeRef<Replaced>(str("x")), num(1)}), R"(["x",1])"},
      // One step only: the replacement is not asked for another.
      {makeRef<Replaced>(itself), R"({"_class":"Replaced","itself":true})"},
      {makeRef<Replaced>(makeRef<Replaced>(num(1))), R"({"_class":"Replaced","itself":true})"},
  };
  for (const auto& [object, text] : cases) EXPECT_EQ(archiveOf(object), text);

  Ref<Object> nest = makeRef<Replaced>(str("x"));  // which is no container
  for (int i = 0; i < TQJSONEncoder::kDepthLimit; ++i) nest = Array::arrayWithObjects({nest});
  EXPECT_TRUE(decoded(archiveOf(nest)));
}

TEST(TQJSONCoding, DefaultStepsWriteWhatTheKindAsksFor) {
  TQJSONEncoder::initialize();
  TQJSONEncoder::setAliasName("first", classOf<Disguised>);  // its coding class is Base
  TQJSONEncoder::setAliasName("alias", classOf<Base>);       // and so names this one, too
  const struct {
    void (*step)(const Object&, TQJSONEncoder&);
    Ref<Object> object;
    const char* text;
  } cases[] = {
      {startEncodingObject, Array::array(), "["},
      {finishEncodingObject, MutableArray::array(), "]"},
      {startEncodingObject, str("x"), R"({"_class":"NSString")"},
      {finishEncodingObject, str("x"), "}"},
      {encodeClassInfoForJSON, makeRef<Base>(), R"("_class":"alias")"},
      {encodeClassInfoForJSON, makeRef<Disguised>(), R"("_class":"alias")"},
      {encodeAsKey, num(2.5), R"("2.5")"},
      {encodeAsRAWArchive,
       Array::arrayWithObjects({makeRef<Base>(), makeRef<Derived>(), makeRef<Base>()}),
       R"([{"_class":"alias"},{"_class":"Derived"},{"_class":"alias"}])"},
  };
  const auto sink = makeRef<TextSink>();
  for (const auto& c : cases) {
    sink->text.clear();
    c.step(*c.object, *sink);
    EXPECT_EQ(sink->text, c.text);
  }
  EXPECT_EQ(replacementObjectForJSONEncoder(*makeRef<Replaced>(nullptr), *sink), nullptr);
  EXPECT_EQ(replacementObjectForJSONEncoder(*cases[0].object, *sink), cases[0].object);
}

/// As the format's rules say it, a character at a time.
std::string escapedSlowly(std::string_view text) {
  std::string result;
  for (const char c : text) {
    const std::size_t named = std::string_view("\"\\/\b\f\n\r\t").find(c);
    if (named != std::string_view::npos) {
      (result += '\\') += "\"\\/bfnrt"[named];
    } else if (static_cast<unsigned char>(c) < 0x20) {
      (result += c < 0x10 ? "\\u000" : "\\u001") += "0123456789abcdef"[c & 15];
    } else {
      result += c;
    }
  }
  return result;
}

TEST(TQJSONCoding, EscapesWhatJSONAsksForAndTheSlash) {
  constexpr std::string_view kPieces[] = {"\"",         "/",    "\\",      "é", "\u00AD\u2028",
                                          "\U0001F600", "\x7F", "bcdefgh", "a", " "};
  std::mt19937 random(7);
  for (int i = 0; i < 2000; ++i) {
    std::string text;
    for (auto n = random() % 20; n > 0; --n) {
      const auto which = random() % 50;
      if (which < 33) text += static_cast<char>(which);
      if (which >= 33) text += kPieces[which % std::size(kPieces)];
    }
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
  for (const char32_t awkward : U"\"\\/\n\x1f\x7f\u0085\u00AD\u200B\u2060\uFEFF\U000E0001") {
    EXPECT_TRUE(TQJSONAwkwardCharacters::contains(awkward)) << std::hex << std::uint32_t(awkward);
  }
  for (const char32_t plain : {U' ', U'a', U'é', U'\u2028', U'\U0001F600', char32_t{0x110000}}) {
    EXPECT_FALSE(TQJSONAwkwardCharacters::contains(plain)) << std::hex << std::uint32_t(plain);
  }
}

}  // namespace
}  // namespace tq
