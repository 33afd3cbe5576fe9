#pragma once

/// @file RegularFile.h
/// Opens regular files for reading.

#include <cstddef>

#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/platform/files/FileHandle.h>

namespace tq::detail {

/// Opens a regular file at its start. A directory, a device or a pipe is an error.
/// @param size  receives the current length of the file
/// @return null on failure, with an error like that of dataWithContentsOfURL()
[[nodiscard]] Ref<FileHandle> openRegularFile(const URL& url, std::size_t& size, Ref<Error>* error);

}  // namespace tq::detail
