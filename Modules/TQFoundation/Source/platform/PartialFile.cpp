#include <TQFoundation/platform/detail/PartialFile.h>

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <utility>

#include <TQFoundation/objects/Data.h>
#include <TQFoundation/platform/Base64.h>
#include <TQFoundation/platform/Digest.h>
#include <TQFoundation/platform/FileReading.h>
#include <TQFoundation/platform/FileServices.h>
#include <TQFoundation/platform/detail/FileError.h>
#include <TQFoundation/platform/detail/SafeFile.h>

namespace tq::detail {
namespace {

constexpr std::int64_t kNoteEvery = std::int64_t{16} << 20;  // bytes that a power cut may cost
constexpr std::string_view kHeading = "partial download 1";

/// The text up to the line's end, which is taken off `rest`.
std::string_view nextLine(std::string_view& rest) {
  const std::string_view line = rest.substr(0, rest.find('\n'));
  rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  return line;
}

bool isSameFile(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
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
      note_(URL::fileURLWithPath(path_ + "-note")),
      source_(digestOf(source)) {}

std::unique_ptr<PartialFile> PartialFile::open(const URL& file, std::string_view source,
                                               Ref<Error>* error) {
  if (!hasPath(file)) {
    setOutError(error, fileError(FileUse::writing, file, EINVAL));
    return nullptr;
  }
  std::unique_ptr<PartialFile> partial(new PartialFile(file, source));
  struct stat before {};
  int failure = lookAtPredecessor(partial->place_, before);
  if (failure == 0) failure = partial->openLocked();
  if (failure == 0) failure = partial->readNote();
  if (failure == 0) return partial;
  setOutError(error, partial->failure(failure));
  return nullptr;
}

// Whoever holds the lock may put the file in its place: then the name leads to another file, or to
// none, by the time that we get the lock.
int PartialFile::openLocked() {
  for (;;) {
    constexpr mode_t kByUmask = 0666;
    descriptor_ = ::open(path_.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, kByUmask);
    if (descriptor_ < 0) return errno;
    struct stat opened {};
    struct stat named {};
    int failure = ::flock(descriptor_, LOCK_EX | LOCK_NB) == 0 ? 0 : errno;
    if (failure == 0 && ::fstat(descriptor_, &opened) != 0) failure = errno;
    if (failure == 0 && !S_ISREG(opened.st_mode)) failure = EINVAL;
    if (failure == 0 && ::lstat(path_.c_str(), &named) == 0 && isSameFile(opened, named)) return 0;
    ::close(std::exchange(descriptor_, -1));
    if (failure != 0) return failure;
  }
}

int PartialFile::readNote() {
  const Ref<Data> note = dataWithContentsOfURL(*note_);
  std::string_view rest = note != nullptr ? note->view() : std::string_view();
  const bool isOurs = nextLine(rest) == kHeading && nextLine(rest) == source_ && !source_.empty();
  const std::string_view validator = nextLine(rest);
  const std::string_view digits = nextLine(rest);
  std::int64_t noted = 0;
  std::from_chars(digits.data(), digits.data() + digits.size(), noted);
  struct stat status {};
  if (::fstat(descriptor_, &status) != 0) return errno;
  if (!isOurs || validator.empty() || noted <= 0 || noted > status.st_size) return cut(0);
  validator_ = validator;
  noted_ = noted;
  return cut(noted);
}

int PartialFile::cut(std::int64_t length) {
  if (::ftruncate(descriptor_, length) != 0 || ::lseek(descriptor_, length, SEEK_SET) < 0) {
    return errno;
  }
  length_ = length;
  return 0;
}

bool PartialFile::writeNote(Ref<Error>* error) {
  const std::string note = std::string(kHeading) + '\n' + source_ + '\n' + validator_ + '\n' +
                           std::to_string(length_) + '\n';
  if (::fdatasync(descriptor_) != 0) {
    setOutError(error, failure(errno));
    return false;
  }
  if (!replaceFile(*note_, std::as_bytes(std::span(note)), error)) return false;
  noted_ = length_;
  return true;
}

Ref<Error> PartialFile::beginAnew(std::string_view validator) {
  validator_ = validator;
  if (const int failed = cut(0); failed != 0) return failure(failed);
  Ref<Error> error;
  if (!validator_.empty()) return writeNote(&error) ? nullptr : error;
  // An older note would claim the first bytes of this body for another one.
  const int failed = ::unlink(note_->path().c_str()) == 0 ? bringFolderToDisk(folderOfPath(place_))
                     : errno == ENOENT                    ? 0
                                                          : errno;
  return failed != 0 ? failure(failed) : nullptr;
}

Ref<Error> PartialFile::append(std::span<const std::byte> bytes) {
  if (const int failed = writeAll(descriptor_, bytes); failed != 0) {
    // What was written of the piece is not counted, and cut off again.
    [[maybe_unused]] const int ignored = cut(length_);
    return failure(failed);
  }
  length_ += static_cast<std::int64_t>(bytes.size());
  Ref<Error> error;
  if (!validator_.empty() && length_ - noted_ >= kNoteEvery && !writeNote(&error)) return error;
  return nullptr;
}

Ref<Error> PartialFile::finish() {
  struct stat before {};
  int failed = lookAtPredecessor(place_, before);
  if (failed == 0) failed = takeAfter(descriptor_, before);
  if (failed == 0) failed = moveIntoPlace(descriptor_, path_, place_);
  if (failed != 0) return failure(failed);
  ::unlink(note_->path().c_str());
  ::close(std::exchange(descriptor_, -1));
  failed = bringFolderToDisk(folderOfPath(place_));
  return failed != 0 ? failure(failed) : nullptr;
}

PartialFile::~PartialFile() {
  if (descriptor_ < 0) return;
  if (validator_.empty() || length_ == 0) {
    ::unlink(note_->path().c_str());
    ::unlink(path_.c_str());
  } else if (noted_ != length_) {
    [[maybe_unused]] const bool ignored = writeNote(nullptr);  // the older note stands then
  }
  ::close(descriptor_);
}

Ref<Error> PartialFile::failure(int errorNumber) const {
  return fileError(FileUse::writing, *file_, errorNumber);
}

}  // namespace tq::detail
