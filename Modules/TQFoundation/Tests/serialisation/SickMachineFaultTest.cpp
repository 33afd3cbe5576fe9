// Five services on sick machines. The table in docs/Faults.md states what becomes of a change in
// each case. It is the expected result: the test looks for its rows there.

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <future>

#include <TQFoundation/TQFoundation.h>

#include "support/Bytes.h"
#include "support/Child.h"
#include "support/Descriptors.h"
#include "support/FailingAllocations.h"
#include "support/FailingSystemCalls.h"
#include "support/FailingThreads.h"
#include "support/HandMovedClock.h"
#include "support/LoopbackServer.h"
#include "support/TemporaryDirectory.h"

namespace {

using How = FailingSystemCalls::How;
namespace fs = std::filesystem;

/// The values 1 to 3 that a service holds, as bits. Bit 0: something else.
using Found = unsigned;
constexpr Found bitOf(int value) { return 1U << value; }

constexpr std::size_t kLength = 100'000;
std::string textOf(int value) { return std::string(kLength, static_cast<char>('0' + value)); }
Found valuesIn(std::string_view text) {
  for (const int value : {1, 2, 3}) {
    if (text == textOf(value)) return bitOf(value);
  }
  return bitOf(0);
}
Ref<URL> place(const fs::path& folder) { return URL::fileURLWithPath((folder / "file").string()); }
Found findFile(const fs::path& folder) {
  const Ref<Data> data = dataWithContentsOfURL(*place(folder));
  return data != nullptr ? valuesIn(data->view()) : 0;
}

/// What the processes of a test share.
struct Shared {
  std::atomic<int> stage, port;
  std::atomic<unsigned> outcomes;
  std::atomic<Found> found;
};
Shared& shared() {
  static auto& all = test::shared<Shared>();
  return all;
}
void waitFor(int stage) { test::waitFor(shared().stage, stage); }

// The services. Each holds a value in a folder.

struct Service {
  const char* name;
  bool keepsEarlierValues;
  bool (*save)(const fs::path& folder, int value);  // @return whether success was reported
  Found (*find)(const fs::path& folder);
  void (*begin)(const fs::path& folder) = nullptr;        // leaves work half done
  void (*vary)(const fs::path& folder, int n) = nullptr;  // what a killed process has left
  void (*open)(const fs::path& folder) = nullptr;         // the log alone: redirects standard error

