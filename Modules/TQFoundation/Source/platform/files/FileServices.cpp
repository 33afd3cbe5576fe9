#include <TQFoundation/platform/files/FileServices.h>

#include <errno.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include <TQFoundation/platform/files/FileError.h>
#include <TQFoundation/platform/files/SafeFile.h>

namespace tq {
namespace {

using detail::fileError;
using detail::FileUse;
using detail::folderOfPath;
using detail::hasPath;

constexpr int kMostTries = 10'000;  // limit for names that exist already

bool fail(Ref<Error>* error, const URL& url, int errorNumber) {
  setOutError(error, fileError(FileUse::creating, url, errorNumber));
  return false;
}

}  // namespace

bool replaceFile(const URL& url, std::span<const std::byte> bytes, Ref<Error>* error) {
  if (!hasPath(url)) return fail(error, url, EINVAL);
  const std::string path = detail::resolvedPath(url.path());
  std::optional<detail::FileAttributes> before;
  int failure = detail::readAttributes(path, before);
  if (failure == 0) failure = detail::writeInPlace(path, bytes, before);
  return failure == 0 || fail(error, url, failure);
}

Ref<URL> makeUniqueFile(const URL& wanted, Ref<Error>* error) {
  if (!hasPath(wanted)) return fail(error, wanted, EINVAL), nullptr;
  const std::filesystem::path name(wanted.lastPathComponent());  // ignores a trailing "/"
  if (name == "/" || name == "." || name == "..") return fail(error, wanted, EINVAL), nullptr;
  const std::string& whole = wanted.path();
  const std::string folder = folderOfPath(whole.substr(0, whole.find_last_not_of('/')));
  for (int number = 1; number < kMostTries; ++number) {
    std::string path = folder;
    path += name.stem().string();
    if (number != 1) path.append(" ").append(std::to_string(number));
    path += name.extension().string();
    const int descriptor = detail::makeFile(path, detail::kByUmask);
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
  try {
    std::error_code ignored;
    std::filesystem::remove_all(url_->path(), ignored);
  } catch (const std::bad_alloc&) {  // the rest of the folder stays
  }
}

Ref<URL> TemporaryFolder::urlForName(std::string_view name) const {
  const std::filesystem::path path(name);
  const bool staysInside = !name.empty() && !path.is_absolute() &&
                           name.find('\0') == std::string_view::npos &&
                           std::ranges::find(path, "..") == path.end();
  if (!staysInside) return nullptr;
  return URL::fileURLWithPath(url_->path() + "/" + std::string(name));
}

}  // namespace tq
