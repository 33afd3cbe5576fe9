#include <TQFoundation/platform/json/JSONParser.h>

#include <simdjson.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <atomic>
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
__extension__ using Wide = unsigned __int128;

/// Advises the kernel to back a buffer with large pages: for a large text, page faults are most of
/// its cost. A failure is ignored.
void preferLargePages(const void* memory, std::size_t byteCount) noexcept {
  constexpr std::uintptr_t kLargePage = std::uintptr_t{2} << 20;
  const auto begin = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t first = (begin + kLargePage - 1) & ~(kLargePage - 1);
  const std::uintptr_t last = (begin + byteCount) & ~(kLargePage - 1);
  if (first < last) ::madvise(reinterpret_cast<void*>(first), last - first, MADV_HUGEPAGE);
}

/// A place for an object that is kept from one text to the next, on any thread.
template <class T>
class Kept {
 public:
  /// Returns the object; null if there is none.
  [[nodiscard]] std::unique_ptr<T> take() noexcept {
    return std::unique_ptr<T>(place_.exchange(nullptr));
  }
  /// Keeps the object, unless there is one already.
  void keep(std::unique_ptr<T> object) noexcept {
    T* none = nullptr;
    if (place_.compare_exchange_strong(none, object.get())) static_cast<void>(object.release());
  }

 private:
  std::atomic<T*> place_ = nullptr;
};

constinit Kept<simdjson::internal::dom_parser_implementation> keptParser;
constinit Kept<JSONTape> keptTape;

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

