#pragma once

/// @file LazyLibrary.h
/// Third-party libraries that are loaded at their first use.

#include <atomic>
#include <concepts>
#include <memory>
#include <string>

namespace tq::detail {

/// A third-party library that few hosts use. Loading it with the program would cost every host
/// time.
///
/// A derived class lists the functions that its file calls:
///
///     struct LibZ : LazyLibrary {
///       LibZ() : LazyLibrary("libz.so.1") {}
///       TQ_LAZY_FUNCTION(compressBound);
///     };
///     std::string reason;
///     const LibZ* const libz = lazyLibrary<LibZ>(reason);
///     if (libz != nullptr) size = libz->compressBound(size);
class LazyLibrary {
 public:
  /// Returns why the library cannot be used; empty if it and all its functions were found.
  [[nodiscard]] const std::string& failure() const noexcept { return failure_; }

 protected:
  /// The address of a function of any type.
  class Address {
   public:
    explicit Address(void* address) noexcept : address_(address) {}
    template <class Function>
    operator Function*() const noexcept {  // NOLINT: implicit
      return reinterpret_cast<Function*>(address_);
    }

   private:
    void* address_;
  };

  /// Loads the library. It is never unloaded.
  /// @param file  the name that the loader searches for
  explicit LazyLibrary(const char* file);

  /// Returns the address of a function of the library, or of the libraries that it depends on.
  [[nodiscard]] Address find(const char* function);

 private:
  void* handle_;
  std::string failure_;
};

/// Declares a pointer to a function of the library, with the function's name and type.
#define TQ_LAZY_FUNCTION(function) \
  decltype(&::function) function = find(#function)  // NOLINT: a name takes no parentheses

/// Returns the library. The first call loads it; later calls cost one atomic load. Any thread.
/// @return null, with the reason as a sentence, if the library or one of its functions is missing,
///         or if the process has no memory or descriptor left. The next call tries again.
template <std::derived_from<LazyLibrary> Library>
[[nodiscard]] const Library* lazyLibrary(std::string& reason) {
  static std::atomic<const Library*> loaded = nullptr;
  if (const Library* const known = loaded.load(std::memory_order_acquire)) return known;
  auto library = std::make_unique<const Library>();
  if (!library->failure().empty()) {
    reason = library->failure();
    return nullptr;
  }
  const Library* first = nullptr;
  if (!loaded.compare_exchange_strong(first, library.get())) return first;  // another thread's
  return library.release();  // never destroyed: threads may outlive main
}

}  // namespace tq::detail
