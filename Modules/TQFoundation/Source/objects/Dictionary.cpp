#include <TQFoundation/objects/Dictionary.h>

#include <algorithm>
#include <memory>

#include <TQFoundation/base/MakeRoom.h>
#include <TQFoundation/objects/DictionaryKeys.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/Hash.h>
#include <TQFoundation/objects/String.h>
#include <TQFoundation/objects/detail/Describe.h>
#include <TQFoundation/objects/detail/Equality.h>

namespace tq {

using detail::DictionaryKeys;

void detail::ChangeWatch::raise() {
  throw Exception(GenericException, "A dictionary was changed while it was iterated.");
}

Dictionary::Dictionary(Ref<DictionaryKeys> keys, bool isGrowing) noexcept
    : Subclass(ObjectKind::dictionary, std::uint8_t{isGrowing}), keys_(std::move(keys)) {}

Dictionary::~Dictionary() {
  const std::span<Ref<Object>> held = slots();
  std::destroy(held.begin(), held.end());
}

Ref<Dictionary> Dictionary::makeUnfilled(Ref<DictionaryKeys> keys) {
  const std::size_t count = keys->count();
  auto dictionary = Ref<Dictionary>::adopt(new (Trailing{count * sizeof(Ref<Object>)})
                                               Dictionary(std::move(keys)));
  auto* first = reinterpret_cast<Ref<Object>*>(dictionary.get() + 1);
  std::uninitialized_value_construct_n(first, count);
  dictionary->values_ = first;
  return dictionary;
}

/// Returns the values inside this object; empty if they are stored elsewhere.
std::span<Ref<Object>> Dictionary::slots() noexcept {
  auto* first = reinterpret_cast<Ref<Object>*>(this + 1);
  if (values_ != first) return {};
  return {first, count()};
}

Ref<Dictionary> Dictionary::dictionary() {
  static Dictionary& empty = *makeUnfilled(makeRef<DictionaryKeys>()).leak();
  return Ref<Dictionary>(&empty);
}

Ref<Dictionary> Dictionary::dictionaryWithEntries(
    std::span<const std::pair<Ref<Object>, Ref<Object>>> entries) {
  const Ref<MutableDictionary> collected = MutableDictionary::dictionary();
  for (const auto& [key, value] : entries) collected->setObject(value, key);
  return refCast<Dictionary>(collected->copy());
}

Ref<Dictionary> Dictionary::dictionaryWithEntries(
    std::initializer_list<std::pair<std::string_view, Ref<Object>>> entries) {
  const Ref<MutableDictionary> collected = MutableDictionary::dictionary();
  for (const auto& [key, value] : entries) collected->setObject(value, key);
  return refCast<Dictionary>(collected->copy());
}

std::size_t Dictionary::count() const noexcept { return keys_->count(); }

std::span<const Ref<Object>> Dictionary::keys() const noexcept { return keys_->keys(); }

Object* Dictionary::objectForKey(const Object& key) const {
  const auto index = keys_->find(key);
  return index ? values_[*index].get() : nullptr;
}

Object* Dictionary::objectForKey(std::string_view key) const {
  const auto index = keys_->find(key);
  return index ? values_[*index].get() : nullptr;
}

bool Dictionary::isEqual(const Object& other) const {
  if (this == &other) return true;
  return other.kind() == ObjectKind::dictionary && detail::haveEqualContents(*this, other);
}

/// A sum, because equal dictionaries may have their entries in different orders.
std::size_t Dictionary::hash() const {
  std::size_t hash = count();
  for (const Entry entry : *this) {
    hash += detail::hashOfWord(
        detail::hashJoined(detail::hashOfElement(entry.key), detail::hashOfElement(entry.value)));
  }
  return hash;
}

std::string Dictionary::description() const {
  detail::ContainerDescription text("{");
  std::string_view separator;
  for (const Entry entry : *this) {
    if (text.isFull()) break;
    text.add(separator);
    text.add(entry.key);
    text.add(" = ");
    text.add(entry.value);
    text.add(";");
    separator = " ";
  }
  return text.finish("}");
}

MutableDictionary::MutableDictionary() : Subclass(makeRef<DictionaryKeys>(), true) {}

Ref<MutableDictionary> MutableDictionary::dictionary() {
  return Ref<MutableDictionary>::adopt(new MutableDictionary);
}

Ref<MutableDictionary> MutableDictionary::dictionaryWithDictionary(const Dictionary& other) {
  Ref<MutableDictionary> result = dictionary();
  result->held_.assign(other.values().begin(), other.values().end());
  result->values_ = result->held_.data();
  result->keys_ = other.keys_->duplicate();
  return result;
}

void MutableDictionary::setObject(Ref<Object> value, Ref<Object> forKey) {
  if (!value || !forKey) {
    throw Exception(InvalidArgumentException, "A dictionary cannot hold null keys or values.");
  }
  auto index = keys_->find(*forKey);
  if (!index) {
    forKey = forKey->copy();
    // The copy() of a host may have changed this dictionary.
    if (forKey->kind() == ObjectKind::other) index = keys_->find(*forKey);
  }
  if (index) {
    std::swap(held_[*index], value);
    ++changes_;
    return;
  }
  detail::makeRoom(held_, 1);
  values_ = held_.data();
  ++changes_;  // the values may have moved, even if the next line throws
  keys_->append(std::move(forKey));
  held_.push_back(std::move(value));
}

void MutableDictionary::setObject(Ref<Object> value, std::string_view forKey) {
  setObject(std::move(value), String::of(forKey));
}

void MutableDictionary::removeObjectForKey(const Object& key) {
  const auto index = keys_->find(key);
  if (!index) return;
  const auto at = held_.begin() + static_cast<std::ptrdiff_t>(*index);
  const Ref<Object> removed = std::move(*at);  // released last: its destructor may call this
  held_.erase(at);
  ++changes_;
  keys_->removeAt(*index);
}

void MutableDictionary::removeAllObjects() {
  Ref<DictionaryKeys> noKeys = makeRef<DictionaryKeys>();
  const std::vector<Ref<Object>> removed = std::move(held_);
  held_.clear();
  keys_ = std::move(noKeys);
  values_ = held_.data();
  ++changes_;
}

Ref<Object> MutableDictionary::copy() const {
  const Ref<Dictionary> result = makeUnfilled(keys_->duplicate());
  std::ranges::copy(values(), result->slots().begin());
  return result;
}

}  // namespace tq
