#pragma once

/// @file JSONWork.h
/// The sizes of JSON benchmarks and their counters.

#include <benchmark/benchmark.h>

#include <TQFoundation/objects/Data.h>

#include "serialisation/Workload.h"

namespace tq::bench {

/// Runs a benchmark with documents of increasing numbers of shapes.
inline void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("shapes")->Unit(benchmark::kMillisecond);
  for (const int shapes : {1'000, 10'000, 30'000, 100'000}) benchmark->Arg(shapes);
}

/// Reports bytes of `text` for each second and seconds for each value.
inline void countWork(benchmark::State& state, const Data& text) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.length()));
  state.counters["per_value"] = benchmark::Counter(
      static_cast<double>(state.range(0)) * static_cast<double>(kValuesPerShape),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

}  // namespace tq::bench
