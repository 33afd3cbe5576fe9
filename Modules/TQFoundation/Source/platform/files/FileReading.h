#pragma once

/// @file FileReading.h
/// Reads whole files.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq {

/// Returns the bytes of a regular file. They are copied, because another process may truncate a
/// mapped file. A directory, a device or a pipe is an error; the call never blocks on one. Any
/// thread.
///
/// @return null on failure, with an error of CocoaErrorDomain: 260 no such file, 257 no permission,
///         258 name too long, 263 larger than 64 GiB or the available memory, 256 anything else.
///         Its UnderlyingErrorKey is the system's error.
[[nodiscard]] TQ_EXPORT Ref<Data> dataWithContentsOfURL(const URL& url,
                                                        Ref<Error>* error = nullptr);

}  // namespace tq
