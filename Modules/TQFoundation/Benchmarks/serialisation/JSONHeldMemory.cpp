// Memory held by a parsed tree. Each library runs in a separate process; the result is the growth
// of that process while it holds several trees.

#include <sys/wait.h>
#include <unistd.h>

#include <boost/json.hpp>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <string_view>

#include "serialisation/Tree.h"

namespace tq::bench {
namespace {

constexpr std::size_t kShapes = 30'000;

double residentBytes() {
  long pages = 0;
  if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%*d %ld", &pages) != 1) pages = 0;
    std::fclose(file);
  }
  return static_cast<double>(pages) * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

template <class Parse>
double bytesPerValue(Parse&& parse) {
  const Ref<Data> text = TQJSONEncoder::encodeObjectAsData(treeOf(makeShapes(kShapes)));
  constexpr int kCopies = 4;
  std::vector<decltype(parse(*text))> trees;
  trees.push_back(parse(*text));  // uses up the spare memory of the process
  const double before = residentBytes();
  for (int i = 0; i < kCopies; ++i) trees.push_back(parse(*text));
  return (residentBytes() - before) / kCopies / static_cast<double>(kShapes * kValuesPerShape);
}

double measure(std::string_view who) {
  if (who == "TQ") {
    return bytesPerValue(
        [](const Data& text) { return TQJSONDecoder::decodeDataError(text, nullptr); });
  }
  if (who == "RapidJSON") {
    return bytesPerValue(parseRapid);
  }
  if (who == "BoostJSON") {
    return bytesPerValue([](const Data& text) { return boost::json::parse(text.view()); });
  }
  return bytesPerValue([](const Data& text) { return nlohmann::ordered_json::parse(text.view()); });
}

}  // namespace
}  // namespace tq::bench

// Writes its results where --benchmark_out says, in the form of the other benchmark programs.
int main(int argc, char** argv) {
  constexpr std::string_view kOutput = "--benchmark_out=";
  std::FILE* out = stdout;
  for (int i = 1; i < argc; ++i) {
    const std::string_view option = argv[i];
    if (option.starts_with(kOutput)) out = std::fopen(argv[i] + kOutput.size(), "w");
  }
  if (out == nullptr) return 1;
  const char* before = "{\"benchmarks\": [\n";
  for (const char* who : {"TQ", "RapidJSON", "BoostJSON", "nlohmann"}) {
    const pid_t child = ::fork();
    if (child == 0) {
      std::fprintf(
          out,
          "%s{\"run_name\": \"BM_TreeHeld_%s/shapes:%zu\", \"aggregate_name\": \"median\", "
          "\"cpu_time\": 0, \"time_unit\": \"ns\", \"bytes_per_value\": %.1f}",
          before, who, tq::bench::kShapes, tq::bench::measure(who));
      return std::fclose(out) == 0 ? 0 : 1;
    }
    int status = 0;
    if (child < 0 || ::waitpid(child, &status, 0) != child || status != 0) return 1;
    before = ",\n";
  }
  std::fputs("\n]}\n", out);
  return std::fclose(out) == 0 ? 0 : 1;
}
