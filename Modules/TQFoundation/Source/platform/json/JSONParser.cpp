#include <TQFoundation/platform/json/JSONParser.h>

#include <simdjson.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <span>
#include <string>
#include <utility>

#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/TextWords.h>
#include <TQFoundation/platform/json/JSONText.h>

// simdjson's first pass checks the encoding and the quotation marks, and finds the marks of the
// text: the offsets of all brackets, colons and commas outside of strings, and of the first byte of
// every string, number and word. The second pass is ours: it checks the order of the marks and the
// text between them, and writes the tape. simdjson's own would copy every string.

namespace tq::detail {

static_assert(Data::kReadablePadding >= simdjson::SIMDJSON_PADDING);

namespace {

using Kind = JSONNode::Kind;
using Marks = std::span<const std::uint32_t>;

/// Advises the kernel to back a buffer with large pages: for a large text, page faults are most of
/// its cost. A failure is ignored.
void preferLargePages(const void* memory, std::size_t byteCount) noexcept {
  constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20;
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t first = (begin + kLargePage - 1) & ~(kLargePage - 1);
  const std::uintptr_t last = (begin + byteCount) & ~(kLargePage - 1);
  if (first < last) ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

// MARK: characters

/// The characters that may follow a number or a word: brackets, colons, commas and white space.
constexpr auto kEndsScalar = [] {
  std::array<bool, 256> ends{};
  for (const char c : {'[', ']', '{', '}', ':', ',', ' ', '\t', '\n', '\r'}) {
    ends[static_cast<unsigned char>(c)] = true;
  }
  return ends;
}();

bool endsScalar(char c) noexcept { return kEndsScalar[static_cast<unsigned char>(c)]; }

/// Eight characters, the first in the lowest byte.
std::uint64_t eightCharacters(const char* at) noexcept {
  const auto word = loadedWord<std::uint64_t>(at);
  return std::endian::native == std::endian::little ? word : __builtin_bswap64(word);
}

constexpr std::uint32_t kPowersOf10[] = {1,      10,      100,      1000,     10000,
                                         100000, 1000000, 10000000, 100000000};

/// Returns the number of digits that eight characters start with.
int leadingDigits(std::uint64_t characters) noexcept {
  constexpr std::uint64_t kLows = 0x7F7F'7F7F'7F7F'7F7F;
  const std::uint64_t values = characters ^ 0x3030'3030'3030'3030;  // 0 to 9 for digits
  const std::uint64_t others = ((values & kLows) + 0x7676'7676'7676'7676) | values;
  return std::countr_zero(others & ~kLows) / 8;
}

/// Returns the number of the first `count` digits. Zeros take the places of the others in front;
/// pairs are added to pairs, and those to fours.
std::uint64_t numberOf(std::uint64_t digits, int count) noexcept {
  const int half = 4 * (8 - count);  // a shift by 64 is not defined
  digits = (digits << half << half) & 0x0F0F'0F0F'0F0F'0F0F;
  digits = digits * (1 + (10 << 8)) >> 8;
  digits = (digits & 0x00FF'00FF'00FF'00FF) * (1 + (100 << 16)) >> 16;
  return (digits & 0x0000'FFFF'0000'FFFF) * (1 + (std::uint64_t{10000} << 32)) >> 32;
}

/// Returns whether the text contains a backslash. Reads up to 8 bytes past its end.
bool hasBackslash(const char* text, std::size_t length) noexcept {
  constexpr std::uint64_t kOnes = 0x0101'0101'0101'0101;
  if (length > 64) return std::memchr(text, '\\', length) != nullptr;
  std::uint64_t found = 0;
  for (std::size_t i = 0; i < length; i += 8) {
    // The lowest byte that is marked here is exact, and higher ones are marked only above it.
    std::uint64_t word = eightCharacters(text + i) ^ (kOnes * '\\');
    if (length - i < 8) word |= ~std::uint64_t{0} << (8 * (length - i));
    found |= (word - kOnes) & ~word & (kOnes << 7);
  }
  return found != 0;
}

// MARK: scalars

void writeReal(std::uint64_t* word, double value) noexcept {
  word[0] = JSONNode::wordOf(Kind::real);
  word[1] = std::bit_cast<std::uint64_t>(value);
}

/// Writes a number of any length. Returns false if it is not a number or outside of the range of
/// doubles.
[[gnu::noinline]] bool writeRareNumber(const char* at, std::uint64_t* word) {
  const char* end = at;
  while (!endsScalar(*end)) ++end;
  const std::string_view literal(at, static_cast<std::size_t>(end - at));
  if (scanJSON(literal, 0)) return false;
  std::int64_t integer;
  if (const auto read = std::from_chars(at, end, integer);
      read.ptr == end && read.ec == std::errc()) {
    word[0] = JSONNode::wordOf(Kind::integer);
    word[1] = static_cast<std::uint64_t>(integer);
    return true;
  }
  std::uint64_t natural;
  if (const auto read = std::from_chars(at, end, natural);
      read.ptr == end && read.ec == std::errc()) {
    word[0] = JSONNode::wordOf(Kind::unsignedInteger);
    word[1] = natural;
    return true;
  }
  writeReal(word, lenientDouble(literal));
  return true;
}

/// Appends the digits of a fraction to `number`, and returns their end. Their number is different
/// for each fraction; so the processor does not decide for each digit whether it is the last one.
inline const char* readFraction(const char* at, std::uint64_t& number) noexcept {
  constexpr int kWord = 8;
  std::uint64_t characters = eightCharacters(at);
  int count = leadingDigits(characters);
  while (count == kWord) {
    number = number * kPowersOf10[kWord] + numberOf(characters, kWord);
    at += kWord;
    characters = eightCharacters(at);
    count = leadingDigits(characters);
  }
  number = number * kPowersOf10[count] + numberOf(characters, count);
  return at + count;
}

/// Writes a number. Returns false if it is not a number or outside of the range of doubles.
inline bool writeNumber(const char* at, std::uint64_t* word) {
  const auto digitOf = [](char c) { return static_cast<unsigned char>(c - '0'); };
  const bool isNegative = *at == '-';
  const char* const first = at + (isNegative ? 1 : 0);
  const char* end = first;
  std::uint64_t digits = 0;
  for (; digitOf(*end) <= 9; ++end) digits = digits * 10 + digitOf(*end);
  std::ptrdiff_t count = end - first;
  if (count == 0 || (*first == '0' && count > 1)) return false;
  if (*end != '.') {
    if (!endsScalar(*end) || count > 18) return writeRareNumber(at, word);
    word[0] = JSONNode::wordOf(Kind::integer);
    word[1] = isNegative ? 0 - digits : digits;
    return true;
  }
  const char* const fraction = end + 1;
  end = readFraction(fraction, digits);
  if (end == fraction) return false;
  count += end - fraction - (*first == '0' ? 1 : 0);
  if (!endsScalar(*end) || count > 19) return writeRareNumber(at, word);
  double value;
  if (!simdjson::SIMDJSON_BUILTIN_IMPLEMENTATION::numberparsing::compute_float_64(
          fraction - end, digits, isNegative, value)) {
    return writeRareNumber(at, word);
  }
  writeReal(word, value);
  return true;
}

/// Writes true, false or null.
inline bool writeWord(const char* at, std::uint64_t* word) noexcept {
  const std::string_view expected = *at == 't' ? "true" : *at == 'f' ? "false" : "null";
  if (std::memcmp(at, expected.data(), expected.size()) != 0 || !endsScalar(at[expected.size()])) {
    return false;
  }
  word[0] = JSONNode::wordOf(static_cast<Kind>(*at));
  return true;
}

/// Writes a number or a word that is the whole text. It is copied, because the bytes after the text
/// may be anything.
bool writeOnlyScalar(std::string_view text, JSONTape& tape) {
  std::string padded(text);
  padded.append(Data::kReadablePadding, ' ');
  const char first = padded[0];
  std::uint64_t* const word = tape.words.get();
  return first == 't' || first == 'f' || first == 'n' ? writeWord(padded.data(), word)
                                                      : writeNumber(padded.data(), word);
}

// MARK: marks

/// Finds the marks of a text, piece by piece, so that they take little memory, which stays in the
/// processor's cache. Each piece but the last ends after a comma outside of strings, which is its
/// last mark.
class MarkFinder {
 public:
  explicit MarkFinder(std::string_view text) noexcept : length_(text.size()), rest_(text) {}

  /// Finds the marks of the next piece. Returns false if it is malformed.
  bool findNext() {
    for (std::size_t longest = kPiece;; longest *= 2) {
      const std::size_t length = lengthOfPiece(longest);
      const simdjson::error_code error = marksOf(length);
      isLast_ = length == rest_.size();
      if (error == simdjson::UNCLOSED_STRING && !isLast_) continue;  // the comma is in a string
      if (error != simdjson::SUCCESS) return false;
      begin_ = rest_.data();
      rest_.remove_prefix(length);
      return true;
    }
  }

  /// The text of the piece; its marks are offsets from here.
  [[nodiscard]] const char* begin() const noexcept { return begin_; }
  /// The marks; not empty. Two more may be read, which lead to the end of the piece.
  [[nodiscard]] Marks marks() const noexcept {
    return {parser_->structural_indexes.get(), parser_->n_structural_indexes};
  }
  [[nodiscard]] bool isLast() const noexcept { return isLast_; }
  /// The number of bytes of the text up to the end of the piece.
  [[nodiscard]] std::size_t read() const noexcept { return length_ - rest_.size(); }

  /// Unescapes the string at `from`, which ends with a quotation mark.
  /// @param to  room for the string and Data::kReadablePadding bytes
  /// @return the end of the result; null if an escape is invalid
  [[nodiscard]] char* unescape(const char* from, char* to) const noexcept {
    return reinterpret_cast<char*>(parser_->parse_string(
        reinterpret_cast<const std::uint8_t*>(from), reinterpret_cast<std::uint8_t*>(to)));
  }

 private:
  static constexpr std::size_t kPiece = std::size_t{256} << 10;

  /// Returns the length of a piece of at most `longest` bytes. A comma after a string or a
  /// container is probably not in a string.
  [[nodiscard]] std::size_t lengthOfPiece(std::size_t longest) const noexcept {
    if (rest_.size() <= longest) return rest_.size();
    const std::string_view piece = rest_.substr(0, longest);
    std::size_t comma = piece.rfind(',');
    for (std::size_t at = comma; at != piece.npos && at > 0; at = piece.rfind(',', at - 1)) {
      const char before = piece[at - 1];
      if (before == '"' || before == ']' || before == '}') return at + 1;
    }
    return comma != piece.npos ? comma + 1 : rest_.size();
  }

  simdjson::error_code marksOf(std::size_t length) {
    simdjson::error_code error = simdjson::SUCCESS;
    if (!parser_) {
      error = simdjson::get_active_implementation()->create_dom_parser_implementation(length, 1,
                                                                                      parser_);
    } else if (parser_->capacity() < length) {
      error = parser_->set_capacity(length);
    }
    if (!error) {
      error = parser_->stage1(reinterpret_cast<const std::uint8_t*>(rest_.data()), length,
                              simdjson::stage1_mode::regular);
    }
    if (error == simdjson::MEMALLOC) throw std::bad_alloc();
    return error;
  }

  const std::size_t length_;
  std::string_view rest_;
  const char* begin_ = nullptr;
  bool isLast_ = false;
  std::unique_ptr<simdjson::internal::dom_parser_implementation> parser_;
};

// MARK: containers

/// Writes the tape of a text. An object is used once.
class TapeWriter {
 public:
  TapeWriter(std::string_view text, MarkFinder& finder, JSONTape& tape) noexcept
      : text_(text.data()), textLength_(text.size()), finder_(finder), tape_(tape) {}

  /// Writes a container and its content, which is the whole text. The last mark of a piece is a
  /// comma, that of the last piece a closing bracket. So no value is behind the marks, and only a
  /// comma or a closing bracket can lead there.
  bool writeContainers(std::size_t depthLimit) {
    std::array<Level, JSONDocument::kDepthLimit + 1> levels;  // containers that are open
    Level* const outside = levels.data();
    Level* level = outside;
    std::uint64_t* word = roomForMarks(0);
    const char* text = finder_.begin();
    const std::uint32_t* mark = finder_.marks().data();
    const std::uint32_t* end = mark + finder_.marks().size();
    const char last = text[*mark] == '[' ? ']' : '}';
    if (finder_.isLast() && text[end[-1]] != last) return false;

    for (;;) {  // at a value
      const char* const at = text + *mark++;
      std::uint64_t content = JSONNode::kHasOthers;
      switch (*at) {
        case '[':
        case '{':
          if (level == outside + depthLimit) return false;
          *++level = {indexOf(word++), 0, 0, *at == '{'};
          if (text[*mark] != level->close()) {
            if (level->isObject && !writeKey(text, mark, word++)) return false;
            continue;
          }
          ++mark;
          writeEnd(*level--, word++);
          break;
        case '"':
          if (!writeString(at + 1, text + *mark, word++)) return false;
          break;
        case 't':
        case 'f':
        case 'n':
          if (!writeWord(at, word)) return false;
          content = JSONNode::contentOf(*word++);
          break;
        default:
          if (!writeNumber(at, word)) return false;
          content = JSONNode::contentOf(*word);
          word += 2;
          break;
      }
      for (;;) {  // after a value
        if (level == outside) return mark == end && finder_.isLast();
        if (mark == end) return false;
        ++level->count;
        level->content |= content;
        const char next = text[*mark++];
        if (next == ',') break;
        if (next != level->close()) return false;
        writeEnd(*level--, word++);
        content = JSONNode::kHasOthers;
      }
      if (mark == end) {
        if (finder_.isLast() || !finder_.findNext()) return false;
        text = finder_.begin();
        mark = finder_.marks().data();
        end = mark + finder_.marks().size();
        if (finder_.isLast() && text[end[-1]] != last) return false;
        word = roomForMarks(indexOf(word));
      }
      if (level->isObject && !writeKey(text, mark, word++)) return false;
    }
  }

  /// Writes the string that begins after its quotation mark at `begin`. Only white space is between
  /// its end and `next`, the next mark.
  bool writeString(const char* begin, const char* next, std::uint64_t* word) {
    do --next;
    while (*next != '"');
    const auto length = static_cast<std::size_t>(next - begin);
    if (length >= JSONNode::kLongString || hasBackslash(begin, length)) {
      return writeCopiedString(begin, length, word);
    }
    *word = JSONNode::wordOf(Kind::string, length, static_cast<std::size_t>(begin - text_));
    return true;
  }

 private:
  /// A container that is open.
  struct Level {
    std::size_t word;       // its index
    std::uint64_t count;    // of its values so far
    std::uint64_t content;  // their kinds
    bool isObject;
    [[nodiscard]] char close() const noexcept { return isObject ? '}' : ']'; }
  };

  [[nodiscard]] std::size_t indexOf(const std::uint64_t* word) const noexcept {
    return static_cast<std::size_t>(word - tape_.words.get());
  }

  /// Makes room for the words of the finder's marks, and returns the word at `index`, before which
  /// the tape is written.
  ///
  /// Each mark gets at most one word, but a number gets two. A number has a comma behind it, which
  /// gets none, unless it is the last value of its container. A container without commas for that
  /// has one value only, so there are as many values as containers, and one.
  std::uint64_t* roomForMarks(std::size_t index) {
    markCount_ += finder_.marks().size();
    if (const std::size_t needed = markCount_ + 1; needed > capacity_) {
      // As many as the rest of the text will need if it is like what was read, and a quarter more.
      const double share = static_cast<double>(textLength_) / static_cast<double>(finder_.read());
      const auto expected = static_cast<std::size_t>(static_cast<double>(needed) * share);
      capacity_ = finder_.isLast() ? needed : std::max(needed, expected + expected / 4);
      auto words = std::make_unique_for_overwrite<std::uint64_t[]>(capacity_);
      preferLargePages(words.get(), capacity_ * sizeof(std::uint64_t));
      if (index != 0) std::memcpy(words.get(), tape_.words.get(), index * sizeof(std::uint64_t));
      tape_.words = std::move(words);
    }
    return tape_.words.get() + index;
  }

  bool writeKey(const char* text, const std::uint32_t*& mark, std::uint64_t* word) {
    const char* const at = text + *mark++;
    const char* const next = text + *mark++;
    return *at == '"' && *next == ':' && writeString(at + 1, next, word);
  }

  void writeEnd(const Level& level, std::uint64_t* word) {
    tape_.valueCount += level.isObject ? 2 * level.count : level.count;  // with the keys
    const auto count = std::min<std::uint64_t>(level.count, JSONNode::kMiddle);
    const std::size_t after = indexOf(word) + 1;
    if (after > std::numeric_limits<std::uint32_t>::max()) throw std::bad_alloc();
    tape_.words[level.word] =
        JSONNode::wordOf(level.isObject ? Kind::object : Kind::array, count, after);
    *word = level.content;
  }

  /// Writes a string with escapes, or one whose length does not fit its word.
  [[gnu::noinline]] bool writeCopiedString(const char* begin, std::size_t length,
                                           std::uint64_t* word) {
    if (!tape_.copies) {
      // All contents are shorter than the text; only those of long strings have a length in front.
      constexpr std::size_t kSpare = 4096;
      const std::size_t capacity = textLength_ + kSpare;
      tape_.copies = std::make_unique_for_overwrite<char[]>(capacity);
      preferLargePages(tape_.copies.get(), capacity);
    }
    char* to = tape_.copies.get() + copied_;
    const std::size_t offset = copied_;
    const bool isLong = length >= JSONNode::kLongString;
    if (isLong) to += sizeof(std::uint32_t);
    const char* const end = finder_.unescape(begin, to);
    if (end == nullptr) return false;
    length = static_cast<std::size_t>(end - to);
    if (isLong) {
      const auto stored = static_cast<std::uint32_t>(length);
      std::memcpy(to - sizeof stored, &stored, sizeof stored);
    }
    copied_ = static_cast<std::size_t>(to - tape_.copies.get()) + length;
    *word = JSONNode::wordOf(Kind::string,
                             JSONNode::kCopied | (isLong ? JSONNode::kLongString : length), offset);
    return true;
  }

  const char* const text_;
  const std::size_t textLength_;
  MarkFinder& finder_;
  JSONTape& tape_;
  std::size_t markCount_ = 0;  // of all pieces so far
  std::size_t capacity_ = 0;   // words of the tape
  std::size_t copied_ = 0;     // bytes of the tape's copies
};

}  // namespace

bool writeTape(std::string_view text, std::size_t depth, JSONTape& tape) {
  if (text.empty()) return false;
  MarkFinder finder(text);
  if (!finder.findNext()) return false;

  tape.text = text.data();
  tape.valueCount = 1;  // the top value

  TapeWriter writer(text, finder, tape);
  const std::string_view rest = text.substr(finder.marks().front());
  const char first = rest.front();
  if (first == '[' || first == '{') return writer.writeContainers(depth);
  if (finder.marks().size() != 1 || !finder.isLast()) return false;
  tape.words = std::make_unique_for_overwrite<std::uint64_t[]>(2);
  if (first != '"') return writeOnlyScalar(rest, tape);
  return writer.writeString(rest.data() + 1, rest.data() + rest.size(), tape.words.get());
}

}  // namespace tq::detail
