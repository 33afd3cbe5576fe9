#include "Files/Drawing.h"

#include <array>
#include <cerrno>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

#include "Files/Gzip.h"
#include "Svg/Scanner.h"

namespace tqdoc {
namespace {

[[nodiscard]] tq::Ref<tq::Error> tooLarge(const std::string& path) {
  return errorWith(path + ": larger than 256 MiB");
}

[[nodiscard]] tq::Ref<tq::Data> readStandardInput(tq::Ref<tq::Error>* error) {
  std::vector<std::byte> bytes;
  std::array<char, 1 << 16> block;
  while (std::cin.read(block.data(), block.size()), std::cin.gcount() > 0) {
    const auto more =
        std::as_bytes(std::span(block)).first(static_cast<std::size_t>(std::cin.gcount()));
    bytes.insert(bytes.end(), more.begin(), more.end());
    if (bytes.size() > kFileLimit) {
      tq::setOutError(error, tooLarge("standard input"));
      return nullptr;
    }
  }
  return tq::Data::dataWithBytes(bytes);
}

/// The first bytes of a container always include a zero byte, those of text never do.
[[nodiscard]] bool isContainer(const tq::Data& bytes) {
  constexpr std::size_t kSmallest = 18;
  return bytes.length() >= kSmallest && bytes.bytes()[4] == std::byte{0};
}

/// Returns the features that were ignored when the drawing was imported.
[[nodiscard]] Features unsupportedIn(const Document& document) {
  Features features;
  for (const auto [name, count] : document.unsupported()) {
    const auto* number = tq::objectCast<tq::Number>(&count);
    if (number == nullptr || number->integerValue() < 0) continue;
    features.try_emplace(name.description(), static_cast<std::size_t>(number->integerValue()));
  }
  return features;
}

/// Describes content that was not read, by its first place. Very long places are not listed.
[[nodiscard]] std::string unreadText(const tq::UnreadContent& unread) {
  std::string text = "contains what cannot be read here, perhaps from a newer version";
  if (unread.entries().empty()) return text;
  const auto& [kind, className, member, path, count] = unread.entries().front();
  const bool isObject = kind != tq::UnreadContent::Kind::member && !className.empty();
  text += ": " + path + (isObject ? " (" + className + ")" : "");
  return text + (unread.count() > 1 ? ", and " + std::to_string(unread.count() - 1) + " more" : "");
}

/// Returns whether the path is a device, a pipe or standard output, which cannot be replaced.
[[nodiscard]] bool isStream(const std::string& path) {
  using enum std::filesystem::file_type;
  std::error_code ignored;
  const auto type = std::filesystem::status(path, ignored).type();
  return path == kStandardStream || type == character || type == fifo;
}

}  // namespace

tq::Ref<tq::Data> readFile(const std::string& path, tq::Ref<tq::Error>* error) {
  if (path == kStandardStream) return readStandardInput(error);
  std::error_code fault;
  const std::filesystem::file_status status = std::filesystem::status(path, fault);
  if (status.type() == std::filesystem::file_type::directory) {
    const std::filesystem::directory_iterator listed(path, fault);
    if (!fault) fault.assign(EISDIR, std::generic_category());
  }
  if (fault) {
    tq::setOutError(error, errorWith(path + ": " + fault.message()));
    return nullptr;
  }
  if (std::filesystem::file_size(path, fault) > kFileLimit && !fault) {
    tq::setOutError(error, tooLarge(path));
    return nullptr;
  }
  tq::Ref<tq::Error> reason;
  auto bytes = tq::dataWithContentsOfURL(*tq::URL::fileURLWithPath(path), &reason);
  if (!bytes) {
    tq::setOutError(error, errorWith(path + ": " + reason->localizedDescription()));
  }
  return bytes;
}

SvgDrawing openDrawing(const std::string& path, tq::Ref<tq::Error>* error) {
  return openDrawing(readFile(path, error), path, error);
}

SvgDrawing openDrawing(tq::Ref<const tq::Data> bytes, const std::string& path,
                       tq::Ref<tq::Error>* error) {
  if (bytes && tq::isGzipped_tq(*bytes)) bytes = archiveText(bytes, path, error);
  if (!bytes) return {};
  const bool isText = path == kStandardStream && trimmed(bytes->view()).starts_with('{');
  if (isArchive(path) || isText) {
    auto document = openArchive(*bytes, path, error);
    Features leftOut = document ? unsupportedIn(*document) : Features();
    return {std::move(document), std::move(leftOut)};
  }
  return readSvg(bytes->bytes(), path, error);
}

tq::Ref<const tq::Data> archiveText(tq::Ref<const tq::Data> bytes, const std::string& path,
                                    tq::Ref<tq::Error>* error) {
  const bool isGzip = tq::isGzipped_tq(*bytes);
  if (!isGzip && !isContainer(*bytes)) return bytes;
  tq::Ref<tq::Error> exceeded;
  tq::Ref<const tq::Data> text =
      isGzip ? contentOfGzip(*bytes, kFileLimit, &exceeded)
             : tq::dataByDecompressing_tq(*bytes, {.decompressedBytes = kFileLimit}, &exceeded);
  if (!text) {
    tq::setOutError(error, errorWith(path + (exceeded ? ": decompresses to more than 256 MiB"
                                                      : ": damaged, cannot be decompressed")));
  }
  return text;
}

tq::Ref<Document> openArchive(const tq::Data& bytes, const std::string& path,
                              tq::Ref<tq::Error>* error) {
  const auto text = archiveText(tq::Ref<const tq::Data>(&bytes), path, error);
  if (!text) return nullptr;
  const auto decoder = tq::TQJSONDecoder::initWithData(*text);
  decoder->setListsUnreadContent(true);
  tq::Ref<tq::Error> reason;
  auto document = tq::refCast<Document>(decoder->decode(&reason));
  if (document && !reason && decoder->unreadContent().isEmpty()) return document;
  tq::setOutError(error, errorWith(path + ": " +
                                   (reason     ? reason->localizedDescription()
                                    : document ? unreadText(decoder->unreadContent())
                                               : "not an archive of a drawing")));
  return nullptr;
}

bool saveArchive(const Document& document, const std::string& path, Packing packing,
                 tq::Ref<tq::Error>* error) {
  tq::Ref<tq::Error> reason;
  if (packing == Packing::none && !isStream(path)) {
    if (tq::TQJSONEncoder::saveObject(document, *tq::URL::fileURLWithPath(path), &reason)) {
      return true;
    }
    tq::setOutError(error, errorWith(path + ": " + reason->localizedDescription()));
    return false;
  }
  tq::Ref<const tq::Data> bytes = tq::TQJSONEncoder::encodeObjectAsData(document, &reason);
  if (bytes && packing == Packing::gzip) {
    bytes = tq::dataByCompressingWithAlgorithm_tq(*bytes, tq::TQCompressionAlgorithm::deflate);
    if (!bytes) throw std::bad_alloc();
  }
  if (bytes) return saveFile(path, bytes->bytes(), error);
  tq::setOutError(error, errorWith(path + ": " + reason->localizedDescription()));
  return false;
}

bool saveFile(const std::string& path, std::span<const std::byte> bytes,
              tq::Ref<tq::Error>* error) {
  if (isStream(path)) {
    std::ofstream device;
    if (path != kStandardStream) device.open(path, std::ios::binary);
    std::ostream& stream = path == kStandardStream ? std::cout : device;
    stream.write(reinterpret_cast<const char*>(bytes.data()),
                 static_cast<std::streamsize>(bytes.size()));
    if (stream.flush()) return true;
    tq::setOutError(error, errorWith(path + ": cannot write all data"));
    return false;
  }
  tq::Ref<tq::Error> reason;
  if (tq::replaceFile(*tq::URL::fileURLWithPath(path), bytes, &reason)) return true;
  tq::setOutError(error, errorWith(path + ": " + reason->localizedDescription()));
  return false;
}

bool isArchive(const std::string& path) { return path.ends_with(".tqdoc"); }

tq::Ref<tq::Error> errorWith(const std::string& text) {
  return tq::Error::errorWithDomain("com.korvan.tqdoc", 3,
                                    tq::String::stringWithUTF8Repaired(text)->view());
}

std::string exceptionText() {
  try {
    throw;
  } catch (const std::bad_alloc&) {
    return "out of memory";
  } catch (const std::exception& fault) {
    return fault.what();
  }
}

tq::Ref<tq::Error> errorOfException(const std::string& path) {
  return errorWith(path + ": " + exceptionText());
}

}  // namespace tqdoc
