#pragma once

/// @file Report.h
/// An HTML page that shows the differences between versions of drawings.

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "Model/Differences.h"

namespace tqdoc {

/// Two versions of a drawing, with their differences.
struct ReportedPair {
  std::string name, oldName, newName;
  const Document& oldDocument;
  const Document& newDocument;
  const std::vector<Difference>& differences;
};

/// Collects pairs of drawings into a page that needs no other file. The page has an index if there
/// are several.
class Report {
 public:
  /// Only the first changes of a pair are listed and marked; the page says how many there are.
  static constexpr std::size_t kMostChanges = 1'000;

  /// @param side  the longer side of the pictures in pixels
  explicit Report(int side) : side_(side) {}

  /// Adds a pair. Keeps nothing of the documents.
  /// @return false, with an error, if a picture cannot be made
  bool add(const ReportedPair& pair, tq::Ref<tq::Error>* error);
  void addUnreadable(const std::string& name, const std::string& reason);

  [[nodiscard]] std::string page() const;

 private:
  /// Adds a line to the index, and returns the number of the pair.
  std::size_t addToIndex(const std::string& name, const std::string& cells);

  int side_;
  std::size_t count_ = 0, equalCount_ = 0;
  std::string onlyName_, index_, equal_, sections_;
};

/// The appearance of a kind of difference in the page.
struct ReportedKind {
  const char* word;
  const char* sign;
};
[[nodiscard]] ReportedKind reportedKind(Difference::Kind kind) noexcept;

/// Returns the section of a pair, or an empty text, with an error, if a picture cannot be made.
[[nodiscard]] std::string sectionOf(const ReportedPair& pair, std::size_t number, int side,
                                    tq::Ref<tq::Error>* error);

}  // namespace tqdoc
