#include "Window.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>

namespace sketch {
namespace {

constexpr int kSpacing = 6;
constexpr int kSideWidth = 260;

constexpr struct {
  const char* label;
  const tq::Preference<bool>* option;
} kOptions[] = {{"Show _Grid", &options::showsGrid},
                {"_Snap to Grid", &options::snapsToGrid},
                {"Snap to _Crossings", &options::snapsToCrossings},
                {"_Log Work", &options::logsWork}};

constexpr const char* kColors[] = {"#241f31", "#ffffff", "#e01b24", "#ff7800",
                                   "#f6d32d", "#33d17a", "#3584e4", "#9141ac"};
constexpr double kGridSteps[] = {1, 2, 5, 10, 20, 50};

[[nodiscard]] GtkWidget* imageOf(const tqdoc::Canvas& canvas) {
  cairo_surface_t* const surface =
      cairo_image_surface_create(CAIRO_FORMAT_ARGB32, canvas.width(), canvas.height());
  auto* const pixels = reinterpret_cast<std::uint32_t*>(cairo_image_surface_get_data(surface));
  std::ranges::copy(canvas.pixels(), pixels);
  cairo_surface_mark_dirty(surface);
  GtkWidget* const image = gtk_image_new_from_surface(surface);
  cairo_surface_destroy(surface);
  return image;
}

[[nodiscard]] GtkWidget* swatch(const char* color) {
  constexpr int kSide = 18;
  const auto rgb = static_cast<guint32>(std::strtoul(color + 1, nullptr, 16));
  GdkPixbuf* const pixels = gdk_pixbuf_new(GDK_COLORSPACE_RGB, FALSE, 8, kSide, kSide);
  gdk_pixbuf_fill(pixels, rgb << 8 | 0xFF);
  GtkWidget* const image = gtk_image_new_from_pixbuf(pixels);
  g_object_unref(pixels);
  return image;
}

[[nodiscard]] GtkWidget* heading(const char* text) {
  GtkWidget* const label = gtk_label_new(nullptr);
  gtk_label_set_markup(GTK_LABEL(label), ("<b>" + std::string(text) + "</b>").c_str());
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  return label;
}

[[nodiscard]] GtkWidget* scrolled(GtkWidget* content) {
  GtkWidget* const scroller = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_AUTOMATIC,
                                 GTK_POLICY_AUTOMATIC);
  gtk_container_add(GTK_CONTAINER(scroller), content);
  return scroller;
}

/// Adds a widget at the end of a box. `grows` gives it the space that is left.
void pack(GtkWidget* box, GtkWidget* widget, bool grows = false) {
  gtk_box_pack_start(GTK_BOX(box), widget, grows, grows, 0);
}

void removeChildren(GtkWidget* container) {
  gtk_container_foreach(
      GTK_CONTAINER(container), [](GtkWidget* child, gpointer) { gtk_widget_destroy(child); },
      nullptr);
}

}  // namespace

Window::Window()
    : updater_(tq::TQRateLimiter::initWithTarget(this, &Window::update)),
      window_(gtk_window_new(GTK_WINDOW_TOPLEVEL)),
      keys_(gtk_accel_group_new()) {
  editor_ = tq::makeRef<Editor>([this] { updater_->setNeedsUpdate(true); });
  thumbnails_ = tq::makeRef<Thumbnails>(Thumbnails::Handler{
      [this](const Path& file, const tqdoc::Canvas& picture) { showThumbnail(file, picture); },
      [this](std::size_t done, std::size_t total) {
        thumbnailsDone_ = done;
        thumbnailsTotal_ = total;
        updater_->setNeedsUpdate(true);
      }});
  canvas_ = std::make_unique<CanvasView>(*editor_);
  gtk_window_set_default_size(GTK_WINDOW(window_), 960, 640);
  gtk_window_add_accel_group(GTK_WINDOW(window_), keys_);
  onSignal<gboolean, GdkEvent*>(window_, "delete-event",
                                [this](GdkEvent*) { return close(), TRUE; });

  GtkWidget* const middle = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, 0);
  pack(middle, canvas_->widget(), true);
  pack(middle, makeSidePanel());
  GtkWidget* const all = gtk_box_new(GTK_ORIENTATION_VERTICAL, 0);
  pack(all, makeMenuBar());
  pack(all, makeTools());
  pack(all, middle, true);
  pack(all, makeStatusBar());
  gtk_container_add(GTK_CONTAINER(window_), all);
  gtk_widget_show_all(window_);
  gtk_widget_grab_focus(canvas_->widget());
  update();
  updateRecentFiles();
  observations_.push_back(
      options::recentFiles.observe([this](const auto&) { updateRecentFiles(); }));
  observations_.push_back(options::logsWork.observe(setLogsWork));
  observations_.push_back(options::folder.observe([this](const auto&) { showFolder(); }));
}

