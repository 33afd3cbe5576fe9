#pragma once

/// @file Weak.h
/// References that observe an object without keeping it alive.

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Object.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {
namespace detail {

/// The block that all weak references to one object share. It can outlive the object.
TQ_EXPORT void retainBlock(WeakBlock& block) noexcept;
TQ_EXPORT void releaseBlock(WeakBlock& block) noexcept;

/// Returns the object of `block`. The caller must own a reference to it.
[[nodiscard]] TQ_EXPORT Object* objectOf(const WeakBlock& block) noexcept;

/// observes() returns whether the block's object is `object`, which the caller must own; isGone()
/// returns whether the object is gone.
[[nodiscard]] TQ_EXPORT bool observes(const WeakBlock& block, const Object& object) noexcept;
[[nodiscard]] TQ_EXPORT bool isGone(const WeakBlock& block) noexcept;

/// Returns how many weakly held objects the process has destroyed so far. While the number is the
/// same, no Weak has lost its object.
[[nodiscard]] std::uint64_t weakLossCount() noexcept;

/// Makes all weak references to the object read null. Called once, before its destructor runs.
void forgetWeakly(const Object& object) noexcept;

}  // namespace detail

/// A strong reference to an object, seen through an interface that does not derive from Object.
template <class T>
class Held {
 public:
  Held() noexcept = default;
  /// Retains `owner` and refers to `view`, which must be a part of it.
  Held(Ref<Object> owner, T* view) noexcept : owner_(std::move(owner)), view_(view) {}
  /// Moving leaves null behind.
  Held(const Held&) noexcept = default;
  Held(Held&& other) noexcept
      : owner_(std::move(other.owner_)), view_(std::exchange(other.view_, nullptr)) {}
  Held& operator=(Held other) noexcept {
    std::swap(owner_, other.owner_);
    std::swap(view_, other.view_);
    return *this;
  }

  /// Returns the interface or null. Valid while this owns its object.
  [[nodiscard]] T* get() const noexcept { return view_; }
  T* operator->() const noexcept { return view_; }
  T& operator*() const noexcept { return *view_; }
  /// True if not null.
  explicit operator bool() const noexcept { return view_ != nullptr; }

 private:
  Ref<Object> owner_;
  T* view_ = nullptr;
};

/// Observes an object through its class T, or through an interface T that the object implements. It
/// reads null as soon as the object's last reference is released, before its destructor starts.
///
/// Threads: lock() is safe against the last release on another thread. The Weak itself is used by
///          one thread at a time, like a plain pointer; copies are independent.
/// Cost:    an object that is never weakly held pays nothing; holding one weakly takes a lock and,
///          the first time, a small block.
template <class T>
class Weak {
 public:
  constexpr Weak() noexcept = default;
  /// Observes no object.
  constexpr Weak(std::nullptr_t) noexcept {}  // NOLINT: nullptr converts

  /// Observes `object`, which the caller must own; calling this in the object's own destructor
  /// stops the process. Null observes no object. @throws std::bad_alloc
  template <class U>
  requires std::derived_from<U, Object> && std::convertible_to<U*, T*>
  explicit Weak(U* object)
      : view_(object), block_(object != nullptr ? detail::weakBlockFor(*object) : nullptr) {}

  /// The same for a reference.
  template <class U>
  requires std::derived_from<U, Object> && std::convertible_to<U*, T*> Weak(const Ref<U>& object)
      : Weak(object.get()) {}  // NOLINT: a strong reference converts

  /// Copies observe the same object. A moved-from Weak observes no object.
  Weak(const Weak& other) noexcept : view_(other.view_), block_(other.block_) {
    if (block_ != nullptr) detail::retainBlock(*block_);
  }
  Weak(Weak&& other) noexcept
      : view_(std::exchange(other.view_, nullptr)), block_(std::exchange(other.block_, nullptr)) {}

  ~Weak() {
    if (block_ != nullptr) detail::releaseBlock(*block_);
  }

  /// Observes the other one's object instead.
  Weak& operator=(Weak other) noexcept {
    std::swap(view_, other.view_);
    std::swap(block_, other.block_);
    return *this;
  }

  /// Returns a strong reference to the object, or null if it is gone: a Ref<T> for a class, a
  /// Held<T> for an interface.
  // The type is deduced, so that a class may have a Weak to itself as a member, where T is
  // incomplete.
  [[nodiscard]] auto lock() const noexcept {
    const bool isHeld = block_ != nullptr && detail::retainIfAlive(*block_);
    if constexpr (std::derived_from<T, Object>) {
      return isHeld ? Ref<T>::adopt(view_) : Ref<T>();
    } else {
      return isHeld ? Held<T>(Ref<Object>::adopt(object()), view_) : Held<T>();
    }
  }

  /// Returns true if the object is gone or if there never was one. One atomic load.
  [[nodiscard]] bool expired() const noexcept {
    return block_ == nullptr || detail::isGone(*block_);
  }

  /// Returns true if it observes `object`, which the caller must own. Never true for a new object
  /// at the address of one that is gone. One atomic load; any number of threads at once.
  [[nodiscard]] bool observes(const Object& object) const noexcept {
    return block_ != nullptr && detail::observes(*block_, object);
  }

  /// Returns true if both observe the same object, or none. This holds after the object is gone
  /// too: a new object at the old address is a different one.
  friend bool operator==(const Weak& a, const Weak& b) noexcept { return a.block_ == b.block_; }

 private:
  [[nodiscard]] Object* object() const noexcept { return detail::objectOf(*block_); }

  T* view_ = nullptr;
  detail::WeakBlock* block_ = nullptr;
};

}  // namespace tq
