#pragma once

/// @file TQKorvanInfo.h
/// Information about the host application: name, version, build, variant.

#include <cstdint>
#include <string>
#include <string_view>

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/environment/LRVariant.h>
#include <TQFoundation/objects/Dictionary.h>

namespace tq {

/// Keys of the information dictionary.
inline constexpr std::string_view TQKorvanInfoNameKey = "CFBundleName";
inline constexpr std::string_view TQKorvanInfoIdentifierKey = "CFBundleIdentifier";
inline constexpr std::string_view TQKorvanInfoVersionKey = "CFBundleShortVersionString";
inline constexpr std::string_view TQKorvanInfoBuildKey = "CFBundleVersion";
inline constexpr std::string_view TQKorvanInfoVariantKey = "Korvan Variant";
inline constexpr std::string_view TQKorvanInfoDocumentVersionKey = "Korvan Document Version";
inline constexpr std::string_view TQKorvanInfoPasteboardVersionKey = "Korvan Pasteboard Version";

/// The application's information, set by the host at start-up; tests may override entries. A
/// missing string reads as empty, a missing number as 0. Numbers convert to strings and strings to
/// numbers. Threads: any.
class TQ_EXPORT TQKorvanInfo {
 public:
  TQKorvanInfo() = delete;

  /// Sets the information, which is empty initially.
  static void setInfoDictionary(const Dictionary& info);
  /// Returns the value of the key, or null.
  [[nodiscard]] static Ref<Object> objectForInfoKey(std::string_view key);

  [[nodiscard]] static std::string name();        ///< the displayed name, such as "Korvan"
  [[nodiscard]] static std::string identifier();  ///< reverse-DNS, like a desktop entry's name
  [[nodiscard]] static std::string version();     ///< the displayed version: "2.1.3"
  [[nodiscard]] static std::string build();       ///< the build number: "2175"

  /// The format versions of documents and of pasteboard contents that the host writes.
  [[nodiscard]] static std::int64_t documentVersion();
  [[nodiscard]] static std::int64_t pasteboardVersion();

  /// The name of the variant, such as "Beta"; see variantNamed().
  [[nodiscard]] static std::string variantName();
  /// Returns the variant with the name variantName(), or LRVariant::final() if there is none.
  [[nodiscard]] static Ref<LRVariant> variant();
  /// Returns the member with this name, ignoring case, such as "beta" or "PrivateBeta"; or null.
  [[nodiscard]] static Ref<LRVariant> variantNamed(std::string_view name);
  /// Makes LRVariant::current() return variant().
  static void installVariantDelegate();

  /// Overrides the value of a key until it is destroyed. The last override of a key applies.
  /// Overrides must be destroyed in the reverse order of their construction.
  class TQ_EXPORT Override {
   public:
    /// Overrides the value under `key` with `value`. Null hides the entry.
    Override(std::string_view key, Ref<Object> value);
    ~Override();
    Override(const Override&) = delete;
    Override& operator=(const Override&) = delete;
  };
};

}  // namespace tq
