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
  std::size_t columns = 6;
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

Outcome sheet(const SheetOptions& options) {
  const std::vector<std::string> files = sampled(listFiles(options.files).files, options.count);
  if (files.empty()) return reportError("no drawings found");
  if (isOneOf(options.output, files)) return Outcome::error;
  // A cell is a white card with the drawing on the left and its reopened archive on the right.
  constexpr int kGap = 8;
  const std::size_t columns = std::min(options.columns, files.size());
  const std::size_t rows = (files.size() + columns - 1) / columns;
  const int cellWidth = 2 * options.size + 3 * kGap;
  const int cellHeight = options.size + 2 * kGap;
  const auto extent = [](std::size_t cells, int cell) {
    return static_cast<double>(cells) * (cell + kGap) + kGap;
  };
  const double width = extent(columns, cellWidth);
  const double height = extent(rows, cellHeight);
  if (std::max(width, height) > Canvas::kSideLimit) {
    return reportError("the sheet would be wider or higher than " +
                       std::to_string(Canvas::kSideLimit) + " pixels");
  }
  Canvas canvas(static_cast<int>(width), static_cast<int>(height));
  canvas.fill({0, 0, width, height}, {0.85, 0.86, 0.88});

  Outcome outcome = Outcome::success;
  Features leftOut;
  const auto worsen = [&](Outcome other) { outcome = std::max(outcome, other); };
  const auto progress = tq::makeRef<Progress>(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    progress->step(files[i]);
    progress->draw();
    const tq::Rect card{extent(i % columns, cellWidth), extent(i / columns, cellHeight),
                        double(cellWidth), double(cellHeight)};
    canvas.fill(card, {1, 1, 1});
    const RoundTrip one = roundTrip(files[i]);
    if (!one.failure.empty()) {
      progress->wipe();
      worsen(reportError(one.failure));
      continue;
    }
    addTo(leftOut, one.leftOut);
    tq::Rect square{card.origin.x + kGap, card.origin.y + kGap, double(options.size),
                    double(options.size)};
    canvas.draw(*one.document, square);
    square.origin.x += options.size + kGap;
    canvas.draw(*one.reopened, square);
    if (!one.differences.empty() || !looksTheSame(*one.document, *one.reopened, options.size)) {
      progress->wipe();
      reportError(files[i] + ": the reopened archive differs from the drawing");
      worsen(Outcome::different);
    }
  }
  progress->wipe();
  tq::Ref<tq::Error> error;
  if (!canvas.writePNG(options.output, &error)) return reportError(error->localizedDescription());
  if (options.output != kStandardStream) {
    std::cout << printable(options.output) << ": " << counted(files.size(), "drawing")
              << ", each beside its reopened archive\n";
  }
  addTo(leftOut, canvas.leftOut());
  reportUnsupported(options.output, leftOut);
  return outcome;
}

}  // namespace

void addSheetCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<SheetOptions>();
  CLI::App* command =
      app.add_subcommand("sheet", "render drawings beside their reopened archives to one PNG file");
  command->add_option("files", options->files, ".svg, .svgz and .tqdoc files, or directories")
      ->required();
  command->add_option("-o,--output", options->output, "the PNG file")
      ->option_text("FILE")
      ->required();
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
