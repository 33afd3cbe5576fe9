#pragma once

/// @file Data.h
/// Byte buffers, fixed and growable.

#include <cstddef>
#include <span>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

class MutableData;

/// An immutable byte buffer. Threads: any.
class TQ_EXPORT Data : public Subclass<Data> {
 public:
  static constexpr std::string_view className = "Data";
  static constexpr std::string_view codingName = "NSData";

  /// Bytes behind the last one that may be read (never written, and of no meaning): readers that
  /// look at several bytes at once need not copy the buffer.
  static constexpr std::size_t kReadablePadding = 64;

  /// A copy of the bytes. @throws std::bad_alloc
  [[nodiscard]] static Ref<Data> dataWithBytes(std::span<const std::byte> bytes);
  [[nodiscard]] static Ref<Data> dataWithBytes(std::string_view bytes);

  /// The bytes of `buffer` without a copy, in a block cut to their length; `buffer` is empty
  /// afterwards. @throws std::bad_alloc, the buffer unchanged
  [[nodiscard]] static Ref<Data> dataByTakingBytes(MutableData& buffer);

  ~Data() override;

  /// Bytes held.
  [[nodiscard]] std::size_t length() const noexcept { return length_; }
  /// Lent; good while the data lives and, if it is mutable, stays as it is.
  [[nodiscard]] std::span<const std::byte> bytes() const noexcept { return {bytes_, length_}; }
  [[nodiscard]] std::string_view view() const noexcept {
    return {reinterpret_cast<const char*>(bytes_), length_};
  }

  /// Same bytes, whether fixed or growable.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;

  /// "<3 bytes: 0a1b2c>", the first 24 at the most.
  [[nodiscard]] std::string description() const override;

 protected:
  Data() noexcept : Subclass(ObjectKind::data) {}

  /// Room for at least `capacity` bytes; nothing changes when there is no memory.
  void reserveBytes(std::size_t capacity);

  /// The bytes; null when there are none.
  std::byte* bytes_ = nullptr;
  /// How many there are.
  std::size_t length_ = 0;
  /// Room for as many.
  std::size_t capacity_ = 0;
};

/// A growable byte buffer. Threads: one at a time.
class TQ_EXPORT MutableData final : public Subclass<MutableData, Data> {
 public:
  static constexpr std::string_view className = "MutableData";
  static constexpr std::string_view codingName = "NSMutableData";

  /// No bytes.
  [[nodiscard]] static Ref<MutableData> data();
  /// `length` bytes of 0.
  [[nodiscard]] static Ref<MutableData> dataWithLength(std::size_t length);

  /// Appends a copy of `bytes`, which must not lie in this buffer. Capacity at least doubles when
  /// it is exceeded. @throws std::bad_alloc, the buffer unchanged
  void append(std::span<const std::byte> bytes);
  void append(std::string_view bytes);

  /// Longer: filled up with 0. Shorter: cut.
  void setLength(std::size_t length);

  /// Room for `capacity` bytes in all without a further allocation.
  void reserve(std::size_t capacity) { reserveBytes(capacity); }

  /// The bytes, open to change. Lent until the length changes.
  [[nodiscard]] std::span<std::byte> mutableBytes() noexcept { return {bytes_, length_}; }

  /// The spare room behind the last byte, at least `wanted` bytes long, for writing in place;
  /// commit() then takes the first `count` of them into the buffer.
  [[nodiscard]] std::span<std::byte> spareRoom(std::size_t wanted);
  void commit(std::size_t count);

  [[nodiscard]] Ref<Object> copy() const override;

 private:
  MutableData() noexcept = default;
};

}  // namespace tq
