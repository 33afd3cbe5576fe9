#pragma once

/// @file Object.h
/// Object, the reference-counted root of all classes.

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

/// The value classes, for fast tests without a virtual call.
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

/// A reference-counted object. It lives on the heap, created by makeRef() or by construction
/// functions of its class, never on the stack. A new object has a count of 1.
///
/// Threads:   the count may be changed on any thread. The last release destroys the object on the
///            thread that calls it. Everything else depends on the class.
/// Layout:    16 bytes: the virtual table, the count, and 4 bytes for the value classes.
/// Deep nests: releasing a chain or a nest of any depth takes bounded stack. At a depth of
///            kDirectReleaseDepth, destruction is deferred: it then happens after the release that
///            caused it has returned, but before the outermost release on that thread returns.
/// Destructors: may make references to the object and release them again, for example by passing it
///            to a function of the library. A reference that still exists when the destructor has
///            finished stops the process, and so does a Weak that is made in the destructor.
class TQ_EXPORT Object {
 public:
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object();

  /// How deep destructors may nest on the stack before further ones are deferred.
  static constexpr int kDirectReleaseDepth = 64;

  /// Returns the record of this object's class.
  [[nodiscard]] virtual const Class& objectClass() const noexcept;

  /// Returns the class that archives write for this object: the public class of a family of
  /// implementations, else objectClass().
  [[nodiscard]] const Class& classForCoder() const noexcept;

  /// Returns true if both have the same value. By default an object equals only itself. Containers
  /// call isEqual() and hash() while they search and compare, and description() for their own: none
  /// may change the container.
  [[nodiscard]] virtual bool isEqual(const Object& other) const;

  /// Returns the hash. Equal objects have equal hashes. It differs from process to process: never
  /// store it.
  [[nodiscard]] virtual std::size_t hash() const;

  /// Returns an immutable object of the same value: this object itself, or a fixed copy of a
  /// mutable container.
  [[nodiscard]] virtual Ref<Object> copy() const;

  /// Returns text for logs and messages; "<Shape: 0x…>" by default.
  [[nodiscard]] virtual std::string description() const;

  /// Returns the value class of the object, if it is one. Cheaper than objectClass().
  [[nodiscard]] ObjectKind kind() const noexcept { return kind_; }

  /// Adds a reference. Prefer Ref, which also releases.
  void retain() const noexcept { references_.fetch_add(kReference, std::memory_order_relaxed); }

  /// Releases a reference. The last release destroys the object.
  void release() const noexcept {
    // Acquire and release: the destructor sees what every holder wrote.
    const std::uint32_t before = references_.fetch_sub(kReference, std::memory_order_acq_rel);
    if (before < 2 * kReference) lastReleased(before);
  }

  /// Returns the current number of references; for tests and messages only.
  [[nodiscard]] std::uint32_t referenceCount() const noexcept {
    return (references_.load(std::memory_order_relaxed) & ~kBeingDestroyed) / kReference;
  }

  /// Returns true while the destructor runs. Only for the thread that destroys the object.
  [[nodiscard]] bool isBeingDestroyed() const noexcept {
    return (references_.load(std::memory_order_relaxed) & kBeingDestroyed) != 0;
  }

  /// Memory behind an object, for contents whose size is known at construction.
  struct Trailing {
    /// Number of bytes after the object's own.
    std::size_t byteCount;
  };

  /// Objects are allocated from the library's own heap; see TQMemory.h.
  static void* operator new(std::size_t size) { return allocateObjectMemory(size); }
  static void* operator new(std::size_t size, Trailing trailing) {
    return allocateObjectMemory(size + trailing.byteCount);
  }
  static void operator delete(void* memory) noexcept { freeObjectMemory(memory); }
  static void operator delete(void* memory, Trailing) noexcept { freeObjectMemory(memory); }

 protected:
  Object() noexcept : Object(ObjectKind::other) {}
  /// For value classes: sets the kind and the class's own byte.
  explicit Object(ObjectKind kind, std::uint8_t detail = 0) noexcept
      : references_(kReference), kind_(kind), detail_(detail) {}

  /// The value class's own byte, stored in spare bits of the header.
  [[nodiscard]] std::uint8_t headerDetail() const noexcept { return detail_; }

 private:
  friend detail::WeakBlock* detail::weakBlockFor(const Object&);
  friend bool detail::retainIfAlive(const detail::WeakBlock&) noexcept;

  // The count is stored in steps of 2. Bit 0 is set when weak references exist. The highest bit is
  // set while the destructor runs, so that no release in it reaches 0 again.
  static constexpr std::uint32_t kBeingDestroyed = 0x8000'0000;
  static constexpr std::uint32_t kWeaklyHeld = 1;
  static constexpr std::uint32_t kReference = 2;

  void lastReleased(std::uint32_t before) const noexcept;
  void destroy() const noexcept;
  void setNextPutOff(const Object* object) const noexcept;
  [[nodiscard]] const Object* nextPutOff() const noexcept;

  mutable std::atomic<std::uint32_t> references_;
  const ObjectKind kind_;
  const std::uint8_t detail_;
  mutable std::uint16_t linkHigh_ = 0;  // see nextPutOff()
};
static_assert(sizeof(Object) == 16);

}  // namespace tq
