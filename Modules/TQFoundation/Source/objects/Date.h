#pragma once

/// @file Date.h
/// Points in time.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Class.h>

namespace tq {

/// A point in time, in seconds since the reference date 2001-01-01 00:00 UTC. Threads: any;
/// immutable.
class TQ_EXPORT Date final : public Subclass<Date> {
 public:
  static constexpr std::string_view className = "Date";
  static constexpr std::string_view codingName = "NSDate";

  /// Seconds between 1970-01-01 00:00 UTC and the reference date.
  static constexpr double kUnixReferenceDate = 978307200;

  /// Creates a date from seconds since the reference date, negative before it. They are not
  /// rounded.
  [[nodiscard]] static Ref<Date> dateWithTimeIntervalSinceReferenceDate(double seconds);

  /// Seconds since the reference date, as given.
  [[nodiscard]] double timeIntervalSinceReferenceDate() const noexcept { return seconds_; }
  /// Seconds since 1970-01-01 00:00 UTC.
  [[nodiscard]] double timeIntervalSince1970() const noexcept {
    return seconds_ + kUnixReferenceDate;
  }

  [[nodiscard]] bool isEqual(const Object& other) const override;
  [[nodiscard]] std::size_t hash() const override;
  /// Returns the seconds since the reference date, such as "1000.5 s".
  [[nodiscard]] std::string description() const override;

 private:
  explicit Date(double seconds) noexcept : Subclass(ObjectKind::date), seconds_(seconds) {}

  const double seconds_;
};

}  // namespace tq
