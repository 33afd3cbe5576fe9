#pragma once

/// @file Array.h
/// Ordered arrays of objects, fixed and growable.

#include <atomic>
#include <cstddef>
#include <initializer_list>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Number.h>

namespace tq {

namespace detail {
struct Construction;
}

/// An immutable array. Holds its elements strongly; none of them is null.
///
/// An array made of numbers alone keeps them packed, 8 or 9 bytes each. They are boxed, all at once
/// and for good, when an element is first asked for as an object; numberAtIndex() never boxes.
///
/// Threads: any (boxing included); a MutableArray one at a time.
class TQ_EXPORT Array : public Subclass<Array> {
 protected:
  /// What the elements are kept as: boxes, or numbers of one kind or of several.
  enum class Storage : std::uint8_t { objects, integers, doubles, numbers };

 public:
  static constexpr std::string_view className = "Array";
  static constexpr std::string_view codingName = "NSArray";

  /// Goes over the elements as Object&.
  class Iterator {
   public:
    using iterator_category = std::random_access_iterator_tag;
    using iterator_concept = std::random_access_iterator_tag;
    using value_type = Object;
    using difference_type = std::ptrdiff_t;
    using pointer = Object*;
    using reference = Object&;

    Iterator() noexcept = default;
    /// At an element of an array of references, none of which is null.
    explicit Iterator(const Ref<Object>* at) noexcept : at_(at) {}

    reference operator*() const noexcept { return **at_; }
    pointer operator->() const noexcept { return at_->get(); }
    /// The element `n` further on.
    reference operator[](difference_type n) const noexcept { return *at_[n]; }
    Iterator& operator++() noexcept { return ++at_, *this; }
    Iterator& operator--() noexcept { return --at_, *this; }
    Iterator operator++(int) noexcept { return Iterator(at_++); }
    Iterator operator--(int) noexcept { return Iterator(at_--); }
    /// Steps by `n`, which may be negative.
    Iterator& operator+=(difference_type n) noexcept { return at_ += n, *this; }
    Iterator& operator-=(difference_type n) noexcept { return at_ -= n, *this; }
    friend Iterator operator+(Iterator i, difference_type n) noexcept { return i += n; }
    friend Iterator operator+(difference_type n, Iterator i) noexcept { return i += n; }
    friend Iterator operator-(Iterator i, difference_type n) noexcept { return i -= n; }
    friend difference_type operator-(Iterator a, Iterator b) noexcept { return a.at_ - b.at_; }
    friend auto operator<=>(Iterator, Iterator) noexcept = default;

   private:
    const Ref<Object>* at_ = nullptr;
  };

  /// An array without elements.
  [[nodiscard]] static Ref<Array> array();
  /// Shares the elements. @throws Exception (InvalidArgumentException) when one is none
  [[nodiscard]] static Ref<Array> arrayWithObjects(std::span<const Ref<Object>> objects);
  [[nodiscard]] static Ref<Array> arrayWithObjects(std::initializer_list<Ref<Object>> objects);
  /// Takes the elements over.
  [[nodiscard]] static Ref<Array> arrayWithObjects(std::vector<Ref<Object>>&& objects);
  /// A packed array.
  [[nodiscard]] static Ref<Array> arrayWithNumbers(std::span<const NumberValue> numbers);
  [[nodiscard]] static Ref<Array> arrayWithNumbers(std::span<const double> numbers);

  ~Array() override;

  [[nodiscard]] std::size_t count() const noexcept { return count_; }

  /// @throws Exception (RangeException) when index >= count()
  [[nodiscard]] Object& objectAtIndex(std::size_t index) const;

  /// Lent by the array; null when it is empty.
  [[nodiscard]] Object* firstObject() const { return count_ != 0 ? elements()[0].get() : nullptr; }
  [[nodiscard]] Object* lastObject() const {
    return count_ != 0 ? elements()[count_ - 1].get() : nullptr;
  }

  /// The elements, held by the array.
  [[nodiscard]] std::span<const Ref<Object>> objects() const { return {elements(), count_}; }
  [[nodiscard]] Iterator begin() const { return Iterator(elements()); }
  [[nodiscard]] Iterator end() const { return Iterator(elements() + count_); }

