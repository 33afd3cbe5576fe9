#pragma once

/// @file TQKorvanInfo.h
/// What the host application says of itself.

#include <cstdint>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/environment/LRVariant.h>
#include <TQFoundation/objects/Dictionary.h>

namespace tq {

/// Keys of the application's information.
inline constexpr std::string_view TQKorvanInfoNameKey = "CFBundleName";
inline constexpr std::string_view TQKorvanInfoIdentifierKey = "CFBundleIdentifier";
inline constexpr std::string_view TQKorvanInfoVersionKey = "CFBundleShortVersionString";
inline constexpr std::string_view TQKorvanInfoBuildKey = "CFBundleVersion";
inline constexpr std::string_view TQKorvanInfoVariantKey = "Korvan Variant";
inline constexpr std::string_view TQKorvanInfoDocumentVersionKey = "Korvan Document Version";
inline constexpr std::string_view TQKorvanInfoPasteboardVersionKey = "Korvan Pasteboard Version";

/// The application's information: what the host gave at start-up, with what a test puts over it.
/// A text that is not there is empty, a number that is not there 0; both are read leniently from
/// each other. Any thread.
class TQ_EXPORT TQKorvanInfo {
 public:
  TQKorvanInfo() = delete;

  /// Nothing at first.
  static void setInfoDictionary(const Dictionary& info);
  /// The value, none when absent.
  [[nodiscard]] static Ref<Object> objectForInfoKey(std::string_view key);

  /// For people, such as "Korvan".
  [[nodiscard]] static std::string name();
  [[nodiscard]] static std::string identifier();  ///< reverse-DNS, as in a desktop entry's name
  [[nodiscard]] static std::string version();     ///< for people: "2.1.3"
  [[nodiscard]] static std::string build();       ///< for machines: "2175"
  /// Which form documents, and what is put on the pasteboard, are written in: as the host says.
  [[nodiscard]] static std::int64_t documentVersion();
  [[nodiscard]] static std::int64_t pasteboardVersion();

  /// For people and scripts: "Beta"; see variantNamed().
  [[nodiscard]] static std::string variantName();
  /// The variant that variantName() names; LRVariant::final() when it names none.
  [[nodiscard]] static Ref<LRVariant> variant();
  /// The member of this name, such as "beta" or "PrivateBeta", whatever its case; none for others.
  [[nodiscard]] static Ref<LRVariant> variantNamed(std::string_view name);
  /// Puts variant() in charge of LRVariant::current().
  static void installVariantDelegate();

  /// Another value for a key while it lives, none for none at all. The innermost counts; they end
  /// in the reverse order of their making.
  class TQ_EXPORT Override {
   public:
    /// `value` takes the place of what is there under `key`.
    Override(std::string_view key, Ref<Object> value);
    ~Override();
    Override(const Override&) = delete;
    Override& operator=(const Override&) = delete;
  };
};

}  // namespace tq
