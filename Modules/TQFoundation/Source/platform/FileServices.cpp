#include <TQFoundation/platform/FileServices.h>

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <utility>

#include <TQFoundation/platform/Random.h>
#include <TQFoundation/platform/detail/FileError.h>
#include <TQFoundation/platform/detail/SafeFile.h>

namespace tq {
namespace {

using detail::fileError;
using detail::FileUse;
using detail::folderOfPath;
using detail::hasPath;

constexpr mode_t kByUmask = 0666;
constexpr int kMostTries = 10'000;  // names taken by others

bool fail(Ref<Error>* error, const URL& url, int errorNumber) {
  setOutError(error, fileError(FileUse::writing, url, errorNumber));
  return false;
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
      path_ = folderOfPath(path) + ".tq-" + std::to_string(uniformRandom(~std::uint32_t{0}));
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

  [[nodiscard]] int descriptor() const { return descriptor_; }

  /// Answers 0 or the system's error number.
  int take(const std::string& place) {
    const int failure = detail::moveIntoPlace(descriptor_, path_, place);
    if (failure == 0) path_.clear();
    return failure;
  }

 private:
  std::string path_;
  int descriptor_ = -1;
};

}  // namespace

bool replaceFile(const URL& url, std::span<const std::byte> bytes, Ref<Error>* error) {
  if (!hasPath(url)) return fail(error, url, EINVAL);
  const std::string path = detail::resolvedPath(url.path());
  struct stat before {};
  int failure = detail::lookAtPredecessor(path, before);
  if (failure != 0) return fail(error, url, failure);
  Successor successor(path);
  if (!successor.isOpen()) return fail(error, url, errno);
  failure = detail::writeAll(successor.descriptor(), bytes);
  if (failure == 0) failure = detail::takeAfter(successor.descriptor(), before);
  if (failure == 0) failure = successor.take(path);
  if (failure == 0) failure = detail::bringFolderToDisk(folderOfPath(path));
  return failure == 0 || fail(error, url, failure);
}

Ref<URL> makeUniqueFile(const URL& wanted, Ref<Error>* error) {
  if (!hasPath(wanted)) return fail(error, wanted, EINVAL), nullptr;
  const std::string folder = folderOfPath(wanted.path());
  const std::filesystem::path name(wanted.lastPathComponent());
  for (int number = 1; number < kMostTries; ++number) {
    std::string path = folder;
    path += name.stem().string();
    if (number != 1) path.append(" ").append(std::to_string(number));
    path += name.extension().string();
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
