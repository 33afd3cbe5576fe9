#include <TQFoundation/platform/json/JSONDocument.h>

#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/UTF.h>
#include <TQFoundation/platform/json/JSONText.h>

#include "support/Test.h"

namespace {

std::optional<JSONDocument> parsed(std::string_view text, Ref<Error>* error = nullptr) {
  return JSONDocument::parse(Data::dataWithBytes(text), error);
}

std::string nested(std::string text, int depth, const char* close = "]") {
  for (int i = 0; i < depth; ++i) text = "[" + text + close;
  return text;
}

/// The tree as text, numbers with the letter of their kind.
std::string outline(JSONNode node) {
  using Kind = JSONNode::Kind;
  if (node.isNumber()) return node.number().typeCode() + node.number().text();
  if (node.kind() == Kind::null) return "null";
  if (node.kind() == Kind::string) return "'" + std::string(node.text()) + "'";
  std::string text(1, static_cast<char>(node.kind()));
  for (JSONNode at = node.first(); !(at == node.end()); at = at.next()) text += outline(at) + " ";
  return text + (node.kind() == Kind::array ? "]" : "}");
}

TEST(JSONDocument, ReadsTheGrammar) {
  const std::pair<std::string, std::string> cases[] = {
      {" \t\r\nnull \n", "null"},
      {"\xEF\xBB\xBFtrue", "c1"},
      {R"(["\"\\\/\b\f\n\r\t\u00e9\u00E9\uD83D\uDE00",""])", "['\"\\/\b\f\n\r\téé\U0001F600' '' ]"},
      {R"("\uD800\uDC00\uDBFF\uDFFF")", "'\U00010000\U0010FFFF'"},
      {"\"\\u0000\x7F\u2028\"", std::string("'\0\x7F\u2028'", 7)},
      {R"({"a":1,"b":[true,null, [ ] , { }],"a":{"c":"x"}})",
       "{'a' q1 'b' [c1 null [] {} ] 'a' {'c' 'x' } }"},
      {"[-0,-0.0,9223372036854775808,18446744073709551615,1e2,1E-2,1e-400]",
       "[q0 d-0 Q9223372036854775808 Q18446744073709551615 d100 d0.01 d0 ]"},
      {"[0.1000000000000000055511151231257827021181583404541015625,1.7976931348623157e308,"
       "2.4703282292062328e-324]",
       "[d0.1 d1.797693134862316e+308 d4.940656458412465e-324 ]"},
      {"18446744073709551616", "d1.844674407370955e+19"},
      {R"(["1\"99999999999999999999",-9223372036854775809,-123456789012345678901234567890,)" +
           std::string(300, '1') + R"(,{"a":1}])",
       "['1\"99999999999999999999' d-9.223372036854776e+18 d-1.234567890123457e+29 "
       "d1.111111111111111e+299 {'a' q1 } ]"},
      {nested(R"("\"[")", 512), nested("'\"['", 512, " ]")},
      {nested("1,-9223372036854775809", 512), nested("q1 d-9.223372036854776e+18", 512, " ]")},
  };
  for (const auto& [text, expected] : cases) {
    Ref<Error> error;
    const auto document = parsed(text, &error);
    ASSERT_TRUE(document) << text;
    EXPECT_FALSE(error);
    EXPECT_EQ(outline(document->root()), expected);
    EXPECT_FALSE(detail::scanJSON(text.substr(text[0] == '\xEF' ? 3 : 0), 512)) << text;
  }
}

TEST(JSONDocument, ReadsNumbersOfEveryLengthLikeTheCLibrary) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 20'000; ++i) {
    const std::size_t length = 1 + random() % 24;
    std::string text;
    while (text.size() < length) text += static_cast<char>('0' + random() % 10);
    std::size_t point = random() % (2 * length);
    const bool hasPoint = point > 0 && point < length;
    if (text[0] == '0') text[0] = '7';
    if (hasPoint && random() % 2 == 0) {
      text[0] = '0';
      point = 1;
    }
    if (hasPoint) text.insert(point, ".");
    if (random() % 2 == 0) text.insert(0, "-");
    const NumberValue number = parsed("[" + text + "]")->root().first().number();
    EXPECT_EQ(number.doubleValue(), std::strtod(text.c_str(), nullptr)) << text;
    if (hasPoint || length > 18) continue;
    EXPECT_FALSE(number.isFloating()) << text;
    EXPECT_EQ(number.integerValue(), std::strtoll(text.c_str(), nullptr, 10)) << text;
  }
}