  [[nodiscard]] bool isPreferences() const { return vary != nullptr; }
};

Ref<UserDefaults> preferencesIn(const fs::path& folder) {
  return UserDefaults::initWithSuiteName("suite", folder.string());
}
Ref<UserDefaults> inUse;

void varyPreferences(const fs::path& folder, int n) {
  if (n == 2) fs::remove(folder / "suite.sqlite-shm");
  if (n == 3) Child([&] { preferencesIn(folder)->synchronize(); }).end();  // closes the database
}
bool savePreference(const fs::path& folder, int value) {
  inUse = preferencesIn(folder);
  for (const char* const later : {"2", "3"}) {
    if (value == 0) inUse->removeObjectForKey(later);
  }
  inUse->setInteger(value, std::to_string(std::max(value, 1)));
  return value < 2 || inUse->synchronize();
}
Found findPreferences(const fs::path& folder) {
  const Ref<UserDefaults> defaults = preferencesIn(folder);
  Found found = 0;
  for (const int value : {1, 2, 3}) {
    const std::string key = std::to_string(value);
    if (defaults->peekObjectForKey(key) == nullptr) continue;
    found |= bitOf(defaults->integerForKey(key) == value ? value : 0);
  }
  return found;
}

/// Serves the text of a value, or the first half of it to a request with the header X-Cut.
void serve(const test::Socket& socket, const test::LoopbackServer::Request& request) {
  const std::string range = request.header("Range");
  const std::size_t from = range.empty() ? 0 : std::stoul(range.substr(range.find('=') + 1));
  const std::string page = test::LoopbackServer::page(
      from != 0 ? "206 Partial Content" : "200 OK", textOf(request.path[1] - '0').substr(from),
      "ETag: \"" + request.path + "\"\r\nContent-Range: bytes " + std::to_string(from) + "-" +
          std::to_string(kLength - 1) + "/" + std::to_string(kLength) + "\r\n");
  socket.send(request.header("X-Cut").empty() ? page : page.substr(0, page.size() - kLength / 2));
}
bool fetch(const fs::path& folder, int value, HTTPHeaders headers) {
  std::promise<bool> ended;
  FileDownloadHandler handler;
  handler.didComplete = [&](const URLResponse&, const Ref<Error>& error) {
    ended.set_value(error == nullptr);
  };
  URLRequest request;
  request.url = URL::URLWithString("http://127.0.0.1:" + std::to_string(shared().port) + "/" +
                                   std::to_string(value));
  request.HTTPHeaderFields = std::move(headers);
  const auto download = FileDownload::downloadWithRequest(*URLSession::sessionWithConfiguration({}),
                                                          request, *place(folder), handler);
  if (download == nullptr) return false;
  download->resume();
  return ended.get_future().get();
}

Found findArchive(const fs::path& folder) {
  const Ref<Data> data = dataWithContentsOfURL(*place(folder));
  if (data == nullptr) return 0;
  const auto text = refCast<String>(TQJSONDecoder::decodeDataError(*data, nullptr));
  return text != nullptr ? valuesIn(text->view()) : bitOf(0);
}

void openLog(const fs::path& folder) {
  const int log = ::open((folder / "file").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
  if (log == STDERR_FILENO) return;  // it was closed
  ::dup2(log, STDERR_FILENO);
  ::close(log);
}
bool writeLog(const fs::path& folder, int value) {
  if (value == 0) fs::resize_file(folder / "file", 0);
  plainLog(textOf(value));
  return true;
}
/// A line that was written in part is alone on its line.
Found findLog(const fs::path& folder) {
  Found found = 0;
  std::ifstream log(folder / "file");
  for (std::string line; std::getline(log, line);) {
    const std::string text = line.substr(std::min(line.find("] "), line.size() - 2) + 2);
    const bool isWhole = text.size() == kLength || text.find_first_not_of(text[0]) != text.npos;
    if (isWhole && text != textOf(0)) found |= valuesIn(text);
  }
  return found;
}

const Service kServices[] = {
    {"preferences", true, savePreference, findPreferences, nullptr, varyPreferences},
    {"safe replacement", false,
     [](const fs::path& folder, int value) {
       return replaceFile(*place(folder), test::bytesOf(textOf(value)));
     },
     findFile},
    {"downloads", false, [](const fs::path& folder, int value) { return fetch(folder, value, {}); },
     findFile,
     [](const fs::path& folder) {
       EXPECT_FALSE(fetch(folder, 2, {{"X-Cut", "1"}}));
     }},
    {"archives to files", false,
     [](const fs::path& folder, int value) {
       return TQJSONEncoder::saveObject(String::of(textOf(value)), *place(folder));
     },
     findArchive},
    {"log", true, writeLog, findLog, nullptr, nullptr, openLog},
};

// The sicknesses. Each begins and ends in the process that saves, or another process brings it.

struct Place {
  fs::path disk;       ///< a small one of its own, if the system permits that
  fs::path folder;     ///< of the service
  fs::path older;      ///< a copy of the folder
  fs::path file = {};  ///< one of the folder
  int n = 1;           ///< 1, 2, 3 … in several tries
  bool isOwnDisk = false;
};
using Step = void (*)(const Place&);

enum class Kind {
  inside,       ///< begins and ends in the process that saves
  repeated,     ///< the same for n = 1, 2, 3 … until there is no n-th call
  killing,      ///< the same, and ends the process
  beside,       ///< brought by another process while the service works
  ofEachFile,   ///< the same for each of its files
  betweenRuns,  ///< the same between two runs
};

struct Sickness {
  const char* name;
  Kind kind;
  Step bring, cure;
  Step begin = nullptr;
  bool (*end)() = nullptr;  ///< @return whether the n-th call was made
};

constexpr uid_t kOther = 65534;

void give(const Place& at, uid_t owner, mode_t folderMode, mode_t fileMode) {
  std::map<std::string, mode_t> modes{{at.folder.string(), folderMode}};
  for (const auto& file : fs::directory_iterator(at.folder)) modes[file.path()] = fileMode;
  for (const auto& [path, mode] : modes) {
    EXPECT_TRUE(::chown(path.c_str(), owner, owner) == 0 && ::chmod(path.c_str(), mode) == 0);
  }
}
void forbid(const Place& at) { give(at, kOther, 0555, 0444); }
void allow(const Place& at) { give(at, kOther, 0755, 0644); }
void becomeOther(const Place&) { EXPECT_EQ(::setresuid(kOther, kOther, kOther), 0); }
void remount(const Place& at, unsigned long flags) {
  EXPECT_EQ(::mount("none", at.disk.c_str(), nullptr, MS_REMOUNT | flags, nullptr), 0);
}
void fill(const Place& at) {
  if (at.isOwnDisk) std::ofstream(at.disk / "filler") << std::string(8'000'000, 'x');
}
void empty(const Place& at) { fs::remove(at.disk / "filler"); }
void failCalls(int n, How how) { FailingSystemCalls::arm(n, how); }
void failWrites(const Place& at) {
  if (!at.isOwnDisk) failCalls(1, How::stays_failed);
}
bool endCalls() { return FailingSystemCalls::disarm(); }
std::optional<std::jthread> logging;  // writes messages while it exists

// Where the system permits no mount, the first one is brought by permissions.
const Sickness kSicknesses[] = {
    {"read-only mount", Kind::betweenRuns,
     [](auto& at) { at.isOwnDisk ? remount(at, MS_RDONLY) : forbid(at); },
     [](auto& at) { at.isOwnDisk ? remount(at, 0) : allow(at); },
     [](auto& at) { at.isOwnDisk ? void() : becomeOther(at); }},
    {"read-only files", Kind::betweenRuns, forbid, allow, becomeOther},
    {"foreign owner", Kind::betweenRuns, [](auto& at) { give(at, 0, 0755, 0644); }, allow,
     becomeOther},
    {"full disk", Kind::beside, fill, empty, failWrites, endCalls},
    {"full disk at start", Kind::betweenRuns, fill, empty, failWrites, endCalls},
    {"n-th write fails", Kind::repeated, nullptr, nullptr,
     [](auto& at) { failCalls((at.n + 1) / 2, at.n % 2 != 0 ? How::fails : How::stays_failed); },
     endCalls},
    {"file cut", Kind::ofEachFile, [](auto& at) { fs::resize_file(at.file, 0); }, nullptr},
    {"file replaced", Kind::ofEachFile,
     [](auto& at) {
       const fs::path older = at.older / at.file.filename();
       std::ofstream(older, std::ios::app);  // empty, if there is none
       fs::rename(older, at.file);
     },
     nullptr},
    {"file removed", Kind::ofEachFile, [](auto& at) { fs::remove(at.file); }, nullptr},
    {"folder removed", Kind::beside, [](auto& at) { fs::remove_all(at.folder); },
     [](auto& at) { fs::create_directory(at.folder); }},
    {"killed", Kind::killing, nullptr, nullptr, [](auto& at) { failCalls(at.n, How::kills); },
     endCalls},
    {"no memory", Kind::repeated, nullptr, nullptr, [](auto& at) { allocationsToGo = at.n - 1; },
     [] { return allocationsToGo.exchange(-1) < 0; }},
    {"no threads", Kind::inside, nullptr, nullptr, [](auto&) { test::hasThreads = false; },
     [] { return test::hasThreads = true; }},
#ifndef TQ_TEST_NEEDS_DESCRIPTORS
    {"no descriptors", Kind::inside, nullptr, nullptr, [](auto&) { test::allowDescriptors(0); },
     [] { return test::allowDescriptors(1000), true; }},
#endif
    {"no standard error", Kind::inside, nullptr, nullptr,
     [](auto&) {
       ::close(STDERR_FILENO);
       logging.emplace([](const std::stop_token& end) {
         while (!end.stop_requested()) plainLog("a message that nobody sees");
       });
     },
     [] { return logging.reset(), true; }},
    {"clock set back", Kind::inside, nullptr, nullptr,
     [](auto&) { test::wallClockOffset = -400 * 86'400; },
     [] { return test::wallClockOffset = 0, true; }},
};

// What became of a change.

enum Outcome : unsigned { kSaved, kKept, kRefused, kLost, kOld, kNew, kTorn };
constexpr const char* kOutcomes[] = {"saved", "kept", "refused", "lost", "old", "new", "torn"};
void note(Outcome outcome) { shared().outcomes |= 1U << outcome; }

/// Runs in a process of its own.
struct Cell {
  const Service& service;
  const Sickness& sickness;
  Place at;

  [[nodiscard]] Found find() const { return shared().found = service.find(at.folder); }
  [[nodiscard]] Found with(int value, Found before) const {
    return (service.keepsEarlierValues ? before : 0) | bitOf(value);
  }
  void open() const {
    if (service.open != nullptr) service.open(at.folder);
  }

  void run() {
    at.isOwnDisk = ::unshare(CLONE_NEWNS | CLONE_NEWIPC) == 0 &&
                   ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                   ::mount("none", at.disk.c_str(), "tmpfs", 0, "size=4m,mode=755") == 0;
    bool goesOn = true;
    for (at.n = 1; goesOn && !testing::Test::HasFailure(); ++at.n) {
      fs::remove_all(at.folder);
      fs::remove_all(at.older);
      fs::create_directory(at.folder);
      goesOn = sickness.bring != nullptr ? runBeside() : runInside();
      ASSERT_LT(at.n, 100);
    }
  }

  void prepare(bool isShown, bool isRead) const {
    open();
    EXPECT_TRUE(service.save(at.folder, 0));
    if (isShown) {
      shared().stage = 1;
      waitFor(2);
    }
    EXPECT_TRUE(service.save(at.folder, 1));
    if (service.begin != nullptr) service.begin(at.folder);
    EXPECT_TRUE(!isRead || find() == bitOf(1));
    if (isShown) shared().stage = 3;
  }

  /// Saves the value 2 with the sickness. @return whether the n-th call was made
  [[nodiscard]] bool saveSick() const {
    const Found before = find();
    EXPECT_TRUE(!service.isPreferences() || before == bitOf(1)) << "they cannot be read";
    if (sickness.begin != nullptr) sickness.begin(at);
    bool isReported = false;
    try {
      isReported = service.save(at.folder, 2);
    } catch (const std::bad_alloc&) {
    }
    const bool wasMet = sickness.end == nullptr || sickness.end();
    const Found seen = find();
    Outcome outcome = kTorn;
    if (seen == with(2, before)) outcome = isReported ? kSaved : kKept;
    if (seen == before) outcome = isReported ? kLost : kRefused;
    EXPECT_TRUE(outcome != kTorn && (wasMet || outcome == kSaved)) << before << ' ' << seen;
    if (wasMet) note(outcome);
    return wasMet;
  }

  /// Saves the value 3 without the sickness.
  void saveWell() const {
    const Found expected = with(3, shared().found);
    open();
    EXPECT_TRUE(service.save(at.folder, 3));
    inUse = nullptr;
    EXPECT_EQ(find(), expected);
    const auto files = std::distance(fs::directory_iterator(at.folder), {});
    EXPECT_TRUE(service.isPreferences() || files == 1) << "something is left";
  }

  /// @return whether there is another try
  bool runInside() {
    Child worker([&] {
      for (bool goesOn = true; goesOn && !testing::Test::HasFailure(); ++at.n) {
        SCOPED_TRACE(at.n);
        prepare(false, true);
        goesOn = saveSick() && sickness.kind == Kind::repeated;
        saveWell();
      }
    });
    const int status = worker.end();
    const bool wasKilled = WIFSIGNALED(status) && sickness.kind == Kind::killing;
    EXPECT_EQ(status, wasKilled ? SIGKILL : 0);
    if (!wasKilled) return false;
    Child next([&] {
      open();
      const Found before = shared().found;
      const Found found = find();
      EXPECT_TRUE(found == before || found == with(2, before)) << at.n << ' ' << found;
      note(found == before ? kOld : kNew);
      saveWell();
    });
    return next.end() == 0 || (ADD_FAILURE(), false);
  }

  /// @return whether there is another try
  bool runBeside() {
    const auto act = [&](bool isNoticed) {
      waitFor(4);
      EXPECT_TRUE(!isNoticed || inUse == nullptr || inUse->synchronize());
      static_cast<void>(saveSick());
      shared().stage = 5;
      waitFor(6);
      saveWell();
    };
    const bool isOfEachFile = sickness.kind == Kind::ofEachFile;
    shared().stage = 0;
    std::optional<Child> worker(std::in_place, [&] {
      const bool isNoticed = isOfEachFile && at.n % 2 != 0;  // before the next change
      prepare(true, !isNoticed);
      act(isNoticed);
    });
    waitFor(1);
    fs::copy(at.folder, at.older);
    shared().stage = 2;
    waitFor(3);
    const std::set<fs::path> files(fs::directory_iterator(at.folder), {});
    at.file = *std::next(files.begin(), isOfEachFile ? (at.n - 1) / 2 : 0);
    SCOPED_TRACE(at.file.string() + " " + std::to_string(at.n));
    if (sickness.kind == Kind::betweenRuns) {
      worker->end(SIGKILL);
      if (service.vary != nullptr) service.vary(at.folder, at.n);
      worker.emplace([&] { act(false); });
    }
    sickness.bring(at);
    shared().stage = 4;
    waitFor(5);
    if (sickness.cure != nullptr) sickness.cure(at);
    shared().stage = 6;
    EXPECT_EQ(worker->end(), 0);
    if (isOfEachFile) return static_cast<std::size_t>(at.n) < 2 * files.size();
    return sickness.kind == Kind::betweenRuns && service.vary != nullptr && at.n < 3;
  }
};

void PrintTo(const Sickness& sickness, std::ostream* out) { *out << sickness.name; }

struct SickMachineFault : testing::TestWithParam<Sickness> {};

TEST_P(SickMachineFault, EndsAsStated) {
  const Sickness& sickness = GetParam();
  const bool isBetweenRuns = sickness.kind == Kind::betweenRuns;
  if (isBetweenRuns && ::geteuid() != 0) GTEST_SKIP() << "needs root, to give files away";
  ::setenv("no_proxy", "127.0.0.1", 1);
  shared().port = 0;
  Child server([] {
    std::map<std::string, test::LoopbackServer::Page> pages;
    for (const char* const path : {"/0", "/1", "/2", "/3"}) pages[path] = serve;
    const test::LoopbackServer served(std::move(pages));
    shared().port = served.port();
    ::pause();
  });
  test::waitFor(shared().port, 1);
  const test::TemporaryDirectory directory;
  fs::permissions(directory.path(""), fs::perms(0755));
  std::string heads = "| machine |";
  std::string row = "| " + std::string(sickness.name) + " |";
  for (const Service& service : kServices) {
    shared().outcomes = 0;
    const fs::path disk = directory.path("");
    const bool canHappen = service.open == nullptr || !isBetweenRuns;
    std::string text = canHappen ? "" : "cannot happen";
    Child cell([&] {
      if (canHappen) Cell{service, sickness, {disk, disk / "folder", disk / "older"}}.run();
    });
    if (cell.end() != 0) text = "failed";
    for (unsigned each = 0; each < std::size(kOutcomes); ++each) {
      if ((shared().outcomes & 1U << each) == 0) continue;
      text.append(text.empty() ? "" : " or ").append(kOutcomes[each]);
    }
    heads += " " + std::string(service.name) + " |";
    row += " " + text + " |";
  }
  std::stringstream page;
  page << std::ifstream(TQ_FAULTS_PAGE).rdbuf();
  EXPECT_THAT(page.str(), HasSubstr("\n" + heads + "\n"));
  EXPECT_THAT(page.str(), HasSubstr("\n" + row + "\n"));
}

INSTANTIATE_TEST_SUITE_P(On, SickMachineFault, testing::ValuesIn(kSicknesses), [](auto& each) {
  std::string name = each.param.name;
  std::ranges::replace_if(
      name, [](char c) { return c == ' ' || c == '-'; }, '_');
  return name;
});

}  // namespace
