#include <TQFoundation/platform/FileServices.h>

#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

#include <TQFoundation/platform/FileHandle.h>
#include <TQFoundation/platform/Random.h>
#include <TQFoundation/platform/detail/FileError.h>

namespace tq {
namespace {

using detail::fileError;
using detail::FileUse;

constexpr mode_t kByUmask = 0666;
constexpr int kMostTries = 10'000;  // names taken by others

bool fail(Ref<Error>* error, const URL& url, int errorNumber) {
  setOutError(error, fileError(FileUse::writing, url, errorNumber));
  return false;
}

bool hasPath(const URL& url) {
  return !url.path().empty() && url.path().find('\0') == std::string::npos;
}

/// Where a chain of links ends; the path itself when it leads nowhere.
std::string resolved(const std::string& path) {
  const std::unique_ptr<char, void (*)(void*)> end(::realpath(path.c_str(), nullptr), ::free);
  return end != nullptr ? std::string(end.get()) : path;
}

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash + 1);
}

/// @return a descriptor, or -1 with errno set
int makeFile(const std::string& path) {
  return ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, kByUmask);
}

/// A new file in the same folder, which goes again unless it takes the other's place.
class Successor {
 public:
  explicit Successor(const std::string& path) {
    for (int tries = 0; tries < kMostTries; ++tries) {
      path_ = folderOf(path) + ".tq-" + std::to_string(uniformRandom(~std::uint32_t{0}));
      descriptor_ = makeFile(path_);
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

  /// Each answers 0 or the system's error number.
  int write(std::span<const std::byte> bytes) const {
    while (!bytes.empty()) {
      const WriteResult result = writeOnce(descriptor_, bytes);
      if (result.count < 0 && result.errorNumber == EINTR) continue;
      if (result.count <= 0) return result.errorNumber != 0 ? result.errorNumber : EIO;
      bytes = bytes.subspan(static_cast<std::size_t>(result.count));
    }
    return 0;
  }
  int takeAfter(const struct stat& predecessor) const {
    // Refused for another's file in a folder of ours: the new one is ours then.
    [[maybe_unused]] const int refused =
        ::fchown(descriptor_, predecessor.st_uid, predecessor.st_gid);
    return ::fchmod(descriptor_, predecessor.st_mode & 07777) == 0 ? 0 : errno;
  }
  int take(const std::string& place) {
    if (::fsync(descriptor_) != 0 || ::rename(path_.c_str(), place.c_str()) != 0) return errno;
    path_.clear();
    return 0;
  }

 private:
  std::string path_;
  int descriptor_ = -1;
};

/// Some file systems have no such thing for folders, and say so.
int bringFolderToDisk(const std::string& folder) {
  const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return errno == EACCES ? 0 : errno;
  const int failure = ::fsync(descriptor) == 0 || errno == EINVAL ? 0 : errno;
  ::close(descriptor);
  return failure;
}

}  // namespace

bool replaceFile(const URL& url, std::span<const std::byte> bytes, Ref<Error>* error) {
  if (!hasPath(url)) return fail(error, url, EINVAL);
  const std::string path = resolved(url.path());
  struct stat before {};
  const bool exists = ::lstat(path.c_str(), &before) == 0;
  if (!exists && errno != ENOENT) return fail(error, url, errno);
  if (exists && S_ISDIR(before.st_mode)) return fail(error, url, EISDIR);
  if (exists && !S_ISREG(before.st_mode)) return fail(error, url, EINVAL);
  Successor successor(path);
  if (!successor.isOpen()) return fail(error, url, errno);
  int failure = successor.write(bytes);
  if (failure == 0 && exists) failure = successor.takeAfter(before);
  if (failure == 0) failure = successor.take(path);
  if (failure == 0) failure = bringFolderToDisk(folderOf(path));
  return failure == 0 || fail(error, url, failure);
}

Ref<URL> makeUniqueFile(const URL& wanted, Ref<Error>* error) {
  if (!hasPath(wanted)) return fail(error, wanted, EINVAL), nullptr;
  const std::string folder = folderOf(wanted.path());
  const std::filesystem::path name(wanted.lastPathComponent());
  for (int number = 1; number < kMostTries; ++number) {
    const std::string text = number == 1 ? std::string() : " " + std::to_string(number);
    const std::string path = folder + name.stem().string() + text + name.extension().string();
    const int descriptor = makeFile(path);
    if (descriptor >= 0) {
      ::close(descriptor);
      return URL::fileURLWithPath(path);
    }
    if (errno != EEXIST) return fail(error, wanted, errno), nullptr;
  }
  return fail(error, wanted, EEXIST), nullptr;
}

Ref<TemporaryFolder> TemporaryFolder::temporaryFolder(Ref<Error>* error) {
  const char* const configured = ::getenv("TMPDIR");
  const std::string parent = configured != nullptr && *configured == '/' ? configured : "/tmp";
  std::string path = parent + "/tq-XXXXXX";
  if (::mkdtemp(path.data()) == nullptr) {
    fail(error, *URL::fileURLWithPath(path), errno);
    return nullptr;
  }
  return Ref<TemporaryFolder>::adopt(new TemporaryFolder(URL::fileURLWithPath(path)));
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(url_->path(), ignored);
}

Ref<URL> TemporaryFolder::urlForName(std::string_view name) const {
  return URL::fileURLWithPath(url_->path() + "/" + std::string(name));
}

}  // namespace tq
