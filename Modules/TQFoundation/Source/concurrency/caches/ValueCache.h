#pragma once

/// @file ValueCache.h
/// Caches for a single value.

#include <concepts>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

namespace tq {

/// A cache for one value of type `C::Value`. `store(std::optional<Value>)` stores the value, or
/// clears the cache if given `nullopt`. `retrieve()` returns the stored value. Not synchronised.
template <class C>
concept ValueCache = requires(C& cache, std::optional<typename C::Value> value) {
  cache.store(std::move(value));
  { cache.retrieve() } -> std::convertible_to<std::optional<typename C::Value>>;
};

/// Returns the cached value. If the cache is empty, calls `createIfNeededUsing`, stores its result
/// and returns it. If the call throws, the cache stays empty.
template <ValueCache C, std::invocable F>
typename C::Value retrieve(C& cache, F&& createIfNeededUsing) {
  if (std::optional<typename C::Value> kept = cache.retrieve()) return *std::move(kept);
  typename C::Value made = std::forward<F>(createIfNeededUsing)();
  cache.store(made);
  return made;
}

/// A type-erased cache of T. Copies share one cache.
template <class T>
class AnyValueCache {
 public:
  /// The type of the cached value.
  using Value = T;

  /// Wraps a copy of `cache`.
  template <ValueCache C>
  requires(!std::same_as<std::remove_cvref_t<C>, AnyValueCache> &&
           std::same_as<typename C::Value, T>) explicit AnyValueCache(C cache)
      : box_(std::make_shared<BoxOf<C>>(std::move(cache))) {}

  /// Call store() and retrieve() of the wrapped cache.
  void store(std::optional<T> value) { share()->store(std::move(value)); }
  [[nodiscard]] std::optional<T> retrieve() { return share()->retrieve(); }
  /// Calls retrieve(creator) of the wrapped cache if it has one, otherwise tq::retrieve().
  T retrieve(const std::function<T()>& createIfNeededUsing) {
    return share()->retrieve(createIfNeededUsing);
  }

 private:
  struct Box {
    virtual ~Box() = default;
    virtual void store(std::optional<T> value) = 0;
    virtual std::optional<T> retrieve() = 0;
    virtual T retrieve(const std::function<T()>& creator) = 0;
  };
  template <class C>
  struct BoxOf final : Box {
    explicit BoxOf(C wrapped) : cache(std::move(wrapped)) {}
    void store(std::optional<T> value) override { cache.store(std::move(value)); }
    std::optional<T> retrieve() override { return cache.retrieve(); }
    T retrieve(const std::function<T()>& creator) override {
      if constexpr (requires { cache.retrieve(creator); }) {
        return cache.retrieve(creator);
      } else {
        return tq::retrieve(cache, creator);
      }
    }
    C cache;
  };

  /// Keeps the wrapped cache during a call, which may destroy this object.
  [[nodiscard]] std::shared_ptr<Box> share() const noexcept { return box_; }

  std::shared_ptr<Box> box_;
};

}  // namespace tq
