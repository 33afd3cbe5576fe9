#pragma once

#include <unistd.h>

#include <filesystem>

#include "support/Bytes.h"

namespace tq::test {

namespace fs = std::filesystem;

/// A temporary directory for a test. The destructor removes it with its content.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (fs::temp_directory_path() / "tq-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary directory");
    path_ = name;
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  [[nodiscard]] std::string path(std::string_view name) const { return path_ / name; }

  /// Creates a file with this content. @return its path
  std::string write(std::string_view name, std::string_view content) const {
    std::ofstream(path(name), std::ios::binary) << content;
    return path(name);
  }

  [[nodiscard]] std::string read(std::string_view name) const { return fileContents(path(name)); }

  /// Returns the number of its files and folders.
  [[nodiscard]] std::ptrdiff_t entries() const {
    return std::distance(fs::directory_iterator(path_), {});
  }

 private:
  fs::path path_;
};

}  // namespace tq::test
