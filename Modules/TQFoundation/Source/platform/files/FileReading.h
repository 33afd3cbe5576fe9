#pragma once

/// @file FileReading.h
/// Whole files as buffers.

#include <TQFoundation/base/TQExport.h>
#include <TQFoundation/objects/Data.h>
#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>

namespace tq {

/// The bytes of the file, copied: another process may cut a file while it is mapped. Any thread.
/// Only regular files are read; a directory, a device or a pipe is an error, not a wait.
///
/// @return none on failure, with an error of CocoaErrorDomain (260 no such file, 257 not permitted,
///         258 name too long, 263 beyond 64 GiB or the memory, 256 anything else) that carries the
///         system's own as UnderlyingErrorKey
[[nodiscard]] TQ_EXPORT Ref<Data> dataWithContentsOfURL(const URL& url,
                                                        Ref<Error>* error = nullptr);

}  // namespace tq
