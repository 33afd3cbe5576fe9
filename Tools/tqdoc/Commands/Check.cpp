#include <chrono>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "Commands/Command.h"
#include "Commands/Progress.h"
#include "Files/FileList.h"
#include "Files/RoundTrip.h"

namespace tqdoc {
namespace {

struct Options {
  std::vector<std::string> files;
  bool draw = false;
  bool verbose = false;
};

/// What a whole run came to.
struct Total {
  std::size_t drawings = 0;
  std::size_t shapes = 0;
  std::size_t bytes = 0;
  std::size_t troubles = 0;
  std::size_t differences = 0;
  Features leftOut;
};

[[nodiscard]] RoundTrip checkOne(const std::string& file, bool draw) {
  constexpr int kSide = 128;
  RoundTrip result = roundTrip(file);
  if (draw && result.trouble.empty() && !looksTheSame(*result.document, *result.reopened, kSide)) {
    result.differences.push_back("the pixels differ");
  }
  return result;
}

void add(const RoundTrip& one, Total& total) {
  if (!one.trouble.empty()) {
    ++total.troubles;
    return;
  }
  ++total.drawings;
  total.shapes += one.document->shapeCount();
  total.bytes += one.archiveBytes;
  total.differences += one.differences.empty() ? 0 : 1;
  for (const auto& [name, feature] : one.leftOut) total.leftOut[name].count += feature.count;
}

void print(const Total& total, const FileList& list, double seconds) {
  std::cout << "drawings     " << grouped(total.drawings);
  if (list.repeated > 0) {
    std::cout << " (and " << grouped(list.repeated) << " more names for some of them)";
  }
  std::cout << "\nshapes       " << grouped(total.shapes)                //
            << "\nbytes        " << grouped(total.bytes) << " archived"  //
            << "\ntime         " << static_cast<long>(seconds * 1000) << " ms"
            << "\nleft out     " << summary(total.leftOut) << "\ntroubles     "
            << (total.troubles == 0 ? "none" : grouped(total.troubles)) << "\ndifferences  "
            << (total.differences == 0 ? "none" : grouped(total.differences)) << '\n';
}

Outcome check(const Options& options) {
  const auto start = std::chrono::steady_clock::now();
  const FileList list = listFiles(options.files);
  if (list.files.empty()) return reportTrouble("there is no drawing to check");
  Total total;
  {
    Progress progress(list.files.size());
    for (const std::string& file : list.files) {
      const RoundTrip one = checkOne(file, options.draw);
      add(one, total);
      progress.step(file);
      const bool talks = options.verbose && !one.leftOut.empty();
      if (one.trouble.empty() && one.differences.empty() && !talks) continue;
      progress.wipe();
      if (!one.trouble.empty()) reportTrouble(one.trouble);
      for (const auto& difference : one.differences) reportTrouble(file + ": " + difference);
      if (talks) std::cout << printable(file) << ": left out: " << summary(one.leftOut) << '\n';
    }
  }
  print(total, list,
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  return total.troubles != 0      ? Outcome::trouble
         : total.differences != 0 ? Outcome::different
                                  : Outcome::fine;
}

}  // namespace

void addCheckCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<Options>();
  CLI::App* command = app.add_subcommand(
      "check", "archive drawings, reopen them, archive them again, and compare everything");
  command->add_option("files", options->files, ".svg and .tqdoc files, and directories of them")
      ->required();
  command->add_flag("--draw", options->draw, "draw both and compare every pixel, too");
  command->add_flag("-v,--verbose", options->verbose, "say for each drawing what is left out");
  command->callback([options, &outcome] { outcome = check(*options); });
}

}  // namespace tqdoc
