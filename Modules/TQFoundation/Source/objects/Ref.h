#pragma once

/// @file Ref.h
/// Owning references.

#include <compare>
#include <concepts>
#include <cstddef>
#include <string>
#include <type_traits>
#include <utility>

#include <TQFoundation/objects/Object.h>

namespace tq {

/// Owns one reference to an object, or is null. Copying costs an atomic increment; moving costs
/// nothing. Pass `const T&` or `T*` to functions that only read, and Ref<T> to functions that keep
/// the object.
///
/// Threads: like a plain pointer: the object's count is thread-safe, the Ref itself is not.
template <class T>
class Ref {
 public:
  constexpr Ref() noexcept = default;
  /// A null reference.
  constexpr Ref(std::nullptr_t) noexcept {}  // NOLINT: nullptr converts

  /// Shares `object` (adds a reference). Null makes a null reference.
  explicit Ref(T* object) noexcept : object_(object) {
    if (object_ != nullptr) object_->retain();
  }

  /// Takes over the reference that the caller owns.
  [[nodiscard]] static Ref adopt(T* object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }

  /// Copying adds a reference. Moving leaves null behind.
  Ref(const Ref& other) noexcept : Ref(other.object_) {}
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}

  /// Shares the object of a reference to a derived or to a mutable class.
  template <class U>
  requires std::convertible_to<U*, T*> Ref(const Ref<U>& other)
  noexcept : Ref(static_cast<T*>(other.get())) {}

  /// Takes over the object of such a reference.
  template <class U>
  requires std::convertible_to<U*, T*> Ref(Ref<U>&& other)
  noexcept : object_(other.leak()) {}

  ~Ref() {
    if (object_ != nullptr) object_->release();
  }

  /// Releases the old object after the new one is retained, so self-assignment is safe.
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  /// Returns the object or null. Valid while this reference owns the object.
  [[nodiscard]] T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  /// True if not null.
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// Returns the object and becomes null. The caller must release the object.
  [[nodiscard]] T* leak() noexcept { return std::exchange(object_, nullptr); }

  /// Compares identity; use isEqual() to compare values. The order is that of the addresses: it is
  /// suitable for ordered containers, and differs from run to run.
  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.object_ == b.object_; }
  friend bool operator==(const Ref& a, const T* b) noexcept { return a.object_ == b; }
  friend std::strong_ordering operator<=>(const Ref& a, const Ref& b) noexcept {
    return std::compare_three_way()(a.object_, b.object_);
  }
  friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

 private:
  T* object_ = nullptr;
};

/// Creates an object of type T.
/// @throws std::bad_alloc, and what T's constructor throws; without a leak
template <class T, class... Arguments>
[[nodiscard]] Ref<T> makeRef(Arguments&&... arguments) {
  if constexpr (requires { T::className, T::ThisClass::className; }) {
    static_assert(std::same_as<T, typename T::ThisClass> || T::className == T::ThisClass::className,
                  "derive the class from Subclass: class T : public tq::Subclass<T, Parent>");
  }
  static_assert(alignof(T) <= alignof(std::max_align_t), "objects are aligned for scalar types");
  return Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

/// Returns a new reference to `object`.
template <class T>
[[nodiscard]] Ref<T> share(T& object) noexcept {
  return Ref<T>(&object);
}

/// Returns `object` as a T, or null if it is null or of another class.
template <class T>
[[nodiscard]] T* objectCast(Object* object) noexcept {
  return dynamic_cast<T*>(object);
}

/// Returns the object as a T if its class is T or derives from T, else null. Adds no reference.
template <class T>
[[nodiscard]] const T* objectCast(const Object* object) noexcept {
  return dynamic_cast<const T*>(object);
}

/// The same for references: returns a new reference, or null.
template <class T, class U>
[[nodiscard]] Ref<T> refCast(const Ref<U>& object) noexcept {
  return Ref<T>(dynamic_cast<T*>(object.get()));
}

}  // namespace tq

namespace std {

/// Hashes identity, for hashed containers of references.
template <class T>
struct hash<tq::Ref<T>> {
  size_t operator()(const tq::Ref<T>& object) const noexcept { return hash<T*>()(object.get()); }
};

}  // namespace std
