#pragma once

/// @file FileAttributes.h
/// What a file has besides its content: owner, group, permissions, extended attributes.

#include <sys/stat.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tq::detail {

/// The attributes of a file that is to be replaced.
struct FileAttributes {
  struct stat status {};
  std::optional<std::string> accessList;  ///< POSIX ACL in the kernel's format; nullopt if minimal
  std::vector<std::pair<std::string, std::string>> extended;  ///< all others: name and value
};

/// Reads the attributes of the regular file at the path. A link is not followed.
/// @param attributes  receives them; empty if there is no such file
/// @return 0 if it is a regular file or does not exist, otherwise an error number
[[nodiscard]] int readAttributes(const std::string& path,
                                 std::optional<FileAttributes>& attributes);

/// Gives an open file that this process owns the attributes of another one, without granting access
/// to users who had none:
///
/// - The owner and the group are kept if the system permits it. Without the group, the group and
///   all others get only what both had: 0640 becomes 0600, 0664 becomes 0644.
/// - The set-id bits and the file's capabilities are kept only if owner and group are.
/// - The ACL is copied. Without one, an ACL that the file inherited from its folder is removed.
/// - Other extended attributes are copied, except those that the system refuses for this process,
///   and signatures of the content.
///
/// Must be called once, after the content has been written: writing clears set-id bits.
/// @return 0 or the system's error number
[[nodiscard]] int takeAttributes(int descriptor, const FileAttributes& attributes);

}  // namespace tq::detail
