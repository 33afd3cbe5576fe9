#pragma once

/// @file TQSingleton.h
/// Classes with one shared instance.

#include <string_view>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// Base of classes that have one shared instance, registered under the class's name:
/// `class Palette : public Subclass<Palette, TQSingleton>`, then
/// `TQSingleton::sharedInstance<Palette>()`.
///
/// Threads:  the main thread only; the registry has no lock.
/// Lifetime: an instance lives until it is replaced.
class TQ_EXPORT TQSingleton : public Subclass<TQSingleton> {
 public:
  static constexpr std::string_view className = "TQSingleton";

  /// Returns the instance registered under T's name. If there is none, creates it with T's default
  /// constructor.
  template <class T>
  [[nodiscard]] static Ref<T> sharedInstance() {
    if (Ref<T> known = refCast<T>(registered(T::className)); known != nullptr) return known;
    return init<T>();
  }

  /// Creates an instance and registers it. It replaces an earlier instance.
  template <class T, class... Arguments>
  static Ref<T> init(Arguments&&... arguments) {
    Ref<T> instance = makeRef<T>(std::forward<Arguments>(arguments)...);
    instance->awakeFromNib();
    return instance;
  }

  /// Registers this instance under its class's name. It replaces an earlier instance.
  void awakeFromNib();

  /// Unregisters the instance of T, so that the next use creates another. For tests.
  template <class T>
  static void PrivateAPIForTestingOnly_resetSharedController() {
    unregister(T::className);
  }

 private:
  [[nodiscard]] static Ref<TQSingleton> registered(std::string_view name);
  static void unregister(std::string_view name);
};

}  // namespace tq
