#include <TQFoundation/platform/files/FileReading.h>

#include <errno.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/files/ExpectFileError.h"
#include "support/TemporaryDirectory.h"

namespace tq {
namespace {

using test::expectFileError;

TEST(FileReading, ReadsWholeFiles) {
  const test::TemporaryDirectory directory;
  const auto read = [](std::string_view path) {
    Ref<Error> error;
    const Ref<Data> data = dataWithContentsOfURL(*URL::fileURLWithPath(path), &error);
    EXPECT_FALSE(error) << error->description();
    return data;
  };
  EXPECT_EQ(read(directory.write("empty", ""))->length(), 0u);
  for (const std::size_t length : {1u, 4095u, 4096u, 4097u, 1'000'003u}) {
    std::string content(length, 'x');
    content.back() = '\0';
    EXPECT_EQ(read(directory.write("x", content))->view(), content);
  }
  // The kernel's own files claim to be empty.
  EXPECT_TRUE(read("/proc/self/status")->view().starts_with("Name:"));
}

TEST(FileReading, SaysWhyAFileCannotBeRead) {
  const test::TemporaryDirectory directory;
  Ref<Error> error;
  const auto read = [&](std::string_view path) {
    error = nullptr;
    EXPECT_FALSE(dataWithContentsOfURL(*URL::fileURLWithPath(path), &error));
    return error;
  };
  expectFileError(read(directory.path("none")), 260, ENOENT,
                  "The file “none” couldn’t be opened because there is no such file.");
  expectFileError(read("/tmp/"), 256, EISDIR, "The file “tmp” couldn’t be opened.");
  expectFileError(read(directory.write("x", "") + "/y"), 256, ENOTDIR,
                  "The file “y” couldn’t be opened.");
  expectFileError(read(directory.path(std::string(300, 'n'))), 258, ENAMETOOLONG,
                  "The file name “" + std::string(300, 'n') + "” is invalid.");
  expectFileError(read("/dev/zero"), 256, EINVAL,
                  "The file “zero” couldn’t be opened because it is not a regular file.");
  ASSERT_EQ(::mkfifo(directory.path("pipe").c_str(), 0600), 0);
  expectFileError(read(directory.path("pipe")), 256, EINVAL,
                  "The file “pipe” couldn’t be opened because it is not a regular file.");
  if (::geteuid() != 0) {
    ::chmod(directory.write("locked", "").c_str(), 0);
    expectFileError(
        read(directory.path("locked")), 257, EACCES,
        "The file “locked” couldn’t be opened because you don’t have permission to view "
        "it.");
  }
  // A hole beyond the limit takes no room on the disk.
  ASSERT_EQ(::truncate(directory.write("huge", "").c_str(), (off_t{1} << 36) + 1), 0);
  expectFileError(read(directory.path("huge")), 263, EFBIG,
                  "The file “huge” couldn’t be opened because it is too large.");
}

}  // namespace
}  // namespace tq
