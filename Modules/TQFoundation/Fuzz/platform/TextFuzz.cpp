// Reads two lines of any bytes as UTF-8, base64 and URLs, and compares them. What was read must
// stay the same when it is written and read again.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/platform/text/Base64.h>
#include <TQFoundation/platform/text/Collation.h>
#include <TQFoundation/platform/text/URLResolution.h>

#include "../support/Bytes.h"

namespace {

using namespace tq;
using fuzz::require;

void checkUTF8(std::string_view text) {
  const Ref<String> repaired = String::stringWithUTF8Repaired(text);
  require(repaired->isWellFormed());
  const Ref<String> strict = String::stringWithUTF8(text);
  require((strict != nullptr) == (repaired->view() == text));
  const Ref<String> lenient = String::stringWithGeneralisedUTF8(text);
  require(lenient != nullptr || strict == nullptr);
  for (const Ref<String>& string : {repaired, lenient}) {
    if (string) require(String::stringWithUTF16(string->utf16())->isEqual(*string));
  }
}

void checkBase64(std::string_view text) {
  const auto bytes = std::as_bytes(std::span(text));
  const Ref<Data> decoded = dataFromBase64(base64FromBytes(bytes));
  require(decoded != nullptr && std::ranges::equal(decoded->bytes(), bytes));
  const Ref<Data> data = dataFromBase64(text);
  if (data) require(dataFromBase64(base64FromBytes(data->bytes()))->isEqual(*data));
}

void checkURL(const URL& url) {
  if (url.path().find('\0') != std::string::npos) return;  // its text is refused
  const Ref<URL> again = URL::URLWithString(url.absoluteString());
  require(again != nullptr && again->isEqual(url));
  require(url.path().ends_with(url.lastPathComponent()) || url.path().ends_with('/') ||
          !url.isFileURL());
}

void checkURLs(std::string_view first, std::string_view second) {
  const Ref<URL> base = URL::URLWithString(first);
  if (!base) return;
  checkURL(*base);
  const Ref<URL> resolved = URLWithString(second, base.get());
  if (!resolved) return;
  checkURL(*resolved);
  if (resolved->isFileURL()) return;  // "%2F" was decoded: dot segments may have come into being
  const Ref<URL> again = URLWithString(resolved->absoluteString(), base.get());
  require(again != nullptr && again->isEqual(*resolved));
}

std::string_view takeLine(std::string_view& lines) {
  const std::string_view line = lines.substr(0, lines.find('\n'));
  lines.remove_prefix(std::min(lines.size(), line.size() + 1));
  return line;
}

void checkOrder(std::string_view a, std::string_view b, std::string_view c) {
  const std::string_view texts[] = {a, b, c};
  int before[] = {0, 0, 0};  // how many are before each
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      const int order = localizedStandardCompare(texts[i], texts[j]);
      require((order == 0) == (texts[i] == texts[j]));
      before[i] += order > 0 ? 1 : 0;
    }
  }
  for (std::size_t i = 0; i < 3; ++i) {
    for (std::size_t j = 0; j < 3; ++j) {
      require((before[i] < before[j]) == (localizedStandardCompare(texts[i], texts[j]) < 0));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view lines(reinterpret_cast<const char*>(data), size);
  const std::string_view first = takeLine(lines);
  const std::string_view second = takeLine(lines);
  checkUTF8(first);
  checkBase64(first);
  checkURLs(first, second);
  checkOrder(first, second, lines);
  return 0;
}
