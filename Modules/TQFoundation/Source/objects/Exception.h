#pragma once

/// @file Exception.h
/// Exceptions for invalid arguments and failed operations.

#include <exception>
#include <string>
#include <utility>

#include <TQFoundation/base/TQExport.h>

namespace tq {

/// Names of the library's exceptions.
inline constexpr const char* InvalidArgumentException = "NSInvalidArgumentException";
inline constexpr const char* RangeException = "NSRangeException";
inline constexpr const char* GenericException = "NSGenericException";

/// An exception with a name for programs and a reason for people.
class TQ_EXPORT Exception : public std::exception {
 public:
  /// @param name  for programs, such as RangeException
  /// @param reason  a sentence for people
  Exception(std::string name, std::string reason)
      : name_(std::move(name)), reason_(std::move(reason)) {}
  /// Copies share nothing.
  Exception(const Exception&) = default;
  Exception& operator=(const Exception&) = default;
  ~Exception() override;

  /// The name, for programs.
  [[nodiscard]] const std::string& name() const noexcept { return name_; }
  /// The reason, for people. May be empty.
  [[nodiscard]] const std::string& reason() const noexcept { return reason_; }

  /// Returns the reason, or the name if the reason is empty.
  [[nodiscard]] const char* what() const noexcept override;

 private:
  std::string name_;
  std::string reason_;
};

}  // namespace tq