/// Returns the number of eight digits, given their values. Pairs are added to pairs, and those to
/// fours.
std::uint64_t numberOf(std::uint64_t digits) noexcept {
  digits = digits * (1 + (10 << 8)) >> 8;
  digits = (digits & 0x00FF'00FF'00FF'00FF) * (1 + (100 << 16)) >> 16;
  return (digits & 0x0000'FFFF'0000'FFFF) * (1 + (std::uint64_t{10000} << 32)) >> 32;
}

constexpr double kDoubles[] = {1e0, 1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7, 1e8,
                               1e9, 1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16};

/// Rounds number · 10^exponent correctly. Returns false if that fails, for few numbers, or if it is
/// beyond the range of doubles.
bool toDouble(std::int64_t exponent, std::uint64_t number, bool isNegative,
              double& value) noexcept {
  return simdjson::SIMDJSON_BUILTIN_IMPLEMENTATION::numberparsing::compute_float_64(
      exponent, number, isNegative, value);
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

/// Writes a number of any usual form. Returns false if it is not a number or outside of the range
/// of doubles.
[[gnu::noinline]] bool writeOtherNumber(const char* at, std::uint64_t* word) {
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
  for (end = fraction; digitOf(*end) <= 9; ++end) digits = digits * 10 + digitOf(*end);
  if (end == fraction) return false;
  count += end - fraction - (*first == '0' ? 1 : 0);
  double value;
  if (!endsScalar(*end) || count > 19 || !toDouble(fraction - end, digits, isNegative, value)) {
    return writeRareNumber(at, word);
  }
  writeReal(word, value);
  return true;
}

/// Writes the number before `next`, the next mark. Returns false if it is not a number or outside
/// of the range of doubles.
///
/// Numbers of up to 16 digits, at most 8 of them before the point, are read without a branch for
/// each digit or for their form: the forms of a document's numbers cannot be predicted. The digits
/// are one integer of 16 places, from which the point is cut out.
inline bool writeNumber(const char* at, const char* next, std::uint64_t* word) {
  constexpr std::uint64_t kOnes = 0x0101'0101'0101'0101;
  constexpr std::uint64_t kHighs = kOnes << 7;
  const bool isNegative = *at == '-';
  const char* const first = at + (isNegative ? 1 : 0);
  const auto length = static_cast<std::size_t>(next - first);
  if (length - 1 > 16) return writeOtherNumber(at, word);

  const std::uint64_t head = eightCharacters(first);
  const std::uint64_t differences = head ^ (kOnes * '.');
  const std::uint64_t point = (differences - kOnes) & ~differences & kHighs;  // the first is exact
  const std::size_t whole = std::min<std::size_t>(
      point == 0 ? 8 : static_cast<std::size_t>(std::countr_zero(point)) / 8, length);
  const bool hasPoint = whole < length;
  const std::size_t count = length - (hasPoint ? 1 : 0);

  // The values of the digits, the first in the lowest byte; then with the point cut out, and with
  // zeros in front.
  const std::uint64_t low = head ^ (kOnes * '0');
  const std::uint64_t high = eightCharacters(first + 8) ^ (kOnes * '0');
  const auto last = static_cast<std::uint64_t>(static_cast<unsigned char>(first[16] ^ '0'));
  const std::uint64_t fraction = ~std::uint64_t{0} << (4 * whole) << (4 * whole);
  const std::uint64_t cutLow = (low & ~fraction) | ((low >> 8 | high << 56) & fraction);
  const std::uint64_t cutHigh = high >> 8 | last << 56;
  const std::size_t unused = 8 * (16 - std::max<std::size_t>(count, 1));
  const Wide digits = (static_cast<Wide>(cutHigh) << 64 | cutLow) << unused;
  const auto front = static_cast<std::uint64_t>(digits);
  const auto back = static_cast<std::uint64_t>(digits >> 64);

  const auto above9 = [](std::uint64_t values) { return (values + kOnes * (0x7F - 9)) | values; };
  const bool isUsual = (((above9(front) | above9(back)) & kHighs) == 0) & (whole != 0) &
                       ((*first != '0') | (whole == 1)) & (length - whole != 1) &
                       !(hasPoint & (point == 0));
  const std::uint64_t number = numberOf(front) * 100'000'000 + numberOf(back);
  constexpr std::uint64_t kExactDoubles = std::uint64_t{1} << 53;
  if (!isUsual || number > kExactDoubles) return writeOtherNumber(at, word);

  // The quotient of two exact doubles is rounded correctly (Clinger, How to Read Floating Point
  // Numbers Accurately, 1990).
  const double magnitude = static_cast<double>(static_cast<std::int64_t>(number)) /
                           kDoubles[hasPoint ? count - whole : 0];
  const std::uint64_t real =
      std::bit_cast<std::uint64_t>(magnitude) | static_cast<std::uint64_t>(isNegative) << 63;
  word[0] = JSONNode::wordOf(hasPoint ? Kind::real : Kind::integer);
  word[1] = hasPoint ? real : isNegative ? 0 - number : number;
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
                                                      : writeOtherNumber(padded.data(), word);
}

// MARK: marks

/// Finds the marks of a text, piece by piece, so that they take little memory, which stays in the
/// processor's cache. Each piece but the last ends after a comma outside of strings, which is its
/// last mark.
class MarkFinder {
 public:
  explicit MarkFinder(std::string_view text) noexcept
      : length_(text.size()), rest_(text), parser_(keptParser.take()) {}
  ~MarkFinder() {
    if (parser_ && parser_->capacity() <= kPiece) keptParser.keep(std::move(parser_));
  }
  MarkFinder(const MarkFinder&) = delete;
  MarkFinder& operator=(const MarkFinder&) = delete;

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
          if (!writeNumber(at, text + *mark, word)) return false;
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

  /// Makes room for the words of the finder's marks, and returns the word at `index`, before which
  /// the tape is written.
  ///
  /// Each mark gets at most one word, but a number gets two. A number has a comma behind it, which
  /// gets none, unless it is the last value of its container. A container without commas for that
  /// has one value only, so there are as many values as containers, and one.
  std::uint64_t* roomForMarks(std::size_t index) {
    markCount_ += finder_.marks().size();
    if (const std::size_t needed = markCount_ + 1; needed > tape_.capacity) {
      // As many as the rest of the text will need if it is like what was read, and a quarter more.
      const double share = static_cast<double>(textLength_) / static_cast<double>(finder_.read());
      const auto expected = static_cast<std::size_t>(static_cast<double>(needed) * share);
      const std::size_t capacity =
          finder_.isLast() ? needed : std::max(needed, expected + expected / 4);
      auto words = std::make_unique_for_overwrite<std::uint64_t[]>(capacity);
      preferLargePages(words.get(), capacity * sizeof(std::uint64_t));
      if (index != 0) std::memcpy(words.get(), tape_.words.get(), index * sizeof(std::uint64_t));
      tape_.words = std::move(words);
      tape_.capacity = capacity;
    }
    return tape_.words.get() + index;
  }

  bool writeKey(const char* text, const std::uint32_t*& mark, std::uint64_t* word) {
    const char* const at = text + *mark++;
    const char* const next = text + *mark++;
    return *at == '"' && *next == ':' && writeString(at + 1, next, word);
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
    // All contents are shorter than the text; only those of long strings have a length in front.
    constexpr std::size_t kSpare = 4096;
    if (copied_ == 0 && tape_.copyCapacity < textLength_ + kSpare) {
      tape_.copies = nullptr;
      tape_.copyCapacity = 0;
      tape_.copies = std::make_unique_for_overwrite<char[]>(textLength_ + kSpare);
      tape_.copyCapacity = textLength_ + kSpare;
      preferLargePages(tape_.copies.get(), tape_.copyCapacity);
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
  std::size_t copied_ = 0;     // bytes of the tape's copies
};

}  // namespace

std::unique_ptr<JSONTape> tapeToWrite() {
  std::unique_ptr<JSONTape> tape = keptTape.take();
  return tape ? std::move(tape) : std::make_unique<JSONTape>();
}

void keepTape(std::unique_ptr<JSONTape> tape) noexcept {
  constexpr std::size_t kMostWords = std::size_t{2} << 20;
  constexpr std::size_t kMostCopies = std::size_t{8} << 20;
  if (tape->capacity > kMostWords || tape->copyCapacity > kMostCopies) return;
  tape->data = nullptr;
  keptTape.keep(std::move(tape));
}

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
  writer.roomForMarks(0);
  if (first != '"') return writeOnlyScalar(rest, tape);
  return writer.writeString(rest.data() + 1, rest.data() + rest.size(), tape.words.get());
}

}  // namespace tq::detail
