#pragma once

/// @file Exception.h
/// What is thrown for a request that cannot be met.

#include <exception>
#include <string>
#include <utility>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Names that the library throws under.
inline constexpr const char* InvalidArgumentException = "NSInvalidArgumentException";
inline constexpr const char* RangeException = "NSRangeException";

/// A name for programs and a reason for people.
class TQ_EXPORT Exception : public std::exception {
 public:
  /// @param name  for programs, such as RangeException
  /// @param reason  for people, a sentence
  Exception(std::string name, std::string reason)
      : name_(std::move(name)), reason_(std::move(reason)) {}
  /// Copies share nothing.
  Exception(const Exception&) = default;
  Exception& operator=(const Exception&) = default;
  ~Exception() override;

  /// For programs.
  [[nodiscard]] const std::string& name() const noexcept { return name_; }
  /// For people; may be empty.
  [[nodiscard]] const std::string& reason() const noexcept { return reason_; }

  /// The reason; the name where there is none.
  [[nodiscard]] const char* what() const noexcept override;

 private:
  std::string name_;
  std::string reason_;
};

}  // namespace tq
