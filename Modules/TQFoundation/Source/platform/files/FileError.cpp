#include <TQFoundation/platform/files/FileError.h>

#include <errno.h>

#include <string>

#include <TQFoundation/objects/String.h>

namespace tq::detail {
namespace {

struct Known {
  int errorNumber;
  int readingCode;
  int writingCode;
};
constexpr int kReadUnknown = 256;
constexpr int kWriteUnknown = 512;
constexpr Known kKnown[] = {
    {ENOENT, 260, 4},
    {EACCES, 257, 513},
    {EPERM, 257, 513},
    {ENAMETOOLONG, 258, 514},
    {EEXIST, kReadUnknown, 516},
    {ENOSPC, kReadUnknown, 640},
    {EDQUOT, kReadUnknown, 640},
    {EROFS, kReadUnknown, 642},
    {EFBIG, 263, kWriteUnknown},
};

int codeOf(FileUse use, int errorNumber) noexcept {
  for (const Known& known : kKnown) {
    if (known.errorNumber == errorNumber) {
      return use == FileUse::reading ? known.readingCode : known.writingCode;
    }
  }
  return use == FileUse::reading ? kReadUnknown : kWriteUnknown;
}

std::string textOf(FileUse use, int code, const URL& url) {
  const std::string name = "“" + std::string(url.lastPathComponent()) + "”";
  const std::string parent = url.path().substr(0, url.path().find_last_not_of('/') + 1);
  const Ref<URL> folder = URL::fileURLWithPath(parent.substr(0, parent.rfind('/') + 1));
  const std::string folderName = "“" + std::string(folder->lastPathComponent()) + "”";
  switch (code) {
    case 4:
      return use == FileUse::creating ? "The folder " + folderName + " doesn’t exist."
                                      : "The file " + name + " doesn’t exist.";
    case 257:
      return "The file " + name +
             " couldn’t be opened because you don’t have permission to view it.";
    case 258:
    case 514:
      return "The file name " + name + " is invalid.";
    case 260:
      return "The file " + name + " couldn’t be opened because there is no such file.";
    case 263:
      return "The file " + name + " couldn’t be opened because it is too large.";
    case 513:
      return "You don’t have permission to save the file " + name + " in the folder " + folderName +
             ".";
    case 516:
      return "The file " + name +
             " couldn’t be saved because a file with the same name already exists.";
    case 640:
      return "You can’t save the file " + name + " because the volume is out of space.";
    case 642:
      return "You can’t save the file " + name + " because the volume is read only.";
    case kReadUnknown:
      return "The file " + name + " couldn’t be opened.";
    default:
      return "The file " + name + " couldn’t be saved in the folder " + folderName + ".";
  }
}

}  // namespace

Ref<Error> fileError(FileUse use, const URL& url, int errorNumber) {
  return fileError(use, url, errorNumber, textOf(use, codeOf(use, errorNumber), url));
}

Ref<Error> fileError(FileUse use, const URL& url, int errorNumber, std::string_view description) {
  return Error::errorWithDomain(
      CocoaErrorDomain, codeOf(use, errorNumber),
      Dictionary::dictionaryWithEntries(
          {{LocalizedDescriptionKey, String::stringWithUTF8Repaired(description)},
           {FilePathKey, String::stringWithUTF8Repaired(url.path())},
           {UnderlyingErrorKey, Error::errorWithDomain(POSIXErrorDomain, errorNumber)}}));
}

}  // namespace tq::detail
