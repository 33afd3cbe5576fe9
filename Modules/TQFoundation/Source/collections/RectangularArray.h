#pragma once

/// @file RectangularArray.h
/// Two-dimensional arrays with views of rows and columns.

#include <algorithm>
#include <concepts>
#include <cstddef>
#include <limits>
#include <memory>
#include <span>
#include <stdexcept>
#include <type_traits>
#include <utility>
#include <valarray>
#include <vector>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/collections/detail/Strided.h>

namespace tq {

/// rowCount × columnCount elements, stored row by row in one block. A value type. An element of
/// type bool takes a byte. A position out of range stops the process. References and views are
/// valid until the array is assigned to, moved from or destroyed.
template <class Element>
class RectangularArray {
 public:
  RectangularArray() noexcept = default;
  /// An array of copies of `value`. Either count may be 0.
  /// @throws std::length_error, std::bad_alloc if it is too large
  RectangularArray(std::size_t rowCount, std::size_t columnCount, const Element& value = Element())
      : rowCount_(rowCount), columnCount_(columnCount) {
    if (columnCount != 0 && rowCount > std::numeric_limits<std::size_t>::max() / columnCount) {
      throw std::length_error("RectangularArray");
    }
    elements_.resize(rowCount * columnCount, value);
  }

  /// Copies the elements.
  RectangularArray(const RectangularArray&) = default;
  RectangularArray& operator=(const RectangularArray&) = default;
  /// The array that is moved from becomes empty.
  RectangularArray(RectangularArray&& other) noexcept { *this = std::move(other); }
  RectangularArray& operator=(RectangularArray&& other) noexcept {
    rowCount_ = std::exchange(other.rowCount_, 0);
    columnCount_ = std::exchange(other.columnCount_, 0);
    elements_ = std::exchange(other.elements_, {});
    return *this;
  }

  /// Return the size.
  [[nodiscard]] std::size_t rowCount() const noexcept { return rowCount_; }
  [[nodiscard]] std::size_t columnCount() const noexcept { return columnCount_; }

  /// Returns an element.
  [[nodiscard]] Element& at(std::size_t row, std::size_t column) {
    return elements()[position(row, column)];
  }
  [[nodiscard]] const Element& at(std::size_t row, std::size_t column) const {
    return elements()[position(row, column)];
  }

  /// Returns a row, which is contiguous.
  [[nodiscard]] std::span<Element> row(std::size_t row) { return rowOf(*this, row); }
  [[nodiscard]] std::span<const Element> row(std::size_t row) const { return rowOf(*this, row); }

  /// Returns a column as a random-access range of references.
  [[nodiscard]] auto column(std::size_t column) { return columnOf(*this, column); }
  [[nodiscard]] auto column(std::size_t column) const { return columnOf(*this, column); }

  /// Returns all elements, row by row.
  [[nodiscard]] std::span<Element> elements() noexcept { return elementsOf(*this); }
  [[nodiscard]] std::span<const Element> elements() const noexcept { return elementsOf(*this); }

  /// Returns whether both have the same numbers of rows and columns, and equal elements.
  friend bool operator==(const RectangularArray& a,
                         const RectangularArray& b) requires std::equality_comparable<Element> {
    return a.rowCount_ == b.rowCount_ && a.columnCount_ == b.columnCount_ &&
           std::ranges::equal(a.elements(), b.elements());
  }

 private:
  [[nodiscard]] std::size_t position(std::size_t row, std::size_t column) const {
    TQ_ASSERT(row < rowCount_ && column < columnCount_);
    return row * columnCount_ + column;
  }

  template <class Self>
  static auto elementsOf(Self& self) noexcept {
    auto* const first = self.elements_.size() != 0 ? std::addressof(self.elements_[0]) : nullptr;
    return std::span(first, self.elements_.size());
  }

  template <class Self>
  static auto rowOf(Self& self, std::size_t row) {
    TQ_ASSERT(row < self.rowCount_);
    return self.elements().subspan(row * self.columnCount_, self.columnCount_);
  }

  template <class Self>
  static auto columnOf(Self& self, std::size_t column) {
    TQ_ASSERT(column < self.columnCount_);
    const std::size_t first = self.rowCount_ == 0 ? 0 : column;
    return detail::Strided(self.elements().data() + first, self.columnCount_, self.rowCount_);
  }

  std::size_t rowCount_ = 0;
  std::size_t columnCount_ = 0;
  // A vector of bool stores bits, to which no reference or span can point.
  using Elements =
      std::conditional_t<std::is_same_v<Element, bool>, std::valarray<bool>, std::vector<Element>>;
  Elements elements_;
};

}  // namespace tq
