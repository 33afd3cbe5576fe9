#include <TQFoundation/objects/detail/ValueNumbers.h>

#include <algorithm>

#include <TQFoundation/objects/Array.h>
#include <TQFoundation/objects/Dictionary.h>
#include <TQFoundation/objects/Hash.h>
#include <TQFoundation/objects/detail/ContainerForm.h>
#include <TQFoundation/objects/detail/Equality.h>

namespace tq::detail {
namespace {

template <class Visit>
void forEachChild(const Object& container, const Visit& visit) {
  switch (containerFormOf(container)) {
    case ContainerForm::none:
      return;
    case ContainerForm::array:
      for (const Object& element : static_cast<const Array&>(container)) visit(element);
      return;
    case ContainerForm::dictionary:
      for (const Dictionary::Entry entry : static_cast<const Dictionary&>(container)) {
        visit(entry.key);
        visit(entry.value);
      }
      return;
    case ContainerForm::set:
      for (const Object& member : static_cast<const Set&>(container)) visit(member);
      return;
    case ContainerForm::error:
      visit(static_cast<const Error&>(container).userInfo());
      return;
  }
}

/// Returns whether two leaves are equal; for errors, whether domain and code are.
bool areEqualLeaves(const Object& a, const Object& b) {
  const bool isError = containerFormOf(a) == ContainerForm::error;
  if (isError != (containerFormOf(b) == ContainerForm::error)) return false;
  if (!isError) {
    if (!a.isEqual(b)) return false;
    if (a.kind() != ObjectKind::number || b.kind() != ObjectKind::number) return true;
    return !areEqualByRounding(static_cast<const Number&>(a).value(),
                               static_cast<const Number&>(b).value());
  }
  const auto& first = static_cast<const Error&>(a);
  const auto& second = static_cast<const Error&>(b);
  return first.code() == second.code() && first.domain() == second.domain();
}

}  // namespace

std::size_t ValueNumbers::HashOfContent::operator()(const Content& content) const noexcept {
  std::size_t hash = content.size();
  for (const Number number : content) hash = hashJoined(hash, number);
  return hashOfWord(hash);
}

// A container is on the stack until all that it contains has a number.
ValueNumbers::Number ValueNumbers::of(const Object& object) {
  std::vector<const Object*> open{&object};
  while (!open.empty()) {
    const Object& innermost = *open.back();
    const auto [entry, isNew] = numbers_.try_emplace(&innermost, 0);
    const bool isLeaf = isNew && containerFormOf(innermost) == ContainerForm::none;
    if (isNew && !isLeaf) {
      forEachChild(innermost, [&](const Object& child) {
        if (!numbers_.contains(&child)) open.push_back(&child);
      });
      continue;
    }
    open.pop_back();
    if (entry->second != 0) continue;
    entry->second = isLeaf ? numberOfLeaf(innermost) : numberOfContainer(innermost);
  }
  return numbers_.at(&object);
}

ValueNumbers::Number ValueNumbers::numberOfLeaf(const Object& leaf) {
  const std::size_t hash = leaf.hash();
  const auto [first, last] = leaves_.equal_range(hash);
  for (auto at = first; at != last; ++at) {
    if (areEqualLeaves(*at->second.first, leaf)) return at->second.second;
  }
  leaves_.emplace(hash, std::pair(&leaf, ++last_));
  return last_;
}

ValueNumbers::Number ValueNumbers::numberOfContainer(const Object& container) {
  const ContainerForm form = containerFormOf(container);
  Content content;
  forEachChild(container, [&](const Object& child) { content.push_back(numberInside(child)); });
  if (form == ContainerForm::dictionary) {
    // A dictionary is the set of its entries. The last number of a content is its container's form.
    constexpr auto kEntry = static_cast<Number>(ContainerForm::none);
    for (std::size_t i = 0; i < content.size() / 2; ++i) {
      content[i] = numberOfContent({content[2 * i], content[2 * i + 1], kEntry});
    }
    content.resize(content.size() / 2);
  }
  if (form == ContainerForm::dictionary || form == ContainerForm::set) std::ranges::sort(content);
  if (form == ContainerForm::error) content.push_back(numberOfLeaf(container));
  content.push_back(static_cast<Number>(form));
  return numberOfContent(std::move(content));
}

ValueNumbers::Number ValueNumbers::numberOfContent(Content content) {
  const auto [known, isNew] = contents_.try_emplace(std::move(content), last_ + 1);
  if (isNew) ++last_;
  return known->second;
}

/// The address identifies a container that contains itself; numbers are far smaller.
ValueNumbers::Number ValueNumbers::numberInside(const Object& object) const {
  const Number number = numbers_.at(&object);
  return number != 0 ? number : reinterpret_cast<std::uintptr_t>(&object);
}

}  // namespace tq::detail
