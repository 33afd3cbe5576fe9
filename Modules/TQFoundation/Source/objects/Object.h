#pragma once

/// @file Object.h
/// The root of everything that is shared by reference.

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/base/TQMemory.h>

namespace tq {

class Class;
class Object;

template <class T>
class Ref;

namespace detail {
struct WeakBlock;
[[nodiscard]] TQ_EXPORT WeakBlock* weakBlockFor(const Object& object);
[[nodiscard]] TQ_EXPORT bool retainIfAlive(const WeakBlock& block) noexcept;
}  // namespace detail

/// What an object is, as far as the library's own code asks without a virtual call.
enum class ObjectKind : std::uint8_t {
  other,
  string,
  number,
  null,
  data,
  date,
  value,
  array,
  dictionary,
};

/// An object counted by its references. Made on the heap by makeRef() or by a class's own
/// constructing functions, never on the stack; a new object starts with a count of 1.
///
/// Threads:   the count may be changed on any thread; the last release destroys the object on the
///            thread that makes it. Everything else is up to the class.
/// Layout:    16 bytes: the virtual table, the count, and 4 bytes for the value classes.
/// Deep nests: releasing a chain or a nest of any depth takes bounded stack. Beyond a depth of
///            kDirectReleaseDepth an object is destroyed after the release that would have
///            destroyed it has returned, still before the outermost release on that thread returns.
class TQ_EXPORT Object {
 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object();

  /// How deep destructors may nest on the stack before the rest is put off.
  static constexpr int kDirectReleaseDepth = 64;

  /// The record of this object's class.
  [[nodiscard]] virtual const Class& objectClass() const noexcept;

  /// The record under which archives know this object: the public class of a family of
  /// implementations, else objectClass().
  [[nodiscard]] const Class& classForCoder() const noexcept;

  /// Equality of value. By default an object equals itself alone.
  [[nodiscard]] virtual bool isEqual(const Object& other) const;

  /// Equal objects have equal hashes. Differs from process to process: never store it.
  [[nodiscard]] virtual std::size_t hash() const;

  /// An immutable object of the same value: this object itself, but for mutable containers.
  [[nodiscard]] virtual Ref<Object> copy() const;

  /// Text for logs and messages; "<Shape: 0x…>" by default.
  [[nodiscard]] virtual std::string description() const;

  /// Which value class it is, if any: cheaper to ask than objectClass().
  [[nodiscard]] ObjectKind kind() const noexcept { return kind_; }

  /// Adds a reference. Prefer Ref, which does both halves.
  void retain() const noexcept { references_.fetch_add(kReference, std::memory_order_relaxed); }

  /// Drops a reference; the last one destroys the object.
  void release() const noexcept {
    // Acquire and release: what every holder wrote is seen by the destructor.
    const std::uint32_t before = references_.fetch_sub(kReference, std::memory_order_acq_rel);
    if (before < 2 * kReference) lastReleased(before);
  }

  /// References held at this moment; for tests and messages only.
  [[nodiscard]] std::uint32_t referenceCount() const noexcept {
    return references_.load(std::memory_order_relaxed) / kReference;
  }

  /// Room behind an object for contents whose size is known when it is made.
  struct Trailing {
    /// Bytes behind the object's own.
    std::size_t byteCount;
  };

  /// Objects live in the library's own heap; see TQMemory.h.
  static void* operator new(std::size_t size) { return allocateObjectMemory(size); }
  static void* operator new(std::size_t size, Trailing trailing) {
    return allocateObjectMemory(size + trailing.byteCount);
  }
  static void operator delete(void* memory) noexcept { freeObjectMemory(memory); }
  static void operator delete(void* memory, Trailing) noexcept { freeObjectMemory(memory); }

 protected:
  Object() noexcept : Object(ObjectKind::other) {}
  /// For the value classes, which have kinds of their own and a byte to use.
  explicit Object(ObjectKind kind, std::uint8_t detail = 0) noexcept
      : references_(kReference), kind_(kind), detail_(detail) {}

  /// A byte of a value class's own, in the header's spare room.
  [[nodiscard]] std::uint8_t headerDetail() const noexcept { return detail_; }

 private:
  friend detail::WeakBlock* detail::weakBlockFor(const Object&);
  friend bool detail::retainIfAlive(const detail::WeakBlock&) noexcept;

  // The count is kept in steps of 2; bit 0 says that weak references exist.
  static constexpr std::uint32_t kWeaklyHeld = 1;
  static constexpr std::uint32_t kReference = 2;

  void lastReleased(std::uint32_t before) const noexcept;
  void setNextPutOff(const Object* object) const noexcept;
  [[nodiscard]] const Object* nextPutOff() const noexcept;

  mutable std::atomic<std::uint32_t> references_;
  const ObjectKind kind_;
  const std::uint8_t detail_;
  mutable std::uint16_t linkHigh_ = 0;  // see nextPutOff()
};
static_assert(sizeof(Object) == 16);

}  // namespace tq
