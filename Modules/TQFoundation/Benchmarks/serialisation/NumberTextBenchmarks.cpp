// Times writing of a double with 16 significant digits, for the numbers of a document and for
// random fractions.

#include <benchmark/benchmark.h>

#include <charconv>
#include <cstdio>

#include <TQFoundation/base/NumberText.h>

#include "serialisation/Workload.h"

namespace tq::bench {
namespace {

std::vector<double> documentNumbers() {
  std::vector<double> numbers;
  for (const ShapeRecord& shape : makeShapes(2'000)) {
    numbers.insert(numbers.end(), shape.points.begin(), shape.points.end());
    numbers.insert(numbers.end(), {shape.opacity, shape.x, shape.y, shape.width, shape.height});
  }
  return numbers;
}

template <class Write>
void writeNumbers(benchmark::State& state, Write&& write) {
  const std::vector<double> numbers = documentNumbers();
  char text[64];
  for (auto _ : state) {
    for (const double number : numbers) {
      write(text, number);
      benchmark::ClobberMemory();
    }
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(numbers.size()));
}

void BM_NumberText_TQ(benchmark::State& state) { writeNumbers(state, writeDouble16); }
void BM_NumberText_ToChars(benchmark::State& state) {
  writeNumbers(state, [](char* text, double number) {
    std::to_chars(text, text + 64, number, std::chars_format::general, 16);
  });
}
void BM_NumberText_snprintf(benchmark::State& state) {
  writeNumbers(state, [](char* text, double number) { std::snprintf(text, 64, "%.16g", number); });
}

BENCHMARK(BM_NumberText_TQ);
BENCHMARK(BM_NumberText_ToChars);
BENCHMARK(BM_NumberText_snprintf);

}  // namespace
}  // namespace tq::bench
