// Checks which users may access a file before and after its replacement. The kernel is the oracle:
// each user tries it.

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <TQFoundation/platform/files/FileServices.h>

#include "support/FailingSystemCalls.h"
#include "support/TemporaryDirectory.h"

namespace {

struct Person {
  uid_t user;
  gid_t group;
  std::vector<gid_t> others = {};
};
const Person kRoot{0, 0};
const Person kOwner{1001, 1001};  // of the file, whose group is 2001
const Person kOwnerInGroup{1001, 1001, {2001}};
const Person kMember{1002, 1002, {2001}};
const Person kStranger{1009, 1009};
const Person kPeople[] = {kOwner,           kOwnerInGroup,    kMember,
                          kStranger,        {1003, 1003, {}}, {1004, 1004, {2002}},
                          {1005, 1001, {}}, {1006, 1009, {}}};

/// Runs a function with the rights of this person. @return its result
bool as(const Person& person, const std::function<bool()>& act) {
  std::vector<gid_t> groups(static_cast<std::size_t>(::getgroups(0, nullptr)));
  ::getgroups(static_cast<int>(groups.size()), groups.data());
  EXPECT_TRUE(::setgroups(person.others.size(), person.others.data()) == 0 &&
              ::setegid(person.group) == 0 && ::seteuid(person.user) == 0);
  const bool result = act();
  EXPECT_TRUE(::seteuid(0) == 0 && ::setegid(0) == 0 &&
              ::setgroups(groups.size(), groups.data()) == 0);
  return result;
}

/// Returns whether the person may read (1) and write (2).
int rightsOf(const Person& person, const std::string& path) {
  const auto may = [&](int mode) {
    return as(person, [&] { return ::faccessat(AT_FDCWD, path.c_str(), mode, AT_EACCESS) == 0; });
  };
  return (may(R_OK) ? 1 : 0) | (may(W_OK) ? 2 : 0);
}

/// An ACL in the kernel's format, as in linux/posix_acl_xattr.h.
struct Access {
  std::uint16_t tag, permissions;
  std::uint32_t id = ~std::uint32_t{0};
};
enum : std::uint16_t { user = 1, namedUser = 2, group = 4, namedGroup = 8, mask = 16, other = 32 };
std::string listOf(const std::vector<Access>& entries) {
  std::string list("\2\0\0\0", 4);
  return list.append(reinterpret_cast<const char*>(entries.data()),
                     entries.size() * sizeof(Access));
}

constexpr const char* kAccessList = "system.posix_acl_access";
constexpr const char* kTag = "user.tag";

std::string attributeOf(const std::string& path, const char* name) {
  char value[200];
  const ssize_t length = ::lgetxattr(path.c_str(), name, value, sizeof value);
  return length < 0 ? "none" : std::string(value, static_cast<std::size_t>(length));
}
bool set(const std::string& path, const char* name, const std::string& value) {
  return ::lsetxattr(path.c_str(), name, value.data(), value.size(), 0) == 0;
}

TEST(FileReplacement, GivesAccessToNobodyWhoHadNone) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root, to act as several users";
  const TemporaryDirectory directory;
  const std::string path = directory.path("file");
  fs::permissions(directory.path(""), fs::perms(0777));
  // Inherited attributes of new files must not remain.
  const std::string inherited =
      listOf({{user, 7}, {namedUser, 7, 1003}, {group, 7}, {mask, 7}, {other, 7}});
  if (!set(directory.path("."), "system.posix_acl_default", inherited)) {
    GTEST_SKIP() << "needs a file system with ACLs";
  }

