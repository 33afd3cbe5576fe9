#pragma once

/// @file Thumbnails.h
/// Draws small pictures of a folder's drawings in the background.

#include <cstddef>
#include <functional>
#include <memory>

#include "Options.h"
#include "Render/Canvas.h"

namespace sketch {

/// Draws one folder at a time. Main thread; the drawings are opened and drawn on a queue's threads.
class Thumbnails final : public tq::Subclass<Thumbnails> {
 public:
  static constexpr std::string_view className = "Thumbnails";
  static constexpr int kSide = 72;                 ///< of a thumbnail, in pixels
  static constexpr std::size_t kMostFiles = 1000;  ///< further ones are left out

  /// Called on the main thread.
  struct Handler {
    /// A thumbnail is ready. Files that cannot be opened have none.
    std::function<void(const Path& file, const tqdoc::Canvas& picture)> didDraw;
    /// The number of files that are done, and of all. Equal at the end, also after cancel().
    std::function<void(std::size_t done, std::size_t total)> didProgress;
  };

  explicit Thumbnails(Handler handler);
  ~Thumbnails() override { queue_->cancelAllOperations(); }

  /// Begins to draw the drawings in a folder, and cancels what was begun before.
  void draw(const Path& folder);
  void cancel();

 private:
  class Drawer;
  /// The files of one call of draw(). What operations of an earlier one report is ignored.
  struct Batch {
    std::size_t number = 0;
    std::size_t done = 0, total = 0;
  };

  void finish(std::size_t batch, const Path& file, const tqdoc::Canvas* picture);

  const Handler handler_;
  const tq::Ref<tq::OperationQueue> queue_ = tq::OperationQueue::init();
  Batch batch_;
};

}  // namespace sketch
