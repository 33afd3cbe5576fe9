// Preferences whose files were changed by others, beside what SickMachineFaultTest.cpp tries on all
// services.

#include <gmock/gmock.h>
#include <sched.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/mount.h>
#include <sys/shm.h>
#include <sys/stat.h>
#include <unistd.h>

#include <support/CapturedLog.h>
#include <support/Child.h>
#include <support/TemporaryDirectory.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include <TQFoundation/objects/Data.h>
#include <TQFoundation/platform/preferences/UserDefaults.h>

namespace tq {
namespace {

using test::Child;
using testing::HasSubstr;
namespace fs = std::filesystem;

constexpr int kNotPermitted = 77;

struct SickPreferences : testing::Test {
  test::TemporaryDirectory directory;
  test::CapturedLog log;
  const std::string folder = directory.path("folder");
  const std::string database = folder + "/suite.sqlite";

  [[nodiscard]] Ref<UserDefaults> open() const {
    return UserDefaults::initWithSuiteName("suite", folder);
  }
  void execute(const char* statements) const {
    sqlite3* connection = nullptr;
    EXPECT_EQ(sqlite3_open(database.c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, statements, nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection);
    sqlite3_close(connection);
  }
  /// A process writes `old` and is killed: the value is only in the write-ahead log.
  void leaveUncheckpointed(std::int64_t old) const {
    Child writer([&] {
      open()->synchronize();
      const Ref<UserDefaults> defaults = open();
      defaults->setInteger(old, "old");
      ::raise(SIGKILL);
    });
    EXPECT_TRUE(WIFSIGNALED(writer.end()));
    EXPECT_GT(fs::file_size(database + "-wal"), 0u);
  }
  void writesAgain(std::int64_t old) const {
    for (int run = 0; run < 2; ++run) {
      const Ref<UserDefaults> defaults = open();
      EXPECT_EQ(defaults->integerForKey("old"), old);
      EXPECT_EQ(defaults->integerForKey("new"), 3 * run);
      defaults->setInteger(3, "new");
      EXPECT_TRUE(defaults->synchronize());
    }
  }
};

/// Removes the shared words of this process, as the command ipcrm would.
void removeSharedWords() {
  std::FILE* const list = std::fopen("/proc/sysvipc/shm", "r");
  char line[256];
  while (std::fgets(line, sizeof line, list) != nullptr) {
    int key = 0, id = 0, mode = 0, size = 0, creator = 0, last = 0;
    std::sscanf(line, "%d %d %o %d %d %d", &key, &id, reinterpret_cast<unsigned*>(&mode), &size,
                &creator, &last);
    if (creator == ::getpid() || last == ::getpid()) ::shmctl(id, IPC_RMID, nullptr);
  }
  std::fclose(list);
}

TEST_F(SickPreferences, RemovedWordsAreReplaced) {
  Ref<UserDefaults> defaults = open();
  defaults->setInteger(2, "old");
  removeSharedWords();
  EXPECT_EQ(defaults->integerForKey("old"), 2);
  defaults->setInteger(3, "new");
  EXPECT_TRUE(defaults->synchronize());
  defaults = nullptr;
  EXPECT_EQ(open()->integerForKey("old"), 2);
  EXPECT_EQ(open()->integerForKey("new"), 3);
}

// For example, a process in another container, which has other shared words.
TEST_F(SickPreferences, OtherProgramsChangesAreSeenAfterSynchronizing) {
  const Ref<UserDefaults> defaults = open();
  defaults->setInteger(2, "old");
  EXPECT_EQ(defaults->integerForKey("old"), 2);
  execute("DELETE FROM preference");
  EXPECT_TRUE(defaults->synchronize());
  EXPECT_EQ(defaults->objectForKey("old"), nullptr);
}

TEST_F(SickPreferences, FilesMayBeCutBetweenRuns) {
  const struct {
    const char* suffix;
    int old;  ///< 0: nothing is left
  } cells[] = {{"", 0}, {"-wal", 0}, {"-shm", 2}};
  for (const auto& cell : cells) {
    SCOPED_TRACE(cell.suffix);
    fs::remove_all(folder);
    leaveUncheckpointed(2);
    fs::resize_file(database + cell.suffix, 0);
    writesAgain(cell.old);
  }
}

/// Runs `check` in a process with its own small file system at `folder`.
/// @return false if that is not permitted
bool onSmallDisk(const std::string& folder, const std::function<void()>& check) {
  fs::create_directory(folder);
  Child child([&] {
    if (::unshare(CLONE_NEWNS) != 0 ||
        ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
        ::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=400k,mode=700") != 0) {
      ::_exit(kNotPermitted);
    }
    check();
  });
  const int status = child.end();
  const bool isPermitted = !WIFEXITED(status) || WEXITSTATUS(status) != kNotPermitted;
  EXPECT_TRUE(!isPermitted || status == 0) << status;
  return isPermitted;
}

TEST_F(SickPreferences, AValueThatDoesNotFitDoesNotKeepOthersFromBeingSaved) {
  const bool isPermitted = onSmallDisk(folder, [&] {
    const auto big = Data::dataWithBytes(std::string(1'000'000, 'x'));
    Child writer([&] {
      const Ref<UserDefaults> defaults = open();
      defaults->setObject(big, "big");
      for (int i = 1; i <= 30; ++i) defaults->setInteger(i, "small");
      EXPECT_NE(defaults->peekObjectForKey("big"), nullptr);
      EXPECT_FALSE(defaults->synchronize());
      if (!HasFailure()) ::raise(SIGKILL);
    });
    EXPECT_TRUE(WIFSIGNALED(writer.end()));
    const Ref<UserDefaults> defaults = open();
    EXPECT_EQ(defaults->integerForKey("small"), 30);
    EXPECT_EQ(defaults->objectForKey("big"), nullptr);
    defaults->setObject(big, "big");
    EXPECT_FALSE(defaults->synchronize());
    defaults->removeObjectForKey("big");
    EXPECT_TRUE(defaults->synchronize());
  });
  if (!isPermitted) GTEST_SKIP() << "mount namespaces are not permitted";
}

TEST_F(SickPreferences, AHostileDatabaseIsWrittenOrSetAside) {
  const struct {
    const char* name;
    const char* statements;
    bool isSetAside;
    int old;
  } cells[] = {
      {"trigger",
       "CREATE TRIGGER t BEFORE INSERT ON preference BEGIN SELECT RAISE(ABORT, 'no'); END;"
       "CREATE TRIGGER u AFTER INSERT ON preference BEGIN DELETE FROM preference; END",
       false, 2},
      {"condition",
       "ALTER TABLE preference RENAME TO p; CREATE TABLE preference (key BLOB PRIMARY KEY,"
       " value BLOB CHECK (key <> x'6E6577')) WITHOUT ROWID; INSERT INTO preference SELECT * FROM "
       "p",
       true, 2},
      {"view", "ALTER TABLE preference RENAME TO p; CREATE VIEW preference AS SELECT * FROM p",
       true, 0},
      {"header", nullptr, true, 2},
  };
  for (const auto& cell : cells) {
    SCOPED_TRACE(cell.name);
    fs::remove_all(folder);
    open()->setInteger(2, "old");
    if (cell.statements != nullptr) {
      execute(cell.statements);
    } else {
      std::string bytes = directory.read("folder/suite.sqlite");
      bytes[18] = 9;  // a write version of the future: read only
      directory.write("folder/suite.sqlite", bytes);
    }
    writesAgain(cell.old);
    EXPECT_EQ(fs::exists(database + ".damaged"), cell.isSetAside);
  }
}

TEST_F(SickPreferences, FilesAreForTheirOwnerAlone) {
  const mode_t before = ::umask(0);
  const auto mode = [](const std::string& path) {
    return static_cast<unsigned>(fs::status(path).permissions());
  };
  for (const bool isNew : {true, false}) {
    const Ref<UserDefaults> defaults = open();
    defaults->setInteger(1, "key");
    for (const char* const suffix : {"", "-wal", "-shm"}) {
      EXPECT_EQ(mode(database + suffix), 0600u) << suffix << " " << isNew;
      ::chmod((database + suffix).c_str(), 0666);  // as an earlier version left it
    }
    EXPECT_EQ(mode(folder), 0700u);
  }
  ::umask(before);
}

}  // namespace
}  // namespace tq
