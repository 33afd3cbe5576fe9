#pragma once

/// @file Ref.h
/// Owning references.

#include <concepts>
#include <cstddef>
#include <type_traits>
#include <utility>

#include <TQFoundation/objects/Object.h>

namespace tq {

/// Owns one reference to an object, or none. Copying costs an atomic increment, moving nothing:
/// pass `const T&` or `T*` where a function only looks, Ref<T> where it keeps.
///
/// Threads: like a plain pointer; the object's count is safe on any thread, the Ref itself is not.
template <class T>
class Ref {
 public:
  constexpr Ref() noexcept = default;
  /// Holds none.
  constexpr Ref(std::nullptr_t) noexcept {}  // NOLINT: none converts

  /// Shares `object` (adds a reference); null gives none.
  explicit Ref(T* object) noexcept : object_(object) {
    if (object_ != nullptr) object_->retain();
  }

  /// Takes over the reference that the caller holds.
  [[nodiscard]] static Ref adopt(T* object) noexcept {
    Ref ref;
    ref.object_ = object;
    return ref;
  }

  /// Copying adds a reference; moving leaves none behind.
  Ref(const Ref& other) noexcept : Ref(other.object_) {}
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}

  /// Shares what a reference to a derived class, or to a mutable one, holds.
  template <class U>
  requires std::convertible_to<U*, T*> Ref(const Ref<U>& other)
  noexcept : Ref(static_cast<T*>(other.get())) {}

  /// Takes that over.
  template <class U>
  requires std::convertible_to<U*, T*> Ref(Ref<U>&& other)
  noexcept : object_(other.leak()) {}

  ~Ref() {
    if (object_ != nullptr) object_->release();
  }

  /// Lets go of what was held, after the new object is held: safe for itself.
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  /// The object, lent while the reference holds it; null for none.
  [[nodiscard]] T* get() const noexcept { return object_; }
  T* operator->() const noexcept { return object_; }
  T& operator*() const noexcept { return *object_; }
  /// True when it holds an object.
  explicit operator bool() const noexcept { return object_ != nullptr; }

  /// Hands the reference over to the caller, who must release it.
  [[nodiscard]] T* leak() noexcept { return std::exchange(object_, nullptr); }

  /// Identity, not value: use isEqual() for that.
  friend bool operator==(const Ref& a, const Ref& b) noexcept { return a.object_ == b.object_; }
  friend bool operator==(const Ref& a, std::nullptr_t) noexcept { return a.object_ == nullptr; }

 private:
  T* object_ = nullptr;
};

/// A new object of type T with a reference to it.
/// @throws std::bad_alloc, and what T's constructor throws; nothing is leaked then
template <class T, class... Arguments>
[[nodiscard]] Ref<T> makeRef(Arguments&&... arguments) {
  return Ref<T>::adopt(new T(std::forward<Arguments>(arguments)...));
}

/// `object` shared as a Ref; its type is deduced.
template <class T>
[[nodiscard]] Ref<T> share(T& object) noexcept {
  return Ref<T>(&object);
}

/// `object` as a T when it is one (or none when null or of another type).
template <class T>
[[nodiscard]] T* objectCast(Object* object) noexcept {
  return dynamic_cast<T*>(object);
}

/// The object as a T when its class is T or derives from it; else null. Lent.
template <class T>
[[nodiscard]] const T* objectCast(const Object* object) noexcept {
  return dynamic_cast<const T*>(object);
}

/// The same for references: a further reference, or none.
template <class T, class U>
[[nodiscard]] Ref<T> refCast(const Ref<U>& object) noexcept {
  return Ref<T>(dynamic_cast<T*>(object.get()));
}

}  // namespace tq
