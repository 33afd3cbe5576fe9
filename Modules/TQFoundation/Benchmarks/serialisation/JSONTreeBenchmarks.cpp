// Generic trees: parsed text to a library's own values and back.
//
// The same text is given to all; ours is read into Dictionary, Array, String and Number objects.

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <boost/json.hpp>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include <TQFoundation/TQFoundation.h>

#include "serialisation/Tree.h"

namespace tq::bench {
namespace {

/// The document's text, made once for each size.
const Data& textOf(std::size_t shapes) {
  static std::map<std::size_t, Ref<Data>> texts;
  Ref<Data>& text = texts[shapes];
  if (!text) text = TQJSONEncoder::encodeObjectAsData(treeOf(makeShapes(shapes)));
  return *text;
}

void countWork(benchmark::State& state) {
  const auto shapes = static_cast<std::size_t>(state.range(0));
  const auto values = static_cast<double>(shapes * kValuesPerShape);
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(textOf(shapes).length()));
  state.counters["per_value"] = benchmark::Counter(
      values, benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

Ref<Object> parseOurs(const Data& text) { return TQJSONDecoder::decodeData(text, nullptr); }

rapidjson::Document parseRapid(const Data& text) {
  rapidjson::Document document;
  document.Parse<rapidjson::kParseFullPrecisionFlag>(text.view().data(), text.length());
  return document;
}

// MARK: text to values and their release

void BM_TreeParse_TQ(benchmark::State& state) {
  const Data& text = textOf(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(parseOurs(text));
  countWork(state);
}

void BM_TreeParse_RapidJSON(benchmark::State& state) {
  const Data& text = textOf(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(parseRapid(text));
  countWork(state);
}

void BM_TreeParse_BoostJSON(benchmark::State& state) {
  const Data& text = textOf(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(boost::json::parse(text.view()));
  countWork(state);
}

void BM_TreeParse_nlohmann(benchmark::State& state) {
  const Data& text = textOf(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(nlohmann::ordered_json::parse(text.view()));
  countWork(state);
}

// MARK: values to text

void BM_TreeEncode_TQ(benchmark::State& state) {
  const Ref<Object> tree = parseOurs(textOf(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) benchmark::DoNotOptimize(TQJSONEncoder::encodeObjectAsData(tree));
  countWork(state);
}

void BM_TreeEncode_RapidJSON(benchmark::State& state) {
  const rapidjson::Document tree = parseRapid(textOf(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer writer(buffer);
    tree.Accept(writer);
    benchmark::DoNotOptimize(buffer.GetString());
  }
  countWork(state);
}

void BM_TreeEncode_BoostJSON(benchmark::State& state) {
  const auto tree = boost::json::parse(textOf(static_cast<std::size_t>(state.range(0))).view());
  for (auto _ : state) benchmark::DoNotOptimize(boost::json::serialize(tree));
  countWork(state);
}

void BM_TreeEncode_nlohmann(benchmark::State& state) {
  const auto tree =
      nlohmann::ordered_json::parse(textOf(static_cast<std::size_t>(state.range(0))).view());
  for (auto _ : state) benchmark::DoNotOptimize(tree.dump());
  countWork(state);
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("shapes")->Unit(benchmark::kMillisecond);
  for (const int shapes : {1'000, 10'000, 30'000, 100'000}) benchmark->Arg(shapes);
}

BENCHMARK(BM_TreeParse_TQ)->Apply(sizes);
BENCHMARK(BM_TreeParse_RapidJSON)->Apply(sizes);
BENCHMARK(BM_TreeParse_BoostJSON)->Apply(sizes);
BENCHMARK(BM_TreeParse_nlohmann)->Apply(sizes);
BENCHMARK(BM_TreeEncode_TQ)->Apply(sizes);
BENCHMARK(BM_TreeEncode_RapidJSON)->Apply(sizes);
BENCHMARK(BM_TreeEncode_BoostJSON)->Apply(sizes);
BENCHMARK(BM_TreeEncode_nlohmann)->Apply(sizes);

}  // namespace
}  // namespace tq::bench
