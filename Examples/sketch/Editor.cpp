#include "Editor.h"

#include <span>
#include <utility>

#include "Changes.h"
#include "Files/Drawing.h"
#include "Svg/SvgWriter.h"

namespace sketch {
namespace {

constexpr double kSecondsToSave = 0.5;

[[nodiscard]] tq::Ref<tqdoc::Document> emptyDocument() {
  const tq::Rect page(0, 0, 400, 300);
  return tq::makeRef<tqdoc::Document>(
      nullptr, tqdoc::Document::Page{page.size, page, tq::String::of("")},
      tq::makeRef<tqdoc::Group>(tqdoc::Node::Traits{}, tq::Array::array()),
      tq::Dictionary::dictionary());
}

/// Returns the file for the archive of an imported drawing: the first free name beside it.
[[nodiscard]] Path archiveBeside(Path drawing, tq::Ref<tq::Error>* error) {
  const auto wanted = tq::URL::fileURLWithPath(drawing.replace_extension(".tqdoc").native());
  const auto file = tq::makeUniqueFile(*wanted, error);
  return file ? Path(file->path()) : Path();
}

[[nodiscard]] bool write(const tqdoc::Document& document, const Path& file,
                         tq::Ref<tq::Error>* error) {
  if (tqdoc::isArchive(file.native())) {
    return tqdoc::saveArchive(document, file.native(), tqdoc::Packing::none, error);
  }
  const std::string svg = tqdoc::svgOf(document);
  return tqdoc::saveFile(file.native(), std::as_bytes(std::span(svg)), error);
}

}  // namespace

Editor::Editor(std::function<void()> didChange)
    : didChange_(std::move(didChange)), drawing_{emptyDocument(), {}}, saved_(drawing_.document) {
  // The saver must not own the editor, which owns it.
  saver_ = tq::Debouncer::init(kSecondsToSave, [weak = tq::Weak<Editor>(this)] {
    if (const auto editor = weak.lock()) editor->save();
  });
}

bool Editor::open(const Path& file) {
  if (!save()) return false;
  tq::Ref<tq::Error> error;
  const tqdoc::SvgDrawing opened = tqdoc::openDrawing(file.native(), &error);
  if (!opened.document) {
    setStatus(error->localizedDescription());
    return false;
  }
  drawing_ = {opened.document, {}};
  history_ = {};
  index_.reset();
  file_ = file;
  saved_ = opened.document;
  changes_.clear();
  options::openFile.setValue(file);
  rememberFile(file);
  tq::TQLogging::applicationLog().log(tq::LogLevel::info, "opened {}", file.native());
  setStatus(opened.leftOut.empty() ? "" : "Not supported: " + tqdoc::summary(opened.leftOut));
  return true;
}

bool Editor::save() {
  if (isSaved()) return true;
  tq::Ref<tq::Error> error;
  const bool isImported = !tqdoc::isArchive(file_.native());
  const Path file = isImported ? archiveBeside(file_, &error) : file_;
  if (!file.empty()) return saveAs(file);
  setStatus(error->localizedDescription());
  return false;
}

bool Editor::saveAs(const Path& file) {
  tq::Ref<tq::Error> error;
  if (!write(*drawing_.document, file, &error)) {
    tq::TQLogging::applicationLog().log(tq::LogLevel::error, "{}", *error);
    setStatus(error->localizedDescription());
    return false;
  }
  if (tqdoc::isArchive(file.native())) {
    saved_ = drawing_.document;
    file_ = file;
    options::openFile.setValue(file);
  }
  rememberFile(file);
  tq::TQLogging::applicationLog().log(tq::LogLevel::info, "saved {}", file.native());
  setStatus("Saved " + file.filename().string());
  return true;
}

void Editor::edit(std::string name, Drawing after) {
  if (drawing_.selection.empty()) return setStatus("Nothing is selected");
  history_.add(name, drawing_, after);
  show(name, std::move(after));
}

void Editor::select(Selection selection) {
  drawing_.selection = std::move(selection);
  tq::TQLogging::applicationLog().log(tq::LogLevel::info, "selected {}", drawing_.selection.size());
  didChange_();
}

void Editor::undo() {
  const std::string name = "Undo " + history_.nameToUndo();
  if (auto before = history_.undo(drawing_)) show(name, *std::move(before));
}

void Editor::redo() {
  const std::string name = "Redo " + history_.nameToRedo();
  if (auto after = history_.redo(drawing_)) show(name, *std::move(after));
}

void Editor::show(const std::string& what, Drawing next) {
  changes_ = describeChanges(*drawing_.document, *next.document);
  drawing_ = std::move(next);
  index_.reset();
  saver_->schedulePerformAction();
  tq::TQLogging::historyLog().log(tq::LogLevel::info, "{}:\n{}", what, changes_);
  setStatus(what);
}

const tqdoc::HitIndex& Editor::index() {
  if (!index_) index_.emplace(*drawing_.document);
  return *index_;
}

void Editor::setStatus(std::string status) {
  status_ = std::move(status);
  didChange_();
}

}  // namespace sketch
