#pragma once

/// @file FolderMonitor.h
/// Notices changes of the files in a folder.

#include <string>
#include <vector>

namespace tq::detail {

/// Notices changes of files in a folder, which may be removed and created again. It need not exist
/// at first. While it does not, the nearest existing folder above it is watched. Changes that other
/// machines make on a network file system are not noticed.
///
/// Threads: one at a time.
class FolderMonitor {
 public:
  /// @param prefixes  of the files' names
  FolderMonitor(std::string folder, std::vector<std::string> prefixes);
  ~FolderMonitor();
  FolderMonitor(const FolderMonitor&) = delete;
  FolderMonitor& operator=(const FolderMonitor&) = delete;

  /// Can be read if there are reports. -1 if the system has no descriptor left.
  [[nodiscard]] int descriptor() const noexcept { return descriptor_; }
  /// Returns false if the system has no descriptor or no watch left.
  [[nodiscard]] bool isWatching() const noexcept { return watch_ >= 0; }

  /// Takes all reports. Does not wait. @return whether any concerns the files or their folder
  [[nodiscard]] bool takeReports() noexcept;

 private:
  void watch() noexcept;

  const std::string folder_;
  const std::vector<std::string> prefixes_;
  const int descriptor_;
  std::string path_;       ///< the last one that was tried
  int watch_ = -1;         ///< of the folder, or of one above it
  bool isFolder_ = false;  ///< the watch is that of the folder itself
};

}  // namespace tq::detail
