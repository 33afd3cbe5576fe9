#pragma once

/// @file FileError.h
/// Converts error numbers of the file system into errors with helpful texts.

#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq::detail {

/// `creating` also writes, but needs no existing file: a missing file is then a missing folder.
enum class FileUse { reading, writing, creating };

/// Returns an error of CocoaErrorDomain with the code and the text for `errorNumber`. Its
/// UnderlyingErrorKey is an error of POSIXErrorDomain with this number.
[[nodiscard]] Ref<Error> fileError(FileUse use, const URL& url, int errorNumber);

/// The same, with `description` as the text.
[[nodiscard]] Ref<Error> fileError(FileUse use, const URL& url, int errorNumber,
                                   std::string_view description);

}  // namespace tq::detail
