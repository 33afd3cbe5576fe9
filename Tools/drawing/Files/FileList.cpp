#include "Files/FileList.h"

#include <algorithm>
#include <filesystem>
#include <system_error>
#include <unordered_set>
#include <utility>

namespace tqdoc {
namespace {

namespace fs = std::filesystem;

/// A directory that cannot be read completely is added itself: opening it reports the error. Links
/// to directories are not followed, so there are no cycles.
[[nodiscard]] std::vector<std::string> drawingsIn(const fs::path& directory,
                                                  std::vector<std::string>& faults) {
  std::vector<std::string> found;
  std::vector<fs::path> folders{directory};
  while (!folders.empty()) {
    const fs::path folder = std::move(folders.back());
    folders.pop_back();
    std::error_code fault, ignored;
    for (fs::directory_iterator entry(folder, fault); !fault && entry != fs::directory_iterator();
         entry.increment(fault)) {
      const fs::path extension = entry->path().extension();
      if (entry->symlink_status(ignored).type() == fs::file_type::directory) {
        folders.push_back(entry->path());
      } else if (extension == ".svg" || extension == ".svgz" || extension == ".tqdoc") {
        found.push_back(entry->path().string());
      }
    }
    if (!fault) continue;
    found.push_back(folder.string());
    faults.push_back(folder.string() + ": " + fault.message());
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
    for (std::string& file : drawingsIn(argument, list.faults)) add(std::move(file));
  }
  return list;
}

}  // namespace tqdoc
