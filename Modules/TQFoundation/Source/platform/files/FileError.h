#pragma once

/// @file FileError.h
/// Failures of the file system as errors that a person can act on.

#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq::detail {

enum class FileUse { reading, writing };

/// Domain CocoaErrorDomain with the code and the text that belong to `errorNumber`, and that number
/// beneath it in POSIXErrorDomain.
[[nodiscard]] Ref<Error> fileError(FileUse use, const URL& url, int errorNumber);

/// The same with a text of one's own.
[[nodiscard]] Ref<Error> fileError(FileUse use, const URL& url, int errorNumber,
                                   std::string_view description);

}  // namespace tq::detail
