#include <TQFoundation/objects/ReadingLimits.h>

namespace tq {
namespace {

std::string_view textOf(ReadingLimit limit) noexcept {
  switch (limit) {
    case ReadingLimit::textBytes:
      return "The text is too long to be read.";
    case ReadingLimit::values:
      return "The document has too many values to be read.";
    case ReadingLimit::depth:
      return "The objects of the archive nest too deeply to be read.";
    case ReadingLimit::unfoldedPerByte:
      return "The archive refers to its objects too often: written out in full, it would be many "
             "times as large.";
    case ReadingLimit::decompressedBytes:
      return "The data expands to more bytes than are accepted.";
  }
  return {};
}

}  // namespace

Ref<Error> readingLimitError(ReadingLimit limit) {
  return Error::errorWithDomain(ReadingLimitsError, static_cast<std::int64_t>(limit),
                                textOf(limit));
}

}  // namespace tq
