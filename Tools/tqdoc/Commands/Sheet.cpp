#include <algorithm>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Commands/Progress.h"
#include "Files/FileList.h"
#include "Files/RoundTrip.h"
#include "Render/Canvas.h"

namespace tqdoc {
namespace {

struct SheetOptions {
  std::vector<std::string> files;
  std::string output;
  std::size_t count = 48;
  int columns = 6;
  int size = 96;
};

/// Returns `count` evenly spaced elements.
[[nodiscard]] std::vector<std::string> sampled(const std::vector<std::string>& all,
                                               std::size_t count) {
  count = std::min(count, all.size());
  std::vector<std::string> some;
  for (std::size_t i = 0; i < count; ++i) some.push_back(all[i * all.size() / count]);
  return some;
}

/// The places of cards, in pixels. A card has a drawing on the left and its reopened archive on the
/// right.
struct Grid {
  static constexpr int kGap = 8;
  int size;  ///< of a drawing
  int columns, rows;

  [[nodiscard]] int cardWidth() const { return 2 * size + 3 * kGap; }
  [[nodiscard]] int cardHeight() const { return size + 2 * kGap; }
  [[nodiscard]] int left(int column) const { return column * (cardWidth() + kGap) + kGap; }
  [[nodiscard]] int top(int row) const { return row * (cardHeight() + kGap) + kGap; }
  [[nodiscard]] int width() const { return left(columns); }
  [[nodiscard]] int height() const { return top(rows); }
};

/// The sheet while it is drawn.
class Sheet {
 public:
  explicit Sheet(const Grid& grid) : grid_(grid), canvas_(grid.width(), grid.height()) {
    canvas_.fill({0, 0, double(grid.width()), double(grid.height())}, {0.85, 0.86, 0.88});
  }

  /// Draws the card of a drawing. Returns false, with an error, if it stays empty. An error that
  /// comes with true is a difference between the two pictures.
  bool add(int index, const std::string& file, tq::Ref<tq::Error>* error) {
    const int x = grid_.left(index % grid_.columns), y = grid_.top(index / grid_.columns);
    canvas_.fill({double(x), double(y), double(grid_.cardWidth()), double(grid_.cardHeight())},
                 {1, 1, 1});
    const RoundTrip one = roundTrip(file);
    if (!one.failure.empty()) {
      tq::setOutError(error, errorWith(one.failure));
      return false;
    }
    const Canvas drawing = renderedSquare(*one.document, grid_.size);
    const Canvas reopened = renderedSquare(*one.reopened, grid_.size);
    canvas_.put(drawing, x + Grid::kGap, y + Grid::kGap);
    canvas_.put(reopened, x + grid_.size + 2 * Grid::kGap, y + Grid::kGap);
    for (const Features* features : {&one.leftOut, &drawing.leftOut(), &reopened.leftOut()}) {
      addTo(leftOut_, *features);
    }
    ++count_;
    if (!one.differences.empty() || !std::ranges::equal(drawing.pixels(), reopened.pixels())) {
      tq::setOutError(error, errorWith(file + ": the reopened archive differs from the drawing"));
    }
    return true;
  }

  [[nodiscard]] std::size_t count() const { return count_; }
  [[nodiscard]] const Features& leftOut() const { return leftOut_; }
  [[nodiscard]] const Canvas& canvas() const { return canvas_; }

 private:
  Grid grid_;
  Canvas canvas_;
  std::size_t count_ = 0;
  Features leftOut_;
};

/// Adds the drawings and reports their errors. A drawing that fails does not end the sheet.
[[nodiscard]] Outcome addAll(const std::vector<std::string>& files, Sheet& sheet) {
  Outcome outcome = Outcome::success;
  const auto progress = tq::makeRef<Progress>(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    progress->step(files[i]);
    progress->draw();
    bool isDrawn = false;
    tq::Ref<tq::Error> error;
    try {
      isDrawn = sheet.add(static_cast<int>(i), files[i], &error);
    } catch (...) {
      error = errorOfException(files[i]);
    }
    if (!error) continue;
    progress->wipe();
    reportError(error->localizedDescription());
    outcome = std::max(outcome, isDrawn ? Outcome::different : Outcome::error);
  }
  progress->wipe();
  return outcome;
}

Outcome sheet(const SheetOptions& options) {
  const std::vector<std::string> files = sampled(listFiles(options.files).files, options.count);
  if (files.empty()) return reportError("no drawings found");
  if (isOneOf(options.output, files)) return Outcome::error;
  const auto count = static_cast<int>(files.size());
  const int columns = std::min(options.columns, count);
  const Grid grid{options.size, columns, (count + columns - 1) / columns};
  if (std::max(grid.width(), grid.height()) > Canvas::kSideLimit) {
    return reportError("the sheet would be wider or higher than " +
                       std::to_string(Canvas::kSideLimit) + " pixels");
  }
  Sheet sheet(grid);
  const Outcome outcome = addAll(files, sheet);
  tq::Ref<tq::Error> error;
  if (!sheet.canvas().writePNG(options.output, &error)) {
    return reportError(error->localizedDescription());
  }
  if (!isStandardOutput(options.output)) {
    std::cout << tq::printableText(options.output) << ": " << counted(sheet.count(), "drawing")
              << (sheet.count() == 1 ? " beside its reopened archive\n"
                                     : " beside their reopened archives\n");
  }
  reportUnsupported(options.output, sheet.leftOut());
  return outcome;
}

}  // namespace

void addSheetCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<SheetOptions>();
  CLI::App* command =
      app.add_subcommand("sheet", "render drawings beside their reopened archives to one PNG file");
  command->add_option("files", options->files, ".svg, .svgz and .tqdoc files, or directories")
      ->required();
  addText(*command, "-o,--output", options->output, "the PNG file", "FILE")->required();
  addNumber(*command, "--count", options->count, "number of drawings, sampled evenly; default 48",
            1, 10'000);
  addNumber(*command, "--columns", options->columns, "drawings in each row; default 6", 1, 1'000);
  addNumber(*command, "--size", options->size, "width of a drawing in pixels; default 96", 8,
            1'024);
  addExamples(*command, {"tqdoc sheet /usr/share/icons -o sheet.png",
                         "tqdoc sheet old new -o sheet.png --count 24 --columns 4 --size 128"});
  command->callback([options, &outcome] { outcome = sheet(*options); });
}

}  // namespace tqdoc
