#pragma once

/// @file TQSingleton.h
/// One shared instance a class.

#include <string_view>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// Base of classes that have one shared instance, registered under the class's name:
/// `class Palette : public Subclass<Palette, TQSingleton>`, then
/// `TQSingleton::sharedInstance<Palette>()`.
///
/// Threads: the main thread; the registry has no lock. Instances live until they are replaced.
class TQ_EXPORT TQSingleton : public Subclass<TQSingleton> {
 public:
  static constexpr std::string_view className = "TQSingleton";

  /// The instance registered under T's name, made by T's constructor without arguments when there
  /// is none.
  template <class T>
  [[nodiscard]] static Ref<T> sharedInstance() {
    if (Ref<T> known = refCast<T>(registered(T::className)); known != nullptr) return known;
    return init<T>();
  }

  /// A new instance, registered in place of an earlier one.
  template <class T, class... Arguments>
  static Ref<T> init(Arguments&&... arguments) {
    Ref<T> instance = makeRef<T>(std::forward<Arguments>(arguments)...);
    instance->awakeFromNib();
    return instance;
  }

  /// Registers this instance under its class's name, in place of an earlier one.
  void awakeFromNib();

  /// Forgets the instance of T, so that the next use makes another. For tests.
  template <class T>
  static void PrivateAPIForTestingOnly_resetSharedController() {
    unregister(T::className);
  }

 private:
  [[nodiscard]] static Ref<TQSingleton> registered(std::string_view name);
  static void unregister(std::string_view name);
};

}  // namespace tq
