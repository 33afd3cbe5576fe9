#include <TQFoundation/platform/network/detail/PartialFile.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <new>
#include <optional>
#include <utility>

#include <TQFoundation/platform/bytes/Digest.h>
#include <TQFoundation/platform/files/FileError.h>
#include <TQFoundation/platform/files/SafeFile.h>
#include <TQFoundation/platform/files/StandardStreams.h>
#include <TQFoundation/platform/text/Base64.h>

namespace tq::detail {
namespace {

constexpr std::int64_t kNoteEvery = std::int64_t{16}
                                    << 20;                  // most bytes that a power failure loses
constexpr std::size_t kLongestNote = std::size_t{1} << 12;  // validators are much shorter
constexpr int kMostTries = 100;                             // for a name that others keep changing
constexpr std::string_view kHeading = "partial download 2";

/// Removes the next line from `rest` and returns it, without the line break.
std::string_view nextLine(std::string_view& rest) {
  const std::string_view line = rest.substr(0, rest.find('\n'));
  rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  return line;
}

/// The same for a line that is a number.
std::optional<std::int64_t> nextNumber(std::string_view& rest) {
  const std::string_view line = nextLine(rest);
  std::int64_t number = 0;
  const auto [end, fault] = std::from_chars(line.data(), line.data() + line.size(), number);
  if (fault != std::errc() || end != line.data() + line.size()) return std::nullopt;
  return number;
}

bool isSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

/// Returns whether the file is regular, belongs to this user, and has only this name. Any other
/// file may have been planted, or may be changed by another user at any time.
bool isOursAlone(const struct stat& status) {
  return S_ISREG(status.st_mode) && status.st_uid == ::geteuid() && status.st_nlink == 1;
}

/// Returns the note; empty if there is none or if it was planted.
std::string textOfNote(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
  if (descriptor < 0) return {};
  struct stat status {};
  std::string text(kLongestNote, '\0');
  const bool isNote = ::fstat(descriptor, &status) == 0 && isOursAlone(status);
  const ssize_t count = isNote ? ::read(descriptor, text.data(), text.size()) : 0;
  ::close(descriptor);
  text.resize(static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  return text;
}

std::string digestOf(std::string_view source) {
  const auto digest = sha1Digest(std::as_bytes(std::span(source)));
  return digest ? base64FromBytes(*digest) : std::string();
}

}  // namespace

PartialFile::PartialFile(const URL& file, std::string_view source)
    : file_(URL::fileURLWithPath(file.path())),
      place_(resolvedPath(file.path())),
      path_(place_ + ".download"),
      note_(path_ + "-note"),
      source_(digestOf(source)) {}

std::unique_ptr<PartialFile> PartialFile::open(const URL& file, std::string_view source,
                                               Ref<Error>* error) {
  if (!hasPath(file)) {
    setOutError(error, fileError(FileUse::creating, file, EINVAL));
    return nullptr;
  }
  std::unique_ptr<PartialFile> partial(new PartialFile(file, source));
  std::optional<FileAttributes> before;
  int failure = readAttributes(partial->place_, before);
  if (failure == 0) failure = partial->openLocked(before.has_value());
  if (failure == 0) failure = partial->readNote();
  if (failure == 0) return partial;
  setOutError(error, partial->failure(failure));
  return nullptr;
}

// The previous holder of the lock may have moved the file to its target. Then the name refers to
// another file, or to no file, when the lock is acquired, and the loop tries again. A regular file
// that is not only ours is not written to: its name is removed, unless its owner has it open. The
// replacement of a file is private from its first byte on.
int PartialFile::openLocked(bool isReplacement) {
  constexpr int kFlags = O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  occupyStandardStreams();
  for (int tries = 0; tries < kMostTries; ++tries) {
    const mode_t mode = isReplacement ? kOwnersOnly : kByUmask;
    descriptor_ = ::open(path_.c_str(), kFlags);
    if (descriptor_ < 0 && errno == ENOENT) {
      descriptor_ = ::open(path_.c_str(), kFlags | O_CREAT | O_EXCL, mode);
      if (descriptor_ < 0 && errno == EEXIST) continue;
    }
    if (descriptor_ < 0) return errno;
    struct stat opened {};
    struct stat named {};
    int failure = ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
    if (failure == 0 && ::fstat(descriptor_, &opened) != 0) failure = errno;
    if (failure == 0 && !S_ISREG(opened.st_mode)) failure = EINVAL;
    if (failure == 0 && ::lstat(path_.c_str(), &named) == 0 && isSameFile(opened, named)) {
      if (!isOursAlone(named)) {
        failure = ::unlink(path_.c_str()) == 0 ? 0 : errno;
      } else if (!isReplacement || ::fchmod(descriptor_, kOwnersOnly) == 0) {
        return 0;
      } else {
        failure = errno;
      }
    }
    ::close(std::exchange(descriptor_, -1));
    if (failure != 0) return failure;
  }
  return EBUSY;
}

int PartialFile::readNote() {
  const std::string note = textOfNote(note_);
  std::string_view rest = note;
  const bool isOurs = nextLine(rest) == kHeading && nextLine(rest) == source_ && !source_.empty();
  const std::string_view validator = nextLine(rest);
  const auto total = nextNumber(rest);
  const auto noted = nextNumber(rest);
  struct stat status {};
  if (::fstat(descriptor_, &status) != 0) return errno;
  const bool isValid = isOurs && !validator.empty() && total && noted && *noted > 0 &&
                       *noted <= status.st_size && (*total < 0 || *noted <= *total);
  if (!isValid) return cut(0);
  validator_ = validator;
  total_ = *total;
  noted_ = *noted;
  return cut(noted_);
}

int PartialFile::cut(std::int64_t length) {
  if (::ftruncate(descriptor_, length) != 0 || ::lseek(descriptor_, length, SEEK_SET) < 0) {
    return errno;
  }
  length_ = length;
  return 0;
}

int PartialFile::writeNote() {
  const std::string note = std::string(kHeading) + '\n' + source_ + '\n' + validator_ + '\n' +
                           std::to_string(total_) + '\n' + std::to_string(length_) + '\n';
  if (::fdatasync(descriptor_) != 0) return errno;
  const int failed = writeInPlace(note_, std::as_bytes(std::span(note)), std::nullopt, kOwnersOnly);
  if (failed == 0) noted_ = length_;
  return failed;
}

Ref<Error> PartialFile::beginAnew(std::string_view validator, std::int64_t total) {
  validator_ = validator;
  total_ = total;
  int failed = cut(0);
  if (failed == 0) failed = validator_.empty() ? removeNote() : writeNote();
  return failed != 0 ? failure(failed) : nullptr;
}

// An older note would assign the first bytes of this body to another one.
int PartialFile::removeNote() {
  if (::unlink(note_.c_str()) == 0) return bringFolderToDisk(folderOfPath(place_));
  return errno == ENOENT ? 0 : errno;
}

Ref<Error> PartialFile::append(std::span<const std::byte> bytes) {
  if (const int failed = writeAll(descriptor_, bytes); failed != 0) {
    // The partly written piece does not count, and is removed.
    [[maybe_unused]] const int ignored = cut(length_);
    return failure(failed);
  }
  length_ += static_cast<std::int64_t>(bytes.size());
  const bool isDue = !validator_.empty() && length_ - noted_ >= kNoteEvery;
  const int failed = isDue ? writeNote() : 0;
  return failed != 0 ? failure(failed) : nullptr;
}

Ref<Error> PartialFile::finish() {
  std::optional<FileAttributes> before;
  int failed = readAttributes(place_, before);
  if (failed == 0 && before) failed = takeAttributes(descriptor_, *before);
  if (failed == 0) failed = moveIntoPlace(descriptor_, path_, place_);
  if (failed != 0) return failure(failed);
  ::unlink(note_.c_str());
  ::close(std::exchange(descriptor_, -1));
  failed = bringFolderToDisk(folderOfPath(place_));
  return failed != 0 ? failure(failed) : nullptr;
}

PartialFile::~PartialFile() {
  if (descriptor_ < 0) return;
  if (validator_.empty() || length_ == 0) {
    ::unlink(note_.c_str());
    ::unlink(path_.c_str());
  } else if (noted_ != length_) {
    try {
      [[maybe_unused]] const int ignored = writeNote();
    } catch (const std::bad_alloc&) {  // the older note stays valid, as after any failure
    }
  }
  ::close(descriptor_);
}

Ref<Error> PartialFile::failure(int errorNumber) const {
  return fileError(FileUse::creating, *file_, errorNumber);
}

}  // namespace tq::detail
