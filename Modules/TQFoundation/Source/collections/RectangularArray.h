#pragma once

/// @file RectangularArray.h
/// Two-dimensional arrays with views of rows and columns.

#include <cstddef>
#include <limits>
#include <span>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/collections/detail/Strided.h>

namespace tq {

/// rowCount × columnCount elements, stored row by row in one block. A value type. A position out of
/// range stops the process. References and views are valid until the array is assigned to, moved
/// from or destroyed.
template <class Element>
class RectangularArray {
 public:
  RectangularArray() noexcept = default;
  /// An array of copies of `value`. Either count may be 0.
  /// @throws std::length_error, std::bad_alloc if it is too large
  RectangularArray(std::size_t rowCount, std::size_t columnCount, const Element& value = Element())
      : rowCount_(rowCount), columnCount_(columnCount) {
    TQ_ASSERT(columnCount == 0 ||
              rowCount <= std::numeric_limits<std::size_t>::max() / columnCount);
    elements_.assign(rowCount * columnCount, value);
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
    return elements_[position(row, column)];
  }
  [[nodiscard]] const Element& at(std::size_t row, std::size_t column) const {
    return elements_[position(row, column)];
  }

  /// Returns a row, which is contiguous.
  [[nodiscard]] std::span<Element> row(std::size_t row) { return rowOf(*this, row); }
  [[nodiscard]] std::span<const Element> row(std::size_t row) const { return rowOf(*this, row); }

  /// Returns a column as a random-access range of references.
  [[nodiscard]] auto column(std::size_t column) { return columnOf(*this, column); }
  [[nodiscard]] auto column(std::size_t column) const { return columnOf(*this, column); }

  /// Returns all elements, row by row.
  [[nodiscard]] std::span<Element> elements() noexcept { return elements_; }
  [[nodiscard]] std::span<const Element> elements() const noexcept { return elements_; }

  friend bool operator==(const RectangularArray&, const RectangularArray&) = default;

 private:
  [[nodiscard]] std::size_t position(std::size_t row, std::size_t column) const {
    TQ_ASSERT(row < rowCount_ && column < columnCount_);
    return row * columnCount_ + column;
  }

  template <class Self>
  static auto rowOf(Self& self, std::size_t row) {
    TQ_ASSERT(row < self.rowCount_);
    return std::span(self.elements_).subspan(row * self.columnCount_, self.columnCount_);
  }

  template <class Self>
  static auto columnOf(Self& self, std::size_t column) {
    TQ_ASSERT(column < self.columnCount_);
    return detail::Strided(self.elements_.data() + column, self.columnCount_, self.rowCount_);
  }

  std::size_t rowCount_ = 0;
  std::size_t columnCount_ = 0;
  std::vector<Element> elements_;
};

}  // namespace tq
