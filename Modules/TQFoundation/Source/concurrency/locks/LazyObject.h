#pragma once

/// @file LazyObject.h
/// A lazily created object for any number of threads, without casts.

#include <memory>
#include <utility>

#include <TQFoundation/concurrency/locks/TQLazyVar.h>
#include <TQFoundation/objects/Ref.h>

namespace tq {

/// An object of class T that is created at its first use. See TQLazyVar, which does the work; this
/// class owns the object. It must outlive all calls. Threads: any.
template <class T>
class LazyObject {
 public:
  LazyObject() : variable_(TQLazyVarCreate()) {}
  ~LazyObject() {
    if (T* const made = value()) made->release();
  }
  LazyObject(const LazyObject&) = delete;
  LazyObject& operator=(const LazyObject&) = delete;

  /// Returns the object. If there is none, calls `create`, which returns a Ref<T>; other threads
  /// wait. If it returns null or throws, a waiting thread gets null or, if another call creates
  /// before it wakes, that object; the next call creates again. `create` must not request the same
  /// object.
  template <class Create>
  [[nodiscard]] Ref<T> getOrCreate(Create&& create) {
    return Ref<T>(static_cast<T*>(TQLazyVarGetOrCalculateValue(
        variable_.get(), 0, [&]() -> void* { return Ref<T>(create()).leak(); })));
  }

  /// Returns the object, or null if it has not been created.
  [[nodiscard]] Ref<T> get() const noexcept { return Ref<T>(value()); }

 private:
  struct Free {
    void operator()(TQLazyVar* variable) const noexcept { TQLazyVarFree(variable); }
  };

  [[nodiscard]] T* value() const noexcept {
    void* const now = TQLazyVarGetValue(variable_.get());
    return now != variable_.get() ? static_cast<T*>(now) : nullptr;
  }

  std::unique_ptr<TQLazyVar, Free> variable_;
};

}  // namespace tq
