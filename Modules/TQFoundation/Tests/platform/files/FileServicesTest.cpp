#include <TQFoundation/platform/files/FileServices.h>

#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <TQFoundation/platform/bytes/Digest.h>
#include <TQFoundation/platform/files/FileHandle.h>
#include <TQFoundation/platform/files/FileReading.h>

#include "support/Bytes.h"
#include "support/Errors.h"
#include "support/FailingSystemCalls.h"
#include "support/TemporaryDirectory.h"

namespace {

struct FileServices : testing::Test {
  test::TemporaryDirectory directory;
  Ref<Error> error;

  [[nodiscard]] Ref<URL> url(std::string_view name) const {
    return URL::fileURLWithPath(directory.path(name));
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

// The first call of the system fails.
TEST_F(FileServices, ErrorsHaveTheCodesOfTheirCauses) {
  const std::string folder = fs::path(directory.path("")).parent_path().filename();
  const std::string denied = "You don’t have permission to save the file “file” in the folder “";
  const char* const full = "You can’t save the file “file” because the volume is out of space.";
  const std::string notSaved = "The file “file” couldn’t be saved";
  const char* const hidden = " because you don’t have permission to view it.";
  directory.write("file", "");
  // Code and text when writing, code and end of the text when reading.
  const Rows<int, std::int64_t, std::string, std::int64_t, const char*> cases{
      {EACCES, 513, denied + folder + "”.", 257, hidden},
      {EPERM, 513, denied + folder + "”.", 257, hidden},
      {EEXIST, 516, notSaved + " because a file with the same name already exists.", 256, "."},
      {ENOSPC, 640, full, 256, "."},
      {EDQUOT, 640, full, 256, "."},
      {EROFS, 642, "You can’t save the file “file” because the volume is read only.", 256, "."},
      {EFBIG, 512, notSaved + " in the folder “" + folder + "”.", 263, " because it is too large."},
      {EIO, 512, notSaved + " in the folder “" + folder + "”.", 256, "."},
  };
  for (const auto& [number, writing, textOfWriting, reading, textOfReading] : cases) {
    SCOPED_TRACE(number);
    FailingSystemCalls::armAll(1, number);
    EXPECT_FALSE(replaceFile(*url("file"), {}, &error));
    FailingSystemCalls::armAll(1, number);
    expectFileError(std::exchange(error, nullptr), writing, number, textOfWriting);
    EXPECT_FALSE(dataWithContentsOfURL(*url("file"), &error));
    FailingSystemCalls::disarm();
    expectFileError(error, reading, number,
                    std::string("The file “file” couldn’t be opened") + textOfReading);
  }
}

// Each call of the system fails once, with each of these errors.
TEST_F(FileServicesFault, NothingIsHalfDoneOrLeftOpen) {
  const auto descriptors = [] {
    return std::distance(fs::directory_iterator("/proc/self/fd"), {});
  };
  const auto digest = sha1Digest(bytesOf("old"));
  const Rows<const char*, const char*, std::function<bool()>> services{
      {"replaces", "new", [&] { return replaceFile(*url("file"), bytesOf("new"), &error); }},
      {"reads", "old",
       [&] {
         const Ref<Data> data = dataWithContentsOfURL(*url("file"), &error);
         return data != nullptr && data->view() == "old";
       }},
      {"digests", "old",
       [&] { return digest && sha1DigestOfFile(*url("file"), &error) == digest; }},
      {"opens", "old",
       [&] { return FileHandle::fileHandleForWritingToURL(*url("file"), &error) != nullptr; }},
      {"makes", "old",
       [&] {
         const Ref<URL> made = makeUniqueFile(*url("new"), &error);
         return made != nullptr && fs::remove(made->path());
       }},
  };
  for (const auto& [name, after, serve] : services) {
    bool wasMet = true;
    for (int n = 1; std::exchange(wasMet, false); ++n) {
      for (const int number : {EINTR, EIO, EEXIST, EPERM, EINVAL, ENODATA}) {
        SCOPED_TRACE(testing::Message() << name << ", call " << n << ", error " << number);
        ::setxattr(directory.write("file", "old").c_str(), "user.tag", "red", 3, 0);
        error = nullptr;
        const auto before = descriptors();
        FailingSystemCalls::armAll(n, number);
        const bool isDone = serve();
        const bool isMet = FailingSystemCalls::disarm();
        wasMet = wasMet || isMet;
        EXPECT_TRUE(isDone || (error != nullptr && isMet));
        const std::string now = directory.read("file");
        EXPECT_TRUE(now == after || (now == "old" && !isDone)) << now;
        EXPECT_EQ(directory.entries(), 1);
        EXPECT_EQ(descriptors(), before);
      }
    }
  }
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

  const char* const configured = ::getenv("TMPDIR");
  const std::string before = configured != nullptr ? configured : "";
  ::setenv("TMPDIR", directory.path("none").c_str(), 1);
  EXPECT_EQ(TemporaryFolder::temporaryFolder(&error), nullptr);
  EXPECT_EQ(codeOf(error), 4);
  ::setenv("TMPDIR", "relative", 1);
  EXPECT_TRUE(TemporaryFolder::temporaryFolder()->url().path().starts_with("/tmp/tq-"));
  before.empty() ? ::unsetenv("TMPDIR") : ::setenv("TMPDIR", before.c_str(), 1);
}

}  // namespace
