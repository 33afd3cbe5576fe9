// Preferences whose files were changed by others, beside what SickMachineFaultTest.cpp tries on all
// services.

#include "platform/preferences/Suite.h"

#include <sys/shm.h>
#include <sys/stat.h>

#include <TQFoundation/objects/Data.h>

#include "support/FailingSystemCalls.h"

namespace {

/// A segment of shared memory, as the command ipcs lists it.
struct Segment {
  key_t key = 0;
  int id = 0;
  std::size_t size = 0;
};

/// Returns the segments that a process with the number of this one has created or used last.
std::vector<Segment> segments() {
  std::vector<Segment> own;
  std::ifstream list("/proc/sysvipc/shm");
  std::string line;
  std::getline(list, line);  // the headings
  while (std::getline(list, line)) {
    Segment each;
    int mode = 0, creator = 0, last = 0;
    std::istringstream(line) >> each.key >> each.id >> mode >> each.size >> creator >> last;
    if (creator == ::getpid() || last == ::getpid()) own.push_back(each);
  }
  return own;
}

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
  /// Returns the segments that this process has created or used last.
  [[nodiscard]] std::vector<Segment> ownSegments() const {
    std::vector<Segment> own = segments();
    std::erase_if(own, [this](const Segment& each) {
      return std::ranges::find(ofKilled, each.id, &Segment::id) != ofKilled.end();
    });
    return own;
  }
  /// Starts a process that sets "key" to 2 when it is its turn, at 1, and to 4 at 3.
  [[nodiscard]] Child answering() const {
    return Child([this] {
      for (const int value : {1, 3}) {
        waitFor(turn, value);
        open()->setInteger(value + 1, "key");
        turn = value + 1;
      }
    });
  }
  void removeSegments() const {
    for (const Segment& each : ownSegments()) ::shmctl(each.id, IPC_RMID, nullptr);
  }

  std::atomic<int>& turn = shared<std::atomic<int>>();
  // Left behind by killed processes, of which one had the same number.
  const std::vector<Segment> ofKilled = segments();
};

TEST_F(SickPreferences, RemovedWordsAreReplaced) {
  Ref<UserDefaults> defaults = open();
  defaults->setInteger(2, "old");
  removeSegments();
  EXPECT_EQ(defaults->integerForKey("old"), 2);
  defaults->setInteger(3, "new");
  EXPECT_TRUE(defaults->synchronize());
  defaults = nullptr;
  EXPECT_EQ(open()->integerForKey("old"), 2);
  EXPECT_EQ(open()->integerForKey("new"), 3);
}

TEST_F(SickPreferences, ANewFolderInPlaceOfTheOldOneIsUsed) {
  Child other = answering();
  const Ref<UserDefaults> defaults = open();
  for (const int value : {1, 3}) {
    defaults->setInteger(value, "key");
    EXPECT_TRUE(defaults->synchronize());
    fs::rename(folder, folder + std::to_string(value));
    turn = value;
    waitFor(turn, value + 1);
    EXPECT_TRUE(defaults->synchronize());
    EXPECT_EQ(defaults->integerForKey("key"), value + 1);
  }
  EXPECT_EQ(other.end(), 0);
}

TEST_F(SickPreferences, SegmentsOfOtherProgramsAreNotUsed) {
  open()->setInteger(1, "key");  // creates the folder
  const Rows<const char*, std::size_t, int> cases{
      {"another size", 8, 0600}, {"of other users, too", 0, 0644}, {"of another file", 0, 0600}};
  for (const auto& [name, more, mode] : cases) {
    SCOPED_TRACE(name);
    Ref<UserDefaults> defaults = open();
    const std::vector<Segment> former = ownSegments();
    ASSERT_EQ(former.size(), 2u) << "of the suite and the global domain";
    defaults = nullptr;
    ASSERT_EQ(ownSegments().size(), 0u);
    for (const Segment& each : former) {
      const int id = ::shmget(each.key, each.size + more, IPC_CREAT | IPC_EXCL | mode);
      auto* const words = static_cast<std::uint64_t*>(::shmat(id, nullptr, 0));
      words[0] = 1;  // ready
      ::shmdt(words);
    }
    auto& stage = shared<std::atomic<int>>();
    Child other([&] {
      waitFor(stage, 1);
      EXPECT_EQ(open()->integerForKey("key"), 2);
    });
    defaults = open();
    defaults->setInteger(2, "key");
    EXPECT_EQ(ownSegments().size(), 4u);
    stage = 1;
    EXPECT_EQ(other.end(), 0);
    removeSegments();
  }
}

TEST_F(SickPreferences, WithoutSharedWordsEachReadAsksTheDatabase) {
  fs::create_directory(folder);
  fs::permissions(folder, fs::perms(0777));  // others could replace the files
  Child other = answering();
  const Ref<UserDefaults> defaults = open();
  for (const int value : {1, 3}) {
    defaults->setInteger(value, "key");
    EXPECT_EQ(ownSegments().size(), 0u);
    turn = value;
    waitFor(turn, value + 1);
    EXPECT_EQ(defaults->integerForKey("key"), value + 1);
  }
  EXPECT_EQ(other.end(), 0);
}

// For example, a process in another container, which has other shared words.
TEST_F(SickPreferences, OtherProgramsChangesAreSeenAfterSynchronizing) {
  const Ref<UserDefaults> defaults = open();
  defaults->setInteger(2, "old");
  EXPECT_EQ(defaults->integerForKey("old"), 2);
  execute("DELETE FROM preference");
  EXPECT_EQ(defaults->integerForKey("old"), 2) << "each read asks the database";
  EXPECT_TRUE(defaults->synchronize());
  EXPECT_EQ(defaults->objectForKey("old"), nullptr);
}

