#pragma once

/// @file Window.h
/// The window: menus, colours, the canvas, the last change, and the drawings of a folder.

#include <cstddef>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "CanvasView.h"
#include "Editor.h"
#include "Fetch.h"
#include "Thumbnails.h"

namespace sketch {

/// The widgets, and what menus and keys do. Main thread.
class Window final : public tq::Subclass<Window> {
 public:
  static constexpr std::string_view className = "Window";

  Window();
  ~Window() override;

  /// Opens a drawing, and shows those of its folder if the user has not chosen another one.
  void open(const Path& file);

 private:
  /// A line of a menu.
  struct Command {
    const char* menu;
    const char* label;
    const char* shortcut;
    void (Window::*run)();
  };
  [[nodiscard]] static std::span<const Command> commands();

  // Commands.cpp: what the user asks for.
  void openFile();
  void saveFile();
  void saveFileAs();
  void fetchDrawing();
  void chooseFolder();
  void close();
  void undo();
  void redo();
  void duplicateSelected();
  void deleteSelected();
  void selectAll();
  void selectNothing();
  void recolour(const char* color);
  void cancelWork();
  [[nodiscard]] Path folder() const;
  /// Asks for a file or a folder. Empty if the user cancels.
  [[nodiscard]] Path ask(const char* title, GtkFileChooserAction action, const char* accept);

  // Window.cpp: the widgets, and what they show.
  [[nodiscard]] GtkWidget* makeMenuBar();
  void addOptions(GtkWidget* menu);
  [[nodiscard]] GtkWidget* makeTools();
  [[nodiscard]] GtkWidget* makeSidePanel();
  [[nodiscard]] GtkWidget* makeStatusBar();
  void addShortcut(GtkWidget* widget, const char* signal, const char* shortcut);
  /// Shows the state of the editor and of the work in the background.
  void update();
  void updateRecentFiles();
  void showFolder();
  void showThumbnail(const Path& file, const tqdoc::Canvas& picture);

  tq::Ref<tq::TQRateLimiter> updater_;  // calls update(), once for any number of changes
  tq::Ref<Editor> editor_;
  tq::Ref<Thumbnails> thumbnails_;
  std::size_t thumbnailsDone_ = 0, thumbnailsTotal_ = 0;
  tq::Ref<tq::FileDownload> download_;  // null if there is none
  std::vector<tq::Ref<tq::PreferenceObservation>> observations_;

  GtkWidget* const window_;
  GtkAccelGroup* const keys_;
  std::unique_ptr<CanvasView> canvas_;
  GtkWidget* recentFiles_ = nullptr;
  GtkWidget* changes_ = nullptr;
  GtkWidget* pictures_ = nullptr;
  std::vector<Path> pictureFiles_;  // of the pictures, in their order
  GtkWidget* status_ = nullptr;
  GtkWidget* progress_ = nullptr;
  GtkWidget* cancel_ = nullptr;
};

}  // namespace sketch
