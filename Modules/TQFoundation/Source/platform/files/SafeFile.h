#pragma once

/// @file SafeFile.h
/// The steps of an atomic file replacement. Functions that return an int return 0 or the system's
/// error number, unless stated otherwise.

#include <cstddef>
#include <span>
#include <string>

#include <TQFoundation/objects/URL.h>
#include <TQFoundation/platform/files/FileAttributes.h>

namespace tq::detail {

/// Returns whether the URL's path can name a file: it is not empty and contains no NUL.
[[nodiscard]] bool hasPath(const URL& url);

/// Follows symbolic links. Returns the path itself if its target does not exist.
[[nodiscard]] std::string resolvedPath(const std::string& path);

/// Returns the folder of the path, with its trailing "/"; "." for a path without "/".
[[nodiscard]] std::string folderOfPath(const std::string& path);

inline constexpr mode_t kByUmask = 0666;
inline constexpr mode_t kOwnersOnly = 0600;

/// Creates a file for writing. It is an error if the file exists.
/// @return its descriptor; -1 on failure, with errno set
[[nodiscard]] int makeFile(const std::string& path, mode_t mode);

/// Writes all bytes, with writeOnce().
[[nodiscard]] int writeAll(int descriptor, std::span<const std::byte> bytes);

/// Flushes the file to the disk and renames it.
[[nodiscard]] int moveIntoPlace(int descriptor, const std::string& from, const std::string& to);

/// Writes the bytes to a new file in the path's folder, flushes it to the disk and renames it to
/// `path`. A link at `path` is replaced, not followed. The new file takes the attributes of the old
/// one, if there is one, before it gets a name. A killed process leaves no file behind, unless the
/// file system does not support files without a name, or the folder is locked.
/// @param mode  the permissions of the new file without an old one
[[nodiscard]] int writeInPlace(const std::string& path, std::span<const std::byte> bytes,
                               const std::optional<FileAttributes>& before, mode_t mode = kByUmask);

/// Flushes the entries of the folder to the disk. File systems that do not support this count as
/// successful.
[[nodiscard]] int bringFolderToDisk(const std::string& folder);

}  // namespace tq::detail
