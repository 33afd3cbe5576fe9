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

  /// Readable bytes after the last one, also of empty data. Their values are unspecified and they
  /// must not be written. They allow readers to load several bytes at once without a copy of the
  /// buffer.
  static constexpr std::size_t kReadablePadding = 64;

  /// Copies the bytes. @throws std::bad_alloc
  [[nodiscard]] static Ref<Data> dataWithBytes(std::span<const std::byte> bytes);
  [[nodiscard]] static Ref<Data> dataWithBytes(std::string_view bytes);

  /// Takes the bytes of `buffer` without a copy and shrinks their block to fit. `buffer` is empty
  /// afterwards. @throws std::bad_alloc, with the buffer unchanged
  [[nodiscard]] static Ref<Data> dataByTakingBytes(MutableData& buffer);

  ~Data() override;

  /// The number of bytes.
  [[nodiscard]] std::size_t length() const noexcept { return length_; }
  /// The bytes. Valid while the data exists and is not changed.
  [[nodiscard]] std::span<const std::byte> bytes() const noexcept { return {bytes_, length_}; }
  [[nodiscard]] std::string_view view() const noexcept {
    return {reinterpret_cast<const char*>(bytes_), length_};
  }

  /// Compares the bytes of fixed and growable data alike.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;

  /// Returns "<3 bytes: 0a1b2c>", with at most the first 24 bytes.
  [[nodiscard]] std::string description() const override;

 protected:
  Data() noexcept : Subclass(ObjectKind::data) {}

  /// Reserves capacity for at least `capacity` bytes. Strong guarantee. Constructors must call it,
  /// if only with 0, so that there is padding.
  void reserveBytes(std::size_t capacity);

  /// The bytes; constant ones while the capacity is 0.
  std::byte* bytes_ = nullptr;
  /// The number of bytes.
  std::size_t length_ = 0;
  /// The number of bytes that fit.
  std::size_t capacity_ = 0;
};

/// A growable byte buffer. Threads: one at a time.
class TQ_EXPORT MutableData final : public Subclass<MutableData, Data> {
 public:
  static constexpr std::string_view className = "MutableData";
  static constexpr std::string_view codingName = "NSMutableData";

  /// Creates empty data.
  [[nodiscard]] static Ref<MutableData> data();
  /// Creates `length` bytes of 0.
  [[nodiscard]] static Ref<MutableData> dataWithLength(std::size_t length);

  /// Appends a copy of `bytes`, which must not be part of this buffer. Capacity at least doubles
  /// when it is exceeded. @throws std::bad_alloc, with the buffer unchanged
  void append(std::span<const std::byte> bytes);
  void append(std::string_view bytes);

  /// Sets the length. New bytes are 0; surplus bytes are removed.
  void setLength(std::size_t length);

  /// Reserves capacity for `capacity` bytes in total.
  void reserve(std::size_t capacity) { reserveBytes(capacity); }

  /// The bytes, writable. Valid until the next call of a function that is not const.
  [[nodiscard]] std::span<std::byte> mutableBytes() noexcept { return {bytes_, length_}; }

  /// Returns the unused capacity after the last byte, at least `wanted` bytes, for writing in
  /// place. commit() then appends the first `count` of them to the content.
  [[nodiscard]] std::span<std::byte> spareRoom(std::size_t wanted);
  void commit(std::size_t count);

  [[nodiscard]] Ref<Object> copy() const override;

 private:
  MutableData() noexcept = default;
};

}  // namespace tq
