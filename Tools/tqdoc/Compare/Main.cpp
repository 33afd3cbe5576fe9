// TQDocCompare: compares tqdoc's pictures of drawings with those of rsvg-convert. Prints a table,
// and writes a sheet of the drawings that differ most. A browser can judge differences. Exit status
// 1: more differ than allowed.

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <exception>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include "Compare/Comparison.h"
#include "Files/FileList.h"
#include "Model/Features.h"

namespace tqdoc {
namespace {

struct Options {
  std::vector<std::string> folders;
  std::size_t count = 0;
  unsigned seed = 1;
  int size = 256;
  double bar = 1;
  double share = 99;
  std::string browser;
  std::string sheet;
  std::size_t worst = 20;
};

struct Compared {
  std::string file;
  Comparison comparison;
};

/// Compares drawings of a file or a folder: all, or a random choice.
[[nodiscard]] std::vector<Compared> compareIn(const std::string& folder, const Options& options) {
  std::vector<std::string> files = listFiles({folder}).files;
  if (options.count > 0 && options.count < files.size()) {
    // The generator is the same everywhere; std::shuffle and its distributions are not.
    std::mt19937 random(options.seed);
    for (std::size_t i = 0; i < options.count; ++i) {
      std::swap(files[i], files[i + random() % (files.size() - i)]);
    }
    files.resize(options.count);
  }
  std::vector<Compared> all(files.size());
  std::atomic<std::size_t> next = 0;
  const auto work = [&](std::size_t) {
    for (std::size_t i = next++; i < files.size(); i = next++) {
      all[i] = {files[i], compare(drawBoth(files[i], options.size))};
    }
  };
  // Not one call for each file: calls that wait for the other program would start further threads.
  tq::groupApply(std::max(1u, std::thread::hardware_concurrency()), work);
  return all;
}

void sortWorstFirst(std::vector<Compared>& all) {
  std::ranges::stable_sort(all, std::ranges::greater(),
                           [](const Compared& one) { return one.comparison.difference; });
}

[[nodiscard]] std::size_t countAbove(const std::vector<Compared>& all, double bar) {
  return static_cast<std::size_t>(std::ranges::count_if(
      all, [bar](const Compared& one) { return one.comparison.difference > bar; }));
}

/// `all` must be sorted and not empty.
void printRow(const char* name, const std::vector<Compared>& all, double bar) {
  const double within = 100.0 * static_cast<double>(all.size() - countAbove(all, bar)) /
                        static_cast<double>(all.size());
  std::printf("%8zu  %9.1f %%  %7.3f  %7.2f  %s\n", all.size(), within,
              all[all.size() / 2].comparison.difference, all[0].comparison.difference, name);
  std::fflush(stdout);
}

/// Writes their picture, ours, and the difference of the first drawings, in three columns of rows.
[[nodiscard]] bool drawSheet(const std::vector<Compared>& worst, const Options& options) {
  constexpr int kColumns = 2;
  constexpr int kGap = 8;
  const int step = options.size + kGap;
  const int count = static_cast<int>(std::min(worst.size(), options.worst));
  const int rows = (count + kColumns - 1) / kColumns;
  Image sheet(kColumns * (3 * step + kGap), rows * step + kGap);
  std::ranges::fill(sheet.pixels, 0xffd0d4d8);
  for (int i = 0; i < count; ++i) {
    const Pictures pictures = drawBoth(worst[static_cast<std::size_t>(i)].file, options.size);
    const int left = kGap + i % kColumns * (3 * step + kGap);
    const int top = kGap + i / kColumns * step;
    if (pictures.theirs) sheet.put(*pictures.theirs, left, top);
    if (pictures.ours) sheet.put(*pictures.ours, left + step, top);
    if (pictures.theirs && pictures.ours && pictures.theirs->width == pictures.ours->width &&
        pictures.theirs->height == pictures.ours->height) {
      sheet.put(differencePicture(*pictures.theirs, *pictures.ours), left + 2 * step, top);
    }
  }
  return writeImage(sheet, options.sheet);
}

int run(const Options& options) {
  std::vector<Compared> all;
  std::printf("drawings  within %g   median    worst\n", options.bar);
  for (const std::string& folder : options.folders) {
    std::vector<Compared> here = compareIn(folder, options);
    if (here.empty()) throw std::runtime_error(folder + ": no drawings found");
    sortWorstFirst(here);
    printRow(folder.c_str(), here, options.bar);
    all.insert(all.end(), here.begin(), here.end());
  }
  sortWorstFirst(all);
  printRow("all", all, options.bar);

  const std::size_t above = countAbove(all, options.bar);
  std::size_t unexplained = 0;
  for (std::size_t i = 0; i < above; ++i) {
    auto& [difference, explanation] = all[i].comparison;
    if (explanation.empty() && !options.browser.empty()) {
      explanation = judge(all[i].file, options.size, options.browser, options.bar);
    }
    unexplained += explanation.empty() ? 1 : 0;
    std::printf("%7.2f  %s: %s\n", difference, tq::printableText(all[i].file).c_str(),
                explanation.empty() ? "NOT EXPLAINED" : tq::printableText(explanation).c_str());
  }
  std::printf("%zu of %zu drawings differ by more than %g, %zu of them unexplained\n", above,
              all.size(), options.bar, unexplained);
  if (!options.sheet.empty() && !drawSheet(all, options)) {
    throw std::runtime_error(options.sheet + ": cannot be written");
  }
  const double within = 100.0 * static_cast<double>(all.size() - above);
  return within < options.share * static_cast<double>(all.size()) ? 1 : 0;
}

}  // namespace
}  // namespace tqdoc

int main(int argc, char** argv) {
  tqdoc::Options options;
  CLI::App app("Compares tqdoc's pictures of drawings with those of rsvg-convert.");
  app.add_option("folders", options.folders, "drawings, or folders of them")->required();
  app.add_option("--count", options.count, "random drawings of each folder; 0 for all");
  app.add_option("--seed", options.seed, "of the random choice; default 1");
  app.add_option("--size", options.size, "longer side of the pictures in pixels; default 256")
      ->check(CLI::Range(8, 2048));
  app.add_option("--bar", options.bar, "largest mean difference that is no fault; default 1");
  app.add_option("--share", options.share, "percentage that must be within the bar; default 99");
  app.add_option("--browser", options.browser, "a Chromium that judges unexplained differences");
  app.add_option("--sheet", options.sheet, "PNG file for the worst: theirs, ours, difference");
  app.add_option("--worst", options.worst, "number of drawings in the sheet; default 20");
  try {
    app.parse(argc, argv);
    tqdoc::registerModel();
    return tqdoc::run(options);
  } catch (const CLI::ParseError& request) {
    return app.exit(request);
  } catch (const std::exception& fault) {
    std::fprintf(stderr, "TQDocCompare: %s\n", tq::printableText(fault.what()).c_str());
    return 2;
  }
}
