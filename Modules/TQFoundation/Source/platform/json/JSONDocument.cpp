#include <TQFoundation/platform/json/JSONDocument.h>

#include <simdjson.h>
#include <sys/mman.h>

#include <new>
#include <string>

#include <TQFoundation/base/NumberText.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/UTF.h>
#include <TQFoundation/platform/json/JSONText.h>

namespace tq {

static_assert(Data::kReadablePadding >= simdjson::SIMDJSON_PADDING);

struct JSONDocument::Tape {
  simdjson::dom::document document;
};

namespace {

std::string_view viewOf(std::span<const std::byte> bytes) noexcept {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// Advises the kernel to back the parser's buffers with large pages: for a large text, page faults
/// are most of their cost. A failure is ignored.
void preferLargePages(const void* memory, std::size_t byteCount) noexcept {
  constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20;
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t first = (begin + kLargePage - 1) & ~(kLargePage - 1);
  const std::uintptr_t last = (begin + byteCount) & ~(kLargePage - 1);
  if (first < last) ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

/// Parses `text` into the parser's tape.
///
/// The parser counts only containers that are not empty, and accepts one level fewer than
/// `parserDepth`. An empty container at the innermost level is not counted.
simdjson::error_code parseInto(simdjson::dom::parser& parser, std::string_view text,
                               std::size_t readablePadding, std::size_t parserDepth) {
  if (text.empty()) return simdjson::EMPTY;
  const bool copies = readablePadding < simdjson::SIMDJSON_PADDING;
  simdjson::error_code error = parser.allocate(text.size(), parserDepth);
  if (!error) error = parser.doc.allocate(text.size());
  if (!error) {
    preferLargePages(parser.doc.tape.get(), text.size() * sizeof(std::uint64_t));
    preferLargePages(parser.doc.string_buf.get(), text.size());
    preferLargePages(parser.implementation->structural_indexes.get(),
                     text.size() * sizeof(std::uint32_t));
    error = parser.parse(text.data(), text.size(), copies).error();
  }
  if (error == simdjson::MEMALLOC) throw std::bad_alloc();
  return error;
}

/// Returns the text with each of these numbers replaced by seventeen digits of its double, which
/// the parser reads as the same double.
std::string withShortNumbers(std::string_view text, std::span<const detail::JSONLiteral> numbers) {
  std::string result;
  std::size_t copied = 0;
  for (const auto [begin, end] : numbers) {
    result.append(text.substr(copied, begin - copied));
    char digits[kNumberTextCapacity];
    const char* last = writeDouble17(digits, lenientDouble(text.substr(begin, end - begin)));
    const std::string_view number(digits, last);
    result.append(number);
    if (number.find_first_of(".e") == number.npos) result.append(".0");  // not an integer
    copied = end;
  }
  return result.append(text.substr(copied));
}

/// Parses text that the grammar allows, but the parser refused: its innermost containers are at the
/// depth limit, or it contains numbers that the parser does not read.
simdjson::error_code parseAgain(simdjson::dom::parser& parser, std::string_view text,
                                std::size_t readablePadding, std::size_t depth,
                                std::span<const detail::JSONLiteral> longNumbers) {
  if (longNumbers.empty()) return parseInto(parser, text, readablePadding, depth + 1);
  return parseInto(parser, withShortNumbers(text, longNumbers), 0, depth + 1);
}

Ref<Error> errorFor(std::string_view text, std::optional<detail::JSONFault> found,
                    std::size_t textOffset) {
  detail::JSONFault fault = found.value_or(detail::JSONFault{"Invalid value", 0});
  if (const auto malformed = detail::firstMalformedByte(text)) {
    if (fault.index >= *malformed || fault.message == "Invalid value") {
      fault = {"Malformed UTF-8", *malformed};
    }
  }
  const std::size_t index = fault.index + textOffset;
  const std::string debugText =
      std::string(fault.message) + " around character " + std::to_string(index) + ".";
  return Error::errorWithDomain(
      CocoaErrorDomain, 3840,
      Dictionary::dictionaryWithEntries(
          {{DebugDescriptionKey, String::of(debugText)},
           {JSONDocument::kErrorIndexKey, Number::numberWith(static_cast<std::int64_t>(index))}}));
}

void appendEscaped(std::string& pointer, std::string_view key) {
  for (const char c : key) {
    if (c == '~' || c == '/') {
      pointer.append(c == '~' ? "~0" : "~1");
    } else {
      pointer.push_back(c);
    }
  }
}

}  // namespace

std::string JSONNode::pointer() const {
  std::string pointer;
  JSONNode container = at(tape_ + 1);
  while (!(container == *this)) {
    const bool isObject = container.kind() == Kind::object;
    JSONNode key = container.first();
    JSONNode value = isObject ? key.next() : key;
    std::size_t index = 0;
    for (; value.next().word() <= word_; ++index) {  // the words of a value are adjacent
      key = value.next();
      value = isObject ? key.next() : key;
    }
    pointer.push_back('/');
    if (isObject) {
      appendEscaped(pointer, key.text());
    } else {
      pointer.append(std::to_string(index));
    }
    container = value;
  }
  return pointer;
}

JSONDocument::JSONDocument(std::unique_ptr<Tape> tape) noexcept : tape_(std::move(tape)) {}
JSONDocument::JSONDocument(JSONDocument&&) noexcept = default;
JSONDocument& JSONDocument::operator=(JSONDocument&&) noexcept = default;
JSONDocument::~JSONDocument() = default;

std::optional<JSONDocument> JSONDocument::parse(std::span<const std::byte> bytes,
                                                std::size_t readablePadding, Ref<Error>* error,
                                                std::size_t depth) {
  std::string_view text = viewOf(bytes);
  const std::size_t mark = text.starts_with("\xEF\xBB\xBF") ? 3 : 0;
  text.remove_prefix(mark);

  simdjson::dom::parser parser;  // has memory that only parsing needs
  const auto document = [&parser] {
    return JSONDocument(std::make_unique<Tape>(std::move(parser.doc)));
  };
  simdjson::error_code code = parseInto(parser, text, readablePadding, depth);
  if (code == simdjson::SUCCESS) return document();

  const bool mayBeJSON = code == simdjson::NUMBER_ERROR || code == simdjson::DEPTH_ERROR;
  if (!mayBeJSON && error == nullptr) return std::nullopt;
  const detail::JSONScan scan = detail::scanJSON(text, depth);
  if (mayBeJSON && !scan.fault) {
    code = parseAgain(parser, text, readablePadding, depth, scan.longNumbers);
    if (code == simdjson::SUCCESS) return document();
  }
  if (error != nullptr) *error = errorFor(text, scan.fault, mark);
  return std::nullopt;
}

bool JSONDocument::hasMoreValuesThan(std::uint64_t count) const noexcept {
  const std::uint64_t* const tape = tape_->document.tape.get();
  const auto* const end = tape + static_cast<std::uint32_t>(*tape) - 1;  // the document's last word
  if (static_cast<std::uint64_t>(end - tape) <= count) return false;     // each value has a word
  for (const std::uint64_t* word = tape + 1; word != end; ++word) {
    const char kind = static_cast<char>(*word >> 56);
    if (kind == ']' || kind == '}') continue;
    if (kind == 'l' || kind == 'u' || kind == 'd') ++word;  // the number follows
    if (count-- == 0) return true;
  }
  return false;
}

JSONNode JSONDocument::root() const noexcept {
  const simdjson::dom::document& document = tape_->document;
  const std::uint64_t* tape = document.tape.get();
  return {tape, tape + 1, document.string_buf.get()};  // word 0 is the document itself
}

}  // namespace tq
