// Times parsing of text into generic values, their release, and writing them.
//
// All libraries read the same text. This library makes Dictionary, Array, String and Number
// objects.

#include <benchmark/benchmark.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <boost/json.hpp>
#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include <TQFoundation/TQFoundation.h>

#include "serialisation/JSONWork.h"
#include "serialisation/Tree.h"

namespace tq::bench {
namespace {

/// Returns the text of the document, as fixed data like that of a file. It is made once for each
/// size.
const Data& textOf(std::size_t shapes) {
  static std::map<std::size_t, Ref<Data>> texts;
  Ref<Data>& text = texts[shapes];
  if (!text) {
    text =
        Data::dataWithBytes(TQJSONEncoder::encodeObjectAsData(treeOf(makeShapes(shapes)))->view());
  }
  return *text;
}

const Data& textOf(const benchmark::State& state) {
  return textOf(static_cast<std::size_t>(state.range(0)));
}

Ref<Object> parseOurs(const Data& text) { return TQJSONDecoder::decodeDataError(text, nullptr); }

// MARK: text to values and their release

void BM_TreeParse_TQ(benchmark::State& state) {
  const Data& text = textOf(state);
  for (auto _ : state) benchmark::DoNotOptimize(parseOurs(text));
  countWork(state, textOf(state));
}

void BM_TreeParse_RapidJSON(benchmark::State& state) {
  const Data& text = textOf(state);
  for (auto _ : state) benchmark::DoNotOptimize(parseRapid(text));
  countWork(state, textOf(state));
}

void BM_TreeParse_BoostJSON(benchmark::State& state) {
  const Data& text = textOf(state);
  for (auto _ : state) benchmark::DoNotOptimize(boost::json::parse(text.view()));
  countWork(state, textOf(state));
}

void BM_TreeParse_nlohmann(benchmark::State& state) {
  const Data& text = textOf(state);
  for (auto _ : state) benchmark::DoNotOptimize(nlohmann::ordered_json::parse(text.view()));
  countWork(state, textOf(state));
}

// MARK: values to text

void BM_TreeEncode_TQ(benchmark::State& state) {
  const Ref<Object> tree = parseOurs(textOf(state));
  for (auto _ : state) benchmark::DoNotOptimize(TQJSONEncoder::encodeObjectAsData(tree));
  countWork(state, textOf(state));
}

void BM_TreeEncode_RapidJSON(benchmark::State& state) {
  const rapidjson::Document tree = parseRapid(textOf(state));
  for (auto _ : state) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer writer(buffer);
    tree.Accept(writer);
    benchmark::DoNotOptimize(buffer.GetString());
  }
  countWork(state, textOf(state));
}

void BM_TreeEncode_BoostJSON(benchmark::State& state) {
  const auto tree = boost::json::parse(textOf(state).view());
  for (auto _ : state) benchmark::DoNotOptimize(boost::json::serialize(tree));
  countWork(state, textOf(state));
}

void BM_TreeEncode_nlohmann(benchmark::State& state) {
  const auto tree = nlohmann::ordered_json::parse(textOf(state).view());
  for (auto _ : state) benchmark::DoNotOptimize(tree.dump());
  countWork(state, textOf(state));
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
