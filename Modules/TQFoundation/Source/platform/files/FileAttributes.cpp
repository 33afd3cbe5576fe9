#include <TQFoundation/platform/files/FileAttributes.h>

#include <errno.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tq::detail {
namespace {

constexpr const char* kAccessList = "system.posix_acl_access";
constexpr std::string_view kCapabilities = "security.capability";
/// These belong to the old content.
constexpr std::string_view kSignatures[] = {"security.ima", "security.evm"};

constexpr mode_t kGroupBits = S_IRWXG;
constexpr mode_t kOtherBits = S_IRWXO;
constexpr mode_t kSpecialBits = 07000;
constexpr int kGroupShift = 3;

/// Errors of attributes that this process may not read or set, or that the file does not have.
bool isRefusal(int errorNumber) {
  constexpr int kRefusals[] = {EPERM, EACCES, ENODATA, ENOTSUP};
  return std::ranges::find(kRefusals, errorNumber) != std::end(kRefusals);
}

/// Calls a function of the system that fills a buffer, or returns the necessary size if there is
/// none.
/// @return the bytes; nullopt, with errno set, on failure
template <class Fill>
std::optional<std::string> filled(const Fill& fill) {
  for (;;) {
    const ssize_t size = fill(nullptr, 0);
    if (size < 0) return std::nullopt;
    std::string bytes(static_cast<std::size_t>(size), '\0');
    const ssize_t length = size == 0 ? 0 : fill(bytes.data(), bytes.size());
    if (length < 0 && errno == ERANGE) continue;  // it has grown meanwhile
    if (length < 0) return std::nullopt;
    bytes.resize(static_cast<std::size_t>(length));
    return bytes;
  }
}

std::optional<std::string> attribute(const std::string& path, const char* name) {
  return filled(
      [&](char* bytes, std::size_t size) { return ::lgetxattr(path.c_str(), name, bytes, size); });
}

int readExtended(const std::string& path, FileAttributes& attributes) {
  const auto names = filled(
      [&](char* bytes, std::size_t size) { return ::llistxattr(path.c_str(), bytes, size); });
  if (!names) return isRefusal(errno) ? 0 : errno;
  for (std::size_t at = 0; at < names->size();) {
    const std::string name = names->c_str() + at;
    at += name.size() + 1;
    if (std::ranges::find(kSignatures, name) != std::end(kSignatures)) continue;
    auto value = attribute(path, name.c_str());
    if (!value && !isRefusal(errno)) return errno;
    if (!value) continue;
    if (name == kAccessList) {
      attributes.accessList = std::move(value);
    } else {
      attributes.extended.emplace_back(name, *std::move(value));
    }
  }
  return 0;
}

/// The kernel's format of an ACL: a version, then entries of tag, permissions and id, all of them
/// little-endian (linux/posix_acl_xattr.h).
struct AccessEntry {
  std::uint16_t tag;
  std::uint16_t permissions;
  std::uint32_t id;
};
static_assert(sizeof(AccessEntry) == 8 && std::endian::native == std::endian::little);
constexpr std::size_t kAccessHeader = 4;
constexpr std::uint16_t kOwningGroup = 0x04;
constexpr std::uint16_t kOthers = 0x20;

/// Gives the owning group and all others only what both have. The first entry gets it in the second
/// pass.
void withoutGroup(std::string& list) {
  std::uint16_t common = kOtherBits;
  for (int pass = 0; pass < 2; ++pass) {
    for (std::size_t at = kAccessHeader; at + sizeof(AccessEntry) <= list.size();
         at += sizeof(AccessEntry)) {
      AccessEntry entry;
      std::memcpy(&entry, list.data() + at, sizeof entry);
      if (entry.tag != kOwningGroup && entry.tag != kOthers) continue;
      common &= entry.permissions;
      entry.permissions = common;
      std::memcpy(list.data() + at, &entry, sizeof entry);
    }
  }
}

mode_t withoutGroup(mode_t mode) {
  const mode_t common = mode & (mode >> kGroupShift) & kOtherBits;
  return (mode & ~(kGroupBits | kOtherBits)) | common << kGroupShift | common;
}

/// Sets the ACL. If there is none, removes an inherited one: otherwise the permissions of the group
/// would become its mask.
int takeAccessList(int descriptor, const std::optional<std::string>& list) {
  if (list) {
    return ::fsetxattr(descriptor, kAccessList, list->data(), list->size(), 0) == 0 ? 0 : errno;
  }
  const bool isGone =
      ::fremovexattr(descriptor, kAccessList) == 0 || errno == ENODATA || errno == ENOTSUP;
  return isGone ? 0 : errno;
}

}  // namespace

int readAttributes(const std::string& path, std::optional<FileAttributes>& attributes) {
  FileAttributes found;
  if (::lstat(path.c_str(), &found.status) != 0) return errno == ENOENT ? 0 : errno;
  if (S_ISDIR(found.status.st_mode)) return EISDIR;
  if (!S_ISREG(found.status.st_mode)) return EINVAL;
  const int failure = readExtended(path, found);
  attributes = std::move(found);
  return failure;
}

// The owner comes first, because changing it clears the set-id bits. The extended attributes come
// before the permissions, because these may remove the right to set attributes.
int takeAttributes(int descriptor, const FileAttributes& attributes) {
  const struct stat& before = attributes.status;
  // These fail for a file of another user, and for a group that this user is not in.
  const bool keepsOwner = ::fchown(descriptor, before.st_uid, before.st_gid) == 0;
  const bool keepsGroup = keepsOwner || ::fchown(descriptor, ~uid_t{0}, before.st_gid) == 0;

  for (const auto& [name, value] : attributes.extended) {
    if (!keepsOwner && name == kCapabilities) continue;
    if (::fsetxattr(descriptor, name.c_str(), value.data(), value.size(), 0) != 0 &&
        !isRefusal(errno)) {
      return errno;
    }
  }

  std::optional<std::string> list = attributes.accessList;
  if (list && !keepsGroup) withoutGroup(*list);
  if (const int failure = takeAccessList(descriptor, list); failure != 0) return failure;

  mode_t mode = before.st_mode & 07777;
  if (list) {  // the list has set the permissions
    struct stat now {};
    if (::fstat(descriptor, &now) != 0) return errno;
    mode = (mode & kSpecialBits) | (now.st_mode & 0777);
  } else if (!keepsGroup) {
    mode = withoutGroup(mode);
  }
  if (!keepsOwner) mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
  return ::fchmod(descriptor, mode) == 0 ? 0 : errno;
}

}  // namespace tq::detail
