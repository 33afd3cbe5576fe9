// Five services on sick machines. The table in docs/Evidence.md states what becomes of a change in
// each case; the test takes the expected outcomes from there.

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <sstream>

#include <TQFoundation/platform/files/FileReading.h>
#include <TQFoundation/platform/files/FileServices.h>
#include <TQFoundation/platform/log/PlainLog.h>
#include <TQFoundation/platform/network/FileDownload.h>
#include <TQFoundation/platform/preferences/UserDefaults.h>
#include <TQFoundation/serialisation/TQJSONDecoder.h>
#include <TQFoundation/serialisation/TQJSONEncoder.h>

#include "support/Bytes.h"
#include "support/Child.h"
#include "support/FailingAllocations.h"
#include "support/FailingSystemCalls.h"
#include "support/FailingThreads.h"
#include "support/HandMovedClock.h"
#include "support/LoopbackServer.h"
#include "support/TemporaryDirectory.h"
#include "support/Test.h"

namespace {

using test::Child;
using test::FailingSystemCalls;
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
  socket.send("HTTP/1.1 " + std::string(from != 0 ? "206 Partial Content" : "200 OK") +
              "\r\nConnection: close\r\nETag: \"" + request.path + "\"\r\nContent-Range: bytes " +
              std::to_string(from) + "-" + std::to_string(kLength - 1) + "/" +
              std::to_string(kLength) + "\r\nContent-Length: " + std::to_string(kLength - from) +
              "\r\n\r\n");
  const std::size_t end = request.header("X-Cut").empty() ? kLength : kLength / 2;
  socket.send(textOf(request.path[1] - '0').substr(from, end));
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
  fs::path disk;    ///< a small one of its own, if the system permits that
  fs::path folder;  ///< of the service
  fs::path older;   ///< a copy of the folder
  bool isOwnDisk;
};

struct Sickness {
  const char* name;
  void (*bring)(const Place&, const fs::path& file) = nullptr;
  void (*cure)(const Place&) = nullptr;
  void (*begin)(const Place&, int n) = nullptr;
  bool (*end)() = nullptr;  ///< @return whether the n-th call was made
  bool isRepeated = false;  ///< for n = 1, 2, 3 … until the n-th call is not made
  bool kills = false;
  bool isOfEachFile = false;
  bool isBetweenRuns = false;  ///< the service does not work when the sickness comes
};

constexpr uid_t kOther = 65534;

void give(const Place& place, uid_t owner, mode_t folderMode, mode_t fileMode) {
  for (const auto& file : fs::directory_iterator(place.folder)) {
    EXPECT_EQ(::chown(file.path().c_str(), owner, owner) + ::chmod(file.path().c_str(), fileMode),
              0);
  }
  EXPECT_EQ(::chown(place.folder.c_str(), owner, owner) + ::chmod(place.folder.c_str(), folderMode),
            0);
}
void becomeOther(const Place&, int) { EXPECT_EQ(::setresuid(kOther, kOther, kOther), 0); }
void remount(const Place& place, unsigned long flags) {
  EXPECT_EQ(::mount("none", place.disk.c_str(), nullptr, MS_REMOUNT | flags, nullptr), 0);
}
void allowDescriptors(rlim_t count) {
  rlimit limit{};
  ::getrlimit(RLIMIT_NOFILE, &limit);
  limit.rlim_cur = std::min(count, limit.rlim_max);
  ::setrlimit(RLIMIT_NOFILE, &limit);
}
bool endSystemCalls() { return FailingSystemCalls::disarm(); }

void fill(const Place& place, const fs::path&) {
  if (place.isOwnDisk) std::ofstream(place.disk / "filler") << std::string(8'000'000, 'x');
}
void empty(const Place& place) { fs::remove(place.disk / "filler"); }
void failWrites(const Place& place, int) {
  if (!place.isOwnDisk) FailingSystemCalls::arm(1, FailingSystemCalls::How::stays_failed);
}
void forbid(const Place& place, const fs::path&) { give(place, kOther, 0555, 0444); }
void allow(const Place& place) { give(place, kOther, 0755, 0644); }

