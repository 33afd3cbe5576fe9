// One read of one of 100 preferences, compared with a query of SQLite whether the file has changed
// and a look-up in a map. One write, compared with the same upsert, committed in WAL mode with
// synchronous = NORMAL.

#include <benchmark/benchmark.h>
#include <sqlite3.h>
#include <stdlib.h>

#include <cstdint>
#include <filesystem>
#include <string>
#include <unordered_map>

#include <TQFoundation/environment/Preference.h>

namespace {

using namespace tq;

constexpr int kEntries = 100;
constexpr const char* kKey = "ShowsRulersInEveryDocument 42";

std::string keyOf(int entry) { return "ShowsRulersInEveryDocument " + std::to_string(entry); }

struct Folder {
  std::string path = (std::filesystem::temp_directory_path() / "tq-XXXXXX").string();
  Folder() {
    if (mkdtemp(path.data()) == nullptr) std::abort();
  }
  ~Folder() { std::filesystem::remove_all(path); }
};

struct Database {
  Folder folder;
  sqlite3* database = nullptr;

  Database() {
    sqlite3_open_v2((folder.path + "/peer.sqlite").c_str(), &database,
                    SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    sqlite3_exec(database,
                 "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                 "CREATE TABLE preference (key BLOB PRIMARY KEY, value BLOB NOT NULL)"
                 " WITHOUT ROWID",
                 nullptr, nullptr, nullptr);
  }
  ~Database() { sqlite3_close(database); }
  [[nodiscard]] sqlite3_stmt* prepare(const char* text) const {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(database, text, -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    return statement;
  }
};

Ref<UserDefaults> filled(const Folder& folder) {
  const auto defaults = UserDefaults::initWithSuiteName("ours", folder.path);
  for (int entry = 0; entry < kEntries; ++entry) defaults->setBool(true, keyOf(entry));
  return defaults;
}

void BM_PreferenceRead_SQLite(benchmark::State& state) {
  const Database peer;
  sqlite3_stmt* const version = peer.prepare("PRAGMA data_version");
  std::unordered_map<std::string, bool> entries;
  for (int entry = 0; entry < kEntries; ++entry) entries[keyOf(entry)] = true;
  int known = 0;
  const std::string key = kKey;
  for (auto _ : state) {
    sqlite3_step(version);
    const int now = sqlite3_column_int(version, 0);
    sqlite3_reset(version);
    if (now != known) known = now;
    benchmark::DoNotOptimize(entries.find(key)->second);
  }
  sqlite3_finalize(version);
}
BENCHMARK(BM_PreferenceRead_SQLite);

void BM_PreferenceRead_TQ(benchmark::State& state) {
  const Folder folder;
  const Preference<bool> preference(kKey, false, filled(folder));
  for (auto _ : state) benchmark::DoNotOptimize(preference.value());
}
BENCHMARK(BM_PreferenceRead_TQ);

void BM_PreferenceWrite_SQLite(benchmark::State& state) {
  const Database peer;
  sqlite3_stmt* const store = peer.prepare(
      "INSERT INTO preference VALUES (?1, ?2)"
      " ON CONFLICT (key) DO UPDATE SET value = excluded.value");
  std::int64_t value = 0;
  const auto write = [&](const std::string& key) {
    sqlite3_bind_blob64(store, 1, key.data(), key.size(), SQLITE_STATIC);
    sqlite3_bind_int64(store, 2, ++value);
    sqlite3_step(store);
    sqlite3_reset(store);
  };
  for (int entry = 0; entry < kEntries; ++entry) write(keyOf(entry));
  const std::string key = kKey;
  for (auto _ : state) write(key);
  sqlite3_finalize(store);
}
BENCHMARK(BM_PreferenceWrite_SQLite);

void BM_PreferenceWrite_TQ(benchmark::State& state) {
  const Folder folder;
  const Preference<std::int64_t> preference(kKey, 0, filled(folder));
  std::int64_t value = 0;
  for (auto _ : state) preference.setValue(++value);
}
BENCHMARK(BM_PreferenceWrite_TQ);

}  // namespace
