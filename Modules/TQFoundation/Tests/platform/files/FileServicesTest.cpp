#include <TQFoundation/platform/files/FileServices.h>

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <support/Bytes.h>
#include <support/FailingSystemCalls.h>
#include <support/TemporaryDirectory.h>

#include <filesystem>
#include <utility>

#include <TQFoundation/platform/bytes/Digest.h>

namespace tq {
namespace {

using test::bytesOf;
using test::FailingSystemCalls;
namespace fs = std::filesystem;

std::int64_t codeOf(const Ref<Error>& error) { return error != nullptr ? error->code() : 0; }

struct FileServices : testing::Test {
  test::TemporaryDirectory directory;
  Ref<Error> error;

  [[nodiscard]] Ref<URL> url(std::string_view name) const {
    return URL::fileURLWithPath(directory.path(name));
  }
  [[nodiscard]] std::ptrdiff_t entries() const {
    return std::distance(fs::directory_iterator(directory.path("")), {});
  }
};
using FileServicesFault = FileServices;

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
  EXPECT_EQ(entries(), 2);
}

TEST_F(FileServices, RefuseWhatIsNoPlaceForAFile) {
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
  }
  EXPECT_EQ(makeUniqueFile(*url("none/new"), &error), nullptr);
  EXPECT_EQ(codeOf(error), 4);
  EXPECT_EQ(sha1DigestOfFile(*url("pipe"), &error), std::nullopt);
  EXPECT_EQ(sha1DigestOfFile(*url("none"), &error), std::nullopt);
  EXPECT_EQ(codeOf(error), 260);
  EXPECT_EQ(entries(), 3);
}

TEST_F(FileServices, UniqueNamesCountBeforeTheEnding) {
  const char* const expected[] = {"Plan.svg", "Plan 2.svg", "Plan 4.svg"};
  directory.write("Plan 3.svg", "taken");
  for (const char* name : expected) {
    EXPECT_EQ(makeUniqueFile(*url("Plan.svg"), &error)->path(), directory.path(name));
  }
  const Ref<URL> slashed = makeUniqueFile(*url("Plan.svg//"), &error);
  EXPECT_EQ(slashed ? slashed->path() : "(none)", directory.path("Plan 5.svg"));
  for (const char* name : {"..", "./"}) {
    EXPECT_EQ(makeUniqueFile(*url(name), &error), nullptr) << name;
  }
  EXPECT_EQ(makeUniqueFile(*url(".hidden"))->path(), directory.path(".hidden"));
  EXPECT_EQ(makeUniqueFile(*url(".hidden"))->path(), directory.path(".hidden 2"));
  EXPECT_EQ(directory.read("Plan 3.svg"), "taken");
}

TEST_F(FileServices, DigestsEqualThoseOfTheBytes) {
  for (const std::size_t size : {0u, 1u, 262'144u, 1'000'000u}) {
    const std::string content(size, 'd');
    directory.write("file", content);
    EXPECT_EQ(sha1DigestOfFile(*url("file"), &error), sha1Digest(bytesOf(content))) << size;
  }
}

TEST_F(FileServices, TemporaryFoldersGoWithAllThatIsInThem) {
  directory.write("outside", "stays");
  std::string path;
  {
    const Ref<TemporaryFolder> folder = TemporaryFolder::temporaryFolder(&error);
    path = folder->url().path();
    EXPECT_EQ(fs::status(path).permissions(), fs::perms(0700));
    fs::create_directories(path + "/a/b");
    fs::create_symlink(directory.path(""), path + "/a/link");
    EXPECT_TRUE(replaceFile(*folder->urlForName("a/b/file"), bytesOf("x"), &error));
  }
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(directory.read("outside"), "stays");
}

TEST_F(FileServicesFault, AFailedReplacementLeavesTheOldOrTheNewWhole) {
  const std::string before(10'000, 'o');
  const std::string after(200'000, 'n');
  bool wasMet = true;
  for (int n = 1; wasMet; ++n) {
    SCOPED_TRACE(n);
    directory.write("file", before);
    FailingSystemCalls::arm(n, FailingSystemCalls::How::fails);
    const bool isReplaced = replaceFile(*url("file"), bytesOf(after), &error);
    wasMet = FailingSystemCalls::disarm();
    EXPECT_EQ(isReplaced, !wasMet);
    EXPECT_EQ(codeOf(std::exchange(error, nullptr)), wasMet ? 640 : 0);
    const std::string found = directory.read("file");
    EXPECT_TRUE(found == after || (wasMet && found == before));
    EXPECT_EQ(found == before, n <= 3);  // write, fsync, rename; the fourth is the folder's
    EXPECT_EQ(entries(), 1);
    ASSERT_LT(n, 10);
  }
}

}  // namespace
}  // namespace tq
