#pragma once

/// @file LRVariant.h
/// Build variants of the application, such as beta or internal.

#include <concepts>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

class LRVariant;

/// Supplies the variant of the running application.
class TQ_EXPORT CurrentVariantDelegate {
 public:
  virtual ~CurrentVariantDelegate();
  /// Returns the running variant, never null. Called for every query, on the thread of the query.
  [[nodiscard]] virtual Ref<LRVariant> currentVariant() = 0;
};

/// A set of build variants, one bit each. Every set operation returns a new object. The in-place
/// forms are static and store a new object in the given reference, which must not be null.
///
/// Threads: any; immutable. The delegate is not locked: it must be set once, at start-up.
class TQ_EXPORT LRVariant final : public Subclass<LRVariant> {
 public:
  static constexpr std::string_view className = "LRVariant";

  /// The empty set.
  [[nodiscard]] static Ref<LRVariant> init();
  /// The set with these bits.
  [[nodiscard]] static Ref<LRVariant> initWithRawValue(std::int64_t rawValue);
  /// The union of these sets. None of them may be null.
  [[nodiscard]] static Ref<LRVariant> initWithVariants(
      std::initializer_list<Ref<LRVariant>> variants);

  /// The members. Each call returns the same object. Names that are keywords of C++ end in "_".
  [[nodiscard]] static const Ref<LRVariant>& none();            ///< 0
  [[nodiscard]] static const Ref<LRVariant>& final();           ///< 1, the shipping build
  [[nodiscard]] static const Ref<LRVariant>& xcode();           ///< 2, development build
  [[nodiscard]] static const Ref<LRVariant>& beta();            ///< 4
  [[nodiscard]] static const Ref<LRVariant>& internal();        ///< 8
  [[nodiscard]] static const Ref<LRVariant>& experimental();    ///< 16
  [[nodiscard]] static const Ref<LRVariant>& private_();        ///< 32
  [[nodiscard]] static const Ref<LRVariant>& testing();         ///< 64
  [[nodiscard]] static const Ref<LRVariant>& featurepreview();  ///< 128
  /// xcode, internal, experimental and testing
  [[nodiscard]] static const Ref<LRVariant>& inHouse();
  /// inHouse and private_
  [[nodiscard]] static const Ref<LRVariant>& privateBeta();
  /// All eight flags.
  [[nodiscard]] static const Ref<LRVariant>& all();

  /// Returns the running variant, as the delegate returns it now, or final() without a delegate.
  [[nodiscard]] static Ref<LRVariant> current();

  /// Returns the delegate, or null. Initially null.
  [[nodiscard]] static CurrentVariantDelegate* delegate() noexcept;
  /// Sets the delegate, which is held strongly. Null removes it.
  template <std::derived_from<CurrentVariantDelegate> T>
  requires std::derived_from<T, Object>
  static void setDelegate(const Ref<T>& delegate) { holdDelegate(delegate, delegate.get()); }
  static void setDelegate(std::nullptr_t) { holdDelegate(nullptr, nullptr); }

  /// The bits of the set, unknown ones included.
  [[nodiscard]] std::int64_t rawValue() const noexcept { return rawValue_; }

  /// True if this set contains every flag of current(). An empty current() matches every set.
  [[nodiscard]] bool matchesCurrentVariant() const;
  /// True if debugging interface may be shown: if inHouse() contains every flag of current(). Does
  /// not depend on this object.
  [[nodiscard]] bool isDebugUIEnabled() const;

  /// Return the flags that are in either set, in both, in exactly one, and only in this one.
  [[nodiscard]] Ref<LRVariant> union_(const LRVariant& other) const;
  [[nodiscard]] Ref<LRVariant> intersection(const LRVariant& other) const;
  [[nodiscard]] Ref<LRVariant> symmetricDifference(const LRVariant& other) const;
  [[nodiscard]] Ref<LRVariant> subtracting(const LRVariant& other) const;
  /// True if every flag of `member` is in this set. Always true for the empty set.
  [[nodiscard]] bool contains(const LRVariant& member) const noexcept;
  /// True if every flag of this set is in `ofOther`.
  [[nodiscard]] bool isSubset(const LRVariant& ofOther) const noexcept;
  /// The same as contains().
  [[nodiscard]] bool isSuperset(const LRVariant& ofOther) const noexcept;
  /// True if no flag is in both sets.
  [[nodiscard]] bool isDisjoint(const LRVariant& withOther) const noexcept;
  [[nodiscard]] bool isEmpty() const noexcept { return rawValue_ == 0; }

  /// The result of insert().
  struct Insertion {
    bool inserted;                     ///< false if the set contained all flags already
    Ref<LRVariant> memberAfterInsert;  ///< the new member, or the flags that the set contained
  };
  /// Adds the flags of `newMember`. Stores a new object in `set`, unless it contained them all.
  static Insertion insert(Ref<LRVariant>& set, const Ref<LRVariant>& newMember);
  /// Removes the flags of `member`.
  /// @return those of its flags that were in the set, or null if there were none
  static Ref<LRVariant> remove(Ref<LRVariant>& set, const LRVariant& member);
  /// Adds the flags of `newMember`.
  /// @return those of its flags that were in the set before, or null if there were none
  static Ref<LRVariant> update(Ref<LRVariant>& set, const LRVariant& newMember);
  /// In-place forms of union_(), intersection(), symmetricDifference() and subtracting().
  static void formUnion(Ref<LRVariant>& set, const LRVariant& other);
  static void formIntersection(Ref<LRVariant>& set, const LRVariant& other);
  static void formSymmetricDifference(Ref<LRVariant>& set, const LRVariant& other);
  static void subtract(Ref<LRVariant>& set, const LRVariant& other);

  /// True only for an LRVariant with the same raw value; never for a number.
  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// "<LRVariant: 0x…> rawValue: 6"
  [[nodiscard]] std::string description() const override;

 private:
  explicit LRVariant(std::int64_t rawValue) noexcept : rawValue_(rawValue) {}
  static void holdDelegate(Ref<Object> object, CurrentVariantDelegate* delegate);

  const std::int64_t rawValue_;
};

}  // namespace tq
