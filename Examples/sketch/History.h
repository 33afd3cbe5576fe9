#pragma once

/// @file History.h
/// Undo and redo.

#include <optional>
#include <string>

#include "Edits.h"
#include "TreeEdit.h"

namespace sketch {

/// The edits of a drawing, as differences between its versions. Main thread.
class History {
 public:
  /// Adds an edit and forgets those that were undone. An edit that changed nothing is ignored.
  /// @param name  for menus, such as "Move"
  void add(std::string name, const Drawing& before, const Drawing& after);

  /// Return the version before the last edit, and the one after the last edit that was undone; no
  /// value if there is none. `now` must be the version that the last call was about.
  [[nodiscard]] std::optional<Drawing> undo(const Drawing& now);
  [[nodiscard]] std::optional<Drawing> redo(const Drawing& now);

  /// Return the names of the edits that undo() and redo() are about, or "".
  [[nodiscard]] std::string nameToUndo() const { return nameOf(done_); }
  [[nodiscard]] std::string nameToRedo() const { return nameOf(undone_); }

 private:
  struct Step {
    std::string name;
    TreeEdit edit;
    Selection before, after;
  };
  [[nodiscard]] static std::string nameOf(const tq::Stack<Step>& steps) {
    return steps.isEmpty() ? std::string() : steps.top()->name;
  }

  tq::Stack<Step> done_, undone_;
};

}  // namespace sketch
