#include <TQFoundation/platform/files/FileHandle.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <TQFoundation/platform/files/FileReading.h>
#include <TQFoundation/platform/log/PlainLog.h>

#include "support/Bytes.h"
#include "support/Child.h"
#include "support/Errors.h"
#include "support/TemporaryDirectory.h"

namespace {

bool isOpen(int descriptor) { return ::fcntl(descriptor, F_GETFD) >= 0; }

TEST(FileHandle, WritesOverAnExistingFileFromItsStart) {
  const test::TemporaryDirectory directory;
  const Ref<URL> url = URL::fileURLWithPath(directory.write("x", "0123456789"));
  Ref<FileHandle> file = FileHandle::fileHandleForWritingToURL(*url);
  ASSERT_TRUE(file);
  const int descriptor = file->fileDescriptor();
  EXPECT_TRUE(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
  EXPECT_EQ(writeOnce(descriptor, bytesOf("abc")).count, 3);
  file = nullptr;
  EXPECT_FALSE(isOpen(descriptor));
  EXPECT_EQ(directory.read("x"), "abc3456789");
}

TEST(FileHandle, ClosesOnlyWhatItOwnsAndOnlyOnce) {
  const int file = ::open("/dev/null", O_WRONLY);
  { const Ref<FileHandle> handle = FileHandle::fileHandleWithFileDescriptor(file); }
  EXPECT_TRUE(isOpen(file));
  const Ref<FileHandle> owner = FileHandle::fileHandleWithFileDescriptor(file, true);
  owner->closeFile();
  EXPECT_FALSE(isOpen(file));
  EXPECT_EQ(owner->fileDescriptor(), -1);
  const int next = ::open("/dev/null", O_WRONLY);  // gets the same number
  owner->closeFile();
  EXPECT_TRUE(isOpen(next));
  ::close(next);
}

TEST(FileHandle, IsNotTakenForAClosedStandardError) {
  const test::TemporaryDirectory directory;
  const Ref<URL> url = URL::fileURLWithPath(directory.write("x", "0123456789"));
  Child child([&] {
    ::close(STDERR_FILENO);
    const Ref<FileHandle> file = FileHandle::fileHandleForWritingToURL(*url);
    plainLog("a message that nobody sees");
    EXPECT_EQ(writeOnce(file->fileDescriptor(), bytesOf("abc")).count, 3);
  });
  EXPECT_EQ(child.end(), 0);
  EXPECT_EQ(directory.read("x"), "abc3456789");
}

TEST(FileReading, ReadsWholeFiles) {
  const test::TemporaryDirectory directory;
  const auto read = [](std::string_view path) {
    Ref<Error> error;
    const Ref<Data> data = dataWithContentsOfURL(*URL::fileURLWithPath(path), &error);
    EXPECT_FALSE(error) << error->description();
    return data;
  };
  for (const std::size_t length : {0u, 1u, 4095u, 4096u, 4097u, 1'000'003u}) {
    const std::string content(length, '\0');
    EXPECT_EQ(read(directory.write("x", content))->view(), content);
  }
  // Files of the kernel report a size of 0.
  EXPECT_TRUE(read("/proc/self/status")->view().starts_with("Name:"));
  EXPECT_NE(read("/proc/self/maps")->view().find("[stack]"), std::string_view::npos) << "cut off";
}

TEST(FileErrors, TellWhyAFileCannotBeWrittenOrRead) {
  const test::TemporaryDirectory directory;
  const std::string folder = std::filesystem::path(directory.path("")).parent_path().filename();
  const std::string inFolder = "” couldn’t be saved in the folder “" + folder + "”.";
  const std::string longName(300, 'n');
  const std::string cut("/tmp/a\0b", 8);
  std::filesystem::create_directory(directory.path("folder"));
  ASSERT_EQ(::mkfifo(directory.path("pipe").c_str(), 0600), 0);
  // Larger than the limit; its hole takes no space on the disk.
  ASSERT_EQ(::truncate(directory.write("huge", "").c_str(), (off_t{1} << 36) + 1), 0);
  const char* const notRegular = "” couldn’t be opened because it is not a regular file.";
  // The system's error number, then code and text when writing and when reading; 0: not tried.
  const Rows<std::string, int, std::int64_t, std::string, std::int64_t, std::string> cases{
      {directory.path("none"), ENOENT, 4, "The file “none” doesn’t exist.", 260,
       "The file “none” couldn’t be opened because there is no such file."},
      {directory.path("folder"), EISDIR, 512, "The file “folder" + inFolder, 256,
       "The file “folder” couldn’t be opened."},
      {directory.path("huge/y"), ENOTDIR, 512,
       "The file “y” couldn’t be saved in the folder “huge”.", 256,
       "The file “y” couldn’t be opened."},
      {directory.path(longName), ENAMETOOLONG, 514, "The file name “" + longName + "” is invalid.",
       258, "The file name “" + longName + "” is invalid."},
      {cut, EINVAL, 512, "The file “" + cut.substr(5) + "” couldn’t be saved in the folder “tmp”.",
       256, "The file “" + cut.substr(5) + "” couldn’t be opened."},
      {"/dev/zero", EINVAL, 0, "", 256, std::string("The file “zero") + notRegular},
      {directory.path("pipe"), EINVAL, 0, "", 256, std::string("The file “pipe") + notRegular},
      {directory.path("huge"), EFBIG, 0, "", 263,
       "The file “huge” couldn’t be opened because it is too large."},
  };
  for (const auto& [path, number, writingCode, writingText, readingCode, readingText] : cases) {
    SCOPED_TRACE(path);
    const Ref<URL> url = URL::fileURLWithPath(path);
    Ref<Error> error;
    if (writingCode != 0) {
      EXPECT_FALSE(FileHandle::fileHandleForWritingToURL(*url));
      EXPECT_FALSE(FileHandle::fileHandleForWritingToURL(*url, &error));
      expectFileError(error, writingCode, number, writingText);
    }
    if (readingCode == 0) continue;
    EXPECT_FALSE(dataWithContentsOfURL(*url, &error));
    expectFileError(error, readingCode, number, readingText);
  }
  EXPECT_FALSE(std::filesystem::exists(directory.path("none")));
}

TEST(FileHandle, OneWriteReturnsItsCountAndTheErrorNumber) {
  const int full = ::open("/dev/full", O_WRONLY);
  WriteResult result = writeOnce(full, bytesOf("x"));
  EXPECT_EQ(result.count, -1);
  EXPECT_EQ(result.errorNumber, ENOSPC);
  ::close(full);
  EXPECT_EQ(writeOnce(full, bytesOf("x")).errorNumber, EBADF);

  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_NONBLOCK), 0);
  const std::string much(1 << 20, 'x');
  errno = EINTR;  // an old number must not be reported
  result = writeOnce(ends[1], bytesOf(much));
  EXPECT_GT(result.count, 0);
  EXPECT_LT(result.count, 1 << 20);
  EXPECT_EQ(result.errorNumber, 0);
  ::close(ends[0]);
  ::close(ends[1]);
}

}  // namespace
