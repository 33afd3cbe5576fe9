#include <TQFoundation/platform/json/JSONObjectBuilder.h>

#include <algorithm>
#include <utility>

#include <TQFoundation/objects/Construction.h>
#include <TQFoundation/objects/Null.h>
#include <TQFoundation/objects/Number.h>
#include <TQFoundation/objects/TextWords.h>

namespace tq::detail {

Ref<Object> JSONObjectBuilder::scalarOf(JSONNode node) {
  if (node.kind() == JSONNode::Kind::string) {
    return Construction::stringWithCheckedUTF8(node.text());  // checked by the parser
  }
  if (node.isNumber()) return Number::numberWith(node.number());
  return Null::null();
}

Ref<Array> JSONObjectBuilder::numbersOf(JSONNode array) {
  using Storage = Construction::Storage;
  const std::uint64_t content = array.content();
  if (content == 0 || (content & JSONNode::kHasOthers) != 0) return nullptr;
  const Storage storage = content == JSONNode::kHasIntegers ? Storage::integers
                          : content == JSONNode::kHasReals  ? Storage::doubles
                                                            : Storage::numbers;
  const std::size_t count = array.count();
  Ref<Array> numbers = Construction::unfilledNumbers(storage, count);
  std::uint64_t* bits = Construction::packedBits(*numbers);
  NumberKind* kinds = Construction::packedKinds(*numbers);
  if ((content & JSONNode::kHasOtherNumbers) == 0) {
    // All have two words. No branch for each number: the kinds of coordinates cannot be predicted.
    const std::uint64_t* word = array.first().word();
    for (std::size_t i = 0; i < count; ++i) bits[i] = word[2 * i + 1];
    if (storage != Storage::numbers) return numbers;
    for (std::size_t i = 0; i < count; ++i) {
      const bool isReal = JSONNode::contentOf(word[2 * i]) == JSONNode::kHasReals;
      kinds[i] = isReal ? NumberKind::float64 : NumberKind::int64;
    }
    return numbers;
  }
  const JSONNode end = array.end();
  for (JSONNode node = array.first(); !(node == end); node = node.next()) {
    const NumberValue number = node.number();
    *bits++ = number.bits();
    *kinds++ = number.kind();
  }
  return numbers;
}

Ref<Array> JSONObjectBuilder::arrayOf(std::span<Ref<Object>> elements) {
  if (elements.empty()) return Array::array();
  Ref<Array> array = Construction::unfilledArray(elements.size());
  std::ranges::move(elements, Construction::slots(*array).begin());
  return array;
}

Ref<Dictionary> JSONObjectBuilder::dictionaryOf(const JSONShape& shape,
                                                std::span<Ref<Object>> values) {
  if (values.empty()) return Dictionary::dictionary();
  Ref<DictionaryKeys> keys = shape.distinctKeys();
  if (std::ranges::find(values, nullptr) != values.end()) {
    keys = makeRef<DictionaryKeys>();
    std::size_t kept = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (!values[i]) continue;
      keys->append(shape.distinctKeys()->keys()[i]);
      std::swap(values[kept++], values[i]);
    }
    values = values.first(kept);
  }
  Ref<Dictionary> dictionary = Construction::unfilledDictionary(std::move(keys));
  std::ranges::move(values, Construction::slots(*dictionary).begin());
  return dictionary;
}

Ref<JSONShape> JSONObjectBuilder::shapeOf(JSONNode object,
                                          std::vector<const std::uint64_t*>& members) {
  const std::size_t firstMember = members.size();
  const JSONNode end = object.end();
  if (const Ref<JSONShape>& recent = shapes_.recentOf(object.count())) {
    std::size_t count = 0;
    JSONNode key = object.first();
    while (!(key == end) && count < recent->count() &&
           areEqualTexts(key.text(), recent->key(count))) {
      const JSONNode value = key.next();
      members.push_back(value.word());
      key = value.next();
      ++count;
    }
    if (key == end && count == recent->count()) return recent;
    members.resize(firstMember);
  }
  keys_.clear();
  for (JSONNode key = object.first(); !(key == end);) {
    const JSONNode value = key.next();
    keys_.push_back(key.text());
    members.push_back(value.word());
    key = value.next();
  }
  return shapes_.shapeOf(keys_);
}

// Recursion is bounded by JSONDocument::kDepthLimit.
Ref<Object> JSONObjectBuilder::objectOf(JSONNode node) {
  if (node.kind() == JSONNode::Kind::array) {
    if (Ref<Array> numbers = numbersOf(node)) return numbers;
    return arrayOf(node, [this](JSONNode element) { return objectOf(element); });
  }
  if (node.kind() != JSONNode::Kind::object) return scalarOf(node);

  const std::size_t firstValue = values_.size();
  const std::size_t firstMember = members_.size();
  const Ref<JSONShape> shape = shapeOf(node, members_);
  for (std::size_t i = 0; i < shape->distinctKeys()->count(); ++i) {
    Ref<Object> object = objectOf(node.at(members_[firstMember + shape->memberOfDistinctKey(i)]));
    values_.push_back(std::move(object));
  }
  Ref<Dictionary> dictionary = dictionaryOf(*shape, std::span(values_).subspan(firstValue));
  values_.resize(firstValue);
  members_.resize(firstMember);
  return dictionary;
}

}  // namespace tq::detail
