#include "Files/Drawing.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <utility>

namespace tqdoc {
namespace {

[[nodiscard]] tq::Ref<tq::Data> readFile(const std::string& path, tq::Ref<tq::Error>* error) {
  std::error_code ignored;
  if (std::filesystem::file_size(path, ignored) > kFileLimit && !ignored) {
    tq::setOutError(error, errorWith(path + ": larger than 256 MiB"));
    return nullptr;
  }
  tq::Ref<tq::Error> reason;
  auto bytes = tq::dataWithContentsOfURL(*tq::URL::fileURLWithPath(path), &reason);
  if (!bytes) {
    tq::setOutError(error, errorWith(path + ": " + reason->localizedDescription()));
  }
  return bytes;
}

/// A new file beside `path`, removed again unless it is put in its place.
class Replacement {
 public:
  explicit Replacement(const std::string& path) : path_(path), temporary_(path + ".XXXXXX") {
    descriptor_ = ::mkstemp(temporary_.data());
    if (descriptor_ < 0) return;
    const ::mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(descriptor_, 0666 & ~mask);
  }
  ~Replacement() {
    if (descriptor_ >= 0) ::unlink(temporary_.c_str());
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  /// -1 when the file could not be made; errno says why.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

  [[nodiscard]] bool putInPlace() noexcept {
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) return false;
    descriptor_ = -1;
    return true;
  }

 private:
  std::string path_;
  std::string temporary_;
  int descriptor_ = -1;
};

[[nodiscard]] tq::Ref<tq::Error> systemError(const std::string& path) {
  return errorWith(path + ": " + std::generic_category().message(errno));
}

}  // namespace

SvgDrawing openDrawing(const std::string& path, tq::Ref<tq::Error>* error) {
  const auto bytes = readFile(path, error);
  if (!bytes) return {};
  if (isArchive(path)) return {openArchive(*bytes, path, error), {}};
  return readSvg(bytes->bytes(), path, error);
}

tq::Ref<Document> openArchive(const tq::Data& bytes, const std::string& path,
                              tq::Ref<tq::Error>* error) {
  tq::Ref<tq::Error> reason;
  auto document = tq::refCast<Document>(tq::TQJSONDecoder::decodeData(bytes, &reason));
  if (document && !reason) return document;
  tq::setOutError(
      error, errorWith(path + ": " +
                       (reason ? reason->localizedDescription() : "not an archive of a drawing")));
  return nullptr;
}

bool saveArchive(const Document& document, const std::string& path, tq::Ref<tq::Error>* error) {
  Replacement file(path);
  if (file.descriptor() < 0) {
    tq::setOutError(error, systemError(path));
    return false;
  }
  auto handle = tq::FileHandle::fileHandleWithFileDescriptor(file.descriptor(), true);
  tq::Ref<tq::Error> reason;
  if (!tq::TQJSONEncoder::encodeObject(document, handle, &reason)) {
    tq::setOutError(error, errorWith(path + ": " + reason->localizedDescription()));
    return false;
  }
  handle->closeFile();
  if (!file.putInPlace()) {
    tq::setOutError(error, systemError(path));
    return false;
  }
  return true;
}

bool isArchive(const std::string& path) { return path.ends_with(".tqdoc"); }

tq::Ref<tq::Error> errorWith(const std::string& text) {
  return tq::Error::errorWithDomain("com.korvan.tqdoc", 3,
                                    tq::String::stringWithUTF8Repaired(text)->view());
}

}  // namespace tqdoc
