// Times archives of a host's model classes, which encodeAsJSON() writes and constructors read.
//
// The peers write and read the same structures with handwritten code for their writers and
// documents.

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <simdjson.h>
#include <unistd.h>

#include <map>
#include <nlohmann/json.hpp>
#include <string>

#include <TQFoundation/TQFoundation.h>

#include "serialisation/JSONWork.h"
#include "serialisation/Tree.h"

namespace tq::bench {
namespace {

class Shape final : public Subclass<Shape> {
 public:
  static constexpr std::string_view className = "Shape";

  explicit Shape(const ShapeRecord& r)
      : name_(String::of(r.name)),
        identifier_(r.identifier),
        visible_(r.visible),
        opacity_(r.opacity),
        frame_(r.x, r.y, r.width, r.height),
        tags_(Array::arrayWithObjects({String::of(r.tags[0]), String::of(r.tags[1])})),
        style_(Dictionary::dictionaryWithEntries({{"fill", String::of(r.fill)},
                                                  {"stroke", String::of(r.stroke)},
                                                  {"width", Number::numberWith(r.strokeWidth)}})),
        points_(Array::arrayWithNumbers(r.points)) {}

  explicit Shape(TQJSONDecoder& decoder)
      : name_(refCast<String>(decoder.decodeObjectForKey("name"))),
        identifier_(decoder.decodeIntegerForKey("id", 0)),
        visible_(decoder.decodeBoolForKey("visible", true)),
        opacity_(decoder.decodeDoubleForKey("opacity", 1)),
        frame_(decoder.decodeRectForKey("frame")),
        tags_(refCast<Array>(decoder.decodeObjectForKey("tags"))),
        style_(refCast<Dictionary>(decoder.decodeObjectForKey("style"))),
        points_(refCast<Array>(decoder.decodeObjectForKey("points"))) {}

  void encodeAsJSON(TQJSONEncoder& encoder) const {
    encoder.encodeObject(name_, "name");
    encoder.encodeInteger(identifier_, "id");
    encoder.encodeBool(visible_, "visible");
    encoder.encodeDouble(opacity_, "opacity");
    encoder.encodeRect(frame_, "frame");
    encoder.encodeObject(tags_, "tags");
    encoder.encodeObject(style_, "style");
    encoder.encodeObject(points_, "points");
  }