Window::~Window() {
  gtk_widget_destroy(window_);
  g_object_unref(keys_);
}

GtkWidget* Window::makeMenuBar() {
  GtkWidget* const bar = gtk_menu_bar_new();
  std::map<std::string_view, GtkWidget*> menus;
  const auto menuNamed = [&](const char* name) {
    GtkWidget*& menu = menus[name];
    if (menu != nullptr) return menu;
    menu = gtk_menu_new();
    GtkWidget* const title = gtk_menu_item_new_with_mnemonic(name);
    gtk_menu_item_set_submenu(GTK_MENU_ITEM(title), menu);
    gtk_menu_shell_append(GTK_MENU_SHELL(bar), title);
    return menu;
  };
  for (const Command& command : commands()) {
    GtkWidget* const item = gtk_menu_item_new_with_mnemonic(command.label);
    onSignal<void>(item, "activate", [this, &command] { (this->*command.run)(); });
    addShortcut(item, "activate", command.shortcut);
    gtk_menu_shell_append(GTK_MENU_SHELL(menuNamed(command.menu)), item);
  }
  addOptions(menuNamed("_View"));
  recentFiles_ = menuNamed("_Recent");
  return bar;
}

/// A change of an option goes through the preferences, so that all windows follow in the same way.
void Window::addOptions(GtkWidget* menu) {
  for (const auto& [label, option] : kOptions) {
    GtkWidget* const item = gtk_check_menu_item_new_with_mnemonic(label);
    GtkCheckMenuItem* const check = GTK_CHECK_MENU_ITEM(item);
    gtk_check_menu_item_set_active(check, option->value());
    onSignal<void>(item, "toggled", [check, option = option] {
      const bool isOn = gtk_check_menu_item_get_active(check) != FALSE;
      if (isOn != option->value()) option->setValue(isOn);
    });
    observations_.push_back(option->observe([this, check, option = option](bool isOn) {
      tq::TQLogging::applicationLog().log(tq::LogLevel::info, "{} is {}", option->key(), isOn);
      gtk_check_menu_item_set_active(check, isOn);
      canvas_->redraw();
    }));
    gtk_menu_shell_append(GTK_MENU_SHELL(menu), item);
  }
}

GtkWidget* Window::makeTools() {
  GtkWidget* const tools = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kSpacing);
  gtk_container_set_border_width(GTK_CONTAINER(tools), kSpacing);
  pack(tools, gtk_label_new("Colour"));
  int number = 0;
  for (const char* const color : kColors) {
    GtkWidget* const button = gtk_button_new();
    gtk_container_add(GTK_CONTAINER(button), swatch(color));
    gtk_widget_set_tooltip_text(button, color);
    onSignal<void>(button, "clicked", [this, color] { recolour(color); });
    addShortcut(button, "clicked", ("<Control>" + std::to_string(++number)).c_str());
    pack(tools, button);
  }
  pack(tools, gtk_label_new("Grid"));
  GtkWidget* const steps = gtk_combo_box_text_new();
  for (const double step : kGridSteps) {
    const std::string text = tq::Number::numberWith(step)->description();
    gtk_combo_box_text_append_text(GTK_COMBO_BOX_TEXT(steps), text.c_str());
  }
  const auto choose = [steps](double step) {
    const auto at = std::ranges::find(kGridSteps, step);
    const bool isKnown = at != std::end(kGridSteps);
    gtk_combo_box_set_active(GTK_COMBO_BOX(steps),
                             isKnown ? static_cast<int>(at - std::begin(kGridSteps)) : -1);
  };
  choose(options::gridStep.value());
  onSignal<void>(steps, "changed", [steps] {
    const int index = gtk_combo_box_get_active(GTK_COMBO_BOX(steps));
    if (index >= 0) options::gridStep.setValue(kGridSteps[index]);
  });
  observations_.push_back(options::gridStep.observe([this, choose](double step) {
    choose(step);
    canvas_->redraw();
  }));
  pack(tools, steps);
  return tools;
}

