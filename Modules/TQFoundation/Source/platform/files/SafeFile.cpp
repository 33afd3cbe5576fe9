#include <TQFoundation/platform/files/SafeFile.h>

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <memory>

#include <TQFoundation/platform/files/FileHandle.h>
#include <TQFoundation/platform/threads/Random.h>

namespace tq::detail {
namespace {

constexpr int kMostTries = 10'000;  // limit for names that exist already

/// A new file in the same folder, removed again unless it replaces the old one.
class Successor {
 public:
  Successor(const std::string& path, mode_t mode) {
    for (int tries = 0; tries < kMostTries; ++tries) {
      path_ = folderOfPath(path) + ".tq-" + std::to_string(uniformRandom(~std::uint32_t{0}));
      descriptor_ = makeFile(path_, mode);
      if (descriptor_ >= 0 || errno != EEXIST) break;
    }
  }
  ~Successor() {
    if (descriptor_ < 0) return;
    ::close(descriptor_);
    if (!path_.empty()) ::unlink(path_.c_str());
  }
  Successor(const Successor&) = delete;
  Successor& operator=(const Successor&) = delete;

  [[nodiscard]] bool isOpen() const { return descriptor_ >= 0; }

  [[nodiscard]] int descriptor() const { return descriptor_; }

  /// Renames the file to `place`. @return 0 or the system's error number
  int take(const std::string& place) {
    const int failure = moveIntoPlace(descriptor_, path_, place);
    if (failure == 0) path_.clear();
    return failure;
  }

 private:
  std::string path_;
  int descriptor_ = -1;
};

}  // namespace

bool hasPath(const URL& url) {
  return !url.path().empty() && url.path().find('\0') == std::string::npos;
}

std::string resolvedPath(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> end(::realpath(path.c_str(), nullptr), ::free);
  return end != nullptr ? std::string(end.get()) : path;
}

std::string folderOfPath(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

int makeFile(const std::string& path, mode_t mode) {
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, mode);
}

int writeAll(int descriptor, std::span<const std::byte> bytes) {
  while (!bytes.empty()) {
    const WriteResult result = writeOnce(descriptor, bytes);
    if (result.count < 0 && result.errorNumber == EINTR) continue;
    if (result.count <= 0) return result.errorNumber != 0 ? result.errorNumber : EIO;
    bytes = bytes.subspan(static_cast<std::size_t>(result.count));
  }
  return 0;
}

int lookAtPredecessor(const std::string& path, struct stat& before) {
  before = {};
  if (::lstat(path.c_str(), &before) != 0) return errno == ENOENT ? 0 : errno;
  if (S_ISDIR(before.st_mode)) return EISDIR;
  return S_ISREG(before.st_mode) ? 0 : EINVAL;
}

int takeAfter(int descriptor, const struct stat& before) {
  if (before.st_nlink == 0) return 0;
  // Fails for another user's file in our folder: we own the new file then.
  [[maybe_unused]] const int refused = ::fchown(descriptor, before.st_uid, before.st_gid);
  return ::fchmod(descriptor, before.st_mode & 07777) == 0 ? 0 : errno;
}

int moveIntoPlace(int descriptor, const std::string& from, const std::string& to) {
  return ::fsync(descriptor) == 0 && ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

int writeInPlace(const std::string& path, std::span<const std::byte> bytes,
                 const struct stat& before) {
  Successor successor(path, before.st_nlink != 0 ? kOwnersOnly : kByUmask);
  if (!successor.isOpen()) return errno;
  int failure = writeAll(successor.descriptor(), bytes);
  if (failure == 0) failure = takeAfter(successor.descriptor(), before);
  if (failure == 0) failure = successor.take(path);
  return failure == 0 ? bringFolderToDisk(folderOfPath(path)) : failure;
}

int bringFolderToDisk(const std::string& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return errno == EACCES ? 0 : errno;
  const int failure = ::fsync(descriptor) == 0 || errno == EINVAL ? 0 : errno;
  ::close(descriptor);
  return failure;
}

}  // namespace tq::detail
