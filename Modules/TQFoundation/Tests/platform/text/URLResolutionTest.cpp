#include <TQFoundation/platform/text/URLResolution.h>

#include <gtest/gtest.h>

namespace tq {
namespace {

std::string resolved(std::string_view base, std::string_view text) {
  const Ref<URL> url = URLWithString(text, URL::URLWithString(base).get());
  return url ? url->absoluteString() : "(null)";
}

// RFC 3986, sections 5.4.1 and 5.4.2, in their order.
TEST(URLResolution, FollowsEveryExampleOfTheStandard) {
  const std::pair<std::string_view, std::string_view> examples[] = {
      {"g:h", "g:h"},
      {"g", "http://a/b/c/g"},
      {"./g", "http://a/b/c/g"},
      {"g/", "http://a/b/c/g/"},
      {"/g", "http://a/g"},
      {"//g", "http://g"},
      {"?y", "http://a/b/c/d;p?y"},
      {"g?y", "http://a/b/c/g?y"},
      {"#s", "http://a/b/c/d;p?q#s"},
      {"g#s", "http://a/b/c/g#s"},
      {"g?y#s", "http://a/b/c/g?y#s"},
      {";x", "http://a/b/c/;x"},
      {"g;x", "http://a/b/c/g;x"},
      {"g;x?y#s", "http://a/b/c/g;x?y#s"},
      {"", "http://a/b/c/d;p?q"},
      {".", "http://a/b/c/"},
      {"./", "http://a/b/c/"},
      {"..", "http://a/b/"},
      {"../", "http://a/b/"},
      {"../g", "http://a/b/g"},
      {"../..", "http://a/"},
      {"../../", "http://a/"},
      {"../../g", "http://a/g"},
      {"../../../g", "http://a/g"},
      {"../../../../g", "http://a/g"},
      {"/./g", "http://a/g"},
      {"/../g", "http://a/g"},
      {"g.", "http://a/b/c/g."},
      {".g", "http://a/b/c/.g"},
      {"g..", "http://a/b/c/g.."},
      {"..g", "http://a/b/c/..g"},
      {"./../g", "http://a/b/g"},
      {"./g/.", "http://a/b/c/g/"},
      {"g/./h", "http://a/b/c/g/h"},
      {"g/../h", "http://a/b/c/h"},
      {"g;x=1/./y", "http://a/b/c/g;x=1/y"},
      {"g;x=1/../y", "http://a/b/c/y"},
      {"g?y/./x", "http://a/b/c/g?y/./x"},
      {"g?y/../x", "http://a/b/c/g?y/../x"},
      {"g#s/./x", "http://a/b/c/g#s/./x"},
      {"g#s/../x", "http://a/b/c/g#s/../x"},
      {"http:g", "http:g"},
  };
  static_assert(std::size(examples) == 42);
  for (const auto& [reference, expected] : examples) {
    EXPECT_EQ(resolved("http://a/b/c/d;p?q", reference), expected) << reference;
  }
}

TEST(URLResolution, KeepsEscapesAndCleansUpTheRest) {
  const struct {
    std::string_view base, text, expected;
  } cases[] = {
      {"file:///a/b/", "c%20d", "file:///a/b/c%20d"},
      {"/a/b", "../c", "file:///c"},
      {"/a/b%3F?", "c?q=/#f", "file:///a/c"},
      {"", "c", "file:///c"},
      {"http://h?x=/y", "c", "http://h/c"},
      {"http://h/a%2Fb/%zz", " c%2F d\té\n", "http://h/a%2Fb/c%2F%20d%C3%A9"},
      {"http://h/a", "https://g/a/../b", "https://g/b"},
      {"http://é.org/a", "b", "http://xn--9ca.org/b"},
      {"/a", "//elsewhere/c", "(null)"},
      {"http://h:99999/a", "b", "(null)"},
      {"http://h/a", std::string_view("b\0c", 3), "(null)"},
      {std::string_view("http://h/a\0/", 12), "b", "(null)"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(resolved(c.base, c.text), c.expected) << c.base << ' ' << c.text;
  }
  constexpr std::string_view kUntouched = " http://h:99999/a/../b c";
  EXPECT_EQ(URLWithString(kUntouched.substr(1), nullptr)->absoluteString(), kUntouched.substr(1));
}

}  // namespace
}  // namespace tq
