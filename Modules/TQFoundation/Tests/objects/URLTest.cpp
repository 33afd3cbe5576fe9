#include <TQFoundation/objects/URL.h>

#include <gtest/gtest.h>

#include <filesystem>

namespace tq {
namespace {

TEST(URL, KeepsPathsAndDecodesFileURLs) {
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

TEST(URL, AppendsRelativePathsToTheWorkingDirectory) {
  const Ref<URL> url = URL::fileURLWithPath("a:b");
  EXPECT_EQ(url->path(), (std::filesystem::current_path() / "a:b").string());
  EXPECT_TRUE(URL::URLWithString(url->absoluteString())->isEqual(*url));
}

}  // namespace
}  // namespace tq
