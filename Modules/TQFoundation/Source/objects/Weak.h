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

/// The block that all weak references to one object share. It outlives the object.
TQ_EXPORT void retainBlock(WeakBlock& block) noexcept;
TQ_EXPORT void releaseBlock(WeakBlock& block) noexcept;

/// The object observed by `block`; only for a caller that holds it.
[[nodiscard]] TQ_EXPORT Object* objectOf(const WeakBlock& block) noexcept;

/// Whether the block's object is `object`, which the caller holds; whether it is gone.
[[nodiscard]] TQ_EXPORT bool observes(const WeakBlock& block, const Object& object) noexcept;
[[nodiscard]] TQ_EXPORT bool isGone(const WeakBlock& block) noexcept;

/// Weakly held objects that have gone so far, in the whole process: while it stays, no Weak has
/// lost its object.
[[nodiscard]] std::uint64_t weakLossCount() noexcept;

/// The object's weak references read none from now on. Called once, before its destructor runs.
void forgetWeakly(const Object& object) noexcept;

}  // namespace detail

/// A strong hold on an object, seen through an interface that is not itself an Object.
template <class T>
class Held {
 public:
  Held() noexcept = default;
  /// Holds `owner` and shows `view`, which must be a part of it.
  Held(Ref<Object> owner, T* view) noexcept : owner_(std::move(owner)), view_(view) {}

  /// The interface, lent while this holds its object; null for none.
  [[nodiscard]] T* get() const noexcept { return view_; }
  T* operator->() const noexcept { return view_; }
  T& operator*() const noexcept { return *view_; }
  /// True when it holds an object.
  explicit operator bool() const noexcept { return view_ != nullptr; }

 private:
  Ref<Object> owner_;
  T* view_ = nullptr;
};

/// Observes an object through its class T, or through an interface T that the object implements.
/// Reads none from the moment the object's last reference is dropped, before its destructor starts.
///
/// Threads: lock() is safe against the last release on another thread. The Weak itself is used by
///          one thread at a time, like a plain pointer; copies are independent.
/// Cost:    an object that is never weakly held pays nothing; holding one weakly takes a lock and,
///          the first time, a small block.
template <class T>
class Weak {
 public:
  constexpr Weak() noexcept = default;
  /// Observes none.
  constexpr Weak(std::nullptr_t) noexcept {}  // NOLINT: none converts

  /// Observes `object`, which the caller must hold: in the object's own destructor this stops the
  /// process. Null observes none. @throws std::bad_alloc
  template <class U>
  requires std::derived_from<U, Object> && std::convertible_to<U*, T*>
  explicit Weak(U* object)
      : view_(object), block_(object != nullptr ? detail::weakBlockFor(*object) : nullptr) {}

  /// The same for a reference.
  template <class U>
  requires std::derived_from<U, Object> && std::convertible_to<U*, T*> Weak(const Ref<U>& object)
      : Weak(object.get()) {}  // NOLINT: observing what is held converts

  /// Copies observe the same object; a Weak that was moved from observes none.
  Weak(const Weak& other) noexcept : view_(other.view_), block_(other.block_) {
    if (block_ != nullptr) detail::retainBlock(*block_);
  }
  Weak(Weak&& other) noexcept
      : view_(std::exchange(other.view_, nullptr)), block_(std::exchange(other.block_, nullptr)) {}

  ~Weak() {
    if (block_ != nullptr) detail::releaseBlock(*block_);
  }

  /// Observes what the other one does, in place of what it observed.
  Weak& operator=(Weak other) noexcept {
    std::swap(view_, other.view_);
    std::swap(block_, other.block_);
    return *this;
  }

  /// The object, held strongly for as long as the answer lives: Ref<T> for a class, Held<T> for an
  /// interface; none when it is gone.
  // Deduced, so that a class may have a Weak to its own kind as a member, where T is incomplete.
  [[nodiscard]] auto lock() const noexcept {
    const bool isHeld = block_ != nullptr && detail::retainIfAlive(*block_);
    if constexpr (std::derived_from<T, Object>) {
      return isHeld ? Ref<T>::adopt(view_) : Ref<T>();
    } else {
      return isHeld ? Held<T>(Ref<Object>::adopt(object()), view_) : Held<T>();
    }
  }

  /// True once the object is gone, and for a Weak that never observed one.
  [[nodiscard]] bool expired() const noexcept { return !lock(); }

  /// True when it observes `object`, which the caller holds. Never true for a new object at the
  /// address of one that is gone. One atomic load; any number of threads at once.
  [[nodiscard]] bool observes(const Object& object) const noexcept {
    return block_ != nullptr && detail::observes(*block_, object);
  }

  /// True once the object is gone, like expired(), without holding it: one atomic load.
  [[nodiscard]] bool isGone() const noexcept {
    return block_ == nullptr || detail::isGone(*block_);
  }

  /// Same object observed (or both none), also after it is gone: a new object at the old address is
  /// another one.
  friend bool operator==(const Weak& a, const Weak& b) noexcept { return a.block_ == b.block_; }

 private:
  [[nodiscard]] Object* object() const noexcept { return detail::objectOf(*block_); }

  T* view_ = nullptr;
  detail::WeakBlock* block_ = nullptr;
};

}  // namespace tq
