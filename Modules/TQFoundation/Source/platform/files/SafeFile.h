#pragma once

/// @file SafeFile.h
/// The steps by which a whole file takes another's place. Those that answer an int answer 0 or the
/// system's error number, where nothing else is said.

#include <sys/stat.h>

#include <cstddef>
#include <span>
#include <string>

#include <TQFoundation/objects/URL.h>

namespace tq::detail {

/// A path that a file can have: some text without a NUL, which would cut it.
[[nodiscard]] bool hasPath(const URL& url);

/// Where a chain of links ends; the path itself when it leads nowhere.
[[nodiscard]] std::string resolvedPath(const std::string& path);

/// The folder of the path, with the last "/"; "." for a plain name.
[[nodiscard]] std::string folderOfPath(const std::string& path);

inline constexpr mode_t kByUmask = 0666;
inline constexpr mode_t kOwnersOnly = 0600;

/// Makes a file that nobody has yet, for writing.
/// @return its descriptor, or -1 with errno set
[[nodiscard]] int makeFile(const std::string& path, mode_t mode);

/// Writes all of it, with writeOnce().
[[nodiscard]] int writeAll(int descriptor, std::span<const std::byte> bytes);

/// What is there of the file that is to be replaced: 0 for a regular file or none.
/// @param before  its status; st_nlink is 0 when there is none
[[nodiscard]] int lookAtPredecessor(const std::string& path, struct stat& before);

/// Gives the file the owner and the permissions of the one before, if there was one.
[[nodiscard]] int takeAfter(int descriptor, const struct stat& before);

/// Brings the file to the disk and puts it in its place, in one step.
[[nodiscard]] int moveIntoPlace(int descriptor, const std::string& from, const std::string& to);

/// Makes a file of the bytes beside the path, brings it to the disk and puts it in the path's
/// place; a link there is replaced, not followed. Until it takes after the one before, if there was
/// one, it is the owner's alone: what was private stays so.
[[nodiscard]] int writeInPlace(const std::string& path, std::span<const std::byte> bytes,
                               const struct stat& before);

/// Brings the entries of the folder to the disk. Some file systems have no such thing, and say so.
[[nodiscard]] int bringFolderToDisk(const std::string& folder);

}  // namespace tq::detail