const Sickness kSicknesses[] = {
    {.name = "read-only mount",  // by permissions, where the system permits no mount
     .bring =
         [](const Place& place, const fs::path& file) {
           place.isOwnDisk ? remount(place, MS_RDONLY) : forbid(place, file);
         },
     .cure = [](const Place& place) { place.isOwnDisk ? remount(place, 0) : allow(place); },
     .begin =
         [](const Place& place, int n) {
           if (!place.isOwnDisk) becomeOther(place, n);
         },
     .isBetweenRuns = true},
    {.name = "read-only files",
     .bring = forbid,
     .cure = allow,
     .begin = becomeOther,
     .isBetweenRuns = true},
    {.name = "foreign owner",
     .bring = [](const Place& place, const fs::path&) { give(place, 0, 0755, 0644); },
     .cure = allow,
     .begin = becomeOther,
     .isBetweenRuns = true},
    {.name = "full disk", .bring = fill, .cure = empty, .begin = failWrites, .end = endSystemCalls},
    {.name = "full disk at start",
     .bring = fill,
     .cure = empty,
     .begin = failWrites,
     .end = endSystemCalls,
     .isBetweenRuns = true},
    {.name = "n-th write fails",
     .begin =
         [](const Place&, int n) {
           using How = FailingSystemCalls::How;
           FailingSystemCalls::arm((n + 1) / 2, n % 2 != 0 ? How::fails : How::stays_failed);
         },
     .end = endSystemCalls,
     .isRepeated = true},
    {.name = "file cut",
     .bring = [](const Place&, const fs::path& file) { fs::resize_file(file, 0); },
     .isOfEachFile = true},
    {.name = "file replaced",
     .bring =
         [](const Place& place, const fs::path& file) {
           const fs::path older = place.older / file.filename();
           std::ofstream(older, std::ios::app);  // empty, if there is none
           fs::rename(older, file);
         },
     .isOfEachFile = true},
    {.name = "file removed",
     .bring = [](const Place&, const fs::path& file) { fs::remove(file); },
     .isOfEachFile = true},
    {.name = "folder removed",
     .bring = [](const Place& place, const fs::path&) { fs::remove_all(place.folder); },
     .cure = [](const Place& place) { fs::create_directory(place.folder); }},
    {.name = "killed",
     .begin = [](const Place&,
                 int n) { FailingSystemCalls::arm(n, FailingSystemCalls::How::kills); },
     .end = endSystemCalls,
     .isRepeated = true,
     .kills = true},
    {.name = "no memory",
     .begin = [](const Place&, int n) { allocationsToGo = n - 1; },
     .end = [] { return allocationsToGo.exchange(-1) < 0; },
     .isRepeated = true},
    {.name = "no threads",
     .begin = [](const Place&, int) { test::hasThreads = false; },
     .end = [] { return test::hasThreads = true; }},
    {.name = "no descriptors",
     .begin = [](const Place&, int) { allowDescriptors(0); },
     .end = [] { return allowDescriptors(1000), true; }},
    {.name = "clock set back",
     .begin = [](const Place&, int) { test::wallClockOffset = -400 * 86'400; },
     .end = [] { return test::wallClockOffset = 0, true; }},
};

// What became of a change.

enum Outcome : unsigned { kSaved, kKept, kRefused, kLost, kOld, kNew, kTorn };
constexpr const char* kOutcomes[] = {"saved", "kept", "refused", "lost", "old", "new", "torn"};

void note(Outcome outcome) { shared().outcomes |= 1U << outcome; }
Found withChange(const Service& service, Found before, int value) {
  return (service.keepsEarlierValues ? before : 0) | bitOf(value);
}

void prepare(const Service& service, const Place& place, bool isShown, bool isRead = true) {
  if (service.open != nullptr) service.open(place.folder);
  EXPECT_TRUE(service.save(place.folder, 0));
  if (isShown) {
    shared().stage = 1;
    waitFor(2);
  }
  EXPECT_TRUE(service.save(place.folder, 1));
  if (service.begin != nullptr) service.begin(place.folder);
  EXPECT_TRUE(!isRead || service.find(place.folder) == bitOf(1));
  if (isShown) shared().stage = 3;
}

/// Saves the value 2 with the sickness. @return whether there is another try
bool trySaving(const Service& service, const Sickness& sickness, const Place& place, int n) {
  const Found before = shared().found = service.find(place.folder);
  EXPECT_TRUE(!service.isPreferences() || before == bitOf(1)) << "they cannot be read";
  if (sickness.begin != nullptr) sickness.begin(place, n);
  bool isReported = false;
  try {
    isReported = service.save(place.folder, 2);
  } catch (const std::bad_alloc&) {
  }
  const bool wasMet = sickness.end == nullptr || sickness.end();
  const Found seen = shared().found = service.find(place.folder);
  Outcome outcome = kTorn;
  if (seen == withChange(service, before, 2)) outcome = isReported ? kSaved : kKept;
  if (seen == before) outcome = isReported ? kLost : kRefused;
  EXPECT_TRUE(outcome != kTorn && (wasMet || outcome == kSaved)) << before << ' ' << seen;
  if (wasMet) note(outcome);
  return sickness.isRepeated && wasMet;
}

/// Saves the value 3 without the sickness.
void saveAfterwards(const Service& service, const Place& place) {
  const Found expected = withChange(service, shared().found, 3);
  if (service.open != nullptr) service.open(place.folder);
  EXPECT_TRUE(service.save(place.folder, 3));
  inUse = nullptr;
  EXPECT_EQ(service.find(place.folder), expected);
  const auto files = std::distance(fs::directory_iterator(place.folder), {});
  EXPECT_TRUE(service.isPreferences() || files == 1) << "something is left";
}

/// @return whether there is another try
bool runInside(const Service& service, const Sickness& sickness, const Place& place, int n) {
  Child worker([&] {
    for (int each = n; each == n || !sickness.kills; ++each) {
      SCOPED_TRACE(testing::Message() << "call " << each);
      prepare(service, place, false);
      const bool goesOn = trySaving(service, sickness, place, each);
      saveAfterwards(service, place);
      if (testing::Test::HasFailure() || !goesOn) return;
    }
  });
  const int status = worker.end();
  EXPECT_EQ(status, WIFSIGNALED(status) && sickness.kills ? SIGKILL : 0);
  if (!WIFSIGNALED(status)) return false;
  Child next([&] {
    if (service.open != nullptr) service.open(place.folder);
    const Found before = shared().found;
    const Found found = shared().found = service.find(place.folder);
    EXPECT_TRUE(found == before || found == withChange(service, before, 2)) << n << ' ' << found;
    note(found == before ? kOld : kNew);
    saveAfterwards(service, place);
  });
  EXPECT_EQ(next.end(), 0);
  return true;
}

/// @return whether there is another try
bool runBeside(const Service& service, const Sickness& sickness, const Place& place, int n) {
  const auto act = [&](bool isNoticed) {
    waitFor(4);
    EXPECT_TRUE(!isNoticed || inUse == nullptr || inUse->synchronize());
    trySaving(service, sickness, place, 1);
    shared().stage = 5;
    waitFor(6);
    saveAfterwards(service, place);
  };
  shared().stage = 0;
  std::optional<Child> worker(std::in_place, [&] {
    const bool isNoticed = sickness.isOfEachFile && n % 2 != 0;  // before the next change
    prepare(service, place, true, !isNoticed);
    act(isNoticed);
  });
  waitFor(1);
  fs::copy(place.folder, place.older);
  shared().stage = 2;
  waitFor(3);
  const std::set<fs::path> files(fs::directory_iterator(place.folder), {});
  const fs::path file = *std::next(files.begin(), sickness.isOfEachFile ? (n - 1) / 2 : 0);
  SCOPED_TRACE(file.string() + " " + std::to_string(n));
  if (sickness.isBetweenRuns) {
    worker->end(SIGKILL);
    if (service.vary != nullptr) service.vary(place.folder, n);
    worker.emplace([&] { act(false); });
  }
  sickness.bring(place, file);
  shared().stage = 4;
  waitFor(5);
  if (sickness.cure != nullptr) sickness.cure(place);
  shared().stage = 6;
  EXPECT_EQ(worker->end(), 0);
  if (sickness.isOfEachFile) return static_cast<std::size_t>(n) < 2 * files.size();
  return sickness.isBetweenRuns && service.vary != nullptr && n < 3;
}

/// Runs in a process of its own.
void runCell(const Service& service, const Sickness& sickness, const fs::path& disk) {
  const bool isOwnDisk = ::unshare(CLONE_NEWNS | CLONE_NEWIPC) == 0 &&
                         ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                         ::mount("none", disk.c_str(), "tmpfs", 0, "size=4m,mode=755") == 0;
  const Place place{disk, disk / "folder", disk / "older", isOwnDisk};
  bool goesOn = true;
  for (int n = 1; goesOn && !testing::Test::HasFailure(); ++n) {
    fs::remove_all(place.folder);
    fs::remove_all(place.older);
    fs::create_directory(place.folder);
    goesOn = (sickness.bring != nullptr ? runBeside : runInside)(service, sickness, place, n);
    ASSERT_LT(n, 100);
  }
}

/// Returns the cell of the page's table.
std::string stated(std::string_view row, std::string_view column) {
  std::ifstream page(TQ_EVIDENCE);
  std::size_t place = 0;
  for (std::string line; std::getline(page, line);) {
    std::vector<std::string> cells;
    std::istringstream rest(line);
    for (std::string cell; std::getline(rest, cell, '|');) {
      cells.push_back(cell.size() > 2 ? cell.substr(1, cell.size() - 2) : "");
    }
    if (cells.size() < 2) continue;
    const auto found = std::ranges::find(cells, column);
    if (found != cells.end()) place = static_cast<std::size_t>(found - cells.begin());
    if (cells[1] == row && place < cells.size()) return cells[place];
  }
  return "(not in the table)";
}

void PrintTo(const Sickness& sickness, std::ostream* out) { *out << sickness.name; }

struct SickMachineFault : testing::TestWithParam<Sickness> {};

TEST_P(SickMachineFault, EndsAsStated) {
  const Sickness& sickness = GetParam();
  if (sickness.isBetweenRuns && ::geteuid() != 0) GTEST_SKIP() << "needs root, to give files away";
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
  std::vector<std::string> ends;  // compared last: children inherit failures
  for (const Service& service : kServices) {
    shared().outcomes = 0;
    const bool canHappen = service.open == nullptr || !sickness.isBetweenRuns;
    std::string& end = ends.emplace_back(canHappen ? "" : "cannot happen");
    if (!canHappen) continue;
    Child cell([&] { runCell(service, sickness, directory.path("")); });
    const int status = cell.end();
    for (unsigned each = 0; each < std::size(kOutcomes); ++each) {
      if ((shared().outcomes & 1U << each) == 0) continue;
      end.append(end.empty() ? "" : " or ").append(kOutcomes[each]);
    }
    if (status != 0) end += " and failed";
  }
  for (std::size_t i = 0; i < ends.size(); ++i) {
    EXPECT_EQ(ends[i], stated(sickness.name, kServices[i].name)) << kServices[i].name;
  }
}

INSTANTIATE_TEST_SUITE_P(On, SickMachineFault, testing::ValuesIn(kSicknesses),
                         [](const auto& each) {
                           std::string name = each.param.name;
                           std::ranges::replace_if(
                               name, [](char c) { return c == ' ' || c == '-'; }, '_');
                           return name;
                         });

}  // namespace
