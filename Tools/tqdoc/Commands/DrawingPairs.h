#pragma once

/// @file DrawingPairs.h
/// Drawings in two versions: named files, two directories, or a range of a git repository.

#include <optional>
#include <string>
#include <vector>

#include "Files/Drawing.h"

namespace tqdoc {

/// A version of a drawing.
struct DrawingVersion {
  std::string path;  ///< of the file, or in the repository; kNoDrawing for a file that is not there
  std::string blob;  ///< the object's name in the repository; empty for a file
};

/// The name of no drawing. Version control uses it for a file that does not exist.
inline constexpr std::string_view kNoDrawing = "/dev/null";

struct DrawingPair {
  std::string name;
  DrawingVersion oldVersion, newVersion;
};

/// Returns the drawings of two directories, by their paths in them, sorted. A drawing that only one
/// directory has is paired with no drawing. No value if a directory cannot be read completely:
/// drawings in it would seem to be added or removed.
[[nodiscard]] std::optional<std::vector<DrawingPair>> pairsOfDirectories(
    const std::string& oldDirectory, const std::string& newDirectory, tq::Ref<tq::Error>* error);

/// Returns the drawings that `git diff <range>` lists in the repository of the working directory,
/// renamed ones included. No value if git reports an error.
[[nodiscard]] std::optional<std::vector<DrawingPair>> pairsOfRange(const std::string& range,
                                                                   tq::Ref<tq::Error>* error);

/// Opens a version as openDrawing() does. No drawing is an empty document.
[[nodiscard]] SvgDrawing openVersion(const DrawingVersion& version, tq::Ref<tq::Error>* error);

}  // namespace tqdoc
