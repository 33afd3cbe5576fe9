#pragma once

/// @file FileList.h
/// The drawings that a command line names.

#include <cstddef>
#include <string>
#include <vector>

namespace tqdoc {

struct FileList {
  std::vector<std::string> files;  ///< each file once, in the order given
  std::size_t repeated = 0;        ///< names of files that were named before, links among them
};

/// Directories become the .svg and .tqdoc files in them, at any depth, in the order of their names.
/// Names that lead nowhere are kept, and so are directories that cannot be read: opening them tells
/// why.
[[nodiscard]] FileList listFiles(const std::vector<std::string>& arguments);

}  // namespace tqdoc
