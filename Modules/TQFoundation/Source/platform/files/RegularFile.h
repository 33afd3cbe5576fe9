#pragma once

/// @file RegularFile.h
/// Files opened to be read.

#include <cstddef>

#include <TQFoundation/objects/Error.h>
#include <TQFoundation/objects/URL.h>
#include <TQFoundation/platform/files/FileHandle.h>

namespace tq::detail {

/// Opens a regular file, from its start; a directory, a device or a pipe is an error.
/// @param size  its length at this moment
/// @return none on failure, with an error as dataWithContentsOfURL() gives it
[[nodiscard]] Ref<FileHandle> openRegularFile(const URL& url, std::size_t& size, Ref<Error>* error);

}  // namespace tq::detail
