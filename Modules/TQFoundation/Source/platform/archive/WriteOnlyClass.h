#pragma once

/// @file WriteOnlyClass.h
/// Logs classes whose objects can be archived but not read back.

#include <string_view>

#include <TQFoundation/objects/Class.h>

namespace tq::detail {

/// Logs, once for each class, that its objects can be written but not read, and the reason.
void logWriteOnly(const Class& written, std::string_view reason);

}  // namespace tq::detail
