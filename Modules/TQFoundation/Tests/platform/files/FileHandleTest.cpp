#include <TQFoundation/platform/files/FileHandle.h>

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/ExpectFileError.h"
#include "support/Bytes.h"
#include "support/TemporaryDirectory.h"

namespace tq {
namespace {

using test::bytesOf;
using test::expectFileError;

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

TEST(FileHandle, ClosesWhatItOwnsOnceAndLeavesTheRest) {
  const int lent = ::open("/dev/null", O_WRONLY);
  { const Ref<FileHandle> file = FileHandle::fileHandleWithFileDescriptor(lent); }
  EXPECT_TRUE(isOpen(lent));
  const Ref<FileHandle> owner = FileHandle::fileHandleWithFileDescriptor(lent, true);
  owner->closeFile();
  EXPECT_FALSE(isOpen(lent));
  EXPECT_EQ(owner->fileDescriptor(), -1);
  const int next = ::open("/dev/null", O_WRONLY);  // gets the same number
  owner->closeFile();
  EXPECT_TRUE(isOpen(next));
  ::close(next);
}

TEST(FileHandle, SaysWhyAFileCannotBeOpenedForWriting) {
  const test::TemporaryDirectory directory;
  Ref<Error> error;
  const auto open = [&](std::string_view path) {
    error = nullptr;
    EXPECT_FALSE(FileHandle::fileHandleForWritingToURL(*URL::fileURLWithPath(path), &error));
    EXPECT_FALSE(FileHandle::fileHandleForWritingToURL(*URL::fileURLWithPath(path)));
    return error;
  };
  expectFileError(open(directory.path("none")), 4, ENOENT, "The file “none” doesn’t exist.");
  EXPECT_FALSE(std::filesystem::exists(directory.path("none")));
  std::filesystem::create_directory(directory.path("folder"));
  const std::string parent = std::filesystem::path(directory.path("")).parent_path().filename();
  expectFileError(open(directory.path("folder")), 512, EISDIR,
                  "The file “folder” couldn’t be saved in the folder “" + parent + "”.");
  const std::string longName(300, 'n');
  expectFileError(open(directory.path(longName)), 514, ENAMETOOLONG,
                  "The file name “" + longName + "” is invalid.");
  expectFileError(open(std::string_view("/tmp/a\0b", 8)), 512, EINVAL,
                  std::string("The file “a\0b” couldn’t be saved in the folder “tmp”.", 63));
  if (::geteuid() != 0) {
    ::chmod(directory.write("locked", "").c_str(), 0);
    expectFileError(
        open(directory.path("locked")), 513, EACCES,
        "You don’t have permission to save the file “locked” in the folder “" + parent + "”.");
  }
}

TEST(FileHandle, OneWriteTellsItsCountAndTheSystemsReason) {
  const int full = ::open("/dev/full", O_WRONLY);
  WriteResult result = writeOnce(full, bytesOf("x"));
  EXPECT_EQ(result.count, -1);
  EXPECT_EQ(result.errorNumber, ENOSPC);
  ::close(full);
  result = writeOnce(full, bytesOf("x"));
  EXPECT_EQ(result.errorNumber, EBADF);

  int ends[2];
  ASSERT_EQ(::pipe2(ends, O_NONBLOCK), 0);
  const std::string much(1 << 20, 'x');
  errno = EINTR;  // an old number must not show
  result = writeOnce(ends[1], bytesOf(much));
  EXPECT_GT(result.count, 0);
  EXPECT_LT(result.count, 1 << 20);
  EXPECT_EQ(result.errorNumber, 0);
  ::close(ends[0]);
  ::close(ends[1]);
}

}  // namespace
}  // namespace tq
