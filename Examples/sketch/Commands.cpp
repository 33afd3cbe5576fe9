#include <string>

#include "Window.h"

namespace sketch {

std::span<const Window::Command> Window::commands() {
  static constexpr Command kCommands[] = {
      {"_File", "_Open…", "<Control>o", &Window::openFile},
      {"_File", "_Save", "<Control>s", &Window::saveFile},
      {"_File", "Save _As…", "<Control><Shift>s", &Window::saveFileAs},
      {"_File", "_Download…", "<Control>l", &Window::fetchDrawing},
      {"_File", "Show _Folder…", "<Control>f", &Window::chooseFolder},
      {"_File", "_Close", "<Control>q", &Window::close},
      {"_Edit", "_Undo", "<Control>z", &Window::undo},
      {"_Edit", "_Redo", "<Control><Shift>z", &Window::redo},
      {"_Edit", "D_uplicate", "<Control>d", &Window::duplicateSelected},
      {"_Edit", "_Delete", "Delete", &Window::deleteSelected},
      {"_Edit", "Select _All", "<Control>a", &Window::selectAll},
      {"_Edit", "Select _None", "Escape", &Window::selectNothing},
  };
  return kCommands;
}

void Window::open(const Path& file) {
  if (editor_->open(std::filesystem::absolute(file)) && options::folder.value().empty())
    showFolder();
}

void Window::openFile() {
  const Path file = ask("Open a Drawing", GTK_FILE_CHOOSER_ACTION_OPEN, "_Open");
  if (!file.empty()) open(file);
}

void Window::saveFile() { editor_->save(); }

void Window::saveFileAs() {
  const Path file = ask("Save the Drawing", GTK_FILE_CHOOSER_ACTION_SAVE, "_Save");
  if (!file.empty()) editor_->saveAs(file);
}

void Window::fetchDrawing() {
  if (download_) return editor_->setStatus("Another drawing is being downloaded");
  GtkWidget* const dialog = gtk_dialog_new_with_buttons(
      "Download a Drawing", GTK_WINDOW(window_), GTK_DIALOG_MODAL, "_Cancel", GTK_RESPONSE_CANCEL,
      "_Download", GTK_RESPONSE_ACCEPT, nullptr);
  gtk_dialog_set_default_response(GTK_DIALOG(dialog), GTK_RESPONSE_ACCEPT);
  GtkWidget* const entry = gtk_entry_new();
  gtk_entry_set_activates_default(GTK_ENTRY(entry), TRUE);
  gtk_entry_set_placeholder_text(GTK_ENTRY(entry), "https://");
  gtk_container_add(GTK_CONTAINER(gtk_dialog_get_content_area(GTK_DIALOG(dialog))), entry);
  gtk_widget_show_all(dialog);
  const bool isAccepted = gtk_dialog_run(GTK_DIALOG(dialog)) == GTK_RESPONSE_ACCEPT;
  const std::string address = gtk_entry_get_text(GTK_ENTRY(entry));
  gtk_widget_destroy(dialog);
  if (!isAccepted) return;

  const FetchHandler handler{
      .didReceive = [updater = updater_] { updater->setNeedsUpdate(true); },
      .didEnd =
          [weak = tq::Weak<Window>(this)](const Path& file, const tq::Ref<tq::Error>& error) {
            const auto window = weak.lock();
            if (!window) return;
            window->download_ = nullptr;
            if (error) return window->editor_->setStatus(error->localizedDescription());
            window->open(file);
          }};
  tq::Ref<tq::Error> error;
  download_ = fetch(address, folder(), handler, &error);
  if (error) editor_->setStatus(error->localizedDescription());
}

void Window::chooseFolder() {
  const Path folder = ask("Show a Folder", GTK_FILE_CHOOSER_ACTION_SELECT_FOLDER, "_Show");
  if (!folder.empty()) options::folder.setValue(folder);
}

void Window::close() {
  if (!editor_->save()) {
    GtkWidget* const dialog = gtk_message_dialog_new(
        GTK_WINDOW(window_), GTK_DIALOG_MODAL, GTK_MESSAGE_WARNING, GTK_BUTTONS_YES_NO,
        "The last change cannot be saved: %s\nClose and lose it?", editor_->status().c_str());
    const bool isLost = gtk_dialog_run(GTK_DIALOG(dialog)) == GTK_RESPONSE_YES;
    gtk_widget_destroy(dialog);
    if (!isLost) return;
  }
  gtk_main_quit();
}

void Window::undo() { editor_->undo(); }

void Window::redo() { editor_->redo(); }

void Window::duplicateSelected() {
  const double step = options::gridStep.value();
  editor_->edit("Duplicate", duplicated(editor_->drawing(), {step, step}));
}

void Window::deleteSelected() { editor_->edit("Delete", removed(editor_->drawing())); }

void Window::selectAll() {
  Selection all;
  for (const auto& node : tqdoc::placedNodes(editor_->drawing().document->root())) {
    all.insert(node.path);
  }
  editor_->select(std::move(all));
}

void Window::selectNothing() {
  canvas_->cancelGesture();
  editor_->select({});
}

void Window::recolour(const char* color) {
  editor_->edit("Recolour", recoloured(editor_->drawing(), color));
}

void Window::cancelWork() {
  thumbnails_->cancel();
  if (download_) download_->cancel();
}

Path Window::folder() const {
  if (const Path chosen = options::folder.value(); !chosen.empty()) return chosen;
  return editor_->file().empty() ? Path(g_get_home_dir()) : editor_->file().parent_path();
}

Path Window::ask(const char* title, GtkFileChooserAction action, const char* accept) {
  GtkWidget* const dialog =
      gtk_file_chooser_dialog_new(title, GTK_WINDOW(window_), action, "_Cancel",
                                  GTK_RESPONSE_CANCEL, accept, GTK_RESPONSE_ACCEPT, nullptr);
  GtkFileChooser* const chooser = GTK_FILE_CHOOSER(dialog);
  gtk_file_chooser_set_current_folder(chooser, folder().c_str());
  gtk_file_chooser_set_do_overwrite_confirmation(chooser, TRUE);
  const bool isAccepted = gtk_dialog_run(GTK_DIALOG(dialog)) == GTK_RESPONSE_ACCEPT;
  const Path chosen = isAccepted ? taken(gtk_file_chooser_get_filename(chooser)) : std::string();
  gtk_widget_destroy(dialog);
  return chosen;
}

}  // namespace sketch
