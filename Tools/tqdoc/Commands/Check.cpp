#include <algorithm>
#include <chrono>
#include <cstddef>
#include <exception>
#include <functional>
#include <iostream>
#include <memory>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Commands/Command.h"
#include "Commands/Help.h"
#include "Commands/Progress.h"
#include "Files/FileList.h"
#include "Files/RoundTrip.h"

namespace tqdoc {
namespace {

struct CheckOptions {
  std::vector<std::string> files;
  bool draw = false;
  bool verbose = false;
  bool asJSON = false;
};

/// The totals of a run.
struct Total {
  std::size_t drawings = 0;
  std::size_t shapes = 0;
  std::size_t bytes = 0;
  std::size_t failures = 0;
  std::size_t differences = 0;
  Features leftOut;
};

/// The result of checking a drawing, without the drawing.
class Checked final : public tq::Subclass<Checked> {
 public:
  static constexpr std::string_view className = "TQDocChecked";

  Checked(const std::string& file, bool draw) {
    try {
      check(file, draw);
    } catch (...) {
      result.failure = errorOfException(file)->localizedDescription();
    }
    result.document = nullptr;
    result.reopened = nullptr;
  }

  RoundTrip result;
  std::size_t shapes = 0;

 private:
  void check(const std::string& file, bool draw) {
    constexpr int kSide = 128;
    result = roundTrip(file);
    if (!result.failure.empty()) return;
    shapes = result.document->shapeCount();
    if (draw && !looksTheSame(*result.document, *result.reopened, kSide)) {
      result.differences.push_back("the pixels differ");
    }
  }
};

[[nodiscard]] std::ptrdiff_t cores() noexcept {
  return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

/// Called with the file of each checked drawing, on any thread.
using Step = std::function<void(const std::string& file)>;

/// Checks the drawings on all cores. Returns a Checked for each, in order.
/// @throws the exceptions of a check, such as std::bad_alloc
[[nodiscard]] tq::Ref<tq::Array> checkAll(std::span<const std::string> files, bool draw,
                                          const Step& step) {
  std::vector<tq::Ref<tq::Object>> names;
  for (const std::string& file : files) {
    names.push_back(tq::Data::dataWithBytes(file));  // a file name can be any bytes
  }
  const auto checkOne = [&](const tq::Object& name) -> tq::Ref<tq::Object> {
    const std::string file(tq::objectCast<tq::Data>(&name)->view());
    auto checked = tq::makeRef<Checked>(file, draw);
    step(file);
    return checked;
  };
  tq::Ref<tq::Array> all;
  std::exception_ptr fault;
  const tq::ArrayMapOutcome finish = [&](tq::Ref<tq::Array> results, std::exception_ptr failure) {
    all = std::move(results);
    fault = std::move(failure);
    tq::mainQueueAsync([] { tq::RunLoop::main().stop(); });
  };
  tq::mapWithMaxConcurrencyCount(*tq::Array::arrayWithObjects(std::move(names)), cores(), checkOne,
                                 finish);
  tq::RunLoop::main().run();
  if (fault) std::rethrow_exception(fault);
  return all;
}

void add(const Checked& one, Total& total) {
  if (!one.result.failure.empty()) {
    ++total.failures;
    return;
  }
  ++total.drawings;
  total.shapes += one.shapes;
  total.bytes += one.result.archiveBytes;
  total.differences += one.result.differences.empty() ? 0 : 1;
  addTo(total.leftOut, one.result.leftOut);
}

/// Reports errors and differences and, if `verbose`, unsupported features.
void report(const std::string& file, const RoundTrip& one, bool verbose, Progress& progress) {
  const bool showsUnsupported = verbose && !one.leftOut.empty();
  if (one.failure.empty() && one.differences.empty() && !showsUnsupported) return;
  progress.wipe();
  if (!one.failure.empty()) reportError(one.failure);
  for (const auto& difference : one.differences) reportError(file + ": " + difference);
  if (showsUnsupported) {
    reportUnsupported(file, one.leftOut);
  }
}

/// Checks in batches, so that memory does not grow with the number of drawings. A batch is long
/// enough that the cores seldom wait for its slowest drawing.
[[nodiscard]] Total checkInBatches(std::span<const std::string> files,
                                   const CheckOptions& options) {
  const std::size_t batch = 256 * static_cast<std::size_t>(cores());
  const auto progress = tq::makeRef<Progress>(files.size());
  const auto limiter = tq::TQRateLimiter::initWithTarget(progress, &Progress::draw);
  const Step step = [&](const std::string& file) {
    progress->step(file);
    limiter->setNeedsUpdate(true);
  };
  Total total;
  while (!files.empty()) {
    const auto some = files.first(std::min(batch, files.size()));
    const tq::Ref<tq::Array> checked = checkAll(some, options.draw, step);
    for (std::size_t i = 0; i < some.size(); ++i) {
      const auto& one = static_cast<const Checked&>(checked->objectAtIndex(i));
      add(one, total);
      report(some[i], one.result, options.verbose, *progress);
    }
    files = files.subspan(some.size());
  }
  return total;
}

void printText(const Total& total, const FileList& list, double seconds) {
  std::cout << "drawings     " << grouped(total.drawings);
  if (list.repeated > 0) {
    std::cout << " (and " << grouped(list.repeated) << " duplicate names)";
  }
  std::cout << "\nshapes       " << grouped(total.shapes)                //
            << "\nbytes        " << grouped(total.bytes) << " archived"  //
            << "\ntime         " << static_cast<long>(seconds * 1000) << " ms"
            << "\nunsupported  " << summary(total.leftOut) << "\nerrors       "
            << (total.failures == 0 ? "none" : grouped(total.failures)) << "\ndifferences  "
            << (total.differences == 0 ? "none" : grouped(total.differences)) << '\n';
}

void printRecord(const Total& total, const FileList& list, double seconds) {
  const auto record = tq::MutableDictionary::dictionary();
  const auto set = [&](std::string_view name, std::size_t count) {
    record->setObject(jsonNumber(static_cast<double>(count)), name);
  };
  set("drawings", total.drawings);
  set("duplicates", list.repeated);
  set("shapes", total.shapes);
  set("archiveBytes", total.bytes);
  record->setObject(jsonNumber(seconds), "seconds");
  record->setObject(jsonCounts(total.leftOut), "unsupported");
  set("errors", total.failures);
  set("differences", total.differences);
  printJSON(*record);
}

Outcome check(const CheckOptions& options) {
  const auto start = std::chrono::steady_clock::now();
  const FileList list = listFiles(options.files);
  if (list.files.empty()) return reportError("no drawings found");
  const Total total = checkInBatches(list.files, options);
  const double seconds =
      std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  options.asJSON ? printRecord(total, list, seconds) : printText(total, list, seconds);
  return total.failures != 0      ? Outcome::error
         : total.differences != 0 ? Outcome::different
                                  : Outcome::success;
}

}  // namespace

void addCheckCommand(CLI::App& app, Outcome& outcome) {
  auto options = std::make_shared<CheckOptions>();
  CLI::App* command =
      app.add_subcommand("check", "save, reopen and save drawings again; compare the results");
  command->add_option("files", options->files, ".svg, .svgz and .tqdoc files, or directories")
      ->required();
  command->add_flag("--draw", options->draw, "also render both drawings and compare every pixel");
  command->add_flag("-v,--verbose", options->verbose,
                    "print the unsupported features of each drawing");
  command->add_flag("--json", options->asJSON, "print the totals as a JSON object");
  addExamples(*command,
              {"tqdoc check drawing.svg archive.tqdoc", "tqdoc check --draw /usr/share/icons"});
  command->callback([options, &outcome] { outcome = check(*options); });
}

}  // namespace tqdoc
