#pragma once

/// @file Date.h
/// Points in time.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// A point in time, in seconds since 2001-01-01 00:00 UTC. Threads: any; immutable.
class TQ_EXPORT Date final : public Subclass<Date> {
 public:
  static constexpr std::string_view className = "Date";
  static constexpr std::string_view codingName = "NSDate";

  /// Seconds from 1970-01-01 00:00 UTC to the reference date.
  static constexpr double kUnixReferenceDate = 978307200;

  /// Any number of seconds, negative before the reference date; not rounded.
  [[nodiscard]] static Ref<Date> dateWithTimeIntervalSinceReferenceDate(double seconds);

  /// Seconds, as given.
  [[nodiscard]] double timeIntervalSinceReferenceDate() const noexcept { return seconds_; }
  /// Seconds since 1970 began, UTC.
  [[nodiscard]] double timeIntervalSince1970() const noexcept {
    return seconds_ + kUnixReferenceDate;
  }

  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// Seconds since the reference date, such as "1000.5 s".
  [[nodiscard]] std::string description() const override;

 private:
  explicit Date(double seconds) noexcept : Subclass(ObjectKind::date), seconds_(seconds) {}

  const double seconds_;
};

}  // namespace tq