  const std::vector<Access> named = {
      {user, 6}, {namedUser, 4, 1003}, {group, 4}, {namedGroup, 4, 2002}, {mask, 4}, {other, 0}};
  const std::vector<Access> namedWithoutGroup = {
      {user, 6}, {namedUser, 4, 1003}, {group, 0}, {namedGroup, 4, 2002}, {mask, 4}, {other, 0}};
  const std::vector<Access> denied = {
      {user, 6}, {namedUser, 0, 1003}, {group, 0}, {mask, 4}, {other, 4}};
  const std::vector<Access> deniedToAll = {
      {user, 6}, {namedUser, 0, 1003}, {group, 0}, {mask, 4}, {other, 0}};
  const std::vector<Access> none;
  // The writer, the mode and list of the file, and its mode, user, group and list afterwards.
  using List = std::vector<Access>;
  const Rows<const char*, Person, mode_t, List, mode_t, uid_t, gid_t, List> cases{
      {"root, group", kRoot, 0640, none, 0640, 1001, 2001, none},
      {"root, set-id", kRoot, 06755, none, 06755, 1001, 2001, none},
      {"root, ACL", kRoot, 0640, named, 0640, 1001, 2001, named},
      {"owner, group", kOwnerInGroup, 0640, none, 0640, 1001, 2001, none},
      {"owner, set-id", kOwnerInGroup, 06750, none, 06750, 1001, 2001, none},
      {"owner, ACL", kOwnerInGroup, 0640, named, 0640, 1001, 2001, named},
      {"owner, ACL that denies", kOwnerInGroup, 0644, denied, 0644, 1001, 2001, denied},
      {"owner, not writable", kOwnerInGroup, 0440, none, 0440, 1001, 2001, none},
      {"not in the group", kOwner, 0640, none, 0600, 1001, 1001, none},
      {"not in the group, for all", kOwner, 0664, none, 0644, 1001, 1001, none},
      {"not in the group, which is denied", kOwner, 0604, none, 0600, 1001, 1001, none},
      {"not in the group, set-id", kOwner, 06755, none, 0755, 1001, 1001, none},
      {"not in the group, ACL", kOwner, 0640, named, 0640, 1001, 1001, namedWithoutGroup},
      {"not in the group, ACL denies", kOwner, 0644, denied, 0640, 1001, 1001, deniedToAll},
      {"member", kMember, 02770, none, 0770, 1002, 2001, none},
      {"member, ACL", kMember, 0640, named, 0640, 1002, 2001, named},
      {"stranger", kStranger, 0644, none, 0644, 1009, 1009, none},
      {"stranger, set-id", kStranger, 06755, none, 0755, 1009, 1009, none},
      {"stranger, not readable", kStranger, 0640, none, 0600, 1009, 1009, none},
  };
  for (const auto& [name, writer, mode, list, modeAfter, userAfter, groupAfter, listAfter] :
       cases) {
    SCOPED_TRACE(name);
    fs::remove(path);
    directory.write("file", "old");
    ASSERT_EQ(::chown(path.c_str(), 1001, 2001), 0);
    ::lremovexattr(path.c_str(), kAccessList);
    ASSERT_TRUE(set(path, kTag, "red") && (list.empty() || set(path, kAccessList, listOf(list))));
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    const bool mayRead = rightsOf(writer, path) % 2 != 0;
    std::vector<int> before;
    for (const Person& person : kPeople) before.push_back(rightsOf(person, path));

    EXPECT_TRUE(
        as(writer, [&] { return replaceFile(*URL::fileURLWithPath(path), bytesOf("new")); }));
    EXPECT_EQ(directory.read("file"), "new");
    struct stat after {};
    ASSERT_EQ(::stat(path.c_str(), &after), 0);
    EXPECT_EQ(std::tuple(after.st_mode & 07777, after.st_uid, after.st_gid),
              std::tuple(modeAfter, userAfter, groupAfter));
    EXPECT_EQ(attributeOf(path, kAccessList), listAfter.empty() ? "none" : listOf(listAfter));
    EXPECT_EQ(attributeOf(path, kTag), mayRead ? "red" : "none");
    const bool keepsAll = after.st_uid == 1001 && after.st_gid == 2001;
    for (std::size_t i = 0; i < std::size(kPeople); ++i) {
      if (kPeople[i].user == writer.user && !keepsAll) continue;
      const int rights = rightsOf(kPeople[i], path);
      EXPECT_EQ(keepsAll ? rights : rights & ~before[i], keepsAll ? before[i] : 0)
          << kPeople[i].user;
    }
  }
}

TEST(FileReplacement, WithoutAnOldFileTheMaskAndTheFolderDecide) {
  const TemporaryDirectory directory;
  const mode_t before = ::umask(027);
  EXPECT_TRUE(replaceFile(*URL::fileURLWithPath(directory.path("new")), bytesOf("x")));
  ::umask(before);
  EXPECT_EQ(fs::status(directory.path("new")).permissions(), fs::perms(0640));
}

TEST(FileReplacement, TheFolderNeedNotBeReadable) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root, to act as another user";
  const TemporaryDirectory directory;
  fs::permissions(directory.path(""), fs::perms(0733));
  const Ref<URL> file = URL::fileURLWithPath(directory.path("new"));
  EXPECT_TRUE(as(kStranger, [&] { return replaceFile(*file, bytesOf("x")); }));
  EXPECT_EQ(directory.read("new"), "x");
}

// An attribute that cannot be set because the disk is full fails the replacement.
TEST(FileReplacementFault, AttributesAreKeptOrTheOldFileStays) {
  const TemporaryDirectory directory;
  const std::string path = directory.write("file", "old");
  if (!set(path, kTag, "red")) GTEST_SKIP() << "needs a file system with extended attributes";
  FailingSystemCalls::arm(2, FailingSystemCalls::How::fails);  // the call after the first write
  Ref<Error> error;
  EXPECT_FALSE(replaceFile(*URL::fileURLWithPath(path), bytesOf("new"), &error));
  EXPECT_TRUE(FailingSystemCalls::disarm());
  EXPECT_EQ(error->code(), 640);
  EXPECT_EQ(directory.read("file"), "old");
}

// A folder has the reserved name.
TEST(FileReplacement, WorksWhereItsNameIsTaken) {
  const TemporaryDirectory directory;
  fs::create_directories(directory.path(".tq-replacement/full"));
  EXPECT_TRUE(replaceFile(*URL::fileURLWithPath(directory.path("file")), bytesOf("new")));
  EXPECT_EQ(directory.read("file"), "new");
  EXPECT_EQ(directory.entries(), 2);
}

}  // namespace
