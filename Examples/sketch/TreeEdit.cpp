#include "TreeEdit.h"

namespace sketch {
namespace {

using tqdoc::Group;
using tqdoc::Node;

[[nodiscard]] bool haveSameTraits(const Node& a, const Node& b) {
  const Node::Traits &x = a.traits(), &y = b.traits();
  return x.name == y.name && x.transform == y.transform && x.opacity == y.opacity &&
         x.hidden == y.hidden && x.blend == y.blend && x.isolated == y.isolated &&
         x.clip == y.clip && x.filter == y.filter && x.mask == y.mask;
}

/// True for a node and itself, and for two versions of a group.
[[nodiscard]] bool areSame(const tq::Object& a, std::size_t, const tq::Object& b, std::size_t) {
  if (&a == &b) return true;
  const auto* group = tq::objectCast<Group>(&a);
  const auto* other = tq::objectCast<Group>(&b);
  return group != nullptr && other != nullptr && haveSameTraits(*group, *other);
}

[[nodiscard]] const Group& groupAt(const tq::Array& children, std::size_t index) {
  return static_cast<const Group&>(children.objectAtIndex(index));
}

[[nodiscard]] tq::Ref<Group> withChildren(const Group& group, const tq::MutableArray& children) {
  return tq::makeRef<Group>(group.traits(), tq::refCast<tq::Array>(children.copy()));
}

}  // namespace

TreeEdit treeEditTo(const Group& oldGroup, const Group& newGroup) {
  TreeEdit edit;
  const auto changes = tq::editSequenceTo(oldGroup.children(), newGroup.children(), false, areSame);
  const auto children = tq::MutableArray::arrayWithArray(oldGroup.children());
  if (changes) {
    edit.children = *changes;
    tq::applyEditSequence(*children, edit.children);
  }
  // Where the versions still differ, they have two versions of a group.
  for (std::size_t i = 0; i < children->count(); ++i) {
    const Group& before = groupAt(*children, i);
    const Group& after = groupAt(newGroup.children(), i);
    if (&before == &after) continue;
    edit.inside.push_back(treeEditTo(before, after));
    edit.inside.back().index = i;
  }
  return edit;
}

tq::Ref<Group> applied(const TreeEdit& edit, const Group& oldGroup) {
  const auto children = tq::MutableArray::arrayWithArray(oldGroup.children());
  tq::applyEditSequence(*children, edit.children);
  for (const TreeEdit& inside : edit.inside) {
    const std::size_t at = inside.index;
    children->replaceObjectAtIndex(at, applied(inside, groupAt(*children, at)));
  }
  return withChildren(oldGroup, *children);
}

tq::Ref<Group> reverted(const TreeEdit& edit, const Group& newGroup) {
  const auto children = tq::MutableArray::arrayWithArray(newGroup.children());
  for (const TreeEdit& inside : edit.inside) {
    const std::size_t at = inside.index;
    children->replaceObjectAtIndex(at, reverted(inside, groupAt(*children, at)));
  }
  tq::revertEditSequence(*children, edit.children);
  return withChildren(newGroup, *children);
}

}  // namespace sketch
