// Preferences whose files were changed by others, beside what SickMachineFaultTest.cpp tries on all
// services.

#include "platform/preferences/Suite.h"

#include <sys/shm.h>
#include <sys/stat.h>

#include <TQFoundation/objects/Data.h>

#include "support/FailingSystemCalls.h"

namespace {

using namespace test;

struct SickPreferences : SuiteTest {
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
  const Rows<const char*, int> cases{{"", 0}, {"-wal", 0}, {"-shm", 2}};  // 0: nothing is left
  for (const auto& [suffix, old] : cases) {
    SCOPED_TRACE(suffix);
    fs::remove_all(folder);
    leaveUncheckpointed(2);
    fs::resize_file(database + suffix, 0);
    writesAgain(old);
  }
}

TEST_F(SickPreferences, AValueThatDoesNotFitDoesNotKeepOthersFromBeingSaved) {
  const off_t noLimit = FailingSystemCalls::mostBytes.exchange(400'000);
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
  FailingSystemCalls::mostBytes = noLimit;
}

TEST_F(SickPreferences, ADamagedOrHostileDatabaseIsWrittenOrSetAside) {
  const char* const file = "folder/suite.sqlite";
  const auto statements = [&](const char* text) { return [this, text] { execute(text); }; };
  const auto bytes = [&](void (*change)(std::string&)) {
    return [=, this] {
      std::string all = directory.read(file);
      change(all);
      directory.write(file, all);
    };
  };
  const Rows<const char*, std::function<void()>, bool, int> cases{
      {"condition",
       statements("ALTER TABLE preference RENAME TO p; CREATE TABLE preference (key BLOB PRIMARY "
                  "KEY, value BLOB CHECK (key <> x'6E6577')) WITHOUT ROWID; INSERT INTO preference "
                  "SELECT * FROM p"),
       true, 2},
      {"view",
       statements("ALTER TABLE preference RENAME TO p; CREATE VIEW preference AS SELECT * FROM p"),
       true, 0},
      {"other columns", statements("DROP TABLE preference; CREATE TABLE preference (other TEXT)"),
       true, 0},
      {"a write version of the future: read only", bytes([](auto& all) { all[18] = 9; }), true, 2},
      {"no database", bytes([](auto& all) { all = "long enough to be taken for a database"; }),
       true, 0},
      {"the table's only page", bytes([](auto& all) { all.replace(4096, 200, 200, '\xFF'); }), true,
       0},
      {"cut", bytes([](auto& all) { all.resize(4096); }), true, 0},
      {"trigger",
       statements(
           "CREATE TRIGGER t BEFORE INSERT ON preference BEGIN SELECT RAISE(ABORT, 'no'); END;"
           "CREATE TRIGGER u AFTER INSERT ON preference BEGIN DELETE FROM preference; END"),
       false, 2},
  };
  std::size_t count = 0;
  for (const auto& [name, harm, isSetAside, old] : cases) {
    SCOPED_TRACE(name);
    open()->setInteger(2, "old");
    open()->removeObjectForKey("new");
    harm();
    const std::string harmed = directory.read(file);
    writesAgain(old);
    if (isSetAside) ++count;
    ASSERT_EQ(log.messages().size(), count);
    if (!isSetAside) continue;
    EXPECT_THAT(log.messages().back(), HasSubstr("damaged"));
    const std::string number = count > 1 ? "-" + std::to_string(count) : "";
    EXPECT_TRUE(directory.read(file + (".damaged" + number)) == harmed);
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
