#include <TQFoundation/objects/Set.h>

#include <utility>

#include <TQFoundation/objects/DictionaryKeys.h>
#include <TQFoundation/objects/Exception.h>
#include <TQFoundation/objects/Hash.h>
#include <TQFoundation/objects/detail/Describe.h>
#include <TQFoundation/objects/detail/Equality.h>

namespace tq {

using detail::DictionaryKeys;

Set::Set(Ref<DictionaryKeys> members) noexcept : members_(std::move(members)) {}

Set::~Set() = default;

Ref<Set> Set::set() { return setWithObjects(std::span<const Ref<Object>>()); }

Ref<Set> Set::setWithObjects(std::span<const Ref<Object>> objects) {
  Ref<DictionaryKeys> members = makeRef<DictionaryKeys>();
  for (const Ref<Object>& object : objects) {
    if (!object) throw Exception(InvalidArgumentException, "A set cannot hold null.");
    if (!members->find(*object)) members->append(object);
  }
  return Ref<Set>::adopt(new Set(std::move(members)));
}

Ref<Set> Set::setWithObjects(std::initializer_list<Ref<Object>> objects) {
  return setWithObjects(std::span(objects.begin(), objects.size()));
}

std::size_t Set::count() const noexcept { return members_->count(); }

Object* Set::member(const Object& object) const {
  const auto index = members_->find(object);
  return index ? allObjects()[*index].get() : nullptr;
}

std::span<const Ref<Object>> Set::allObjects() const noexcept { return members_->keys(); }

Array::Iterator Set::begin() const noexcept { return Array::Iterator(allObjects().data()); }

bool Set::isEqual(const Object& other) const {
  if (this == &other) return true;
  return objectCast<Set>(&other) != nullptr && detail::haveEqualContents(*this, other);
}

/// A sum, because equal sets may have their members in different orders.
std::size_t Set::hash() const {
  std::size_t hash = count();
  for (const Object& object : *this) hash += detail::hashOfElement(object);
  return hash;
}

std::string Set::description() const {
  detail::ContainerDescription text("{(");
  std::string_view separator;
  for (const Object& object : *this) {
    if (text.isFull()) break;
    text.add(separator);
    text.add(object);
    separator = ", ";
  }
  return text.finish(")}");
}

}  // namespace tq
