#include "Files/FileList.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace tqdoc {
namespace {

namespace fs = std::filesystem;

/// Links to directories are not followed, so there are no circles.
[[nodiscard]] std::vector<std::string> drawingsIn(const fs::path& directory) {
  std::vector<std::string> found;
  std::error_code fault;
  auto walk = fs::recursive_directory_iterator(
      directory, fs::directory_options::skip_permission_denied, fault);
  for (; !fault && walk != fs::recursive_directory_iterator(); walk.increment(fault)) {
    const fs::path extension = walk->path().extension();
    if (extension == ".svg" || extension == ".tqdoc") found.push_back(walk->path().string());
  }
  std::ranges::sort(found);
  return found;
}

}  // namespace

FileList listFiles(const std::vector<std::string>& arguments) {
  FileList list;
  std::unordered_set<std::string> seen;
  const auto add = [&](std::string file) {
    std::error_code fault;
    const fs::path real = fs::canonical(file, fault);
    if (!fault && !seen.insert(real.string()).second) {
      ++list.repeated;
    } else {
      list.files.push_back(std::move(file));
    }
  };
  for (const std::string& argument : arguments) {
    std::error_code ignored;
    if (!fs::is_directory(argument, ignored)) {
      add(argument);
      continue;
    }
    for (std::string& file : drawingsIn(argument)) add(std::move(file));
  }
  return list;
}

}  // namespace tqdoc
