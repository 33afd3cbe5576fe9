#pragma once

/// @file KeyedRecords.h
/// The value classes that keyed archives know, and how each is written and read.

#include <TQFoundation/platform/archive/KeyedArchiver.h>
#include <TQFoundation/platform/archive/KeyedUnarchiver.h>
#include <TQFoundation/platform/archive/detail/BinaryPropertyList.h>

namespace tq::detail::keyed {

/// How keyed archives store one of the library's value classes.
struct ValueRecord {
  using Writer = KeyedArchiver::Writer;
  using Reader = KeyedUnarchiver::Reader;
  using List = BinaryPropertyListWriter;

  const Class* valueClass;
  bool isContainer;  ///< true if equality depends on other objects

  /// Writes an object that is a value of the list. Null: the object is a record or a number.
  List::Node (*writeValue)(List&, const Object&);
  /// Writes the members of the object's record. Null: the record has no members.
  void (*writeMembers)(Writer&, const Object&);
  /// Returns the object of the record that is being read, or null if the record is invalid. Null:
  /// the class has no records.
  Ref<Object> (*read)(Reader&);
};

/// Returns the entry of exactly this class, or null.
[[nodiscard]] const ValueRecord* valueRecordOf(const Class& valueClass) noexcept;

/// Returns the entry of the object's class or of its nearest ancestor, or null.
[[nodiscard]] const ValueRecord* valueRecordOf(const Object& object) noexcept;

/// Returns true if equality of `object` depends on other objects.
[[nodiscard]] bool isContainer(const Object& object) noexcept;

}  // namespace tq::detail::keyed
