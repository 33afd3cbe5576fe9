#pragma once

/// @file Array.h
/// Ordered arrays of objects, fixed and growable.

#include <atomic>
#include <cstddef>
#include <functional>
#include <initializer_list>
#include <iterator>
#include <span>
#include <utility>
#include <vector>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/ChangeWatch.h>
#include <TQFoundation/objects/Class.h>
#include <TQFoundation/objects/Number.h>

namespace tq {

namespace detail {
struct Construction;
}

/// Returns the replacement of an element.
using ArrayMapBlock = std::function<Ref<Object>(Object&)>;
/// Returns whether an element matches.
using ArrayPredicate = std::function<bool(Object&)>;

/// An immutable array. It retains its elements, which are never null.
///
/// An array created from numbers stores them packed, in 8 or 9 bytes each. The first access to an
/// element as an object boxes all of them, once. numberAtIndex() never boxes.
///
/// Threads: any, also while elements are boxed. MutableArray: one at a time.
class TQ_EXPORT Array : public Subclass<Array> {
 protected:
  /// How elements are stored: as objects, as numbers of one kind, as numbers of several kinds, or
  /// as the objects of a MutableArray.
  enum class Storage : std::uint8_t { objects, integers, doubles, numbers, growing };

 public:
  static constexpr std::string_view className = "Array";
  static constexpr std::string_view codingName = "NSArray";

  /// Iterates over the elements as Object&.
  class Iterator {
   public:
    using iterator_category = std::random_access_iterator_tag;
    using iterator_concept = std::random_access_iterator_tag;
    using value_type = Object;
    using difference_type = std::ptrdiff_t;
    using pointer = Object*;
    using reference = Object&;

    Iterator() noexcept = default;
    /// Points to an element of an array of references that are not null.
    explicit Iterator(const Ref<Object>* at) noexcept : at_(at) {}

    reference operator*() const noexcept { return **at_; }
    pointer operator->() const noexcept { return at_->get(); }
    /// The element `n` positions further.
    reference operator[](difference_type n) const noexcept { return *at_[n]; }
    Iterator& operator++() noexcept { return ++at_, *this; }
    Iterator& operator--() noexcept { return --at_, *this; }
    Iterator operator++(int) noexcept { return Iterator(at_++); }
    Iterator operator--(int) noexcept { return Iterator(at_--); }
    /// Moves by `n`, which may be negative.
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

  /// Returns an empty array.
  [[nodiscard]] static Ref<Array> array();
  /// Retains the elements. @throws Exception (InvalidArgumentException) if one is null
  [[nodiscard]] static Ref<Array> arrayWithObjects(std::span<const Ref<Object>> objects);
  [[nodiscard]] static Ref<Array> arrayWithObjects(std::initializer_list<Ref<Object>> objects);
  /// Takes over the elements. After an exception the list still has them.
  [[nodiscard]] static Ref<Array> arrayWithObjects(std::vector<Ref<Object>>&& objects) {
    Ref<Array> array = arrayByMoving(objects);
    objects.clear();
    return array;
  }
  /// Creates a packed array.
  [[nodiscard]] static Ref<Array> arrayWithNumbers(std::span<const NumberValue> numbers);
  [[nodiscard]] static Ref<Array> arrayWithNumbers(std::span<const double> numbers);

  ~Array() override;

  [[nodiscard]] std::size_t count() const noexcept { return count_; }

  /// Returns an element. The array owns it. @throws Exception (RangeException) if index >= count()
  [[nodiscard]] Object& objectAtIndex(std::size_t index) const;

  /// Returns null if the array is empty. The array owns the element.
  [[nodiscard]] Object* firstObject() const { return count_ != 0 ? elements()[0].get() : nullptr; }
  [[nodiscard]] Object* lastObject() const {
    return count_ != 0 ? elements()[count_ - 1].get() : nullptr;
  }

  /// The elements. The array owns them.
  [[nodiscard]] std::span<const Ref<Object>> objects() const { return {elements(), count_}; }
  [[nodiscard]] Iterator begin() const { return Iterator(elements()); }
  [[nodiscard]] Iterator end() const { return Iterator(elements() + count_); }

  /// True if the elements are stored as numbers.
  [[nodiscard]] bool isPacked() const noexcept {
    return storage() != Storage::objects && storage() != Storage::growing;
  }

  /// Returns an element of a packed array without boxing it. The array must be packed and index <
  /// count().
  [[nodiscard]] NumberValue numberAtIndex(std::size_t index) const noexcept {
    const Storage kept = storage();
    const NumberKind kind = kept == Storage::integers  ? NumberKind::int64
                            : kept == Storage::doubles ? NumberKind::float64
                                                       : packedKinds()[index];
    return NumberValue::withKind(kind, packedBits()[index]);
  }

  // Each visits the elements once, in order, on the caller's thread, and does not change the array.
  // A block may change or release the array; what is visited are the elements at the start. Its
  // exceptions propagate. More functions on arrays are in ArrayConveniences.h.

