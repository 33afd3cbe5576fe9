#include <TQFoundation/platform/archive/detail/BinaryPropertyList.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/FilledData.h>
#include <TQFoundation/objects/UTF.h>

// | marker      | object                                                                       |
// |-------------|------------------------------------------------------------------------------|
// | 08, 09      | false, true                                                                  |
// | 1n          | integer of 2^n bytes: 1, 2 and 4 unsigned, 8 signed, 16 for 2^63 and beyond   |
// | 22, 23, 33  | float, double, date (double)                                                 |
// | 4n, 5n, 6n  | n bytes, n ASCII characters, n units of UTF-16                               |
// | 8n          | UID of n + 1 bytes                                                           |
// | An, Dn      | n references; n references to keys, then n to values                         |
//
// If n is F, the real n follows as an integer. All numbers are big-endian. After the objects come
// the table of their offsets and a trailer of 32 bytes:
//   0 × 6, offset size, reference size, then 8 bytes each: object count, top object, table offset.

namespace tq::detail {
namespace {

constexpr std::string_view kMagic = "bplist00";
constexpr std::size_t kTrailerSize = 32;

constexpr unsigned kFalse = 0x08;
constexpr unsigned kTrue = 0x09;
constexpr unsigned kInteger = 0x10;
constexpr unsigned kFloat = 0x22;
constexpr unsigned kDouble = 0x23;
constexpr unsigned kDate = 0x33;
constexpr unsigned kData = 0x40;
constexpr unsigned kASCII = 0x50;
constexpr unsigned kUTF16 = 0x60;
constexpr unsigned kUID = 0x80;
constexpr unsigned kArray = 0xA0;
constexpr unsigned kDictionary = 0xD0;
constexpr unsigned kCountFollows = 0x0F;

/// Returns the smallest of 1, 2, 4 and 8 bytes that can hold `value`.
constexpr std::size_t widthFor(std::uint64_t value) noexcept {
  return value <= 0xFF ? 1 : value <= 0xFFFF ? 2 : value <= 0xFFFF'FFFF ? 4 : 8;
}

/// Other writers also use 3 bytes.
constexpr bool isWidth(std::size_t width) noexcept { return width >= 1 && width <= 8; }

void putBigEndian(std::byte* to, std::uint64_t value, std::size_t width) noexcept {
  for (std::size_t i = width; i-- > 0; value >>= 8) to[i] = static_cast<std::byte>(value);
}

std::uint64_t bigEndian(std::span<const std::byte> bytes) noexcept {
  std::uint64_t value = 0;
  for (const std::byte byte : bytes) value = (value << 8) | std::to_integer<std::uint64_t>(byte);
  return value;
}

bool isASCII(std::string_view text) noexcept {
  return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

std::string_view viewOf(std::span<const std::byte> bytes) noexcept {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

std::u16string unitsOf(std::string_view text) {
  std::u16string units;
  while (!text.empty()) {
    const DecodedPoint point = decodePoint(text);
    TQ_ASSERT(point.byteCount != 0);
    appendUnits(units, point.value);
    text.remove_prefix(point.byteCount);
  }
  return units;
}

std::u16string unitsOf(std::span<const std::byte> content) {
  std::u16string units(content.size() / 2, u'\0');
  for (std::size_t i = 0; i < units.size(); ++i) {
    units[i] = static_cast<char16_t>(bigEndian(content.subspan(2 * i, 2)));
  }
  return units;
}

}  // namespace

BinaryPropertyListWriter::Node BinaryPropertyListWriter::begin() {
  if (places_.size() == std::numeric_limits<Node>::max()) {
    throw Exception(RangeException, "A property list holds at most 2^32 - 1 objects.");
  }
  places_.push_back({bytes_.size(), references_.size()});
  return static_cast<Node>(places_.size() - 1);
}

void BinaryPropertyListWriter::appendBigEndian(std::uint64_t value, std::size_t width) {
  std::byte digits[8];
  putBigEndian(digits, value, width);
  bytes_.append(reinterpret_cast<const char*>(digits), width);
}

void BinaryPropertyListWriter::appendInteger(std::uint64_t value) {
  const std::size_t width = widthFor(value);
  bytes_ += static_cast<char>(kInteger | static_cast<unsigned>(std::countr_zero(width)));
  appendBigEndian(value, width);
}

void BinaryPropertyListWriter::appendMarker(unsigned kind, std::size_t count) {
  bytes_ += static_cast<char>(kind | std::min<std::size_t>(count, kCountFollows));
  if (count >= kCountFollows) appendInteger(count);
}

BinaryPropertyListWriter::Node BinaryPropertyListWriter::number(NumberValue value) {
  const Node node = begin();
  if (value.isBoolean()) {
    bytes_ += static_cast<char>(value.boolValue() ? kTrue : kFalse);
  } else if (value.kind() == NumberKind::float32) {
    bytes_ += static_cast<char>(kFloat);
    appendBigEndian(std::bit_cast<std::uint32_t>(static_cast<float>(value.doubleValue())), 4);
  } else if (value.kind() == NumberKind::float64) {
    bytes_ += static_cast<char>(kDouble);
    appendBigEndian(value.bits(), 8);
  } else if (value.kind() == NumberKind::uint64) {
    bytes_ += static_cast<char>(kInteger | 4);
    appendBigEndian(0, 8);
    appendBigEndian(value.bits(), 8);
  } else {
    appendInteger(value.bits());  // as unsigned, negative ones are the largest: 8 bytes
  }
  return node;
}

BinaryPropertyListWriter::Node BinaryPropertyListWriter::date(double seconds) {
  const Node node = begin();
  bytes_ += static_cast<char>(kDate);
  appendBigEndian(std::bit_cast<std::uint64_t>(seconds), 8);
  return node;
}

BinaryPropertyListWriter::Node BinaryPropertyListWriter::data(std::span<const std::byte> bytes) {
  const Node node = begin();
  appendMarker(kData, bytes.size());
  bytes_ += viewOf(bytes);
  return node;
}

BinaryPropertyListWriter::Node BinaryPropertyListWriter::string(std::string_view text) {
  const Node node = begin();
  if (isASCII(text)) {
    appendMarker(kASCII, text.size());
    bytes_ += text;
  } else {
    const std::u16string units = unitsOf(text);
    appendMarker(kUTF16, units.size());
    for (const char16_t unit : units) appendBigEndian(unit, 2);
  }
  return node;
}

BinaryPropertyListWriter::Node BinaryPropertyListWriter::uid(std::uint64_t value) {
  const Node node = begin();
  const std::size_t width = widthFor(value);
  bytes_ += static_cast<char>(kUID | (width - 1));
  appendBigEndian(value, width);
  return node;
}

BinaryPropertyListWriter::Node BinaryPropertyListWriter::array(std::span<const Node> elements) {
  const Node node = begin();
  appendMarker(kArray, elements.size());
  references_.insert(references_.end(), elements.begin(), elements.end());
  return node;
}

BinaryPropertyListWriter::Node BinaryPropertyListWriter::dictionary(
    std::span<const std::pair<Node, Node>> members) {
  const Node node = begin();
  appendMarker(kDictionary, members.size());
  for (const auto& [key, value] : members) references_.push_back(key);
  for (const auto& [key, value] : members) references_.push_back(value);
  return node;
}

// Objects are written in reverse order, so the top has number 0.
Ref<Data> BinaryPropertyListWriter::finish() const {
  TQ_ASSERT(!places_.empty());
  const std::size_t count = places_.size();
  const std::size_t referenceSize = widthFor(count - 1);
  const std::size_t table = kMagic.size() + bytes_.size() + references_.size() * referenceSize;
  const std::size_t offsetSize = widthFor(table);
  const std::size_t length = table + count * offsetSize + kTrailerSize;

  const Ref<FilledData> list = makeRef<FilledData>(length);
  std::byte* const start = list->room().data();
  std::memcpy(start, kMagic.data(), kMagic.size());
  std::byte* at = start + kMagic.size();
  std::byte* offset = start + table;
  Place end{bytes_.size(), references_.size()};
  for (std::size_t node = count; node-- > 0; end = places_[node]) {
    putBigEndian(offset, static_cast<std::uint64_t>(at - start), offsetSize);
    offset += offsetSize;
    const Place& place = places_[node];
    std::memcpy(at, bytes_.data() + place.bytes, end.bytes - place.bytes);
    at += end.bytes - place.bytes;
    for (std::size_t i = place.references; i < end.references; ++i, at += referenceSize) {
      putBigEndian(at, count - 1 - references_[i], referenceSize);
    }
  }
  std::memset(offset, 0, kTrailerSize);
  putBigEndian(offset + 6, offsetSize, 1);
  putBigEndian(offset + 7, referenceSize, 1);
  putBigEndian(offset + 8, count, 8);
  putBigEndian(offset + 24, table, 8);
  list->setLength(length);
  return list;
}

std::optional<BinaryPropertyListReader> BinaryPropertyListReader::open(
    std::span<const std::byte> bytes, std::size_t readingsPerByte) {
  constexpr std::size_t kAnyVersion = kMagic.size() - 1;
  if (bytes.size() < kMagic.size() + kTrailerSize) return std::nullopt;
  if (!viewOf(bytes).starts_with(kMagic.substr(0, kAnyVersion))) return std::nullopt;
  const std::span<const std::byte> trailer = bytes.last(kTrailerSize);
  const std::size_t end = bytes.size() - kTrailerSize;

  BinaryPropertyListReader reader;
  reader.offsetSize_ = std::to_integer<std::size_t>(trailer[6]);
  reader.referenceSize_ = std::to_integer<std::size_t>(trailer[7]);
  reader.count_ = bigEndian(trailer.subspan(8, 8));
  reader.top_ = bigEndian(trailer.subspan(16, 8));
  const std::uint64_t table = bigEndian(trailer.subspan(24, 8));
  if (!isWidth(reader.offsetSize_) || !isWidth(reader.referenceSize_)) return std::nullopt;
  if (table < kMagic.size() || table > end) return std::nullopt;
  if (reader.count_ > (end - table) / reader.offsetSize_) return std::nullopt;
  reader.bytes_ = bytes.first(table);
  reader.offsets_ = bytes.subspan(table, reader.count_ * reader.offsetSize_);
  reader.readingsLeft_ = bytes.size() > std::numeric_limits<std::size_t>::max() / readingsPerByte
                             ? std::numeric_limits<std::size_t>::max()
                             : bytes.size() * readingsPerByte;
  return reader;
}

namespace {

using Reader = BinaryPropertyListReader;

/// Returns an integer of 2^n bytes; nullopt for one of 16 bytes that does not fit into 64 bits.
std::optional<NumberValue> integerFrom(std::span<const std::byte> content) noexcept {
  if (content.size() < 8) return NumberValue(bigEndian(content));
  if (content.size() == 8) return NumberValue(static_cast<std::int64_t>(bigEndian(content)));
  const std::uint64_t high = bigEndian(content.first(8));
  const std::uint64_t low = bigEndian(content.last(8));
  if (high == 0) return NumberValue(low);
  if (high == ~std::uint64_t{0} && low >> 63 == 1) {
    return NumberValue(static_cast<std::int64_t>(low));
  }
  return std::nullopt;
}

/// Removes the first `count` bytes from `rest` and returns them; nullopt if there are fewer.
std::optional<std::span<const std::byte>> take(std::span<const std::byte>& rest,
                                               std::uint64_t count) noexcept {
  if (count > rest.size()) return std::nullopt;
  const auto taken = rest.first(count);
  rest = rest.subspan(count);
  return taken;
}

/// Returns the number, date or UID after a marker; nullopt for another marker.
std::optional<Reader::Node> scalarFrom(unsigned marker, std::span<const std::byte> rest) noexcept {
  using Kind = Reader::Kind;
  if (marker == kFalse || marker == kTrue)
    return Reader::Node{Kind::number, marker == kTrue, 0, {}};
  const unsigned low = marker & 0x0F;
  if ((marker & 0xF0) == kUID) {
    const auto content = take(rest, low + 1);
    if (!content || content->size() > 8) return std::nullopt;
    return Reader::Node{Kind::uid, {}, bigEndian(*content), *content};
  }
  if (low > 4) return std::nullopt;
  const auto content = take(rest, std::uint64_t{1} << low);
  if (!content) return std::nullopt;
  if ((marker & 0xF0) == kInteger) {
    const auto number = integerFrom(*content);
    if (!number) return std::nullopt;
    return Reader::Node{Kind::number, *number, 0, *content};
  }
  if (marker == kFloat) {
    const auto bits = static_cast<std::uint32_t>(bigEndian(*content));
    return Reader::Node{Kind::number, std::bit_cast<float>(bits), 0, *content};
  }
  if (marker != kDouble && marker != kDate) return std::nullopt;
  return Reader::Node{marker == kDate ? Kind::date : Kind::number,
                      std::bit_cast<double>(bigEndian(*content)), 0, *content};
}

/// Returns the data, string or container after a marker, with items of `itemSize` bytes.
std::optional<Reader::Node> runFrom(unsigned marker, std::size_t itemSize,
                                    std::span<const std::byte> rest) noexcept {
  std::uint64_t count = marker & 0x0F;
  if (count == kCountFollows) {
    const auto header = take(rest, 1);
    if (!header) return std::nullopt;
    const unsigned width = std::to_integer<unsigned>((*header)[0]) ^ kInteger;
    const auto digits = width <= 3 ? take(rest, std::uint64_t{1} << width) : std::nullopt;
    if (!digits) return std::nullopt;
    count = bigEndian(*digits);
  }
  if (count > rest.size() / itemSize) return std::nullopt;
  const unsigned kind = marker & 0xF0;
  return Reader::Node{kind == kData    ? Reader::Kind::data
                      : kind == kASCII ? Reader::Kind::ascii
                      : kind == kUTF16 ? Reader::Kind::utf16
                      : kind == kArray ? Reader::Kind::array
                                       : Reader::Kind::dictionary,
                      {},
                      count,
                      rest.first(count * itemSize)};
}

}  // namespace

std::optional<BinaryPropertyListReader::Node> BinaryPropertyListReader::nodeAgain(
    std::uint64_t number) const noexcept {
  if (number >= count_) return std::nullopt;
  const std::uint64_t offset = bigEndian(offsets_.subspan(number * offsetSize_, offsetSize_));
  if (offset < kMagic.size() || offset >= bytes_.size()) return std::nullopt;
  const auto marker = std::to_integer<unsigned>(bytes_[offset]);
  const std::span<const std::byte> rest = bytes_.subspan(offset + 1);
  switch (marker & 0xF0) {
    case kData:
    case kASCII:
      return runFrom(marker, 1, rest);
    case kUTF16:
      return runFrom(marker, 2, rest);
    case kArray:
      return runFrom(marker, referenceSize_, rest);
    case kDictionary:
      return runFrom(marker, 2 * referenceSize_, rest);
    default:
      return scalarFrom(marker, rest);
  }
}

std::optional<BinaryPropertyListReader::Node> BinaryPropertyListReader::node(
    std::uint64_t number) noexcept {
  const auto node = nodeAgain(number);
  return pay(1 + (node ? node->content.size() : 0)) ? node : std::nullopt;
}

bool BinaryPropertyListReader::pay(std::size_t byteCount) noexcept {
  const bool isEnough = byteCount <= readingsLeft_;
  readingsLeft_ -= isEnough ? byteCount : readingsLeft_;
  isExhausted_ |= !isEnough;
  return isEnough;
}

std::uint64_t BinaryPropertyListReader::reference(const Node& container,
                                                  std::uint64_t index) const noexcept {
  return bigEndian(container.content.subspan(index * referenceSize_, referenceSize_));
}

Ref<String> stringFromNode(const BinaryPropertyListReader::Node& node) {
  if (node.kind == Reader::Kind::utf16) return String::stringWithUTF16(unitsOf(node.content));
  if (node.kind != Reader::Kind::ascii || !isASCII(viewOf(node.content))) return nullptr;
  return String::of(viewOf(node.content));
}

bool isString(const BinaryPropertyListReader::Node& node, std::string_view text) {
  if (node.kind == Reader::Kind::ascii) return viewOf(node.content) == text;
  if (node.kind != Reader::Kind::utf16 || node.content.size() > 2 * text.size()) return false;
  return stringFromNode(node)->view() == text;
}

}  // namespace tq::detail
