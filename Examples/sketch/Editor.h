#pragma once

/// @file Editor.h
/// An open drawing: its versions, its selection and its file.

#include <functional>
#include <optional>
#include <string>

#include "Edits.h"
#include "History.h"
#include "Model/HitIndex.h"
#include "Options.h"

namespace sketch {

/// The state of a window, without its widgets. Main thread.
///
/// Every edit is saved half a second after the last one, so that not more than this is lost if the
/// process is killed. An archive is saved to its own file. Any other drawing is imported: its first
/// edit creates an archive beside it, because an SVG file may have content that the model does not
/// support.
class Editor final : public tq::Subclass<Editor> {
 public:
  static constexpr std::string_view className = "Editor";

  /// @param didChange  called after each change of what the functions below return
  explicit Editor(std::function<void()> didChange);

  /// Opens a drawing. If that fails, the current one stays open, and status() gives the reason.
  bool open(const Path& file);
  /// Saves the last edit, unless it is saved. If that fails, status() gives the reason.
  bool save();
  /// Saves to a new file: an archive, which then is the drawing's file, or a copy as SVG.
  bool saveAs(const Path& file);

  /// Replaces the drawing by a version in which the selected nodes are edited.
  void edit(std::string name, Drawing after);
  void select(Selection selection);
  void undo();
  void redo();

  [[nodiscard]] const Drawing& drawing() const noexcept { return drawing_; }
  [[nodiscard]] const History& history() const noexcept { return history_; }
  /// Finds the nodes of the drawing by their places. Valid until the next change.
  [[nodiscard]] const tqdoc::HitIndex& index();

  /// The drawing's file; empty for a drawing without one.
  [[nodiscard]] const Path& file() const noexcept { return file_; }
  [[nodiscard]] bool isSaved() const noexcept { return saved_ == drawing_.document; }
  /// What the last edit, undo or redo changed, by path.
  [[nodiscard]] const std::string& changes() const noexcept { return changes_; }
  /// The last message for the user.
  [[nodiscard]] const std::string& status() const noexcept { return status_; }
  void setStatus(std::string status);

 private:
  void show(const std::string& what, Drawing next);

  const std::function<void()> didChange_;
  Drawing drawing_;
  History history_;
  std::optional<tqdoc::HitIndex> index_;  // of the drawing; made when it is needed
  Path file_;
  tq::Ref<tqdoc::Document> saved_;  // the version in the file
  tq::Ref<tq::Debouncer> saver_;
  std::string changes_, status_;
};

}  // namespace sketch