TEST(JSONDocument, RefusesEverythingElseAndSaysWhere) {
  const std::string nul(1, '\0');
  const test::Rows<std::string, std::vector<std::pair<std::string, int>>> cases{
      {"Unexpected end of text", {{"", 0}, {" \n", 2}, {"[1", 2}}},
      {"Garbage at end", {{"1 2", 2}, {"[1]//x", 3}, {"1" + nul, 1}}},
      {"Invalid value", {{"nul", 0}, {"+1", 0}, {"-", 0}, {"[1,]", 3}}},
      {"No string key for a value in an object", {{R"({"a":1,})", 7}}},
      {"No ':' after a key", {{R"({"a" 1})", 5}}},
      {"Badly formed container", {{"[1}", 2}}},
      {"Unterminated string", {{"\"a", 2}}},
      {"Unescaped control character",
       {{"\"a\tb\"", 2}, {"\xEF\xBB\xBF\"\x1F\"", 4}, {"\"" + nul + "\"", 1}}},
      {"Invalid escape sequence", {{R"("\x")", 1}, {R"("\u12G4")", 5}}},
      {"Unpaired surrogate in an escape sequence",
       {{R"("\uD800")", 1},
        {R"("\uDBFF")", 1},
        {R"("\uDC00")", 1},
        {R"("\uDFFF")", 1},
        {R"("\uD800\u0041")", 7},
        {R"("\uD800\uD800\uDC00")", 7}}},
      {"Number with a leading zero", {{"01", 1}, {"[01]", 2}, {"[-00.5]", 3}}},
      {"Number with no digit after '.'", {{"1.", 2}, {"[-1.]", 4}}},
      {"Number with no digit in its exponent", {{"1e+", 3}}},
      {"Number beyond the range of doubles", {{"[1e400]", 1}, {std::string(400, '9'), 0}}},
      {"Malformed UTF-8", {{"\"\xFF\"", 1}, {"\"\xED\xA0\x80\"", 1}, {"\"a\xC3", 2}}},
      {"Too many nested containers",
       {{nested("", 513), 512}, {nested("{}", 512), 512}, {std::string(100'000, '['), 512}}},
  };
  for (const auto& [message, faults] : cases) {
    for (const auto& [text, place] : faults) {
      SCOPED_TRACE(text.substr(0, 40));
      Ref<Error> error;
      EXPECT_FALSE(parsed(text));
      EXPECT_FALSE(parsed(text, &error));
      ASSERT_TRUE(error && error->domain() == CocoaErrorDomain && error->code() == 3840);
      EXPECT_EQ(error->localizedDescription(),
                "The data couldn’t be read because it isn’t in the correct format.");
      const std::string index = std::to_string(place);
      EXPECT_EQ(error->userInfo().objectForKey(DebugDescriptionKey)->description(),
                message + " around character " + index + ".");
      EXPECT_EQ(error->userInfo().objectForKey(JSONDocument::kErrorIndexKey)->description(), index);
    }
  }
}

TEST(JSONScan, FindsAFaultInWhatTheParserRefusesAndInNothingElse) {
  const std::string whole = R"({"a":[1,-0.5e3,true,"x\u00e9\n"],"b":{"":null,"c":[]}})";
  std::mt19937 random(7);
  for (int i = 0; i < 20'000; ++i) {
    std::string text = whole;
    for (auto n = 1 + random() % 2; n > 0; --n) {
      text[random() % text.size()] = "\"\\[]{},:019.eE+-ut \t"[random() % 20];
    }
    ASSERT_EQ(!detail::scanJSON(text, 512), parsed(text).has_value()) << text;
  }
}

TEST(JSONDocument, DoesNotReadWhatIsBehindTheText) {
  const std::string_view all =
      R"([1,"a\n",{"b":-2.5e3,"c":[true,null]},"d"]],33]333333333333333333)";
  for (const std::string_view start : {"", "[", "{", "1", "[1", "[\"", "fal", "-", "{\"a\":"}) {
    for (std::size_t size = 0; size <= all.size(); ++size) {
      const std::string text = std::string(start).append(all);
      const Ref<MutableData> longer = MutableData::dataWithLength(0);
      longer->append(text);
      longer->setLength(size);
      const auto a = JSONDocument::parse(longer, nullptr);
      const auto b = parsed(text.substr(0, size));
      ASSERT_EQ(a.has_value(), b.has_value()) << text.substr(0, size);
      if (a) {
        EXPECT_EQ(outline(a->root()), outline(b->root()));
      }
    }
  }
}

TEST(JSONDocumentStress, CountsMoreElementsThanItsWordsHold) {
  std::string text = "[0";
  for (int i = 1; i < 1 << 24; ++i) text += ",0";
  for (const std::size_t more : {0u, 1u}) {
    const auto document = parsed(text + (more == 0 ? "]" : ",0]"));
    ASSERT_TRUE(document);
    EXPECT_EQ(document->root().count(), (std::size_t{1} << 24) + more);
  }
}

TEST(JSONDocument, ReadsTextThatGetsDenser) {
  const std::string sparse(400'000, 'x');
  std::string text = "[\"" + sparse + "\"";
  constexpr std::size_t kCount = 300'000;
  for (std::size_t i = 0; i < kCount; ++i) text += ",7";
  const auto document = parsed(text + "]");
  ASSERT_TRUE(document);
  EXPECT_EQ(document->root().count(), kCount + 1);
  JSONNode node = document->root().first();
  EXPECT_EQ(node.text(), sparse);
  for (std::size_t i = 0; i < kCount; ++i) {
    node = node.next();
    ASSERT_EQ(node.number().integerValue(), 7) << i;
  }
}

TEST(JSONDocument, ReadsLongTextLikeShortText) {
  const std::string longest = std::string(std::size_t{8} << 20, 'x');
  const std::string units[] = {"-12.5",
                               R"("a")",
                               R"("},\\\",],\u00e9,")",
                               R"({"k,":[1,{} , [[]]],"l":true})",
                               " 1 ,\n2 ",
                               "\"" + std::string(400'000, ',') + "\"",
                               "\"" + longest + "\",\"\\\"" + longest + "\",\"\\t\""};
  for (const std::string& unit : units) {
    SCOPED_TRACE(unit.substr(0, 40));
    const std::size_t count = 1'000'000 / unit.size() + 2;
    std::string text = "[" + unit;
    for (std::size_t i = 1; i < count; ++i) text.append(",").append(unit);
    const auto one = parsed("[" + unit + "]");
    const auto all = parsed(text + "]");
    ASSERT_TRUE(one && all);
    EXPECT_EQ(all->valueCount(), (one->valueCount() - 1) * count + 1);
    EXPECT_EQ(all->root().count(), one->root().count() * count);
    const std::string expected = outline(one->root());
    JSONNode node = all->root().first();
    for (std::size_t i = 0; i < count; ++i) {
      std::string found = "[";
      for (std::size_t k = 0; k < one->root().count(); ++k, node = node.next()) {
        found += outline(node) + " ";
      }
      ASSERT_TRUE(found + "]" == expected) << i;
    }
    EXPECT_TRUE(node == all->root().end());
    for (const char* fault : {"", "}", ",]", "]]", "],", "]1", "\"]"}) {
      EXPECT_FALSE(parsed(text + fault)) << fault;
    }
    if (text.size() > 4'000'000) continue;
    const std::size_t comma = text.rfind(',', (std::size_t{256} << 10) + 1);
    for (const char* fault : {",", "]", "}", ":", "x", "\"", "[", "\x01", "\xFF"}) {
      std::string faulty = text + "]";
      faulty.insert(comma, fault);
      ASSERT_EQ(parsed(faulty).has_value(), !detail::scanJSON(faulty, 512) && fault[0] != '\xFF')
          << fault;
    }
  }
}

}  // namespace
