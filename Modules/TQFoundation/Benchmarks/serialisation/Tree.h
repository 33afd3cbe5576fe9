#pragma once

/// @file Tree.h
/// The benchmark document as generic values: ours, and those of a peer.

#include <rapidjson/document.h>

#include <string>
#include <vector>

#include <TQFoundation/TQFoundation.h>

#include "serialisation/Workload.h"

namespace tq::bench {

inline Ref<Object> treeOf(const std::vector<ShapeRecord>& shapes) {
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

/// Parses the text as our decoder does, with correctly rounded numbers.
inline rapidjson::Document parseRapid(const Data& text) {
  rapidjson::Document document;
  document.Parse<rapidjson::kParseFullPrecisionFlag>(text.view().data(), text.length());
  return document;
}

}  // namespace tq::bench
