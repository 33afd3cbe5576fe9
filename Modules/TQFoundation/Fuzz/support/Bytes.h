#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

namespace tq::fuzz {

inline void require(bool condition) {
  if (!condition) std::abort();
}

/// Takes values from bytes; zeros after the end.
class Bytes {
 public:
  Bytes(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  [[nodiscard]] bool isEmpty() const { return size_ == 0; }

  template <class T>
  T take() {
    T value{};
    const std::size_t taken = std::min(sizeof value, size_);
    std::memcpy(&value, data_, taken);
    data_ += taken;
    size_ -= taken;
    return value;
  }

  /// Takes a byte as a number below `count`, at most 256.
  std::size_t choose(std::size_t count) { return take<std::uint8_t>() % count; }
  /// Takes a byte as an index.
  template <class T, std::size_t kCount>
  const T& pick(const T (&options)[kCount]) {
    return options[choose(kCount)];
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
};

}  // namespace tq::fuzz
