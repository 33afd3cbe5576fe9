#pragma once

#include <concepts>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/String.h>

#include "support/OnDestruction.h"
#include "support/Test.h"

namespace tq::test {

/// Everything in the reach of a callback. drop() releases it, and the last references are here, so
/// that AddressSanitizer finds what a function of the library uses afterwards without a reference
/// of its own. Arguments that are not objects, such as blocks, are kept by the caller, as usual.
class World {
 private:
  template <class Then>
  auto droppingThen(Then then) {
    return [this, then, captured = std::make_shared<int>(7)](auto&&... arguments) {
      drop();
      EXPECT_EQ(*captured, 7);
      (use(arguments), ...);
      return then();
    };
  }
  template <class T>
  static void use(const T& argument) {
    if constexpr (std::derived_from<T, Object>) static_cast<void>(argument.description());
  }

 public:
  /// Keeps the only reference to an object, or the only copy of a value, until drop().
  template <class T>
  T& keep(Ref<T> object) {
    T& kept = *object;
    kept_.push_back(std::make_shared<Ref<T>>(std::move(object)));
    return kept;
  }
  template <class T>
  T& keep(T value) {
    auto kept = std::make_shared<T>(std::move(value));
    kept_.push_back(kept);
    return *kept;
  }

  void drop() {
    ++drops_;
    const auto dropped = std::exchange(kept_, {});
  }
  [[nodiscard]] int drops() const noexcept { return drops_; }

  /// Returns a block that drops everything, and afterwards uses its arguments and what it captures.
  [[nodiscard]] auto dropping() {
    return droppingThen([] {});
  }
  /// The same, for a block that returns `result`.
  template <class T>
  [[nodiscard]] auto droppingTo(T result) {
    return droppingThen([result] { return result; });
  }

  /// Returns a new object; a block that makes one; an object whose destructor drops everything.
  [[nodiscard]] static Ref<Object> object() { return String::of("an object of some length"); }
  [[nodiscard]] auto making() {
    return droppingThen([] { return object(); });
  }
  [[nodiscard]] Ref<Object> dying() {
    return makeRef<OnDestruction>([this] { drop(); });
  }
  /// Keeps an array of two objects.
  [[nodiscard]] Array& array() { return keep(Array::arrayWithObjects({object(), object()})); }

 private:
  std::atomic<int> drops_ = 0;
  std::vector<std::shared_ptr<void>> kept_;
};

/// Calls the functions that its name lists. entry-points.sh reads the names. A function is in the
/// class of the function before it if its name begins with two colons.
struct Callback {
  std::string_view functions;
  void (*call)(World&);
};

/// Runs each case in a world of its own, and checks that its callback was called.
inline void run(std::span<const Callback> callbacks) {
  for (const Callback& each : callbacks) {
    SCOPED_TRACE(each.functions);
    World world;
    each.call(world);
    EXPECT_GE(world.drops(), 1);
  }
}

}  // namespace tq::test
