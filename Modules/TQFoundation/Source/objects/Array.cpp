#include <TQFoundation/objects/Array.h>

#include <algorithm>
#include <bit>
#include <memory>
#include <string>

#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/Hash.h>
#include <TQFoundation/objects/detail/Describe.h>
#include <TQFoundation/objects/detail/Equality.h>

// A fixed array stores its contents after the object:
//   objects:            count × Ref<Object>
//   integers, doubles:  count × 8 bytes of payload
//   numbers:            count × 8 bytes of payload, then count × 1 byte of kind

namespace tq {
namespace {

static_assert(sizeof(Array) % alignof(std::uint64_t) == 0);

[[noreturn]] void raiseRange(std::size_t index, std::size_t count) {
  throw Exception(RangeException, "Index " + std::to_string(index) + " is beyond an array of " +
                                      std::to_string(count) + " elements.");
}

void requireObject(const Ref<Object>& object) {
  if (!object) throw Exception(InvalidArgumentException, "An array cannot hold null.");
}

}  // namespace

Array::~Array() {
  if (isPacked()) {
    delete[] elements_.load(std::memory_order_relaxed);  // the boxes
  } else {
    const std::span<Ref<Object>> held = slots();
    std::destroy(held.begin(), held.end());
  }
}

Ref<Array> Array::makeUnfilled(std::size_t count) {
  auto array =
      Ref<Array>::adopt(new (Trailing{count * sizeof(Ref<Object>)}) Array(Storage::objects, count));
  const auto* first = reinterpret_cast<Ref<Object>*>(array.get() + 1);
  std::uninitialized_value_construct_n(const_cast<Ref<Object>*>(first), count);
  array->elements_.store(first, std::memory_order_relaxed);
  return array;
}

/// Returns the elements inside this object; empty if they are stored elsewhere.
std::span<Ref<Object>> Array::slots() noexcept {
  auto* first = reinterpret_cast<Ref<Object>*>(this + 1);
  if (elements_.load(std::memory_order_relaxed) != first) return {};
  return {first, count_};
}

Ref<Array> Array::makePacked(Storage storage, std::size_t count) {
  const std::size_t perNumber = storage == Storage::numbers ? 9 : 8;
  return Ref<Array>::adopt(new (Trailing{count * perNumber}) Array(storage, count));
}

Ref<Array> Array::array() {
  static Array& empty = *Array::makeUnfilled(0).leak();
  return Ref<Array>(&empty);
}

Ref<Array> Array::arrayWithObjects(std::span<const Ref<Object>> objects) {
  if (objects.empty()) return array();
  std::ranges::for_each(objects, requireObject);
  Ref<Array> array = makeUnfilled(objects.size());
  std::ranges::copy(objects, array->slots().begin());
  return array;
}

Ref<Array> Array::arrayByMoving(std::span<Ref<Object>> objects) {
  if (objects.empty()) return array();
  std::ranges::for_each(objects, requireObject);
  Ref<Array> array = makeUnfilled(objects.size());
  std::ranges::move(objects, array->slots().begin());
  return array;
}

Ref<Array> Array::arrayWithObjects(std::initializer_list<Ref<Object>> objects) {
  return arrayWithObjects(std::span(objects.begin(), objects.size()));
}

Ref<Array> Array::arrayWithNumbers(std::span<const NumberValue> numbers) {
  if (numbers.empty()) return array();
  const NumberKind kind = numbers.front().kind();
  const bool alike =
      std::ranges::all_of(numbers, [kind](NumberValue n) { return n.kind() == kind; });
  const Storage storage = !alike                        ? Storage::numbers
                          : kind == NumberKind::int64   ? Storage::integers
                          : kind == NumberKind::float64 ? Storage::doubles
                                                        : Storage::numbers;
  Ref<Array> array = makePacked(storage, numbers.size());
  std::ranges::transform(numbers, array->packedBits(), &NumberValue::bits);
  if (storage == Storage::numbers) {
    std::ranges::transform(numbers, array->packedKinds(), &NumberValue::kind);
  }
  return array;
}

Ref<Array> Array::arrayWithNumbers(std::span<const double> numbers) {
  if (numbers.empty()) return array();
  Ref<Array> array = makePacked(Storage::doubles, numbers.size());
  std::ranges::transform(numbers, array->packedBits(),
                         [](double number) { return std::bit_cast<std::uint64_t>(number); });
  return array;
}

Object& Array::objectAtIndex(std::size_t index) const {
  if (index >= count_) raiseRange(index, count_);
  return *elements()[index];
}

/// Threads that box at the same time each create objects; the first to publish wins.
const Ref<Object>* Array::box() const {
  auto boxes = std::make_unique<Ref<Object>[]>(count_);
  for (std::size_t i = 0; i < count_; ++i) boxes[i] = Number::numberWith(numberAtIndex(i));
  const Ref<Object>* published = nullptr;
  if (elements_.compare_exchange_strong(published, boxes.get(), std::memory_order_acq_rel)) {
    return boxes.release();
  }
  return published;
}

bool Array::isEqual(const Object& other) const {
  if (this == &other) return true;
  return other.kind() == ObjectKind::array && detail::haveEqualContents(*this, other);
}

/// Uses the count and three elements. A packed array is not boxed for this.
std::size_t Array::hash() const {
  if (count_ == 0) return 0;
  std::size_t hash = count_;
  for (const std::size_t i : {std::size_t{0}, count_ / 2, count_ - 1}) {
    hash = detail::hashJoined(
        hash, isPacked() ? numberAtIndex(i).hash() : detail::hashOfElement(*elements()[i]));
  }
  return hash;
}

std::string Array::description() const {
  detail::ContainerDescription text("(");
  for (std::size_t i = 0; i < count_ && !text.isFull(); ++i) {
    if (i != 0) text.add(", ");
    if (isPacked()) {
      text.add(numberAtIndex(i).text());
    } else {
      text.add(*elements()[i]);
    }
  }
  return text.finish(")");
}

Ref<MutableArray> MutableArray::array() { return Ref<MutableArray>::adopt(new MutableArray); }

Ref<MutableArray> MutableArray::arrayWithArray(const Array& array) {
  Ref<MutableArray> result = MutableArray::array();
  const std::span<const Ref<Object>> objects = array.objects();
  result->objects_.assign(objects.begin(), objects.end());
  result->changed();
  return result;
}

void MutableArray::changed() noexcept {
  elements_.store(objects_.data(), std::memory_order_relaxed);
  count_ = objects_.size();
  ++changes_;
}

void MutableArray::addObject(Ref<Object> object) {
  requireObject(object);
  objects_.push_back(std::move(object));
  changed();
}

void MutableArray::insertObject(Ref<Object> object, std::size_t atIndex) {
  requireObject(object);
  if (atIndex > count_) raiseRange(atIndex, count_);
  objects_.insert(objects_.begin() + static_cast<std::ptrdiff_t>(atIndex), std::move(object));
  changed();
}

// The removed object is released last, because its destructor may call this array.
void MutableArray::removeObjectAtIndex(std::size_t index) {
  if (index >= count_) raiseRange(index, count_);
  const auto at = objects_.begin() + static_cast<std::ptrdiff_t>(index);
  const Ref<Object> removed = std::move(*at);
  objects_.erase(at);
  changed();
}

void MutableArray::replaceObjectAtIndex(std::size_t index, Ref<Object> withObject) {
  if (index >= count_) raiseRange(index, count_);
  requireObject(withObject);
  std::swap(objects_[index], withObject);
  ++changes_;
}

void MutableArray::removeAllObjects() noexcept {
  const std::vector<Ref<Object>> removed = std::move(objects_);
  objects_.clear();
  changed();
}

void MutableArray::reserve(std::size_t capacity) {
  objects_.reserve(capacity);
  changed();
}

Ref<Object> MutableArray::copy() const { return arrayWithObjects(objects()); }

}  // namespace tq