  /// True when the elements are numbers kept without boxes.
  [[nodiscard]] bool isPacked() const noexcept { return storage() != Storage::objects; }

  /// An element of a packed array, without boxing it. The array must be packed, index < count().
  [[nodiscard]] NumberValue numberAtIndex(std::size_t index) const noexcept {
    const Storage kept = storage();
    const NumberKind kind = kept == Storage::integers  ? NumberKind::int64
                            : kept == Storage::doubles ? NumberKind::float64
                                                       : packedKinds()[index];
    return NumberValue::withKind(kind, packedBits()[index]);
  }

  /// Same count, and each element equal to its counterpart; packed, boxed or mutable alike.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  /// Of the count and the first, middle and last element. Cost: theirs.
  [[nodiscard]] std::size_t hash() const override;
  /// "(a, b)" of the elements' descriptions, 32 levels deep at the most.
  [[nodiscard]] std::string description() const override;

 protected:
  /// An array that its maker fills.
  explicit Array(Storage storage, std::size_t count = 0) noexcept
      : Subclass(ObjectKind::array, static_cast<std::uint8_t>(storage)), count_(count) {}

  /// How the elements are kept at the moment.
  [[nodiscard]] Storage storage() const noexcept { return static_cast<Storage>(headerDetail()); }

  /// The boxed elements, boxing them if need be.
  /// @throws std::bad_alloc
  [[nodiscard]] const Ref<Object>* elements() const {
    const Ref<Object>* elements = elements_.load(std::memory_order_acquire);  // pairs with box()
    return elements != nullptr || !isPacked() ? elements : box();
  }

  /// Where the elements are; null while they are packed, and in an empty array.
  mutable std::atomic<const Ref<Object>*> elements_{nullptr};
  /// How many there are.
  std::size_t count_;

 private:
  friend struct detail::Construction;

  /// A fixed array of `count` elements that are none until the maker has filled them in.
  [[nodiscard]] static Ref<Array> makeUnfilled(std::size_t count);
  [[nodiscard]] std::span<Ref<Object>> slots() noexcept;
  [[nodiscard]] static Ref<Array> makePacked(Storage storage, std::size_t count);
  [[nodiscard]] std::uint64_t* packedBits() const noexcept {
    return reinterpret_cast<std::uint64_t*>(const_cast<Array*>(this) + 1);
  }
  [[nodiscard]] NumberKind* packedKinds() const noexcept {
    return reinterpret_cast<NumberKind*>(packedBits() + count_);
  }
  const Ref<Object>* box() const;
};

/// An array that can change. Threads: one at a time; never while it is being gone over.
class TQ_EXPORT MutableArray final : public Subclass<MutableArray, Array> {
 public:
  static constexpr std::string_view className = "MutableArray";
  static constexpr std::string_view codingName = "NSMutableArray";

  /// An array without elements.
  [[nodiscard]] static Ref<MutableArray> array();
  /// A growable array of the same elements, shared.
  [[nodiscard]] static Ref<MutableArray> arrayWithArray(const Array& array);

  /// @throws Exception (InvalidArgumentException) for none
  void addObject(Ref<Object> object);
  /// @throws Exception: InvalidArgumentException for none, RangeException when index > count()
  void insertObject(Ref<Object> object, std::size_t atIndex);
  /// @throws Exception (RangeException) when index >= count()
  void removeObjectAtIndex(std::size_t index);
  /// @throws Exception: RangeException when index >= count(), InvalidArgumentException for none
  void replaceObjectAtIndex(std::size_t index, Ref<Object> withObject);
  /// Drops every element.
  void removeAllObjects() noexcept;
  /// Room for as many elements in all, so that adding them cannot fail.
  /// @throws std::bad_alloc; std::length_error beyond what an array could ever hold
  void reserve(std::size_t capacity);

  /// A fixed array of the same elements.
  [[nodiscard]] Ref<Object> copy() const override;

 private:
  MutableArray() noexcept : Subclass(Storage::objects) {}
  void changed() noexcept;

  std::vector<Ref<Object>> objects_;
};

}  // namespace tq