GtkWidget* Window::makeSidePanel() {
  GtkWidget* const panel = gtk_box_new(GTK_ORIENTATION_VERTICAL, kSpacing);
  gtk_container_set_border_width(GTK_CONTAINER(panel), kSpacing);
  gtk_widget_set_size_request(panel, kSideWidth, -1);
  changes_ = gtk_label_new(nullptr);
  gtk_label_set_xalign(GTK_LABEL(changes_), 0);
  gtk_label_set_yalign(GTK_LABEL(changes_), 0);
  gtk_label_set_line_wrap(GTK_LABEL(changes_), TRUE);
  gtk_label_set_line_wrap_mode(GTK_LABEL(changes_), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_selectable(GTK_LABEL(changes_), TRUE);
  gtk_widget_set_can_focus(changes_, FALSE);
  pictures_ = gtk_flow_box_new();
  gtk_flow_box_set_max_children_per_line(GTK_FLOW_BOX(pictures_), 3);
  gtk_widget_set_valign(pictures_, GTK_ALIGN_START);
  onSignal<void, GtkFlowBoxChild*>(pictures_, "child-activated", [this](GtkFlowBoxChild* child) {
    open(pictureFiles_[static_cast<std::size_t>(gtk_flow_box_child_get_index(child))]);
  });
  pack(panel, heading("Last change"));
  pack(panel, scrolled(changes_), true);
  pack(panel, heading("Folder"));
  pack(panel, scrolled(pictures_), true);
  return panel;
}

GtkWidget* Window::makeStatusBar() {
  GtkWidget* const bar = gtk_box_new(GTK_ORIENTATION_HORIZONTAL, kSpacing);
  gtk_container_set_border_width(GTK_CONTAINER(bar), kSpacing);
  status_ = gtk_label_new(nullptr);
  gtk_label_set_ellipsize(GTK_LABEL(status_), PANGO_ELLIPSIZE_END);
  gtk_label_set_xalign(GTK_LABEL(status_), 0);
  progress_ = gtk_progress_bar_new();
  gtk_progress_bar_set_show_text(GTK_PROGRESS_BAR(progress_), TRUE);
  cancel_ = gtk_button_new_with_mnemonic("_Cancel");
  onSignal<void>(cancel_, "clicked", [this] { cancelWork(); });
  pack(bar, status_, true);
  pack(bar, progress_);
  pack(bar, cancel_);
  return bar;
}

void Window::addShortcut(GtkWidget* widget, const char* signal, const char* shortcut) {
  guint key = 0;
  GdkModifierType modifiers{};
  gtk_accelerator_parse(shortcut, &key, &modifiers);
  gtk_widget_add_accelerator(widget, signal, keys_, key, modifiers, GTK_ACCEL_VISIBLE);
}

void Window::update() {
  const std::string name = editor_->file().empty() ? "Untitled" : editor_->file().filename();
  const std::string title = (editor_->isSaved() ? "" : "*") + name + " - Sketch";
  gtk_window_set_title(GTK_WINDOW(window_), title.c_str());
  gtk_label_set_text(GTK_LABEL(changes_), editor_->changes().c_str());
  const std::size_t selected = editor_->drawing().selection.size();
  const std::string count = selected > 0 ? std::to_string(selected) + " selected.  " : "";
  gtk_label_set_text(GTK_LABEL(status_), (count + editor_->status()).c_str());
  canvas_->redraw();

  auto done = static_cast<double>(thumbnailsDone_);
  auto total = static_cast<double>(thumbnailsTotal_);
  if (download_) {
    done = static_cast<double>(download_->countOfBytesReceived());
    total = static_cast<double>(download_->countOfBytesExpectedToReceive());
  }
  const bool isWorking = download_ || done < total;
  gtk_widget_set_visible(progress_, isWorking);
  gtk_widget_set_visible(cancel_, isWorking);
  gtk_progress_bar_set_text(GTK_PROGRESS_BAR(progress_), download_ ? "Download" : "Thumbnails");
  gtk_progress_bar_set_fraction(GTK_PROGRESS_BAR(progress_), total > 0 ? done / total : 0);
}

void Window::updateRecentFiles() {
  removeChildren(recentFiles_);
  for (const Path& file : options::recentFiles.value()) {
    GtkWidget* const item = gtk_menu_item_new_with_label(file.filename().c_str());
    gtk_widget_set_tooltip_text(item, file.c_str());
    onSignal<void>(item, "activate", [this, file] { open(file); });
    gtk_menu_shell_append(GTK_MENU_SHELL(recentFiles_), item);
  }
  gtk_widget_show_all(recentFiles_);
}

void Window::showFolder() {
  removeChildren(pictures_);
  pictureFiles_.clear();
  thumbnails_->draw(folder());
}

void Window::showThumbnail(const Path& file, const tqdoc::Canvas& picture) {
  GtkWidget* const image = imageOf(picture);
  gtk_widget_set_tooltip_text(image, file.filename().c_str());
  gtk_widget_show(image);
  gtk_container_add(GTK_CONTAINER(pictures_), image);
  pictureFiles_.push_back(file);
}

}  // namespace sketch
