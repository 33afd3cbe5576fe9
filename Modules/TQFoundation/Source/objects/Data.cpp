#include <TQFoundation/objects/Data.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/objects/Hash.h>

namespace tq {
namespace {

std::span<const std::byte> bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::byte*>(text.data()), text.size()};
}

/// The padding of data without capacity. Nothing writes it.
constexpr std::byte kNoBytes[Data::kReadablePadding]{};

std::byte* noBytes() noexcept { return const_cast<std::byte*>(kNoBytes); }

/// Returns the block that was allocated for the bytes, or null.
std::byte* blockOf(std::byte* bytes) noexcept { return bytes != kNoBytes ? bytes : nullptr; }

}  // namespace

Data::~Data() { std::free(blockOf(bytes_)); }

void Data::reserveBytes(std::size_t capacity) {
  if (bytes_ == nullptr) bytes_ = noBytes();
  if (capacity <= capacity_) return;
  if (capacity > std::numeric_limits<std::size_t>::max() / 2 - kReadablePadding) {
    throw std::bad_alloc();
  }
  void* grown = std::realloc(blockOf(bytes_), capacity + kReadablePadding);
  if (grown == nullptr) throw std::bad_alloc();
  bytes_ = static_cast<std::byte*>(grown);
  // The padding must be initialised, because reading indeterminate bytes is undefined.
  std::memset(bytes_ + capacity, 0, kReadablePadding);
  capacity_ = capacity;
}

namespace {

/// Makes a constructor accessible to Data's construction functions.
class FixedData final : public Data {
 public:
  FixedData() noexcept = default;
  explicit FixedData(std::span<const std::byte> bytes) {
    reserveBytes(bytes.size());
    if (!bytes.empty()) std::memcpy(bytes_, bytes.data(), bytes.size());
    length_ = bytes.size();
  }
};

}  // namespace

Ref<Data> Data::dataWithBytes(std::span<const std::byte> bytes) {
  return makeRef<FixedData>(bytes);
}

Ref<Data> Data::dataWithBytes(std::string_view bytes) { return dataWithBytes(bytesOf(bytes)); }

Ref<Data> Data::dataByTakingBytes(MutableData& buffer) {
  Ref<Data> data = makeRef<FixedData>();
  if (buffer.capacity_ > 0) {
    // If shrinking fails, the larger block stays.
    if (void* cut = std::realloc(buffer.bytes_, buffer.length_ + kReadablePadding)) {
      buffer.bytes_ = static_cast<std::byte*>(cut);
      buffer.capacity_ = buffer.length_;
    }
    std::memset(buffer.bytes_ + buffer.length_, 0, kReadablePadding);
  }
  data->bytes_ = std::exchange(buffer.bytes_, noBytes());
  data->length_ = std::exchange(buffer.length_, 0);
  data->capacity_ = std::exchange(buffer.capacity_, 0);
  return data;
}

bool Data::isEqual(const Object& other) const {
  return other.kind() == ObjectKind::data && view() == static_cast<const Data&>(other).view();
}

std::size_t Data::hash() const { return detail::hashOfBytes(view()); }

std::string Data::description() const {
  constexpr std::size_t kShown = 24;
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text = "<";
  text.append(std::to_string(length_)).append(" bytes: ");
  for (const std::byte byte : bytes().first(std::min(length_, kShown))) {
    text += kDigits[std::to_integer<unsigned>(byte) >> 4];
    text += kDigits[std::to_integer<unsigned>(byte) & 15];
  }
  return text += length_ > kShown ? "…>" : ">";
}

Ref<MutableData> MutableData::data() {
  auto data = Ref<MutableData>::adopt(new MutableData);
  data->reserveBytes(0);
  return data;
}

Ref<MutableData> MutableData::dataWithLength(std::size_t length) {
  Ref<MutableData> data = MutableData::data();
  data->setLength(length);
  return data;
}

void MutableData::append(std::span<const std::byte> bytes) {
  if (bytes.empty()) return;
  std::memcpy(spareRoom(bytes.size()).data(), bytes.data(), bytes.size());
  commit(bytes.size());
}

void MutableData::append(std::string_view bytes) { append(bytesOf(bytes)); }

void MutableData::setLength(std::size_t length) {
  if (length > length_) {
    reserveBytes(length);
    std::memset(bytes_ + length_, 0, length - length_);
  }
  length_ = length;
}

std::span<std::byte> MutableData::spareRoom(std::size_t wanted) {
  constexpr std::size_t kFirstCapacity = 256;
  if (wanted > capacity_ - length_) {
    if (wanted > std::numeric_limits<std::size_t>::max() / 2 - length_) throw std::bad_alloc();
    reserveBytes(std::max({length_ + wanted, 2 * capacity_, kFirstCapacity}));
  }
  return {bytes_ + length_, capacity_ - length_};
}

void MutableData::commit(std::size_t count) {
  TQ_ASSERT(count <= capacity_ - length_);
  if (count == 0) return;
  length_ += count;
  std::memset(bytes_ + length_, 0, kReadablePadding);  // see reserveBytes()
}

Ref<Object> MutableData::copy() const { return dataWithBytes(bytes()); }

}  // namespace tq
