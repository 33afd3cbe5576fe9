#pragma once

/// @file TQSingleton.h
/// Classes with one shared instance.

#include <string_view>
#include <utility>

#include <TQFoundation/base/TQAssert.h>
#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// Base of classes that have one shared instance, registered under the class's name:
/// `class Palette : public Subclass<Palette, TQSingleton>`, then
/// `TQSingleton::sharedInstance<Palette>()`.
///
/// Threads:  the main thread only; the registry has no lock.
/// Lifetime: an instance lives until it is replaced.
/// Misuse:   these stop the process: a constructor that requests the shared instance of its own
///           class, and two classes of the same name.
class TQ_EXPORT TQSingleton : public Subclass<TQSingleton> {
 public:
  static constexpr std::string_view className = "TQSingleton";
  ~TQSingleton() override;

  /// Returns the instance registered under T's name. If there is none, creates it with T's default
  /// constructor.
  template <class T>
  [[nodiscard]] static Ref<T> sharedInstance() {
    if (const Ref<TQSingleton> known = registered(T::className)) return requireClass<T>(known);
    const Making making(T::className);
    return init<T>();
  }

  /// Creates an instance and registers it. It replaces an earlier instance.
  template <class T, class... Arguments>
  static Ref<T> init(Arguments&&... arguments) {
    Ref<T> instance = makeRef<T>(std::forward<Arguments>(arguments)...);
    instance->awakeFromNib();
    return instance;
  }

  /// Registers this instance under its class's name. It replaces an earlier instance of this class.
  void awakeFromNib();

  /// Unregisters the instance of T, so that the next use creates another. For tests.
  template <class T>
  static void PrivateAPIForTestingOnly_resetSharedController() {
    unregister(T::className);
  }

 private:
  /// Marks that the instance of a name is being created. Stops the process if it already is.
  class TQ_EXPORT Making {
   public:
    explicit Making(std::string_view name);
    ~Making();
    Making(const Making&) = delete;
    Making& operator=(const Making&) = delete;

   private:
    static Making* innermost;
    const std::string_view name_;
    Making* const outer_;
  };

  template <class T>
  static Ref<T> requireClass(const Ref<TQSingleton>& known) {
    Ref<T> cast = refCast<T>(known);
    TQ_ASSERT(cast != nullptr && "another class has this name");
    return cast;
  }
  [[nodiscard]] static Ref<TQSingleton> registered(std::string_view name);
  static void unregister(std::string_view name);
};

}  // namespace tq