 private:
  Ref<String> name_;
  std::int64_t identifier_;
  bool visible_;
  double opacity_;
  Rect frame_;
  Ref<Array> tags_;
  Ref<Dictionary> style_;
  Ref<Array> points_;
};

Ref<Array> makeModel(std::size_t count) {
  std::vector<Ref<Object>> shapes;
  for (const ShapeRecord& record : makeShapes(count)) shapes.push_back(makeRef<Shape>(record));
  return Array::arrayWithObjects(std::move(shapes));
}

/// Returns the text, as fixed data like that of a file.
const Data& modelText(std::size_t shapes) {
  static std::map<std::size_t, Ref<Data>> texts;
  Class::registerClass<Shape>();
  Ref<Data>& text = texts[shapes];
  if (!text) {
    text = Data::dataWithBytes(TQJSONEncoder::encodeObjectAsData(makeModel(shapes))->view());
  }
  return *text;
}

const Data& modelText(const benchmark::State& state) {
  return modelText(static_cast<std::size_t>(state.range(0)));
}

// MARK: writing

void BM_ModelEncode_TQ(benchmark::State& state) {
  const Ref<Array> model = makeModel(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) benchmark::DoNotOptimize(TQJSONEncoder::encodeObjectAsData(model));
  countWork(state, modelText(state));
}

template <class Writer>
void writeByHand(Writer& w, const ShapeRecord& s) {
  const auto text = [&w](const std::string& t) {
    w.String(t.data(), static_cast<rapidjson::SizeType>(t.size()));
  };
  w.StartObject();
  w.Key("_class");
  w.String("Shape");
  w.Key("name");
  text(s.name);
  w.Key("id");
  w.Int64(s.identifier);
  w.Key("visible");
  w.Bool(s.visible);
  w.Key("opacity");
  w.Double(s.opacity);
  w.Key("frame");
  w.StartArray();
  for (const double number : {s.x, s.y, s.width, s.height}) w.Double(number);
  w.EndArray();
  w.Key("tags");
  w.StartArray();
  for (const std::string& tag : s.tags) text(tag);
  w.EndArray();
  w.Key("style");
  w.StartObject();
  w.Key("fill");
  text(s.fill);
  w.Key("stroke");
  text(s.stroke);
  w.Key("width");
  w.Double(s.strokeWidth);
  w.EndObject();
  w.Key("points");
  w.StartArray();
  for (const double number : s.points) w.Double(number);
  w.EndArray();
  w.EndObject();
}

void BM_ModelEncode_RapidJSONByHand(benchmark::State& state) {
  const std::vector<ShapeRecord> shapes = makeShapes(static_cast<std::size_t>(state.range(0)));
  for (auto _ : state) {
    rapidjson::StringBuffer buffer;
    rapidjson::Writer writer(buffer);
    writer.StartArray();
    for (const ShapeRecord& shape : shapes) writeByHand(writer, shape);
    writer.EndArray();
    benchmark::DoNotOptimize(buffer.GetString());
  }
  countWork(state, modelText(state));
}

// MARK: reading

void BM_ModelDecode_TQ(benchmark::State& state) {
  const Data& text = modelText(state);
  for (auto _ : state) benchmark::DoNotOptimize(TQJSONDecoder::decodeDataError(text, nullptr));
  countWork(state, modelText(state));
}

/// Makes the members of the same class from a parsed document, with handwritten code.
struct HandMadeShape {
  virtual ~HandMadeShape() = default;
  std::string name;
  std::int64_t identifier = 0;
  bool visible = true;
  double opacity = 1;
  Rect frame;
  std::vector<std::string> tags;
  std::map<std::string, std::string> style;
  double strokeWidth = 0;
  std::vector<double> points;
};

void BM_ModelDecode_RapidJSONByHand(benchmark::State& state) {
  const Data& text = modelText(state);
  for (auto _ : state) {
    const rapidjson::Document document = parseRapid(text);
    std::vector<std::unique_ptr<HandMadeShape>> shapes;
    for (const auto& node : document.GetArray()) {
      auto shape = std::make_unique<HandMadeShape>();
      shape->name = node["name"].GetString();
      shape->identifier = node["id"].GetInt64();
      shape->visible = node["visible"].GetBool();
      shape->opacity = node["opacity"].GetDouble();
      shape->frame = rectFromText(node["frame"].GetString());
      for (const auto& tag : node["tags"].GetArray()) shape->tags.emplace_back(tag.GetString());
      const auto& style = node["style"];
      shape->style.emplace("fill", style["fill"].GetString());
      shape->style.emplace("stroke", style["stroke"].GetString());
      shape->strokeWidth = style["width"].GetDouble();
      for (const auto& number : node["points"].GetArray()) {
        shape->points.push_back(number.GetDouble());
      }
      shapes.push_back(std::move(shape));
    }
    benchmark::DoNotOptimize(shapes);
  }
  countWork(state, modelText(state));
}

/// Reads each member at its place in the text, without a document, by a parser that is kept.
/// Members may be in any order.
void BM_ModelDecode_SimdjsonByHand(benchmark::State& state) {
  static_assert(Data::kReadablePadding >= simdjson::SIMDJSON_PADDING);
  const Data& text = modelText(state);
  const std::size_t readable = text.length() + Data::kReadablePadding;
  const auto textOf = [](simdjson::ondemand::value value) {
    return std::string(std::string_view(value));
  };
  simdjson::ondemand::parser parser;
  for (auto _ : state) {
    simdjson::ondemand::document document =
        parser.iterate(text.view().data(), text.length(), readable);
    std::vector<std::unique_ptr<HandMadeShape>> shapes;
    for (simdjson::ondemand::object node : document) {
      auto shape = std::make_unique<HandMadeShape>();
      shape->name = textOf(node["name"]);
      shape->identifier = node["id"];
      shape->visible = node["visible"];
      shape->opacity = node["opacity"];
      shape->frame = rectFromText(node["frame"].get_string());
      for (simdjson::ondemand::value tag : node["tags"]) shape->tags.push_back(textOf(tag));
      simdjson::ondemand::object style = node["style"];
      shape->style.emplace("fill", textOf(style["fill"]));
      shape->style.emplace("stroke", textOf(style["stroke"]));
      shape->strokeWidth = style["width"];
      for (const double number : node["points"]) shape->points.push_back(number);
      shapes.push_back(std::move(shape));
    }
    benchmark::DoNotOptimize(shapes);
  }
  countWork(state, modelText(state));
}

void from_json(const nlohmann::json& json, HandMadeShape& shape) {
  json.at("name").get_to(shape.name);
  json.at("id").get_to(shape.identifier);
  json.at("visible").get_to(shape.visible);
  json.at("opacity").get_to(shape.opacity);
  shape.frame = rectFromText(json.at("frame").get_ref<const std::string&>());
  json.at("tags").get_to(shape.tags);
  const nlohmann::json& style = json.at("style");
  shape.style["fill"] = style.at("fill").get<std::string>();
  shape.style["stroke"] = style.at("stroke").get<std::string>();
  style.at("width").get_to(shape.strokeWidth);
  json.at("points").get_to(shape.points);
}

void BM_ModelDecode_nlohmann(benchmark::State& state) {
  const Data& text = modelText(state);
  for (auto _ : state) {
    const auto shapes = nlohmann::json::parse(text.view()).get<std::vector<HandMadeShape>>();
    benchmark::DoNotOptimize(shapes.data());
  }
  countWork(state, modelText(state));
}

// MARK: files

/// A temporary file that is removed with the process.
int scratchFile() {
  const int descriptor = ::open("/tmp", O_TMPFILE | O_RDWR, 0600);
  if (descriptor < 0) std::abort();
  return descriptor;
}

void BM_FileSink_TQ(benchmark::State& state) {
  const Ref<Array> model = makeModel(static_cast<std::size_t>(state.range(0)));
  const int descriptor = scratchFile();
  const Ref<FileHandle> file = FileHandle::fileHandleWithFileDescriptor(descriptor, true);
  for (auto _ : state) {
    ::lseek(descriptor, 0, SEEK_SET);
    if (!TQJSONEncoder::encodeObject(model, file, nullptr)) state.SkipWithError("write failed");
  }
  countWork(state, modelText(state));
}

/// Encodes into memory, then writes the bytes in pieces of 4096.
void BM_FileSink_FromMemory(benchmark::State& state) {
  const Ref<Array> model = makeModel(static_cast<std::size_t>(state.range(0)));
  const int descriptor = scratchFile();
  for (auto _ : state) {
    ::lseek(descriptor, 0, SEEK_SET);
    const Ref<Data> archive = TQJSONEncoder::encodeObjectAsData(model);
    for (std::string_view rest = archive->view(); !rest.empty();) {
      const std::string_view piece = rest.substr(0, 4096);
      if (::write(descriptor, piece.data(), piece.size()) < 0) state.SkipWithError("write failed");
      rest.remove_prefix(piece.size());
    }
  }
  ::close(descriptor);
  countWork(state, modelText(state));
}

BENCHMARK(BM_ModelEncode_TQ)->Apply(sizes);
BENCHMARK(BM_ModelEncode_RapidJSONByHand)->Apply(sizes);
BENCHMARK(BM_ModelDecode_TQ)->Apply(sizes);
BENCHMARK(BM_ModelDecode_RapidJSONByHand)->Apply(sizes);
BENCHMARK(BM_ModelDecode_SimdjsonByHand)->Apply(sizes);
BENCHMARK(BM_ModelDecode_nlohmann)->Apply(sizes);
BENCHMARK(BM_FileSink_TQ)->Apply(sizes);
BENCHMARK(BM_FileSink_FromMemory)->Apply(sizes);

}  // namespace
}  // namespace tq::bench
