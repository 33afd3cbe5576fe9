#include <TQFoundation/objects/URL.h>

#include <gtest/gtest.h>

#include <filesystem>

namespace tq {
namespace {

TEST(URL, TakesPathsAsTheyStandAndDecodesFileURLs) {
  const struct {
    std::string_view text, path, last, absolute;
  } cases[] = {
      {"/a/b c.txt", "/a/b c.txt", "b c.txt", "file:///a/b%20c.txt"},
      {"/a%20b", "/a%20b", "a%20b", "file:///a%2520b"},
      {"file:///a%20b/%C3%A9", "/a b/\xC3\xA9", "\xC3\xA9", "file:///a%20b/%C3%A9"},
      {"FILE://localhost/x", "/x", "x", "file:///x"},
      {"file:/x/y/", "/x/y/", "y", "file:///x/y/"},
      {"/", "/", "/", "file:///"},
      {"/\xFF?#", "/\xFF?#", "\xFF?#", "file:///%FF%3F%23"},
      {"", "", "", "file://"},
      {"https://example.org/a%20b", "", "a%20b", "https://example.org/a%20b"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    const Ref<URL> url = URL::URLWithString(c.text);
    ASSERT_TRUE(url);
    EXPECT_EQ(url->path(), c.path);
    EXPECT_EQ(url->lastPathComponent(), c.last);
    EXPECT_EQ(url->absoluteString(), c.absolute);
    const Ref<URL> again = URL::URLWithString(url->absoluteString());
    EXPECT_TRUE(url->isEqual(*again));
    EXPECT_EQ(url->hash(), again->hash());
  }
  for (const char* text :
       {"file://elsewhere/x", "file:///%", "file:///%2", "file:///%zz", "file:///a%00b"}) {
    EXPECT_FALSE(URL::URLWithString(text)) << text;
  }
}

TEST(URL, RelativePathsAreOfTheWorkingDirectory) {
  const Ref<URL> url = URL::fileURLWithPath("a:b");
  EXPECT_EQ(url->path(), (std::filesystem::current_path() / "a:b").string());
  EXPECT_TRUE(URL::URLWithString(url->absoluteString())->isEqual(*url));
}

TEST(URL, ResolvesAgainstABase) {
  const struct {
    std::string_view base, text, absolute;
  } cases[] = {
      {"file:///a/b/", "c%20d", "file:///a/b/c%20d"},
      {"file:///a/b", "c", "file:///a/c"},
      {"file:///a/b", "/c", "file:///c"},
      {"file:///a/b", "https://h/", "https://h/"},
      {"https://h", "c", "https://h/c"},
      {"https://h/x/y", "/c", "https://h/c"},
      {"http://h/a/b?x=/y/z", "c", "http://h/a/c"},
      {"http://h?x=/y", "/c", "http://h/c"},
      {"http://h?x=1", "c", "http://h/c"},
      {"http://h/a/b", "//h2/c", "http://h2/c"},
      {"http://h/a/b?p#g", "?q", "http://h/a/b?q"},
      {"http://h/a/b?p#g", "#f", "http://h/a/b?p#f"},
      {"http://h/a/b?p#g", "", "http://h/a/b?p"},
      {"mailto:a", "b", "mailto:b"},
      {"file:///a/b%3F/", "c?q=/#f", "file:///a/b%3F/c"},
      {"", "c", "file:///c"},
  };
  for (const auto& c : cases) {
    const Ref<URL> base = URL::URLWithString(c.base);
    const Ref<URL> url = URL::URLWithString(c.text, base.get());
    EXPECT_EQ(url ? url->absoluteString() : "(none)", c.absolute) << c.base << ' ' << c.text;
  }
  EXPECT_FALSE(URL::URLWithString("//h2/c", URL::fileURLWithPath("/a").get())) << "a foreign host";
}

}  // namespace
}  // namespace tq
