#pragma once

/// @file FileList.h
/// Lists the drawings that a command line names.

#include <cstddef>
#include <string>
#include <vector>

namespace tqdoc {

struct FileList {
  std::vector<std::string> files;  ///< each file once, in the order given
  std::size_t repeated = 0;        ///< further names of listed files, such as links
  /// "<directory>: <reason>" for each that cannot be read completely.
  std::vector<std::string> faults;
};

/// Replaces each directory by the .svg, .svgz and .tqdoc files in it, at any depth, sorted by name.
/// Names without a file and directories that cannot be read are kept: opening them reports the
/// error.
[[nodiscard]] FileList listFiles(const std::vector<std::string>& arguments);

}  // namespace tqdoc
