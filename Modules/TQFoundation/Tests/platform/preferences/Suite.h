#pragma once

#include <sqlite3.h>

#include <TQFoundation/platform/preferences/UserDefaults.h>

#include "support/CapturedLog.h"
#include "support/Child.h"
#include "support/TemporaryDirectory.h"

namespace tq::test {

/// A suite of preferences in a folder that does not exist yet.
struct SuiteTest : testing::Test {
  TemporaryDirectory directory;
  CapturedLog log;
  const std::string folder = directory.path("folder");
  const std::string database = folder + "/suite.sqlite";

  [[nodiscard]] Ref<UserDefaults> open(std::string_view name = "suite") const {
    return UserDefaults::initWithSuiteName(name, folder);
  }

  /// @return the number that the last statement returns
  int execute(const char* statements) const {
    int result = 0;
    const auto keep = [](void* to, int, char** values, char**) {
      *static_cast<int*>(to) = std::atoi(values[0]);
      return 0;
    };
    sqlite3* connection = nullptr;
    EXPECT_EQ(sqlite3_open(database.c_str(), &connection), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(connection, statements, keep, &result, nullptr), SQLITE_OK)
        << sqlite3_errmsg(connection);
    sqlite3_close(connection);
    return result;
  }
  [[nodiscard]] int savedCount() const { return execute("SELECT count(*) FROM preference"); }
};

}  // namespace tq::test
