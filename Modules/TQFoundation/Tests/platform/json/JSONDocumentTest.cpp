#include <TQFoundation/platform/json/JSONDocument.h>

#include <gtest/gtest.h>

#include <string>

#include <TQFoundation/objects/Data.h>

namespace tq {
namespace {

std::optional<JSONDocument> parsed(std::string_view text, Ref<Error>* error = nullptr) {
  return JSONDocument::parse(std::as_bytes(std::span(text)), 0, error);
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
  const struct {
    std::string text;
    std::string outline;
  } cases[] = {
      {" \t\r\nnull \n", "null"},
      {"\xEF\xBB\xBFtrue", "c1"},
      {R"("")", "''"},
      {R"("\"\\\/\b\f\n\r\t\u00e9\u00E9\uD83D\uDE00")", "'\"\\/\b\f\n\r\téé\U0001F600'"},
      {R"("\u0000")", std::string("'\0'", 3)},
      {"\"\x7F\u2028\"", "'\x7F\u2028'"},
      {"[]", "[]"},
      {"[ 1 , [ ] , { } ]", "[q1 [] {} ]"},
      {R"({"a":1,"b":[true,null],"a":{"c":"x"}})", "{'a' q1 'b' [c1 null ] 'a' {'c' 'x' } }"},
      {"-0", "q0"},
      {"-0.0", "d-0"},
      {"9223372036854775808", "Q9223372036854775808"},
      {"18446744073709551615", "Q18446744073709551615"},
      {"18446744073709551616", "d1.844674407370955e+19"},
      {"-9223372036854775809", "d-9.223372036854776e+18"},
      {R"(["1\"99999999999999999999",-123456789012345678901234567890,{"a":1}])",
       "['1\"99999999999999999999' d-1.234567890123457e+29 {'a' q1 } ]"},
      {"1e2", "d100"},
      {"1E-2", "d0.01"},
      {"0.1000000000000000055511151231257827021181583404541015625", "d0.1"},
      {"1.7976931348623157e308", "d1.797693134862316e+308"},
      {"1e-400", "d0"},
      {"2.4703282292062328e-324", "d4.940656458412465e-324"},
      {std::string(300, '1'), "d1.111111111111111e+299"},
      {std::string(512, '[') + R"("\"[")" + std::string(512, ']'),
       [] {
         std::string text = "'\"['";
         for (int i = 0; i < 512; ++i) text = "[" + text + " ]";
         return text;
       }()},
  };
  for (const auto& c : cases) {
    Ref<Error> error;
    const auto document = parsed(c.text, &error);
    ASSERT_TRUE(document) << c.text;
    EXPECT_FALSE(error);
    EXPECT_EQ(outline(document->root()), c.outline);
  }
}

TEST(JSONDocument, RefusesEverythingElseAndSaysWhere) {
  const std::string tooDeep = std::string(513, '[');
  const struct {
    std::string text;
    const char* debug;
  } cases[] = {
      {"", "Unexpected end of text around character 0."},
      {" \n", "Unexpected end of text around character 2."},
      {"1 2", "Garbage at end around character 2."},
      {"nul", "Invalid value around character 0."},
      {"[1,]", "Invalid value around character 3."},
      {R"({"a":1,})", "No string key for a value in an object around character 7."},
      {R"({"a" 1})", "No ':' after a key around character 5."},
      {"[1", "Unexpected end of text around character 2."},
      {"[1 2]", "Badly formed container around character 3."},
      {"[1}", "Badly formed container around character 2."},
      {"\"a", "Unterminated string around character 2."},
      {"\"a\tb\"", "Unescaped control character around character 2."},
      {"\xEF\xBB\xBF\"\x1F\"", "Unescaped control character around character 4."},
      {R"("\x")", "Invalid escape sequence around character 1."},
      {R"("\u12G4")", "Invalid escape sequence around character 5."},
      {R"("\uD800")", "Unpaired surrogate in an escape sequence around character 1."},
      {R"("\uDBFF")", "Unpaired surrogate in an escape sequence around character 1."},
      {R"("\uDC00")", "Unpaired surrogate in an escape sequence around character 1."},
      {R"("\uD800\u0041")", "Unpaired surrogate in an escape sequence around character 7."},
      {R"("\uD800\uD800\uDC00")", "Unpaired surrogate in an escape sequence around character 7."},
      {"+1", "Invalid value around character 0."},
      {"01", "Number with a leading zero around character 1."},
      {"-", "Invalid value around character 0."},
      {"1.", "Number with no digit after '.' around character 2."},
      {"1e+", "Number with no digit in its exponent around character 3."},
      {"[1e400]", "Number beyond the range of doubles around character 1."},
      {std::string(400, '9'), "Number beyond the range of doubles around character 0."},
      {"NaN", "Invalid value around character 0."},
      {"[1]//x", "Garbage at end around character 3."},
      {"\"\xFF\"", "Malformed UTF-8 around character 1."},
      {"\"\xC0\xAF\"", "Malformed UTF-8 around character 1."},
      {"\"\xED\xA0\x80\"", "Malformed UTF-8 around character 1."},
      {"\"a\xC3", "Malformed UTF-8 around character 2."},
      {std::string("\"\0\"", 3), "Unescaped control character around character 1."},
      {std::string("1\0", 2), "Garbage at end around character 1."},
      {tooDeep + std::string(513, ']'), "Too many nested containers around character 512."},
      {std::string(512, '[') + "{}" + std::string(512, ']'),
       "Too many nested containers around character 512."},
      {std::string(100'000, '['), "Too many nested containers around character 512."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text.substr(0, 40));
    Ref<Error> error;
    EXPECT_FALSE(parsed(c.text));
    EXPECT_FALSE(parsed(c.text, &error));
    ASSERT_TRUE(error);
    EXPECT_EQ(error->domain(), CocoaErrorDomain);
    EXPECT_EQ(error->code(), 3840);
    EXPECT_EQ(error->localizedDescription(),
              "The data couldn’t be read because it isn’t in the correct format.");
    EXPECT_EQ(error->userInfo().objectForKey(DebugDescriptionKey)->description(), c.debug);
    const std::string index =
        error->userInfo().objectForKey(JSONDocument::kErrorIndexKey)->description();
    EXPECT_TRUE(std::string_view(c.debug).ends_with(" " + index + "."));
  }
}

TEST(JSONDocument, ReadsPaddedAndUnpaddedTextAlike) {
  for (std::size_t size = 1; size < 200; ++size) {
    const std::string text = "\"" + std::string(size, 'x') + "\"";
    const std::string exact(text.begin(), text.end());
    const Ref<Data> padded = Data::dataWithBytes(text);
    Ref<Error> error;
    auto a = parsed(exact, &error);
    auto b = JSONDocument::parse(padded->bytes(), Data::kReadablePadding, &error);
    ASSERT_TRUE(a && b);
    a = std::move(b);
    EXPECT_EQ(a->root().text(), std::string(size, 'x'));
  }
}

}  // namespace
}  // namespace tq
