#include <TQFoundation/platform/files/FileServices.h>

#include <sys/stat.h>
#include <unistd.h>

#include <TQFoundation/platform/bytes/Digest.h>

#include "support/Bytes.h"
#include "support/Errors.h"
#include "support/FailingSystemCalls.h"
#include "support/TemporaryDirectory.h"

namespace {

using namespace test;

struct FileServices : testing::Test {
  test::TemporaryDirectory directory;
  Ref<Error> error;

  [[nodiscard]] Ref<URL> url(std::string_view name) const {
    return URL::fileURLWithPath(directory.path(name));
  }
};

TEST_F(FileServices, ReplaceKeepsPermissionsAndLinks) {
  EXPECT_TRUE(replaceFile(*url("new"), bytesOf("first"), &error));
  EXPECT_EQ(directory.read("new"), "first");
  ::chmod(directory.path("new").c_str(), 0640);
  fs::create_symlink("new", directory.path("link"));
  const std::string large(300'000, 'x');
  FailingSystemCalls::insteadOfWrite = [](int file, const void* bytes, std::size_t count) {
    struct stat status {};
    ::fstat(file, &status);
    EXPECT_EQ(status.st_mode & 0777, 0600u) << "others may read the new content already";
    return ::pwrite(file, bytes, count, 0);
  };
  EXPECT_TRUE(replaceFile(*url("link"), bytesOf(large), &error));
  FailingSystemCalls::insteadOfWrite = nullptr;
  EXPECT_TRUE(directory.read("new") == large);
  EXPECT_TRUE(fs::is_symlink(directory.path("link")));
  EXPECT_EQ(fs::status(directory.path("new")).permissions(), fs::perms(0640));
  EXPECT_TRUE(replaceFile(*url("new"), {}, &error));
  EXPECT_EQ(directory.read("new"), "");
  EXPECT_EQ(directory.entries(), 2);
}

TEST_F(FileServices, RefusePathsThatCannotNameAFile) {
  directory.write("file", "x");
  fs::create_directory(directory.path("folder"));
  ::mkfifo(directory.path("pipe").c_str(), 0600);
  const std::pair<std::string, std::int64_t> cases[] = {
      {directory.path("none/new"), 4},
      {directory.path("file/new"), 512},
      {directory.path("folder"), 512},
      {directory.path("pipe"), 512},
      {directory.path(std::string(300, 'n')), 514},
      {std::string("/a\0b", 4), 512}};
  for (const auto& [path, code] : cases) {
    EXPECT_FALSE(replaceFile(*URL::fileURLWithPath(path), bytesOf("y"), &error)) << path;
    EXPECT_EQ(codeOf(error), code) << path;
    EXPECT_TRUE(code != 4 || error->localizedDescription() == "The folder “none” doesn’t exist.");
  }
  EXPECT_EQ(makeUniqueFile(*url("none/new"), &error), nullptr);
  EXPECT_EQ(codeOf(error), 4);
  EXPECT_EQ(sha1DigestOfFile(*url("pipe"), &error), std::nullopt);
  EXPECT_EQ(sha1DigestOfFile(*url("none"), &error), std::nullopt);
  EXPECT_EQ(codeOf(error), 260);
  EXPECT_EQ(directory.entries(), 3);
}

TEST_F(FileServices, UniqueNamesCountBeforeTheExtension) {
  const std::pair<const char*, const char*> cases[] = {{"Plan.svg", "Plan.svg"},
                                                       {"Plan.svg", "Plan 2.svg"},
                                                       {"Plan.svg", "Plan 4.svg"},
                                                       {"Plan.svg//", "Plan 5.svg"},
                                                       {".hidden", ".hidden"},
                                                       {".hidden", ".hidden 2"},
                                                       {"..", nullptr},
                                                       {"./", nullptr}};
  directory.write("Plan 3.svg", "taken");
  for (const auto& [wanted, made] : cases) {
    const Ref<URL> file = makeUniqueFile(*url(wanted), &error);
    EXPECT_EQ(file != nullptr ? file->path() : "null", made ? directory.path(made) : "null");
  }
  EXPECT_EQ(directory.read("Plan 3.svg"), "taken");
}

TEST_F(FileServices, DigestsEqualThoseOfTheBytes) {
  for (const std::size_t size : {0u, 1u, 262'144u, 1'000'000u}) {
    const std::string content(size, 'd');
    directory.write("file", content);
    EXPECT_EQ(sha1DigestOfFile(*url("file"), &error), sha1Digest(bytesOf(content))) << size;
  }
}

TEST_F(FileServices, TemporaryFoldersAreRemovedWithTheirContent) {
  directory.write("outside", "stays");
  std::string path;
  {
    const Ref<TemporaryFolder> folder = TemporaryFolder::temporaryFolder(&error);
    path = folder->url().path();
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0700));
    fs::create_directories(path + "/a/b");
    fs::create_symlink(directory.path(""), path + "/a/link");
    const std::string_view outside[] = {"",     "/",         "/etc", "..",
                                        "../x", "a/../../x", "a/..", {"a\0b", 3}};
    for (const std::string_view name : outside) {
      EXPECT_EQ(folder->urlForName(name), nullptr) << name;
    }
    EXPECT_EQ(folder->urlForName("..a/b..")->path(), path + "/..a/b..");
    EXPECT_TRUE(replaceFile(*folder->urlForName("a/b/file"), bytesOf("x"), &error));
  }
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(directory.read("outside"), "stays");
}

}  // namespace
