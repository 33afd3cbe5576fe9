#include "Files/Drawing.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <span>
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
    if (descriptor_ < 0) return;
    ::close(descriptor_);
    ::unlink(temporary_.c_str());
  }
  Replacement(const Replacement&) = delete;
  Replacement& operator=(const Replacement&) = delete;

  /// -1 when the file could not be made; errno says why.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }

  [[nodiscard]] bool putInPlace() noexcept {
    if (std::rename(temporary_.c_str(), path_.c_str()) != 0) return false;
    ::close(std::exchange(descriptor_, -1));
    return true;
  }

 private:
  std::string path_;
  std::string temporary_;
  int descriptor_ = -1;
};

[[nodiscard]] tq::Ref<tq::Error> systemError() {
  return errorWith(std::generic_category().message(errno));
}

/// Text never has U+0000 among its first bytes; a container always does.
[[nodiscard]] bool isContainer(const tq::Data& bytes) {
  constexpr std::size_t kSmallest = 18;
  return bytes.length() >= kSmallest && bytes.bytes()[4] == std::byte{0};
}

/// What the container says it unpacks to.
[[nodiscard]] std::uint32_t unpackedLength(const tq::Data& bytes) {
  std::uint32_t length = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    const auto byte = std::to_integer<std::uint32_t>(bytes.bytes()[bytes.length() - 4 + i]);
    length |= byte << (8 * i);
  }
  return length;
}

[[nodiscard]] bool writePacked(const Document& document, int descriptor,
                               tq::Ref<tq::Error>* error) {
  tq::Ref<const tq::Data> bytes = tq::TQJSONEncoder::encodeObjectAsData(document, error);
  if (!bytes) return false;
  bytes = tq::dataByCompressingWithAlgorithm_tq(*bytes, tq::TQCompressionAlgorithm::deflate);
  if (!bytes) throw std::bad_alloc();
  for (auto rest = bytes->bytes(); !rest.empty();) {
    const tq::WriteResult result = tq::writeOnce(descriptor, rest);
    if (result.count < 0 && result.errorNumber != EINTR) {
      tq::setOutError(error, errorWith(std::generic_category().message(result.errorNumber)));
      return false;
    }
    rest = rest.subspan(static_cast<std::size_t>(std::max<std::ptrdiff_t>(result.count, 0)));
  }
  return true;
}

[[nodiscard]] bool write(const Document& document, int descriptor, Packing packing,
                         tq::Ref<tq::Error>* error) {
  if (packing == Packing::gzip) return writePacked(document, descriptor, error);
  const auto handle = tq::FileHandle::fileHandleWithFileDescriptor(descriptor);
  return tq::TQJSONEncoder::encodeObject(document, handle, error);
}

}  // namespace

SvgDrawing openDrawing(const std::string& path, tq::Ref<tq::Error>* error) {
  const auto bytes = readFile(path, error);
  if (!bytes) return {};
  if (isArchive(path)) return {openArchive(*bytes, path, error), {}};
  return readSvg(bytes->bytes(), path, error);
}

tq::Ref<const tq::Data> archiveText(tq::Ref<const tq::Data> bytes, const std::string& path,
                                    tq::Ref<tq::Error>* error) {
  if (!isContainer(*bytes)) return bytes;
  if (unpackedLength(*bytes) > kFileLimit) {
    tq::setOutError(error, errorWith(path + ": unpacks to more than 256 MiB"));
    return nullptr;
  }
  tq::Ref<const tq::Data> text = tq::dataByDecompressing_tq(*bytes);
  if (!text) tq::setOutError(error, errorWith(path + ": damaged, cannot be unpacked"));
  return text;
}

tq::Ref<Document> openArchive(const tq::Data& bytes, const std::string& path,
                              tq::Ref<tq::Error>* error) {
  const auto text = archiveText(tq::Ref<const tq::Data>(&bytes), path, error);
  if (!text) return nullptr;
  tq::Ref<tq::Error> reason;
  auto document = tq::refCast<Document>(tq::TQJSONDecoder::decodeData(*text, &reason));
  if (document && !reason) return document;
  tq::setOutError(
      error, errorWith(path + ": " +
                       (reason ? reason->localizedDescription() : "not an archive of a drawing")));
  return nullptr;
}

bool saveArchive(const Document& document, const std::string& path, Packing packing,
                 tq::Ref<tq::Error>* error) {
  Replacement file(path);
  tq::Ref<tq::Error> reason;
  if (file.descriptor() < 0) {
    reason = systemError();
  } else if (write(document, file.descriptor(), packing, &reason)) {
    if (file.putInPlace()) return true;
    reason = systemError();
  }
  tq::setOutError(error, errorWith(path + ": " + reason->localizedDescription()));
  return false;
}

bool isArchive(const std::string& path) { return path.ends_with(".tqdoc"); }

tq::Ref<tq::Error> errorWith(const std::string& text) {
  return tq::Error::errorWithDomain("com.korvan.tqdoc", 3,
                                    tq::String::stringWithUTF8Repaired(text)->view());
}

}  // namespace tqdoc
