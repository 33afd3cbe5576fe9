#pragma once

/// @file LRVariant.h
/// Which build of the application is running.

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

/// Says which variant is running.
class TQ_EXPORT CurrentVariantDelegate {
 public:
  virtual ~CurrentVariantDelegate() = default;
  /// Never none. Asked anew by every question, on the thread of whoever asks.
  [[nodiscard]] virtual Ref<LRVariant> currentVariant() = 0;
};

/// A set of build variants, a bit each. Every set operation answers a new object; the in-place
/// forms are static, and put a new object into the reference that they are given.
///
/// Threads: any; immutable. The delegate has no lock: it is set once at start-up.
class TQ_EXPORT LRVariant final : public Subclass<LRVariant> {
 public:
  static constexpr std::string_view className = "LRVariant";

  /// The empty set.
  [[nodiscard]] static Ref<LRVariant> init();
  /// The set of these flags, bit by bit.
  [[nodiscard]] static Ref<LRVariant> initWithRawValue(std::int64_t rawValue);
  /// The union of these.
  [[nodiscard]] static Ref<LRVariant> initWithVariants(
      std::initializer_list<Ref<LRVariant>> variants);

  /// The members, each the same object on every call. Words of the language carry a "_".
  [[nodiscard]] static const Ref<LRVariant>& none();            ///< 0
  [[nodiscard]] static const Ref<LRVariant>& final();           ///< 1, the shipping build
  [[nodiscard]] static const Ref<LRVariant>& xcode();           ///< 2, from the workshop
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

  /// The running variant: what the delegate answers at this moment, final() without one.
  [[nodiscard]] static Ref<LRVariant> current();

  /// None at first.
  [[nodiscard]] static CurrentVariantDelegate* delegate() noexcept;
  /// Held strongly from now on; none takes it away.
  template <std::derived_from<CurrentVariantDelegate> T>
  requires std::derived_from<T, Object>
  static void setDelegate(const Ref<T>& delegate) { holdDelegate(delegate, delegate.get()); }
  static void setDelegate(std::nullptr_t) { holdDelegate(nullptr, nullptr); }

  /// The flags as bits; unknown ones are kept.
  [[nodiscard]] std::int64_t rawValue() const noexcept { return rawValue_; }

  /// True when every flag of current() is among these. An empty current() is in every set.
  [[nodiscard]] bool matchesCurrentVariant() const;
  /// May debugging interface be shown: true when every flag of current() is in inHouse(), whatever
  /// this variant is.
  [[nodiscard]] bool isDebugUIEnabled() const;

  /// The flags of either, of both, of exactly one, and of this one alone.
  [[nodiscard]] Ref<LRVariant> union_(const LRVariant& other) const;
  [[nodiscard]] Ref<LRVariant> intersection(const LRVariant& other) const;
  [[nodiscard]] Ref<LRVariant> symmetricDifference(const LRVariant& other) const;
  [[nodiscard]] Ref<LRVariant> subtracting(const LRVariant& other) const;
  /// Every flag of `member` is in this set; the empty set always is.
  [[nodiscard]] bool contains(const LRVariant& member) const noexcept;
  /// The same the other way round.
  [[nodiscard]] bool isSubset(const LRVariant& ofOther) const noexcept;
  /// contains().
  [[nodiscard]] bool isSuperset(const LRVariant& ofOther) const noexcept;
  /// True when no flag is in both sets.
  [[nodiscard]] bool isDisjoint(const LRVariant& withOther) const noexcept;
  [[nodiscard]] bool isEmpty() const noexcept { return rawValue_ == 0; }

  /// What insert() did.
  struct Insertion {
    bool inserted;                     ///< false when the set held all of it already
    Ref<LRVariant> memberAfterInsert;  ///< the new member, or what the set held of it
  };
  /// Adds the flags of `newMember`: `set` is a new object afterwards, unless it held them all.
  static Insertion insert(Ref<LRVariant>& set, const Ref<LRVariant>& newMember);
  /// @return the flags of `member` that were in the set; none when there were none
  static Ref<LRVariant> remove(Ref<LRVariant>& set, const LRVariant& member);
  /// Inserts. @return the flags of `newMember` that were in the set before; none without any
  static Ref<LRVariant> update(Ref<LRVariant>& set, const LRVariant& newMember);
  /// In-place forms of union_(), intersection(), symmetricDifference() and subtracting().
  static void formUnion(Ref<LRVariant>& set, const LRVariant& other);
  static void formIntersection(Ref<LRVariant>& set, const LRVariant& other);
  static void formSymmetricDifference(Ref<LRVariant>& set, const LRVariant& other);
  static void subtract(Ref<LRVariant>& set, const LRVariant& other);

  /// True only for an LRVariant of the same raw value; never for a number.
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
