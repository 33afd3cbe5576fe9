#pragma once

/// @file UnreadContent.h
/// What the readers of archives did not understand.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// The content of an archive that is missing from what was read: members that no constructor asked
/// for, and objects that could not be made. Saving over the archive would lose it. Filled by
/// TQJSONDecoder after setListsUnreadContent(true), and by KeyedUnarchiver::unarchiveRootObject()
/// if that gets one.
///
/// Equal content is one entry with a count. At most kMostEntries entries, with kMostBytes of names
/// and paths, are listed. What exceeds that is only counted.
class TQ_EXPORT UnreadContent {
 public:
  /// The bounds of the list.
  static constexpr std::size_t kMostEntries = 256;
  static constexpr std::size_t kMostBytes = std::size_t{1} << 20;

  /// Why content was not read.
  enum class Kind : std::uint8_t {
    /// A member of an object. No constructor asked for it.
    member,
    /// An object of a class that is not registered. What it contains is not listed.
    unknownClass,
    /// An object of a class that TQJSONDecoder::setClass() banned.
    bannedClass,
    /// An object of a class that the delegate refused.
    refusedClass,
    /// Bytes ("_data") or a keyed archive ("_archive") that are damaged or exceed a limit.
    unreadableBytes,
  };

  /// All content of one kind and name.
  struct Entry {
    Kind kind;  ///< why it was not read
    /// The class by its name in the archive. Empty for unreadable bytes, and for members of objects
    /// without a class.
    std::string className;
    /// The key; empty for anything but a member.
    std::string member;
    /// Where the first of them is in a JSON text, as JSON Pointer (RFC 6901), such as
    /// "/root/children/3/corners"; for content of a keyed archive, where that archive is. Empty for
    /// the root, and for an archive that was not read from JSON text.
    std::string path;
    /// How many were met.
    std::uint64_t count;
  };

  /// Returns true if everything was read.
  [[nodiscard]] bool isEmpty() const noexcept { return count_ == 0; }
  /// Returns how many members and objects were not read, listed or not.
  [[nodiscard]] std::uint64_t count() const noexcept { return count_; }
  /// Returns the listed content, in the order in which it was first met.
  [[nodiscard]] const std::vector<Entry>& entries() const noexcept { return entries_; }

  /// For readers: adds content.
  /// @param path  called if the content is not listed yet
  void add(Kind kind, std::string_view className, std::string_view member,
           const std::function<std::string()>& path, std::uint64_t count = 1);

 private:
  std::vector<Entry> entries_;
  std::size_t byteCount_ = 0;  // of the entries' strings
  std::uint64_t count_ = 0;
};

}  // namespace tq
