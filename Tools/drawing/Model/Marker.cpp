#include "Model/Marker.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "Model/Compare.h"
#include "Model/Numbers.h"

namespace tqdoc {
namespace {

constexpr std::string_view kDirections[] = {"fixed", "path", "pathFromStart"};

/// A point of an outline, with the directions of the steps before and after it. A direction is 0
/// if there is no such step.
struct Vertex {
  tq::Point at;
  tq::Vector before, after;
  bool begins = false;  // a subpath
};

[[nodiscard]] bool isNowhere(tq::Vector direction) { return direction == tq::Vector{}; }

/// Returns the first direction that has a length.
template <class... Rest>
[[nodiscard]] tq::Vector firstOf(tq::Vector direction, Rest... rest) {
  if constexpr (sizeof...(rest) > 0) {
    if (isNowhere(direction)) return firstOf(rest...);
  }
  return direction;
}

[[nodiscard]] std::vector<Vertex> verticesOf(const PathData& path) {
  std::vector<Vertex> vertices;
  std::size_t start = 0;
  const auto add = [&](tq::Point at, tq::Vector leaving, tq::Vector arriving) {
    vertices.back().after = leaving;
    vertices.push_back({at, arriving, {}});
  };
  path.forEach([&](char step, const tq::Point* p) {
    if (step == 'M') {
      start = vertices.size();
      vertices.push_back({p[0], {}, {}, true});
      return;
    }
    const tq::Point from = vertices.back().at;
    if (step == 'C') {
      add(p[2], firstOf(p[0] - from, p[1] - from, p[2] - from),
          firstOf(p[2] - p[1], p[2] - p[0], p[2] - from));
      return;
    }
    const tq::Point to = step == 'L' ? p[0] : vertices[start].at;
    add(to, to - from, to - from);
    if (step != 'L') {  // closed: the steps meet at the start
      Vertex& last = vertices.back();
      if (isNowhere(last.before)) last.before = vertices[vertices.size() - 2].before;
      last.after = vertices[start].after;
      vertices[start].before = last.before;
    }
  });
  // Steps without a length have the direction of the step before or after them.
  for (std::size_t i = 1; i < vertices.size(); ++i) {
    Vertex& vertex = vertices[i];
    if (!vertex.begins && isNowhere(vertex.before)) vertex.before = vertices[i - 1].before;
  }
  for (std::size_t i = vertices.size(); i-- > 1;) {
    Vertex& previous = vertices[i - 1];
    if (!vertices[i].begins && isNowhere(previous.after)) previous.after = vertices[i].after;
  }
  return vertices;
}

/// Returns the angle of the path at a vertex: between the two directions.
[[nodiscard]] double angleAt(const Vertex& vertex) {
  const tq::Vector only = firstOf(vertex.before, vertex.after);
  const double angle = std::atan2(only.dy, only.dx);
  if (isNowhere(vertex.before) || isNowhere(vertex.after)) return angle;
  const double turn = std::atan2(vertex.after.dy, vertex.after.dx) - angle;
  return angle + std::remainder(turn, 2 * std::numbers::pi) / 2;
}

}  // namespace

Marker::Marker(tq::Ref<Node> content, const Placing& placing)
    : content_(std::move(content)), placing_(placing) {
  placing_.degrees = archivable(placing_.degrees);
}

Marker::Marker(tq::TQJSONDecoder& decoder) : content_(decoder.decodeObjectForKey<Node>("content")) {
  const auto direction = decoder.decodeObjectForKey<tq::String>("direction");
  const auto known = std::ranges::find(kDirections, direction ? direction->view() : kDirections[0]);
  if (!content_ || known == std::end(kDirections)) {
    refuse(decoder, "a marker has no content or an unknown direction");
    if (!content_) content_ = tq::makeRef<Group>(Node::Traits{}, tq::Array::array());
    return;
  }
  placing_.direction = static_cast<Direction>(known - std::begin(kDirections));
  placing_.degrees = decoder.decodeDoubleForKey("degrees", 0);
  placing_.scalesWithStroke = !decoder.decodeBoolForKey("keepsSize", false);
}

void Marker::encodeAsJSON(tq::TQJSONEncoder& encoder) const {
  encoder.encodeObject(content_, "content");
  if (placing_.direction != Direction::fixed) {
    const auto index = static_cast<std::size_t>(placing_.direction);
    encoder.encodeObject(tq::String::of(kDirections[index]), "direction");
  }
  if (placing_.degrees != 0) encoder.encodeDouble(placing_.degrees, "degrees");
  if (!placing_.scalesWithStroke) encoder.encodeBool(true, "keepsSize");
}

bool Marker::isEqual(const tq::Object& other) const {
  const auto* marker = tq::objectCast<Marker>(&other);
  return marker != nullptr && marker->placing_.direction == placing_.direction &&
         marker->placing_.degrees == placing_.degrees &&
         marker->placing_.scalesWithStroke == placing_.scalesWithStroke &&
         (marker->content_ == content_ || !firstDifference(*marker->content_, *content_, "marker"));
}

std::size_t Marker::hash() const { return static_cast<std::size_t>(placing_.direction); }

std::vector<PlacedMarker> placedMarkers(const Shape& shape) {
  const tq::Dictionary& style = shape.style();
  const auto* first = tq::objectCast<Marker>(style.objectForKey("markerStart"));
  const auto* inner = tq::objectCast<Marker>(style.objectForKey("markerMid"));
  const auto* last = tq::objectCast<Marker>(style.objectForKey("markerEnd"));
  std::vector<PlacedMarker> placed;
  if (first == nullptr && inner == nullptr && last == nullptr) return placed;

  const std::vector<Vertex> vertices = verticesOf(shape.path());
  const double width = numberIn(style, "strokeWidth", 1);
  const auto place = [&](const Marker* marker, const Vertex& vertex, bool isStart = false) {
    if (marker == nullptr) return;
    const Marker::Placing& placing = marker->placing();
    double angle = placing.degrees * std::numbers::pi / 180;
    if (placing.direction != Marker::Direction::fixed) angle = angleAt(vertex);
    if (isStart && placing.direction == Marker::Direction::alongPathFromStart) {
      angle += std::numbers::pi;
    }
    const double scale = placing.scalesWithStroke ? width : 1;
    const double x = scale * std::cos(angle), y = scale * std::sin(angle);
    placed.push_back({marker, {x, y, -y, x, vertex.at.x, vertex.at.y}});
  };
  for (const Vertex& vertex : vertices) {
    const bool isFirst = &vertex == &vertices.front(), isLast = &vertex == &vertices.back();
    if (isFirst) place(first, vertex, true);
    if (isLast) place(last, vertex);
    if (!isFirst && !isLast) place(inner, vertex);
  }
  return placed;
}

}  // namespace tqdoc
