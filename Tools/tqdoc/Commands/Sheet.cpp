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

struct Options {
  std::vector<std::string> files;
  std::string output;
  std::size_t count = 48;
  std::size_t columns = 6;
  int size = 96;
};

/// `count` of them at equal distances.
[[nodiscard]] std::vector<std::string> sampled(const std::vector<std::string>& all,
                                               std::size_t count) {
  count = std::min(count, all.size());
  std::vector<std::string> some;
  for (std::size_t i = 0; i < count; ++i) some.push_back(all[i * all.size() / count]);
  return some;
}

Outcome sheet(const Options& options) {
  const std::vector<std::string> files = sampled(listFiles(options.files).files, options.count);
  if (files.empty()) return reportTrouble("there is no drawing to put on the sheet");
  // A cell is the drawing on the left and its reopened archive on the right, on one white card.
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
    return reportTrouble("the sheet would have sides of more than " +
                         std::to_string(Canvas::kSideLimit) + " pixels");
  }
  Canvas canvas(static_cast<int>(width), static_cast<int>(height));
  canvas.fill({0, 0, width, height}, {0.85, 0.86, 0.88});

  Outcome outcome = Outcome::fine;
  const auto worsen = [&](Outcome other) { outcome = std::max(outcome, other); };
  const auto progress = tq::makeRef<Progress>(files.size());
  for (std::size_t i = 0; i < files.size(); ++i) {
    progress->step(files[i]);
    progress->draw();
    const tq::Rect card{extent(i % columns, cellWidth), extent(i / columns, cellHeight),
                        double(cellWidth), double(cellHeight)};
    canvas.fill(card, {1, 1, 1});
    const RoundTrip one = roundTrip(files[i]);
    if (!one.trouble.empty()) {
      progress->wipe();
      worsen(reportTrouble(one.trouble));
      continue;
    }
    tq::Rect square{card.origin.x + kGap, card.origin.y + kGap, double(options.size),
                    double(options.size)};
    canvas.draw(*one.document, square);
    square.origin.x += options.size + kGap;
    canvas.draw(*one.reopened, square);
    if (!one.differences.empty() || !looksTheSame(*one.document, *one.reopened, options.size)) {
      progress->wipe();
      reportTrouble(files[i] + ": the reopened archive is another drawing");
      worsen(Outcome::different);
    }
  }
  progress->wipe();
  tq::Ref<tq::Error> error;
  if (!canvas.writePNG(options.output, &error)) return reportTrouble(error->localizedDescription());
  std::cout << printable(options.output) << ": " << files.size()
            << " drawings, each beside its reopened archive\n";
  return outcome;
}

}  // namespace

void addSheetCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<Options>();
  CLI::App* command =
      app.add_subcommand("sheet", "draw drawings beside their reopened archives into one PNG file");
  command->add_option("files", options->files, ".svg and .tqdoc files, and directories of them")
      ->required();
  command->add_option("-o,--output", options->output, "the PNG file")
      ->option_text("FILE")
      ->required();
  addNumber(*command, "--count", options->count,
            "how many of the drawings, at equal distances; 48 by default", 1, 10'000);
  addNumber(*command, "--columns", options->columns, "drawings in a row; 6 by default", 1, 1'000);
  addNumber(*command, "--size", options->size, "pixels across a drawing; 96 by default", 8, 1'024);
  addExamples(*command, {"tqdoc sheet /usr/share/icons -o sheet.png",
                         "tqdoc sheet old new -o sheet.png --count 24 --columns 4 --size 128"});
  command->callback([options, &outcome] { outcome = sheet(*options); });
}

}  // namespace tqdoc
