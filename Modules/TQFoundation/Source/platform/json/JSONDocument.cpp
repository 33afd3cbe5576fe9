#include <TQFoundation/platform/json/JSONDocument.h>

#include <simdjson.h>
#include <sys/mman.h>

#include <charconv>
#include <new>
#include <string>

#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/UTF.h>
#include <TQFoundation/platform/json/detail/JSONFault.h>

namespace tq {

static_assert(Data::kReadablePadding >= simdjson::SIMDJSON_PADDING);

struct JSONDocument::Parser {
  simdjson::dom::parser parser;
};

namespace {

std::string_view viewOf(std::span<const std::byte> bytes) noexcept {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Asks for large pages below the parser's buffers, most of whose cost for a large text is the
/// system's handing over of small ones. Only a request: nothing depends on it.
void preferLargePages(const void* memory, std::size_t byteCount) noexcept {
  constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20;
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t first = (begin + kLargePage - 1) & ~(kLargePage - 1);
  const std::uintptr_t last = (begin + byteCount) & ~(kLargePage - 1);
  if (first < last) ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

/// Counts brackets outside of strings; text that is not JSON gives some answer.
bool isWithinDepthLimit(std::string_view text) noexcept {
  std::size_t depth = 0;
  bool inString = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '"') inString = !inString;
    if (inString) {
      if (c == '\\') ++i;
    } else if (c == '[' || c == '{') {
      if (++depth > JSONDocument::kDepthLimit) return false;
    } else if ((c == ']' || c == '}') && depth != 0) {
      --depth;
    }
  }
  return true;
}

simdjson::error_code parseInto(simdjson::dom::parser& parser, std::string_view text,
                               std::size_t readablePadding) {
  if (text.empty()) return simdjson::EMPTY;
  const bool copies = readablePadding < simdjson::SIMDJSON_PADDING;
  const auto parseWithin = [&](std::size_t depth) {
    if (const auto error = parser.allocate(text.size(), depth)) return error;
    if (const auto error = parser.doc.allocate(text.size())) return error;
    preferLargePages(parser.doc.tape.get(), text.size() * sizeof(std::uint64_t));
    preferLargePages(parser.doc.string_buf.get(), text.size());
    preferLargePages(parser.implementation->structural_indexes.get(),
                     text.size() * sizeof(std::uint32_t));
    return parser.parse(text.data(), text.size(), copies).error();
  };
  // The parser counts containers that hold something, and takes one fewer of them than it is told;
  // an empty one it does not count. So the innermost level needs a second look.
  const auto error = parseWithin(JSONDocument::kDepthLimit);
  if (error != simdjson::DEPTH_ERROR || !isWithinDepthLimit(text)) return error;
  return parseWithin(JSONDocument::kDepthLimit + 1);
}

/// Where the digits of the integer literal at `at` end, or `at` for any other number or character.
std::size_t endOfInteger(std::string_view text, std::size_t at) noexcept {
  std::size_t end = at + (text[at] == '-' ? 1 : 0);
  const std::size_t firstDigit = end;
  while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
  const bool goesOn =
      end < text.size() && (text[end] == '.' || text[end] == 'e' || text[end] == 'E');
  return end == firstDigit || goesOn ? at : end;
}

bool fitsIn64Bits(std::string_view literal) noexcept {
  std::int64_t integer;
  std::uint64_t natural;
  const char* end = literal.data() + literal.size();
  return std::from_chars(literal.data(), end, integer).ec == std::errc() ||
         std::from_chars(literal.data(), end, natural).ec == std::errc();
}

/// The text with ".0" behind every integer beyond 64 bits, which the parser refuses as an integer
/// but reads as a double; none when there is no such integer.
std::optional<std::string> withWideIntegersAsDoubles(std::string_view text) {
  std::string result;
  std::size_t copied = 0;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == '"') {
      for (++i; i < text.size() && text[i] != '"'; ++i) {
        if (text[i] == '\\') ++i;
      }
      ++i;
      continue;
    }
    const bool startsNumber = text[i] == '-' || (text[i] >= '0' && text[i] <= '9');
    if (!startsNumber) {
      ++i;
      continue;
    }
    const std::size_t end = endOfInteger(text, i);
    if (end != i && !fitsIn64Bits(text.substr(i, end - i))) {
      result.append(text.substr(copied, end - copied)).append(".0");
      copied = end;
    }
    i = end == i ? text.find_first_not_of("0123456789+-.eE", i) : end;
  }
  if (copied == 0) return std::nullopt;
  return result.append(text.substr(copied));
}

Ref<Error> errorFor(std::string_view text, std::size_t textOffset) {
  detail::JSONFault fault = detail::findJSONFault(text, JSONDocument::kDepthLimit);
  if (const auto malformed = detail::firstMalformedByte(text)) {
    if (fault.index >= *malformed || fault.message == "Invalid value") {
      fault = {"Malformed UTF-8", *malformed};
    }
  }
  const std::size_t index = fault.index + textOffset;
  const std::string debugText = fault.message + " around character " + std::to_string(index) + ".";
  return Error::errorWithDomain(
      CocoaErrorDomain, 3840,
      Dictionary::dictionaryWithEntries(
          {{DebugDescriptionKey, String::of(debugText)},
           {JSONDocument::kErrorIndexKey, Number::numberWith(static_cast<std::int64_t>(index))}}));
}

}  // namespace

JSONDocument::JSONDocument(std::unique_ptr<Parser> parser) noexcept : parser_(std::move(parser)) {}
JSONDocument::JSONDocument(JSONDocument&&) noexcept = default;
JSONDocument& JSONDocument::operator=(JSONDocument&&) noexcept = default;
JSONDocument::~JSONDocument() = default;

std::optional<JSONDocument> JSONDocument::parse(std::span<const std::byte> bytes,
                                                std::size_t readablePadding, Ref<Error>* error) {
  std::string_view text = viewOf(bytes);
  const std::size_t mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  text.remove_prefix(mark);

  auto parser = std::make_unique<Parser>();
  simdjson::error_code fault = parseInto(parser->parser, text, readablePadding);
  if (fault == simdjson::NUMBER_ERROR) {
    if (const auto widened = withWideIntegersAsDoubles(text)) {
      fault = parseInto(parser->parser, *widened, 0);
    }
  }
  if (fault == simdjson::MEMALLOC) throw std::bad_alloc();
  if (fault != simdjson::SUCCESS) {
    setOutError(error, errorFor(text, mark));
    return std::nullopt;
  }
  return JSONDocument(std::move(parser));
}

JSONNode JSONDocument::root() const noexcept {
  const simdjson::dom::document& document = parser_->parser.doc;
  const std::uint64_t* tape = document.tape.get();
  return {tape, tape + 1, document.string_buf.get()};  // word 0 stands for the document
}

}  // namespace tq
