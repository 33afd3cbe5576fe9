// Generic trees: parsed text to a library's own values and back.
//
// The same text is given to all; ours is read into Dictionary, Array, String and Number objects.

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <unistd.h>

#include <boost/json.hpp>
#include <cstdio>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include <TQFoundation/TQFoundation.h>

#include "serialisation/Workload.h"

namespace tq::bench {
namespace {

constexpr std::size_t kOrdered = rapidjson::kParseFullPrecisionFlag;

Ref<Object> treeOf(const std::vector<ShapeRecord>& shapes) {
  const auto number = [](NumberValue value) -> Ref<Object> { return Number::numberWith(value); };
  const auto string = [](const std::string& text) -> Ref<Object> { return String::of(text); };
  std::vector<Ref<Object>> list;
  for (const ShapeRecord& s : shapes) {
    list.push_back(Dictionary::dictionaryWithEntries(
        {{"name", string(s.name)},
         {"id", number(s.identifier)},
         {"visible", number(s.visible)},
         {"opacity", number(s.opacity)},
         {"frame", Dictionary::dictionaryWithEntries({{"x", number(s.x)},
                                                      {"y", number(s.y)},
                                                      {"width", number(s.width)},
                                                      {"height", number(s.height)}})},
         {"tags", Array::arrayWithObjects({string(s.tags[0]), string(s.tags[1])})},
         {"style", Dictionary::dictionaryWithEntries({{"fill", string(s.fill)},
                                                      {"stroke", string(s.stroke)},
                                                      {"width", number(s.strokeWidth)}})},
         {"points", Array::arrayWithNumbers(s.points)}}));
  }
  return Array::arrayWithObjects(std::move(list));
}

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
  document.Parse<kOrdered>(text.view().data(), text.length());
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

// MARK: memory held

/// Bytes of this process that are in memory.
double residentBytes() {
  long pages = 0;
  if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%*d %ld", &pages) != 1) pages = 0;
    std::fclose(file);
  }
  return static_cast<double>(pages) * static_cast<double>(::sysconf(_SC_PAGESIZE));
}

/// Grows the process by `copies` trees and reports the growth for each value.
template <class Parse>
void holdTrees(benchmark::State& state, Parse&& parse) {
  const auto shapes = static_cast<std::size_t>(state.range(0));
  const Data& text = textOf(shapes);
  constexpr int kCopies = 4;
  double growth = 0;
  for (auto _ : state) {
    std::vector<decltype(parse(text))> trees;
    trees.push_back(parse(text));  // takes up what the process had to spare
    const double before = residentBytes();
    for (int i = 0; i < kCopies; ++i) trees.push_back(parse(text));
    growth = residentBytes() - before;
    benchmark::DoNotOptimize(trees);
  }
  state.counters["bytes_per_value"] =
      growth / kCopies / static_cast<double>(shapes * kValuesPerShape);
}

void BM_TreeHeld_TQ(benchmark::State& state) { holdTrees(state, parseOurs); }
void BM_TreeHeld_RapidJSON(benchmark::State& state) { holdTrees(state, parseRapid); }
void BM_TreeHeld_BoostJSON(benchmark::State& state) {
  holdTrees(state, [](const Data& text) { return boost::json::parse(text.view()); });
}
void BM_TreeHeld_nlohmann(benchmark::State& state) {
  holdTrees(state, [](const Data& text) { return nlohmann::ordered_json::parse(text.view()); });
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
BENCHMARK(BM_TreeHeld_TQ)->Arg(30'000)->Iterations(1);
BENCHMARK(BM_TreeHeld_RapidJSON)->Arg(30'000)->Iterations(1);
BENCHMARK(BM_TreeHeld_BoostJSON)->Arg(30'000)->Iterations(1);
BENCHMARK(BM_TreeHeld_nlohmann)->Arg(30'000)->Iterations(1);

}  // namespace
}  // namespace tq::bench