  /// Returns the results of the block, one for each element.
  /// @throws Exception (InvalidArgumentException) if the block returns null
  [[nodiscard]] Ref<Array> map(const ArrayMapBlock& block) const;
  /// The same without results that are null or the Null object.
  [[nodiscard]] Ref<Array> compactMap(const ArrayMapBlock& block) const;
  /// Returns the elements of all arrays that the block returns, in order; null counts as empty.
  [[nodiscard]] Ref<Array> flatMap(const std::function<Ref<Array>(Object&)>& block) const;
  /// Returns the elements for which the predicate is true.
  [[nodiscard]] Ref<Array> filter(const ArrayPredicate& predicate) const;

  /// Returns true if the counts and the elements at each index are equal, for packed, boxed and
  /// mutable arrays. Arrays, dictionaries, sets and errors may nest to any depth. Cost: linear in
  /// the containers that exist, however often they are shared; members of sets and keys that are
  /// containers are also sorted, and compare the numbers in them exactly. If integers beyond 2^53
  /// equal floating-point numbers only by rounding, the cost of large shared containers is linear
  /// in the pairs that correspond. Objects of the host are compared by their own isEqual().
  [[nodiscard]] bool isEqual(const Object& other) const override;
  /// Combines the count and the hashes of the first, middle and last element.
  [[nodiscard]] std::size_t hash() const override;
  /// Returns "(a, b)" of the elements' descriptions. Content more than 32 levels deep, or beyond 1
  /// MiB in total, is replaced by "…".
  [[nodiscard]] std::string description() const override;

 protected:
  /// An array that its creator fills.
  explicit Array(Storage storage, std::size_t count = 0) noexcept
      : Subclass(ObjectKind::array, static_cast<std::uint8_t>(storage)), count_(count) {}

  /// How the elements are stored.
  [[nodiscard]] Storage storage() const noexcept { return static_cast<Storage>(headerDetail()); }

  /// Returns the elements as objects and boxes them first if necessary.
  /// @throws std::bad_alloc
  [[nodiscard]] const Ref<Object>* elements() const {
    const Ref<Object>* elements = elements_.load(std::memory_order_acquire);  // pairs with box()
    return elements != nullptr || !isPacked() ? elements : box();
  }

  /// The elements; null while they are packed and for an empty array.
  mutable std::atomic<const Ref<Object>*> elements_{nullptr};
  /// The number of elements.
  std::size_t count_;

 private:
  friend struct detail::Construction;
  friend class detail::ChangeWatch;

  /// A fixed array of `count` null elements. The creator must fill all of them.
  [[nodiscard]] static Ref<Array> makeUnfilled(std::size_t count);
  [[nodiscard]] static Ref<Array> arrayByMoving(std::span<Ref<Object>> objects);
  [[nodiscard]] std::span<Ref<Object>> slots() noexcept;
  [[nodiscard]] static Ref<Array> makePacked(Storage storage, std::size_t count);
  [[nodiscard]] std::uint64_t* packedBits() const noexcept {
    return reinterpret_cast<std::uint64_t*>(const_cast<Array*>(this) + 1);
  }
  [[nodiscard]] NumberKind* packedKinds() const noexcept {
    return reinterpret_cast<NumberKind*>(packedBits() + count_);
  }
  const Ref<Object>* box() const;
  /// The number of changes so far; null for a fixed array.
  [[nodiscard]] const std::uint64_t* changes() const noexcept;
};

/// A growable array. Threads: one at a time. It must not change during iteration.
class TQ_EXPORT MutableArray final : public Subclass<MutableArray, Array> {
 public:
  static constexpr std::string_view className = "MutableArray";
  static constexpr std::string_view codingName = "NSMutableArray";

  /// Returns an empty array.
  [[nodiscard]] static Ref<MutableArray> array();
  /// Creates an array of the same elements.
  [[nodiscard]] static Ref<MutableArray> arrayWithArray(const Array& array);

  /// Appends an element. @throws Exception (InvalidArgumentException) for null
  void addObject(Ref<Object> object);
  /// Inserts an element before the one at the index, or appends it at count().
  /// @throws Exception: InvalidArgumentException for null, RangeException if index > count()
  void insertObject(Ref<Object> object, std::size_t atIndex);
  /// Removes an element. @throws Exception (RangeException) if index >= count()
  void removeObjectAtIndex(std::size_t index);
  /// Replaces an element.
  /// @throws Exception: RangeException if index >= count(), InvalidArgumentException for null
  void replaceObjectAtIndex(std::size_t index, Ref<Object> withObject);
  /// Removes all elements.
  void removeAllObjects() noexcept;
  /// Reserves capacity for `capacity` elements in total, so that adding them cannot fail.
  /// @throws std::bad_alloc; std::length_error if no array can be that large
  void reserve(std::size_t capacity);

  /// Returns a fixed array of the same elements.
  [[nodiscard]] Ref<Object> copy() const override;

 private:
  friend class Array;

  MutableArray() noexcept : Subclass(Storage::growing) {}
  void changed() noexcept;

  std::vector<Ref<Object>> objects_;
  std::uint64_t changes_ = 0;
};

inline const std::uint64_t* Array::changes() const noexcept {
  return storage() == Storage::growing ? &static_cast<const MutableArray*>(this)->changes_
                                       : nullptr;
}

inline detail::ChangeWatch::ChangeWatch(const Array& array) noexcept
    : ChangeWatch(array.changes()) {}

}  // namespace tq