TEST_F(SickPreferences, ReadersWhoMayNotWriteSeeTheOwnersChanges) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root, to act as another user";
  const Ref<UserDefaults> owner = open();
  owner->setInteger(1, "key");
  EXPECT_TRUE(owner->synchronize());
  fs::permissions(directory.path(""), fs::perms(0755));
  fs::permissions(folder, fs::perms(0755));
  for (const auto& file : fs::directory_iterator(folder)) fs::permissions(file, fs::perms(0644));
  Child reader([&] {
    EXPECT_EQ(::setresuid(65534, 65534, 65534), 0);
    const Ref<UserDefaults> defaults = open();
    for (const int value : {1, 3, 5}) {
      waitFor(turn, value);
      EXPECT_EQ(defaults->integerForKey("key"), value);
      turn = value + 1;
    }
  });
  for (const int value : {1, 3, 5}) {
    owner->setInteger(value, "key");
    EXPECT_TRUE(owner->synchronize());
    turn = value;
    waitFor(turn, value + 1);
  }
  EXPECT_EQ(reader.end(), 0);
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

TEST_F(SickPreferences, FilesMayBeCutAtAnyMoment) {
  for (const std::string suffix : {"", "-wal", "-shm", "linked", "linked-wal", "linked-shm"}) {
    SCOPED_TRACE(suffix);
    fs::remove_all(folder);
    fs::create_directory(folder);
    if (suffix.starts_with("linked")) fs::create_symlink(database + "linked", database);
    open()->setInteger(2, "old");
    Ref<UserDefaults> defaults = open();
    defaults->setInteger(4, "last");
    EXPECT_EQ(defaults->integerForKey("old"), 2);
    fs::resize_file(database + suffix, 0);
    EXPECT_TRUE(defaults->synchronize());  // the first check of the files
    defaults = nullptr;
    writesAgain(2);
    EXPECT_EQ(open()->integerForKey("last"), 4);
  }
}

TEST_F(SickPreferences, OnlyRegularFilesAreOpened) {
  for (const std::string suffix : {"", "-journal", "-wal", "-shm"}) {
    SCOPED_TRACE(suffix);
    fs::remove_all(folder);
    fs::create_directory(folder);
    if (!suffix.empty()) execute("CREATE TABLE preference (key BLOB, value BLOB)");
    const std::string pipe = database + suffix;
    EXPECT_EQ(::mkfifo((pipe + "-").c_str(), 0600), 0);
    fs::create_symlink(pipe + "-", pipe);
    Child other([&] {
      ::alarm(20);
      const Ref<UserDefaults> defaults = open();
      EXPECT_EQ(defaults->integerForKey("key"), 0);
      defaults->setInteger(1, "key");
      Ref<Error> error;
      EXPECT_FALSE(defaults->synchronize(&error));
      EXPECT_THAT(error->localizedDescription(), HasSubstr("is not a regular file."));
      fs::remove(pipe);
      EXPECT_TRUE(defaults->synchronize());
    });
    EXPECT_EQ(other.end(), 0);
  }
}

TEST_F(SickPreferences, LinksOfOtherUsersAreNotFollowed) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root";
  directory.write("file", "of the superuser, and no database");
  fs::create_directory(folder);
  fs::create_symlink(directory.path("file"), database);
  EXPECT_EQ(::lchown(database.c_str(), 65534, 65534), 0);
  open()->setInteger(1, "key");
  EXPECT_THAT(log.messages(), ElementsAre(HasSubstr("it is a symbolic link of another user")));
  EXPECT_EQ(directory.read("file"), "of the superuser, and no database");
}

TEST_F(SickPreferences, ALogThatIsCutWhileAnotherProcessUsesItIsSetAside) {
  auto& stage = shared<std::atomic<int>>();
  Child writer([&] {
    const Ref<UserDefaults> defaults = open();
    defaults->setInteger(2, "old");
    stage = 1;
    waitFor(stage, 2);
    EXPECT_EQ(defaults->integerForKey("new"), 3);
  });
  waitFor(stage, 1);
  fs::resize_file(database + "-wal", 0);
  writesAgain(0);
  EXPECT_THAT(log.messages(), ElementsAre(HasSubstr("damaged")));
  stage = 2;
  EXPECT_EQ(writer.end(), 0);
}

TEST_F(SickPreferences, AValueThatDoesNotFitDoesNotKeepOthersFromBeingSaved) {
  const off_t noLimit = FailingSystemCalls::mostBytes.exchange(400'000);
  const auto big = Data::dataWithBytes(std::string(1'000'000, 'x'));
  for (const int limit : {EDQUOT, EFBIG, ENOSPC}) {
    SCOPED_TRACE(limit);
    FailingSystemCalls::errorNumber = limit;
    fs::remove_all(folder);
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
  }
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

TEST_F(SickPreferences, TheSuperuserMakesFilesForTheOwnerOfTheFolder) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root";
  fs::create_directory(folder);
  EXPECT_EQ(::chown(folder.c_str(), 65534, 65534), 0);
  const Ref<UserDefaults> defaults = open();
  defaults->setInteger(1, "key");
  for (const char* const suffix : {"", "-wal", "-shm"}) {
    struct stat status {};
    EXPECT_EQ(::stat((database + suffix).c_str(), &status), 0);
    EXPECT_EQ(status.st_uid, 65534u) << suffix;
  }
}

}  // namespace
